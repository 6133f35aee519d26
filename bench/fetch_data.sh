#!/usr/bin/env bash
# Fetches the map that the drawing benchmarks need into build/bench-data: countries-10m.json of the npm package
# world-atlas (Natural Earth's countries at 1:10 million, public domain). Needs npm.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
target=${1:-$root/build/bench-data}
mkdir -p "$target"
if [ -s "$target/countries-10m.json" ]; then
  exit 0
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
npm pack --silent world-atlas@2
tar -xzf world-atlas-*.tgz package/countries-10m.json
mv package/countries-10m.json "$target/"
