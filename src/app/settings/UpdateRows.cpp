#include "app/settings/UpdateRows.h"

#include <QHBoxLayout>
#include <QLocale>

#include "core/SystemApp.h"
#include "render/ElidedText.h"
#include "ui/NoteLine.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/TextButton.h"

namespace vostel {

namespace {

constexpr int versionRoom = 120;  // logical pixels; more would push the buttons out of the page

QString lastCheckText(const UpdateController& updates) {
    const QDateTime time = updates.lastCheck();
    return time.isValid() ? QStringLiteral("Last checked: %1.")
                                .arg(QLocale().toString(time, QLocale::ShortFormat))
                          : QStringLiteral("Not checked yet.");
}

QString stateText(const UpdateController& updates) {
    switch (updates.state()) {
        case UpdateController::State::Checking:
            return QStringLiteral("Checking for updates…");
        case UpdateController::State::UpToDate:
            return QStringLiteral("Vostel is up to date. ") + lastCheckText(updates);
        case UpdateController::State::Failed:
            return QStringLiteral("The check failed: %1.").arg(updates.error());
        case UpdateController::State::Idle:
        case UpdateController::State::Available:
            break;
    }
    return lastCheckText(updates);
}

}  // namespace

UpdateCheckRow::UpdateCheckRow(UpdateController& controller, QWidget* parent)
    : SettingsRow(QStringLiteral("Version " VOSTEL_VERSION), parent),
      updates(controller),
      button(new TextButton(QStringLiteral("Check for Updates…"))) {
    setKeywords(button->text());
    addControl(button);
    connect(button, &QAbstractButton::clicked, this, [this] { updates.checkForUpdates(); });
    UpdateCheckRow::refresh();
}

void UpdateCheckRow::refresh() {
    const bool available = updates.unavailableReason().isEmpty();
    setHint(available ? stateText(updates) : QString());
    // Only the button: the text beside it is what the user waits for.
    button->setEnabled(updates.state() != UpdateController::State::Checking);
}

UpdateOfferRow::UpdateOfferRow(UpdateController& controller, QWidget* parent)
    : SettingsRow(QString(), parent),
      updates(controller),
      notes(new TextButton(QStringLiteral("Release Notes"))) {
    auto* download = new TextButton(QStringLiteral("Open Download Page"));
    addControl(notes);
    addControl(download);
    const auto opens = [this](TextButton* button, QUrl UpdateOffer::* address) {
        connect(button, &QAbstractButton::clicked, this, [this, address] {
            if (const auto& offer = updates.offer()) {
                SystemApp::openURL(((*offer).*address).toString(QUrl::FullyEncoded));
            }
        });
    };
    opens(notes, &UpdateOffer::releaseNotes);
    opens(download, &UpdateOffer::page);
    UpdateOfferRow::refresh();
}

void UpdateOfferRow::refresh() {
    const auto& offer = updates.offer();
    if (offer) {
        setTitle(
            QStringLiteral("Version %1 is available")
                .arg(elided(QFontMetricsF(font()), offer->version, Qt::ElideRight, versionRoom)));
        notes->setVisible(!offer->releaseNotes.isEmpty());
        const QDate day = offer->published.toLocalTime().date();
        setHint(day.isValid() ? QStringLiteral("Released on %1.")
                                    .arg(QLocale().toString(day, QLocale::LongFormat))
                              : QString());
    }
    setVisible(offer.has_value());
}

InstallLocationRow::InstallLocationRow(const QString& hint, const QString& program, QWidget* parent)
    : QWidget(parent) {
    auto* note = new NoteLine;
    note->setNote(hint, NoteLine::Kind::Warning);
    auto* button = new TextButton(QStringLiteral("Show in File Manager"));
    connect(button, &QAbstractButton::clicked, this, [program] { SystemApp::reveal(program); });
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(SettingsLook::rowMargin, 8, SettingsLook::rowMargin - 3, 8);
    line->setSpacing(8);
    line->addWidget(note, 1, Qt::AlignVCenter);
    line->addWidget(button, 0, Qt::AlignVCenter);
}

}  // namespace vostel
