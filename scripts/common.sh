# Shared by run.sh, test.sh and .ci/run: says what happens, installs what is missing, builds.

say() { printf '==> %s\n' "$*"; }
fail() { printf 'vostel: %s\n' "$*" >&2; exit 1; }

find_package_manager() {
    for manager in apt-get:apt dnf:dnf pacman:pacman; do
        if command -v "${manager%%:*}" >/dev/null 2>&1; then
            PACKAGE_MANAGER=${manager##*:}
            return
        fi
    done
    PACKAGE_MANAGER=
}

is_installed() {
    case "$PACKAGE_MANAGER" in
        apt) [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ] ;;
        dnf) rpm -q --whatprovides "$1" >/dev/null 2>&1 ;;
        pacman) pacman -Qq "$1" >/dev/null 2>&1 ;;
    esac
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        return 1
    fi
}

# install_missing PACKAGE...: installs those that are not there, and nothing else.
install_missing() {
    missing=
    for package in "$@"; do
        is_installed "$package" || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    [ -n "$PACKAGE_MANAGER" ] || return 0
    say "installing:$missing"
    # shellcheck disable=SC2086  # a list of words
    case "$PACKAGE_MANAGER" in
        apt) as_root apt-get -qq update &&
            as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends $missing >/dev/null ;;
        dnf) as_root dnf -q install -y $missing ;;
        pacman) as_root pacman -Sy --needed --noconfirm $missing ;;
    esac || fail "could not install; install these by hand and start again:$missing"
}

# prepare KIND...: KIND is BUILD, RUN or TEST.
prepare() {
    find_package_manager
    if [ -z "$PACKAGE_MANAGER" ]; then
        say "no apt, dnf or pacman here: assuming that what README.md lists under Dependencies is installed"
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

# build PRESET [CMAKE OPTION...]: configures once, then builds what changed.
build() {
    preset=$1
    shift
    if [ ! -f "$root/build/$preset/build.ninja" ] || [ $# -gt 0 ]; then
        say "configuring build/$preset"
        (cd "$root" && cmake --preset "$preset" "$@" >"$root/build-$preset.log" 2>&1) || {
            tail -n 20 "$root/build-$preset.log" >&2
            fail "configuring failed; the whole log is build-$preset.log"
        }
        rm -f "$root/build-$preset.log"
    fi
    say "building build/$preset"
    cmake --build "$root/build/$preset" || fail "the build failed; see above"
}
