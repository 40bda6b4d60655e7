#include "ui/FooterButtons.h"

#include <QHBoxLayout>
#include <QPainter>

#include "core/SystemApp.h"
#include "statusbar/PlainText.h"
#include "ui/ActionButton.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int inset = 6;  // with a button's own padding this is the popover's margin

}  // namespace

FooterButtons::FooterButtons(bool withMonitor, QWidget* parent) : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(inset, 5, inset, 5);
    row->setSpacing(4);
    if (withMonitor) {
        monitor = new ActionButton(QStringLiteral("chart.bar.xaxis"), QString(), true, this);
        nameMonitor();
        connect(monitor, &QAbstractButton::clicked, this, &FooterButtons::monitorRequested);
        row->addWidget(monitor);
    }
    row->addStretch();
    auto* settings = new ActionButton(QStringLiteral("gearshape"), tr("Settings"), true, this);
    connect(settings, &QAbstractButton::clicked, this, &FooterButtons::settingsRequested);
    row->addWidget(settings);
}

// One may have been installed or removed since the popover was last open.
void FooterButtons::showEvent(QShowEvent* event) {
    if (monitor != nullptr) {
        nameMonitor();
    }
    QWidget::showEvent(event);
}

void FooterButtons::nameMonitor() {
    const QString name = SystemApp::activityMonitorName();
    monitor->setName(tr("Open in %1").arg(name.isEmpty() ? tr("System Monitor") : name));
    monitor->setEnabled(!name.isEmpty());
    if (name.isEmpty()) {
        PlainText::setToolTip(*monitor, tr("No system monitor is installed."));
    }
}

void FooterButtons::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(QRectF(0, 0, width(), 1), Theme::current().divider);
}

}  // namespace vostel
