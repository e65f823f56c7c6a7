#!/usr/bin/env bash
# Usage: bench/measure-transfers.sh [PERCENT [RUNS]]
# Lets `ovsync` pull and push 5,000 files of 4 KiB in 50 folders, and one file of 1 GiB, on Apache's WebDAV module on this machine,
# beside curl, which transfers the small ones over four connections, and beside what the disk alone asks for the same files. All
# take turns, in each of RUNS rounds (5 unless given); the table has medians. curl flushes nothing, so where it pulls, one flush
# of everything follows. Every time goes into folders of its own, and none is removed before the end: ext4 passes over what was
# removed within the last seconds, one by one, whenever it makes a file. PERCENT makes all of it smaller, to try the script.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
percent=${1:-100}
runs=${2:-5}
folders=$((50 * percent / 100 > 0 ? 50 * percent / 100 : 1))
mebibytes=$((1024 * percent / 100))

"$root/scripts/install-packages.sh" build benchmarks
"$root/scripts/build-release.sh" ovsync
ovsync=$root/build/release/bin/ovsync

work=$(mktemp -d)
floor=$work/disk-floor
trap '[ ! -f "$work/pid" ] || kill "$(cat "$work/pid")"; sleep 0.2; rm -rf "$work"' EXIT
c++ -std=c++17 -O2 -o "$floor" "$root/bench/DiskFloor.cpp"
mkdir -p "$work"/www/{small,large} "$work/times"
for ((i = 1; i <= folders; ++i)); do
    mkdir "$work/www/small/$i"
    head -c 400K /dev/urandom | split -b 4K -a 2 -d - "$work/www/small/$i/file-"
done
head -c "${mebibytes}M" /dev/urandom >"$work/www/large/file.bin"
cp -r "$work/www/small" "$work/here"
modules=/usr/lib/apache2/modules
port=$((20000 + RANDOM % 20000))
user=$(if [ "$(id -u)" -eq 0 ]; then echo www-data; else id -un; fi)
cat >"$work/apache.conf" <<CONF
ServerRoot $work
ServerName localhost
Listen 127.0.0.1:$port
PidFile $work/pid
ErrorLog $work/error.log
DocumentRoot $work/www
LoadModule mpm_event_module $modules/mod_mpm_event.so
LoadModule authz_core_module $modules/mod_authz_core.so
LoadModule mime_module $modules/mod_mime.so
TypesConfig /etc/mime.types
LoadModule dav_module $modules/mod_dav.so
LoadModule dav_fs_module $modules/mod_dav_fs.so
DavLockDB $work/locks/db
User $user
Group $(id -gn "$user")
<Directory $work/www>
    Dav On
    DavDepthInfinity On
    Require all granted
</Directory>
CONF
mkdir "$work/locks"
chown "$user" "$work/locks"
chmod -R a+rX "$work"
/usr/sbin/apache2 -f "$work/apache.conf" -k start
base=http://127.0.0.1:$port
for _ in $(seq 50); do
    curl -fs -o /dev/null "$base/small/" -X OPTIONS && break
    sleep 0.1
done

files_of() { (cd "$1" && find . -type f -printf '%P\n'); }
fresh_pulled() {
    pulled=$work/pulled-$((++number))
    mkdir "$pulled"
    files_of "$work/www/small" | sed "s|.*|url = $base/small/&\noutput = $pulled/&|" >"$work/pull.urls"
}
fresh_pushed() {
    pushed=pushed-$((++number))
    rm -rf "$work/here/.ovsync"
    mkdir "$work/www/$pushed"
    files_of "$work/here" | sed "s|.*|url = $base/$pushed/&\nupload-file = $work/here/&|" >"$work/push.urls"
    chown "$user" "$work/www/$pushed"
    find "$work/here" -type f -exec touch {} +
}
fresh_pushed_old() {
    fresh_pushed
    find "$work/here" -type f -exec touch -d yesterday {} +
}
fresh_pushed_folders() {
    fresh_pushed
    (cd "$work/here" && find . -mindepth 1 -type d -exec mkdir "$work/www/$pushed/{}" \;)
    chown -R "$user" "$work/www/$pushed"
}
four=(--parallel --parallel-max 4)

flushed_each() { "$floor" --folders "$folders" --files $((folders * 100)) --flush each "$pulled"; }
flushed_once() { "$floor" --folders "$folders" --files $((folders * 100)) --flush once "$pulled"; }
flushed_never() { "$floor" --folders "$folders" --files $((folders * 100)) --flush never "$pulled"; }
curl_pull() { curl -fs --create-dirs "${four[@]}" --config "$work/pull.urls" && sync -f "$pulled"; }
ovsync_pull() { "$ovsync" pull "$base/small/" "$pulled"; }
curl_push() { curl -fs -o /dev/null "${four[@]}" --config "$work/push.urls"; }
ovsync_push() { "$ovsync" push "$work/here" "$base/$pushed/"; }
ovsync_push_old() { ovsync_push; }
curl_pull_large() { curl -fs -o "$pulled/file.bin" "$base/large/file.bin" && sync -f "$pulled"; }
ovsync_pull_large() { "$ovsync" pull "$base/large/" "$pulled"; }
has_pulled() { diff -r --exclude=.DAV --exclude=.ovsync "$work/www/$1" "$pulled" >&2; }
has_pushed() { diff -r --exclude=.DAV --exclude=.ovsync "$work/here" "$work/www/$pushed" >&2; }

# run TASK PREPARATION CHECK...: times the function TASK, and lets CHECK look at what it brought.
run() {
    local task=$1
    "$2"
    # What was left to be flushed is not to count.
    sync -f "$work"
    shift 2
    { time "$task" >/dev/null 2>&1; } 2>>"$work/times/$task"
    "$@" || {
        echo "$task did not do all of it" >&2
        exit 1
    }
}

TIMEFORMAT='%3R %3U %3S'
number=0
for _ in $(seq "$runs"); do
    run flushed_each fresh_pulled true
    run flushed_once fresh_pulled true
    run flushed_never fresh_pulled true
    run curl_pull fresh_pulled has_pulled small
    run ovsync_pull fresh_pulled has_pulled small
    run curl_push fresh_pushed_folders has_pushed
    run ovsync_push fresh_pushed has_pushed
    run ovsync_push_old fresh_pushed_old has_pushed
    run curl_pull_large fresh_pulled has_pulled large
    rm "$pulled/file.bin"
    run ovsync_pull_large fresh_pulled has_pulled large
    rm "$pulled/file.bin"
done

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
wall() { cut -d' ' -f1 "$work/times/$1" | median; }
# row NAME TASK [BARE]: a line of the table; how many times as long as the task BARE it took, if that is given.
row() {
    printf '| %s | %s s | %s s | %s |\n' "$1" "$(wall "$2")" "$(awk '{ print $2 + $3 }' "$work/times/$2" | median)" \
        "$([ $# -lt 3 ] || awk -v a="$(wall "$2")" -v b="$(wall "$3")" 'BEGIN { printf "%.2f", a / b }')"
}
echo "$(/usr/sbin/apache2 -v | sed -n 's/Server version: //p'), $(nproc) cores, medians of $runs runs"
small="$((folders * 100)) files of 4 KiB in $folders folders"
printf '\n| | wall | CPU | of the bare transfer |\n|---|---|---|---|\n'
row "writing $small, each flushed, then renamed" flushed_each
row 'the same, all flushed at once' flushed_once
row 'the same, not flushed' flushed_never
row "bare transfer of $small (curl), then one flush of everything" curl_pull
row '`ovsync pull`' ovsync_pull curl_pull
row 'bare upload of the same (curl)' curl_push
row '`ovsync push` of files just written' ovsync_push curl_push
row '`ovsync push` of files of yesterday, with their dates' ovsync_push_old curl_push
row "bare transfer of $mebibytes MiB (curl), then one flush of everything" curl_pull_large
row '`ovsync pull`' ovsync_pull_large curl_pull_large
