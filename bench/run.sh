#!/bin/sh
# Runs every benchmark of a build, ours and the peers' interleaved, and writes
# one JSON file a program and one table into out/bench.
# usage: run.sh BUILD_DIR [BENCHMARK OPTION...]
set -eu
build=$1
shift
out=out/bench
mkdir -p "$out"

{
    echo "CPU: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)"
    echo "compiler: $(sed -n 's/^CMAKE_CXX_COMPILER:[^=]*=//p' "$build/CMakeCache.txt" |
        xargs -I{} {} --version | head -n 1)"
    echo "flags: -O3 -DNDEBUG -ffp-contract=off"
} | tee "$out/machine.txt"

for program in "$build"/bench/*_bench; do
    name=$(basename "$program" _bench)
    echo "== $name"
    "$program" --benchmark_enable_random_interleaving=true --benchmark_repetitions=5 \
        --benchmark_report_aggregates_only=true --benchmark_out="$out/$name.json" \
        --benchmark_out_format=json "$@" | tee "$out/$name.txt"
done
python3 "$(dirname "$0")/table.py" "$out"
