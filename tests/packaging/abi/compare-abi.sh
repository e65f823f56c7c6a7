#!/usr/bin/env bash
# Usage: compare-abi.sh ROOT LIBRARY [--update]
# Compares what LIBRARY offers to hosts with baseline.txt, or writes that anew.
set -euo pipefail
here=$(dirname "$0")
actual=$(python3 "$here/describe-abi.py" "$1" "$2")
if [ "${3-}" = --update ]; then
    echo "$actual" >"$here/baseline.txt"
elif ! diff "$here/baseline.txt" <(echo "$actual"); then
    echo "What hosts are built against (>) is not what it was (<). CONTRIBUTING.md says when the baseline may change."
    exit 1
fi
