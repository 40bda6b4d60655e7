#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <QFile>
#include <QTemporaryDir>

#include "combined/CombinedSettings.h"

namespace vostel {
namespace {

struct CombinedSettingsTest : testing::Test {
    QString path() const { return folder.filePath(QStringLiteral("s.plist")); }
    // The settings that a file with these entries gives.
    CombinedSettings& load(const QString& entries) {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<plist version=\"1.0\"><dict>" + entries.toUtf8() + "</dict></plist>");
        file.close();
        settings.reset();
        store = std::make_unique<DefaultsStore>(path(), nullptr);
        settings =
            std::make_unique<CombinedSettings>(*store, center,
                                               std::vector<CombinedSettings::Available>{
                                                   {QStringLiteral("net"), QStringLiteral("Net")},
                                                   {QStringLiteral("cpu"), QStringLiteral("Cpu")},
                                                   {QStringLiteral("hum"), QStringLiteral("Hum")}});
        return *settings;
    }
    static QString list(const char* name, const char* ids) {
        QString entry = QStringLiteral("<key>combined.%1</key><array>").arg(QLatin1String(name));
        for (const QString& id : QString::fromLatin1(ids).split(u' ', Qt::SkipEmptyParts)) {
            entry += QStringLiteral("<string>%1</string>").arg(id);
        }
        return entry + QStringLiteral("</array>");
    }

    QTemporaryDir folder;
    NotificationCenter center;
    std::unique_ptr<DefaultsStore> store;
    std::unique_ptr<CombinedSettings> settings;
};

// Catches items that a damaged or older settings file makes vanish, double or appear unasked.
TEST_F(CombinedSettingsTest, whateverIsStoredEveryItemStandsInTheOrderOnce) {
    const QString mixed =
        QStringLiteral("<key>combined.order</key><array><string>hum</string><true/></array>");
    const struct {
        QString stored;
        const char* order;
        const char* enabled;
    } rows[] = {
        {QString(), "net cpu hum", ""},
        {list("order", "cpu bogus net") + list("enabled", "net hum bogus"), "cpu net hum",
         "net hum"},
        {list("order", "hum hum cpu hum") + list("enabled", "cpu cpu hum"), "hum cpu net",
         "hum cpu"},
        {list("order", "") + list("enabled", ""), "net cpu hum", ""},
        {mixed + list("enabled", "cpu"), "net cpu hum", "cpu"},
        {QStringLiteral("<key>combined.order</key><string>hum</string>"
                        "<key>combined.enabled</key><dict/>"),
         "net cpu hum", ""},
        {QStringLiteral("<key>combined.enabled</key><data>AAEC</data>"), "net cpu hum", ""},
    };
    for (const auto& row : rows) {
        const CombinedSettings& loaded = load(row.stored);
        EXPECT_EQ(loaded.order().join(u' '), QLatin1String(row.order)) << row.stored.toStdString();
        EXPECT_EQ(loaded.orderedEnabledIDs().join(u' '), QLatin1String(row.enabled))
            << row.stored.toStdString();
    }
}

// Catches a stored or given number that makes an image of a million points, or of none.
TEST_F(CombinedSettingsTest, spacingStaysWithinItsBounds) {
    const struct {
        const char* stored;
        double spacing;
    } rows[] = {
        {"<real>5.5</real>", 5.5}, {"<integer>7</integer>", 7}, {"<real>nan</real>", 6},
        {"<real>-5</real>", 0},    {"<real>1e9</real>", 40},    {"<string>9</string>", 6},
        {"<array/>", 6},           {"<real>inf</real>", 6},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(load(QStringLiteral("<key>combined.spacing</key>") + QLatin1String(row.stored))
                      .spacing(),
                  row.spacing)
            << row.stored;
    }
    for (const double given : {std::nan(""), -std::numeric_limits<double>::infinity(), 1e300}) {
        settings->setSpacing(given);
        EXPECT_EQ(settings->spacing(), given > 0 ? 40 : 0);
    }
}

// Catches a change that is half stored, and one that listeners hear of before it is so.
TEST_F(CombinedSettingsTest, aChangeWritesAllKeysAndPostsOnce) {
    load(list("order", "hum bogus"));
    int posts = 0;
    QStringList heard;
    const auto subscription = center.subscribe(CombinedSettings::changeNotification, [&] {
        ++posts;
        heard = settings->orderedEnabledIDs();
    });
    settings->setEnabled(QStringLiteral("cpu"), true);
    EXPECT_EQ(posts, 1);
    EXPECT_EQ(heard, QStringList{QStringLiteral("cpu")});
    settings->setEnabled(QStringLiteral("bogus"), true);
    EXPECT_EQ(posts, 1);
    settings->setOrder({QStringLiteral("cpu"), QStringLiteral("bogus"), QStringLiteral("cpu")});
    settings->setSpacing(3);
    EXPECT_EQ(posts, 3);
    ASSERT_TRUE(store->flush());
    const DefaultsStore again(path(), nullptr, DefaultsStore::Access::ReadOnly);
    EXPECT_EQ(again.values().textList(QStringLiteral("combined.order"))->join(u' '),
              QStringLiteral("cpu net hum"));
    EXPECT_EQ(again.values().textList(QStringLiteral("combined.enabled"))->join(u' '),
              QStringLiteral("cpu"));
    EXPECT_EQ(again.values().number(QStringLiteral("combined.spacing")), 3);
}

}  // namespace
}  // namespace vostel
