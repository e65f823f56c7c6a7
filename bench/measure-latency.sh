#!/usr/bin/env bash
# Usage: bench/measure-latency.sh [TIMES [SECONDS]]
# How long it takes from saving a file in the folder of one agent to its being in the folder of another one: a row of a table, with
# median and worst of so many (100 unless given), and what it consists of. The service publishes that agents ask every so many seconds,
# as often as they ever do unless given.
set -euo pipefail
times=${1:-100}
interval=${2:-15}

source "$(dirname "$0")/agents.sh"

mkdir -p "$work/served/.ovsync-service"
echo "<SyncConfig><SyncFrequency>$interval</SyncFrequency></SyncConfig>" >"$work/served/.ovsync-service/sync-config.xml"
start_service
for user in writer reader; do
    start_agent "$user"
    wait_for "folder['lastPass']"
done
python3 - "$work/writer/local" "$work/served" "$work/reader/local" "$times" "$interval" <<'PYTHON'
import os, random, statistics, sys, time

here, served, there = sys.argv[1:4]
times, interval = int(sys.argv[4]), int(sys.argv[5])

def wait_for(path):
    while not os.path.exists(path):
        time.sleep(0.01)
    return time.monotonic()

sent, fetched, whole = [], [], []
for number in range(times):
    # At any moment between two questions of the other agent.
    time.sleep(random.random() * interval)
    name = f'file{number}'
    with open(f'{here}/{name}', 'wb') as file:
        file.write(os.urandom(4096))
    saved = time.monotonic()
    on_service = wait_for(f'{served}/{name}')
    arrived = wait_for(f'{there}/{name}')
    sent.append(on_service - saved)
    fetched.append(arrived - on_service)
    whole.append(arrived - saved)

def pair(seconds):
    return f'{statistics.median(seconds):.1f} s, {max(seconds):.1f} s'

print('| median and worst of | saved to on the service | from there to the other folder | whole way |')
print('|---|---|---|---|')
print(f'| {times}, asking every {interval} s | {pair(sent)} | {pair(fetched)} | {pair(whole)} |')
PYTHON
