#!/bin/bash
# Does what README.md says on a bare Debian: makes one with debootstrap, takes the committed state of
# this checkout into it and runs, as root and without a display, ./run.sh, ./test.sh and the recipe for
# the package, then as an ordinary user ./run.sh and the tests that need no root. Every warning on the
# way is a failure.
#
#   scripts/try-on-debian.sh [-k] [-c FOLDER] bookworm|trixie [MIRROR]
#
#   -k         keeps the root, and says where it is
#   -c FOLDER  keeps downloaded packages and what the compiler made there, for the next time
#   MIRROR     where the packages come from; what this machine's apt uses by default
#
# Needs root, debootstrap and about 4 GB in $TMPDIR (/var/tmp by default). Takes half an hour, or a few
# minutes where FOLDER has been filled. What it mounts and starts is seen by nobody else and goes with
# it, however it ends. The log stays: build/try-SUITE.log.
set -u
root=$(cd "$(dirname "$0")/.." && pwd)
fail() { printf 'try-on-debian: %s\n' "$*" >&2; exit 1; }
usage() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0" >&2; exit 2; }

# ---- In namespaces of its own, whose mounts and processes end with this shell. ----

# step NAME COMMAND...: its output goes to the log; one line says how it went.
failures=0
step() {
    local name=$1 from status=0 begun=$SECONDS
    shift
    from=$(($(wc -l <"$log") + 1))
    printf '\n===== %s\n' "$name" >>"$log"
    "$@" >>"$log" 2>&1 || status=$?
    local bad
    bad=$(tail -n +$from "$log" | grep -nE "$warnings" | head -n 5)
    if [ $status = 0 ] && [ -z "$bad" ]; then
        printf 'ok      %s (%d s)\n' "$name" $((SECONDS - begun))
        return
    fi
    failures=$((failures + 1))
    printf 'FAILED  %s (status %d, line %d of the log)\n' "$name" $status "$from"
    [ -z "$bad" ] || printf '%s\n' "$bad" | sed 's/^/        /'
    [ $status = 0 ] || tail -n 5 "$log" | sed 's/^/        | /'
    return 1
}
# Of compiler, linker, CMake, apt, dpkg, debootstrap, ctest and the toolkit.
warnings='[Ww]arning:|WARNING|CMake (Deprecation )?(Warning|Error)|^W: |^dpkg: |Not Run|\*\*\*Skipped|\[  SKIPPED|^qt\.|^QObject|This plugin does not|assertion .* failed'

# inside USER COMMAND: a login's environment, the checkout as working folder, no display. The new root
# takes the old one's place, because users may make no namespaces where the root was only changed into.
inside() {
    local home
    home=$(awk -F : -v name="$1" '$1 == name { print $6 }' "$new/etc/passwd")
    [ "$1" != root ] || [ -z "$caches" ] || set -- "$@" CCACHE_DIR=/var/cache/ccache
    # shellcheck disable=SC2016  # expanded by the inner shell
    unshare --mount sh -c 'cd "$0" && pivot_root . mnt && umount -l mnt && exec chroot . "$@"' "$new" \
        setpriv --reuid="$1" --regid="$1" --init-groups env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        HOME="$home" USER="$1" LANG=C.UTF-8 "${@:3}" sh -c "cd /srv/vostel && $2" </dev/null
}
# What is shown only when something fails can hold warnings, too.
with_logs() {
    local status=0
    "$@" || status=$?
    cat "$new"/srv/vostel/build/*.log
    return $status
}

make_root() {
    local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    debootstrap --variant=minbase ${caches:+--cache-dir="$caches/debootstrap-$suite"} \
        --keyring=$keyring "$suite" "$new" "$mirror" || return
    # A mount point, so that tests may change how mounts spread.
    mount --bind "$new" "$new" && cd "$new" || return
    mount -t proc proc proc && mount --rbind /sys sys && mount --rbind /dev dev || return
    cp /etc/resolv.conf etc/resolv.conf
    chroot . useradd --create-home tester || return
    # No services here, and no warning that there are none.
    printf '#!/bin/sh\nexit 101\n' >usr/sbin/policy-rc.d && chmod +x usr/sbin/policy-rc.d || return
    mkdir srv/vostel
    git -C "$root" archive HEAD | tar -x -C srv/vostel
    [ -n "$caches" ] || return 0
    mkdir -p var/cache/ccache
    mount --bind "$caches/ccache" var/cache/ccache
    mount --bind "$caches/apt-$suite" var/cache/apt/archives
    inside root 'apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends ccache'
}

# Standard output is JSON and nothing else, although all is installed and built on the way.
status_is_json() {
    inside "$1" './run.sh status --json' >"$new/srv/status.json" || return
    cat "$new/srv/status.json"
    python3 -m json.tool "$new/srv/status.json" >/dev/null
}

# Without a display: a line of values every second, and the picture that it names. Ends on SIGTERM.
shows_values() {
    inside "$1" 'timeout --preserve-status -s TERM 30 ./run.sh' >"$new/srv/values" || return
    cat "$new/srv/values"
    [ "$(grep -c 'CPU.*%' "$new/srv/values")" -gt 5 ] || { echo "no values"; return 1; }
    local picture
    picture=$(grep -oE '/[^ ]*\.png' "$new/srv/values" | head -n 1)
    [ "$(head -c 4 "$new$picture" | tail -c 3)" = PNG ] || { echo "no picture $picture"; return 1; }
}

# The first block of commands below the heading Install, and what it says is installed by it.
package_recipe() {
    local recipe
    recipe=$(sed -n '/^## Install/,/^## /p' "$new/srv/vostel/README.md" | sed -n '/^```sh$/,/^```$/p' | sed '/^```/d')
    [ -n "$recipe" ] || { echo "README.md has no recipe below Install"; return 1; }
    inside root "PACKAGE_MANAGER=apt; . scripts/packages.sh
        DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \$PACKAGES_PACKAGE" || return
    # Nobody is there to be asked.
    printf '%s\n' 'set -e' 'sudo() { "$@"; }' 'apt() { DEBIAN_FRONTEND=noninteractive apt-get -y "$@"; }' \
        "$recipe" >"$new/srv/recipe"
    inside root '. /srv/recipe' &&
        inside root 'DEBIAN_FRONTEND=noninteractive apt-get install -y ./build/release/vostel_*.deb' &&
        inside tester 'vostel --version && vostel status' &&
        inside root 'DEBIAN_FRONTEND=noninteractive apt-get purge -y vostel && ! command -v vostel'
}

try() {
    step "bare Debian ($suite, $mirror)" make_root || return
    step './run.sh status --json, the first run' with_logs status_is_json root
    step './run.sh' shows_values root
    step './test.sh' with_logs inside root ./test.sh
    step "the package, as README.md says" package_recipe
    chown -R --from=root "$(chroot "$new" id -u tester)" "$new/srv/vostel"
    step './run.sh status --json, ordinary user' status_is_json tester
    step './run.sh, ordinary user' shows_values tester
    step './test.sh -LE root, ordinary user' inside tester './test.sh -LE root'
    for needed in $(PACKAGE_MANAGER=apt; . "$root/scripts/packages.sh"; echo "$PACKAGES_PACKAGE"); do
        step "README.md names $needed" grep -q "\`$needed\`" "$new/srv/vostel/README.md"
    done
}

if [ "${1:-}" = --inside ]; then
    shift
    suite=$1 mirror=$2 new=$3 caches=$4 log=$5
    try
    echo "$failures failed; the log: $log"
    [ $failures = 0 ]
    exit
fi

# ---- Outside ----

keep=''
caches=''
while getopts kc: option; do
    case $option in
        k) keep=yes ;;
        c) caches=$OPTARG ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
case "${1:-}" in bookworm | trixie) suite=$1 ;; *) usage ;; esac
[ $# -le 2 ] || usage
# shellcheck disable=SC2016  # apt's own fields
mirror=${2:-$(apt-get indextargets --format '$(ORIGIN) $(LABEL) $(SITE)' 'Created-By: Packages' 2>/dev/null |
    sed -n 's/^Debian Debian //p' | head -n 1)}
mirror=${mirror:-http://deb.debian.org/debian}
[ "$(id -u)" = 0 ] || fail "making a root needs root"
for tool in debootstrap git unshare setpriv python3; do
    command -v $tool >/dev/null || fail "$tool is not installed"
done
mkdir -p "$root/build" || exit
if [ -n "$caches" ]; then
    mkdir -p "$caches/debootstrap-$suite" "$caches/apt-$suite/partial" "$caches/ccache" || exit
    caches=$(cd "$caches" && pwd)
fi
log=$root/build/try-$suite.log
: >"$log"
new=$(mktemp -d "${TMPDIR:-/var/tmp}/vostel-$suite.XXXXXX") || exit
chmod 755 "$new"
inner=
clean_up() {
    # With it all goes that it started.
    [ -z "$inner" ] || { kill -KILL "$inner" 2>/dev/null; wait "$inner" 2>/dev/null; }
    if [ -n "$keep" ]; then
        echo "the root: $new"
    else
        rm -rf --one-file-system "$new" || { sleep 1; rm -rf --one-file-system "$new"; }
    fi
}
trap clean_up EXIT
trap 'exit 130' INT TERM HUP
unshare --mount --pid --fork --kill-child --mount-proc \
    bash "$0" --inside "$suite" "$mirror" "$new" "$caches" "$log" &
inner=$!
wait $inner
status=$?
inner=
exit $status
