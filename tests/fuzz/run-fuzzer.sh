#!/usr/bin/env bash
# Usage: run-fuzzer.sh FUZZER SEEDS...
# Fuzzes for DVSYNC_FUZZ_SECONDS seconds (20 unless set). What is found stays beside FUZZER and is where the next run begins.
set -euo pipefail
fuzzer=$1
shift
mkdir -p "$fuzzer-corpus"
"$fuzzer" -max_total_time="${DVSYNC_FUZZ_SECONDS:-20}" -timeout=10 -rss_limit_mb=2048 -max_len=8192 -verbosity=0 -print_final_stats=1 \
    -dict="$(dirname "$0")/tokens.dict" -artifact_prefix="$fuzzer-found-" "$fuzzer-corpus" "$@"
