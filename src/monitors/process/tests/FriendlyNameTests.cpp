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
        {{"runuser", "-l", "bob", "-c", "/usr/bin/rsync -a a b"}, "", "rsync (runuser)"},
        {{"runuser", "-u", "bob", "--", "/usr/bin/rsync"}, "", "rsync (runuser)"},
        {{"runuser", "-", "bob"}, "", "runuser"},
        {{"su", "-", "bob", "-c", "make all"}, "", "make (su)"},
        {{"watch", "-n", "5", "df -h | tail"}, "", "df (watch)"},
        {{"node", "/usr/bin/npx", "-y", "vite"}, "", "vite (npx)"},
        {{"/bin/sh", "/usr/bin/xvfb-run", "-a", "make"}, "", "make (xvfb-run)"},
        {{"sudo", "--new-flag=x", "apt"}, "", "apt (sudo)"},
        // archives, classes, projects, folders
        {{"java", "-jar", "/usr/share/java/jenkins.war", "--httpPort=80"}, "", "jenkins (java)"},
        {{"java", "-Dcatalina.base=/srv/t", "-classpath", "a.jar:b.jar", "-Djava.io.tmpdir=/tmp",
          "org.apache.catalina.startup.Bootstrap", "start"},
         "",
         "tomcat (java)"},
        {{"java", "--enable-preview", "-cp", "x", "org.eclipse.jetty.start.Main"},
         "",
         "jetty (java)"},
        {{"dotnet", "run", "--project", "/srv/Shop.Api/Shop.Api.csproj"}, "", "Shop.Api (dotnet)"},
        {{"dotnet", "watch", "--project", "src/Shop.Web", "run"}, "", "Shop.Web (dotnet)"},
        {{"dotnet", "run"}, "", "dotnet"},
        {{"python3", "app/__main__.py"}, "", "app (python)"},
        {{"python3", "/home/u/Documents/report.py"}, "", "report (python)"},
        {{"python3", "/home/u/Documents/main.py"}, "", "main (python)"},
        {{"node", "."}, "node", "node"},
        // plain programs, wherever they lie
        {{"Z:\\home\\u\\Games\\Some Game\\game.exe"}, "game.exe", "game"},
        {{"Z:\\home\\u\\Games\\Some Game\\launcher.exe"}, "", "Some Game"},
        {{"C:\\windows\\system32\\start.exe", "/exec"}, "", "start"},
        {{"python3", "/home/u/.steam/common/Proton 9.0/proton", "waitforexitandrun",
          "/home/u/.steam/common/Portal/game.exe"},
         "",
         "game (proton)"},
        {{"/home/u/.steam/bin/reaper", "SteamLaunch", "AppId=4", "--", "/opt/run/_v2-entry-point",
          "--verb=run", "--", "/g/game.x86_64", "-token"},
         "",
         "game.x86_64 (_v2-entry-point)"},
        {{"/tmp/.mount_KritaAb1Cd2/AppRun.wrapped", "x"}, "", "Krita"},
        {{"/bin/sh", "/tmp/.mount_Joplin1Cd2Ef/AppRun"}, "", "Joplin (sh)"},
        {{"/nix/store/x-firefox-1/bin/.firefox-wrapped"}, "", "firefox"},
        // what editors run on a machine for somebody elsewhere
        {{"/home/u/.vscode-server/bin/0a1b/node",
          "/home/u/.vscode-server/bin/0a1b/out/server-main.js", "--connection-token=secret"},
         "",
         "vscode-server (node)"},
        {{"/home/u/.vscode-server/bin/0a1b/node",
          "/home/u/.vscode-server/bin/0a1b/out/bootstrap-fork", "--type=extensionHost"},
         "",
         "vscode-server (extension host)"},
        {{"/home/u/.vscode-server/bin/0a1b/node",
          "/home/u/.vscode-server/extensions/ms-pyright-1.2/dist/server.js"},
         "",
         "ms-pyright-1.2 (node)"},
        {{"/home/u/.vscode-server/code-384ff7382de624fb94dbaf6da11977bba1ecd427", "agent"},
         "",
         "code"},
        {{"/snap/firefox/2356/usr/lib/firefox/firefox"}, "firefox", "firefox"},
        {{"/app/bin/telegram-desktop", "--"}, "", "telegram-desktop"},
        {{"/tmp/.mount_FooAb1/usr/bin/foo"}, "", "foo"},
        {{"/opt/My App/My Program", "--file", "/a/b"}, "My Program", "My Program"},
        {{"/opt/My App/My Program"}, "My Program", "My Program"},
        {{"/usr/bin/old (deleted)"}, "", "old"},
        {{"C:\\Games\\Some Game\\game.exe", "-x"}, "game.exe", "game"},
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
        {{"/usr/bin/\xE2\x80\xAEtxt"}, "", "txt"},
        {{longName}, "", std::string(63, 'n') + "\xE2\x80\xA6"},
        {{"python3", longName + ".py"}, "", std::string(54, 'n') + "\xE2\x80\xA6 (python)"},
    };
    for (const auto& row : rows) {
        const std::string first = row.arguments.empty() ? "" : row.arguments.back();
        EXPECT_EQ(friendlyName(row.arguments, row.comm), row.expected) << row.comm << " " << first;
    }
}

// Where the program runs says what its arguments do not.
TEST(FriendlyNameTest, FoldersAndImages) {
    const struct {
        ProcessDetails details;
        std::string expected;
    } rows[] = {
        {{{"node", "."}, "", "", "/srv/shop/web"}, "web (node)"},
        {{{"node", "../"}, "", "", "/srv/shop/src"}, "shop (node)"},
        {{{"node", "index.js"}, "", "", "/srv/shop/dist"}, "shop (node)"},
        {{{"python3", "main.py"}, "", "", "/home/u"}, "main (python)"},
        {{{"python3", "app/__main__.py"}, "", "", "/srv/shop"}, "app (python)"},
        {{{"node", "/srv/mail/index.js"}, "", "", "/srv/shop"}, "mail (node)"},
        {{{"sudo", "-u", "u", "node", "."}, "", "", "/srv/shop"}, "shop (node)"},
        {{{"dotnet", "run"}, "", "", "/srv/Shop.Api"}, "Shop.Api (dotnet)"},
        {{{"/tmp/.mount_ObsidiAb1Cd2/AppRun.wrapped"},
          "",
          "",
          "/",
          "Obsidian-1.5.3-arm64.AppImage"},
         "Obsidian"},
        {{{"/tmp/.mount_LibreoAb1Cd2/AppRun"}, "", "", "/", "Libre Office v7.AppImage"},
         "Libre Office"},
        {{{"/tmp/.mount_ObsidiAb1Cd2/usr/bin/gpg"}, "", "", "/", "Obsidian.AppImage"}, "gpg"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(friendlyName(row.details, ""), row.expected) << row.details.arguments.back();
    }
}

// "hunter2" stands where each program takes a secret. Names are kept short, so that each row would
// show the word if it were taken.
TEST(FriendlyNameTest, SecretsInArgumentsNeverShow) {
    const struct {
        Arguments arguments;
        std::string expected;
    } rows[] = {
        {{"watch", "mysql -phunter2"}, "mysql (watch)"},
        {{"watch", "-n", "1", "-d", "mysql", "-phunter2"}, "mysql (watch)"},
        {{"watch", "--weird", "hunter2", "ls"}, "watch"},
        {{"sh", "-c", "PW=hunter2\nmysql -phunter2"}, "mysql (sh)"},
        {{"sh", "-c", "PW=a\\ hunter2 mysql"}, "mysql (sh)"},
        {{"sh", "-c", "PW='a hunter2' mysql"}, "mysql (sh)"},
        {{"sh", "-c", "PW=$(cat a; hunter2 x) mysql"}, "sh"},
        {{"sh", "-c", "PW=`cat; hunter2 x` mysql"}, "sh"},
        {{"sh", "-c", "export PW=\"a; hunter2\"; exec node x.js"}, "x (sh)"},
        {{"sh", "-c", "\"$PROGRAM\" hunter2"}, "sh"},
        {{"sh", "-c", "cd '/x; hunter2' && make"}, "make (sh)"},
        {{"sh", "-c", "cd /x || hunter2"}, "sh"},
        {{"sh", "-c", "echo hunter2 | docker login"}, "sh"},
        {{"sh", "-c", "<<<hunter2 cat"}, "sh"},
        {{"sh", "-c", "'hunter2"}, "sh"},
        {{"bash", "-c", "python3 -c 'hunter2'"}, "python3 (bash)"},
        {{"bash", "-c", "python3 'my hunter2' x"}, "python3 (bash)"},
        {{"bash", "-c", "-x", "tar -c | ssh hunter2@h"}, "tar (bash)"},
        {{"bash", "-cx", "tar hunter2"}, "tar (bash)"},
        {{"bash", "-s", "--", "hunter2"}, "bash"},
        {{"bash", "-es", "hunter2"}, "bash"},
        {{"fish", "-c", "ssh hunter2@h"}, "ssh (fish)"},
        {{"env", "PW=hunter2", "make"}, "make (env)"},
        {{"env", "-S", "PW=hunter2 make"}, "env"},
        {{"env", "--new-flag", "hunter2"}, "env"},
        {{"sudo", "--new-flag", "hunter2", "--", "hunter2"}, "sudo"},
        {{"sudo", "-p", "hunter2", "make"}, "make (sudo)"},
        {{"su", "hunter2", "hunter2"}, "su"},
        {{"su", "-lc", "mysql -phunter2", "bob"}, "mysql (su)"},
        {{"runuser", "-l", "bob", "-c", "mysql -phunter2"}, "mysql (runuser)"},
        {{"runuser", "-l", "hunter2"}, "runuser"},
        {{"script", "-qc", "mysql -phunter2", "log"}, "mysql (script)"},
        {{"flock", "/l", "-c", "mysql -phunter2"}, "mysql (flock)"},
        {{"npx", "-c", "mysql -phunter2"}, "mysql (npx)"},
        {{"uv", "run", "--index-url", "https://u:hunter2@h/", "x.py"}, "uv"},
        {{"xargs", "-I{}", "curl", "-u", "u:hunter2", "{}"}, "xargs"},
        {{"timeout", "9", "curl", "-u", "hunter2"}, "curl (timeout)"},
        {{"timeout", "--new-flag", "hunter2", "9", "curl"}, "timeout"},
        {{"sshpass", "-p", "hunter2", "ssh", "h"}, "sshpass"},
        {{"python3", "-c", "hunter2"}, "python3"},
        {{"python3", "-Ic", "hunter2"}, "python3"},
        {{"python3", "-chunter2"}, "python3"},
        {{"python3", "-", "hunter2"}, "python3"},
        {{"perl", "-e", "hunter2"}, "perl"},
        {{"perl", "-lane", "hunter2"}, "perl"},
        {{"perl", "-MFile::Spec=hunter2", "-E", "hunter2"}, "perl"},
        {{"ruby", "-rjson", "-e", "hunter2"}, "ruby"},
        {{"node", "-e", "hunter2"}, "node"},
        {{"node", "--eval=hunter2"}, "node"},
        {{"node", "--input-type=module", "-pe", "hunter2"}, "node"},
        {{"node", "--new-flag", "hunter2", "x"}, "node"},
        {{"node", "a hunter2"}, "node"},
        {{"deno", "eval", "hunter2"}, "eval (deno)"},
        {{"php", "-r", "hunter2"}, "php"},
        {{"julia", "--eval", "hunter2"}, "julia"},
        {{"guile", "-c", "hunter2"}, "guile"},
        {{"pwsh", "-NoProfile", "-Command", "hunter2"}, "pwsh"},
        {{"pwsh", "-Token", "hunter2"}, "pwsh"},
        {{"java", "--new-flag", "hunter2", "x"}, "java"},
        {{"npm config set x=hunter2"}, "npm config set"},
        {{"npm run dev hunter2"}, "npm run dev"},
        {{"mysql u:hunter2"}, "mysql"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(friendlyName(row.arguments, ""), row.expected)
            << row.arguments[0] << " " << row.arguments.back();
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
        {"/srv/tool my hunter2/x", "tool"},
        {"[ -f hunter2 ]", "["},
        {"sh -c PW=hunter2 mysql -phunter2", "sh"},
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
