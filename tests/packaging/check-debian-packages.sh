#!/usr/bin/env bash
# Usage: check-debian-packages.sh PREFIX BUILD
# Makes the Debian packages of BUILD, compares what is in them with what is installed under PREFIX, and asks lintian.
set -euo pipefail
packages=$(realpath "$1")-packages
rm -rf "$packages"
cpack --config "$2/CPackConfig.cmake" -B "$packages" >/dev/null
runtime=$(echo "$packages"/dvsync_*.deb)
development=$(echo "$packages"/dvsync-dev_*.deb)

dpkg-deb -x "$runtime" "$packages/root"
status=0
# What a program does not need to run.
unwanted=$(cd "$packages/root/usr" && find . ! -type d | grep -E '^\./include|\.(so|cmake|pc)$' || true)
[ -z "$unwanted" ] || {
    printf '%s holds what only builds need:\n%s\n' "${runtime##*/}" "$unwanted"
    status=1
}
bash "$(dirname "$0")/check-programs.sh" "$packages/root/usr" || status=1

dpkg-deb -x "$development" "$packages/root"
files() {
    (cd "$1" && find . ! -type d | sort)
}
diff <(files "$1") <(files "$packages/root/usr") || {
    echo "The packages (>) do not hold what is installed (<)."
    status=1
}

# expect PACKAGE PATTERN: PACKAGE depends on what PATTERN matches.
expect() {
    local dependencies
    dependencies=$(dpkg-deb -f "$1" Depends)
    grep -qE "(^|, )$2(,|$)" <<<"$dependencies" || {
        echo "${1##*/} does not depend on $2, but on $dependencies"
        status=1
    }
}
version=$(dpkg-deb -f "$runtime" Version)
newest=$(grep -m1 '^## ' "$packages/root/usr/share/doc/dvsync/CHANGELOG.md")
[[ $newest == "## $version "* ]] || {
    echo "The version is $version, and the newest section of CHANGELOG.md \"$newest\""
    status=1
}
for package in dvsync dvsync-dev; do
    doc=$packages/root/usr/share/doc/$package
    changed=$(zcat "$doc/changelog.gz" | dpkg-parsechangelog -l - -S Version)
    [ "$changed" = "$version" ] || {
        echo "The changelog of $package is about the version \"$changed\", not $version"
        status=1
    }
    grep -q '^Copyright: ' "$doc/copyright" || {
        echo "$package does not say whose it is."
        status=1
    }
done
expect "$runtime" 'libqt5core5a[^,]*'
expect "$runtime" 'libcurl4[^,]*'
expect "$development" "dvsync \(= $version\)"
expect "$development" 'libcurl4-openssl-dev'
expect "$development" 'libxml2-dev'

# Not for these: the libraries come with the programs, for one architecture; and cpack adds scripts that call ldconfig, which
# the trigger makes superfluous.
lintian --allow-root --fail-on error,warning --suppress-tags \
    package-name-doesnt-match-sonames,pkg-config-unavailable-for-cross-compilation,maintscript-calls-ldconfig \
    "$runtime" "$development" || status=1
exit $status
