#!/usr/bin/env bash
# Usage: check-includes.sh ROOT
# Who may know whom: an include of one folder's header in another is an arrow, and these are all there are.
set -euo pipefail
cd "$1"
status=0

# allow FOLDER ALLOWED: every include of the project's own headers in FOLDER matches ALLOWED.
allow() {
    local found
    found=$(grep -rnE '#include "' "$1" --include='*.h' --include='*.cpp' | grep -vE "#include \"($2)" || true)
    if [ -n "$found" ]; then
        printf '%s may include only %s:\n%s\n' "$1" "$2" "$found"
        status=1
    fi
}

allow host 'host/'
allow dvsync 'host/|dvsync/'
# Of the client's folders each knows the ones that it is built on, and no two know each other.
client() {
    allow "client/$1" "host/|client/($1${2:+|$2})/"
}
client wire ''
client listing 'wire'
client requests 'wire|listing'
client changes 'wire|listing|requests'
client content 'wire'
client store ''
client user 'library|sync/local'
client sync/report ''
allow client/sync/local 'host/|dvsync/|client/(sync/(local|report)|store)/'
allow client/library 'host/|dvsync/|client/(library|changes|content|listing|requests|wire)/'
allow client/sync/pass 'host/|dvsync/|client/(sync/(pass|local|report)|changes|content|store|wire)/'
client sync/plan 'sync/(pass|local|report)|store'
client sync/part 'sync/(plan|pass|local|report)|changes|store'
client sync/check 'sync/(pass|local|report)|content|store|wire'
client sync/pull 'sync/(part|plan|pass|local|report)|content|store|wire'
client sync/push 'sync/(part|plan|pass|local|report)|content|store|wire'
client sync/both 'sync/(pull|push|part|plan|pass|local|report)|content|store|wire'
allow client/cli/output 'host/|dvsync/|client/(cli/output|sync/(local|report)|store|wire)/'
allow client/cli/input 'host/|dvsync/|client/(cli/(input|output)|sync/(pass|local|report)|user|library|content|requests|wire)/'
allow client/cli/files 'host/|dvsync/|client/(cli/(files|commands|input|output)|sync/(check|pass|local|report)|library|content|wire|store)/'
allow client/cli/offline 'host/|dvsync/|client/(cli/(offline|commands|input|output)|sync/(pass|local|report)|library|wire|store)/'
client folders 'cli/input|user|sync/(pass|local)|store'
allow client/agent 'host/|dvsync/|client/(agent|folders|user|cli/(input|output)|sync/|store|library|wire)'
allow client/cli/agent 'host/|dvsync/|client/(agent|folders|user|wire|sync/report|cli/(agent|commands|input|output))/'
allow client/cli/commands 'host/|dvsync/|client/'
allow client 'host/|dvsync/|client/'
# Of the service's folders each knows those before it.
allow service/protocol 'service/protocol/'
allow service/store 'service/(store|protocol)/'
allow service/tree 'service/(tree|store|protocol)/'
allow service/dav 'service/(dav|tree|store|protocol)/'
allow service/http 'service/(http|dav|tree|store|protocol)/'
allow service 'service/'

# A header of the library that exports nothing is its own affair, and is not installed.
found=$(grep -rhoE '#include "dvsync/[^"]+' client | cut -d'"' -f2 | sort -u | xargs grep -L DVSYNC_EXPORT || true)
if [ -n "$found" ]; then
    printf 'client/ includes what is private to dvsync/:\n%s\n' "$found"
    status=1
fi

# An interface returns a value of the library's, and for that host/ names the library once.
found=$(grep -rnE 'namespace dvsync|dvsync::' host --include='*.h' --include='*.cpp' | grep -v '^host/interfaces/IExternalSyncConfigManager.h:' || true)
header=$(grep -cE '^class ExternalSyncConfig;$' host/interfaces/IExternalSyncConfigManager.h || true)
if [ -n "$found" ] || [ "$header" != 1 ]; then
    printf 'host/ knows dvsync/ by one forward declaration, in IExternalSyncConfigManager.h:\n%s\n' "$found"
    status=1
fi

# What dvsync/ and host/ may use of other libraries.
found=$(grep -rnE '#include <(curl|expat|sqlite3|microhttpd|libxml|nlohmann|CLI|boost)' host dvsync || true)
if [ -n "$found" ]; then
    printf 'host/ and dvsync/ know Qt and log4cplus alone:\n%s\n' "$found"
    status=1
fi
found=$(grep -rnE '#include <Q' service || true)
if [ -n "$found" ]; then
    printf 'service/ does not know Qt:\n%s\n' "$found"
    status=1
fi

# Systems are told apart in one folder, and by one header.
found=$(grep -rnE '#include <(windows|psapi|link|dlfcn|unistd|sys/[a-z]+)\.h>' host dvsync |
    grep -vE '^(dvsync/platform/|host/core/PosixSync.h:)' || true)
if [ -n "$found" ]; then
    printf 'Only dvsync/platform knows the operating system:\n%s\n' "$found"
    status=1
fi

# Qt versions are told apart in one header.
found=$(grep -rlE 'QT_VERSION' host dvsync | grep -v '^host/core/QtCompat.h$' || true)
if [ -n "$found" ]; then
    printf 'Only host/core/QtCompat.h tells Qt versions apart:\n%s\n' "$found"
    status=1
fi
found=$(grep -rnE 'QStringLiteral|QRegularExpression|QLatin1StringView' host dvsync tests/host tests/dvsync || true)
found+=$(grep -rnE 'QTemporaryDir|qAsConst|QSignalSpy|singleShot\([^)]*\[' tests/host tests/dvsync || true)
if [ -n "$found" ]; then
    printf 'Not in Qt 4.8:\n%s\n' "$found"
    status=1
fi
exit $status
