"""Started by bench/compare, at the top of the tree."""

import argparse
import re
import sys
import time

import player
import report
from peers import CLIPS, ROWS
from screen import Screen

STEPS = "steps"
PAGE = "docs/performance.md"
PLOT = "docs/performance.svg"


def parse():
    parser = argparse.ArgumentParser(prog="bench/compare")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--docs", action="store_true", help=f"write {PAGE} and {PLOT} as well")
    parser.add_argument("rows", nargs="*", metavar="ROW", help="a word of a row's name, or 'steps'")
    arguments = parser.parse_args()
    if arguments.docs and arguments.rows:
        parser.error("--docs is for all rows")
    return arguments


def chosen(words):
    """Name, program and clip of each row that is asked for."""
    for name, run, plays in ROWS:
        for suffix, folder in CLIPS.items() if plays else [("", None)]:
            if not words or any(word in name for word in words):
                yield name + suffix, run, folder


def measured(screen, run, folder):
    before = screen.cpu()
    figures = run(screen, folder)
    return {"display CPU s": screen.cpu() - before, **figures}


def run_all(arguments):
    """All rows, round after round, so that a disturbance of the machine meets them all."""
    results, steps = {}, []
    with Screen() as screen:
        for turn in range(1, arguments.rounds + 1):
            for name, run, folder in chosen(arguments.rows):
                tell(turn, name)
                results.setdefault(name, []).append(measured(screen, run, folder))
            if not arguments.rows or STEPS in arguments.rows:
                tell(turn, STEPS)
                steps.append(player.steps(screen))
    return results, steps


def tell(turn, name):
    print(f"{time.strftime('%T')} round {turn}: {name}", file=sys.stderr)


def write_docs(figures):
    with open(PAGE) as page:
        old = page.read()
    with open(PAGE, "w") as page:
        page.write(re.sub(r"(<!-- figures -->\n).*(<!-- end -->)",
                          lambda marks: marks[1] + figures + marks[2], old, flags=re.DOTALL))


def write_plot(results, path):
    paces = {name: runs for name, runs in results.items() if "frames" in runs[0]}
    if paces:
        with open(path, "w") as file:
            file.write(report.plot(paces))


def main():
    arguments = parse()
    figures = report.machine() + "\n"
    results, steps = run_all(arguments)
    if results:
        figures += report.comparison(results) + "\n"
    if steps:
        figures += report.steps(steps) + "\n"
    print(figures)
    write_plot(results, PLOT if arguments.docs else player.BUILD + "performance.svg")
    if arguments.docs:
        write_docs(figures + "![How late each frame is](performance.svg)\n")


main()
