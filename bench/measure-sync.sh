#!/usr/bin/env bash
# Usage: bench/measure-sync.sh [FILES...]
# What passes both ways cost with so many files of a few bytes (1000 10000 100000 unless given), 100 to a folder, on the stand-in
# service: the first ones, one with nothing changed, and those after a single change; `ovsync sync` beside `rclone bisync`, which is
# told to move as many files at once. Prints a table. First passes run once, others RUNS times (5 unless set); the table has medians.
# Above RCLONE_MOST files (10000 unless set) rclone is left out: what it takes for each file is known by then.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sizes=("$@")
[ $# -gt 0 ] || sizes=(1000 10000 100000)
runs=${RUNS:-5}
transfers=4
mostForRclone=${RCLONE_MOST:-10000}

"$root/scripts/install-packages.sh" build benchmarks
"$root/scripts/build-release.sh" ovsync ovsync-service
bin=$root/build/release/bin
work=$(mktemp -d)
trap 'stop_service; rm -rf "$work"' EXIT
: >"$work/rclone.conf"

# serve FOLDER OPTION...
serve() {
    mkdir -p "$1"
    : >"$work/requests"
    "$bin/ovsync-service" "$1" --port 0 --verbose "${@:2}" >"$work/out" 2>"$work/requests" &
    service=$!
    until grep -q http "$work/out"; do
        kill -0 $service
        sleep 0.1
    done
    url=$(grep -oE 'http://[^ ]+' "$work/out")
}

stop_service() {
    [ -z "${service:-}" ] || kill "$service"
    wait
    service=
}

sync_ovsync() {
    "$bin/ovsync" -q sync --transfers $transfers "$work/local" "$url"
}

sync_rclone() {
    rclone --config "$work/rclone.conf" --transfers $transfers --checkers $transfers bisync --workdir "$work/bisync" --force \
        --remove-empty-dirs ${resync:+--resync} --webdav-url "$url" "$work/local" :webdav:
}

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# measure HOW_OFTEN: prepares and syncs, and notes seconds, memory and requests.
measure() {
    : >"$work/times"
    : >"$work/counts"
    for ((run = 1; run <= $1; ++run)); do
        prepare
        local before
        before=$(wc -l <"$work/requests")
        /usr/bin/time -a -o "$work/times" -f '%e %U %S %M' bash -c "$(declare -f sync_$client); sync_$client" \
            >"$work/log" 2>&1 || {
            cat "$work/log" >&2
            exit 1
        }
        # The service writes its lines after its answers.
        sleep 0.2
        echo $(($(wc -l <"$work/requests") - before)) >>"$work/counts"
    done
    printf '%.2f s|%d MiB|%d\n' "$(cut -d' ' -f1 "$work/times" | median)" \
        "$(($(cut -d' ' -f4 "$work/times" | median) / 1024))" "$(median <"$work/counts")" >>"$work/$client-$size"
}

# What is on both sides has to be the same after each task.
check() {
    diff -r --exclude=.ovsync --exclude=.ovsync-service "$work/local" "$work/served" >&2
}

export work bin transfers url
tasks=('first pass, all files there' 'nothing changed' 'one file changed here' 'one file changed there'
    'a folder of 100 files renamed here' 'first pass, all files here')
for size in "${sizes[@]}"; do
    for client in ovsync rclone; do
        if [ $client = rclone ] && [ "$size" -gt "$mostForRclone" ]; then
            for _ in "${tasks[@]}"; do
                echo '–|–|–' >>"$work/$client-$size"
            done
            continue
        fi
        rm -rf "$work/served" "$work/local" "$work/bisync"
        mkdir "$work/local"
        serve "$work/served" --seed-files "$size" --seed-folders $((size / 100)) --seed-folder tree
        resync=yes
        export url resync
        prepare() { :; }
        measure 1
        resync=
        check
        measure "$runs"
        # A change that keeps the size is none for rclone, which has only sizes to go by here.
        length=100
        file=$(cd "$work/local" && find tree -type f | sed -n 50p)
        prepare() {
            sleep 1.1
            printf '%0*d' $((++length)) 0 >"$work/local/$file"
        }
        measure "$runs"
        check
        prepare() {
            sleep 1.1
            # Not in the pipe, which would forget it.
            length=$((length + 1))
            printf '%0*d' $length 0 | curl -fs -T - "$url$file"
        }
        measure "$runs"
        check
        folder=$(dirname "$file")
        number=0
        prepare() {
            sleep 1.1
            mv "$work/local/$folder" "$work/local/$(dirname "$folder")/renamed $((++number))"
            folder=$(dirname "$folder")/renamed\ $number
        }
        measure "$runs"
        check
        stop_service

        rm -rf "$work/served" "$work/bisync" "$work/local/.ovsync"
        serve "$work/served"
        resync=yes
        export url resync
        prepare() { :; }
        measure 1
        check
        stop_service
    done
done

echo "$(nproc) cores, medians of $runs runs, first passes once"
echo
echo '| files | | `ovsync sync` | memory | requests | `rclone bisync` | memory | requests |'
echo '|--:|---|--:|--:|--:|--:|--:|--:|'
for size in "${sizes[@]}"; do
    for i in "${!tasks[@]}"; do
        line=$((i + 1))
        printf '| %s | %s | %s | %s |\n' "$size" "${tasks[i]}" "$(sed -n "${line}p" "$work/ovsync-$size" | sed 's/|/ | /g')" \
            "$(sed -n "${line}p" "$work/rclone-$size" | sed 's/|/ | /g')"
    done
done
