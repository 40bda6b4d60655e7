#include <gtest/gtest.h>

#include <cmath>

#include <QTemporaryDir>

#include "core/ColorText.h"
#include "core/IntervalOptions.h"
#include "core/ModuleSettings.h"
#include "core/SystemColors.h"

namespace vostel {
namespace {

TEST(ColorTextTest, Parsing) {
    const struct {
        const char* text;
        const char* expected;  // null: no colour
    } rows[] = {
        {"#FF0000FF", "#FF0000FF"}, {" #ff8000\t", "#FF8000FF"},
        {"ff800080", "#FF800080"},  {"00000000", "#00000000"},
        {"#F80", nullptr},          {"", nullptr},
        {"##112233", nullptr},      {"12345g", nullptr},
        {"+12345", nullptr},        {"0x1122", nullptr},
        {"1122334", nullptr},       {"#11 22 33", nullptr},
        {"auto", nullptr},          {"\u0661\u0662\u0663\u0664\u0665\u0666", nullptr},
    };
    for (const auto& row : rows) {
        const auto color = colorFromHex(QString::fromUtf8(row.text));
        ASSERT_EQ(color.has_value(), row.expected != nullptr) << row.text;
        if (color) {
            EXPECT_EQ(hexString(*color), QLatin1String(row.expected)) << row.text;
        }
    }
    EXPECT_EQ(hexString(QColor::fromRgbF(1, 0, 0, 0.5F)), QStringLiteral("#FF000080"));
    EXPECT_EQ(hexString(QColor()), QStringLiteral("#00C853FF"));
}

class SettingsTest : public testing::Test {
  protected:
    QTemporaryDir folder;
    DefaultsStore store{folder.filePath(QStringLiteral("s.plist")), nullptr};
    NotificationCenter center;

    int postsOf(const char* name, const std::function<void()>& action) {
        int posts = 0;
        const auto subscription = center.subscribe(name, [&] { ++posts; });
        action();
        return posts;
    }
};

TEST_F(SettingsTest, GlobalValuesAndTheirFallbacks) {
    store.set(QStringLiteral("global.fg"), 5.0);                         // wrong type
    store.set(QStringLiteral("global.mono"), QStringLiteral("yes"));     // wrong type
    store.set(QStringLiteral("global.labelSize"), 100.0);                // out of range
    store.set(QStringLiteral("global.text"), QStringLiteral("purple"));  // no colour
    GlobalSettings global(store, center);
    EXPECT_EQ(global.foregroundHex(), hexString(systemGreen()));
    EXPECT_FALSE(global.monochrome());
    EXPECT_EQ(global.labelSize(), 9);
    EXPECT_EQ(global.text(Appearance::Light), labelColor(Appearance::Light));

    EXPECT_EQ(postsOf("globalSettingsChanged", [&] { global.setLabelSize(3); }), 1);
    EXPECT_EQ(store.values().number(QStringLiteral("global.labelSize")), 4.0);
    // Assigning the same value writes and posts all the same.
    EXPECT_EQ(postsOf("globalSettingsChanged", [&] { global.updateInterval = 1.0; }), 1);
    EXPECT_EQ(store.values().number(QStringLiteral("global.interval")), 1.0);
}

TEST_F(SettingsTest, OverridesFallBackInSteps) {
    store.set(QStringLiteral("x.fg"), QStringLiteral("not a colour"));
    GlobalSettings global(store, center);
    ModuleSettings settings(store, center, global, QStringLiteral("x."), "xSettingsChanged");
    global.foregroundHex = QStringLiteral("#010203");
    EXPECT_EQ(hexString(settings.effForeground()), QStringLiteral("#010203FF"));
    EXPECT_TRUE(store.values().contains(QStringLiteral("x.fg")));  // not removed
    global.foregroundHex = QStringLiteral("neither");
    EXPECT_EQ(settings.effForeground(), systemGreen());
    global.backgroundHex = QString();
    EXPECT_EQ(hexString(settings.effBackground()), QStringLiteral("#0000001A"));
    settings.foregroundHexOverride = QStringLiteral("#0A0B0C0D");
    EXPECT_EQ(hexString(settings.effForeground()), QStringLiteral("#0A0B0C0D"));
    settings.monochromeOverride = true;
    settings.intervalOverride = 0.25;
    EXPECT_TRUE(settings.effMonochrome());
    EXPECT_EQ(settings.effInterval(), 0.25);

    EXPECT_EQ(postsOf("xSettingsChanged", [&] { settings.revertAppearanceToGlobal(); }), 5);
    for (const char* name : {"x.fg", "x.bg", "x.text", "x.mono", "x.interval"}) {
        EXPECT_FALSE(store.values().contains(QLatin1String(name))) << name;
    }
    EXPECT_EQ(settings.effInterval(), global.updateInterval());
}

// Catches numbers and texts of a damaged or foreign file that reach timers, counters or drawing as
// they are.
TEST_F(SettingsTest, WhatIsReadIsBroughtIntoItsBounds) {
    const std::pair<double, double> intervals[] = {{1e300, 86400}, {-5, 0.02},   {0, 0.02},
                                                   {1e-300, 0.02}, {0.25, 0.25}, {900, 900}};
    for (const auto& [stored, used] : intervals) {
        store.set(QStringLiteral("x.interval"), stored);
        store.set(QStringLiteral("global.interval"), stored);
        GlobalSettings global(store, center);
        ModuleSettings own(store, center, global, QStringLiteral("x."), "xSettingsChanged");
        ModuleSettings other(store, center, global, QStringLiteral("y."), "ySettingsChanged");
        EXPECT_EQ(own.effInterval(), used);
        EXPECT_EQ(other.effInterval(), used);
    }
    EXPECT_EQ(IntervalOptions::label(1e300), QStringLiteral("1440m"));
    EXPECT_EQ(IntervalOptions::label(-5), QStringLiteral("0s"));
    EXPECT_EQ(IntervalOptions::bounded(std::nan("")), IntervalOptions::shortest);

    const QString party = QString::fromUtf8("🎉");
    store.set(QStringLiteral("x.label"), QStringLiteral("x") + party.repeated(1 << 20));
    store.set(QStringLiteral("x.fg"), QString(5 << 20, u'F'));
    store.set(QStringLiteral("x.list"),
              QStringList(300, QStringLiteral("x") + party.repeated(200)));
    GlobalSettings global(store, center);
    ModuleSettings settings(store, center, global, QStringLiteral("x."), "xSettingsChanged");
    EXPECT_EQ(settings.label(), QStringLiteral("x") + party.repeated(127));
    EXPECT_EQ(settings.foregroundHexOverride()->size(), 256);
    SettingsGroup group(store, center, QStringLiteral("x."), "xSettingsChanged");
    const Setting<QStringList> list(group, QStringLiteral("list"), {});
    EXPECT_EQ(list().size(), 256);
    EXPECT_EQ(list().back().size(), 255);
    settings.label = party.repeated(1 << 20);
    EXPECT_EQ(store.values().text(QStringLiteral("x.label")), party.repeated(128));
}

TEST_F(SettingsTest, HandlersMayComeAndGoWhileANotificationIsDelivered) {
    int first = 0;
    int second = 0;
    int late = 0;
    NotificationCenter::Subscription victim;
    NotificationCenter::Subscription added;
    const auto killer = center.subscribe("n", [&] {
        ++first;
        victim = {};
        if (first == 1) {
            added = center.subscribe("n", [&] { ++late; });
        }
    });
    victim = center.subscribe("n", [&] { ++second; });
    center.post("n");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(late, 0);
    center.post("n");
    EXPECT_EQ(late, 1);
}

TEST(IntervalOptionsTest, Labels) {
    const std::pair<double, const char*> rows[] = {
        {0.25, "¼s"}, {0.5, "½s"}, {1, "1s"},   {5, "5s"},    {30, "30s"},
        {60, "1m"},   {90, "1m"},  {300, "5m"}, {900, "15m"}, {2.9, "2s"},
    };
    for (const auto& [seconds, label] : rows) {
        EXPECT_EQ(IntervalOptions::label(seconds), QString::fromUtf8(label));
    }
}

}  // namespace
}  // namespace vostel
