#!/usr/bin/env bash
# Usage: build-release.sh TARGET...
# Builds what users run into build/release. Prints nothing unless it fails.
set -euo pipefail
cd "$(dirname "$0")/.."
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{
    cmake --preset release && cmake --build --preset release --target "$@"
} >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}
