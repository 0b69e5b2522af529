#!/usr/bin/env bash
# Fails on an include that runs against the arrows: apps, bindings -> recordings, camera -> vision -> core.
# usage: arrows.sh ROOT
set -euo pipefail
cd "$1"

status=0
forbid() { # FOLDER WHAT [BUT]: includes below the folder that match, but for some
    local found
    found=$(grep -rnE "^#include [<\"]($2)" --include='*.h' --include='*.cpp' "$1" | grep -vE "${3:-^$}" || true)
    [ -z "$found" ] && return
    printf 'not for %s:\n%s\n' "$1" "$found"
    status=1
}
for folder in core vision camera recordings apps; do
    [ -n "$(find "$folder" -name '*.h')" ] || { echo "no headers below $folder"; exit 1; }
done
forbid core 'vision/|camera/|recordings/|apps/|bindings/'
forbid vision 'camera/|recordings/|apps/|bindings/'
forbid camera 'recordings/|apps/|bindings/|CLI/|fstream|filesystem|opencv2/(imgcodecs|videoio|highgui)'
forbid recordings 'apps/|bindings/|CLI/|camera/' '"camera/(Frame|Picture|temperature/[A-Za-z]*|settings/Parse|pixels/(PixelMap|Replacements))\.h"'
forbid bindings 'apps/|CLI/'
exit $status
