#!/usr/bin/env bash
# Usage: run-examples.sh PREFIX COMPILER
# Builds each folder of examples/ with the library under PREFIX, and runs the programs against the service under PREFIX.
set -euo pipefail
prefix=$(realpath "$1")
build=$prefix-examples
rm -rf "$build"
mkdir -p "$build/served/Projects/Old"
echo "Plan of the bridge" >"$build/served/Projects/plan.dwg"
export HOME=/nonexistent
unset LD_LIBRARY_PATH http_proxy https_proxy all_proxy NETRC

for example in "$(dirname "$0")"/../../examples/*/; do
    name=$(basename "$example")
    cmake -S "$example" -B "$build/$name" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$2" >/dev/null
    cmake --build "$build/$name" >"$build/$name.log" || {
        cat "$build/$name.log"
        exit 1
    }
done

service=
stop_service() {
    [ -z "$service" ] || kill "$service"
    wait
    service=
}
trap stop_service EXIT

# start_service ARGUMENT...: sets url.
start_service() {
    stop_service
    : >"$build/service.out"
    "$prefix/bin/ovsync-service" "$build/served" --port 0 "$@" >"$build/service.out" &
    service=$!
    for _ in $(seq 100); do
        url=$(grep -oE 'http://[^ ]+' "$build/service.out" || true)
        [ -z "$url" ] || return 0
        sleep 0.1
    done
    echo "The service did not start."
    exit 1
}

status=0
# expect EXIT_CODE PATTERN NAME ARGUMENT...: the example NAME ends so, and what it writes, as one line, matches PATTERN.
expect() {
    local code=0 output
    output=$("$build/$3/$3" "${@:4}" 2>&1) || code=$?
    [ $code -eq "$1" ] && [[ ${output//$'\n'/ } =~ ^$2$ ]] || {
        printf '%s exits with %s, not %s, and writes:\n%s\n' "${*:3}" $code "$1" "$output"
        status=1
    }
}

start_service
expect 0 'Old/ plan\.dwg' minimal-host "$url" Projects
expect 0 'created New, id [^ ]+ New/ Old/ plan\.dwg' minimal-host "$url" Projects New
expect 1 'minimal-host: .*404.*' minimal-host "$url" Missing
expect 1 'minimal-host: There is no folder "Missing"' minimal-host "$url" Missing New
expect 2 'Usage: .*' minimal-host "$url"
expect 0 'own-transport: PROPFIND http://[^ ]+/Projects/: 207 plan\.dwg' own-transport "$url" Projects
expect 1 '.*There is no folder "Missing"' own-transport "$url" Missing

# A listing that breaks off is a failure, never a shorter one.
start_service --fault cut=400
expect 3 'minimal-host: PROPFIND .* failed: .*status 207.*' minimal-host "$url" Projects
expect 3 'own-transport: PROPFIND [^ ]+ 207 own-transport: .* failed: .*status 207.*' own-transport "$url" Projects
start_service --fault content-length=10
expect 3 'minimal-host: PROPFIND .* failed: .*status 207.*' minimal-host "$url" Projects
expect 3 'own-transport: PROPFIND [^ ]+ 207 own-transport: .* failed: .*status 207.*' own-transport "$url" Projects
start_service --fault error-page
expect 3 'minimal-host: PROPFIND .* failed: .*status 200.*' minimal-host "$url" Projects
expect 3 'own-transport: PROPFIND [^ ]+ 200 own-transport: .* failed: .*status 200.*' own-transport "$url" Projects
start_service --fault status=503
expect 1 'own-transport: PROPFIND [^ ]+ 503 own-transport: .*503.*' own-transport "$url" Projects
stop_service
expect 3 'minimal-host: .* failed: .*no answer.*' minimal-host "$url" Projects
expect 3 'own-transport: PROPFIND [^ ]+ 0 own-transport: .* failed: .*no answer.*' own-transport "$url" Projects
exit $status
