#include "app/settings/SourcesRow.h"

#include <QClipboard>
#include <QGuiApplication>

#include "app/Diagnostics.h"

namespace vostel {

SourcesRow::SourcesRow(AppContext& appContext, QWidget* parent)
    : ButtonRow(
          QStringLiteral("Sources"), QStringLiteral("Copy Diagnostics"),
          [&appContext] { QGuiApplication::clipboard()->setText(diagnostics(appContext)); },
          parent),
      context(appContext) {
    setKeywords(QStringLiteral("Copy Diagnostics errors report log"));
    timer.setInterval(2000);
    connect(&timer, &QTimer::timeout, this, &SourcesRow::refresh);
    SourcesRow::refresh();
}

void SourcesRow::refresh() {
    const QStringList errors = sourceErrors(context.platform);
    setHint(errors.isEmpty() ? QStringLiteral("All sources can be read.") : errors.join(u'\n'));
}

void SourcesRow::showEvent(QShowEvent* event) {
    ButtonRow::showEvent(event);
    refresh();
    timer.start();
}

void SourcesRow::hideEvent(QHideEvent* event) {
    ButtonRow::hideEvent(event);
    timer.stop();
}

}  // namespace vostel
