# Completion of ovsync and ovsync-service in bash. The words come from the programs' own help.
_ovsync() {
    local help word
    local -a command=("$1")
    help=$("${command[@]}" --help 2>/dev/null)
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ $'\n'$(_ovsync_commands <<<"$help")$'\n' == *$'\n'"$word"$'\n'* ]]; then
            command+=("$word")
            help=$("${command[@]}" --help 2>/dev/null)
        fi
    done
    if [[ $2 == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(sed -n 's/^  \(-[^ ]*\).*/\1/p' <<<"$help" | tr , ' ')" -- "$2")
    else
        mapfile -t COMPREPLY < <(compgen -W "$(_ovsync_commands <<<"$help")" -- "$2")
    fi
}

# The commands in the help at standard input, one a line.
_ovsync_commands() {
    sed -n '/^Subcommands:/,/^$/s/^  \([a-z][^ ]*\).*/\1/p'
}

complete -o default -F _ovsync ovsync ovsync-service
