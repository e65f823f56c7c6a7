#!/usr/bin/env bash
# Usage: run-with-wine.sh PREFIX PROGRAM [ARG...]
# Runs a program for Windows in a Wine of its own, kept in the folder PREFIX, without windows.
set -euo pipefail
export WINEPREFIX=$1
export WINEDEBUG=-all
# Their installers would be looked for on the net.
export WINEDLLOVERRIDES='mscoree,mshtml='
unset DISPLAY WAYLAND_DISPLAY
shift
exec wine "$@"
