#include "app/settings/SettingsWindow.h"

#include <algorithm>

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>

#include "app/AppIcon.h"
#include "app/AppSettings.h"
#include "app/settings/SettingsSidebar.h"
#include "ui/AccessibleRole.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

namespace {

constexpr QSize firstSize(860, 620);
constexpr QSize leastSize(700, 420);
constexpr int frameRoom = 40;  // what a window manager puts around a window, at most

}  // namespace

SettingsWindow::SettingsWindow(AppContext& context, AppSettings& appSettings,
                               std::vector<SettingsPage> settingsPages)
    : settings(appSettings),
      pages(std::move(settingsPages)),
      sidebar(new SettingsSidebar(context, pages)),
      stack(new QStackedWidget) {
    setWindowTitle(QStringLiteral("Vostel Settings"));
    setAccessibleRole(*this, QAccessible::Window);
    setWindowIcon(appIcon());
    setAccessibleName(windowTitle());
    setPalette(SettingsLook::palette());
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(sidebar);
    row->addWidget(stack, 1);
    connect(sidebar, &SettingsSidebar::chosen, this, &SettingsWindow::select);
    connect(sidebar, &SettingsSidebar::searched, this, &SettingsWindow::search);

    const auto shortcut = [this](const QKeySequence& keys, auto action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    shortcut(Qt::Key_Escape, [this] {
        if (!sidebar->clearSearch()) {
            close();
        }
    });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_F), [this] { sidebar->focusSearch(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), context.quit);
    setMinimumSize(leastSize);
    restoreSize();
    select(pages.front().id);
}

void SettingsWindow::restoreSize() {
    QSize size(static_cast<int>(std::clamp(settings.windowWidth(), 0.0, 10000.0)),
               static_cast<int>(std::clamp(settings.windowHeight(), 0.0, 10000.0)));
    if (size.isEmpty()) {
        size = firstSize;
    }
    const QSize room = screen()->availableSize() - QSize(0, frameRoom);
    resize(size.boundedTo(room).expandedTo(leastSize));
}

QStringList SettingsWindow::pageIds() const {
    QStringList ids;
    for (const SettingsPage& page : pages) {
        ids << page.id;
    }
    return ids;
}

SettingsPanel* SettingsWindow::panel(const QString& id) {
    if (const auto made = panels.find(id); made != panels.end()) {
        return made->second;
    }
    const auto page = std::find_if(pages.begin(), pages.end(),
                                   [&](const SettingsPage& each) { return each.id == id; });
    if (page == pages.end()) {
        return nullptr;
    }
    SettingsPanel* made = page->make();
    panels[id] = made;
    stack->addWidget(made);
    return made;
}

void SettingsWindow::select(const QString& id) {
    SettingsPanel* shown = panel(id);
    if (shown != nullptr) {
        current = id;
        stack->setCurrentWidget(shown);
        sidebar->select(id);
    }
}

void SettingsWindow::search(const QStringList& words) {
    QStringList listed;
    for (const SettingsPage& page : pages) {
        const bool inTitle = std::all_of(words.begin(), words.end(), [&](const QString& word) {
            return page.title.contains(word, Qt::CaseInsensitive);
        });
        if (panel(page.id)->find(words) || inTitle) {
            listed << page.id;
        }
    }
    sidebar->setListed(listed);
    if (!listed.isEmpty() && !listed.contains(current)) {
        select(listed.front());
    }
}

QImage SettingsWindow::snapshot(const QString& id, double scale) {
    select(id);
    setAttribute(Qt::WA_DontShowOnScreen);
    show();  // an unshown window does not lay out what it holds
    resize(firstSize);
    for (int pass = 0; pass < 2; ++pass) {  // texts that wrap know their height in the second
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        resize(width(), std::max(firstSize.height(), panel(id)->fullHeight(stack->width())));
    }
    QImage image((QSizeF(size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    render(&image);
    return image;
}

bool SettingsWindow::event(QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) {
        setPalette(SettingsLook::palette());
    }
    return QWidget::event(event);
}

void SettingsWindow::closeEvent(QCloseEvent* event) {
    if (!isMaximized() && !isFullScreen()) {
        settings.windowWidth = width();
        settings.windowHeight = height();
    }
    event->accept();
    Q_EMIT closed();
}

}  // namespace vostel
