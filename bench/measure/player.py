"""This player, worked by its keys. The list stands on its first row when it appears."""

import os
import time

from process import Process
from screen import BLACK, RED, SECOND_ROW, YELLOW, near

BUILD = "build/bench/"
CONFIG = BUILD + "device/home/kvr/1_morvastine/cfg_system.txt"
SHORT_SECONDS = 2  # a clip of the folder `short`
SETTLE = 2  # s that the list stands before somebody presses Play
IDLE = 8  # s; the bar hides after 10, and would take the next key


def ms(seconds):
    return 1000 * seconds


class Player(Process):
    def __init__(self, screen, folder):
        with open(CONFIG, "w") as config:
            config.write(os.path.abspath(folder))
        screen.wait_for(BLACK)
        super().__init__(BUILD + "quadplayer")
        self.screen = screen
        self.listed = screen.wait(lambda colour: not near(colour, BLACK))
        self.list_colour = screen.colour()

    def play(self, rows=1):
        """Marks the first rows and presses Play: s until the first picture."""
        self.screen.press("Return", *["Down", "Return"] * (rows - 1), "Left")
        time.sleep(0.1)
        pressed = self.screen.press("Return")
        return self.screen.wait_for(YELLOW) - pressed

    def wait_list(self):
        return self.screen.wait_for(self.list_colour, limit=120, every=0.01)

    def leave(self):
        self.screen.press("Right", "Return")
        return self.end()

    def key_answers(self):
        """s until the list shows each of a number of keys, from its first moment on."""
        answers = []
        for key in ["Down", "Up"] * 50:
            before = self.screen.colour(SECOND_ROW)
            pressed = self.screen.press(key)
            answers.append(self.screen.wait(lambda colour: colour != before, SECOND_ROW) - pressed)
            time.sleep(0.01)
        return answers

    def changes(self):
        """Pairs of time and picture, from now on until the list is back."""
        seen = [(time.monotonic(), "yellow")]
        while seen[-1][1] != "list":
            self.screen.wait(lambda colour: self.name(colour) != seen[-1][1])
            seen.append((time.monotonic(), self.name(self.screen.colour())))
        return seen

    def name(self, colour):
        for name, wanted in ("list", self.list_colour), ("yellow", YELLOW), ("red", RED):
            if near(colour, wanted):
                return name
        return "none"


def whole(screen, folder):
    player = Player(screen, folder)
    time.sleep(SETTLE)
    first = player.play()
    player.wait_list()
    return {"list ms": ms(player.listed - player.started), "first ms": ms(first), **player.leave()}


def steps(screen):
    """The figures that the whole run does not show, by the name of the step."""
    result = {}
    player = Player(screen, BUILD + "clips/short")
    answers = player.key_answers()
    result["key in the list, slowest of 100 from the start on, ms"] = ms(max(answers))
    result["CPU while the list stands, % of a core"] = player.load(IDLE)
    result["memory before the first Play, MB"] = player.memory()
    result["first Play to first picture, ms"] = ms(player.play())
    player.wait_list()
    time.sleep(SETTLE)
    result["further Play to first picture, ms"] = ms(player.play())
    player.wait_list()
    result["memory on the list after two clips, MB"] = player.memory("VmRSS")
    player.play(rows=3)
    result.update(between_files(player.changes()))
    player.play()
    screen.press("Return")  # the bar stands on its pause button
    time.sleep(0.5)
    result["CPU while paused, % of a core"] = player.load(IDLE)
    pressed = screen.press("Left", "Return")
    result["Back to the list, ms"] = ms(player.wait_list() - pressed)
    player.leave()
    result["CPU of naps of 10 ms and nothing else, % of a core"] = naps()
    return result


def naps():
    process = Process(BUILD + "bench/bench_surface", "nap")
    time.sleep(SETTLE)
    load = process.load(IDLE)
    process.end()
    return load


def between_files(seen):
    """From pairs of time and picture."""
    gone = [after - at for (at, what), (after, then) in zip(seen, seen[1:])
            if what == "none" and then != "list"]
    pictures = [(at, what) for at, what in seen if what in ("yellow", "red")]
    starts = pictures[:1] + [new for old, new in zip(pictures, pictures[1:]) if new[1] != old[1]]
    late = [new[0] - old[0] - SHORT_SECONDS for old, new in zip(starts, starts[1:])]
    return {"next file: end of the last one to first picture, ms": ms(max(late)),
            "longest without a picture between files, ms": ms(max(gone, default=0))}
