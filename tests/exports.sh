#!/usr/bin/env bash
# Fails on a name that the shared library exports although no public header declares it exported,
# and on a class that a public header declares exported but the library does not hold.
# usage: exports.sh LIBRARY ROOT HEADER...
set -euo pipefail
library=$1 root=$2
shift 2
cd "$root"

# "class VELMO_API Name", "struct VELMO_API Name", "VELMO_API type name(" and "extern VELMO_API type name;"
# each declare one name; a class brings its members, its tables and its type information along.
declared=$(sed -nE \
    -e 's/.*(class|struct) VELMO_API ([A-Za-z0-9_]+).*/\2/p' \
    -e '/(class|struct) VELMO_API/!s/.*VELMO_API .*[ &*]([A-Za-z0-9_]+)(\[[^]]*\])*[(;].*/\1/p' "$@" | sort -u)
[ -n "$declared" ] || { echo "no exported declarations found in the public headers"; exit 1; }

symbols=$(nm -D --defined-only "$library" | awk '{print $NF}' | sed 's/@.*//' | grep . | c++filt |
    sed -E 's/^(typeinfo name|typeinfo|vtable|VTT|guard variable) for //' | sort -u)
[ -n "$symbols" ] || { echo "$library exports nothing"; exit 1; }

status=0
alternatives=$(paste -sd'|' <<<"$declared")
strangers=$(grep -vE "^velmo::([A-Za-z]+::)*($alternatives)\b" <<<"$symbols" || true)
if [ -n "$strangers" ]; then
    printf 'exported, but declared by no public header:\n%s\n' "$strangers"
    status=1
fi
while read -r name; do
    if ! grep -qE "^velmo::([A-Za-z]+::)*$name\b" <<<"$symbols"; then
        echo "declared exported, but not in the library: $name"
        status=1
    fi
done <<<"$declared"
exit $status
