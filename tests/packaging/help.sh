# Reads the help of a program or a command of it: the words of its call are the arguments.

# The commands, one a line.
commands_of() {
    "$@" --help | awk '/^[A-Z][a-z]+:$/ { section = $1 } section == "Subcommands:" && /^  [^ ]/ { print $1 }'
}

# The options, one a line, short and long ones alike.
options_of() {
    "$@" --help | awk '/^[A-Z][a-z]+:$/ { section = $1 } section == "Options:" && /^  -/ { print $1 }' | tr , '\n'
}

# Calls ACTION with the words of the call of PROGRAM and of each of its commands, and of theirs.
for_each_command() {
    local action=$1 command
    shift
    options_of "$@" | grep -qx -e --help || {
        echo "The help of \"$*\" cannot be read."
        exit 1
    }
    "$action" "$@"
    for command in $(commands_of "$@"); do
        for_each_command "$action" "$@" "$command"
    done
}
