#!/usr/bin/env bash
# Usage: bench/compare-clients.sh [PERCENT]
# Lets ovsync and other clients do the same on this machine, on Apache's WebDAV module, and prints a table for each task: list one
# folder of 20,000 files, list a tree of 10,000 files, also where the server refuses to list it at once, pull 5,000 files of 4 KiB,
# pull one file of 1 GiB. PERCENT makes all of it smaller, to try the script. Every command runs seven times after one run that
# does not count; the tables have medians.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
percent=${1:-100}
files=$((20000 * percent / 100))
folders=$((20 * percent / 100 > 0 ? 20 * percent / 100 : 1))
treeFiles=$((folders * 20 * 25))
small=$((50 * percent / 100 > 0 ? 50 * percent / 100 : 1))
mebibytes=$((1024 * percent / 100))
runs=7

"$root/scripts/install-packages.sh" build benchmarks
"$root/scripts/build-release.sh" ovsync

work=$(mktemp -d)
trap '[ ! -f "$work/pid" ] || kill "$(cat "$work/pid")"; sleep 0.2; rm -rf "$work"' EXIT
mkdir -p "$work"/www/{folder,small,large} "$work/config"
for ((i = 1; i <= files; ++i)); do
    printf '%0*d' $((i % 100)) 0 >"$work/www/folder/$(printf 'file-%06d.txt' "$i")"
done
for folder in $(for ((i = 1; i <= folders; ++i)); do echo $i/{01..20}; done); do
    mkdir -p "$work/www/tree/$folder"
    for ((i = 1; i <= 25; ++i)); do
        echo "$i" >"$work/www/tree/$folder/file-$i.txt"
    done
done
for ((i = 1; i <= small; ++i)); do
    mkdir "$work/www/small/$i"
    head -c 400K /dev/urandom | split -b 4K -a 2 -d - "$work/www/small/$i/file-"
done
head -c "${mebibytes}M" /dev/urandom >"$work/www/large/file.bin"
modules=/usr/lib/apache2/modules
port=$((20000 + RANDOM % 20000))
refusingPort=$((port + 1))
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
Listen 127.0.0.1:$refusingPort
<VirtualHost 127.0.0.1:$refusingPort>
    DocumentRoot $work/www
    <Directory $work/www>
        DavDepthInfinity Off
    </Directory>
</VirtualHost>
CONF
chmod -R a+rX "$work"
/usr/sbin/apache2 -f "$work/apache.conf" -k start
base=http://127.0.0.1:$port
url=$base/folder/
tree=$base/tree/
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

# heading TEXT
heading() {
    printf '\n%s\n\n| | wall | CPU | memory |\n|---|---|---|---|\n' "$1"
}

# measure NAME COMMAND...: runs COMMAND, after `prepare`, and prints a line of the table.
measure() {
    : >"$work/times"
    for _ in $(seq $runs); do
        prepare
        /usr/bin/time -a -o "$work/times" -f '%e %U %S %M' "${@:2}" >/dev/null 2>&1 <"$work/cadaver"
    done
    printf '| %s | %s s | %s s | %s MiB |\n' "$1" "$(cut -d' ' -f1 "$work/times" | median)" \
        "$(awk '{ print $2 + $3 }' "$work/times" | median)" "$(awk '{ printf "%.0f\n", $4 / 1024 }' "$work/times" | median)"
}

# row NAME EXPECTED COMMAND...: measures COMMAND, whose output must have EXPECTED lines at least.
row() {
    local name=$1 expected=$2
    shift 2
    local lines
    lines=$("$@" 2>/dev/null <"$work/cadaver" | wc -l)
    if [ "$lines" -lt "$expected" ]; then
        echo "$name printed $lines lines where $expected were expected" >&2
        exit 1
    fi
    prepare() { :; }
    measure "$name" "$@"
}

# pull_row NAME FOLDER COMMAND...: measures COMMAND, which must bring all of FOLDER to $work/pulled.
pull_row() {
    local name=$1 folder=$2
    shift 2
    prepare() {
        rm -rf "$work/pulled"
        mkdir "$work/pulled"
    }
    prepare
    "$@" >/dev/null 2>&1
    diff -r --exclude=.ovsync "$work/www/$folder" "$work/pulled" >&2 || {
        echo "$name did not pull all of it" >&2
        exit 1
    }
    measure "$name" "$@"
}

propfind=(curl -s -X PROPFIND -H 'Depth: 1' -H 'Content-Type: application/xml')
ovsync=$root/build/release/bin/ovsync
rclone=(rclone --config "$work/config/rclone.conf")
echo "$(/usr/sbin/apache2 -v | sed -n 's/Server version: //p'), $(nproc) cores, medians of $runs runs"

heading "One folder of $files files:"
row 'bare transfer of the properties (curl)' "$files" "${propfind[@]}" --data-binary "@$work/propfind.xml" "$url"
row '`ovsync ls -l`' "$files" "$ovsync" ls -l "$url"
row '`davix-ls -l`' "$files" davix-ls -l "$url"
row '`rclone lsf --format pst`' "$files" "${rclone[@]}" lsf --format pst --webdav-url "$url" :webdav:
row '`cadaver` (ls)' "$files" cadaver

propfind[5]='Depth: infinity'
heading "A tree of $treeFiles files in $((folders * 21 + 1)) folders:"
row 'bare transfer of the properties (curl)' "$treeFiles" "${propfind[@]}" --data-binary "@$work/propfind.xml" "$tree"
row '`ovsync tree`' "$treeFiles" "$ovsync" tree "$tree"
row '`rclone lsf -R`' "$treeFiles" "${rclone[@]}" lsf -R --webdav-url "$tree" :webdav:

tree=http://127.0.0.1:$refusingPort/tree/
{
    printf 'request = PROPFIND\nheader = "Depth: infinity"\nurl = "%s"\n' "$tree"
    (cd "$work/www/tree" && find . -type d -printf '%P\n') | while read -r folder; do
        printf 'next\nrequest = PROPFIND\nheader = "Depth: 1"\nheader = "Content-Type: application/xml"\n'
        printf 'data-binary = "@%s"\nurl = "%s"\n' "$work/propfind.xml" "$tree${folder:+$folder/}"
    done
} >"$work/folders"
heading "The same tree, from a server that refuses to list it at once:"
row 'bare transfer of the properties, folder by folder over one connection (curl)' "$treeFiles" curl -s --config "$work/folders"
row '`ovsync tree`' "$treeFiles" "$ovsync" tree "$tree"
row '`rclone lsf -R`' "$treeFiles" "${rclone[@]}" lsf -R --webdav-url "$tree" :webdav:

(cd "$work/www/small" && find . -type f | sed "s|^\./\(.*\)|url = $base/small/\1\noutput = $work/pulled/\1|") >"$work/urls"
heading "Pulling $((small * 100)) files of 4 KiB in $small folders:"
pull_row 'bare transfer of the files (curl)' small curl -fs --create-dirs --parallel --parallel-max 4 --config "$work/urls"
pull_row '`ovsync pull`' small "$ovsync" pull "$base/small/" "$work/pulled"
pull_row '`rclone copy`' small "${rclone[@]}" copy --webdav-url "$base/small/" :webdav: "$work/pulled"

heading "Pulling one file of $mebibytes MiB:"
pull_row 'bare transfer of the file (curl)' large curl -fs -o "$work/pulled/file.bin" "$base/large/file.bin"
pull_row '`ovsync pull`' large "$ovsync" pull "$base/large/" "$work/pulled"
pull_row '`rclone copy`' large "${rclone[@]}" copy --webdav-url "$base/large/" :webdav: "$work/pulled"
