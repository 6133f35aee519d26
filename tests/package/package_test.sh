#!/usr/bin/env bash
# package_test.sh find_package|pkg_config|subproject: builds examples/first_map that way, runs it and looks at its
# picture. Takes SOURCE, BUILD, CXX and WERROR from the environment.
set -euo pipefail

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

install_to_prefix() {
    cmake --install "$BUILD" --prefix "$prefix" > "$scratch/install.log"
    libdir=$(dirname "$(find "$prefix" -name libktl.so)")
}

check_installation() {
    local file
    for file in bin/ktl include/ktl/ktl.h include/ktl/platform/gdiplus/gdiplus.h share/man/man1/ktl.1; do
        [ -e "$prefix/$file" ] || fail "$file is not installed"
    done
    if find "$prefix/include" -path '*/raster/*' | grep -q .; then fail "private headers are installed"; fi
    readelf -d "$libdir/libktl.so" | grep -q 'SONAME.*libktl\.so\.[0-9]*\]' || fail "the soname has no major version"
    "$prefix/bin/ktl" --version | grep -q '^ktl [0-9]' || fail "the installed command does not run"
}

with_find_package() {
    install_to_prefix
    check_installation
    cmake -S "$SOURCE/examples/first_map" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_CXX_COMPILER="$CXX"
    cmake --build "$scratch/build"
    program=$scratch/build/first_map
}

with_pkg_config() {
    install_to_prefix
    export PKG_CONFIG_PATH=$libdir/pkgconfig
    case $(pkg-config --libs ktl) in
        *cairo* | *gdal*) fail "private requirements leak: $(pkg-config --libs ktl)" ;;
    esac
    # shellcheck disable=SC2046
    "$CXX" -std=c++20 "$SOURCE/examples/first_map/main.cpp" $(pkg-config --cflags --libs ktl) -o "$scratch/first_map"
    export LD_LIBRARY_PATH=$libdir
    program=$scratch/first_map
}

# The flags are the release preset's: g++ 12 sees overruns in -O3's own work, and the compiler cache serves both.
with_subproject() {
    cmake -S "$SOURCE/tests/package/subproject" -B "$scratch/build" -G Ninja -DKTL_SOURCE="$SOURCE" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-O2 -DKTL_WERROR="$WERROR" -DCMAKE_CXX_COMPILER="$CXX" \
        -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)"
    nice cmake --build "$scratch/build" --target first_map
    program=$scratch/build/first_map
}

check_picture() {
    gdalinfo -mm "$1" > "$scratch/info"
    grep -q '^Size is 800, 600' "$scratch/info" || fail "wrong size: $(cat "$scratch/info")"
    # The background's red is 243, the area's 200, its outline's 0.
    grep -q 'Computed Min/Max=0.000,243.000' "$scratch/info" || fail "wrong colours: $(cat "$scratch/info")"
}

"with_$1"
cd "$scratch"
"$program"
check_picture first_map.png
echo "$1: the first map is drawn"
