#!/usr/bin/env bash
# Usage: check-using-declarations.sh ROOT
# Finds the using-declarations of names that their source does not use. clang-tidy cannot, where it reads sources together.
set -euo pipefail
cd "$1"
status=0
while IFS=: read -r file line declaration; do
    name=${declaration##*::}
    name=${name%%;*}
    [ "$(grep -owF -- "$name" "$file" | wc -l)" -gt 1 ] || {
        echo "$file:$line: $declaration is not used"
        status=1
    }
done < <(grep -rnE '^using [A-Za-z_:]+::[A-Za-z_]+;' --include='*.cpp' host dvsync client service tests bench)
exit $status
