# What the build, the program and the tests need, per package manager. Sourced by run.sh, test.sh
# and .ci/run. Sets PACKAGES_BUILD, PACKAGES_RUN and PACKAGES_TEST to lists of package names.

case "${PACKAGE_MANAGER:-}" in
    apt)
        PACKAGES_BUILD="g++ cmake ninja-build pkg-config qt6-base-dev qt6-svg-dev libgl-dev \
            libplist-dev libxcb1-dev libxcb-randr0-dev"
        PACKAGES_RUN="qt6-qpa-plugins qt6-wayland fonts-dejavu-core"
        PACKAGES_TEST="libgtest-dev xvfb openbox xdotool x11-utils x11-xserver-utils dbus iproute2 procps \
            libglib2.0-bin openssl libcap2-bin"
        ;;
    dnf)
        PACKAGES_BUILD="gcc-c++ cmake ninja-build pkgconf-pkg-config qt6-qtbase-devel qt6-qtsvg-devel \
            libplist-devel libxcb-devel"
        PACKAGES_RUN="qt6-qtbase-gui qt6-qtwayland dejavu-sans-fonts"
        PACKAGES_TEST="gtest-devel xorg-x11-server-Xvfb openbox xdotool xprop xrandr dbus-daemon iproute procps-ng \
            glib2 openssl libcap"
        ;;
    pacman)
        PACKAGES_BUILD="gcc cmake ninja pkgconf qt6-base qt6-svg libplist libxcb"
        PACKAGES_RUN="qt6-wayland ttf-dejavu"
        PACKAGES_TEST="gtest xorg-server-xvfb openbox xdotool xorg-xprop xorg-xrandr dbus iproute2 procps-ng \
            glib2 openssl libcap"
        ;;
esac
