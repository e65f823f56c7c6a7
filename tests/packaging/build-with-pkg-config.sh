#!/usr/bin/env bash
# Usage: build-with-pkg-config.sh PREFIX COMPILER
# Builds a program that uses every shared library, and an example that uses the client, with what pkg-config says of the
# copy under PREFIX, and runs them.
set -euo pipefail
prefix=$(realpath "$1")
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
read -ra flags < <(pkg-config --cflags --libs dvsync)
"$2" -std=c++17 -fPIC "$(dirname "$0")/consumer/EveryLibrary.cpp" "${flags[@]}" -o "$prefix-with-pkg-config"
[ "$(LD_LIBRARY_PATH=$prefix/lib "$prefix-with-pkg-config")" = "plan.dwg" ]
[ "$(pkg-config --modversion dvsync)" = "$("$prefix/bin/ovsync" --version | cut -d' ' -f2)" ]

read -ra flags < <(pkg-config --cflags --libs dvsync-client)
"$2" -std=c++17 -fPIC "$(dirname "$0")/../../examples/minimal-host/main.cpp" "${flags[@]}" -o "$prefix-minimal-host"
usage=$(LD_LIBRARY_PATH=$prefix/lib "$prefix-minimal-host" 2>&1) || [ $? -eq 2 ]
[[ $usage == Usage:* ]]
