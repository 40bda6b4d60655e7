#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "core/GlobalSettings.h"
#include "core/SystemColors.h"
#include "monitors/network/NetworkSettings.h"

namespace vostel {
namespace {

struct Store {
    QTemporaryDir folder;
    DefaultsStore defaults{folder.filePath(QStringLiteral("s.plist")), nullptr};
    NotificationCenter center;
    GlobalSettings global{defaults, center};
};

TEST(NetworkSettingsTest, StoredTextsAndWhatTheyMean) {
    const struct {
        const char* mode;
        const char* style;
        DisplayMode wantedMode;
        DisplayStyle wantedStyle;
    } rows[] = {
        {nullptr, nullptr, DisplayMode::stacked, DisplayStyle::line},
        {"stacked", "line", DisplayMode::stacked, DisplayStyle::line},
        {"mirrored", "bars", DisplayMode::mirrored, DisplayStyle::bars},
        {"opposing", "Bars", DisplayMode::opposing, DisplayStyle::line},
        {"Opposing", "", DisplayMode::stacked, DisplayStyle::line},
    };
    for (const auto& row : rows) {
        Store store;
        if (row.mode != nullptr) {
            store.defaults.set(QStringLiteral("net.displayMode"), QString::fromLatin1(row.mode));
            store.defaults.set(QStringLiteral("net.displayStyle"), QString::fromLatin1(row.style));
        }
        const NetworkSettings settings(store.defaults, store.center, store.global);
        EXPECT_EQ(settings.displayMode(), row.wantedMode);
        EXPECT_EQ(settings.displayStyle(), row.wantedStyle);
    }
}

TEST(NetworkSettingsTest, AnInvalidInterfaceModeFallsBackToTheOldKey) {
    const struct {
        const char* mode;
        std::optional<bool> includeAll;
        InterfaceMode wanted;
    } rows[] = {
        {nullptr, {}, InterfaceMode::automatic},        {"Automatic", true, InterfaceMode::all},
        {nullptr, false, InterfaceMode::custom},        {"custom", true, InterfaceMode::custom},
        {"automatic", false, InterfaceMode::automatic},
    };
    for (const auto& row : rows) {
        Store store;
        if (row.mode != nullptr) {
            store.defaults.set(QStringLiteral("net.interfaceMode"), QString::fromLatin1(row.mode));
        }
        if (row.includeAll) {
            store.defaults.set(QStringLiteral("net.includeAll"), *row.includeAll);
        }
        EXPECT_EQ(NetworkSettings(store.defaults, store.center, store.global).interfaceMode(),
                  row.wanted);
    }
    Store store;
    store.defaults.set(QStringLiteral("net.includeAll"), QStringLiteral("yes"));
    EXPECT_EQ(NetworkSettings(store.defaults, store.center, store.global).interfaceMode(),
              InterfaceMode::automatic)
        << "no boolean";
}

TEST(NetworkSettingsTest, WritesAreStoredPostedAndReadAgain) {
    Store store;
    int posts = 0;
    const auto subscription = store.center.subscribe("networkSettingsChanged", [&] { ++posts; });
    {
        NetworkSettings settings(store.defaults, store.center, store.global);
        EXPECT_TRUE(settings.lookUpWAN());
        EXPECT_EQ(settings.upColor(), systemBlue());
        settings.displayMode = DisplayMode::mirrored;
        settings.interfaceMode = InterfaceMode::custom;
        settings.selectedInterfaces = QStringList{QStringLiteral("eth0")};
        settings.upColorHex = QStringLiteral("#C25023FF");
        settings.lookUpWAN = false;
        settings.knownInterfaces = QStringList{QStringLiteral("eth0")};
    }
    EXPECT_EQ(posts, 5);
    EXPECT_EQ(store.defaults.values().text(QStringLiteral("net.displayMode")),
              QStringLiteral("mirrored"));
    const NetworkSettings again(store.defaults, store.center, store.global);
    EXPECT_EQ(again.displayMode(), DisplayMode::mirrored);
    EXPECT_EQ(again.interfaceMode(), InterfaceMode::custom);
    EXPECT_EQ(again.selectedInterfaces(), QStringList{QStringLiteral("eth0")});
    EXPECT_EQ(again.upColor(), QColor(0xC2, 0x50, 0x23));
    EXPECT_FALSE(again.lookUpWAN());
    EXPECT_TRUE(again.knownInterfaces.value().isEmpty()) << "only published";
}

}  // namespace
}  // namespace vostel
