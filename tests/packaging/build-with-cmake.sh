#!/usr/bin/env bash
# Usage: build-with-cmake.sh PREFIX COMPILER EXAMPLE_DIR
# Builds the consumer with the library under PREFIX and runs it.
set -euo pipefail
prefix=$(realpath "$1")
build=$prefix-consumer
rm -rf "$build"
cmake -S "$(dirname "$0")/consumer" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$2" \
    -DEXAMPLE_DIR="$3" >/dev/null
cmake --build "$build"
"$build/consumer"
