#!/usr/bin/env bash
# Usage: compare-public-symbols.sh LIST LIBRARY
#        compare-public-symbols.sh LIST OBJECT.obj...
# Compares the part of what LIBRARY exports, or what a DLL made of the objects would, that is the project's own with LIST,
# one demangled symbol a line. The rest are instances of templates and inline functions of the libraries it is built with.
set -euo pipefail
export LC_ALL=C
list=$1
shift

expected=$(sort -u "$list")
case $1 in
    *.obj) actual=$(cat "$@" | grep -aoE -- '-export:"[^"]+"' | cut -d'"' -f2 | c++filt) ;;
    *.dll) actual=$(objdump -p "$1" | sed -nE '/Name Pointer\] Table/,$s/^\s+\[ *[0-9]+\].* ([^ ]+)$/\1/p' | c++filt) ;;
    *) actual=$(nm --dynamic --demangle --defined-only "$1" | cut -d' ' -f3-) ;;
esac
if [[ $1 == *.obj || $1 == *.dll ]]; then
    # Exported with their class alone, and the names of types with the types.
    actual=$(grep -vE '::qt_static_metacall\(' <<<"$actual")
    expected=$(grep -vE '^typeinfo name for ' <<<"$expected")
fi
actual=$(grep -vE '^(((vtable|VTT|typeinfo|typeinfo name|guard variable) for |non-virtual thunk to |([a-z]+ )+)?(std|Q[A-Za-z]+|log4cplus)\b|__odr_asan|_init$|_fini$)' <<<"$actual" | sort -u)

if ! diff <(echo "$expected") <(echo "$actual"); then
    echo "The library's public symbols (>) are not those of ${list##*/} (<)."
    exit 1
fi
