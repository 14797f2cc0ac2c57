#!/usr/bin/env python3
"""changing-folder.py BUILD_DIR [COUNT [SEED]]: plays a clip by keys COUNT (10) times while another thread
adds, removes, moves and replaces the files and folders that the list shows; SEED (1) sets the order. Each
clip has the colour of its name: another colour on the screen is a wrong file, black or grey is no
picture. Runs on the current display and needs ffmpeg.
"""
import collections
import os
import random
import shutil
import sys
import threading
import time

import clips
import session

COLOURS = {"red": (255, 0, 0), "lime": (0, 255, 0), "blue": (0, 0, 255), "yellow": (255, 255, 0)}
NOTHING = {"black": (0, 0, 0), "grey": (128, 128, 128)}
SPOT = "1x1+320+160"


class Changes(threading.Thread):
    """Changes the files; a name keeps its colour."""

    def __init__(self, run, chance):
        super().__init__(daemon=True)
        self.folder, self.chance, self.going = run.folder, chance, True
        self.masters = {}
        for colour in COLOURS:
            self.masters[colour] = [run.work / f"{colour}-{seconds}.mp4" for seconds in (1, 8)]
            for file, seconds in zip(self.masters[colour], (1, 8)):
                clips.make(file, f"color=c={colour}:size=320x240", seconds)

    def file(self):
        colour = self.chance.choice(list(COLOURS))
        where = self.chance.choice((self.folder, self.folder, self.folder / "sub"))
        return colour, where / f"{colour}{self.chance.randrange(4)}.mp4"

    def put(self):
        colour, file = self.file()
        file.parent.mkdir(exist_ok=True)
        shutil.copyfile(self.chance.choice(self.masters[colour]), f"{file}.part")
        os.replace(f"{file}.part", file)

    def remove(self):
        self.file()[1].unlink()

    def cut_short(self):
        file = self.file()[1]
        os.truncate(file, file.stat().st_size // 2)

    def rename(self):
        colour, file = self.file()
        file.rename(self.folder / f"{colour}{self.chance.randrange(4)}.mp4")

    def turn_into_folder(self):
        file = self.file()[1]
        file.unlink()
        file.mkdir()
        time.sleep(0.05)
        file.rmdir()

    def link_to_nothing(self):
        file = self.file()[1]
        file.unlink()
        file.symlink_to("nowhere.mp4")

    def remove_folder(self):
        shutil.rmtree(self.folder / "sub")

    def run(self):
        ways = [self.put] * 5 + [self.remove, self.cut_short, self.rename, self.turn_into_folder,
                                 self.link_to_nothing, self.remove_folder]
        while self.going:
            try:
                self.chance.choice(ways)()
            except OSError:
                pass  # there is no file of that name now
            time.sleep(self.chance.uniform(0, 0.05))


def colour_shown():
    pixel = session.screen(SPOT)
    known = {**COLOURS, **NOTHING}
    return min(known, key=lambda name: sum((a - b) ** 2 for a, b in zip(known[name], pixel)))


def watch(run, name, seconds, seen):
    """Looks at the screen for that long, or until the clip ends."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        shown = colour_shown()
        if not run.plays():
            return
        if shown in COLOURS and not name.startswith(shown):
            raise session.Fault(f"{shown} is shown for {name}")
        seen[shown] += 1


def play_one(run, chance, seen):
    """Starts at the first row. Sometimes enters the first folder, which may be gone, and returns."""
    folders, videos = run.rows()
    name = "nothing"
    if folders and chance.random() < 0.3:
        keys = ["Return", "BackSpace", "Left", "Return"]
    elif videos:
        row = chance.randrange(len(videos))
        name = videos[row]
        keys = ["Down"] * (folders + row) + ["Return", "Left", "Return"]
    else:
        keys = ["Up", "Up", "Return"]  # from Exit
    for key in keys:
        run.act("key", key, "sleep", 0.1)
    session.until(run.plays, "the player")
    watch(run, name, chance.uniform(0.5, 2), seen)


def go_back(run):
    """Left leads from the first button of the bar to the last one. The clip may end before that."""
    for _ in range(8):
        if not run.plays():
            return
        run.act("key", "Left", "key", "Return")
        time.sleep(1)
    raise session.Fault("the list cannot be reached")


def road(run, count, seed):
    chance = random.Random(seed)
    changes = Changes(run, random.Random(seed))
    for _ in range(20):
        changes.put()
    run.start()
    run.wait_for_list()
    changes.start()
    seen = collections.Counter()
    for _ in range(count):
        play_one(run, chance, seen)
        go_back(run)
    changes.going = False
    changes.join()
    run.interrupt()
    run.finish()
    looks = ", ".join(f"{number} {colour}" for colour, number in sorted(seen.items()))
    if not set(seen) & set(COLOURS):
        raise session.Fault("nothing has been shown at all")
    return f"{count} times played, seed {seed}: seen {looks}, and never a wrong one"


def main(build, count=10, seed=1):
    return session.run(session.Session(build), lambda run: road(run, int(count), int(seed)))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
