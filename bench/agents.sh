# What the measurements of the agent have in common, and source. Afterwards the programs are in $bin, and $work is a folder that goes
# at the end, with the service and the agents.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/install-packages.sh" build
"$root/scripts/build-release.sh" ovsync ovsync-agent ovsync-service
work=$(mktemp -d)
users=()
trap 'for user in "${users[@]}"; do become "$user"; "$bin/ovsync" agent stop >/dev/null || true; done
      kill "${service:-}" 2>/dev/null; wait; rm -rf "$work"' EXIT
# Somebody may build again meanwhile.
cp -a "$root/build/release/bin" "$root/build/release/lib" "$work"
bin=$work/bin
mkdir "$work/served"
unset DBUS_SESSION_BUS_ADDRESS NETRC

# become USER: what follows is done by that user, who has a home, and so an agent.
become() {
    export HOME=$work/$1 XDG_CONFIG_HOME=$work/$1/config XDG_STATE_HOME=$work/$1/state XDG_RUNTIME_DIR=$work/$1/run
    mkdir -p "$XDG_RUNTIME_DIR"
}

# start_service OPTION...: serves $work/served at $url.
start_service() {
    "$bin/ovsync-service" "$work/served" --port 0 "$@" >"$work/out" &
    service=$!
    until grep -q http "$work/out"; do sleep 0.2; done
    url=$(grep -oE 'http://[^ ]+' "$work/out")
}

# start_agent USER OPTION...: of that user, who syncs the folder "local" in their home with $url. Its process is $agent.
start_agent() {
    become "$1"
    "$bin/ovsync" folders add -q "$HOME/local" "$url" "${@:2}" >/dev/null
    users+=("$1")
    "$bin/ovsync" agent start >/dev/null
    agent=$(status "status['process']")
}

# status VALUE: of what the agent says, as a Python expression of `status` and its first `folder`
status() {
    # It fails while something is left to people.
    { "$bin/ovsync" status --json || true; } | python3 -c "import json, sys
status = json.load(sys.stdin)
folder = (status.get('folders') or [None])[0]
print($1)"
}

# wait_for CONDITION: of the same
wait_for() {
    until [ "$(status "bool($1)")" = True ]; do sleep 0.2; done
}
