#include "ui/FooterButtons.h"

#include <QHBoxLayout>
#include <QPainter>

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
        auto* monitor = new ActionButton(QStringLiteral("chart.bar.xaxis"),
                                         tr("Open in Activity Monitor"), true, this);
        connect(monitor, &QAbstractButton::clicked, this, &FooterButtons::monitorRequested);
        row->addWidget(monitor);
    }
    row->addStretch();
    auto* settings = new ActionButton(QStringLiteral("gearshape"), tr("Settings"), true, this);
    connect(settings, &QAbstractButton::clicked, this, &FooterButtons::settingsRequested);
    row->addWidget(settings);
}

void FooterButtons::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(QRectF(0, 0, width(), 1), Theme::current().divider);
}

}  // namespace vostel
