#include "app/settings/GeneralSettingsPanel.h"

#include "app/BarSwitch.h"
#include "app/LoginItem.h"
#include "app/settings/SourcesRow.h"
#include "app/settings/UpdateRows.h"
#include "app/updates/InstallLocation.h"
#include "statusbar/TrayBar.h"
#include "ui/NoteLine.h"
#include "ui/settings/ButtonRow.h"
#include "ui/settings/ChoiceRow.h"
#include "ui/settings/SliderRow.h"
#include "ui/settings/ToggleRow.h"

namespace vostel {

namespace {

// Where the items are shown, and where that is at the moment.
class BarRow : public ChoiceRow {
  public:
    BarRow(Binding<QString> kind, const StatusBar& statusBar)
        : ChoiceRow(QStringLiteral("Show Items In"),
                    {{QStringLiteral("auto"), QStringLiteral("Automatic")},
                     {QStringLiteral("dock"), QStringLiteral("Own Bar")},
                     {QStringLiteral("tray"), QStringLiteral("Tray")},
                     {QStringLiteral("offscreen"), QStringLiteral("Image File")}},
                    std::move(kind)),
          bar(dynamic_cast<const BarSwitch*>(&statusBar)) {
        BarRow::refresh();
    }

    void refresh() override {
        ChoiceRow::refresh();
        if (bar == nullptr) {
            return;
        }
        switch (bar->kind()) {
            case BarKind::Tray: {
                const auto* tray = dynamic_cast<const TrayBar*>(&bar->current());
                setHint(
                    tray != nullptr && !tray->hasWatcher()
                        ? QStringLiteral("No tray is running: the items appear when one starts.")
                        : QStringLiteral("Now in the desktop's tray."));
                break;
            }
            case BarKind::Offscreen:
                setHint(QStringLiteral("Now drawn into an image file."));
                break;
            case BarKind::Dock:
            case BarKind::Automatic:
                setHint(QStringLiteral("Now in Vostel's own bar."));
                break;
        }
    }

  private:
    const BarSwitch* bar;  // null where the bar cannot change
};

}  // namespace

GeneralSettingsPanel::GeneralSettingsPanel(AppServices& services, AppContext& context)
    : SettingsPanel(QStringLiteral("General")) {
    addProblemNote(services.defaults);
    addStartupSection(services.app);
    addBarSection(services.app, context);
    addUpdatesSection(*services.updates);
    addSettingsFileSection(context);
    addAboutSection(context);
    follow(services.notifications,
           {AppSettings::changeNotification, UpdateController::changeNotification});
}

void GeneralSettingsPanel::addProblemNote(DefaultsStore& store) {
    NoteLine* note = addNote({});
    const auto show = [note, &store] { note->setNote(store.problem(), NoteLine::Kind::Warning); };
    connect(&store, &DefaultsStore::problemChanged, note, show);
    show();
}

void GeneralSettingsPanel::addStartupSection(AppSettings& settings) {
    addSection(QStringLiteral("Startup"));
    addRow(new ToggleRow(QStringLiteral("Launch at Login"),
                         {[] { return LoginItem::ofThisProgram().isEnabled(); },
                          [](bool on) { LoginItem::ofThisProgram().apply(on); }}));
    auto* dock = new ToggleRow(QStringLiteral("Show Dock Icon"), bound(settings.showDock));
    dock->setHint(QStringLiteral("Keeps an entry in the taskbar while this window is closed."));
    addRow(dock);
    auto* slow =
        new ToggleRow(QStringLiteral("Slow Down on Battery"), bound(settings.slowOnBattery));
    slow->setHint(
        QStringLiteral("Doubles every refresh interval while the machine runs on battery."));
    slow->setKeywords(QStringLiteral("power energy"));
    addRow(slow);
}

void GeneralSettingsPanel::addBarSection(AppSettings& settings, AppContext& context) {
    addSection(QStringLiteral("Bar"));
    addRow(new BarRow(bound(settings.bar), context.statusBar));
    addRow(new ChoiceRow(QStringLiteral("Screen Edge"),
                         {{QStringLiteral("top"), QStringLiteral("Top")},
                          {QStringLiteral("bottom"), QStringLiteral("Bottom")}},
                         bound(settings.barEdge)));
    addRow(new SliderRow(QStringLiteral("Bar Thickness: "),
                         {AppSettings::thinnest, AppSettings::thickest, 1},
                         {[&settings] { return settings.dockBarOptions().thickness; },
                          bound(settings.barThickness).set}));
    addRow(new ChoiceRow(QStringLiteral("Bar Appearance"),
                         {{QStringLiteral("dark"), QStringLiteral("Dark")},
                          {QStringLiteral("light"), QStringLiteral("Light")},
                          {QStringLiteral("auto"), QStringLiteral("Automatic")}},
                         bound(settings.barAppearance)));
    addNote(QStringLiteral("Edge, thickness and appearance are those of Vostel's own bar."));
}

void GeneralSettingsPanel::addUpdatesSection(UpdateController& updates) {
    addSection(QStringLiteral("Updates"));
    auto* automatic = new ToggleRow(QStringLiteral("Automatically Check for Updates"),
                                    {[&updates] { return updates.isAutomatic(); },
                                     [&updates](bool on) { updates.setAutomatic(on); }});
    automatic->setKeywords(QStringLiteral("upgrade newer"));
    addRow(automatic);
    auto* check = new UpdateCheckRow(updates);
    addRow(check);
    if (const QString reason = updates.unavailableReason(); !reason.isEmpty()) {
        automatic->setEnabled(false);
        check->setEnabled(false);
        addNote(reason);
        return;
    }
    addRow(new UpdateOfferRow(updates));
    if (const QString hint = installLocationHint(); !hint.isEmpty()) {
        addWidget(new InstallLocationRow(hint, programFile()));
    }
}

void GeneralSettingsPanel::addSettingsFileSection(AppContext& context) {
    addSection(QStringLiteral("Settings File"));
    addRow(new ButtonRow(QStringLiteral("Save to a File"), QStringLiteral("Export Settings…"),
                         context.exportSettings));
    addRow(new ButtonRow(QStringLiteral("Load from a File"), QStringLiteral("Import Settings…"),
                         context.importSettings));
    addNote(
        QStringLiteral("Export saves all Vostel preferences to a file. Import replaces them and "
                       "relaunches the app. Sign-in credentials aren’t included."));
}

void GeneralSettingsPanel::addAboutSection(AppContext& context) {
    addSection(QStringLiteral("Diagnostics"));
    addRow(new SourcesRow(context));
    addNote(
        QStringLiteral("Copies versions, desktop, sources and the log; no addresses and no names "
                       "of processes."));
    addSection(QStringLiteral("About"));
    auto* about =
        new ButtonRow(QStringLiteral("Vostel"), QStringLiteral("Quit Vostel"), context.quit);
    about->setHint(QStringLiteral("Version " VOSTEL_VERSION "\nMenu-bar system & usage monitor"));
    addRow(about);
    addNote(QStringLiteral(
        "Toggle modules on/off in the sidebar. Ctrl-drag a menu-bar item to reorder it."));
}

}  // namespace vostel
