"""Draws the plots of plots.json as SVG with gnuplot, and one of all aims.

Kinds: "growth" is time by size, with the exponent of the power of the size that
fits best; "speed" is size by time, "ratio" our time by the best peer's.
Every kind has logarithmic axes. The same results give the same bytes.
"""

import math
import re
import shutil
import subprocess

import report

COLOURS = ("#0060ad", "#dd181f", "#2e8b57", "#e69f00", "#8a2be2", "#777777", "#8b4513", "#00a0b0",
           "#c71585")
LOW, HIGH = 0.02, 50.0  # of the plot of aims


def exponent(points):
    """Slope of the least-squares line through the points' logarithms."""
    xs = [math.log(x) for x, _ in points]
    ys = [math.log(y) for _, y in points]
    mean_x, mean_y = sum(xs) / len(xs), sum(ys) / len(ys)
    spread = sum((x - mean_x) ** 2 for x in xs)
    return sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys)) / spread


def points_of(sizes, who, plot):
    points = []
    for size in sorted(sizes, key=report.size_key):
        times, x = sizes[size], size.split("/")[0]
        if not x.isdigit() or any(px == int(x) for px, _ in points):
            continue
        if plot["kind"] == "ratio":
            if found := report.ratio_of(times, ours=who):
                points.append((int(x), found[0]))
        elif who in times:
            ns = times[who]
            points.append((int(x), ns if plot["kind"] == "growth"
                           else int(x) / (ns * 1e-9) / plot["per_second"]))
    return points


def curves_of(works, pattern, plot):
    """(title, points) of one panel."""
    curves = []
    for work, sizes in works.items():
        if not re.fullmatch(pattern, work):
            continue
        for who in plot["who"]:
            points = points_of(sizes, who, plot)
            if not points:
                continue
            title = who if plot["kind"] != "ratio" else work
            if plot["kind"] == "growth" and len(points) > 2:
                title += f", n^{{{exponent(points):.2f}}}"
            curves.append((title, points))
    return curves


def quoted(text):
    return '"' + text.replace("_", "\\\\_") + '"'


def gnuplot(script):
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def data_block(name, rows):
    return f"${name} << EOD\n" + "\n".join(" ".join(map(str, row)) for row in rows) + "\nEOD\n"


def terminal(path, width, height):
    return (f'set terminal svg size {width},{height} font "sans-serif,13" background "white"\n'
            f'set output "{path}"\n'
            'set grid lc rgb "#dddddd"\nset border lc rgb "#666666"\n')


def draw_plot(plot, works, path):
    panels = [(title, curves) for pattern, title in plot["panels"].items()
              if (curves := curves_of(works, pattern, plot))]
    if not panels:
        return False
    ratio = plot["kind"] == "ratio"
    factors = plot["engine"].endswith("sampler")  # no amounts: points without lines
    wide = 420 if not ratio else 520
    script = terminal(path, wide * len(panels), 440)
    label = {"growth": "nanoseconds", "speed": plot.get("unit", ""), "ratio": "ratio"}[plot["kind"]]
    named = sorted({x for _, curves in panels for _, points in curves for x, _ in points})
    if factors:  # side by side, however near each other
        panels = [(title, [(name, [(1 + named.index(x), y) for x, y in points])
                           for name, points in curves]) for title, curves in panels]
    blocks, plots = [], []
    for p, (title, curves) in enumerate(panels):
        lines = []
        style = "points pt 7 ps 0.9" if factors else "linespoints lw 2 pt 7 ps 0.5"
        for c, (name, points) in enumerate(curves):
            blocks.append(data_block(f"d{p}_{c}", points))
            lines.append(f'$d{p}_{c} with {style} '
                         f'lc rgb "{COLOURS[c % len(COLOURS)]}" title {quoted(name)}')
        if ratio:
            lines.append('1 with lines lc rgb "black" dt 2 notitle')
        xs = [x for _, points in curves for x, _ in points]
        low, high = min(xs), max(xs)
        plots.append(f'set title {quoted(title)}\nset ylabel "{label}"\n'
                     f"set xrange [{low * 0.8}:{high * 1.25}]\n"
                     + "plot " + ", \\\n  ".join(lines))
    if factors:
        ticks = "set xtics (" + ", ".join(f'"{x / 100:g}" {1 + i}'
                                          for i, x in enumerate(named)) + ")\n"
    elif plot.get("linear_names"):
        ticks = "set format x '%.0f'\n"
    else:
        ticks = "set format x '10^{%L}'\n"
    if plot["kind"] == "growth":
        ticks += "set format y '10^{%L}'\n"
    # "set key below" keeps the names out of the curves.
    script += "".join(blocks) + "set logscale xy\n" + ticks
    script += "set key below font ',11'\nset mxtics 10\nset mytics 10\n"
    script += f'set multiplot layout 1,{len(panels)} title {quoted(plot["title"])}\n'
    script += "\n".join(plots) + "\nunset multiplot\n"
    gnuplot(script)
    return True


def draw_aims(aims, path):
    """What was measured beside what is aimed at: left of the line is met."""
    rows = []
    for aim in aims:
        if aim["measured"] is not None:
            limit = aim.get("ns_per_size", aim.get("aim"))
            # What lies outside is drawn at the edge.
            rows.append((aim["what"], *(min(max(value / limit, LOW), HIGH)
                                        for value in (aim["measured"], aim["mean"]))))
    rows.reverse()
    if not rows:
        return
    script = terminal(path, 900, 90 + 24 * len(rows))
    script += data_block("met", [(r[1], i) for i, r in enumerate(rows) if r[1] <= 1])
    script += data_block("unmet", [(r[1], i) for i, r in enumerate(rows) if r[1] > 1])
    script += data_block("mean", [(r[2], i) for i, r in enumerate(rows)])
    script += "set ytics (" + ", ".join(f"{quoted(r[0])} {i}" for i, r in enumerate(rows)) + ")\n"
    script += f"set yrange [-0.7:{len(rows) - 0.3}]\nset logscale x\n"
    script += f"set xrange [{LOW * 0.9}:{HIGH * 1.1}]\n"
    script += 'set xlabel "measured ratio divided by the aim (1 and below: met)"\n'
    script += "set arrow from 1,graph 0 to 1,graph 1 nohead lw 2 lc rgb 'black'\n"
    script += "set key below samplen 0.5 font ',11' width -3\n"
    parts = ['$mean with points pt 6 ps 0.8 lc rgb "#888888" title "mean of all cases"']
    if any(r[1] <= 1 for r in rows):
        parts.append('$met with points pt 7 ps 1 lc rgb "#2e8b57" title "worst case, met"')
    if any(r[1] > 1 for r in rows):
        parts.append('$unmet with points pt 7 ps 1 lc rgb "#dd181f" title "worst case, not met"')
    gnuplot(script + "plot " + ", \\\n  ".join(parts) + "\n")


def draw(results, plots, folder):
    if not shutil.which("gnuplot"):
        print("gnuplot (gnuplot-nox) is not installed: no plots")
        return
    for plot in plots:
        works = results["engines"].get(plot["engine"], {}).get("works", {})
        draw_plot(plot, works, folder / f"{plot['file']}.svg")
    draw_aims(results["aims"], folder / "aims.svg")
