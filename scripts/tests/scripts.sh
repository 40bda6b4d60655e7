#!/bin/bash
# run.sh and test.sh, in copies of this checkout and with stand-ins for the package manager and the
# build tools: what stands on standard output, what is built anew, what a failure and a Ctrl-C leave.
# Every line that is printed is a fault; status 1 if any. Usage: scripts.sh CHECKOUT
set -u
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
checks=0 faults=0
fault() { echo "$*"; faults=$((faults + 1)); }
check() { checks=$((checks + 1)); "${@:2}" || fault "$1"; }
has() { grep -qE -- "$2" <<<"$1"; }
lacks() { ! has "$@"; }
fails() { ! "$@" 2>/dev/null; }

# A folder that is all of PATH: the ordinary tools, and stand-ins. These note in `calls` that they ran.
mkdir "$work/bin" "$work/state" "$work/temporary"
for tool in sh dirname sed awk grep tr tail cut cat mkdir rm env id kill mktemp; do
    ln -s "$(command -v $tool)" "$work/bin/$tool"
done
ln -s "$(command -v sleep)" "$work/bin/real-sleep"
stand_in() { { echo '#!/bin/sh'; cat; } >"$work/bin/$1"; chmod +x "$work/bin/$1"; }
stand_in ninja <<<''
stand_in c++ <<<''
stand_in sudo <<<'[ "$1" = -v ] || exec "$@"'
stand_in sleep <<<'exec real-sleep 0.1'
# Configures as the real one does; builds a program that tells where it was built, and how it was called.
stand_in cmake <<'EOF'
echo "cmake $*" >>"$STATE/calls"
echo "noise of cmake"
case $1 in
    --preset)
        mkdir -p "build/$2/src/app"
        echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"build/$2/CMakeCache.txt"
        : >"build/$2/build.ninja" ;;
    --build)
        home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$2/CMakeCache.txt")
        [ -d "$home" ] || { echo "cmake: no $home"; exit 1; }
        printf '#!/bin/sh\necho "{\\"home\\": \\"%s\\", \\"arguments\\": \\"$*\\"}"\n' "$home" >"$2/src/app/vostel"
        [ -f "$2/src/app/vostel" ] && /bin/chmod +x "$2/src/app/vostel" ;;
esac
EOF
stand_in ctest <<<'echo "tests: $*"'
# Every name that was installed, one a line.
stand_in dpkg-query <<'EOF'
while read -r name; do printf 'installed %s, \n' "$name"; done <"$STATE/installed"
EOF
stand_in rpm <<<'grep -qxF -- "$3" "$STATE/installed"'
stand_in zypper <<<'echo "zypper $*" >>"$STATE/calls"; shift 3; printf "%s\n" "$@" >>"$STATE/installed"'
stand_in apt-get <<'EOF'
echo "apt-get $*" >>"$STATE/calls"
echo "Hit:1 https://deb.example.org bookworm InRelease"
[ "$1" = install ] || exit 0
echo "Reading package lists..."
case $(cat "$STATE/apt") in
    fails)
        echo "The following NEW packages will be installed:"
        echo "  routine-name"
        i=0
        while [ $((i += 1)) -le 12 ]; do echo "Err:$i https://deb.example.org bookworm package-$i"; done
        echo "  404  Not Found"
        echo "E: Unable to fetch some archives" >&2
        exit 100 ;;
    hangs) echo "Unpacking the-last-line"; real-sleep 60 ;;
    slow) echo "Unpacking the-last-line"; real-sleep 0.6 ;;
esac
shift 3
printf '%s\n' "$@" >>"$STATE/installed"
EOF

export STATE=$work/state TMPDIR=$work/temporary
run() { env -u VOSTEL_PRESET -u VOSTEL_INSTALL PATH="$work/bin" "$@" >"$work/out" 2>"$work/err" </dev/null; }
# bare APT NAME: a copy of the checkout on a machine with nothing installed, whose apt does as told.
bare() {
    : >"$STATE/installed"
    : >"$STATE/calls"
    echo "$1" >"$STATE/apt"
    checkout=$work/$2
    mkdir -p "$checkout"
    cp -r "$source/run.sh" "$source/test.sh" "$source/scripts" "$checkout"
}

# The first run: everything is installed and built, and standard output is the program's alone.
bare slow first
check 'first run: it failed' run "$checkout/run.sh" status --json
check "first run: on standard output: $(cat "$work/out")" \
    test "$(cat "$work/out")" = "{\"home\": \"$checkout\", \"arguments\": \"status --json\"}"
check 'first run: nothing was installed' has "$(cat "$STATE/calls")" '^apt-get install .* cmake .* qt6-wayland'
check 'first run: a long silence' has "$(cat "$work/err")" 'still installing: Unpacking the-last-line'
check 'first run: the build is not heard of' has "$(cat "$work/err")" 'noise of cmake'
# Another one installs and configures nothing.
: >"$STATE/calls"
check 'second run: it failed' run "$checkout/run.sh"
check "second run: $(cat "$STATE/calls")" test "$(cat "$STATE/calls")" = "cmake --build $checkout/build/release"
# Tests take what they need besides, and ctest the arguments.
check 'test.sh: it failed' run "$checkout/test.sh" -R cpu
check 'test.sh: nothing was installed' has "$(cat "$STATE/calls")" '^apt-get install .* xvfb'
check "test.sh: on standard output: $(cat "$work/out")" test "$(cat "$work/out")" = 'tests: --preset dev -R cpu'

# Seen by another way it is the same checkout. Copied or moved it is another one, whose build folder was
# made for files elsewhere, there or not.
: >"$STATE/calls"
ln -s first "$work/link"
check 'by a link: it failed' run "$work/link/run.sh"
check 'by a link: it was configured again' lacks "$(cat "$STATE/calls")" --preset
cp -r "$work/first" "$work/copied"
check 'copied: it failed' run "$work/copied/run.sh"
check "copied: it started $(cat "$work/out")" has "$(cat "$work/out")" "\"$work/copied\""
mv "$work/first" "$work/moved"
touch "$work/moved/build/release/of-the-old-one"
check 'moved: it failed' run "$work/moved/run.sh"
check "moved: it started $(cat "$work/out")" has "$(cat "$work/out")" "\"$work/moved\""
check 'moved: the old build folder is in use' test ! -e "$work/moved/build/release/of-the-old-one"

# Help is help.
for script in run test; do
    bare fine "help-$script"
    check "$script.sh --help: it failed" run "$checkout/$script.sh" --help
    check "$script.sh --help: it does things: $(cat "$STATE/calls")" test ! -s "$STATE/calls"
    check "$script.sh --help: no help" has "$(cat "$work/out")" "\./$script\.sh"
    check "$script.sh --help: code: $(cat "$work/out")" lacks "$(cat "$work/out")" 'set -u'
done
run "$work/moved/run.sh" --help
check 'run.sh --help: not the help of the program that is there' has "$(cat "$work/out")" '"arguments": "--help"'
cp -r "$work/moved" "$work/copied-again"
run "$work/copied-again/run.sh" --help
check 'run.sh --help: that of an old program' lacks "$(cat "$work/out")" '"arguments"'

# A failing apt: all that is wrong, nothing that is not, and where the rest is.
bare fails failing
check 'failing apt: it went on' fails run "$checkout/run.sh" status --json
said=$(cat "$work/err")
check "failing apt: causes are missing: $said" test "$(grep -cE '^(Err:[0-9]+ |  404|E: Unable)' <<<"$said")" = 14
check "failing apt: routine: $said" lacks "$said" '^(Hit|Reading|  routine|The following)'
check 'failing apt: no log' grep -q '^Hit:1' "$checkout/build/install.log"
check 'failing apt: its log is not named' has "$said" 'build/install\.log'
check 'failing apt: the packages are not named' has "$said" 'g\+\+ cmake'
check 'failing apt: it built' lacks "$(cat "$STATE/calls")" '^cmake'
check 'failing apt: words on standard output' test ! -s "$work/out"

# Ctrl-C while it installs: the whole group of processes ends, and leaves no file.
bare hangs interrupted
set -m
env --default-signal=INT -u VOSTEL_PRESET -u VOSTEL_INSTALL PATH="$work/bin" "$checkout/run.sh" \
    >"$work/out" 2>"$work/err" </dev/null &
group=$!
set +m
# within_seconds N COMMAND...: it succeeds some time.
within_seconds() {
    local end=$((SECONDS + $1))
    until "${@:2}" 2>/dev/null; do
        [ $SECONDS -lt $end ] || return 1
        sleep 0.05
    done
}
check 'Ctrl-C: nothing to interrupt' within_seconds 20 grep -q the-last-line "$checkout/build/install.log"
kill -INT -- -$group
wait $group
status=$?
check "Ctrl-C: status $status" test $status -gt 128
check 'Ctrl-C: processes are left' within_seconds 5 fails kill -0 -- -$group
kill -KILL -- -$group 2>/dev/null
check "Ctrl-C: files are left: $(ls "$TMPDIR")" test -z "$(ls "$TMPDIR")"

# The same on openSUSE, whose packages may be named by what they provide.
bare fine suse
rm "$work/bin/apt-get"
check "zypper: it failed: $(cat "$work/err")" run "$checkout/run.sh"
check "zypper: $(cat "$STATE/calls")" \
    has "$(cat "$STATE/calls")" '^zypper --non-interactive install --no-recommends .*pkgconfig\(libplist-2\.0\)'
rm "$work/bin/zypper"
bare fine other
check 'no package manager: it failed' run "$checkout/run.sh"
check 'no package manager: it says nothing of it' has "$(cat "$work/err")" 'README\.md lists under Dependencies'

# Of the script that tries a bare Debian only what it refuses: a real one takes half an hour.
for words in '' 'nonsense' 'trixie http://example.org more' '-x trixie'; do
    # shellcheck disable=SC2086  # a list of words
    "$source/scripts/try-on-debian.sh" $words >"$work/out" 2>&1
    status=$?
    check "try-on-debian.sh $words: status $status" test $status = 2
done

[ $checks -gt 40 ] || fault "only $checks checks ran"
[ $faults = 0 ]
