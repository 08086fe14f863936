# Installs the Debian 12 packages the project needs, when missing.
# Sourced by scripts/run, scripts/test and scripts/package.
QUELMO_PACKAGES="cmake ninja-build g++ qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite \
libsqlite3-dev libcurl4-openssl-dev libcpp-httplib-dev libgl-dev sqlite3 xvfb xauth clang-format \
qt6-translations-l10n desktop-file-utils appstream man-db dpkg-dev file ccache \
stunnel4 tinyproxy openssl \
lintian at-spi2-core python3-pyatspi dbus-daemon qcoro-qt6-dev xdotool"

quelmo_install_deps() {
    local missing=""
    for p in $QUELMO_PACKAGES; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
    done
    [ -z "$missing" ] && return 0
    echo "Instalando:$missing"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends $missing
}

quelmo_build() {
    local root="$1" build="$2"
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build "$build" -j"$(nproc)"
}
