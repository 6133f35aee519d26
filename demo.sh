#!/usr/bin/env bash
# Installs what is missing, builds the ktl command, and draws maps of the data in examples/data into build/demo.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install_packages.sh packages.txt

mkdir -p build/demo
if ! cmake --preset release > build/demo/configure.log 2>&1; then
    cat build/demo/configure.log >&2
    exit 1
fi
rm build/demo/configure.log
cmake --build --preset release --target ktl_cli

ktl=build/release/bin/ktl
data=examples/data
export KTL_HOME=build/demo/home

# map FILE OPTION...: countries, coastlines and cities in three sizes. The cities of each map are those of its own list
# of least populations.
map() {
    local file=build/demo/$1 small=$2 middle=$3 large=$4
    shift 4
    local cities=$data/cities-100k.geojson
    "$ktl" render --point '#B5402D' --point-line '#FFFFFF' \
        "$data/countries-50m.topojson" --layer countries --fill '#F5F0E4' --line '#BFA987' \
        "$data/coastline-50m.geojson" --line '#5C8CA8' \
        "$cities" --where "population >= $small AND population < $middle" --point-size 4 --point-line '#B5402D' \
        "$cities" --where "population >= $middle AND population < $large" --point-size 7 \
        "$cities" --where "population >= $large" --point-size 11 \
        --background '#C5DCE8' --smooth --georef -o "$file" "$@"
    echo
}

world=(1000000 3000000 8000000)
region=(100000 1000000 5000000)
map world.png "${world[@]}" --extent -180,-58,180,84 --size 2048x1400
map world-degrees.tif "${world[@]}" --degrees --extent -180,-90,180,90 --size 2048x1024
map east-asia.png "${region[@]}" --extent 84,13,152,53 --size 1600x1200
map east-asia-degrees.jpg "${region[@]}" --degrees --extent 84,8,152,56 --size 1600x1120

rm -rf build/demo/home
echo "The maps lie in $PWD/build/demo"
