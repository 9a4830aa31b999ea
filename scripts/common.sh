# Shared by the scripts beside it: where things are, and how missing packages get installed. To be sourced.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# Installs those of the named Debian packages that are missing. Needs root only if one is.
install_packages() {
    local package missing=()
    for package in "$@"; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)" != installed ]; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -gt 0 ]; then
        echo "Installing ${missing[*]}"
        apt-get -qq update
        DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
    fi
}

build_packages=(g++ cmake ninja-build nlohmann-json3-dev libstb-dev libglu1-mesa-dev libtinygltf-dev libassimp-dev)
test_packages=(libgtest-dev libgmock-dev assimp-testmodels assimp-utils parallel python3 rsync strace)
bench_packages=(libbenchmark-dev libmeshoptimizer-dev gltfpack assimp-utils)
windows_packages=(g++-mingw-w64-x86-64-posix)
wine_packages=(wine wine64)
package_packages=(dpkg-dev file zip unzip)

# Configures and builds by one of the presets in CMakePresets.json: build PRESET [cmake options].
build() {
    local preset=$1
    shift
    cmake --preset "$preset" "$@" >/dev/null
    cmake --build --preset "$preset"
}

# Packs what build/ and build-windows/ hold into dist/.
make_packages() {
    local folder
    for folder in build build-windows; do
        cpack --config "$folder/CPackConfig.cmake" -B dist >/dev/null
    done
    rm -rf dist/_CPack_Packages
}

# Sets up a fresh Wine prefix in a folder of the build and keeps its server running until the script ends. A server
# that ends with its last client, as Debian's does if left alone, can break off a client that starts that moment.
start_wine() {
    export WINEPREFIX=$root/$1 WINEDEBUG=-all
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    trap 'wineserver -k' EXIT
    wineserver -p </dev/null >/dev/null 2>&1
    wineboot --init </dev/null >/dev/null 2>&1
}
