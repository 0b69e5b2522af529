#!/usr/bin/env bash
# Unpacks what programs of another Debian architecture are built against and run with, next to nothing of the machine:
# sysroot.sh ARCHITECTURE FOLDER PACKAGE...
set -euo pipefail
architecture=$1 folder=$2
shift 2
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)

# The packages that were asked for last time are there.
[ "$(cat "$folder/packages" 2>/dev/null)" != "$*" ] || exit 0

apt=$folder/apt
mkdir -p "$apt/lists/partial" "$apt/archives/partial"
: >"$apt/status"
options=(-o "APT::Architecture=$architecture" -o "APT::Architectures=$architecture" -o "Dir::State=$apt"
    -o "Dir::State::status=$apt/status" -o "Dir::Cache=$apt" -o Dir::Cache::archives=archives
    -o APT::Sandbox::User= -o Debug::NoLocking=1)
apt-get "${options[@]}" -qq update
apt-get "${options[@]}" -qq --yes --no-install-recommends --download-only install "$@"
for package in "$apt"/archives/*.deb; do
    dpkg -x "$package" "$folder"
done

# Absolute links would lead to the machine's own files.
find "$folder" -path "$apt" -prune -o -type l -lname '/*' -print | while read -r link; do
    ln -snf "$(realpath -m --relative-to="$(dirname "$link")" "$folder$(readlink "$link")")" "$link"
done
# What alternatives would point at.
for library in blas lapack; do
    for file in "$folder"/usr/lib/*/"$library"/*.so*; do
        [ ! -e "$file" ] || ln -snf "$library/$(basename "$file")" "$(dirname "$(dirname "$file")")/$(basename "$file")"
    done
done
rm -rf "$apt"
echo "$*" >"$folder/packages"
