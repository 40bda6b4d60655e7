#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "core/ModuleManager.h"

namespace vostel {
namespace {

class ModuleManagerTest : public testing::Test {
  protected:
    struct Recorder : MenubarModule {
        Recorder(QStringList& l, QString i) : log(l), id(std::move(i)) {
            log << id + QStringLiteral(" made");
        }
        ~Recorder() override { log << id + QStringLiteral(" gone"); }
        void start() override { log << id + QStringLiteral(" start"); }
        void stop() override { log << id + QStringLiteral(" stop"); }
        QStringList& log;
        QString id;
    };

    std::vector<Registration> rows() {
        std::vector<Registration> result;
        for (const auto& [id, on] :
             {std::pair("b", true), std::pair("a", true), std::pair("c", false)}) {
            const QString name = QLatin1String(id);
            result.push_back({name, name.toUpper(), on,
                              [this, name] { return std::make_unique<Recorder>(log, name); }});
        }
        return result;
    }

    QTemporaryDir folder;
    QStringList log;
    DefaultsStore store{folder.filePath(QStringLiteral("s.plist")), nullptr};
    ModuleManager manager{store, rows()};
};

TEST_F(ModuleManagerTest, StartsInRegistryOrderAndStopsEachOnce) {
    manager.loadEnabledModules();
    EXPECT_EQ(log, (QStringList{QStringLiteral("b made"), QStringLiteral("b start"),
                                QStringLiteral("a made"), QStringLiteral("a start")}));
    log.clear();
    manager.stopAll();
    manager.stopAll();
    log.sort();
    EXPECT_EQ(log, (QStringList{QStringLiteral("a gone"), QStringLiteral("a stop"),
                                QStringLiteral("b gone"), QStringLiteral("b stop")}));
}

TEST_F(ModuleManagerTest, SwitchingTwiceMakesAFreshInstance) {
    manager.loadEnabledModules();
    log.clear();
    const auto menu = manager.buildModulesMenu();
    ASSERT_EQ(menu->actions().size(), 3);
    EXPECT_TRUE(menu->actions()[1]->isChecked());
    EXPECT_FALSE(menu->actions()[2]->isChecked());
    menu->actions()[1]->trigger();
    menu->actions()[1]->trigger();
    EXPECT_EQ(log, (QStringList{QStringLiteral("a stop"), QStringLiteral("a gone"),
                                QStringLiteral("a made"), QStringLiteral("a start")}));
    EXPECT_EQ(store.values().boolean(QStringLiteral("module.a.enabled")), true);
    manager.setEnabled(true, QStringLiteral("a"));  // runs already
    EXPECT_EQ(log.size(), 4);
}

TEST_F(ModuleManagerTest, FlagsOfUnknownModulesAndOfOtherTypes) {
    EXPECT_FALSE(manager.isEnabled(QStringLiteral("nobody")));
    manager.setEnabled(true, QStringLiteral("nobody"));
    EXPECT_TRUE(manager.isEnabled(QStringLiteral("nobody")));
    EXPECT_TRUE(log.isEmpty());
    store.set(QStringLiteral("module.a.enabled"), QStringLiteral("NO"));
    EXPECT_FALSE(manager.isEnabled(QStringLiteral("a")));
    store.set(QStringLiteral("module.c.enabled"), 1.0);
    EXPECT_TRUE(manager.isEnabled(QStringLiteral("c")));
}

}  // namespace
}  // namespace vostel
