#!/usr/bin/env bash
# Installs the peers, builds the benchmarks in release form and runs them; each prints its ratios. Arguments name the
# programs to run, as in "bench/run.sh tree_bench"; without one all are run.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install_packages.sh packages.txt
scripts/install_packages.sh bench/packages.txt
bench/fetch_data.sh
cmake --preset bench > /dev/null
cmake --build --preset bench

programs=("$@")
if [ ${#programs[@]} -eq 0 ]; then
    for source in bench/*_bench.cpp; do programs+=("$(basename "$source" .cpp)"); done
fi
for program in "${programs[@]}"; do
    [ -x "build/bench/bin/$program" ] || { echo "$program: not built, its peer is missing" >&2; continue; }
    echo "== $program"
    "build/bench/bin/$program" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
done
