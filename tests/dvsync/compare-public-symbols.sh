#!/usr/bin/env bash
# Usage: compare-public-symbols.sh LIBRARY LIST
# Compares what LIBRARY exports with LIST, one demangled symbol a line. What the standard library and the sanitizers put into
# every library is left out, type information of Qt included.
set -euo pipefail
export LC_ALL=C

actual=$(nm --dynamic --demangle --defined-only "$1" | cut -d' ' -f3- |
    grep -vE '^(std::|(vtable|VTT|typeinfo|typeinfo name) for std::|guard variable for std::|__odr_asan|typeinfo for Q|typeinfo name for Q|_init$|_fini$)' | sort -u)
expected=$(sort -u "$2")

if ! diff <(echo "$expected") <(echo "$actual"); then
    echo "The library's public symbols (>) are not those of ${2##*/} (<)."
    exit 1
fi
