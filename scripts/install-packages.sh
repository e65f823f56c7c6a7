#!/usr/bin/env bash
# Usage: install-packages.sh [LIST]
# Installs the Debian packages of LIST (packages.txt unless given) that are missing. Does nothing, and needs no rights, when
# none is.
set -euo pipefail
list=${1:-$(cd "$(dirname "$0")/.." && pwd)/packages.txt}

missing=()
while read -r package; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done < <(grep -vE '^(#|$)' "$list")
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
    command -v sudo >/dev/null || {
        echo "These packages are missing, and installing them needs root or sudo: ${missing[*]}" >&2
        exit 1
    }
fi
echo "Installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq >&2
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
