#!/usr/bin/env bash
# exported_symbols.sh LIBRARY: what a shared library exports, one demangled name a line. Type records and virtual tables
# come with their classes and are left out.
set -euo pipefail
nm -D --defined-only -C "$1" | cut -d' ' -f3- | grep -vE '^(vtable|typeinfo|typeinfo name|VTT|guard variable|non-virtual thunk) ' |
    LC_ALL=C sort -u
