#!/usr/bin/env python3
"""monkey.py BUILD_DIR [MINUTES [SEED]]: presses random keys and taps, 1 to 200 ms apart, over a folder of
good, damaged and vanishing clips, for MINUTES (1), from SEED (1) on. The two key modes take turns. After
each burst of 500, it must reach the list and play a good clip, or the player hangs. It uses keys, and taps
where two keys are not enough. Uses the current display and a build of preset asan; needs ffmpeg.
"""
import pathlib
import random
import sys
import time

import clips
import session

BURST = 500
CHUNK = 50  # the folder changes, and a player that left by Exit starts again, after so many
KEYS = ["Up", "Down", "Left", "Right", "Return", "space", "BackSpace", "Escape", "Tab", "Home",
        *"0123456789", "Return", "Right", "Down", "1", "2", "1", "2"]
GOOD = "good.mp4"
CENTRE = "200x200+540+160"  # of a picture, clear of the bar and the list's clock
PLAY, BACK, BAR_BACK = (122, 667), (242, 667), (255, 686)  # buttons


class Monkey:
    def __init__(self, run, chance, two_keys):
        self.run, self.chance, self.two_keys = run, chance, two_keys
        self.starts = 0
        with_files = run.work / "clips"
        with_files.mkdir(exist_ok=True)
        self.whole = clips.make_whole(with_files)
        clips.make(run.folder / GOOD, "testsrc2=size=320x240", 3)
        (run.folder / "empty").mkdir(exist_ok=True)

    def change_folder(self):
        for name in self.chance.sample(range(12), 4):
            kind = list(self.whole)[name % len(self.whole)]
            folder = self.run.folder / ("sub" if name > 8 else "")
            folder.mkdir(exist_ok=True)
            file = folder / f"clip{name}-{kind}"
            if file.exists():
                file.unlink()
            elif name % 2:
                file.write_bytes(self.whole[kind])
            else:
                file.write_bytes(clips.damaged(str(self.chance.random()), self.whole[kind]))

    def start_if_gone(self):
        if self.run.player and self.run.runs():
            return
        if self.run.player:
            self.run.finish()
        self.run.start(*["--twokeymode=on"] * self.two_keys)
        self.run.wait_for_list()
        self.starts += 1

    def burst(self):
        for _ in range(BURST // CHUNK):
            self.change_folder()
            self.start_if_gone()
            words = []
            for _ in range(CHUNK):
                if self.chance.random() < 0.25:
                    words += ["mousemove", self.chance.randrange(1280), self.chance.randrange(720),
                              "click", 1]
                else:
                    words += ["key", self.chance.choice(KEYS)]
                words += ["sleep", self.chance.uniform(0.001, 0.2)]
            self.run.act(*words)
        self.start_if_gone()

    def leave_player(self):
        """The focus may be on any button, or on the bar, which ignores keys until it hides."""
        for _ in range(3):
            for _ in range(12):
                if not self.run.plays():
                    return
                if self.two_keys:
                    self.run.act("key", "q", "mousemove", *BAR_BACK, "click", 1)
                else:
                    self.run.act("key", "Right", "key", "Return")
                time.sleep(1.5)  # or the next keys would go to the list, whose right end is Exit
            time.sleep(11)
        raise session.Fault("the list cannot be reached")

    def reach_list(self):
        """The focus stands on the first row of the device's folder then."""
        self.leave_player()
        for _ in range(2):
            self.run.act(*["mousemove", *BACK, "click", 1] if self.two_keys else ["key", "BackSpace"])
        time.sleep(1)
        self.run.act("mousemove", *PLAY, "click", 1)
        session.until(self.run.plays, "the player after a tap on Play")
        self.leave_player()
        session.until(lambda: GOOD in self.run.rows()[1], "the device's folder")

    def show_picture(self):
        folders, videos = self.run.rows()
        down, ok = ("1", "2") if self.two_keys else ("Down", "Return")
        keys = [down] * (folders + videos.index(GOOD)) + [ok]
        keys += [down] * (len(videos) - videos.index(GOOD)) if self.two_keys else ["Left"]
        for key in [*keys, ok]:
            self.run.act("key", key, "sleep", 0.1)
        session.until(self.run.plays, "the player after Play")
        seen = [session.screen(CENTRE)]
        session.until(lambda: len(set(seen)) > 3 or seen.append(session.screen(CENTRE)), "a picture")
        self.leave_player()

    def shows_good_clip(self):
        """False if the last keys of the burst led to Exit."""
        try:
            self.reach_list()
            self.show_picture()
        except session.Fault:
            if self.run.runs():
                raise
            return False
        return True

    def work(self, seconds):
        end = time.monotonic() + seconds
        bursts = 0
        while time.monotonic() < end:
            self.burst()
            while not self.shows_good_clip():
                self.start_if_gone()
            bursts += 1
        self.run.interrupt()
        self.run.finish()
        return f"{bursts} bursts in {self.starts} starts"


def road(run, minutes, seed):
    results = []
    for two_keys in (False, True):
        monkey = Monkey(run, random.Random(seed), two_keys)
        results.append(monkey.work(minutes * 30) + (" with two keys" if two_keys else ""))
        run.player = None
    return f"{minutes:g} minutes, seed {seed}: {', '.join(results)}"


def main(build, minutes=1, seed=1):
    return session.run(session.Session(build), lambda run: road(run, float(minutes), int(seed)))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
