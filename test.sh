#!/usr/bin/env bash
# Installs what is missing, builds the release and the sanitized build, and runs every test in both.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install_packages.sh packages.txt

presets=(release asan)
for preset in "${presets[@]}"; do
    cmake --preset "$preset"
    cmake --build --preset "$preset"
done

# One run over all builds, so that one summary tells the result.
mkdir -p build/all
: > build/all/CTestTestfile.cmake
for preset in "${presets[@]}"; do
    echo "subdirs(\"../$preset\")" >> build/all/CTestTestfile.cmake
done
exec ctest --test-dir build/all --output-on-failure -j "$(nproc)"
