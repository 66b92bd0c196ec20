# Sourced by ./run and ./test: installs the Debian packages that are missing, and says so.

# Needed for everything: compiler, build, pictures, assembler of the demonstration ROMs.
build_packages="g++ cmake ninja-build libpng-dev pasmo"
# For kiv-run's debugger: history and completion of its console, and --json.
build_packages="$build_packages libedit-dev nlohmann-json3-dev"
# For the window and the sound.
desktop_packages="qt6-base-dev qt6-l10n-tools libsdl2-dev fonts-vlgothic"
# For the tests and the benchmarks.
test_packages="libgtest-dev libbenchmark-dev xvfb xdotool openbox"
# For the page; and for its test, beside npm's playwright-core.
web_packages="clang lld wasi-libc libc++-14-dev-wasm32 libclang-rt-14-dev-wasm32"
page_test_packages="chromium nodejs"
# For the libretro core; and for its test in RetroArch, 600 MB installed.
libretro_packages="retroarch-dev"
front_end_test_packages="retroarch"
# For cpack and packaging/check.
package_packages="dpkg-dev file lintian desktop-file-utils appstream pkg-config python3"
# For tests/portable/run s390x.
portable_packages="g++-s390x-linux-gnu qemu-user-static googletest"
# For tools/lint.
lint_packages="clang-format clang-tidy"

# install_missing PACKAGE...: installs what is not there. Without apt, or without the right to use it, the
# build goes on with what the system has.
install_missing() {
    command -v dpkg-query >/dev/null 2>&1 || return 0
    missing=""
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "Not installed, and no sudo to install them:$missing" >&2
            return 0
        fi
        as_root="sudo"
    fi
    echo "Installing:$missing"
    $as_root apt-get update -qq || echo "The package lists could not be refreshed; going on with the old ones." >&2
    DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null || {
        echo "These packages could not be installed:$missing" >&2
        echo "What needs them may be missing from the build." >&2
    }
}

# build PRESET [TARGET...]: configures and builds, one progress line on a terminal.
build() {
    preset=$1
    shift
    log="build/$preset.log"
    mkdir -p build
    echo "Building ($preset) ..."
    # CMake refuses a build folder that was made elsewhere. What it remembers is made anew.
    fresh=""
    made_in=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "build/$preset/CMakeCache.txt" 2>/dev/null || true)
    if [ -n "$made_in" ] && [ "$(cd "$made_in" 2>/dev/null && pwd -P)" != "$(pwd -P)" ]; then
        echo "The folder was moved or copied since the last build: everything is built anew."
        fresh="--fresh"
    fi
    cmake $fresh --preset "$preset" >"$log" 2>&1 || { cat "$log"; echo "The configuration failed." >&2; return 1; }
    grep -E '^-- kiv: ' "$log" | sed 's/^-- kiv: /  /' || true
    targets=""
    [ $# -eq 0 ] || targets="--target $*"
    if [ -t 1 ]; then
        NINJA_STATUS="[%f/%t, %es] " cmake --build --preset "$preset" $targets
    else
        cmake --build --preset "$preset" $targets >"$log" 2>&1 || { tail -n 60 "$log"; echo "The build failed." >&2; return 1; }
    fi
}
