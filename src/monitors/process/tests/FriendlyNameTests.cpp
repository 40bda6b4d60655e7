#include <gtest/gtest.h>

#include <vector>

#include "monitors/process/FriendlyName.h"
#include "monitors/process/PrintableText.h"

namespace vostel {
namespace {

using Arguments = std::vector<std::string>;

TEST(FriendlyNameTest, ArgumentVectors) {
    const std::string longName(200, 'n');
    const struct {
        Arguments arguments;
        std::string comm;
        std::string expected;
    } rows[] = {
        // interpreters: script, module, archive, code
        {{"python3", "-m", "http.server"}, "python3", "http.server (python)"},
        {{"/usr/bin/python3.11", "-um", "uvicorn.__main__"}, "", "uvicorn (python)"},
        {{"python3", "-mpip._internal.cli.main"}, "", "pip (python)"},
        {{"/home/u/proj/.venv/bin/python", "app/main.py"}, "python", "proj (python)"},
        {{"/home/u/proj/.venv/bin/python", "-m", "app.main"}, "", "proj (python)"},
        {{"/home/u/.virtualenvs/shop/bin/python", "-c", "import x"}, "", "shop (python)"},
        {{"python3", "-W", "ignore", "-X", "dev", "/srv/shop/src/main.py"}, "", "shop (python)"},
        {{"python3", "-c", "password = 'secret'"}, "python3", "python3"},
        {{"python3"}, "python3", "python3"},
        {{"python3", "-", "x.py"}, "python3", "python3"},
        {{"/usr/bin/python3", "/usr/bin/networkd-dispatcher", "--run"},
         "",
         "networkd-dispatcher (python)"},
        {{"python3", "manage.py", "runserver"}, "", "manage (python)"},
        {{"python3", "/home/u/main.py"}, "", "main (python)"},
        {{"node", "/usr/lib/node_modules/npm/bin/npm-cli.js", "ci"}, "", "npm (node)"},
        {{"node", "-r", "x/register.js", "--inspect=0", "/home/u/shop/node_modules/.bin/vite"},
         "",
         "vite (node)"},
        {{"/usr/bin/node", "/home/u/.ext/ms-pylance-2023.1/dist/server.bundle.js"},
         "",
         "ms-pylance-2023.1 (node)"},
        {{"node", "--eval", "1"}, "node", "node"},
        {{"deno", "run", "--allow-net", "fetch.ts"}, "", "fetch (deno)"},
        {{"java", "-jar", "x.jar"}, "java", "x (java)"},
        {{"java", "-Xmx1g", "-cp", "/a.jar:/b.jar", "--add-opens",
          "java.base/java.lang=ALL-UNNAMED", "org.gradle.launcher.daemon.bootstrap.GradleDaemon",
          "8.5"},
         "",
         "GradleDaemon (java)"},
        {{"java", "-classpath", "/x/idea.jar", "com.intellij.idea.Main"}, "", "idea (java)"},
        {{"bash", "./build.sh"}, "bash", "build (bash)"},
        {{"/bin/sh", "/opt/shop/current/bin/start.sh"}, "", "shop (sh)"},
        {{"bash", "-lc", "cd /srv/x && FOO=secret exec /usr/bin/make -j8"}, "bash", "make (bash)"},
        {{"sh", "-c", "\"$HOME/x\" --token secret"}, "sh", "sh"},
        {{"sh", "-c", "while :; do :; done"}, "sh", "sh"},
        {{"bash", "/dev/fd/3"}, "bash", "bash"},
        {{"-bash"}, "bash", "bash"},
        {{"ruby", "-Ilib", "-rset", "/srv/blog/bin/rails", "s"}, "", "rails (ruby)"},
        {{"perl", "-we", "print 1"}, "perl", "perl"},
        {{"/usr/bin/perl", "-wT", "/usr/sbin/tool.pl"}, "", "tool (perl)"},
        {{"dotnet", "/srv/Shop.Api/Shop.Api.dll"}, "", "Shop.Api (dotnet)"},
        // launchers
        {{"sudo", "-u", "root", "A=1", "apt", "upgrade"}, "sudo", "apt (sudo)"},
        {{"env", "-i", "A=secret", "nice", "-n", "5", "python3", "x.py"}, "", "x (python)"},
        {{"timeout", "-k", "5", "60", "curl", "https://u:secret@h/"}, "", "curl (timeout)"},
        {{"sudo", "-i"}, "sudo", "sudo"},
        {{"flatpak", "run", "--branch=stable", "com.spotify.Client"}, "", "spotify (flatpak)"},
        {{"flatpak", "update"}, "flatpak", "flatpak"},
        {{"bwrap", "--args", "41", "--ro-bind", "/usr", "/usr", "--", "spotify"},
         "",
         "spotify (bwrap)"},
        {{"/usr/bin/snap", "run", "firefox"}, "", "firefox (snap)"},
        {{"/usr/bin/wine64-preloader", "/usr/bin/wine64", "/g/Foo Bar.exe"}, "", "Foo Bar (wine)"},
        // plain programs, wherever they lie
        {{"/snap/firefox/2356/usr/lib/firefox/firefox"}, "firefox", "firefox"},
        {{"/app/bin/telegram-desktop", "--"}, "", "telegram-desktop"},
        {{"/tmp/.mount_FooAb1/usr/bin/foo"}, "", "foo"},
        {{"/opt/My App/My Program", "--file", "/a/b"}, "My Program", "My Program"},
        {{"/opt/My App/My Program"}, "My Program", "My Program"},
        {{"/usr/bin/old (deleted)"}, "", "old"},
        {{"C:\\Games\\Some Game\\game.exe", "-x"}, "game.exe", "game.exe"},
        // browsers' helpers, also with their arguments joined to one
        {{"/usr/lib/chromium/chromium", "--type=renderer", "--lang=en"}, "", "chromium (renderer)"},
        {{"/opt/google/chrome/chrome --type=gpu-process --x=a/b"}, "chrome", "chrome (gpu)"},
        {{"/opt/My Browser/my browser --type=zygote"}, "my browser", "my browser (zygote)"},
        {{"/proc/self/exe", "--type=utility", "--utility-sub-type=network.mojom.NetworkService"},
         "slack",
         "slack (network)"},
        {{"/usr/lib/electron25/electron", "--type=renderer", "--app-path=/usr/lib/notes/app.asar"},
         "electron",
         "notes (renderer)"},
        {{"/usr/lib/firefox/firefox", "-contentproc", "-childID", "3", "tab"},
         "Isolated Web Co",
         "firefox (tab)"},
        {{"mount", "--type=nfs"}, "mount", "mount"},
        // titles
        {{"postgres: writer "}, "postgres", "postgres: writer"},
        {{"postgres: 14/main: checkpointer "}, "postgres", "postgres: 14/main: checkpointer"},
        {{"sshd: u@pts/0"}, "sshd", "sshd: u@pts/0"},
        {{"sshd: /usr/sbin/sshd -D [listener] 0 of 10-100 startups"}, "sshd", "sshd"},
        {{"nginx: master process /usr/sbin/nginx -g daemon on;"}, "nginx", "nginx: master process"},
        {{"npm run dev"}, "npm run dev", "npm run dev"},
        // no usable arguments
        {{}, "kworker/0:1-events", "kworker/0:1-events"},
        {{""}, "foo", "foo"},
        {{}, "", "?"},
        // what must not reach the screen
        {{"/usr/bin/\xff\xfe x"}, "", "\xEF\xBF\xBD\xEF\xBF\xBD x"},
        {{"/usr/bin/a\nb\t\x1b[31mc"}, "", "a b [31mc"},
        {{"/usr/bin/\xE2\x80\xAEtxt.exe"}, "", "txt.exe"},
        {{longName}, "", std::string(63, 'n') + "\xE2\x80\xA6"},
        {{"python3", longName + ".py"}, "", std::string(54, 'n') + "\xE2\x80\xA6 (python)"},
    };
    for (const auto& row : rows) {
        const std::string first = row.arguments.empty() ? "" : row.arguments.back();
        EXPECT_EQ(friendlyName(row.arguments, row.comm), row.expected) << row.comm << " " << first;
    }
}

TEST(FriendlyNameTest, LinesOfPs) {
    const struct {
        std::string line;
        std::string expected;
    } rows[] = {
        {"/usr/bin/python3 -m http.server 80", "http.server (python)"},
        {"/opt/Some Folder/some program --x=/a b", "some program"},
        {"/usr/bin/cat folder/file", "cat"},
        {"/usr/lib/foo/foo a/b", "foo"},
        {"/home/u/tool input.txt", "tool"},
        {"vim a/b", "vim"},
        {"sshd: u [priv]", "sshd: u [priv]"},
        {"[kworker/0:1-cgroup_offline]", "kworker/0:1-cgroup_offline"},
        {"sudo apt upgrade", "apt (sudo)"},
        {"", "?"},
        {"   ", "?"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(friendlyName(row.line), row.expected) << row.line;
    }
}

TEST(FriendlyNameTest, PathsThatNameAProject) {
    const struct {
        std::string path;
        std::string venv;
        std::string parent;
    } rows[] = {
        {"/home/u/shop/.venv/bin/python", "shop", "shop"},
        {"/home/u/.cache/pypoetry/virtualenvs/shop-Ab3dE_g1-py3.11/bin/python", "shop",
         "shop-Ab3dE_g1-py3.11"},
        {"/opt/conda/envs/shop/bin/python", "shop", "shop"},
        {"/home/u/.venv/bin/python", "", ""},
        {"/usr/bin/python", "", ""},
        {"/srv/shop/releases-x/v1.2.3/dist/index.js", "", "releases-x"},
        {"/x/lib/python3.11/site-packages/black/__main__.py", "", "black"},
        {"../../src/main.py", "", ""},
        {"", "", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(projectFromVenv(row.path), row.venv) << row.path;
        EXPECT_EQ(parentDirName(row.path), row.parent) << row.path;
    }
}

// Every prefix and every doubled word of real lines: no crash, always printable, never too long.
TEST(FriendlyNameTest, AnyBytesGivePrintableNames) {
    const std::string seeds =
        "sudo env A=1 python3 -um x.__main__ bash -lc 'cd /; exec java -jar' --type= -contentproc "
        "\xff\xc3\x28\xe2\x80 flatpak run a. bwrap --bind C:\\ : : / -- - (deleted) [k";
    for (std::size_t start = 0; start < seeds.size(); ++start) {
        for (std::size_t size = 0; size <= seeds.size() - start; size += 3) {
            const std::string text = seeds.substr(start, size);
            Arguments arguments;
            for (std::size_t at = 0; at < text.size();) {
                const std::size_t end = std::min(text.find(' ', at), text.size());
                arguments.push_back(text.substr(at, end - at));
                at = end + 1;
            }
            for (const std::string& name :
                 {friendlyName(text), friendlyName(arguments, ""), friendlyName(arguments, text)}) {
                EXPECT_TRUE(isUtf8(name) && !name.empty() && name.size() <= 64 * 4) << text;
                EXPECT_EQ(printableText(name, 64), name) << text;
            }
        }
    }
}

TEST(PrintableTextTest, WellFormedness) {
    EXPECT_TRUE(isUtf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"));
    for (const char* bad : {"\x80", "\xC0\x80", "\xC3", "\xE0\x80\x80", "\xED\xA0\x80",
                            "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(isUtf8(bad));
    }
    EXPECT_EQ(printableText("\xC3\xA4\xC3\xB6\xC3\xBC", 3), "\xC3\xA4\xC3\xB6\xC3\xBC");
    EXPECT_EQ(printableText("\xC3\xA4\xC3\xB6\xC3\xBC.", 3), "\xC3\xA4\xC3\xB6\xE2\x80\xA6");
    EXPECT_EQ(printableText("abc   \n", 3), "abc");
}

}  // namespace
}  // namespace vostel
