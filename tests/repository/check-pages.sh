#!/usr/bin/env bash
# Usage: check-pages.sh ROOT
# What the pages link to is there, and so is every file, folder or unit of this repository that they name.
set -euo pipefail
cd "$1"
status=0
folders='(bench|client|dvsync|examples|host|packages|packaging|scripts|service|tests)'

# complain PAGE NAME
complain() {
    echo "$1 names $2, which is not there"
    status=1
}

for page in *.md docs/*.md docs/decisions/*.md; do
    while read -r target; do
        [ -e "$(dirname "$page")/${target%%#*}" ] || complain "$page" "$target"
    done < <(grep -oE '\]\([^)#:]+(#[^)]*)?\)' "$page" | sed -E 's/^\]\((.*)\)$/\1/')
    while read -r name; do
        # A unit goes by the name of its header without the extension.
        [ -e "$name" ] || [ -e "$name.h" ] || [ -e "$name.cpp" ] || complain "$page" "$name"
    done < <(sed 's/[^A-Za-z0-9_.:/*-]/\n/g' "$page" | sed -nE "s#^($folders/[A-Za-z0-9_./-]+[A-Za-z0-9])[.,:/]*\$#\1#p" | sort -u)
done
exit $status
