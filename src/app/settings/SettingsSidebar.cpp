#include "app/settings/SettingsSidebar.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QVBoxLayout>

#include "app/AppSettings.h"
#include "app/BarSwitch.h"
#include "app/settings/SidebarRow.h"
#include "core/ModuleManager.h"
#include "item/ShownItem.h"
#include "statusbar/PlainText.h"
#include "ui/Theme.h"
#include "ui/ThinScrollBar.h"
#include "ui/settings/TextField.h"

namespace vostel {

namespace {

constexpr int sidebarWidth = 232;

}  // namespace

SettingsSidebar::SettingsSidebar(AppContext& appContext, const std::vector<SettingsPage>& pages,
                                 QWidget* parent)
    : QWidget(parent), context(appContext), search(new TextField(tr("Search settings"))) {
    setFixedWidth(sidebarWidth);
    search->setPlaceholderText(tr("Search"));
    search->setSymbol(QStringLiteral("magnifyingglass"));
    search->installEventFilter(this);
    connect(search, &QLineEdit::textChanged, this,
            [this](const QString& text) { Q_EMIT searched(text.split(u' ', Qt::SkipEmptyParts)); });

    auto* list = new QWidget;
    auto* column = new QVBoxLayout(list);
    column->setContentsMargins(10, 0, 10, 10);
    column->setSpacing(2);
    for (const SettingsPage& page : pages) {
        auto* row = new SidebarRow(page, list);
        column->addWidget(row);
        rows.push_back(row);
        connect(row, &QAbstractButton::clicked, this, [this, row] { Q_EMIT chosen(row->id()); });
        connect(row, &SidebarRow::switched, this,
                [this, row](bool on) { context.modules->setEnabled(on, row->id()); });
    }
    nothingFound = PlainText::label(tr("No settings found"), list);
    nothingFound->setForegroundRole(QPalette::PlaceholderText);
    nothingFound->setAlignment(Qt::AlignCenter);
    nothingFound->setMinimumHeight(48);
    nothingFound->hide();
    column->addWidget(nothingFound);
    column->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBar(new ThinScrollBar(scroll));
    scroll->setWidgetResizable(true);
    scroll->setWidget(list);
    list->setAutoFillBackground(false);
    scroll->viewport()->setAutoFillBackground(false);

    auto* frame = new QVBoxLayout(this);
    frame->setContentsMargins(0, 12, 0, 0);
    frame->setSpacing(10);
    auto* searchLine = new QHBoxLayout;
    searchLine->setContentsMargins(10, 0, 10, 0);
    searchLine->addWidget(search);
    frame->addLayout(searchLine);
    frame->addWidget(scroll, 1);

    for (const char* name : {modulesChanged, AppSettings::changeNotification}) {
        subscriptions.push_back(context.notifications.subscribe(name, [this] { attach(); }));
    }
    attach();
}

// The running modules may be others than before.
void SettingsSidebar::attach() {
    for (const QMetaObject::Connection& connection : connections) {
        disconnect(connection);
    }
    connections.clear();
    for (SidebarRow* row : rows) {
        row->setOn(context.modules->isEnabled(row->id()));
        if (auto* item = dynamic_cast<ShownItem*>(context.modules->running(row->id()))) {
            connections.push_back(
                connect(item, &ShownItem::rendered, this, [this, row] { draw(*row); }));
        }
        draw(*row);
    }
}

void SettingsSidebar::draw(SidebarRow& row) {
    auto* item = dynamic_cast<ShownItem*>(context.modules->running(row.id()));
    if (item == nullptr || window()->isMinimized()) {
        row.setMiniature({}, Appearance::Dark);
        return;
    }
    ImageContext wanted = imageContextOf(context.statusBar);
    wanted.shape = ImageShape::Wide;
    wanted.thickness = ImageContext().thickness;
    wanted.scale = devicePixelRatioF();
    const auto image = item->menubarImage(wanted);
    row.setMiniature(image ? tinted(*image, wanted.appearance) : QImage(), wanted.appearance);
}

void SettingsSidebar::select(const QString& id) {
    for (SidebarRow* row : rows) {
        if (row->id() == id) {
            row->setChecked(true);
        }
    }
    for (SidebarRow* row : rows) {
        row->setFocusPolicy(row->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

void SettingsSidebar::setListed(const QStringList& ids) {
    for (SidebarRow* row : rows) {
        row->setVisible(ids.contains(row->id()));
    }
    nothingFound->setVisible(ids.isEmpty());
}

void SettingsSidebar::focusSearch() {
    search->setFocus(Qt::ShortcutFocusReason);
    search->selectAll();
}

bool SettingsSidebar::clearSearch() {
    if (search->text().isEmpty()) {
        return false;
    }
    search->clear();
    return true;
}

// Down leads from the search field into the list.
bool SettingsSidebar::eventFilter(QObject* watched, QEvent* event) {
    if (watched == search && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down) {
        for (SidebarRow* row : rows) {
            if (row->isChecked()) {
                row->setFocus(Qt::TabFocusReason);
            }
        }
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void SettingsSidebar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    painter.fillRect(rect(), theme.panel);
    painter.fillRect(QRect(width() - 1, 0, 1, height()), theme.divider);
}

}  // namespace vostel
