#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <random>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtEndian>

#include "core/Background.h"
#include "core/GlobalSettings.h"
#include "core/ModuleManager.h"
#include "core/PropertyListBounds.h"
#include "core/SettingsTransfer.h"

namespace vostel {
namespace {

const QString notValid = QStringLiteral("That file isn’t a valid Vostel settings file.");

QByteArray document(const QByteArray& entries) {
    return "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

PropertyList list(const QByteArray& entries) {
    return PropertyList::parse(document(entries)).value();
}

// The binary form of {a: x0}, x0 = [x1, ...], x1 = [x2, ...]: `depth` lists of `each` references,
// the last one to a text.
QByteArray chain(int depth, int each) {
    std::vector<QByteArray> objects;
    const auto reference = [](int index) {
        const quint32 big = qToBigEndian(static_cast<quint32>(index));
        return QByteArray(reinterpret_cast<const char*>(&big), sizeof big);
    };
    objects.push_back("\xd1" + reference(1) + reference(2));
    objects.emplace_back(
        "\x51"
        "a");
    for (int i = 0; i < depth; ++i) {
        objects.push_back(QByteArray(1, static_cast<char>(0xa0 + each)) +
                          reference(3 + i).repeated(each));
    }
    objects.emplace_back(
        "\x51"
        "b");
    QByteArray bytes = "bplist00";
    QByteArray offsets;
    for (const QByteArray& object : objects) {
        offsets += reference(static_cast<int>(bytes.size()));
        bytes += object;
    }
    const int table = static_cast<int>(bytes.size());
    const QByteArray zero(4, '\0');
    return bytes + offsets + QByteArray(6, '\0') + "\x04\x04" + zero +
           reference(static_cast<int>(objects.size())) + zero + zero + zero + reference(table);
}

struct Transfer : testing::Test {
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("settings.plist"));

    void put(const QByteArray& bytes) const {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }
    QByteArray held() const {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("<none>");
    }
};

}  // namespace

// Catches a reader that waits for a pipe or never ends, and a parser that takes the program down.
TEST_F(Transfer, FilesThatHoldNoSettingsEndInAnError) {
    std::mt19937 random(7);
    QByteArray nonsense(10 << 20, '\0');
    for (char& byte : nonsense) {
        byte = static_cast<char>(random());
    }
    const QByteArray deep = QByteArray("<array>").repeated(300'000);
    const struct {
        const char* what;
        QByteArray bytes;
    } rows[] = {
        {"empty", {}},
        {"a list", "<plist version=\"1.0\"><array><true/></array></plist>"},
        {"a text", "<plist version=\"1.0\"><string>x</string></plist>"},
        {"10 MB of nonsense", nonsense},
        {"nonsense that begins well", "<plist version=\"1.0\"><dict><key>a</key>" + nonsense},
        {"binary nonsense that begins well", "bplist00" + nonsense},
        {"cut off", document("<key>a</key><true/>").chopped(9)},
        {"JSON", "{\"a\": true}"},
        {"a JSON list", " [{\"a\": true}]"},
        {"JSON that holds the XML form", R"({"a": ")" + document("<key>a</key><true/>") + R"("})"},
        {"OpenStep text", "{ a = YES; \"app.hasLaunched\" = 1; }"},
        {"an OpenStep list", "( { a = b; } )"},
        {"OpenStep text after a comment", "// x\n{ a = b; }"},
        {"only a header", "bplist00"},
        {"lists in lists", document("<key>a</key>" + deep + "</array>")},
        {"binary lists in lists", chain(200'000, 1)},
        {"lists that double at every step", chain(40, 2)},
    };
    EXPECT_TRUE(PropertyList::parse(chain(40, 1)));  // the form itself is right
    for (const auto& row : rows) {
        put(row.bytes);
        const auto bytes = SettingsTransfer::readFile(path);
        ASSERT_TRUE(bytes.value) << row.what << bytes.error.toStdString();
        const auto settings = SettingsTransfer::parse(*bytes.value);
        EXPECT_FALSE(settings.value) << row.what;
        EXPECT_EQ(settings.error, notValid) << row.what;
    }
}

TEST_F(Transfer, WhatIsNoFileOfBoundedSizeIsNotRead) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    const QString large = folder.filePath(QStringLiteral("large"));
    QFile sparse(large);
    ASSERT_TRUE(sparse.open(QFile::WriteOnly));
    ASSERT_TRUE(sparse.resize(qint64{1} << 40));
    const struct {
        QString path;
        const char* said;
    } rows[] = {
        {path, "no ordinary file"},
        {folder.path(), "is a folder"},
        {QStringLiteral("/dev/zero"), "no ordinary file"},
        {large, "larger than 16 MB"},
        {folder.filePath(QStringLiteral("gone")), "No such file"},
        {folder.filePath(QStringLiteral("large/x")), "Not a directory"},
        {QString(), "No such file"},
    };
    for (const auto& row : rows) {
        const auto bytes = SettingsTransfer::readFile(row.path);
        EXPECT_FALSE(bytes.value) << row.said;
        EXPECT_TRUE(bytes.error.contains(QString::fromLatin1(row.said)))
            << bytes.error.toStdString();
    }
}

// The binary form of one object, with a trailer that gives these sizes.
QByteArray oneObject(const QByteArray& object, int offsetSize = 1, int referenceSize = 1) {
    QByteArray bytes = "bplist00" + object;
    const auto table = static_cast<char>(bytes.size());
    const QByteArray zeros(7, '\0');
    bytes += QByteArray(offsetSize - 1, '\0') + "\x08" + QByteArray(6, '\0');
    bytes += static_cast<char>(offsetSize);
    bytes += static_cast<char>(referenceSize);
    return bytes + zeros + '\1' + zeros + '\0' + zeros + table;
}

// Catches numbers of any width and values without number, which take seconds to count and
// gigabytes to hold.
TEST_F(Transfer, WhatTakesLongToCountIsRefused) {
    const QByteArray empty = "\xd0";
    EXPECT_TRUE(isPropertyListBounded(oneObject(empty)));
    EXPECT_TRUE(PropertyList::parse(oneObject(empty)));
    EXPECT_TRUE(isPropertyListBounded(oneObject(empty, 8, 8)));
    EXPECT_FALSE(isPropertyListBounded(oneObject(empty, 9, 1)));
    EXPECT_FALSE(isPropertyListBounded(oneObject(empty, 1, 9)));
    for (int power = 0; power < 16; ++power) {
        for (const char marker : {'\xaf', '\xdf', '\x5f', '\x4f'}) {
            QByteArray object(1, marker);
            object += static_cast<char>(0x10 + power);
            object += QByteArray(40, '\0');
            EXPECT_EQ(isPropertyListBounded(oneObject(object)), power <= 3) << power;
        }
    }
    EXPECT_TRUE(isPropertyListBounded(document(QByteArray("<true/>").repeated(400'000))));
    EXPECT_FALSE(isPropertyListBounded(document(QByteArray("<true/>").repeated(2'000'000))));
    // One list of 16 bits' worth of references, again and again to the same text.
    QByteArray lists = "bplist00";
    for (int i = 0; i < 20; ++i) {
        lists += QByteArray("\xaf\x11\xff\xff") + QByteArray(0xffff, '\x14');
    }
    QByteArray offsets;
    for (int i = 0; i < 20; ++i) {
        const quint32 big = qToBigEndian(static_cast<quint32>(8 + i * (4 + 0xffff)));
        offsets.append(reinterpret_cast<const char*>(&big), sizeof big);
    }
    const quint32 table = qToBigEndian(static_cast<quint32>(lists.size() + 2));
    const quint32 text = qToBigEndian(static_cast<quint32>(lists.size()));
    lists += "\x51x" + offsets;
    lists.append(reinterpret_cast<const char*>(&text), sizeof text);
    lists += QByteArray(6, '\0') + "\x04\x01" + QByteArray(7, '\0') + '\x15' + QByteArray(12, '\0');
    lists.append(reinterpret_cast<const char*>(&table), sizeof table);
    EXPECT_FALSE(isPropertyListBounded(lists));
}

// Catches an export that no reader of XML takes, because a text holds what XML has no place for.
TEST_F(Transfer, AnExportIsWellFormedWhateverTheTextsHold) {
    QString text;
    for (char16_t c = 1; c < 0x100; ++c) {
        text += QChar(c);
    }
    text += QString::fromUtf8("☃🎉") + QChar(0xFFFE) + QChar(0xFFFF) + QChar(0xD800);
    PropertyList settings;
    settings.set(QStringLiteral("text"), text);
    settings.set(QStringLiteral("list"), QStringList{text});
    settings.set(QStringLiteral("key\x01\x1f"), true);
    settings.set(QStringLiteral("plain"), QStringLiteral("tab\tand\nline"));
    // The library takes the bytes of a binary form's texts as they are: {"a": "\xff\x01z"}.
    const QByteArray zeros(7, '\0');
    const auto raw = PropertyList::parse(QByteArray("bplist00\xd1\x01\x02\x51"
                                                    "a\x53\xff\x01z\x08\x0b\x0d") +
                                         QByteArray(6, '\0') + "\x01\x01" + zeros + '\3' + zeros +
                                         '\0' + zeros + '\x11');
    ASSERT_TRUE(raw);
    settings.copyFrom(*raw, QStringLiteral("a"));
    const QByteArray bytes = settings.toXml();
    QXmlStreamReader reader(bytes);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::DTD) {
            continue;
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    const auto again = SettingsTransfer::parse(bytes);
    ASSERT_TRUE(again.value);
    EXPECT_EQ(again.value->toXml(), bytes);
    EXPECT_TRUE(again.value->contains(QStringLiteral("key")));
    EXPECT_EQ(again.value->text(QStringLiteral("plain")), QStringLiteral("tab\tand\nline"));
    EXPECT_TRUE(again.value->text(QStringLiteral("text"))->contains(QString::fromUtf8("ÿ☃🎉")));
}

// Catches a number that changes on its way, and a type that is lost.
TEST_F(Transfer, EveryValueSurvivesFileAfterFile) {
    PropertyList settings = list(
        "<key>date</key><date>2031-02-03T04:05:06Z</date><key>data</key><data>AAEC/w==</data>"
        "<key>nested</key><dict><key>a</key><array><dict/><string/></array></dict>"
        "<key>uid</key><dict><key>CF$UID</key><integer>7</integer></dict>"
        "<key>big</key><integer>18446744073709551615</integer><key>n</key><integer>-3</integer>"
        "<key>tricky &lt;&amp;</key><string> a\n&lt;b&gt; ☃ </string><key>list</key><array/>");
    const double numbers[] = {0.1, 1.0 / 3, 1e-300, -1.7976931348623157e308, 4.9e-324, 900, 0};
    for (std::size_t i = 0; i < std::size(numbers); ++i) {
        settings.set(QStringLiteral("number%1").arg(i), numbers[i]);
    }
    QByteArray bytes = settings.toXml();
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(SettingsTransfer::writeFile(path, bytes), std::nullopt);
        const auto read = SettingsTransfer::parse(*SettingsTransfer::readFile(path).value);
        ASSERT_TRUE(read.value) << read.error.toStdString();
        EXPECT_EQ(read.value->toXml(), bytes);
        for (std::size_t i = 0; i < std::size(numbers); ++i) {
            EXPECT_EQ(read.value->number(QStringLiteral("number%1").arg(i)), numbers[i]);
        }
    }
    for (const char* value : {"2031-02-03T04:05:06Z", "AAEC/w==", "CF$UID", "18446744073709551615",
                              "<integer>-3</integer>", "☃"}) {
        EXPECT_TRUE(bytes.contains(value)) << value;
    }
}

TEST_F(Transfer, ExportReplacesAnOrdinaryFileOrNothing) {
    const mode_t mask = ::umask(027);
    EXPECT_EQ(SettingsTransfer::writeFile(path, "one"), std::nullopt);
    ::umask(mask);
    struct stat status{};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& target :
         {pipe, folder.path(), QStringLiteral("/dev/null"), path + QStringLiteral("/x"),
          folder.filePath(QStringLiteral("none/x")), QStringLiteral("/proc/x"),
          folder.filePath(QString(300, u'x'))}) {
        EXPECT_TRUE(SettingsTransfer::writeFile(target, "two")) << target.toStdString();
    }
    EXPECT_EQ(held(), "one");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::System).size(), 2);

    const QString link = folder.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(path, link));
    EXPECT_EQ(SettingsTransfer::writeFile(link, "mine"), std::nullopt);
    EXPECT_EQ(held(), "mine");
    if (::geteuid() == 0) {  // only root can give a link away
        ASSERT_EQ(::lchown(QFile::encodeName(link).constData(), 65534, 65534), 0);
        EXPECT_TRUE(SettingsTransfer::writeFile(link, "another user's"));
        EXPECT_EQ(held(), "mine");
    }
}

// Catches settings that would silently fall back to their defaults after an import.
TEST_F(Transfer, OnlyWhatNoReaderTakesIsAnObjection) {
    DefaultsStore store(path, nullptr);
    NotificationCenter center;
    GlobalSettings global(store, center);
    ModuleManager modules(store, {{QStringLiteral("cpu"), QStringLiteral("CPU"), true, {}}});
    const struct {
        const char* entries;
        const char* named;  // in the objection; null: none
        int more;
    } rows[] = {
        {"", nullptr, 0},
        {"<key>global.fg</key><string>no colour</string>", nullptr, 0},
        {"<key>global.mono</key><true/>", nullptr, 0},
        {"<key>global.mono</key><integer>1</integer>", nullptr, 0},
        {"<key>global.interval</key><integer>3</integer>", nullptr, 0},
        {"<key>global.interval</key><real>-1e300</real>", nullptr, 0},
        {"<key>module.cpu.enabled</key><string>YES</string>", nullptr, 0},
        {"<key>module.later.enabled</key><dict/><key>x</key><data/>", nullptr, 0},
        {"<key>global.mono</key><integer>2</integer>", "global.mono", 0},
        {"<key>global.mono</key><string>true</string>", "global.mono", 0},
        {"<key>global.interval</key><string>1</string>", "global.interval", 0},
        {"<key>global.interval</key><true/>", "global.interval", 0},
        {"<key>global.interval</key><real>nan</real>", "global.interval", 0},
        {"<key>global.fg</key><integer>0</integer>", "global.fg", 0},
        {"<key>global.fg</key><date>2020-01-01T00:00:00Z</date>", "global.fg", 0},
        {"<key>module.cpu.enabled</key><array/>", "module.cpu.enabled", 0},
        {"<key>x</key><data/><key>global.bg</key><dict/><key>global.fg</key><string/>"
         "<key>global.mono</key><data/><key>global.text</key><array/>",
         "global.bg", 2},
    };
    for (const auto& row : rows) {
        const auto objection = SettingsTransfer::objection(list(row.entries), store);
        ASSERT_EQ(objection.has_value(), row.named != nullptr)
            << row.entries << objection.value_or(QString()).toStdString();
        if (objection) {
            EXPECT_TRUE(objection->contains(QStringLiteral("“%1”").arg(QLatin1String(row.named))));
            EXPECT_EQ(objection->contains(QStringLiteral("%1 more").arg(row.more)), row.more > 0);
        }
    }
}

// Catches old values that come back over the imported ones: changes from before that are still to
// be written, and whatever settings objects store on their way out.
TEST_F(Transfer, AfterAnExchangeNothingElseReachesTheFile) {
    const PropertyList imported = list("<key>new</key><true/>");
    Background background;
    {
        DefaultsStore store(path, &background);
        store.set(QStringLiteral("old"), 1.0);  // gathered, not written
        EXPECT_EQ(store.exchange(imported), std::nullopt);
        EXPECT_EQ(held(), imported.toXml());
        store.set(QStringLiteral("late"), true);
        store.remove(QStringLiteral("new"));
        store.copyFrom(list("<key>copied</key><true/>"), QStringLiteral("copied"));
        EXPECT_TRUE(store.exchange(PropertyList()));  // a second one has to wait
        EXPECT_TRUE(store.flush());
        EXPECT_EQ(held(), imported.toXml());
    }
    EXPECT_EQ(held(), imported.toXml());
}

TEST_F(Transfer, AnExchangeThatFailsOrIsTakenBackChangesNothing) {
    DefaultsStore store(path, nullptr);
    store.set(QStringLiteral("old"), 1.0);
    ASSERT_TRUE(store.flush());
    const QByteArray before = held();
    ASSERT_EQ(store.exchange(list("<key>new</key><true/>")), std::nullopt);
    store.undoExchange();
    EXPECT_EQ(held(), before);
    store.set(QStringLiteral("next"), true);
    ASSERT_TRUE(store.flush());
    EXPECT_EQ(PropertyList::parse(held())->keys().size(), 2);

    // A file that somebody keeps read-only, and a folder that cannot be made.
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0400), 0);
    DefaultsStore readOnly(path, nullptr);
    DefaultsStore nowhere(path + QStringLiteral("/below/x.plist"), nullptr);
    for (DefaultsStore* each : {&readOnly, &nowhere}) {
        const QStringList keys = each->values().keys();
        EXPECT_TRUE(each->exchange(PropertyList()));
        EXPECT_EQ(each->values().keys(), keys);
        EXPECT_FALSE(each->isExchanged());
    }
}

}  // namespace vostel
