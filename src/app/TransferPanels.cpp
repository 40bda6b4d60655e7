#include "app/TransferPanels.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

const QString exportFailed = QStringLiteral("Couldn’t export settings.");
const QString importFailed = QStringLiteral("Couldn’t import settings.");
const QString propertyLists = QStringLiteral("Property Lists (*.plist)");

QMessageBox* messageBox(QMessageBox::Icon icon, const QString& text, const QString& detail,
                        QWidget* parent) {
    auto* box = new QMessageBox(parent);
    box->setWindowTitle(QStringLiteral("Vostel"));
    box->setIcon(icon);
    box->setText(text);
    box->setInformativeText(detail);
    // A file's name may look like markup.
    box->setTextFormat(Qt::PlainText);
    for (QLabel* label : box->findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
    }
    return box;
}

}  // namespace

TransferPanels::TransferPanels(DefaultsStore& store, Background& worker,
                               SettingsExchange& settingsExchange,
                               std::function<QWidget*()> settingsWindow)
    : defaults(store),
      background(worker),
      exchange(settingsExchange),
      window(std::move(settingsWindow)) {}

TransferPanels::~TransferPanels() {
    delete shown;
}

bool TransferPanels::bringsForward() const {
    if (!shown) {
        return false;
    }
    shown->raise();
    shown->activateWindow();
    return true;
}

void TransferPanels::open(QDialog* dialog) {
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setPalette(SettingsLook::palette());
    shown = dialog;
    dialog->open();
    bringsForward();
}

QFileDialog* TransferPanels::filePanel(const QString& title) {
    auto* panel = new QFileDialog(window(), title, QDir::homePath());
    panel->setDefaultSuffix(QStringLiteral("plist"));
    return panel;
}

void TransferPanels::exportSettings() {
    if (bringsForward()) {
        return;
    }
    QFileDialog* panel = filePanel(QStringLiteral("Export Vostel Settings"));
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilter(propertyLists);
    panel->selectFile(QLatin1String(SettingsTransfer::suggestedName));
    connect(panel, &QFileDialog::fileSelected, this, &TransferPanels::write);
    open(panel);
}

void TransferPanels::write(const QString& path) {
    background.run(
        this,
        [path, bytes = defaults.values().toXml()] {
            return SettingsTransfer::writeFile(path, bytes);
        },
        [this](const std::optional<QString>& error) {
            if (error) {
                present(exportFailed, *error);
            }
        });
}

void TransferPanels::importSettings() {
    if (bringsForward()) {
        return;
    }
    QFileDialog* panel = filePanel(QStringLiteral("Import Vostel Settings"));
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilters({propertyLists, QStringLiteral("All Files (*)")});
    connect(panel, &QFileDialog::fileSelected, this, &TransferPanels::read);
    open(panel);
}

void TransferPanels::read(const QString& path) {
    exchange.read(path, [this](SettingsExchange::Loaded loaded) {
        if (loaded.value) {
            askToReplace(*loaded.value);
        } else {
            present(importFailed, loaded.error);
        }
    });
}

void TransferPanels::askToReplace(const PropertyList& settings) {
    QMessageBox* box = messageBox(
        QMessageBox::Question, QStringLiteral("Replace all settings?"),
        QStringLiteral("This overwrites your current Vostel preferences with the imported ones and "
                       "relaunches the app. Sign-in credentials aren’t included, so signed-in "
                       "accounts may need to sign in again."),
        window());
    auto* import = box->addButton(QStringLiteral("Import && Relaunch"), QMessageBox::AcceptRole);
    box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(import);
    connect(import, &QAbstractButton::clicked, this, [this, settings] {
        exchange.replace(settings, [this](const QString& error) {
            if (!error.isEmpty()) {
                present(importFailed, error);
            }
        });
    });
    open(box);
}

void TransferPanels::present(const QString& error, const QString& detail) {
    open(messageBox(QMessageBox::Warning, error, detail, window()));
}

}  // namespace vostel
