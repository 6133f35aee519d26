#!/usr/bin/env bash
# Installs what is missing, builds the ktl command, and draws maps of the data in examples/data into build/demo.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install_packages.sh packages.txt

cmake --preset release > build-demo.log 2>&1 || { cat build-demo.log >&2; exit 1; }
rm -f build-demo.log
cmake --build --preset release --target ktl_cli

ktl=build/release/bin/ktl
data=examples/data
out=build/demo
mkdir -p "$out"

sea='#BFD7E4'
map() { # map FILE BORDER-WIDTH POINT-SIZE CITY-FILTER OPTION...
    local file=$1 size=$2 filter=$3
    shift 3
    "$ktl" render \
        "$data/countries-50m.topojson" --layer countries --fill '#F4EFE4' --line '#C3AF96' \
        "$data/coastline-50m.geojson" --line '#4F7F9C' \
        "$data/cities-100k.geojson" --where "$filter" --point '#B8432F' --point-line '#FFFFFF' --point-size "$size" \
        --background "$sea" --smooth --georef -o "$out/$file" "$@"
    echo
}

map world.png 5 'population >= 1000000' --extent -180,-58,180,84 --size 2048x1400
