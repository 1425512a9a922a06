#!/usr/bin/env python3
"""Runs benchmarks, ours and the peers' interleaved, and writes the results.

usage: run.py BUILD_DIR [[--replace] ENGINE...]
       run.py BUILD_DIR --report

Without names all engines run and the results go to docs/: bench/results.json,
bench/results.md, the plots, and the tables of benchmarks.md. With names only
these run, and the results go to out/bench; with --replace they take the place of
their earlier ones in docs/, since no ratio reaches from one engine to another.
--report measures nothing and writes tables and plots from docs/bench/results.json.

Everything runs in several rounds, one behind the other, and the fastest of all
repetitions counts: what others do on the machine only ever adds time, for seconds
as a rule, so each contender needs one quiet moment. How many rounds and repetitions
there are stands in settings.json: enough for ratios, short enough for a long coffee.
"""

import json
import os
import pathlib
import shlex
import statistics
import subprocess
import sys
import time

import footprint
import plots
import report

HERE = pathlib.Path(__file__).resolve().parent
UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library adds to a name when other clocks than the thread's
# are read, or the amount of work is set.
ADDED = ("real_time", "process_time", "manual_time", "iterations:", "min_time:", "repeats:",
         "threads:")


def output_of(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout
    except (OSError, subprocess.CalledProcessError):
        return ""


def cpu_model():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown"


def flags_of(words):
    flags, skip = [], False
    for word in words:
        if skip or word in ("-o", "-c", "-MT", "-MF", "-isystem"):
            skip = not skip
        elif word.startswith(("-O", "-f", "-m", "-D", "-std", "-g")):
            flags.append(word)
    return flags


def compiler_and_flags(build):
    """As the build compiled the engines: no literal that could be out of date.
    Some are optimised otherwise (cmake/Engines.cmake); what all share is named,
    the last level of optimisation for all of them."""
    compiler, shared = "", None
    for command in json.loads((build / "compile_commands.json").read_text()):
        if "vaskel_engines.dir" in command["command"]:
            words = shlex.split(command["command"])
            compiler = next(w for w in words if "/" in w and "ccache" not in w)
            flags = flags_of(words[words.index(compiler) + 1:])
            shared = [f for f in (flags if shared is None else shared) if f in flags]
    if not shared:
        sys.exit("run.py: the build has no engines")
    levels = [flag for flag in shared if flag.startswith("-O")]
    return (output_of(compiler, "--version").splitlines()[0],
            " ".join(f for f in shared if f not in levels[:-1]))


def machine(build):
    compiler, flags = compiler_and_flags(build)
    return {
        "cpu": cpu_model(),
        "cores": len(os.sched_getaffinity(0)),
        "compiler": compiler,
        "flags": flags,
        "c_library": " ".join(output_of("getconf", "GNU_LIBC_VERSION").split()),
        "load_before": round(os.getloadavg()[0], 1),
    }


def peers(build):
    """Name, package and version of each peer; no version: not installed."""
    found = {}
    for line in (build / "bench" / "peers.txt").read_text().splitlines():
        name, package, state = line.split()
        version = output_of("dpkg-query", "-W", "-f=${Version}", package)
        found[name] = {"package": package,
                       "version": (version or "?") if state == "found" else None}
    return found


def result_of(run):
    """(work, who, size, ns) of an entry of the benchmark library's file."""
    parts = run["run_name"].split("/")
    clock = "real_time" if {"real_time", "manual_time"} & set(parts) else "cpu_time"
    parts = [part for part in parts if not part.startswith(ADDED)]
    if len(parts) < 2:
        sys.exit(f"run.py: {run['run_name']} is not named WORK/WHO or WORK/WHO/SIZE")
    return parts[0], parts[1], "/".join(parts[2:]), run[clock] * UNITS[run["time_unit"]]


def measure(program, raw, settings):
    """The nanoseconds of each repetition by (work, size, who)."""
    options = ["--benchmark_enable_random_interleaving=true",
               f"--benchmark_repetitions={settings['repetitions']}",
               f"--benchmark_min_time={settings['min_time']}",
               f"--benchmark_out={raw}", "--benchmark_out_format=json"]
    if "leave_out" in settings:
        options.append(f"--benchmark_filter=-{settings['leave_out']}")
    done = subprocess.run([program, *options], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          text=True, check=False,
                          env={**os.environ, "LC_ALL": "C", "VIPS_CONCURRENCY": "1"})
    if done.returncode != 0:
        sys.exit(f"run.py: {program} failed:\n{done.stderr}")
    times = {}
    for run in json.loads(raw.read_text())["benchmarks"]:
        if run["run_type"] == "iteration" and not run.get("error_occurred"):
            work, who, size, ns = result_of(run)
            times.setdefault((work, size, who), []).append(ns)
    return times


def measure_engines(programs, settings):
    """All rounds of all programs: the fastest times, and by how much the median
    of an engine's times lies above them."""
    raw = pathlib.Path("out/bench/raw")
    raw.mkdir(parents=True, exist_ok=True)
    limits = {engine: {**settings["default"], **settings["engines"].get(engine, {})}
              for engine in programs}
    times = {engine: {} for engine in programs}
    seconds = dict.fromkeys(programs, 0.0)
    for turn in range(1, settings["rounds"] + 1):
        for engine, program in programs.items():
            started = time.monotonic()
            found = measure(program, raw / f"{engine}.{turn}.json", limits[engine])
            for key, values in found.items():
                times[engine].setdefault(key, []).extend(values)
            took = time.monotonic() - started
            seconds[engine] += took
            print(f"round {turn}, {engine}: {took:.0f} s", flush=True)
    results = {}
    for engine, limit in limits.items():
        works = {}
        for (work, size, who), values in times[engine].items():
            works.setdefault(work, {}).setdefault(size, {})[who] = float(f"{min(values):.4g}")
        above = statistics.median(statistics.median(v) / min(v) for v in times[engine].values())
        results[engine] = {"seconds": round(seconds[engine]), **limit,
                           "median_to_fastest": round(above, 3), "works": works}
        print(f"{engine}: {report.short(works)}")
    return results


def aims_of(results):
    wanted = json.loads((HERE / "aims.json").read_text())
    return report.aims(results, [aim for aim in wanted if aim["engine"] in results["engines"]])


def write(results, folder, page=None):
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "results.json").write_text(report.to_json(results))
    (folder / "results.md").write_text(report.markdown(results))
    plots.draw(results, json.loads((HERE / "plots.json").read_text()), folder)
    if page:
        report.update_page(results, page)
    print(report.aims_table(results["aims"]))
    print(report.footprint_table(results["footprint"]))
    print(f"{folder}/results.md, {folder}/results.json, {folder}/*.svg")


def main():
    build, chosen = pathlib.Path(sys.argv[1]), sys.argv[2:]
    everything = pathlib.Path("docs/bench")
    page = pathlib.Path("docs/benchmarks.md")
    if chosen == ["--report"]:
        results = json.loads((everything / "results.json").read_text())
        results["aims"] = aims_of(results)
        return write(results, everything, page)

    replace = bool(chosen) and chosen[0] == "--replace"
    if replace:
        chosen = chosen[1:]
    settings = json.loads((HERE / "settings.json").read_text())
    programs = {p.name.removesuffix("_bench"): p
                for p in sorted((build / "bench").glob("*_bench"))}
    for name in chosen:
        if name not in programs:
            sys.exit(f"run.py: no benchmark of {name}; there are {', '.join(programs)}")
    results = {"machine": machine(build), "peers": peers(build)}
    print(report.head(results))
    results["engines"] = measure_engines({name: programs[name] for name in chosen or programs},
                                         settings)
    results["machine"]["load_after"] = round(os.getloadavg()[0], 1)
    if replace:
        kept = json.loads((everything / "results.json").read_text())["engines"]
        results["engines"] = {**kept, **results["engines"]}
    results["footprint"] = footprint.measure(build)
    results["aims"] = aims_of(results)
    if chosen and not replace:
        return write(results, pathlib.Path("out/bench"))
    return write(results, everything, page)


if __name__ == "__main__":
    main()
