# Shared by run.sh, test.sh and .ci/run: says what happens, installs what is missing, builds.
# Standard output belongs to the program and to the tests: all that is said here goes to standard error.

say() { printf '==> %s\n' "$*" >&2; }
fail() { printf 'vostel: %s\n' "$*" >&2; exit 1; }

# The comment at the head of a script, as its help.
show_help() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$1"; }

find_package_manager() {
    PACKAGE_MANAGER=
    for manager in apt-get:apt dnf:dnf zypper:zypper pacman:pacman; do
        if command -v "${manager%%:*}" >/dev/null 2>&1; then
            PACKAGE_MANAGER=${manager##*:}
            return
        fi
    done
}

# missing_of PACKAGE...: sets `missing` to those that are not there. A name that an installed package of
# another name provides counts as there.
missing_of() {
    missing=
    case "$PACKAGE_MANAGER" in
        apt)
            there=" $(dpkg-query -W -f '${db:Status-Status} ${Package}, ${Provides}\n' |
                sed -n 's/^installed //p' | tr ',' '\n' | sed 's/(.*//' | tr -d ' ' | tr '\n' ' ') "
            for package in "$@"; do
                case "$there" in
                    *" $package "*) ;;
                    *) missing="${missing:+$missing }$package" ;;
                esac
            done ;;
        dnf | zypper)
            for package in "$@"; do
                rpm -q --whatprovides "$package" >/dev/null 2>&1 || missing="${missing:+$missing }$package"
            done ;;
        pacman) missing=$(pacman -T "$@" | tr '\n' ' ') ;;
    esac
}

# The package manager's own output goes to a log, in the language in which show_causes() knows it.
quietly() { $as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive "$@" >>"$log" 2>&1; }

install_packages() {
    case "$PACKAGE_MANAGER" in
        apt)
            # A list that is a few days old may name files that the mirror no longer has.
            quietly apt-get update && quietly apt-get install -y --no-install-recommends "$@" ;;
        dnf) quietly dnf install -y "$@" ;;
        zypper) quietly zypper --non-interactive install --no-recommends "$@" ;;
        pacman)
            # Fresh lists only where the old ones do not do: they would ask for an upgrade of everything.
            quietly pacman -S --needed --noconfirm "$@" ||
                quietly pacman -Sy --needed --noconfirm "$@" ;;
    esac
}

# Every ten seconds the last line of the log, until it is killed. Holds nobody's standard output open.
tell_progress() {
    trap 'kill $! 2>/dev/null; exit' TERM
    while sleep 10 2>/dev/null & wait $!; do
        say "still installing: $(tail -n 1 "$log" | cut -c 1-100)"
    done >/dev/null
}
stop_progress() {
    [ -n "$progress" ] || return 0
    kill "$progress" 2>/dev/null
    wait "$progress" 2>/dev/null
    progress=
}

# The log without what is said when all goes well.
show_causes() {
    awk '/^The following .*packages? will be / { listing = 1; next }
        listing && /^ / { next }
        { listing = 0 }
        /^(Get|Hit|Ign):|^(Reading|Building|Selecting|Preparing|Unpacking|Setting up|Processing|Fetched) / { next }
        /^\(Reading database|^(Need to get|After this operation,) |^[0-9]+ upgraded,/ { next }
        NF' "$log" >&2
}

# install_missing PACKAGE...: installs those that are not there, and nothing else.
install_missing() {
    missing_of "$@"
    [ -n "$missing" ] || return 0
    as_root=
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null 2>&1 ||
            fail "cannot install without root or sudo; have an administrator install these, then start again: $missing"
        as_root=sudo
        sudo -v || fail "sudo refused; have an administrator install these, then start again: $missing"
    fi
    say "installing with $PACKAGE_MANAGER (minutes, the first time): $missing"
    log=$root/build/install.log
    mkdir -p "$root/build" && : >"$log" || fail "cannot write to $root/build"
    progress=
    trap stop_progress EXIT
    trap 'exit 130' INT TERM HUP
    tell_progress &
    progress=$!
    # shellcheck disable=SC2086  # a list of words
    install_packages $missing
    status=$?
    stop_progress
    trap - EXIT INT TERM HUP
    if [ $status != 0 ]; then
        show_causes
        fail "$PACKAGE_MANAGER could not install (is the network there?); the whole log is build/install.log;" \
            "install these by hand, then start again: $missing"
    fi
    # shellcheck disable=SC2086
    missing_of $missing
    [ -z "$missing" ] || fail "$PACKAGE_MANAGER says that it is done, but these are not there: $missing"
}

# prepare KIND...: KIND is BUILD, RUN, TEST or CI. VOSTEL_INSTALL=no: the packages are the user's affair.
prepare() {
    [ "${VOSTEL_INSTALL:-yes}" != no ] || return 0
    find_package_manager
    if [ -z "$PACKAGE_MANAGER" ]; then
        say "no apt, dnf, zypper or pacman here: what README.md lists under Dependencies has to be installed already"
        return
    fi
    . "$root/scripts/packages.sh"
    wanted=
    for kind in "$@"; do
        eval "wanted=\"\$wanted \$PACKAGES_$kind\""
    done
    # shellcheck disable=SC2086
    install_missing $wanted
}

# is_configured PRESET: whether its build folder was made from this checkout, wherever it is seen from.
is_configured() {
    home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$root/build/$1/CMakeCache.txt" 2>/dev/null)
    [ -f "$root/build/$1/build.ninja" ] && [ "$home" -ef "$root" ]
}

# build PRESET [TARGET]: configures once, then builds what changed; everything, when no target is named.
build() {
    for tool in cmake ninja c++; do
        command -v $tool >/dev/null 2>&1 ||
            fail "$tool is not installed; install what README.md lists under Dependencies, then start again"
    done
    if ! is_configured "$1"; then
        if [ -n "$home" ] && ! [ "$home" -ef "$root" ]; then
            say "build/$1 belongs to $home: making it anew"
            rm -rf "$root/build/$1" || fail "cannot remove $root/build/$1"
        fi
        say "configuring build/$1"
        mkdir -p "$root/build" || fail "cannot write to $root"
        log=$root/build/configure-$1.log
        (cd "$root" && cmake --preset "$1" >"$log" 2>&1) || {
            tail -n 20 "$log" >&2
            fail "configuring failed; the whole log is build/configure-$1.log"
        }
    fi
    say "building build/$1"
    cmake --build "$root/build/$1" ${2:+--target "$2"} >&2 || fail "the build failed; see above"
}
