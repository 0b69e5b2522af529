#!/usr/bin/env bash
# Makes a wheel of a build and installs it into a fresh environment that has numpy and nothing else.
# usage: wheel.sh ROOT BUILD_FOLDER PYTHON
set -euo pipefail
root=$1 python=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

export VELMO_BUILD_DIR=$2
"$python" -m pip wheel --quiet --no-build-isolation --no-deps --wheel-dir "$scratch" "$root"
"$python" -m venv --without-pip "$scratch/environment"
packages=$(echo "$scratch"/environment/lib/python3*/site-packages)
ln -s "$("$python" -c 'import numpy; print(numpy.__path__[0])')" "$packages/numpy"
"$python" -m zipfile -e "$scratch"/velmo-*.whl "$packages"

cd "$scratch"
"$scratch/environment/bin/python" -c '
import numpy, velmo
frame = numpy.full((4, 4), 8000, numpy.uint16)
picture = velmo.ColorPaletteConverter().palletize(frame, 7000, 9000, velmo.palette("Ironbow"))
assert picture.shape == (4, 4, 3) and velmo.__file__.startswith(velmo.__path__[0])
'
# Its own libraries, and no window system behind OpenCV.
ldd "$packages"/velmo/_velmo*.so >libraries
grep -q "libvision_camera_1_0.so => $packages/velmo/" libraries
! grep -qE 'libgtk|libQt|libopencv_highgui|not found' libraries
