#!/usr/bin/env python3
"""Counts instructions of one fixed form of each engine and compares them with
those in instructions.json.

usage: check.py BUILD_DIR [--update]

More than 2 % worse is printed, not failed. Counts depend on the compiler, its
flags and the C library, which the file names; wide forms are not used, ours by
the program (support/fixed_works.cpp), the C library's by its tunables below.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

import run

HERE = pathlib.Path(__file__).resolve().parent
FILE = HERE / "instructions.json"
# Of the C library's memory and string functions, those for the oldest CPU.
TUNABLES = ("glibc.cpu.hwcaps=-AVX2,-AVX,-AVX_Fast_Unaligned_Load,-AVX512F,-AVX512VL,-AVX512BW,"
            "-ERMS,-FSRM,-BMI2,-MOVBE,-SSE4_2,-SSSE3,-Fast_Unaligned_Copy:"
            "glibc.cpu.x86_non_temporal_threshold=0xc0000:"
            "glibc.malloc.tcache_count=7")
WORSE = 1.02


def count(build):
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no",
             f"--callgrind-out-file={folder}/out", build / "bench" / "instructions"],
            env={"PATH": os.environ["PATH"], "GLIBC_TUNABLES": TUNABLES, "LC_ALL": "C"},
            capture_output=True, text=True, check=False)
        if done.returncode != 0:
            sys.exit(done.stderr)
        counts = {}
        for i, name in enumerate(done.stdout.splitlines(), 1):
            text = pathlib.Path(folder, f"out.{i}").read_text()
            counts[name] = int(text.rsplit("totals:", 1)[1].split()[0])
        return counts


def main():
    build = pathlib.Path(sys.argv[1])
    if not (build / "bench" / "instructions").exists():
        sys.exit("check.py: counting needs valgrind: ./dev bench --install")
    machine = run.machine(build)
    now = {"compiler": machine["compiler"], "flags": machine["flags"],
           "c_library": machine["c_library"], "tunables": TUNABLES, "instructions": count(build)}
    if "--update" in sys.argv[2:]:
        FILE.write_text(json.dumps(now, indent=4) + "\n")
        print(f"wrote {FILE.name}: {len(now['instructions'])} works")
        return
    before = json.loads(FILE.read_text())
    for key in ("compiler", "flags", "c_library", "tunables"):
        if before[key] != now[key]:
            print(f"{key} differs, so counts may too:\n  then {before[key]}\n  now  {now[key]}")
    worse = better = 0
    for name, instructions in now["instructions"].items():
        then = before["instructions"].get(name)
        if then is None:
            print(f"new: {name}: {instructions:,} instructions")
        elif instructions > then * WORSE:
            worse += 1
            print(f"WORSE by {100 * instructions / then - 100:.1f} %: {name}: {then:,} to "
                  f"{instructions:,} instructions")
        elif instructions * WORSE < then:
            better += 1
            print(f"better by {100 - 100 * instructions / then:.1f} %: {name}: {then:,} to "
                  f"{instructions:,} instructions")
    for name in before["instructions"].keys() - now["instructions"].keys():
        print(f"gone: {name}")
    print(f"{len(now['instructions'])} works: {worse} worse by more than 2 %, {better} better")


if __name__ == "__main__":
    main()
