#!/usr/bin/env bash
# Usage: build-wide-log4cplus.sh PREFIX
# Builds log4cplus for wide characters from Debian's source package and installs it into PREFIX. Debian's own package is built
# for narrow ones. Does nothing when PREFIX has it already.
set -euo pipefail
mkdir -p "$1"
prefix=$(cd "$1" && pwd)
[ ! -e "$prefix/lib/liblog4cplusU.so" ] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
cd "$work"

# The machine's own package sources, asked for source packages, without touching the machine's lists.
mkdir -p sources lists/partial
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ ! -e "$file" ] || sed -nE 's/^deb (.*debian)/deb-src \1/p' "$file" >"sources/$(basename "$file" .list).list"
done
for file in /etc/apt/sources.list.d/*.sources; do
    [ ! -e "$file" ] || ! grep -q 'URIs:.*debian' "$file" ||
        sed 's/^Types:.*/Types: deb-src/' "$file" >"sources/$(basename "$file")"
done
apt=(apt-get -qq -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$work/sources" -o "Dir::State::Lists=$work/lists"
    -o APT::Sandbox::User=root)
"${apt[@]}" update
"${apt[@]}" source --download-only log4cplus
dpkg-source --no-check -x ./*.dsc source >/dev/null

cmake -S source -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib \
    -DUNICODE=ON -DBUILD_SHARED_LIBS=ON -DLOG4CPLUS_BUILD_TESTING=OFF -DWITH_UNIT_TESTS=OFF \
    -DLOG4CPLUS_BUILD_LOGGINGSERVER=OFF >/dev/null
cmake --build build >/dev/null
cmake --install build >/dev/null
