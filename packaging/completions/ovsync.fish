# Completion of ovsync and ovsync-service in fish. The words, and what they mean, come from the programs' own help.
function __ovsync_words
    set -l words (commandline -opc)
    set -l command $words[1]
    set -l help ($command --help 2>/dev/null)
    set -l commands (__ovsync_commands $help)
    for word in $words[2..]
        if string match -q -- $word\t\* $commands
            set -a command $word
            set help ($command --help 2>/dev/null)
            set commands (__ovsync_commands $help)
        end
    end
    if string match -q -- '-*' (commandline -ct)
        # A description that does not fit beside its option begins on the next line.
        printf '%s\n' $help | awk '/^  -/ {
            count = split($1, names, ",")
            if (substr($0, 30, 1) != " ") getline
            for (i = 1; i <= count; ++i) print names[i] "\t" substr($0, 31)
        }'
    else if test -n "$commands"
        printf '%s\n' $commands
    else
        __fish_complete_path (commandline -ct)
    end
end

# The commands in the help given as arguments, a line each, with what they do.
function __ovsync_commands
    printf '%s\n' $argv | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z][^ ]*) +(.*)/\1\t\2/p'
end

complete -c ovsync -f -a '(__ovsync_words)'
complete -c ovsync-service -f -a '(__ovsync_words)'
