#!/usr/bin/env python3
"""damaged-clips.py BUILD_DIR [COUNT [SEED]]: plays COUNT (40) randomly damaged clips, numbers SEED (1)
and up. Fails if one hangs the player, keeps it from stopping within 200 ms, or makes a sanitizer report.
Uses the current display; build preset asan with -DQP_BENCH=ON.
"""
import pathlib
import subprocess
import sys
import tempfile

import clips
import session  # tells the leak checker of the libraries' own leaks

BATCH = 200  # clips on the disk at a time


def main(build, count=40, seed=1):
    failed = False
    with tempfile.TemporaryDirectory() as work:
        whole = clips.make_whole(pathlib.Path(work))
    for first in range(int(seed), int(seed) + int(count), BATCH):
        with tempfile.TemporaryDirectory() as batch:
            for number in range(first, min(first + BATCH, int(seed) + int(count))):
                kind = list(whole)[number % len(whole)]
                name = f"{number:06}-{kind}"
                (pathlib.Path(batch) / name).write_bytes(clips.damaged(name, whole[kind]))
            command = [f"{build}/bench/stress_player", "damaged", batch, str(first)]
            failed |= subprocess.run(command).returncode != 0
    return failed


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
