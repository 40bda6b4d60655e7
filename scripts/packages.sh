# What the build, the program and the tests need, per package manager. Sourced by run.sh, test.sh
# and .ci/run. Sets PACKAGES_BUILD, PACKAGES_RUN and PACKAGES_TEST to lists of package names,
# PACKAGES_PACKAGE to what making a Debian package needs besides, and PACKAGES_CI to what .ci/run needs
# besides, which runs on Debian only.
# make is what the compiler's last optimisation at link time runs its jobs with.
PACKAGES_CI=

case "${PACKAGE_MANAGER:-}" in
    apt)  # tried on bare Debian 12 and 13 (scripts/try-on-debian.sh)
        PACKAGES_BUILD="g++ cmake ninja-build make pkg-config qt6-base-dev qt6-svg-dev libgl-dev \
            libplist-dev libxcb1-dev libxcb-randr0-dev"
        PACKAGES_RUN="qt6-wayland fonts-dejavu-core"
        PACKAGES_PACKAGE="dpkg-dev file"
        PACKAGES_TEST="libgtest-dev xvfb openbox xdotool x11-utils x11-xserver-utils dbus iproute2 procps \
            libglib2.0-bin openssl libcap2-bin clang-format-19 git"
        PACKAGES_CI="clang-19 libclang-rt-19-dev llvm-19 clang-tidy-19 libbenchmark-dev"
        ;;
    dnf)  # untried: names as Fedora lists them
        PACKAGES_BUILD="gcc-c++ cmake ninja-build make pkgconf-pkg-config qt6-qtbase-devel qt6-qtsvg-devel \
            libplist-devel libxcb-devel"
        PACKAGES_RUN="qt6-qtbase-gui qt6-qtwayland dejavu-sans-fonts"
        PACKAGES_TEST="gtest-devel xorg-x11-server-Xvfb openbox xdotool xprop xrandr dbus-daemon iproute procps-ng \
            glib2 openssl libcap"
        ;;
    zypper)  # untried: names as openSUSE lists them; libraries by what they provide, which is the same everywhere
        PACKAGES_BUILD="gcc-c++ cmake ninja make pkgconf-pkg-config qt6-base-devel qt6-svg-devel \
            pkgconfig(libplist-2.0) pkgconfig(xcb) pkgconfig(xcb-randr)"
        PACKAGES_RUN="qt6-wayland dejavu-fonts"
        PACKAGES_TEST="pkgconfig(gtest) xorg-x11-server-Xvfb openbox xdotool xprop xrandr dbus-1-daemon iproute2 \
            procps glib2-tools openssl"
        ;;
    pacman)  # untried: names as Arch lists them
        PACKAGES_BUILD="gcc cmake ninja make pkgconf qt6-base qt6-svg libplist libxcb"
        PACKAGES_RUN="qt6-wayland ttf-dejavu"
        PACKAGES_TEST="gtest xorg-server-xvfb openbox xdotool xorg-xprop xorg-xrandr dbus iproute2 procps-ng \
            glib2 openssl libcap"
        ;;
esac
