#!/usr/bin/env bash
# Usage: bench/measure-agent.sh [FILES [FOLDERS]]
# What the agent costs with so many files in so many folders (100000 in 1000 unless given) when nothing changes: memory, threads,
# descriptors and how often it is woken; and how long it takes to send one changed file.
set -euo pipefail
files=${1:-100000}
folders=${2:-1000}

source "$(dirname "$0")/agents.sh"

value() {
    awk -v key="$1:" '$1 == key { print $2 }' "/proc/$agent/status"
}

# Of all threads.
wakeups() {
    cat "/proc/$agent"/task/*/status | awk '/^voluntary_ctxt_switches/ { sum += $2 } END { print sum }'
}

processor_time() {
    awk '{ print ($14 + $15) * 10 }' "/proc/$agent/stat"
}

start_service --seed-files "$files" --seed-folders "$folders"
begin=$(date +%s%N)
start_agent user
# What the first pass changed brings a second one.
wait_for "folder['state'] == 'waiting' and folder['lastPass'] and folder['lastPass']['fetched'] > 0"
printf '%-40s %8.1f s\n' "first pass, $files files fetched" "$((($(date +%s%N) - begin) / 100000000))e-1"
wait_for "folder['state'] == 'waiting' and folder['lastPass']['fetched'] == 0"
wait_for "folder['state'] == 'waiting'"
printf '%-40s %8s s\n' "a pass with nothing to do" "$(status "folder['lastPass']['seconds']")"
sleep 2
printf '%-40s %8.1f MiB\n' "resident while it waits" "$(($(value VmRSS) * 10 / 1024))e-1"
printf '%-40s %8.1f MiB\n' "resident at the most, in a pass" "$(($(value VmHWM) * 10 / 1024))e-1"
printf '%-40s %8s\n' "threads" "$(value Threads)" "descriptors" "$(find "/proc/$agent/fd" -mindepth 1 | wc -l)"
before=$(wakeups)
busy=$(processor_time)
sleep 20
printf '%-40s %8s\n' "wake-ups in 20 s" "$(($(wakeups) - before))" "processor time in 20 s, ms" "$(($(processor_time) - busy))"
echo new >"$HOME/local/new"
begin=$(date +%s%N)
until [ -e "$work/served/new" ]; do sleep 0.02; done
printf '%-40s %8.1f s\n' "from saving a file to its being sent" "$((($(date +%s%N) - begin) / 100000000))e-1"
