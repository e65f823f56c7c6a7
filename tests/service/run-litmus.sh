#!/bin/sh
# Runs one suite of litmus against the service: run-litmus.sh OVSYNC-SERVICE LITMUS SUITE. Fails if any test in it fails.
set -eu
program=$1 litmus=$2 suite=$3
folder=$(mktemp -d)
mkdir "$folder/served"
"$program" "$folder/served" --port 0 >"$folder/output" &
service=$!
trap 'kill "$service" 2>/dev/null || :; wait "$service" 2>/dev/null || :; rm -rf "$folder"' EXIT
until grep -qs '^Serving ' "$folder/output"; do
    kill -0 "$service"
    sleep 0.05
done
url=$(sed 's/.* on //' "$folder/output")
# litmus leaves its logs where it runs.
cd "$folder"
TESTS=$suite "$litmus" "$url" >"$folder/result" || { cat "$folder/result"; exit 1; }
cat "$folder/result"
grep -q ' 0 failed\. 100' "$folder/result"
