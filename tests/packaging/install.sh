#!/usr/bin/env bash
# Usage: install.sh BUILD PREFIX
# Installs BUILD and moves what was installed to PREFIX, so that nothing can be found by the path it was installed to.
set -euo pipefail
rm -rf "$2" "$2.before"
cmake --install "$1" --prefix "$2.before" >/dev/null
mv "$2.before" "$2"
