"""The report: the machine, the tables in Markdown, and the plot."""

import os
import platform
import re
import subprocess
from statistics import median

COLUMNS = ["CPU s", "display CPU s", "peak MB", "list ms", "first ms", "decoded", "shown", "p50 ms",
           "p95 ms", "max ms", "> 5 ms"]
PACKAGES = {"Qt": "libqt5core5a", "GStreamer": "libgstreamer1.0-0", "Mesa": "libgl1-mesa-dri",
            "mpv": "mpv", "X server": "xvfb"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def first_match(path, pattern):
    with open(path) as file:
        return re.search(pattern, file.read())[1]


def machine():
    """Lines about the machine and its load: call it before anything runs."""
    model = first_match("/proc/cpuinfo", r"model name\s*: (.*)")
    memory = int(first_match("/proc/meminfo", r"MemTotal:\s*(\d+)")) / 2 ** 20
    versions = [f"{name} {output('dpkg-query', '-W', '-f', '${Version}', package)}"
                for name, package in PACKAGES.items()]
    return (f"- {os.cpu_count()} cores of {model}, {memory:.1f} GB, Linux {platform.release()}; "
            f"load before the start {os.getloadavg()[0]:.2f}\n"
            f"- {', '.join(versions)}; this player at {output('git', 'describe', '--always', '--dirty')}\n")


def number(value):
    return "" if value is None else f"{value:.0f}" if value >= 100 or value == int(value) \
        else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def medians(runs):
    return {name: median(run[name] for run in runs) for name in runs[0] if name != "frames"}


def table(head, rows):
    lines = [head, ["---"] + ["---:"] * (len(head) - 1), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def comparison(results):
    """results: the runs of each row, by its name."""
    rows = []
    for name, runs in results.items():
        figures = medians(runs)
        rows.append([name] + [number(figures.get(column)) for column in COLUMNS])
    return table([f"median of {len(runs)}"] + COLUMNS, rows)


def steps(runs):
    values = medians(runs)
    return table([f"this player, median of {len(runs)}", ""],
                 [[name, number(value)] for name, value in values.items()])


# --- The plot

WIDTH, HEIGHT = 900, 170  # of a clip's panel
LEFT, RIGHT, TOP, BOTTOM = 50, 880, 30, 150
SECONDS = 20
TICKS = [0, 5, 20, 50, 100, 200, 500]  # ms
COLOUR, PALE = "#1f5fbf", "#b9cdea"


def typical(runs):
    """The run in the middle, by the number of late frames and then by the latest one."""
    return sorted(runs, key=lambda run: (run["> 5 ms"], run["max ms"]))[len(runs) // 2]


def x_of(due):
    return LEFT + due / 1000 / SECONDS * (RIGHT - LEFT)


def y_of(late):
    """Square roots, so that one millisecond can be seen beside a hundred."""
    part = (max(late, 0) / TICKS[-1]) ** 0.5
    return BOTTOM - min(part, 1) * (BOTTOM - TOP)


def dots(points, colour):
    path = "".join(f"M{x_of(due):.1f} {y_of(late):.1f}h0" for due, late in points)
    return f'<path d="{path}" stroke="{colour}" stroke-width="3" stroke-linecap="round"/>\n'


def text(x, y, words, anchor="middle"):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}">{words}</text>\n'


def grid():
    lines = ""
    for tick in TICKS:
        lines += f'<path d="M{LEFT} {y_of(tick):.1f}H{RIGHT}" stroke="#ddd"/>\n'
        lines += text(LEFT - 6, y_of(tick) + 4, tick, "end")
    for second in range(0, SECONDS + 1, 5):
        lines += text(x_of(1000 * second), BOTTOM + 16, f"{second} s")
    return lines


def panel(name, runs):
    frames = typical(runs)["frames"]
    return (grid() + text(LEFT, 18, name, "start") +
            text(RIGHT, 18, "ms late when handed on; pale: when on the screen", "end") +
            dots([(due, shown - due) for due, _, shown in frames], PALE) +
            dots([(due, handed - due) for due, handed, _ in frames], COLOUR))


def plot(runs_by_clip):
    """Lateness of each frame over the clip's time, for the typical run of each clip."""
    panels = [f'<g transform="translate(0 {HEIGHT * i})">\n{panel(name, runs)}</g>\n'
              for i, (name, runs) in enumerate(runs_by_clip.items())]
    height = HEIGHT * len(panels)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
            'font-family="sans-serif" font-size="12" fill="#333">\n'
            f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>\n{"".join(panels)}</svg>\n')
