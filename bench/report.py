"""What the benchmarks' results say, as JSON, Markdown and lines on a screen.

Results are results["engines"][ENGINE]["works"][WORK][SIZE][WHO] in nanoseconds.
WHO begins with "vaskel" for what is ours; plain "vaskel" is what callers get.
"least..." is a part of the work that no form of ours can do without on this
machine, such as moving the bytes or calling the host, and is no peer.
A ratio is our time divided by the fastest peer's, of the same run.
"""

import json
import math
import re

OURS = "vaskel"
LEAST = "least"


def peers_of(times, pattern=".*"):
    return {who: ns for who, ns in times.items()
            if not who.startswith((OURS, LEAST)) and re.fullmatch(pattern, who)}


def ratio_of(times, pattern=".*", ours=OURS):
    """Our ratio and the best peer's name, or None where one side is missing."""
    peers = peers_of(times, pattern)
    if ours not in times or not peers:
        return None
    best = min(peers, key=peers.get)
    return times[ours] / peers[best], best


def least_of(times):
    """The longest of the parts that cannot go, or None where none was measured."""
    return max((ns for who, ns in times.items() if who.startswith(LEAST)), default=None)


def number(value):
    """Three significant digits, without an exponent."""
    if value == 0:
        return "0"
    digits = max(0, 2 - math.floor(math.log10(abs(value))))
    return f"{value:.{digits}f}"


def duration(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= size:
            return f"{number(ns / size)} {unit}"
    return f"{number(ns)} ns"


def size_key(size):
    return [int(part) if part.isdigit() else -1 for part in size.split("/")]


def table(header, alignment, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + "|".join(alignment) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def short(works):
    """The span of an engine's ratios, for the screen."""
    ratios = [found[0] for sizes in works.values() for times in sizes.values()
              if (found := ratio_of(times))]
    if not ratios:
        return "no peers"
    return f"{number(min(ratios))} to {number(max(ratios))} of the best peer's time"


def head(results):
    m = results["machine"]
    lines = [f"CPU: {m['cpu']}, {m['cores']} cores", f"compiler: {m['compiler']}",
             f"flags: {m['flags']}", f"C library: {m['c_library']}"]
    there = [f"{name} {peer['version']}" for name, peer in results["peers"].items()
             if peer["version"]]
    missing = [f"{name} ({peer['package']})" for name, peer in results["peers"].items()
               if not peer["version"]]
    lines.append("peers: " + ", ".join(there))
    lines.append("not installed and left out: " + (", ".join(missing) or "none"))
    return "\n".join(lines)


# ---- Aims -----------------------------------------------------------------


def aims(results, wanted):
    """Adds what was measured to each aim: the worst case, what it would be if
    the part that cannot go took all its time, and the mean of all cases.

    An aim names engine, works and sizes by patterns; ns_per_size asks for a
    time an element instead of a ratio.
    """
    for aim in wanted:
        works = results["engines"].get(aim["engine"], {}).get("works", {})
        cases = []
        for work, sizes in works.items():
            if not re.fullmatch(aim["works"], work):
                continue
            for size, times in sizes.items():
                if not re.fullmatch(aim.get("sizes", ".*"), size):
                    continue
                ours = aim.get("ours", OURS)
                if "ns_per_size" in aim:
                    found = (times[ours] / int(size.split("/")[0]), "") if ours in times else None
                else:
                    found = ratio_of(times, aim.get("peers", ".*"), ours)
                if found:
                    least = least_of(times)
                    cases.append((found[0], f"{work} {size}".strip(), found[1],
                                  least and least * found[0] / times[ours]))
        if not cases:
            aim["measured"] = None
            continue
        worst = max(cases)
        aim["measured"] = float(f"{worst[0]:.3g}")
        aim["worst_case"] = worst[1]
        aim["best_peer"] = worst[2]
        if worst[3]:
            aim["least"] = float(f"{worst[3]:.3g}")
        mean = math.exp(sum(math.log(case[0]) for case in cases) / len(cases))
        aim["mean"] = float(f"{mean:.3g}")
        aim["cases"] = len(cases)
        aim["met"] = aim["measured"] <= aim.get("ns_per_size", aim.get("aim"))
    return wanted


def aims_table(found):
    rows = []
    for aim in found:
        unit = " ns" if "ns_per_size" in aim else ""
        limit = aim.get("ns_per_size", aim.get("aim"))
        if aim["measured"] is None:
            rows.append([aim["what"], "", f"{limit}{unit}", "", "", "", "not measured",
                         aim.get("remark", "")])
            continue
        many = aim["cases"] > 1
        rows.append([aim["what"], aim["best_peer"], f"{limit}{unit}",
                     number(aim["measured"]) + unit,
                     number(aim["least"]) + unit if "least" in aim else "",
                     number(aim["mean"]) + unit if many else "",
                     "met" if aim["met"] else f"not met ({aim['worst_case']})" if many
                     else "not met",
                     "" if aim["met"] else aim.get("remark", "")])
    return table(["engine and work", "best peer", "aim", "measured", "least", "mean of all cases",
                  "", "what limits it"],
                 ["---", "---", "---:", "---:", "---:", "---:", "---", "---"], rows)


# ---- Footprint ------------------------------------------------------------


def footprint_table(found):
    rows = [[row["what"], row["value"]] for row in found["library"]]
    text = table(["library", ""], ["---", "---:"], rows)
    if found["heap"]:
        rows = [[row["what"], f"{row['calls']:,}", f"{row['peak']:,}", f"{row['kept']:,}"]
                for row in found["heap"]]
        text += "\n" + table(["engine and work", "allocations", "peak bytes", "bytes kept"],
                             ["---", "---:", "---:", "---:"], rows)
    return text


# ---- The files --------------------------------------------------------------


def to_json(results):
    """Indented down to one line a size, so that changes can be read."""
    text = json.dumps(results, indent=1)
    flat = re.sub(r"\{\n\s+(\"[^{}\[\]]*?)\n\s+\}",
                  lambda m: "{" + re.sub(r"\n\s+", " ", m[1]) + "}", text)
    return flat + "\n"


def markdown(results):
    lines = ["# Results of the benchmarks", "",
             "Written by `./dev bench`; how to read it is in "
             "[benchmarks.md](../benchmarks.md). Times are those of the fastest repetition;",
             "a ratio is our time divided by that of the fastest peer in the same run.", "",
             *[line + "  " for line in head(results).splitlines()],
             f"load average: {results['machine']['load_before']} before, "
             f"{results['machine'].get('load_after', '?')} after", ""]
    for engine, done in results["engines"].items():
        lines += [f"## {engine}", ""]
        rows = []
        for work, sizes in done["works"].items():
            for size in sorted(sizes, key=size_key):
                times = sizes[size]
                found = ratio_of(times)
                ours = duration(times[OURS]) if OURS in times else ""
                rest = [f"{who} {duration(ns)}" for who, ns in
                        sorted(times.items(), key=lambda item: item[1])
                        if who != OURS and not (found and who == found[1])]
                best = f"{found[1]} {duration(times[found[1]])}" if found else ""
                rows.append([work, size, ours, best, number(found[0]) if found else "",
                             ", ".join(rest)])
        lines.append(table(["work", "size", OURS, "best peer", "ratio", "others"],
                           ["---", "---:", "---:", "---:", "---:", "---"], rows))
    return "\n".join(lines)


def update_page(results, page):
    """Writes the generated parts of the page, between their marks."""
    text = page.read_text()
    for name, part in (("machine", "\n".join(line + "  " for line in head(results).splitlines())
                        + "\n"),
                       ("aims", aims_table(results["aims"])),
                       ("footprint", footprint_table(results["footprint"]))):
        begin, end = f"<!-- {name} -->\n", f"<!-- end of {name} -->"
        before, rest = text.split(begin, 1)
        text = before + begin + "\n" + part + "\n" + end + rest.split(end, 1)[1]
    page.write_text(text)
