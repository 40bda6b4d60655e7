#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <QImage>
#include <QTemporaryDir>

#include "monitors/process/AppIcons.h"

namespace vostel {
namespace {

using Ids = std::vector<std::string>;

TEST(DesktopEntryTest, IdsOfControlGroups) {
    const std::string app = "/user.slice/user-1000.slice/user@1000.service/app.slice/";
    const struct {
        std::string cgroup;
        Ids expected;
    } rows[] = {
        {app + "app-gnome-org.gnome.Nautilus-1234.scope",
         {"gnome-org.gnome.Nautilus", "org.gnome.Nautilus"}},
        {app + "app-flatpak-org.x.Y-123.scope", {"flatpak-org.x.Y", "org.x.Y"}},
        {app + "app-gnome-google\\x2dchrome-5.scope", {"gnome-google-chrome", "google-chrome"}},
        {app + "app-org.kde.dolphin@7f2c.service", {"org.kde.dolphin"}},
        {app + "app-firefox-9.scope/inner.service/leaf", {"firefox"}},
        {app + "snap.firefox.firefox-1f-2e.scope", {"firefox_firefox"}},
        {app + "snap.code.code.1f-2e.scope", {"code_code"}},
        {app + "vte-spawn-1.scope", {}},
        {app + "app-.scope", {}},
        {app + "app-\\x2-\\xzz-1.scope", {"\\x2-\\xzz", "\\xzz"}},
        {"/system.slice/cron.service", {}},
        {"", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(desktopIdsOf(row.cgroup), row.expected) << row.cgroup;
    }
}

TEST(DesktopEntryTest, ProgramsOfExecLines) {
    const struct {
        std::string exec;
        std::string expected;
    } rows[] = {
        {"/usr/lib/firefox/firefox %u", "/usr/lib/firefox/firefox"},
        {"\"/opt/My App/my\\\\ app\" --x", "/opt/My App/my app"},
        {"env A=1 B=2 /snap/bin/code %F", "/snap/bin/code"},
        {"/usr/bin/flatpak run org.x.Y", ""},
        {"/usr/bin/python3.11", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        const auto entry =
            parseDesktopEntry("[Desktop Action x]\nExec=/no\n[Desktop Entry]\nExec=" + row.exec +
                              "\n[Other]\nExec=/no\n");
        EXPECT_EQ(executableOf(entry), row.expected) << row.exec;
    }
}

class AppIconsTest : public testing::Test {
  protected:
    void SetUp() override {
        root = directory.path().toStdString();
        roots.dataDirs = {root + "/home", root + "/usr"};
        write("usr/applications/org.x.Files.desktop", "Icon=files\nExec=/nowhere/bin/files %U\n");
        write("usr/applications/term.desktop",
              "Icon=term\nExec=term\nCategories=System;TerminalEmulator;\n");
        write("usr/applications/office-calc.desktop", "Icon=calc\nExec=/opt/office/run --calc\n");
        write("usr/applications/office.desktop", "Icon=office\nExec=/opt/office/run\n");
        write("usr/applications/sub/deep.desktop", "Icon=/abs/deep.png\nExec=deep\n");
        write("usr/applications/py.desktop", "Icon=py\nExec=/usr/bin/python3\nNoDisplay=true\n");
        write("usr/applications/gone.desktop", "Icon=gone\nExec=gone\n");
        write("home/applications/gone.desktop", "Hidden=true\n");
        write("usr/applications/player.desktop", "Icon=player\nExec=player\n");
        write("usr/applications/notes_notes.desktop", "Icon=notes\nExec=env X=1 /snap/bin/notes\n");
        write("usr/applications/suite.desktop", "Icon=suite\nExec=suite %U\n");
        write("opt/suite/start", "");
        std::filesystem::create_directories(root + "/bin");
        std::filesystem::create_symlink("../opt/suite/start", root + "/bin/suite");
        std::ofstream(root + "/usr/applications/broken.desktop") << "\xff[Desktop Entry\n=\n[";
    }
    void write(const std::string& name, const std::string& text) {
        const std::filesystem::path path = root + "/" + name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "[Desktop Entry]\nType=Application\n" << text;
    }

    QTemporaryDir directory;
    std::string root;
    SystemRoots roots;
};

TEST_F(AppIconsTest, WhoseProcess) {
    AppIcons icons(roots);
    const struct {
        const char* what;
        ProcessDetails details;
        std::string expected;
    } rows[] = {
        {"scope", {{"/x"}, "/usr/bin/helper", "/u/app-gnome-org.x.Files-1.scope"}, "files"},
        {"program in a terminal", {{"cc1"}, "/usr/lib/cc1", "/u/app-term-1.scope"}, ""},
        {"application in a terminal",
         {{"player"}, "/usr/bin/player", "/u/app-term-1.scope"},
         "player"},
        {"terminal itself", {{"term"}, "/usr/bin/term", "/u/app-term-1.scope"}, "term"},
        {"plainest entry of a folder", {{"x"}, "/opt/office/office.bin", "/"}, "office"},
        {"link into the application's folder", {{"x"}, root + "/opt/suite/x.bin", "/"}, "suite"},
        {"script", {{"python3", "/usr/bin/files.py"}, "/usr/bin/python3.11", "/"}, "files"},
        {"interpreter", {{"python3", "-c", "1"}, "/usr/bin/python3", "/"}, ""},
        {"snap", {{"x"}, "/snap/notes/3/usr/bin/electron-x", "/"}, "notes"},
        {"subfolder's id", {{"x"}, "/x", "/u/app-sub\\x2ddeep-1.scope"}, "/abs/deep.png"},
        {"hidden by the user", {{"gone"}, "/usr/bin/gone", "/u/app-gone-1.scope"}, ""},
        {"daemon", {{"player"}, "/usr/bin/player", "/system.slice/x.service"}, ""},
        {"kernel thread", {{}, "", "/u/app-org.x.Files-1.scope"}, ""},
        {"others' process", {{"/usr/bin/player"}, "", "/"}, "player"},
    };
    for (const auto& row : rows) {
        const AppIconName name = icons.iconName(row.details);
        EXPECT_EQ((name.theme + name.file).toStdString(), row.expected) << row.what;
    }
}

TEST_F(AppIconsTest, NewEntriesAndFiles) {
    AppIcons icons(roots);
    const ProcessDetails fresh{{"fresh"}, "/usr/bin/fresh", ""};
    EXPECT_EQ(icons.iconName(fresh), AppIconName());
    std::filesystem::create_directories(root + "/usr/pixmaps");
    const std::string picture = root + "/usr/pixmaps/fresh-picture.png";
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(QString::fromStdString(picture)));
    write("home/applications/fresh.desktop", "Icon=fresh-picture\nExec=fresh\n");
    const AppIconName name = icons.iconName(fresh);
    EXPECT_EQ(name.file.toStdString(), picture);
    EXPECT_EQ(icons.icon(name).pixmap(16).toImage().pixelColor(8, 8), QColor(Qt::red));
    EXPECT_TRUE(icons.icon({{}, QStringLiteral("/nowhere/x.png")}).isNull());
    EXPECT_TRUE(icons.icon({QStringLiteral("no-theme-has-this"), {}}).isNull());
    EXPECT_TRUE(icons.icon({}).isNull());
}

}  // namespace
}  // namespace vostel
