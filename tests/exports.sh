#!/usr/bin/env bash
# Fails on a name that the shared library exports although no public header declares it exported, and on a
# class, member function, function or datum that a public header declares exported but the library does not hold.
# usage: exports.sh LIBRARY ROOT HEADER...
set -euo pipefail
library=$1 root=$2
shift 2
cd "$root"

# Prints what the headers declare: "Name" for classes, functions and data of a namespace, "Class::name" for
# the members of exported classes that have no body and for their static data.
declarations() {
    sed -E 's| *//.*||' "$@" | awk '
        /^(class|struct) VELMO_API/ { class = $3; sub(/<.*/, "", class); print class; next }
        /^};/ { class = ""; next }
        !class && /VELMO_API/ && !/^(#define|extern template)/ {
            sub(/(\[[^]]*\])*[(;].*/, ""); sub(/.*[ &*]/, ""); print; next
        }
        !class || /^(public|protected|private):/ || /^[{}]/ { next }
        {
            # Statements of the class itself are indented by four blanks; deeper ones belong to bodies.
            if (!statement && $0 !~ /^    [^ {}]/) next
            statement = statement " " $0
            if ($0 !~ /[;{}]$/) next
            text = statement; statement = ""
            if (text !~ /;$/ || text ~ /= (0|delete|default);/ || text ~ / (using|friend|static_assert|struct|class)[ (]/)
                next
            if (text ~ /^[^=]*\(/ || text ~ /operator/) {
                match(text, /(operator[^ (]*|~?[A-Za-z0-9_]+)\(/)
                print class "::" substr(text, RSTART, RLENGTH - 1)
            } else if (text ~ / static / && text !~ /constexpr/) {
                sub(/ *(=.*)?;$/, "", text); sub(/.*[ &*]/, "", text)
                print class "::" text
            }
        }' | sort -u
}

declared=$(declarations "$@")
grep -q :: <<<"$declared" || { echo "no members of exported classes found in the public headers"; exit 1; }

symbols=$(nm -D --defined-only "$library" | awk '{print $NF}' | sed 's/@.*//' | grep . | c++filt |
    sed -E 's/^(typeinfo name|typeinfo|vtable|VTT|guard variable) for //' | sort -u)
[ -n "$symbols" ] || { echo "$library exports nothing"; exit 1; }

status=0
alternatives=$(grep -v :: <<<"$declared" | paste -sd'|')
strangers=$(grep -vE "^velmo::([A-Za-z]+::)*($alternatives)\b" <<<"$symbols" || true)
if [ -n "$strangers" ]; then
    printf 'exported, but declared by no public header:\n%s\n' "$strangers"
    status=1
fi
# Without template arguments and parameters, as the headers have them.
names=$(sed -E 's|\[abi:[^]]*\]||g; :again; s/<[^<>]*>//; t again; s/(.)\(.*/\1/' <<<"$symbols" | sort -u)
while read -r name; do
    # A class shows in its members or in its type information.
    if ! grep -qE "::${name//[^A-Za-z0-9_:]/\\&}(::|$)" <<<"$names"; then
        echo "declared exported, but not in the library: $name"
        status=1
    fi
done <<<"$declared"
exit $status
