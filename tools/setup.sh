# Sourced by the commands at the root: the packages that each of them needs, and what installs the missing ones.

packages_build="g++ cmake ninja-build pkgconf qt6-base-dev libcpp-httplib-dev libssl-dev nlohmann-json3-dev libsqlite3-dev"
packages_fonts="fonts-dejavu-core fonts-noto-color-emoji"
packages_desktop="xvfb openbox dbus-daemon at-spi2-core python3 python3-pyatspi imagemagick"
packages_lint="clang-format clang-tidy clang-tools clazy"
packages_packaging="lintian desktop-file-utils appstream libplist-utils icnsutils clang libc++-14-dev libc++abi-14-dev debootstrap x11-utils weston qt6-wayland dpkg-dev git"
packages_bench="libxcb1-dev binutils"
packages_peers="chromium keepassxc qbittorrent util-linux"
packages_test="libgtest-dev libclang-rt-14-dev openssl chromium chromium-driver xdotool"

# What begins, and the minutes and seconds since the command began.
say() { printf '\033[1m%s\033[0m %d:%02d\n' "$*" $((SECONDS / 60)) $((SECONDS % 60)); }

# Installs those of the named packages that are missing; touches nothing when none is.
ensure_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "Automatic set-up is for Debian 12; here, install CMake 3.25, Ninja, a C++20 compiler, Qt 6.4 (Widgets, Network, Test), cpp-httplib 0.11, nlohmann-json, SQLite 3, OpenSSL and GoogleTest, then run: cmake --workflow --preset release" >&2
        exit 1
    fi
    local package missing=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Install these as root first: apt-get install ${missing[*]}" >&2; exit 1; }
        as_root=(sudo)
    fi
    say "Installing ${#missing[@]} packages: ${missing[*]}"
    mkdir -p build
    "${as_root[@]}" apt-get update >build/setup.log 2>&1 \
        && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
            -o Dpkg::Progress-Fancy=0 "${missing[@]}" 2>&1 | tee -a build/setup.log | grep --line-buffered '^Setting up' \
        || { tail -20 build/setup.log >&2; echo "The set-up failed; all of it is in build/setup.log" >&2; exit 1; }
}

# Configures and builds a preset: build_preset NAME [TARGET...]
build_preset() {
    local preset=$1 log="build/configure-$1.log"
    shift
    mkdir -p build
    say "Building ($preset)"
    cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
    cmake --build --preset "$preset" ${1:+--target "$@"} || exit 1
}
