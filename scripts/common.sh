# For the other scripts to source: changes to the root of the repository; package lists and shared functions.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# Installs the named Debian packages that are missing. Needs root only for that.
install_packages() {
    local package installed missing=()
    installed=$(dpkg-query -W -f '<${Package} ${db:Status-Status}>' "$@" 2>/dev/null || true)
    for package in "$@"; do
        if [[ $installed != *"<$package installed>"* ]]; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -gt 0 ]; then
        echo "Installing ${missing[*]}"
        apt-get -qq update
        DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
    fi
}

# Installs npm, for which not every system has a package of its own.
install_npm() {
    command -v npm >/dev/null || install_packages nodejs npm
}

# Installs the npm packages that FOLDER pins into INTO, unless they are there: install_modules FOLDER INTO.
install_modules() {
    mkdir -p "$2"
    if ! cmp -s "$1/package-lock.json" "$2/installed.json"; then
        cp "$1/package.json" "$1/package-lock.json" "$2"
        npm --prefix "$2" ci --ignore-scripts --no-audit --no-fund --silent
        cp "$1/package-lock.json" "$2/installed.json"
    fi
}

build_packages=(g++ cmake ninja-build nlohmann-json3-dev libstb-dev libjpeg62-turbo-dev libspng-dev libwebp-dev zlib1g-dev
    libglu1-mesa-dev libtinygltf-dev libassimp-dev libdraco-dev libmeshoptimizer-dev)
test_packages=(libgtest-dev libgmock-dev assimp-testmodels assimp-utils parallel python3 python3-kaitaistruct
    rsync strace)
bench_packages=(libbenchmark-dev gltfpack assimp-utils)
windows_packages=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev nasm dpkg-dev libutfcpp-dev)
# Browsers that draw without a GPU, with fonts.
browser_packages=(chromium firefox-esr xvfb libgl1-mesa-dri fonts-dejavu-core)
wine_packages=(wine wine64)
cluster_packages=(parallel munge slurmctld slurmd slurm-client openssh-server openssh-client)
package_packages=(dpkg-dev file zip unzip)
package_test_packages=(lintian mandoc man-db)

# Configures and builds a preset of CMakePresets.json: build PRESET [CMAKE_OPTION...].
build() {
    local preset=$1
    shift
    cmake --preset "$preset" "$@" >/dev/null
    cmake --build --preset "$preset"
}

# Cross-builds the libraries for Windows, where that isn't done, and then the Windows build with all of them:
# build_windows [CMAKE_OPTION...].
build_windows() {
    scripts/windows-libraries
    build windows -DORVANE_ASSIMP=ON -DORVANE_PICTURES=ON -DORVANE_GLTF_COMPRESSION=ON "$@"
}

# Makes the packages of build/ and build-windows/ in dist/.
make_packages() {
    local folder
    for folder in build build-windows; do
        cpack --config "$folder/CPackConfig.cmake" -B dist >/dev/null
    done
    rm -rf dist/_CPack_Packages
}

# Creates the Wine prefix FOLDER and keeps its server running until the script ends: start_wine FOLDER. By default,
# Debian's server ends with its last client and can abort a client that starts at that moment.
start_wine() {
    export WINEPREFIX=$root/$1 WINEDEBUG=-all
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    trap 'wineserver -k' EXIT
    wineserver -p </dev/null >/dev/null 2>&1
    wineboot --init </dev/null >/dev/null 2>&1
}
