# Shared by run.sh, test.sh and .ci/run: says what happens, installs what is missing, builds.

say() { printf '==> %s\n' "$*"; }
fail() { printf 'vostel: %s\n' "$*" >&2; exit 1; }

find_package_manager() {
    PACKAGE_MANAGER=
    for manager in apt-get:apt dnf:dnf pacman:pacman; do
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
        dnf)
            for package in "$@"; do
                rpm -q --whatprovides "$package" >/dev/null 2>&1 || missing="${missing:+$missing }$package"
            done ;;
        pacman) missing=$(pacman -T "$@" | tr '\n' ' ') ;;
    esac
}

# The package manager's own output goes to a log; its last lines are shown when it fails.
quietly() { "$@" >>"$log" 2>&1; }

# shellcheck disable=SC2086  # lists of words
install_packages() {
    case "$PACKAGE_MANAGER" in
        apt)
            # A list that is a few days old may name files that the mirror no longer has.
            quietly $as_root apt-get update &&
                quietly $as_root env DEBIAN_FRONTEND=noninteractive \
                    apt-get install -y --no-install-recommends "$@" ;;
        dnf) quietly $as_root dnf install -y "$@" ;;
        pacman)
            # Fresh lists only where the old ones do not do: they would ask for an upgrade of everything.
            quietly $as_root pacman -S --needed --noconfirm "$@" ||
                quietly $as_root pacman -Sy --needed --noconfirm "$@" ;;
    esac
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
    fi
    say "installing with $PACKAGE_MANAGER: $missing"
    log=$(mktemp) || fail "cannot write to the temporary folder"
    # shellcheck disable=SC2086
    if ! install_packages $missing; then
        tail -n 5 "$log" >&2
        rm -f "$log"
        fail "$PACKAGE_MANAGER could not install (is the network there?); install these by hand, then start again: $missing"
    fi
    rm -f "$log"
    missing_of $missing
    [ -z "$missing" ] || fail "$PACKAGE_MANAGER says that it is done, but these are not there: $missing"
}

# prepare KIND...: KIND is BUILD, RUN or TEST. VOSTEL_INSTALL=no: the packages are the user's affair.
prepare() {
    [ "${VOSTEL_INSTALL:-yes}" != no ] || return 0
    find_package_manager
    if [ -z "$PACKAGE_MANAGER" ]; then
        say "no apt, dnf or pacman here: what README.md lists under Dependencies has to be installed already"
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

# build PRESET: configures once, then builds what changed.
build() {
    for tool in cmake ninja c++; do
        command -v $tool >/dev/null 2>&1 ||
            fail "$tool is not installed; install what README.md lists under Dependencies, then start again"
    done
    if [ ! -f "$root/build/$1/build.ninja" ]; then
        say "configuring build/$1"
        mkdir -p "$root/build" || fail "cannot write to $root"
        log=$root/build/configure-$1.log
        (cd "$root" && cmake --preset "$1" >"$log" 2>&1) || {
            tail -n 20 "$log" >&2
            fail "configuring failed; the whole log is build/configure-$1.log"
        }
    fi
    say "building build/$1"
    cmake --build "$root/build/$1" || fail "the build failed; see above"
}
