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
    std::string_view switches = {};  // flags without a value, beyond those of `switchStarts`
};

constexpr std::string_view shellValues = "-o -O +o +O --rcfile --init-file";
constexpr std::string_view shellCluster = "abefhiklmnprstuvxBCEHPTDL";
constexpr std::string_view pythonValues = "-W -X -Q --check-hash-based-pycs";
constexpr std::string_view pythonCluster = "bBdEiIOPqsSuvVx";
constexpr std::string_view nodeValues =
    "-r --require --import --loader --experimental-loader -C --conditions --env-file --title "
    "--env-file-if-exists --watch-path --experimental-config-file --icu-data-dir --openssl-config "
    "--inspect-port --trace-event-categories --trace-event-file-pattern --input-type";
constexpr std::string_view shellSwitches =
    "--norc --noprofile --login --posix --restricted --verbose --noediting --private --no-rcs";

constexpr auto interpreters = std::to_array<Interpreter>({
    {"python", pythonValues, pythonCluster},
    {"pypy", pythonValues, pythonCluster},
    {"micropython", "-X", "iOv"},
    {"node", nodeValues},
    {"nodejs", nodeValues},
    {"electron", nodeValues},
    {"bun", "--cwd --preload -r --config -c", {}, "run x exec"},
    {"deno", "--config -c --import-map --cert", "Aqr", "run task serve", "--quiet --unstable"},
    {"ruby", "-I -r -C -x", "wWvnplaScdhsy"},
    {"jruby", "-I -r -C -x", "wWvnplaScdhsy"},
    {"perl", "-I", "wWtTnplasSuUXcg0"},
    {"php", "-d -c -S -t -z --define --php-ini --docroot --server", "aneqvwmilH"},
    {"lua", "-l", "ivE"},
    {"luajit", "-l", "ivE"},
    {"java",
     "-cp -classpath --class-path -p --module-path --add-opens --add-exports --add-modules "
     "--add-reads --source --upgrade-module-path --limit-modules --patch-module",
     {},
     {},
     "--dry-run --module-only --validate-modules"},
    {"dotnet",
     "--depsfile --runtimeconfig --additionalprobingpath --additional-deps --fx-version "
     "--roll-forward",
     {},
     "exec watch"},
    {"mono", "--config"},
    {"wine", ""},
    {"sh", shellValues, shellCluster, {}, shellSwitches},
    {"bash", shellValues, shellCluster, {}, shellSwitches},
    {"dash", shellValues, shellCluster, {}, shellSwitches},
    {"ash", shellValues, shellCluster, {}, shellSwitches},
    {"zsh", shellValues, shellCluster, {}, shellSwitches},
    {"ksh", shellValues, shellCluster, {}, shellSwitches},
    {"fish", "-C --init-command -d -D -o -f", "ilnNPp", {}, shellSwitches},
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

constexpr std::string_view shells = "sh bash dash ash zsh ksh fish";

// Those whose short flags have their values in the same word, if any.
constexpr std::string_view joinsValues =
    "java perl ruby jruby python pypy php julia sh bash dash ash zsh ksh fish node nodejs electron";

// Flags of interpreters whose value says what runs, and what that value is.
enum class Context { module, className, archive, project, file, code };
struct ContextFlag {
    std::string_view interpreters;
    std::string_view flags;
    Context context;
};

constexpr auto contextFlags = std::to_array<ContextFlag>({
    {"python pypy micropython", "-m", Context::module},
    {"python pypy micropython", "-c", Context::code},
    {"java", "-jar", Context::archive},
    {"java", "-m --module", Context::className},
    {"sh bash dash ash zsh ksh fish", "-c --command", Context::code},
    {"node nodejs electron bun deno", "-e --eval -p --print -pe", Context::code},
    {"dotnet", "--project", Context::project},
    {"perl ruby jruby lua luajit rscript julia osascript", "-e -E", Context::code},
    {"julia", "--eval --print", Context::code},
    {"php", "-f --file", Context::file},
    {"php", "-r -R -B -E --run --process-code --process-begin --process-end", Context::code},
    {"guile", "-s", Context::file},
    {"guile gjs racket", "-c -e --eval --command", Context::code},
    {"pwsh", "-File -f", Context::file},
    {"pwsh", "-Command -c -EncodedCommand", Context::code},
});

// Long flags of interpreters that begin so take no value, unless they are listed with one.
constexpr std::string_view switchStarts =
    "--no- --enable- --disable- --experimental- --trace- --use- --allow- --inspect --expose "
    "--harmony --preserve- --show- --print- --watch --abort- --throw- --pending- --force-";

// Programs that start another one, given after their own options. A flag that is in none of the
// lists may take a value: what follows it is then not taken for the program.
struct Launcher {
    std::string_view name;
    std::string_view values;            // flags whose value is the next argument
    std::string_view letters;           // short flags without a value
    std::string_view switches;          // long flags without a value; "*": all others
    int positionals = 0;                // arguments of its own before the program
    std::string_view subcommands = {};  // starts a program behind one of these only
    std::string_view code = {};         // flags whose value is shell code; "*": the program is, too
    bool script = false;                // is a script itself: "node npx ...", "sh xvfb-run ..."
};

constexpr int noProgram = 1000;  // positionals of those that start nothing but code

constexpr auto launchers = std::to_array<Launcher>({
    {"sudo",
     "-u -g -h -p -C -r -t -T -U -D -R --user --group --host --prompt --chdir --role --type "
     "--close-from --command-timeout --other-user --chroot --login-class -c",
     "AbBEeHiKklNnPSsVv",
     "--askpass --background --bell --preserve-env --edit --set-home --login --remove-timestamp "
     "--reset-timestamp --list --non-interactive --preserve-groups --stdin --shell --validate"},
    {"doas", "-u -C -a", "Lns", {}},
    {"pkexec", "--user", {}, "--keep-cwd"},
    {"su",
     "-s -g -G -w --shell --group --supp-group --whitelist-environment",
     "flmpPT",
     "--login --fast --pty",
     noProgram,
     {},
     "-c --command --session-command"},
    {"runuser",
     "-u -g -G -w -s --user --group --supp-group --shell --whitelist-environment",
     "flmpPT",
     "--login --fast --pty",
     0,
     {},
     "-c --command --session-command"},
    {"script",
     "-o -m -I -O -B -T -E --output-limit --logging-format --log-in --log-out --log-io "
     "--log-timing --echo",
     "aefq",
     "--append --return --flush --force --quiet",
     noProgram,
     {},
     "-c --command"},
    {"flock",
     "-w -E --timeout --wait --conflict-exit-code",
     "exsunoFv",
     "--exclusive --shared --unlock --nonblock --nb --close --verbose --fcntl",
     1,
     {},
     "-c --command"},
    {"setpriv",
     "--reuid --regid --groups --inh-caps --ambient-caps --bounding-set --securebits --pdeathsig "
     "--ruid --euid --rgid --egid --selinux-label --apparmor-profile",
     "d", "--clear-groups --keep-groups --init-groups --nnp --no-new-privs --reset-env --dump"},
    {"env", "-u -C -S -a --unset --chdir --split-string --argv0", "i0v",
     "--ignore-environment --null --debug --default-signal --ignore-signal --block-signal"},
    {"nice", "-n --adjustment", {}, {}},
    {"ionice", "-c -n -p -P -u --class --classdata --pid --pgid --uid", "t", "--ignore"},
    {"chrt", "-T -P -D --sched-runtime --sched-period --sched-deadline", "abdfiorRv",
     "--batch --deadline --fifo --idle --other --rr --reset-on-fork --all-tasks --verbose", 1},
    {"taskset", "", "ac", "--all-tasks --cpu-list", 1},
    {"numactl",
     "-N -m -C -i -p -P -l --interleave --preferred --membind --cpunodebind --physcpubind --length",
     "a", "--all --balancing --localalloc"},
    {"nohup", "", {}, {}},
    {"setsid", "", "cfw", "--ctty --fork --wait"},
    {"timeout", "-k -s --kill-after --signal", "fpv", "--foreground --preserve-status --verbose",
     1},
    {"stdbuf", "-i -o -e --input --output --error", {}, {}},
    {"time", "-f -o --format --output", "apqvV", "--append --portability --quiet --verbose"},
    {"watch",
     "-n -q --interval --equexit",
     "bcCdegptwx",
     "--beep --color --no-color --differences --errexit --chgexit --precise --no-title --no-wrap "
     "--exec --no-rerun",
     0,
     {},
     "*"},
    {"strace", "-e -o -p -s -u -E -P -a -b -I -O -S -X -U --output --string-limit --env --trace",
     "cCdDfFhiknqrtTvVwxyYzZ", "--follow-forks --quiet --summary --summary-only --timestamps"},
    {"ltrace", "-e -o -p -s -u -l -x -n -a -A -D -F", "bcCfhiLrStTV", {}},
    {"valgrind", "", "dqv", "*"},
    {"fakeroot", "-l -s -i -b", "uhv", "--unknown-is-real"},
    {"chroot", "--userspec --groups", {}, "--skip-chdir", 1},
    {"unshare",
     "-S -G -R -w --setuid --setgid --root --wd --map-users --map-groups --map-user --map-group "
     "--propagation --setgroups --load-interp",
     "CTUcfimnpru", "*"},
    {"nsenter", "-t -S -G --target --setuid --setgid", "CFTUZaeimnpr", "*"},
    {"tini", "-p -e", "gsvw", {}},
    {"dumb-init", "-r --rewrite", "cv", "--single-child --verbose"},
    {"xvfb-run",
     "-n -s -f -e -p -w --server-num --server-args --auth-file --error-file --xauth-protocol "
     "--wait",
     "alh",
     "--auto-servernum --auto-display --listen-tcp",
     0,
     {},
     {},
     true},
    {"dbus-run-session", "--config-file --dbus-daemon", {}, {}},
    {"dbus-launch", "--config-file", {}, "--exit-with-session --exit-with-x11 --sh-syntax"},
    {"systemd-run",
     "-p -u -E -M -H --unit --property --slice --uid --gid --description --setenv --nice "
     "--service-type --working-directory --machine --host --on-active --on-boot --on-calendar "
     "--on-startup --on-unit-active --on-unit-inactive --timer-property --path-property "
     "--socket-property --background",
     "dGPqrSt",
     "--user --system --scope --pty --pipe --quiet --collect --wait --remain-after-exit --same-dir "
     "--shell --send-sighup --slice-inherit"},
    {"systemd-inhibit", "--what --who --why --mode", {}, {}},
    {"gamemoderun", "", {}, {}, 0, {}, {}, true},
    {"mangohud", "", {}, "--dlsym --version", 0, {}, {}, true},
    {"prime-run", "", {}, {}, 0, {}, {}, true},
    {"firejail", "", {}, "*"},
    {"flatpak-spawn", "", "hv", "*"},
    {"flatpak", "--command --branch --arch --cwd --runtime --runtime-version --env", "dpuv",
     "--user --system --devel --sandbox --file-forwarding", 0, "run"},
    {"snap", "--command --revision", {}, "--shell", 0, "run"},
    {"npx", "-p --package", "qy", "--yes --quiet --no --ignore-existing", 0, {}, "-c --call", true},
    {"uvx", "--from --with --python -p", "nq", "--quiet --isolated --offline"},
    {"uv", "--with --python -p --project --directory --extra --group --package", "nqv",
     "--quiet --verbose --isolated --offline --frozen --locked --active", 0, "run"},
    {"poetry", "-C --directory -P --project", "nqv", "--quiet --verbose", 0, "run", {}, true},
    {"pipenv", "", "qv", "--quiet --verbose", 0, "run", {}, true},
    {"pipx", "--spec --python --pip-args", "qv", "--quiet --verbose", 0, "run", {}, true},
    {"bundle", "--gemfile", {}, "--keep-file-descriptors", 0, "exec", {}, true},
    // Steam's way to a game
    {"reaper", "", {}, {}, 1},
    {"proton", "", {}, {}, 0, "run runinprefix waitforexitandrun", {}, true},
    {"_v2-entry-point", "", {}, "*"},
    {"pressure-vessel-wrap", "", {}, "*"},
    {"pv-adverb", "", {}, "*"},
    {"steam-runtime-launch-client", "", {}, "*"},
    {"wine-preloader", "", {}, {}},
    {"wine64-preloader", "", {}, {}},
    {"ld-linux-x86-64.so",
     "--library-path --preload --argv0 --audit --inhibit-rpath",
     {},
     "--list --verify --inhibit-cache"},
    {"box64", "", {}, {}},
    {"qemu-x86_64", "-L -E -U -cpu -g -s -B -D -d", {}, {}},
    {"qemu-aarch64", "-L -E -U -cpu -g -s -B -D -d", {}, {}},
    // bwrap(1): these options take one value; those of `twoValues` two.
    {"bwrap",
     "--args --argv0 --userns --userns2 --pidns --uid --gid --hostname --chdir --unsetenv "
     "--lock-file --sync-fd --remount-ro --proc --dev --tmpfs --mqueue --dir --seccomp "
     "--add-seccomp-fd --exec-label --file-label --block-fd --userns-block-fd --info-fd "
     "--json-status-fd --cap-add --cap-drop --perms --size --overlay-src --ro-overlay "
     "--tmp-overlay",
     {},
     "--unshare-all --unshare-user --unshare-user-try --unshare-ipc --unshare-pid --unshare-net "
     "--unshare-uts --unshare-cgroup --unshare-cgroup-try --share-net --new-session "
     "--die-with-parent --as-pid-1 --clearenv --disable-userns --assert-userns-disabled"},
});
constexpr std::string_view twoValues =
    "--bind --bind-try --dev-bind --dev-bind-try --ro-bind --ro-bind-try --bind-data "
    "--ro-bind-data --file --symlink --setenv --chmod --bind-fd --ro-bind-fd";

// Parts of modules, classes, application ids and file names that say nothing about the program.
constexpr std::string_view genericParts =
    "main __main__ __init__ cli index app application run runner start launch launcher entry "
    "entrypoint bootstrap startup program wsgi asgi manage client desktop gui bin script apprun";

// These say nothing as a file's name, but something in a module's.
constexpr std::string_view genericScripts = "server worker daemon service agent boot init";

constexpr std::string_view scriptExts =
    "py pyw pyc pyz js mjs cjs ts mts cts jsx tsx bundle min asar rb pl pm php phar lua sh bash "
    "zsh fish ksh ps1 jar war ear dll exe csproj fsproj r jl tcl tk scm rkt qml scpt wrapped";

// Classes whose names say less than those of their programs.
struct KnownClass {
    std::string_view name;
    std::string_view program;
};
constexpr auto knownClasses = std::to_array<KnownClass>({
    {"org.apache.catalina.startup.Bootstrap", "tomcat"},
    {"org.codehaus.plexus.classworlds.launcher.Launcher", "maven"},
    {"org.apache.zookeeper.server.quorum.QuorumPeerMain", "zookeeper"},
});

// Commands of shell code that only prepare the one that counts.
constexpr std::string_view shellPreparation = "cd set export umask ulimit unset trap : true";

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
    "workspace projects project repos git documents desktop downloads dokumente schreibtisch "
    "bureau documentos escritorio documenti scrivania x86_64-linux-gnu aarch64-linux-gnu windows "
    "system32 syswow64 win64 win32 x64 x86 binaries squashfs-root";

constexpr std::string_view venvDirs = "venv .venv env .env virtualenv .virtualenv";
constexpr std::string_view venvHomes = "virtualenvs .virtualenvs envs .conda";

// Values of "--type=" with which multi-process browsers start their helpers.
constexpr std::string_view helperRoles =
    "renderer gpu-process utility zygote ppapi broker crashpad-handler extension-process";
// Those with which editors start theirs.
struct EditorRole {
    std::string_view type;
    std::string_view role;
};
constexpr auto editorRoles = std::to_array<EditorRole>({
    {"extensionHost", "extension host"},
    {"fileWatcher", "file watcher"},
    {"ptyHost", "terminals"},
});
// Last arguments of "-contentproc" helpers.
constexpr std::string_view contentRoles =
    "tab web webisolated file extension privilegedabout preallocated rdd gpu socket utility "
    "forkserver gmplugin vr";

}  // namespace vostel::NameLists
