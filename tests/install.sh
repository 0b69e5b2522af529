#!/usr/bin/env bash
# Installs a build into a scratch folder and builds the example programs against it, once as a CMake
# package and once as a pkg-config module; both must run. Then as a folder inside another project.
# usage: install.sh BUILD_FOLDER PROJECT_FOLDER COMPILER
set -euo pipefail
build=$1 root=$2 compiler=$3 examples=$2/docs/examples
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
library=$(dirname "$(find "$scratch/prefix" -name libvision_imgproc_1_0.so)")

cmake -S "$examples" -B "$scratch/cmake" -G Ninja --log-level=WARNING -DCMAKE_PREFIX_PATH="$scratch/prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$scratch/cmake" >/dev/null
"$scratch/cmake/consumer"
"$scratch/cmake/camera"
"$scratch/cmake/bad_pixels"

export PKG_CONFIG_PATH="$library/pkgconfig"
build_by_pkg_config() { # EXAMPLE MODULE
    # shellcheck disable=SC2046 # a list of flags
    "$compiler" -std=c++17 "$examples/$1.cpp" $(pkg-config --cflags --libs "$2") -o "$scratch/$1"
    LD_LIBRARY_PATH="$library" "$scratch/$1"
}
build_by_pkg_config consumer vision_imgproc-1.0
build_by_pkg_config camera vision_camera-1.0

# As a folder of another project: the libraries, and nothing that only we need.
cat >"$scratch/CMakeLists.txt" <<TXT
cmake_minimum_required(VERSION 3.20)
project(other LANGUAGES CXX)
add_subdirectory("$root" blocks)
TXT
cmake -S "$scratch" -B "$scratch/inside" -G Ninja --log-level=WARNING -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
targets=$(ninja -C "$scratch/inside" -t targets all)
grep -q 'libvision_camera_1_0.so:' <<<"$targets"
! grep -E '^[^:]*(tests|bench|thermal|fuzz)[^:/]*:' <<<"$targets"
