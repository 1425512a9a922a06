#!/bin/sh
# Installs the build into an empty folder, moves the folder, and builds the
# installed example against it with CMake and with pkg-config.
# usage: consumer_test.sh BUILD_DIR COMPILER
set -eu
build=$1
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >"$work/install.log"
mv "$work/first" "$work/moved"  # nothing installed may remember where it was
prefix=$work/moved
example=$prefix/share/doc/VaskelLib/samples/example
[ -d "$example" ] || example=$(find "$prefix/share/doc" -name example -type d)
export LD_LIBRARY_PATH="$(dirname "$(find "$prefix" -name libvaskel.so)")"

# 12.5 mm + 25.4 mm at 2400 per inch is 37.9 * 2400 / 25.4 = 3581.1 distances,
# and 3581 * 72 / 2400 = 107.43 points; one suppressed zero is two blanks.
want='3581 distances are  +107.43 pt'

cmake -G Ninja -S "$example" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" >"$work/cmake.log"
cmake --build "$work/cmake" >>"$work/cmake.log"
got=$("$work/cmake/example")
[ "$got" = "$want" ] || { echo "CMake: got '$got', wanted '$want'"; exit 1; }

export PKG_CONFIG_PATH="$LD_LIBRARY_PATH/pkgconfig"
# shellcheck disable=SC2046
"$compiler" -std=c++20 -o "$work/example" "$example/main.cpp" \
    $(pkg-config --cflags --libs vaskel vaskel-embedded)
got=$("$work/example")
[ "$got" = "$want" ] || { echo "pkg-config: got '$got', wanted '$want'"; exit 1; }

# Each component by itself, and nothing outside the components.
for component in Runtime Development Samples Documentation; do
    cmake --install "$build" --prefix "$work/parts" --component $component >>"$work/parts.log"
done
(cd "$prefix" && find . -type f -o -type l | sort) >"$work/whole.txt"
(cd "$work/parts" && find . -type f -o -type l | sort) >"$work/parts.txt"
diff "$work/whole.txt" "$work/parts.txt"
echo "the example builds and runs both ways"
