#include "statusbar/DockAccessible.h"

#include <algorithm>

#include <QAccessible>
#include <QAccessibleObject>

#include "statusbar/DockWindow.h"
#include "statusbar/ItemBar.h"

namespace vostel {

namespace {

class ItemAccessible final : public QAccessibleObject, public QAccessibleActionInterface {
  public:
    explicit ItemAccessible(BarItem* item) : QAccessibleObject(item) {}

    BarItem* item() const { return static_cast<BarItem*>(object()); }

    QAccessibleInterface* parent() const override {
        QWindow* window = item() && item()->owner() ? item()->owner()->hostWindow() : nullptr;
        return window ? QAccessible::queryAccessibleInterface(window) : nullptr;
    }
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Button; }

    QAccessible::State state() const override {
        QAccessible::State state;
        state.invisible = rect().isEmpty();
        return state;
    }

    QRect rect() const override {
        return item() ? item()->screenRect().value_or(QRect()) : QRect();
    }

    QString text(QAccessible::Text kind) const override {
        if (!item()) return {};
        switch (kind) {
            case QAccessible::Name:
                return item()->title();
            case QAccessible::Description:
            case QAccessible::Value:
                return item()->value();
            default:
                return {};
        }
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override {
        if (name != pressAction() || !item()) return;
        StatusItemClick click;
        click.globalPosition = rect().center();
        Q_EMIT item()->clicked(click);
    }
};

class BarAccessible final : public QAccessibleObject {
  public:
    explicit BarAccessible(DockWindow* window) : QAccessibleObject(window) {}

    QWindow* window() const override { return static_cast<QWindow*>(object()); }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(qApp);
    }
    QAccessible::Role role() const override { return QAccessible::ToolBar; }
    QAccessible::State state() const override { return {}; }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && window() ? window()->title() : QString();
    }
    int childCount() const override { return static_cast<int>(shown().size()); }

    QAccessibleInterface* child(int index) const override {
        const auto items = shown();
        if (index < 0 || index >= static_cast<int>(items.size())) return nullptr;
        return QAccessible::queryAccessibleInterface(items[static_cast<size_t>(index)]);
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto items = shown();
        const auto at = std::find(items.begin(), items.end(), child->object());
        return at == items.end() ? -1 : static_cast<int>(at - items.begin());
    }

  private:
    std::vector<BarItem*> shown() const {
        if (!object()) return {};
        std::vector<BarItem*> items = static_cast<DockWindow*>(object())->items().items();
        std::erase_if(items, [](const BarItem* item) { return item->pixelWidth() == 0; });
        return items;
    }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    if (auto* item = qobject_cast<BarItem*>(object)) return new ItemAccessible(item);
    if (auto* window = qobject_cast<DockWindow*>(object)) return new BarAccessible(window);
    return nullptr;
}

}  // namespace

void installDockAccessibility() {
    QAccessible::installFactory(makeInterface);  // a second installation is ignored
}

void dockItemsChanged(DockWindow& window) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&window, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

void dockItemTextChanged(BarItem& item) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent name(&item, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&name);
    QAccessibleEvent description(&item, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&description);
}

}  // namespace vostel
