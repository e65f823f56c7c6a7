#!/usr/bin/env bash
# Usage: extract-examples.sh ROOT HEADER...
# Prints a source in which the examples in the comments of the HEADERs, \code to \endcode, are each a function. Every header
# of client/library, with which a client begins, has to have one.
set -euo pipefail
cd "$1"
shift
status=0
declare -A hasExample
while read -r header; do
    hasExample[$header]=1
done < <(grep -lF '\code' "$@")
for header in "$@"; do
    if [[ $header == client/library/* && -z ${hasExample[$header]-} ]]; then
        echo "$header has no example" >&2
        status=1
    fi
done
[ $status = 0 ] || exit $status

printf '#include "%s"\n' "${!hasExample[@]}" | sort
awk '
    /\\endcode/ { text = text "}\n"; inside = 0 }
    inside {
        sub(/^ *\/\/\/ ?/, "")
        if (/^#include/) includes = includes $0 "\n"; else text = text "    " $0 "\n"
    }
    /\\code/ {
        inside = 1
        name = FILENAME
        gsub(/.*\/|\.h$/, "", name)
        text = text "\n#line " FNR + 1 " \"" FILENAME "\"\nvoid Example" name FNR "() {\n"
    }
    END {
        if (inside) exit 1
        print includes "\nnamespace header_examples {\n" text "\n}  // namespace header_examples"
    }' "${!hasExample[@]}"
