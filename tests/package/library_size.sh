#!/bin/sh
# The stripped library stays small. The limit is generous: the library had 399
# KiB when it was set, and other compilers make it larger.
# usage: library_size.sh LIBRARY
set -eu
limit=448  # KiB

copy=$(mktemp)
trap 'rm -f "$copy"' EXIT
strip -o "$copy" "$1"
size=$(($(wc -c <"$copy") / 1024))
echo "$size KiB stripped, $limit allowed"
[ "$size" -le "$limit" ]
