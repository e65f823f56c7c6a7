#!/usr/bin/env bash
# Usage: check-man-pages.sh PREFIX
# Compares the man pages under PREFIX with the help of the programs: a command has a subsection of its name, and an option
# stands there or, if all commands have it, in the section OPTIONS.
set -euo pipefail
source "$(dirname "$0")/help.sh"
PATH=$(realpath "$1")/bin:$PATH
pages=$(mktemp -d)
trap 'rm -rf "$pages"' EXIT
status=0

# check PROGRAM [COMMAND...]
check() {
    local page=$pages/$1.1 option places
    places=$(sed -n '/^\.Sh OPTIONS$/,/^\.Sh [^O]/p' "$page")
    if [ $# -gt 1 ]; then
        grep -qx "\.Ss ${*:2}" "$page" || {
            echo "${page##*/} has no subsection \"${*:2}\""
            status=1
        }
        places+=$(sed -n "/^\.Ss ${*:2}$/,/^\.S[sh] /{//!p}" "$page")
    fi
    while read -r option; do
        grep -qE "^\.It Fl (.* )?${option#-}( |$)" <<<"$places" || {
            echo "${page##*/} does not describe the option $option of \"$*\""
            status=1
        }
    done < <(options_of "$@")
}

for program in ovsync ovsync-service; do
    zcat "$1/share/man/man1/$program.1.gz" >"$pages/$program.1"
    mandoc -T lint -W warning "$pages/$program.1" || status=1
    for_each_command check "$program"
done
exit $status
