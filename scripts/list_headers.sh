#!/usr/bin/env bash
# Writes ktl/ktl.h anew: every header of the library but those in ktl/private_headers.txt, folder by folder from bottom
# to top.
set -euo pipefail
cd "$(dirname "$0")/.."

folders=(platform platform/gdiplus platform/ado core webmap imaging attributes controls legends shapes layers overlays
    mapview)
{
    printf '#pragma once\n\n/// \\file\n/// Every public header of the library.\n'
    for folder in "${folders[@]}"; do
        headers=$(find "ktl/$folder" -maxdepth 1 -name '*.h' | LC_ALL=C sort |
            grep -vxF -f <(grep -v '^#' ktl/private_headers.txt) || true)
        [ -n "$headers" ] || continue
        echo
        while read -r header; do echo "#include \"$header\""; done <<< "$headers"
    done
} > ktl/ktl.h.new
mv ktl/ktl.h.new ktl/ktl.h
