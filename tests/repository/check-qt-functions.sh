#!/usr/bin/env bash
# Usage: check-qt-functions.sh ROOT
# Compares the functions of Qt that host/ and dvsync/ call, as gcc's own call graph has them, with the reviewed list
# qt-functions.txt, so that a new one is a decision: Qt 4.8 has to have it, and mean the same by it.
set -euo pipefail
export LC_ALL=C
here=$(cd "$(dirname "$0")" && pwd)
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# All of it at once: it takes three seconds.
find host dvsync -name '*.h' -o -name '*.cpp' | grep -vE '/(WindowsPlatform|EntryPoint)\.cpp$' | sort |
    sed 's/.*/#include "&"/' >"$work/all.cpp"
# shellcheck disable=SC2046
g++ -std=c++17 -O0 -fPIC -w -S -fdump-lang-class -fdump-ipa-cgraph -include host/core/PosixSync.h -I. -DQT_NO_KEYWORDS \
    -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII $(pkg-config --cflags Qt5Network Qt5Xml Qt5XmlPatterns) \
    -o "$work/all.s" "$work/all.cpp"
awk -f "$here/list-qt-functions.awk" "$work"/*.class "$work"/*.cgraph | sort -u >"$work/called.txt"

# A compiler that writes its graph in other words would give an empty list, or half of one.
grep -qxF 'virtual QNetworkReply::ignoreSslErrors' "$work/called.txt"

if ! diff <(grep -v '^#' "$here/qt-functions.txt" | sort -u) "$work/called.txt"; then
    echo "host/ and dvsync/ call other functions of Qt (>) than the reviewed ones (<) of qt-functions.txt."
    exit 1
fi
