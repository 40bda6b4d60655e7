#include "app/TransferPanels.h"

#include <QAbstractFileIconProvider>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>

#include "render/SymbolImage.h"
#include "statusbar/PlainText.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

const QString exportFailed = QStringLiteral("Couldn’t export settings.");
const QString importFailed = QStringLiteral("Couldn’t import settings.");
const QString propertyLists = QStringLiteral("Property Lists (*.plist)");

// Tells folders from files. The toolkit's own looks into every file of a folder for its type, on
// the main thread too, and waits where reading waits.
class PlainIcons : public QAbstractFileIconProvider {
  public:
    QIcon icon(IconType type) const override { return type == File ? file : folder; }
    // Called on the worker of the panel, too.
    QIcon icon(const QFileInfo& info) const override { return info.isDir() ? folder : file; }
    QString type(const QFileInfo& info) const override {
        const bool isList = info.suffix() == QStringLiteral("plist");
        return info.isDir() ? QStringLiteral("Folder")
               : isList     ? QStringLiteral("Property List")
                            : QStringLiteral("File");
    }

  private:
    const QIcon folder = QApplication::style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon file = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
};

constexpr double symbolSize = 40;  // logical pixels
constexpr int textWidth = 380;

QMessageBox* messageBox(const QString& symbol, const QColor& color, const QString& text,
                        const QString& detail, QWidget* parent) {
    QMessageBox* box = PlainText::messageBox(text, detail, parent);
    box->setWindowTitle(QStringLiteral("Vostel"));
    box->setIconPixmap(
        QPixmap::fromImage(symbolImage(symbol, symbolSize, box->devicePixelRatioF(), color)));
    const QList<QLabel*> labels = box->findChildren<QLabel*>();
    for (QLabel* label : labels) {
        if (label->text() == text) {
            QFont bold = label->font();
            bold.setBold(true);
            label->setFont(bold);
        } else if (label->text() == detail) {
            label->setMinimumWidth(textWidth);
        }
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
    if (!icons) {
        icons = std::make_unique<PlainIcons>();
    }
    auto* panel = new QFileDialog(window(), title, QDir::homePath());
    panel->setIconProvider(icons.get());
    PlainText::keepMessagesPlain(*panel);
    return panel;
}

void TransferPanels::exportSettings() {
    if (bringsForward()) {
        return;
    }
    QFileDialog* panel = filePanel(QStringLiteral("Export Vostel Settings"));
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilter(propertyLists);
    panel->setDefaultSuffix(QStringLiteral("plist"));
    panel->selectFile(QLatin1String(SettingsTransfer::suggestedName));
    connect(panel, &QFileDialog::fileSelected, this, &TransferPanels::write);
    open(panel);
}

void TransferPanels::write(const QString& path) {
    background.run(
        this,
        [path, bytes = SettingsTransfer::exported(defaults.values(), defaults).toXml()] {
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
    QMessageBox* box = messageBox(QStringLiteral("gearshape"), Theme::current().accent,
                                  QString::fromUtf8(SettingsExchange::question),
                                  QString::fromUtf8(SettingsExchange::warning), window());
    auto* import = box->addButton(QStringLiteral("Import && Relaunch"), QMessageBox::AcceptRole);
    box->setEscapeButton(box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole));
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
    // A long path may break after each folder.
    QString breakable = detail;
    breakable.replace(u'/', QStringLiteral("/\u200b"));
    QMessageBox* box = messageBox(QStringLiteral("exclamationmark.triangle.fill"),
                                  Theme::current().warning, error, breakable, window());
    box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    open(box);
}

}  // namespace vostel
