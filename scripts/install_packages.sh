#!/usr/bin/env bash
# install_packages.sh FILE: installs the Debian packages listed in FILE that are missing. Lines that begin with # are
# comments. Does nothing, and needs no rights, when everything is there.
set -euo pipefail

mapfile -t wanted < <(grep -vE '^[[:space:]]*(#|$)' "$1")
missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing ${#missing[@]} packages: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "These packages are missing and only root can install them: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
