"""What the shared library costs before and beside its work: size, relocations,
load time, and the heap that each engine's fixed work uses."""

import pathlib
import re
import subprocess
import tempfile


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def stripped_size(library):
    with tempfile.NamedTemporaryFile() as copy:
        subprocess.run(["strip", "-o", copy.name, library], check=True)
        return pathlib.Path(copy.name).stat().st_size


def sections(library):
    found = {}
    for line in output_of("size", "-A", library).splitlines():
        words = line.split()
        if len(words) == 3 and words[0].startswith("."):
            found[words[0]] = int(words[1])
    return found


def relocations(library):
    table = output_of("readelf", "-rW", library)
    packed = sum(int(count) for count in re.findall(r"^ *(\d+) offsets$", table, re.MULTILINE))
    kinds = re.findall(r"R_\w+", table)
    relative = packed + sum(kind.endswith("RELATIVE") for kind in kinds)
    jumps = sum(kind.endswith("JUMP_SLOT") or kind.endswith("JUMP_SLO") for kind in kinds)
    return packed + len(kinds), relative, jumps


def kib(size):
    return f"{size / 1024:.0f} KiB"


def measure(build):
    library = str((build / "lib" / "libvaskel.so").resolve())
    host = str((build / "lib" / "libvaskel_embedded.so").resolve())
    parts = sections(library)
    total, relative, jumps = relocations(library)
    unwinding = sum(parts.get(name, 0)
                    for name in (".eh_frame", ".eh_frame_hdr", ".gcc_except_table"))

    def load_time(*libraries):
        return int(output_of(build / "bench" / "load_time", *libraries)) / 1000

    rows = [
        ("size, stripped", kib(stripped_size(library))),
        ("code", kib(parts[".text"])),
        ("constants and tables", kib(parts[".rodata"])),
        ("unwinding", kib(unwinding)),
        ("relocations", f"{total} ({relative} relative, {jumps} calls)"),
        ("load time after its host's", f"{load_time(library, host):.0f} us"),
        ("load time of an empty library after the same",
         f"{load_time(build / 'bench' / 'libbench_empty.so', host):.0f} us"),
    ]
    heap = []
    for line in output_of(build / "bench" / "heap_use").splitlines():
        if line:
            calls, peak, kept, name = line.split(" ", 3)
            heap.append({"what": name, "calls": int(calls), "peak": int(peak), "kept": int(kept)})
    return {"library": [{"what": what, "value": value} for what, value in rows], "heap": heap}
