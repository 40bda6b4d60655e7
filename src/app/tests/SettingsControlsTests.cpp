// Every control of every page: what it stores, and what the bar then shows.

#include <gtest/gtest.h>

#include <set>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QScrollArea>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "app/settings/SettingsWindow.h"
#include "app/tests/SteadyPlatform.h"
#include "item/ShownItem.h"
#include "statusbar/OffscreenBar.h"
#include "ui/settings/SettingsPanel.h"
#include "ui/settings/TextField.h"

namespace vostel {
namespace {

struct Step {
    const char* control;
    const char* typed;  // into a field; "right": the arrow key; nothing: a click
    const char* key;    // that the store then holds differently
    const char* shown;  // the item whose image then differs; nothing: none does
};

struct Page {
    const char* id;
    std::vector<Step> steps;
};

// The overrides that every item has; the steps leave all of them switched on.
std::vector<Step> appearanceOf(const char* id, const char* prefix, bool hasForeground) {
    static std::vector<std::string> texts;
    texts.reserve(1000);
    const auto key = [prefix](const char* name) {
        return texts.emplace_back(std::string(prefix) + name).c_str();
    };
    std::vector<Step> steps;
    if (hasForeground) {
        steps.push_back({"Foreground Color, hexadecimal", "#6010D0FF", key("fg"), id});
    } else {
        steps.push_back({"Override Foreground Color", nullptr, key("fg"), nullptr});
        steps.push_back({"Foreground Color, hexadecimal", "#6010D0FF", key("fg"), id});
    }
    steps.insert(steps.end(), {{"Override Background Color", nullptr, key("bg"), nullptr},
                               {"Background Color, hexadecimal", "#506030FF", key("bg"), id},
                               {"Override Text Color", nullptr, key("text"), nullptr},
                               {"Text Color, hexadecimal", "#E0FF40FF", key("text"), id},
                               {"Override Monochrome", nullptr, key("mono"), nullptr},
                               {"Monochrome: On", nullptr, key("mono"), id},
                               {"Monochrome: Off", nullptr, key("mono"), id}});
    return steps;
}

std::vector<Step> joined(std::vector<Step> first, const std::vector<Step>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::vector<Page> pages() {
    return {
        {"general",
         {{"Show Dock Icon", nullptr, "app.showDock", nullptr},
          {"Slow Down on Battery", nullptr, "app.slowOnBattery", nullptr},
          {"Show Items In: Own Bar", nullptr, "app.bar", nullptr},
          {"Show Items In: Tray", nullptr, "app.bar", nullptr},
          {"Show Items In: Image File", nullptr, "app.bar", nullptr},
          {"Show Items In: Automatic", nullptr, "app.bar", nullptr},
          {"Screen Edge: Bottom", nullptr, "app.barEdge", nullptr},
          {"Screen Edge: Top", nullptr, "app.barEdge", nullptr},
          {"Bar Thickness", "right", "app.barThickness", nullptr},
          {"Bar Appearance: Light", nullptr, "app.barAppearance", nullptr},
          {"Bar Appearance: Automatic", nullptr, "app.barAppearance", nullptr},
          {"Bar Appearance: Dark", nullptr, "app.barAppearance", nullptr}}},
        {"appearance",
         {{"Foreground Color, hexadecimal", "#D01060FF", "global.fg", "gpu"},
          {"Background Color, hexadecimal", "#304050FF", "global.bg", "gpu"},
          {"Text Color, hexadecimal", "#40E0FFFF", "global.text", "cpu"},
          {"Label Size", "right", "global.labelSize", "cpu"},
          {"Refresh Interval: ¼s", nullptr, "global.interval", nullptr},
          {"Refresh Interval: ½s", nullptr, "global.interval", nullptr},
          {"Refresh Interval: 1s", nullptr, "global.interval", nullptr},
          {"Refresh Interval: 2s", nullptr, "global.interval", nullptr},
          {"Refresh Interval: 5s", nullptr, "global.interval", nullptr},
          {"Monochrome", nullptr, "global.mono", "memory"},
          {"Monochrome", nullptr, "global.mono", "memory"}}},
        {"network", joined({{"Display Mode: Stacked", nullptr, "net.displayMode", "network"},
                            {"Display Mode: Mirrored", nullptr, "net.displayMode", "network"},
                            {"Display Mode: Opposing", nullptr, "net.displayMode", "network"},
                            {"Display Style: Line", nullptr, "net.displayStyle", "network"},
                            {"Display Style: Bars", nullptr, "net.displayStyle", "network"},
                            {"Upload Color, hexadecimal", "#10D060FF", "net.upColor", "network"},
                            {"Show Numbers Next to Graph", nullptr, "net.showNumbers", "network"},
                            {"Show Numbers Next to Graph", nullptr, "net.showNumbers", "network"},
                            {"Label (Optional)", "LAN", "net.label", "network"},
                            {"Look Up Public Address", nullptr, "net.lookUpWAN", nullptr},
                            {"Include: All", nullptr, "net.interfaceMode", nullptr},
                            {"Include: Custom", nullptr, "net.interfaceMode", nullptr},
                            {"eth0", nullptr, "net.selectedInterfaces", nullptr},
                            {"Include: Automatic", nullptr, "net.interfaceMode", nullptr},
                            {"Override Refresh Interval", nullptr, "net.interval", nullptr},
                            {"Refresh Interval: ¼s", nullptr, "net.interval", nullptr},
                            {"Refresh Interval: ½s", nullptr, "net.interval", nullptr},
                            {"Refresh Interval: 2s", nullptr, "net.interval", nullptr},
                            {"Refresh Interval: 1s", nullptr, "net.interval", nullptr},
                            {"Refresh Interval: 5s", nullptr, "net.interval", nullptr}},
                           appearanceOf("network", "net.", true))},
        {"cpu", joined({{"Per-Core Bars", nullptr, "cpu.showPerCoreBars", "cpu"},
                        {"Single Bar", nullptr, "cpu.showSingleBar", "cpu"},
                        {"CPU Graph", nullptr, "cpu.showGraph", "cpu"},
                        {"Per-Core Bars", nullptr, "cpu.showPerCoreBars", "cpu"},
                        {"Split Performance / Efficiency Cores", nullptr, "cpu.splitCores", "cpu"},
                        {"Split Performance / Efficiency Cores", nullptr, "cpu.splitCores", "cpu"},
                        {"Efficiency Core Color, hexadecimal", "#10D060FF", "cpu.ecore", "cpu"},
                        {"Override Efficiency Core Color", nullptr, "cpu.ecore", "cpu"},
                        {"Label (Optional)", "X", "cpu.label", "cpu"},
                        {"Override Refresh Interval", nullptr, "cpu.interval", nullptr},
                        {"Override Refresh Interval", nullptr, "cpu.interval", nullptr},
                        {"Refresh Interval: ¼s", nullptr, "cpu.interval", nullptr},
                        {"Refresh Interval: ½s", nullptr, "cpu.interval", nullptr},
                        {"Refresh Interval: 2s", nullptr, "cpu.interval", nullptr},
                        {"Refresh Interval: 1s", nullptr, "cpu.interval", nullptr},
                        {"Refresh Interval: 5s", nullptr, "cpu.interval", nullptr}},
                       appearanceOf("cpu", "cpu.", false))},
        {"memory", joined({{"Label (Optional)", "RAM", "mem.label", "memory"},
                           {"Override Refresh Interval", nullptr, "mem.interval", nullptr},
                           {"Override Refresh Interval", nullptr, "mem.interval", nullptr},
                           {"Refresh Interval: ¼s", nullptr, "mem.interval", nullptr},
                           {"Refresh Interval: ½s", nullptr, "mem.interval", nullptr},
                           {"Refresh Interval: 2s", nullptr, "mem.interval", nullptr},
                           {"Refresh Interval: 1s", nullptr, "mem.interval", nullptr},
                           {"Refresh Interval: 5s", nullptr, "mem.interval", nullptr}},
                          appearanceOf("memory", "mem.", true))},
        {"gpu", joined({{"Label (Optional)", "3D", "gpu.label", "gpu"},
                        {"Override Refresh Interval", nullptr, "gpu.interval", nullptr},
                        {"Override Refresh Interval", nullptr, "gpu.interval", nullptr},
                        {"Refresh Interval: ¼s", nullptr, "gpu.interval", nullptr},
                        {"Refresh Interval: ½s", nullptr, "gpu.interval", nullptr},
                        {"Refresh Interval: 2s", nullptr, "gpu.interval", nullptr},
                        {"Refresh Interval: 1s", nullptr, "gpu.interval", nullptr},
                        {"Refresh Interval: 5s", nullptr, "gpu.interval", nullptr}},
                       appearanceOf("gpu", "gpu.", false))},
        {"combined",
         {{"Memory Bar", nullptr, "combined.enabled", "combined"},
          {"Memory Bar", nullptr, "combined.enabled", "combined"},
          {"GPU Bar", nullptr, "combined.enabled", "combined"},
          {"GPU Bar", nullptr, "combined.enabled", "combined"},
          {"CPU Graph", nullptr, "combined.enabled", "combined"},
          {"CPU Graph", nullptr, "combined.enabled", "combined"},
          {"Network Graph", nullptr, "combined.enabled", "combined"},
          {"Network Graph", nullptr, "combined.enabled", "combined"},
          {"Move Memory Bar Down", nullptr, "combined.order", "combined"},
          {"Move Memory Bar Up", nullptr, "combined.order", "combined"},
          {"Move GPU Bar Up", nullptr, "combined.order", "combined"},
          {"Move GPU Bar Down", nullptr, "combined.order", "combined"},
          {"Move CPU Graph Down", nullptr, "combined.order", "combined"},
          {"Move CPU Graph Up", nullptr, "combined.order", "combined"},
          {"Move Network Graph Up", nullptr, "combined.order", "combined"},
          {"Move Network Graph Down", nullptr, "combined.order", "combined"},
          {"Spacing", "right", "combined.spacing", "combined"}}},
    };
}

// What a step cannot try: it leads out of the store, and has tests of its own.
const QStringList elsewhere{
    QStringLiteral("Launch at Login"),           QStringLiteral("Quit Vostel"),
    QStringLiteral("Export Settings…"),          QStringLiteral("Import Settings…"),
    QStringLiteral("Revert to Global Settings"), QStringLiteral("Copy Diagnostics")};

class SettingsControlsTest : public testing::Test {
  protected:
    SettingsControlsTest() {
        delegate.moduleManager->loadEnabledModules();
        delegate.moduleManager->setEnabled(true, combined);
        for (int second = 0; second < 70; ++second) {  // longer than a history
            clock->now += 1;
            for (const QString& id : moduleIds()) {
                if (auto* item = itemOf(id)) {
                    item->tick();
                }
            }
            // What is due by the moved clock must not be left for the middle of a step.
            services.scheduler.fire();
        }
        delegate.showSettings();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<SettingsWindow*>(widget)) {
                window = found;
            }
        }
        window->resize(900, 2000);  // nothing to scroll
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }

    ShownItem* itemOf(const QString& id) {
        return dynamic_cast<ShownItem*>(delegate.moduleManager->running(id));
    }
    std::map<QString, QByteArray> images() {
        std::map<QString, QByteArray> all;
        for (const QString& id : moduleIds()) {
            if (auto* item = itemOf(id)) {
                const QImage shown = item->menubarImage({}).value_or(StatusImage()).image;
                all[id] = QByteArray(reinterpret_cast<const char*>(shown.constBits()),
                                     shown.sizeInBytes());
            }
        }
        return all;
    }
    std::vector<QWidget*> controls() {
        std::vector<QWidget*> found;
        for (QWidget* each : window->panel(window->selected())->findChildren<QWidget*>()) {
            if ((qobject_cast<QAbstractButton*>(each) || qobject_cast<TextField*>(each) ||
                 qobject_cast<QSlider*>(each)) &&
                each->isVisible() && each->isEnabled()) {
                found.push_back(each);
            }
        }
        return found;
    }
    void act(const Step& step) {
        for (QWidget* each : controls()) {
            if (each->accessibleName() != QString::fromUtf8(step.control)) {
                continue;
            }
            if (step.typed == nullptr) {
                QTest::mouseClick(each, Qt::LeftButton);
            } else if (QByteArray(step.typed) == "right") {
                QTest::keyClick(each, Qt::Key_Right);
            } else {
                each->setFocus();
                qobject_cast<TextField*>(each)->selectAll();
                QTest::keyClicks(each, QString::fromUtf8(step.typed));
                QTest::keyClick(each, Qt::Key_Return);
            }
            QCoreApplication::processEvents();
            return;
        }
        ADD_FAILURE() << "no control: " << step.control;
    }
    QStringList changedKeys(const PropertyList& before) {
        PropertyList now = services.defaults.values();
        QStringList keys;
        QStringList all = before.keys() + now.keys();
        all.removeDuplicates();
        for (const QString& key : all) {
            PropertyList one;
            PropertyList other;
            one.copyFrom(before, key);
            other.copyFrom(now, key);
            if (one.toXml() != other.toXml()) {
                keys << key;
            }
        }
        return keys;
    }

    const QString combined = QStringLiteral("combined");
    QTemporaryDir folder;
    FakeClock* clock = nullptr;
    AppServices services{makeSteadyPlatform(clock), folder.filePath(QStringLiteral("s.plist"))};
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    AppDelegate delegate{services, bar};
    SettingsWindow* window = nullptr;
};

// Catches a control that is wired to another key or to none, an item that does not follow its
// settings or follows another's, and a control that nobody thought of here.
TEST_F(SettingsControlsTest, eachStoresItsKeyAndShowsInItsItem) {
    QStringList walked;
    for (const Page& page : pages()) {
        walked << QLatin1String(page.id);
        window->select(QLatin1String(page.id));
        QCoreApplication::processEvents();
        std::set<QString> tried;
        std::set<QString> met;
        for (const Step& step : page.steps) {
            const std::string where = std::string(page.id) + ": " + step.control;
            const auto imagesBefore = images();
            ASSERT_TRUE(images() == imagesBefore) << "the load is not steady";
            const PropertyList before = services.defaults.values();
            act(step);
            tried.insert(QString::fromUtf8(step.control));
            EXPECT_EQ(changedKeys(before).join(u' ').toStdString(), step.key) << where;
            for (const auto& [id, then] : images()) {
                const bool global = page.id == std::string("appearance");
                if (id == QLatin1String(step.shown)) {
                    EXPECT_FALSE(then == imagesBefore.at(id)) << where << " does not show";
                } else if (!global && id != combined) {  // which shows its members' settings
                    EXPECT_TRUE(then == imagesBefore.at(id))
                        << where << " shows in " << qPrintable(id);
                }
            }
            for (const QWidget* each : controls()) {
                met.insert(each->accessibleName());
            }
        }
        for (const QString& name : met) {
            if (!tried.contains(name) && !elsewhere.contains(name) &&
                !name.startsWith(QStringLiteral("Choose ")) &&
                !name.startsWith(QStringLiteral("Override "))) {
                ADD_FAILURE() << page.id << ": nobody tried " << qPrintable(name);
            }
        }
    }
    EXPECT_EQ(walked, window->pageIds());
}

}  // namespace
}  // namespace vostel
