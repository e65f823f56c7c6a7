#!/usr/bin/env bash
# Usage: bench/measure-agent-endurance.sh [MINUTES]
# What an agent needs of memory and descriptors while its folder and the service's change at random for so many minutes (60 unless
# given): a line every five minutes, each measured when the agent waits. Fails when it has more descriptors at the end than after five
# minutes, or clearly more memory.
set -euo pipefail
minutes=${1:-60}
span=5

source "$(dirname "$0")/agents.sh"

# measure: sets $resident and $proportional, in KiB, and $descriptors
measure() {
    # An agent that is told to look again has nothing left from the work before.
    local before
    before=$(status "folder['lastPass']['time']")
    sleep 3
    kill -HUP "$agent"
    wait_for "folder['state'] == 'waiting' and folder['lastPass']['time'] > '$before'"
    sleep 1
    read -r resident proportional < <(awk '/^Rss:/ { rss = $2 } /^Pss:/ { pss = $2 } END { print rss, pss }' "/proc/$agent/smaps_rollup")
    descriptors=$(find "/proc/$agent/fd" -mindepth 1 | wc -l)
    local files
    files=$(find "$HOME/local" -path "$HOME/local/.ovsync" -prune -o -type f -print | wc -l)
    printf '%8s min %8s files %8s KiB resident %8s KiB proportional %6s descriptors\n' \
        "$1" "$files" "$resident" "$proportional" "$descriptors"
}

# work SECONDS: changes both sides at random, the folder as people do and the service as other clients do
work() {
    python3 - "$HOME/local" "$url" "$1" <<'PYTHON'
import glob, os, random, shutil, sys, time, urllib.error, urllib.request

folder, url, seconds = sys.argv[1], sys.argv[2], float(sys.argv[3])
names = [f'{kind}{number}' for kind in ('file', 'folder') for number in range(100)]

def content():
    return os.urandom(random.choice([0, 100, 5000, 200000]))

def place():
    name = random.choice(names)
    return name if random.random() < 0.3 else f'folder{random.randrange(20)}/{name}'

def change_here():
    path, other = (os.path.join(folder, place()) for _ in range(2))
    os.makedirs(os.path.dirname(path), exist_ok=True)
    os.makedirs(os.path.dirname(other), exist_ok=True)
    action = random.random()
    if action < 0.6:
        with open(path, 'wb') as file:
            file.write(content())
    elif action < 0.8:
        os.rename(path, other)
    elif os.path.isdir(path):
        shutil.rmtree(path)
    else:
        os.remove(path)

def end_conflicts():
    for path in glob.glob(folder + '/**/* (from the service, *', recursive=True):
        os.remove(path)

def change_there():
    path, other = place(), place()
    def request(method, path, body=None, headers={}):
        urllib.request.urlopen(urllib.request.Request(url + path, body, headers, method=method), timeout=60).read()
    action = random.random()
    if action < 0.6:
        request('PUT', path, content())
    elif action < 0.8:
        request('MOVE', path, headers={'Destination': url + other, 'Overwrite': 'F'})
    else:
        request('DELETE', path)

end = time.monotonic() + seconds
while time.monotonic() < end:
    # Then they rest, or no pass would begin before half a minute is over.
    for _ in range(random.randrange(20)):
        try:
            random.choice([change_here, change_there])()
        except (OSError, urllib.error.URLError):
            # What it wanted to change is not there.
            pass
        time.sleep(random.random() / 10)
    time.sleep(random.random() * 5)
    end_conflicts()
PYTHON
}

mkdir -p "$work/served/.ovsync-service"
echo '<SyncConfig><SyncFrequency>15</SyncFrequency></SyncConfig>' >"$work/served/.ovsync-service/sync-config.xml"
start_service
start_agent user --max-delete 100% --keep-deleted 1
wait_for "folder['lastPass']"
work $((span * 60))
measure $span
firstResident=$resident
firstDescriptors=$descriptors
for ((minute = 2 * span; minute <= minutes; minute += span)); do
    work $((span * 60))
    measure "$minute"
done
echo "passes that changed something: $(cat "$XDG_STATE_HOME"/ovsync/agent.log* | grep -c ' fetched, ')"
# What an allocator and a cache keep is no leak.
if ((descriptors > firstDescriptors || resident > firstResident * 6 / 5 + 4096)); then
    echo "It has grown." >&2
    exit 1
fi
