#pragma once

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

// What friendlyName() knows of programs. Lists of words are one text, separated by blanks.
namespace vostel::NameLists {

constexpr bool contains(std::string_view words, std::string_view word) {
    for (std::size_t start = 0; start < words.size();) {
        const std::size_t end = std::min(words.find(' ', start), words.size());
        if (words.substr(start, end - start) == word) {
            return !word.empty();
        }
        start = end + 1;
    }
    return false;
}

// Programs that run what their arguments name. Looked up without path and version, lower case.
struct Interpreter {
    std::string_view name;
    std::string_view values;        // flags whose value is the next argument
    std::string_view cluster = {};  // letters without a value that may stand in one argument
    std::string_view subcommands = {};
};

constexpr std::string_view shellValues = "-o -O +o +O --rcfile --init-file";
constexpr std::string_view shellCluster = "abefhiklmnprstuvxBCEHPTDL";
constexpr std::string_view pythonValues = "-W -X -Q --check-hash-based-pycs";
constexpr std::string_view pythonCluster = "bBdEiIOPqsSuvVx";
constexpr std::string_view nodeValues =
    "-r --require --import --loader --experimental-loader -C --conditions --env-file --title";

constexpr auto interpreters = std::to_array<Interpreter>({
    {"python", pythonValues, pythonCluster},
    {"pypy", pythonValues, pythonCluster},
    {"micropython", "-X", "iOv"},
    {"node", nodeValues},
    {"nodejs", nodeValues},
    {"electron", nodeValues},
    {"bun", "--cwd --preload -r --config -c", {}, "run x exec"},
    {"deno", "--config -c --import-map --cert", {}, "run task serve"},
    {"ruby", "-I -r -C -x", "wWvnplaScdhsy"},
    {"jruby", "-I -r -C -x", "wWvnplaScdhsy"},
    {"perl", "-I", "wWtTnplasSuUXcg0"},
    {"php", "-d -c -S -t -z --define --php-ini --docroot --server"},
    {"lua", "-l", "ivE"},
    {"luajit", "-l", "ivE"},
    {"java",
     "-cp -classpath --class-path -p --module-path --add-opens --add-exports --add-modules "
     "--add-reads --source --upgrade-module-path --limit-modules --patch-module"},
    {"dotnet",
     "--project --depsfile --runtimeconfig --additionalprobingpath --fx-version "
     "--roll-forward",
     {},
     "exec"},
    {"mono", "--config"},
    {"wine", ""},
    {"sh", shellValues, shellCluster},
    {"bash", shellValues, shellCluster},
    {"dash", shellValues, shellCluster},
    {"ash", shellValues, shellCluster},
    {"zsh", shellValues, shellCluster},
    {"ksh", shellValues, shellCluster},
    {"fish", "-C --init-command -d -D -o -f", "ilnPp"},
    {"pwsh", "-WorkingDirectory -ExecutionPolicy -OutputFormat -InputFormat"},
    {"rscript", ""},
    {"julia", "-p -t -J -C --project --threads --sysimage", "qiv"},
    {"tclsh", "-encoding"},
    {"wish", "-encoding"},
    {"guile", "-L -C -x -l"},
    {"racket", "-S -I"},
    {"gjs", "-I -C --include-path --coverage-prefix"},
    {"qml", "-I -P -f -a --apptype"},
    {"osascript", "-l"},
});

// Flags of interpreters whose value says what runs, and what that value is.
enum class Context { module, className, file, code };
struct ContextFlag {
    std::string_view interpreters;
    std::string_view flags;
    Context context;
};

constexpr auto contextFlags = std::to_array<ContextFlag>({
    {"python pypy micropython", "-m", Context::module},
    {"python pypy micropython", "-c", Context::code},
    {"java", "-jar", Context::file},
    {"java", "-m --module", Context::className},
    {"sh bash dash ash zsh ksh fish", "-c --command", Context::code},
    {"node nodejs electron bun deno", "-e --eval -p --print -pe", Context::code},
    {"perl ruby jruby lua luajit rscript julia osascript", "-e -E", Context::code},
    {"php", "-f --file", Context::file},
    {"php", "-r -R -B -E", Context::code},
    {"guile", "-s", Context::file},
    {"guile gjs racket", "-c -e", Context::code},
    {"pwsh", "-File -f", Context::file},
    {"pwsh", "-Command -c -EncodedCommand", Context::code},
});

// Programs that start another one, given after their own options. With `subcommands`, only behind
// one of these.
struct Launcher {
    std::string_view name;
    std::string_view values;  // flags whose value is the next argument
    int positionals = 0;      // arguments of its own before the program
    std::string_view subcommands = {};
};

constexpr auto launchers = std::to_array<Launcher>({
    {"sudo", "-u -g -h -p -C -r -t -T -U -D -R --user --group --host --prompt --chdir --role"},
    {"doas", "-u -C -a"},
    {"pkexec", "--user"},
    {"runuser", "-u -g -G -w --user --group"},
    {"setpriv", "--reuid --regid --groups --inh-caps --ambient-caps --bounding-set"},
    {"env", "-u -C -S --unset --chdir"},
    {"nice", "-n --adjustment"},
    {"ionice", "-c -n --class --classdata"},
    {"chrt", "-T -P -D", 1},
    {"taskset", "", 1},
    {"numactl", "-N -m -C -i -p"},
    {"nohup", ""},
    {"setsid", ""},
    {"timeout", "-k -s --kill-after --signal", 1},
    {"stdbuf", "-i -o -e --input --output --error"},
    {"time", "-f -o --format --output"},
    {"watch", "-n --interval"},
    {"strace", "-e -o -p -s -u -E -P -a -b -I -O -S -X"},
    {"ltrace", "-e -o -p -s -u -l -x -n -a -A -D -F"},
    {"valgrind", ""},
    {"fakeroot", "-l -s -i -b"},
    {"chroot", "", 1},
    {"unshare", "-S -G -R -w"},
    {"nsenter", "-t -S -G --target"},
    {"tini", "-p -e"},
    {"dumb-init", "-r"},
    {"xvfb-run", "-n -s -f -e -p -w"},
    {"dbus-run-session", "--config-file --dbus-daemon"},
    {"dbus-launch", ""},
    {"systemd-run", "-p -u -E -M -H --unit --property --slice --uid --gid --description"},
    {"systemd-inhibit", ""},
    {"gamemoderun", ""},
    {"mangohud", ""},
    {"prime-run", ""},
    {"firejail", ""},
    {"flatpak-spawn", ""},
    {"flatpak", "", 0, "run"},
    {"snap", "", 0, "run"},
    {"npx", "-p --package"},
    {"uvx", "--from --with --python -p"},
    {"uv", "--with --python -p --project --directory", 0, "run"},
    {"poetry", "-C --directory", 0, "run"},
    {"pipenv", "", 0, "run"},
    {"pipx", "--spec --python", 0, "run"},
    {"bundle", "", 0, "exec"},
    {"wine-preloader", ""},
    {"wine64-preloader", ""},
    {"ld-linux-x86-64.so", "--library-path --preload --argv0 --audit --inhibit-rpath"},
    {"box64", ""},
    {"qemu-x86_64", "-L -E -cpu"},
    {"qemu-aarch64", "-L -E -cpu"},
    // bwrap(1): these options take one value; those of `twoValues` two.
    {"bwrap",
     "--args --argv0 --userns --userns2 --pidns --uid --gid --hostname --chdir --unsetenv "
     "--lock-file --sync-fd --remount-ro --proc --dev --tmpfs --mqueue --dir --seccomp "
     "--add-seccomp-fd --exec-label --file-label --block-fd --userns-block-fd --info-fd "
     "--json-status-fd --cap-add --cap-drop --perms --size --overlay-src --ro-overlay"},
});
constexpr std::string_view twoValues =
    "--bind --bind-try --dev-bind --dev-bind-try --ro-bind --ro-bind-try --bind-data "
    "--ro-bind-data --file --symlink --setenv --chmod --bind-fd --ro-bind-fd";

// Parts of modules, classes, application ids and file names that say nothing about the program.
constexpr std::string_view genericParts =
    "main __main__ __init__ cli index app application run runner start launch launcher entry "
    "entrypoint bootstrap program wsgi asgi manage client desktop gui bin script apprun";

// These say nothing as a file's name, but something in a module's.
constexpr std::string_view genericScripts = "server worker daemon service agent boot init";

constexpr std::string_view scriptExts =
    "py pyw pyc pyz js mjs cjs ts mts cts jsx tsx bundle min asar rb pl pm php phar lua sh bash "
    "zsh fish ksh ps1 jar war dll exe r jl tcl tk scm rkt qml scpt";

// First words of shell code that are no program.
constexpr std::string_view shellWords =
    "if for while until case select function time do then else fi done esac exec eval source . : "
    "true false test export unset local declare typeset readonly trap ulimit umask shift read wait "
    "echo printf let return exit";

// Folders that say nothing about the program whose file lies in them.
constexpr std::string_view genericDirs =
    "bin .bin sbin src lib lib32 lib64 libexec app apps dist build out output script scripts tool "
    "tools cmd cli server client public static node_modules site-packages dist-packages venv .venv "
    "env .env virtualenv resources contents macos share usr local opt tmp var srv home root target "
    "release debug current versions program files main js py php java python www html code work "
    "workspace x86_64-linux-gnu aarch64-linux-gnu";

constexpr std::string_view venvDirs = "venv .venv env .env virtualenv .virtualenv";
constexpr std::string_view venvHomes = "virtualenvs .virtualenvs envs .conda";

// Values of "--type=" with which multi-process browsers start their helpers.
constexpr std::string_view helperRoles =
    "renderer gpu-process utility zygote ppapi broker crashpad-handler extension-process";
// Last arguments of "-contentproc" helpers.
constexpr std::string_view contentRoles =
    "tab web webisolated file extension privilegedabout preallocated rdd gpu socket utility "
    "forkserver gmplugin vr";

}  // namespace vostel::NameLists
