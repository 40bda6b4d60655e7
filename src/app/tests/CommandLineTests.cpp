#include <gtest/gtest.h>

#include <QDir>

#include "app/BarChoice.h"
#include "app/CommandLine.h"

namespace vostel {
namespace {

CommandLine parse(const QString& text) {
    QStringList arguments{QStringLiteral("vostel")};
    arguments += text.split(u' ', Qt::SkipEmptyParts);
    return CommandLine::parse(arguments, {QStringLiteral("cpu"), QStringLiteral("memory")});
}

TEST(CommandLineTest, MistakesEndInOneLineAndStatusTwo) {
    for (const char* text : {
             "--nonsense",
             "-x",
             "--bar=top",
             "--bar",
             "--image=/no/such/folder/x.png",
             "fly",
             "fly --help",
             "extra more",
             "--bar=dock extra",
             "--bar=",
             "snapshot",
             "snapshot --out=/etc/passwd",
             "snapshot --out=/tmp --after=0",
             "snapshot --out=/tmp --after=1e9",
             "snapshot --out=/tmp --scale=0",
             "snapshot --out=/tmp --scale=big",
             "snapshot --out=/tmp --scale=nan",
             "snapshot --out=/tmp --scale=5",
             "snapshot --out=/tmp --module=",
             "snapshot --out=/tmp --module=gnu",
             "snapshot --out=/tmp --appearance=blue",
             "snapshot --json",
             "snapshot --out=/dev/null",
             "status --yaml",
             "status cpu",
             "status --json=1",
             "--json",
             "export",
             "export a b",
             "export --yes a",
             "export --json a",
             "import",
             "import --yes",
             "import a b --yes",
             "import -",
             "import --yes=1 a",
         }) {
        const CommandLine result = parse(QLatin1String(text));
        EXPECT_EQ(result.exitStatus, 2) << text;
        EXPECT_FALSE(result.message.isEmpty()) << text;
        EXPECT_FALSE(result.message.contains(u'\n')) << text;
    }
}

TEST(CommandLineTest, WhatIsAskedForIsUnderstood) {
    EXPECT_TRUE(parse(QString()).message.isEmpty());
    EXPECT_EQ(parse(QStringLiteral("--bar=offscreen --image=/tmp/x.png")).bar, BarKind::Offscreen);
    EXPECT_EQ(parse(QStringLiteral("--bar tray")).bar, BarKind::Tray);
    const CommandLine snapshot =
        parse(QStringLiteral("snapshot --out /tmp --module cpu --scale 1.25 --appearance light "
                             "--after 60"));
    EXPECT_TRUE(snapshot.message.isEmpty());
    EXPECT_EQ(snapshot.scale, 1.25);
    EXPECT_EQ(snapshot.after, 60);
    EXPECT_EQ(snapshot.module, QStringLiteral("cpu"));
    EXPECT_EQ(snapshot.appearance, Appearance::Light);
    EXPECT_TRUE(parse(QStringLiteral("status --json")).json);
    EXPECT_EQ(parse(QStringLiteral("export -")).file, QStringLiteral("-"));
    EXPECT_FALSE(parse(QStringLiteral("import a.plist")).yes);
    EXPECT_TRUE(parse(QStringLiteral("import --yes -")).yes);
    for (const char* text : {"--help", "snapshot --help", "status --help", "export --help",
                             "import --help", "--version"}) {
        const CommandLine help = parse(QLatin1String(text));
        EXPECT_EQ(help.exitStatus, 0) << text;
        EXPECT_FALSE(help.message.isEmpty()) << text;
    }
}

TEST(BarChoiceTest, TheBestBarThatCanBeHad) {
    constexpr auto autoBar = BarKind::Automatic;
    constexpr auto dock = BarKind::Dock;
    constexpr auto tray = BarKind::Tray;
    constexpr auto off = BarKind::Offscreen;
    const struct {
        BarKind wanted;
        Display display;
        bool host, wide;
        BarKind chosen;
        bool complains;
    } rows[] = {
        {autoBar, Display::X11, true, true, tray, false},
        {autoBar, Display::X11, true, false, dock, false},
        {autoBar, Display::X11, false, false, dock, false},
        {autoBar, Display::Wayland, true, true, tray, false},
        {autoBar, Display::Wayland, true, false, tray, false},
        {autoBar, Display::Wayland, false, false, tray, false},
        {autoBar, Display::None, true, true, off, false},
        {dock, Display::X11, true, true, dock, false},
        {dock, Display::Wayland, true, false, tray, true},
        {dock, Display::None, false, false, off, true},
        {tray, Display::X11, false, false, tray, false},
        {tray, Display::None, true, true, off, true},
        {off, Display::X11, true, true, off, false},
    };
    for (const auto& row : rows) {
        QString complaint;
        EXPECT_EQ(chooseBar(row.wanted, {row.display, row.host, row.wide}, &complaint), row.chosen)
            << textOf(row.wanted).toStdString() << static_cast<int>(row.display);
        EXPECT_EQ(!complaint.isEmpty(), row.complains);
    }
}

}  // namespace
}  // namespace vostel
