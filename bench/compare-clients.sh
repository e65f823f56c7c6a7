#!/usr/bin/env bash
# Usage: bench/compare-clients.sh [FILES]
# Lists one folder of FILES files (20,000 unless given), and a tree of 10,000 files in 421 folders, on Apache's WebDAV module with
# ovsync and other clients, side by side on this machine, and prints two tables. Every command runs seven times after one run that does not count; the table has medians.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
files=${1:-20000}
runs=7

"$root/scripts/install-packages.sh"
"$root/scripts/install-packages.sh" "$root/bench/packages.txt"
(cd "$root" && cmake --preset release >/dev/null && cmake --build --preset release >/dev/null)

work=$(mktemp -d)
trap '[ ! -f "$work/pid" ] || kill "$(cat "$work/pid")"; sleep 0.2; rm -rf "$work"' EXIT
mkdir "$work/www" "$work/www/folder" "$work/config"
for ((i = 1; i <= files; ++i)); do
    printf '%0*d' $((i % 100)) 0 >"$work/www/folder/$(printf 'file-%06d.txt' "$i")"
done
for folder in {01..20}/{01..20}; do
    mkdir -p "$work/www/tree/$folder"
    for ((i = 1; i <= 25; ++i)); do
        echo "$i" >"$work/www/tree/$folder/file-$i.txt"
    done
done
modules=/usr/lib/apache2/modules
port=$((20000 + RANDOM % 20000))
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
DavLockDB $work/locks
User $(if [ "$(id -u)" -eq 0 ]; then echo www-data; else id -un; fi)
<Directory $work/www>
    Dav On
    DavDepthInfinity On
    Require all granted
</Directory>
CONF
chmod -R a+rX "$work"
/usr/sbin/apache2 -f "$work/apache.conf" -k start
url=http://127.0.0.1:$port/folder/
tree=http://127.0.0.1:$port/tree/
for _ in $(seq 50); do
    curl -fs -o /dev/null "$url" -X OPTIONS && break
    sleep 0.1
done

cat >"$work/propfind.xml" <<'XML'
<?xml version="1.0" encoding="utf-8"?>
<D:propfind xmlns:D="DAV:"><D:prop><D:resourcetype/><D:getcontentlength/><D:getlastmodified/><D:creationdate/></D:prop></D:propfind>
XML
printf 'open %s\nls\nquit\n' "$url" >"$work/cadaver"
: >"$work/config/rclone.conf"

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# row NAME EXPECTED COMMAND...: runs COMMAND, whose output must have EXPECTED lines at least.
row() {
    local name=$1 expected=$2
    shift 2
    local lines
    lines=$("$@" 2>/dev/null <"$work/cadaver" | wc -l)
    if [ "$lines" -lt "$expected" ]; then
        echo "$name printed $lines lines where $expected were expected" >&2
        exit 1
    fi
    : >"$work/times"
    for _ in $(seq $runs); do
        /usr/bin/time -a -o "$work/times" -f '%e %U %S %M' "$@" >/dev/null 2>&1 <"$work/cadaver"
    done
    printf '| %s | %s s | %s s | %s MiB |\n' "$name" "$(cut -d' ' -f1 "$work/times" | median)" \
        "$(awk '{ print $2 + $3 }' "$work/times" | median)" "$(awk '{ printf "%.0f\n", $4 / 1024 }' "$work/times" | median)"
}

propfind=(curl -s -X PROPFIND -H 'Depth: 1' -H 'Content-Type: application/xml')
echo "One folder of $files files on $(/usr/sbin/apache2 -v | sed -n 's/Server version: //p'), $(nproc) cores, medians of $runs runs:"
echo
echo '| | wall | CPU | memory |'
echo '|---|---|---|---|'
row 'bare transfer of the properties (curl)' "$files" "${propfind[@]}" --data-binary "@$work/propfind.xml" "$url"
row '`ovsync ls -l`' "$files" "$root/build/release/bin/ovsync" ls -l "$url"
row '`davix-ls -l`' "$files" davix-ls -l "$url"
row '`rclone lsf --format pst`' "$files" rclone --config "$work/config/rclone.conf" lsf --format pst --webdav-url "$url" :webdav:
row '`cadaver` (ls)' "$files" cadaver

propfind[5]='Depth: infinity'
echo
echo 'A tree of 10,000 files in 421 folders:'
echo
echo '| | wall | CPU | memory |'
echo '|---|---|---|---|'
row 'bare transfer of the properties (curl)' 10000 "${propfind[@]}" --data-binary "@$work/propfind.xml" "$tree"
row '`ovsync tree`' 10000 "$root/build/release/bin/ovsync" tree "$tree"
row '`rclone lsf -R`' 10000 rclone --config "$work/config/rclone.conf" lsf -R --webdav-url "$tree" :webdav:
