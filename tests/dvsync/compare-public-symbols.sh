#!/usr/bin/env bash
# Usage: compare-public-symbols.sh LIBRARY LIST
# Compares the part of what LIBRARY exports that is the project's own with LIST, one demangled symbol a line. The rest are
# instances of templates and inline functions of the libraries it is built with.
set -euo pipefail
export LC_ALL=C

actual=$(nm --dynamic --demangle --defined-only "$1" | cut -d' ' -f3- |
    grep -vE '^(((vtable|VTT|typeinfo|typeinfo name|guard variable) for |non-virtual thunk to |([a-z]+ )+)?(std|Q[A-Za-z]+|log4cplus)\b|__odr_asan|_init$|_fini$)' | sort -u)
expected=$(sort -u "$2")

if ! diff <(echo "$expected") <(echo "$actual"); then
    echo "The library's public symbols (>) are not those of ${2##*/} (<)."
    exit 1
fi
