#!/usr/bin/env bash
# Usage: bench/measure-growth.sh [PERCENT]
# Lists trees of 1,000 to 100,000 files on the stand-in service by `ovsync tree`, and writes what it takes into docs/growth.md
# and docs/growth.svg. PERCENT makes the trees smaller, to try the script, which then only prints the table. Every tree is
# listed once without counting, and then eleven times in turn with the others; the table has medians.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
percent=${1:-100}
runs=11
filesInFolder=20
sizes=()
for size in 1000 3000 10000 30000 100000; do
    sizes+=($((size * percent / 100)))
done

"$root/scripts/install-packages.sh" build benchmarks
"$root/scripts/build-release.sh" ovsync ovsync-service
ovsync=$root/build/release/bin/ovsync

work=$(mktemp -d)
declare -A services urls entries
trap 'kill "${services[@]}" 2>/dev/null || true; wait; rm -rf "$work"' EXIT

# serve SIZE OPTION...: starts a service on the tree of SIZE files, and waits until it answers.
serve() {
    local size=$1
    : >"$work/$size.out"
    "$root/build/release/bin/ovsync-service" "$work/$size" --port 0 "${@:2}" >"$work/$size.out" &
    services[$size]=$!
    until [ -s "$work/$size.out" ]; do
        kill -0 "${services[$size]}"
        sleep 0.1
    done
    urls[$size]=$(sed 's/.* on //' "$work/$size.out")tree/
}

for size in "${sizes[@]}"; do
    mkdir "$work/$size"
    serve "$size" --seed-files "$size" --seed-folders $((size / filesInFolder)) --seed-folder tree
    # What it took to make the tree is not to count.
    kill "${services[$size]}"
    wait "${services[$size]}"
    serve "$size"
    entries[$size]=$("$ovsync" tree "${urls[$size]}" 2>/dev/null | wc -l)
    [ "${entries[$size]}" -gt "$size" ]
done

TIMEFORMAT='%3R %3U %3S'
for _ in $(seq $runs); do
    for size in "${sizes[@]}"; do
        { time /usr/bin/time -a -o "$work/$size.memory" -f %M "$ovsync" tree "${urls[$size]}" >/dev/null 2>&1; } \
            2>>"$work/$size.times"
    done
done

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

for size in "${sizes[@]}"; do
    echo "$size ${entries[$size]}" \
        "$(cut -d' ' -f1 "$work/$size.times" | median)" \
        "$(awk '{ print $2 + $3 }' "$work/$size.times" | median)" \
        "$(median <"$work/$size.memory")" \
        "$(awk '/VmHWM/ { print $2 }' "/proc/${services[$size]}/status")"
done >"$work/measured"

awk '
    # With commas between the thousands.
    function grouped(number,   text, tail) {
        text = sprintf("%.0f", number)
        for (tail = ""; length(text) > 3; text = substr(text, 1, length(text) - 3)) {
            tail = "," substr(text, length(text) - 2) tail
        }
        return text tail
    }
    BEGIN {
        print "| files | entries | wall | CPU of `ovsync` | entries per second | peak memory | per entry | per further entry | peak memory of the service |"
        print "|--:|--:|--:|--:|--:|--:|--:|--:|--:|"
    }
    {
        slope = NR > 1 ? grouped(($5 - memory) * 1024 / ($2 - entries)) " B" : ""
        printf "| %s | %s | %.3f s | %.3f s | %s | %.1f MiB | %s B | %s | %.1f MiB |\n", grouped($1), grouped($2), $3, $4,
            grouped($2 / $3), $5 / 1024, grouped($5 * 1024 / $2), slope, $6 / 1024
        entries = $2
        memory = $5
    }' "$work/measured" >"$work/table"
cat "$work/table"
[ "$percent" -eq 100 ] || exit 0

{
    sed '/^<!-- measured/q' "$root/docs/growth.md"
    printf '\n%s cores, medians of %s runs:\n\n' "$(nproc)" "$runs"
    cat "$work/table"
    printf '\n'
    sed -n '/^<!-- end/,$p' "$root/docs/growth.md"
} >"$work/growth.md"
cp "$work/growth.md" "$root/docs/growth.md"

gnuplot <<PLOT
set terminal svg size 900,360 font "sans-serif,13" background rgb "white"
set output "$root/docs/growth.svg"
set multiplot layout 1,2
set logscale xy
set xrange [800:150000]
set xtics ("1,000" 1000, "10,000" 10000, "100,000" 100000)
set xlabel "entries"
set grid linetype 1 linecolor rgb "#dddddd"
set key top left reverse Left
set style data linespoints
set ylabel "seconds"
plot "$work/measured" using 2:3 title "wall" linecolor rgb "#0072b2" linewidth 2 pointtype 7, \
     "" using 2:4 title "CPU of ovsync" linecolor rgb "#d55e00" linewidth 2 pointtype 5
set ylabel "peak memory in MiB"
plot "$work/measured" using 2:(\$5 / 1024) title "ovsync" linecolor rgb "#d55e00" linewidth 2 pointtype 5, \
     "" using 2:(\$6 / 1024) title "service" linecolor rgb "#009e73" linewidth 2 pointtype 9
PLOT
