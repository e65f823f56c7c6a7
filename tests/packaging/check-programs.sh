#!/usr/bin/env bash
# Usage: check-programs.sh PREFIX
# Runs the programs under PREFIX, which have to find the libraries under PREFIX.
set -euo pipefail
prefix=$(realpath "$1")
unset LD_LIBRARY_PATH

for program in ovsync ovsync-service; do
    version=$("$prefix/bin/$program" --version)
    [[ $version =~ ^$program\ [0-9]+\.[0-9]+\.[0-9]+$ ]] || {
        echo "$program --version says: $version"
        exit 1
    }
done
[ -x "$prefix/lib/OvSync.exe" ] || {
    echo "The agent is not beside the libraries."
    exit 1
}
found=$(ldd "$prefix/lib/OvSync.exe" | sed -nE 's/^\tlibOvSyncCore\.so\.[0-9]+ => (.*) \(.*/\1/p')
[ "$(realpath "$found")" = "$(realpath "$prefix"/lib/libOvSyncCore.so.?)" ] || {
    echo "The agent finds $found in place of what is under $prefix."
    exit 1
}
unit=$prefix/lib/systemd/user/ovsync.service
[ -e "$unit" ] || {
    echo "There is no unit for systemd."
    exit 1
}
# Where there is systemd it is asked, because it alone expands what the unit names.
if [ -x /usr/bin/systemd-analyze ]; then
    runtime=$(mktemp -d)
    XDG_RUNTIME_DIR=$runtime HOME=$runtime /usr/bin/systemd-analyze --user --man=no verify "$unit"
    rm -rf "$runtime"
fi
# Other copies of the project's libraries must not be found in their place.
found=$(ldd "$prefix/bin/ovsync" | sed -nE 's/^\tlib(dvsync|OvSync[A-Za-z]+)\.so\.[0-9]+ => (.*) \(.*/\2/p' | xargs realpath)
expected=$(realpath "$prefix"/lib/lib{dvsync,OvSync*}.so.? | sort)
diff <(echo "$expected") <(sort <<<"$found") || {
    echo "ovsync finds other libraries (>) than those under $prefix (<)."
    exit 1
}
