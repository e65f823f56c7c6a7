#!/usr/bin/env bash
# Usage: check-completions.sh PREFIX
# Compares what bash, zsh and fish offer, with the completions under PREFIX, with the help of the programs.
set -euo pipefail
source "$(dirname "$0")/help.sh"
share=$(realpath "$1")/share
PATH=$(realpath "$1")/bin:$PATH
export HOME=/nonexistent
status=0

# Each prints the words that a shell offers for the last one of its arguments, one a line.

offered_by_bash() {
    bash --norc -c 'source "$0"
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _ovsync "$1" "${@: -1}" "${@: -2:1}"
        printf "%s\n" "${COMPREPLY[@]}"' "$share/bash-completion/completions/$1" "$@"
}

# _describe hands its words to zsh's line editor, which is not there.
offered_by_zsh() {
    zsh -f -c 'completion=$0 words=("$@") CURRENT=$#
        _describe() { print -rl -- ${${(P)@[-1]}%%:*} }
        complete_words() { source $completion }
        complete_words' "$share/zsh/vendor-completions/_ovsync" "$@"
}

offered_by_fish() {
    fish --no-config -c 'source $argv[1]; complete -C "$argv[2..]"' "$share/fish/vendor_completions.d/$1.fish" "$@" |
        cut -f1
}

# expect SHELL WORDS CALL...: SHELL offers exactly WORDS for the last word of CALL.
expect() {
    local words=$2 offered
    offered=$("offered_by_$1" "${@:3}" | sort)
    [ "$offered" = "$(sort <<<"$words")" ] || {
        printf '%s offers other words for "%s" than its help:\n' "$1" "${*:3}"
        diff <(sort <<<"$words") <(echo "$offered") || true
        status=1
    }
}

# check PROGRAM [COMMAND...]
check() {
    local shell commands
    commands=$(commands_of "$@")
    for shell in bash zsh fish; do
        expect "$shell" "$(options_of "$@")" "$@" -
        [ -z "$commands" ] || expect "$shell" "$commands" "$@" ""
    done
}

for program in ovsync ovsync-service; do
    for_each_command check "$program"
done
exit $status
