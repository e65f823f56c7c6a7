#!/usr/bin/env bash
# Usage: install-packages.sh LIST...
# Installs the Debian packages in packages/LIST.txt that are missing. Does nothing, and needs no rights, when none is.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

missing=()
while read -r package; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done < <(for list in "$@"; do grep -vE '^(#|$)' "$root/packages/$list.txt"; done | sort -u)
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
    command -v sudo >/dev/null || {
        echo "These packages are missing, and installing them needs root or sudo: ${missing[*]}" >&2
        exit 1
    }
fi
mkdir -p "$root/build"
log=$root/build/packages.log
echo "Installing ${missing[*]}; this takes up to a minute and a half." >&2
export DEBIAN_FRONTEND=noninteractive
{
    "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
} >"$log" 2>&1 || {
    tail -n 20 "$log" >&2
    echo "The packages could not be installed; all that was said is in $log." >&2
    exit 1
}
