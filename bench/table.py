#!/usr/bin/env python3
"""Makes one Markdown table of the JSON files that the benchmarks wrote.

usage: table.py FOLDER

Benchmarks are named WORK/WHO or WORK/WHO/SIZE; the column "ratio" is the time
divided by that of the fastest WHO other than vaskel in the same work and size.
"""

import json
import pathlib
import sys

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(file):
    for run in json.loads(file.read_text())["benchmarks"]:
        if run.get("aggregate_name") == "median":
            work, who, *size = run["run_name"].split("/") + ["vaskel"] * ("/" not in run["run_name"])
            yield work, who, "/".join(size), run["cpu_time"] * UNITS[run["time_unit"]]


def main():
    folder = pathlib.Path(sys.argv[1])
    rows = {}
    for file in sorted(folder.glob("*.json")):
        for work, who, size, time in medians(file):
            rows.setdefault((file.stem, work, size), {})[who] = time
    lines = [(folder / "machine.txt").read_text().replace("\n", "  \n"),
             "| engine | work | size | who | median ns | ratio to the best peer |",
             "|---|---|---|---|---:|---:|"]
    for (engine, work, size), times in rows.items():
        peers = [t for who, t in times.items() if not who.startswith("vaskel")]
        for who, time in sorted(times.items(), key=lambda item: item[1]):
            ratio = f"{time / min(peers):.3f}" if peers else ""
            lines.append(f"| {engine} | {work} | {size} | {who} | {time:.1f} | {ratio} |")
    (folder / "table.md").write_text("\n".join(lines) + "\n")
    print(folder / "table.md")


if __name__ == "__main__":
    main()
