# Sourced by the commands in the root folder. Lists the packages that each of them needs and installs the missing ones. On
# a system without apt it looks for the programs instead. Must work with bash 3.2 and the tools of other systems.
# shellcheck shell=bash disable=SC2034 # the lists are for those who source this

client_packages="g++ cmake ninja-build qt6-base-dev"
service_packages="python3 python3-flask python3-waitress"
font_packages="fonts-dejavu-core fonts-noto-color-emoji"
# What ./run needs on a display: to open addresses in a web browser, and to run under Wayland.
display_packages="xdg-utils qt6-wayland"
# What a walk through the client on a virtual screen needs.
walk_packages="$font_packages xvfb openbox dbus-daemon at-spi2-core gir1.2-atspi-2.0 python3-gi python3-pil
    xdotool"

# The walk needs X and runs on Linux only.
[ "$(uname)" = Linux ] || walk_packages=

# ./test needs the first list. Each label of tests that ./test leaves out has a list of its own.
quick_packages="$client_packages $service_packages $walk_packages openssl python3-pytest python3-hypothesis"
e2e_packages="chromium chromium-driver"
fuzz_packages="clang libclang-rt-dev"
lint_packages="clang-format clang-tidy clazy black flake8 codespell"
machines_packages="debootstrap gpgv git"
packaging_packages="imagemagick build-essential debhelper lintian desktop-file-utils appstream librsvg2-bin icnsutils clang libc++-dev
    x11-utils weston qt6-wayland $machines_packages"
bench_packages="$client_packages $service_packages $walk_packages python3-psutil python3-xlib binutils"
peer_packages="chromium keepassxc qbittorrent"

has() { command -v "$1" >/dev/null 2>&1; }

cores() { getconf _NPROCESSORS_ONLN; }

# On macOS no variable says whether there is a display.
has_display() { [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] || [ "$(uname)" = Darwin ]; }

# Prints the next step, with the minutes and seconds since the command started.
say() {
    local bold='' plain=''
    if [ -t 1 ]; then bold=$'\033[1m' plain=$'\033[0m'; fi
    printf '%s%s%s %d:%02d\n' "$bold" "$*" "$plain" $((SECONDS / 60)) $((SECONDS % 60))
}

# Prints the first Python that has all the modules. The first one in PATH may not be the system's, which has them.
python_with() {
    local candidate
    for candidate in python3 /usr/bin/python3 /usr/local/bin/python3 /opt/homebrew/bin/python3; do
        if "$candidate" -c "import $1" >/dev/null 2>&1; then
            command -v "$candidate"
            return 0
        fi
    done
    return 1
}

# The same, but fails if there is none.
require_python() {
    python_with "$1" || { echo "Missing: one python3 that has all of these modules: $1" >&2; return 1; }
}

# Installs the packages that are missing. Without apt, checks for their programs instead.
ensure_packages() {
    if has apt-get && has dpkg-query; then install_packages "$@"; else look_for "$@"; fi
}

install_packages() {
    local package missing='' as_root=''
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0

    if [ "$(id -u)" -ne 0 ]; then
        has sudo || { echo "Install these as root first: apt-get install$missing" >&2; exit 1; }
        as_root=sudo
    fi
    say "Installing$missing"
    mkdir -p build
    # shellcheck disable=SC2086 # the lists are words
    if ! { $as_root apt-get update &&
        $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing; } \
        >build/setup.log 2>&1 </dev/null; then
        tail -20 build/setup.log >&2
        echo "The set-up failed; its whole output is in build/setup.log" >&2
        exit 1
    fi
}

look_for() {
    local package missing=0
    for package in "$@"; do
        is_there "$package" && continue
        echo "Missing: $(content_of "$package") (Debian's package $package)" >&2
        missing=1
    done
    [ $missing = 0 ] || exit 1
}

# The program in a package, or a description if it is not a program.
content_of() {
    case $1 in
    g++) echo "c++, a compiler for C++20" ;;
    cmake) echo "cmake, 3.25 or newer" ;;
    ninja-build) echo ninja ;;
    qt6-base-dev) echo "Qt 6.4 or newer, with Network and Widgets" ;;
    gir1.2-atspi-2.0) echo "Atspi 2.0 for Python's gi" ;;
    python3-*) echo "Python's ${1#python3-}" ;;
    at-spi2-core) echo "the accessibility bus" ;;
    fonts-dejavu-core) echo DejaVuSans.ttf ;;
    fonts-noto-color-emoji) echo NotoColorEmoji.ttf ;;
    xvfb) echo Xvfb ;;
    imagemagick) echo convert ;;
    xdg-utils) echo xdg-open ;;
    chromium-driver) echo chromedriver ;;
    clazy) echo clazy-standalone ;;
    build-essential) echo make ;;
    debhelper) echo dh ;;
    librsvg2-bin) echo rsvg-convert ;;
    desktop-file-utils) echo desktop-file-validate ;;
    appstream) echo appstreamcli ;;
    icnsutils) echo icns2png ;;
    x11-utils) echo xprop ;;
    binutils) echo strip ;;
    *) echo "$1" ;;
    esac
}

is_there() {
    local content
    case $1 in
    cmake) has_cmake ;;
    qt6-base-dev) finds_qt ;;
    gir1.2-atspi-2.0) python_with 'gi; gi.require_version("Atspi", "2.0")' >/dev/null ;;
    python3-pil) python_with PIL >/dev/null ;;
    python3-xlib) python_with Xlib >/dev/null ;;
    python3-*) python_with "${1#python3-}" >/dev/null ;;
    at-spi2-core) [ -e /usr/share/dbus-1/services/org.a11y.Bus.service ] ;;
    xdg-utils) has xdg-open || [ "$(uname)" = Darwin ] ;;
    # Only the walk needs certain fonts.
    fonts-*) has_display || has_font "$(content_of "$1")" ;;
    # On other systems these are part of another package.
    lib*-dev | qt6-wayland) true ;;
    *)
        content=$(content_of "$1")
        has "${content%%,*}"
        ;;
    esac
}

has_cmake() {
    mkdir -p build
    echo 'cmake_minimum_required(VERSION 3.25)' >build/version.cmake
    cmake -P build/version.cmake >/dev/null 2>&1
}

has_font() { [ -n "$(find /usr/share/fonts -name "$1" 2>/dev/null)" ]; }

# Asks CMake, since the build finds Qt with it.
finds_qt() {
    has_cmake && has ninja || return 1
    mkdir -p build/qt
    echo 'cmake_minimum_required(VERSION 3.25)
project(LookForQt CXX)
find_package(Qt6 6.4 REQUIRED COMPONENTS Network Widgets)' >build/qt/CMakeLists.txt
    cmake -G Ninja -S build/qt -B build/qt/build >build/qt/log 2>&1
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
