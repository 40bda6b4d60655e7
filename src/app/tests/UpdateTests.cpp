#include <gtest/gtest.h>

#include <QTimeZone>

#include "app/updates/Appcast.h"
#include "app/updates/InstallLocation.h"
#include "app/updates/VersionOrder.h"

namespace vostel {
namespace {

// Each row stands in the order of age; texts of one row are the same version. Every pair is
// compared both ways, so an order that is no order shows, too.
TEST(VersionOrderTest, everyPairOfTheTableIsInOrder) {
    const std::vector<std::vector<const char*>> ages = {
        {"alpha"},
        {"", "0", "0.0", "+build"},
        {"0.0.1"},
        {"0.1-dev"},
        {"0.1", "0.1.0", "0.1+git5", "v0.1", "00.01"},
        {"0.1.0.1"},
        {"0.9"},
        {"0.10"},
        {"1.0a1", "1.0.0a1", "1.0-A1", "1.0.a.1"},
        {"1.0a2"},
        {"1.0a10"},
        {"1.0b1"},
        {"1.0rc1", "1.0-RC1", "1.0~rc.1"},
        {"1.0", "1", "1.0.0.0"},
        {"1.0.1b2"},
        {"1.0.1"},
        {"1.2"},
        {"1.12"},
        {"2.0b1"},
        {"2.0"},
        {"20261121"},
        {"99999999999999999999999998"},
        {"99999999999999999999999999", "0099999999999999999999999999"},
        {"100000000000000000000000000.0.1"},
    };
    for (std::size_t i = 0; i < ages.size(); ++i) {
        for (std::size_t j = 0; j < ages.size(); ++j) {
            for (const char* a : ages[i]) {
                for (const char* b : ages[j]) {
                    EXPECT_TRUE(compareVersions(a, b) == (i <=> j)) << a << " and " << b;
                }
            }
        }
    }
}

QByteArray feed(const QByteArray& items) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
           "xmlns:atom=\"http://www.w3.org/2005/Atom\"><channel><title>Vostel</title>" +
           items + "</channel></rss>";
}

QByteArray item(const QByteArray& version, const QByteArray& more = {}) {
    return "<item><sparkle:version>" + version + "</sparkle:version>" + more +
           "<link>https://example.org/" + version + "</link></item>";
}

const QByteArray signature = QByteArray(64, 'k').toBase64();

TEST(AppcastTest, readsEveryFieldInEitherForm) {
    const auto items = parseAppcast(
        feed("<item><title>Two</title><unknown><link>http://no</link></unknown>"
             "<atom:link href=\"http://no\">http://no</atom:link>"
             "<pubDate>Sat, 03 May 2025 12:00:00 +0200</pubDate>"
             "<sparkle:releaseNotesLink> https://example.org/notes </sparkle:releaseNotesLink>"
             "<sparkle:minimumSystemVersion>5.10</sparkle:minimumSystemVersion>"
             "<sparkle:deltas><enclosure url=\"http://no\" sparkle:version=\"9\"/></sparkle:deltas>"
             "<enclosure url=\"https://example.org/2.tar.gz\" sparkle:version=\"200\" "
             "sparkle:shortVersionString=\"2.0\" sparkle:os=\"linux\" length=\"1\" "
             "sparkle:edSignature=\"" +
             signature + "\"/></item>" +
             item("100",
                  "<sparkle:shortVersionString>1.<!-- -->5 &amp; a bit"
                  "</sparkle:shortVersionString><sparkle:channel>beta</sparkle:channel>")));
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 2U);
    const AppcastItem& two = items->front();
    EXPECT_EQ(two.version, QStringLiteral("200"));
    EXPECT_EQ(two.shownVersion, QStringLiteral("2.0"));
    EXPECT_EQ(two.minimumSystem, QStringLiteral("5.10"));
    EXPECT_EQ(two.operatingSystem, QStringLiteral("linux"));
    EXPECT_EQ(two.page, QUrl(QStringLiteral("https://example.org/2.tar.gz")));
    EXPECT_EQ(two.releaseNotes, QUrl(QStringLiteral("https://example.org/notes")));
    EXPECT_EQ(two.signature, signature);
    EXPECT_EQ(two.published, QDateTime(QDate(2025, 5, 3), QTime(10, 0), QTimeZone::utc()));
    EXPECT_EQ(items->back().shownVersion, QStringLiteral("1.5 & a bit"));
    EXPECT_EQ(items->back().channel, QStringLiteral("beta"));
    EXPECT_FALSE(items->back().published.isValid());
}

// Catches a feed that takes the program down, makes it open what it must not, or hides the good
// item beside a bad one.
TEST(AppcastTest, hostileItemsAreLeftOutAndTheGoodOneStays) {
    const QByteArray rows[] = {
        "<item/>",
        "<item><link>https://example.org</link></item>",
        "<item><sparkle:version>3</sparkle:version></item>",
        "<item><sparkle:version>3</sparkle:version><link>http://example.org</link></item>",
        "<item><sparkle:version>3</sparkle:version><link>file:///bin/sh</link></item>",
        "<item><sparkle:version>3</sparkle:version><link>javascript:alert(1)</link></item>",
        "<item><sparkle:version>3</sparkle:version><link>/get</link></item>",
        "<item><sparkle:version>3</sparkle:version><link>https:///get</link></item>",
        "<item><sparkle:version>3</sparkle:version><link>https://example.org@evil/</link></item>",
        "<item><sparkle:version>3</sparkle:version><link>https://" + QByteArray(3000, 'a') +
            "</link></item>",
        item("3", "<sparkle:releaseNotesLink>http://example.org</sparkle:releaseNotesLink>"),
        item("3", "<enclosure url=\"http://example.org/3\"/>"),
        item(QByteArray(33, '3')),
        item("3", "<sparkle:shortVersionString>3&#10;4</sparkle:shortVersionString>"),
        item("3", "<sparkle:shortVersionString>3&#x202e;4</sparkle:shortVersionString>"),
        "<x:item xmlns:x=\"other\"><sparkle:version>3</sparkle:version></x:item>",
        "<a>" + item("3") + "</a>",
    };
    for (const QByteArray& row : rows) {
        const auto items = parseAppcast(feed(row + item("2.0") + row));
        ASSERT_TRUE(items) << row.constData();
        ASSERT_EQ(items->size(), 1U) << row.constData();
        EXPECT_EQ(items->front().version, QStringLiteral("2.0"));
    }
}

TEST(AppcastTest, whatIsNoWholeFeedIsNone) {
    const QByteArray good = feed(item("2.0"));
    const QByteArray rows[] = {
        {},
        "<html/>",
        "<rss/",
        QByteArray("\x1f\x8b\0\0", 4),
        good.chopped(1),
        good + "<more/>",
        "<!DOCTYPE rss>" + good.mid(good.indexOf("<rss")),
        "<!DOCTYPE rss [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>" +
            feed(item("&b;")).mid(good.indexOf("<rss")),
        feed(item("&undeclared;")),
        feed(item("\xff\xfe")),
        feed(item("2.0") + QByteArray(longestAppcast, ' ')),
    };
    for (const QByteArray& row : rows) {
        EXPECT_FALSE(parseAppcast(row)) << row.left(200).constData();
    }
    EXPECT_TRUE(parseAppcast("<rss><channel/></rss>")) << "a feed without a release is a feed";
    const int deep = 40'000;
    EXPECT_TRUE(parseAppcast(
        feed(QByteArray("<a>").repeated(deep) + QByteArray("</a>").repeated(deep) + item("2"))));
}

TEST(AppcastTest, offersTheNewestThatFits) {
    const auto os = [](const char* name) {
        return QByteArray("<enclosure url=\"https://e.org/\" sparkle:os=\"") + name + "\"/>";
    };
    const auto needs = [](const char* system) {
        return QByteArray("<sparkle:minimumSystemVersion>") + system +
               "</sparkle:minimumSystemVersion>";
    };
    const auto signedBy = [](const QByteArray& text) {
        return "<enclosure url=\"https://e.org/\" sparkle:edSignature=\"" + text + "\"/>";
    };
    const struct {
        const char* what;
        QByteArray items;
        bool signature;
        const char* offered;  // null: nothing
    } rows[] = {
        {"any order", item("1.5") + item("3.0") + item("2.0"), false, "3.0"},
        {"the same and older ones", item("1.0") + item("1.0.0") + item("0.9"), false, nullptr},
        {"a preview of the next", item("2.0b1") + item("1.0b1"), false, "2.0b1"},
        {"a channel that nobody chose",
         item("3.0", "<sparkle:channel>beta</sparkle:channel>") + item("2.0"), false, "2.0"},
        {"other systems",
         item("5", os("macos")) + item("4", os("windows")) + item("3", os("Linux")), false, "3"},
        {"a kernel to come",
         item("5", needs("6.1.1")) + item("4", needs("6.10")) + item("3", needs("6.1")) +
             item("2", needs("5.4.200")),
         false, "3"},
        {"a signature wanted",
         item("7") + item("6", signedBy("short")) + item("5", signedBy(signature + "!")) +
             item("4", signedBy(QByteArray(65, 'k').toBase64())) + item("3", signedBy(signature)),
         true, "3"},
        {"a signature not wanted", item("7") + item("3", signedBy(signature)), false, "7"},
    };
    for (const auto& row : rows) {
        const auto items = parseAppcast(feed(row.items));
        ASSERT_TRUE(items) << row.what;
        const AppcastItem* offer = newestOffer(*items, {"1.0", "6.1.0-18-amd64", row.signature});
        EXPECT_EQ(offer == nullptr ? QString() : offer->version, QLatin1String(row.offered))
            << row.what;
    }
}

TEST(InstallLocationTest, saysWhereAnUpdateInPlaceCannotWork) {
    const struct {
        const char* path;
        bool image;
        bool writable;
        const char* hint;  // a part of it; empty: none
    } rows[] = {
        {"/usr/bin/vostel", false, false, ""},
        {"/usr/local/bin/vostel", false, true, ""},
        {"/opt/vostel/bin/vostel", false, false, ""},
        {"/home/me/.local/bin/vostel", false, true, ""},
        {"/home/me/Applications/Vostel.AppImage", true, true, ""},
        {"/home/me/.local/bin/Vostel.AppImage", true, true, ""},
        {"/home/me/Applications/vostel", false, true, "isn’t installed in /usr"},
        {"/home/me/Downloads/Vostel.AppImage", true, true, "isn’t in your Applications folder"},
        {"/home/me/src/vostel/build/vostel", false, true, "isn’t installed in /usr"},
        {"/usrlocal/vostel", false, true, "isn’t installed in /usr"},
        {"/home/meme/.local/bin/vostel", false, true, "isn’t installed in /usr"},
        {"/tmp/squashfs-root/usr/bin/vostel", false, true, "a temporary copy"},
        {"/var/tmp/Vostel.AppImage", true, true, "a temporary copy"},
        {"/tmpfiles/vostel", false, true, "isn’t installed in /usr"},
        {"/media/disc/vostel", false, false, "a read-only folder"},
    };
    for (const auto& row : rows) {
        const QString hint = installLocationHint(QString::fromUtf8(row.path), row.image,
                                                 QStringLiteral("/home/me"), row.writable);
        EXPECT_EQ(hint.isEmpty(), row.hint[0] == 0) << row.path;
        EXPECT_TRUE(hint.contains(QString::fromUtf8(row.hint)))
            << row.path << ": " << hint.toStdString();
        EXPECT_EQ(hint.contains(QStringLiteral("~/Applications")), row.image && row.hint[0] != 0);
    }
}

// Another image's terminal leaves its own variables behind.
TEST(InstallLocationTest, onlyTheImageThatThisProgramLiesInCounts) {
    const QString image = QStringLiteral("/home/me/Vostel.AppImage");
    const struct {
        const char* program;
        const char* image;
        const char* mounted;
        bool isImage;
    } rows[] = {
        {"/tmp/.mount_VosteX/usr/bin/vostel", "/home/me/Vostel.AppImage", "/tmp/.mount_VosteX",
         true},
        {"/tmp/.mount_VosteX/usr/bin/vostel", "/home/me/Vostel.AppImage", "/tmp/.mount_VosteX/",
         true},
        {"/usr/bin/vostel", "/home/me/Vostel.AppImage", "/tmp/.mount_TermX", false},
        {"/usr/bin/vostel", "/home/me/Vostel.AppImage", "", false},
        {"/tmp/.mount_VosteX/usr/bin/vostel", "", "/tmp/.mount_VosteX", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(programFile(QLatin1String(row.program), QLatin1String(row.image),
                              QLatin1String(row.mounted)),
                  row.isImage ? image : QLatin1String(row.program))
            << row.program << " " << row.mounted;
    }
}

}  // namespace
}  // namespace vostel
