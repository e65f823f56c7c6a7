#!/usr/bin/env bash
# Usage: check-windows-copy.sh PREFIX TOOLCHAIN DEPENDENCIES BUILD
# Checks which files for Windows there are under PREFIX, builds a program with them and runs it under the Wine of BUILD.
# DEPENDENCIES are the folders of Qt and log4cplus, with a colon between them.
set -euo pipefail
export LC_ALL=C
prefix=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)

libraries=(OvSyncConfiguration OvSyncConfigurationFactory OvSyncCore OvSyncHttp OvSyncInterfaces dvsync)
expected=$(printf './bin/%s.dll\n' "${libraries[@]}" && printf './lib/lib%s.dll.a\n' "${libraries[@]}" && echo ./bin/OvSync.exe)
# Which headers there are is the same on every system, and the program below finds the package.
actual=$(cd "$prefix" && find . -type f ! -path './include/*' ! -path './lib/cmake/*')
diff <(sort <<<"$expected") <(sort <<<"$actual") || {
    echo "What is installed (>) is not what is to be (<)."
    exit 1
}

build=$prefix-consumer
rm -rf "$build"
cmake -S "$here/windows-consumer" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$2" -DCMAKE_PREFIX_PATH="$prefix;${3//:/;}" >/dev/null
cmake --build "$build"
# The compiler's DLLs.
export WINEPATH=$4/bin
said=$("$here/../../scripts/run-with-wine.sh" "$4/wine" "$build/consumer.exe")
[ "$(tr -d '\r' <<<"$said")" = "plan.dwg" ]
