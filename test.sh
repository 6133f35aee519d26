#!/usr/bin/env bash
# Installs what is missing, builds the release, the sanitized build and the fuzz targets, and runs every test in both
# and each fuzz target for some seconds.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install_packages.sh packages.txt

presets=(release asan)
for preset in "${presets[@]}"; do
    cmake --preset "$preset"
    cmake --build --preset "$preset"
done
# Of the fuzz build only the targets and the folders that they need.
cmake --preset fuzz
cmake --build --preset fuzz --target fuzz

# One run over all builds, so that one summary tells the result.
mkdir -p build/all
: > build/all/CTestTestfile.cmake
for tested in "${presets[@]}" fuzz/fuzz; do
    echo "subdirs(\"../$tested\")" >> build/all/CTestTestfile.cmake
done
exec ctest --test-dir build/all --output-on-failure -j "$(nproc)"
