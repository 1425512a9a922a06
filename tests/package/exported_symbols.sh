#!/bin/sh
# Compares what libvaskel.so exports with the committed list, and checks that
# it records no dependency on a host's library.
# usage: exported_symbols.sh LIBVASKEL_SO [--update]
set -eu
library=$1
list=$(dirname "$0")/exported_symbols.txt
current=$(mktemp)
trap 'rm -f "$current"' EXIT

nm -D --defined-only "$library" | awk '{ print $3 }' | c++filt | LC_ALL=C sort -u >"$current"
if [ "${2:-}" = --update ]; then
    cp "$current" "$list"
    exit
fi
if ! diff -u "$list" "$current"; then
    echo "The exported names have changed. If that is meant, note it in CHANGELOG.md and run"
    echo "  sh tests/package/exported_symbols.sh $library --update"
    exit 1
fi

needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
for name in $needed; do
    case $name in
    libstdc++.so.6 | libm.so.6 | libgcc_s.so.1 | libc.so.6 | ld-linux*) ;;
    *) echo "libvaskel.so depends on $name"; exit 1 ;;
    esac
done
soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = libvaskel.so.1 ] || { echo "soname is $soname"; exit 1; }
echo "$(wc -l <"$list") exported names, as listed"
