#!/usr/bin/env python3
"""odd-folders.py BUILD_DIR [COUNT [SEED]]: enters, marks and plays by keys what is in COUNT (10) folders of
random content; SEED (1) sets it: names of any byte, links to anything, loops, FIFOs, sockets, devices,
paths longer than PATH_MAX. The player must answer each key, and no name may put a control character or
a line of its own into the log. Runs on the current display and needs ffmpeg; makes devices as root only.
"""
import os
import random
import re
import shutil
import socket
import stat
import sys
import time

import clips
import session

ANSWER = 10  # seconds
BACK = (242, 667)  # the list's button, which does nothing at the root
ENDINGS = [b".mp4"] * 4 + [b".avi", b".MP4", b".mp4.avi", b"."] + [b""] * 4
PIECES = [b"\n", b"\n" * 100, b"\nFORGED ", b"\r", b"\t", b"\x1b[31m", b"\x1b]0;x\x07", b"\x7f", b"%s%n", b"#",
          b"?", b"\\", b'"', b"'", b" ", b"-", b"&amp;<b>", b"\xff", b"\xc2\x85", b"\xc3", b"\xed\xa0\x80",
          "\u202e\u2066\u200f\u2028\u2029\ufeff\ufdd0".encode(), "🎬漢字e\u0301".encode(), "﷽".encode() * 20]
RAW = re.compile(rb"[\x00-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]|^FORGED", re.M)


class Folder:
    """One odd folder."""

    def __init__(self, path, clip, chance):
        self.path, self.clip, self.chance = path, clip, chance
        os.mkdir(path)
        self.entries = []
        kinds = [self.file, self.nonsense, self.empty, self.huge, self.folder, self.folder, self.link, self.link,
                 self.link, self.fifo, self.socket, self.device]
        os.mkfifo(os.path.join(path, b".fifo"))
        for _ in range(chance.choice((0, 1, 2, 10, 30))):
            path = os.path.join(self.path, self.name())
            try:
                chance.choice(kinds)(path)
                self.entries.append(path)
                if chance.random() < 0.1 and not os.path.islink(path):
                    os.chmod(path, 0)
            except OSError:
                pass  # no such name here, or it exists
        if chance.random() < 0.1:
            self.deep()

    def name(self):
        chance = self.chance
        pieces = [chance.choice(PIECES) if chance.random() < 0.5 else bytes(chance.choices(range(1, 256), k=3))
                  for _ in range(chance.randrange(1, 5))]
        if chance.random() < 0.3:
            pieces = [b"plain%d" % chance.randrange(99)]
        name = b"".join(pieces).replace(b"/", b"") * chance.choice((1, 1, 1, 99))
        ending = chance.choice(ENDINGS)
        return name[:255 - len(ending)] + ending

    def file(self, path):
        self.write(path, self.clip)

    def nonsense(self, path):
        self.write(path, self.chance.randbytes(5000))

    def write(self, path, content):
        with open(path, "xb") as file:
            file.write(content)

    def empty(self, path):
        os.mknod(path)

    def huge(self, path):
        os.mknod(path)
        os.truncate(path, 1 << 40)

    def folder(self, path):
        os.mkdir(path)
        self.file(os.path.join(path, b"in.mp4"))

    def link(self, path):
        others = [b".", b"..", b"nowhere", b".fifo", b".fifo", b".fifo", b"/dev/zero", b"/dev/stdin",
                  b"/proc/self/mem", os.path.basename(path)]
        os.symlink(self.chance.choice(others + self.entries), path)

    def fifo(self, path):
        os.mkfifo(path)

    def socket(self, path):
        with socket.socket(socket.AF_UNIX) as server:
            server.bind(path)

    def device(self, path):
        os.mknod(path, stat.S_IFCHR, os.makedev(1, self.chance.choice((3, 5, 7))))

    def deep(self):
        """Makes a path longer than PATH_MAX, in relative steps."""
        at = os.open(self.path, os.O_RDONLY)
        for _ in range(25):
            os.mkdir("0" * 200, dir_fd=at)
            below = os.open("0" * 200, os.O_RDONLY, dir_fd=at)
            os.close(at)
            at = below
        os.close(at)

    def remove(self):
        for entry in self.entries:
            if os.path.isdir(entry) and not os.path.islink(entry):
                os.chmod(entry, 0o700)
        shutil.rmtree(self.path)

    def turn(self):
        """The files that the list shows become something that blocks."""
        for path in self.entries:
            if os.path.isfile(path):
                os.unlink(path)
                os.mkfifo(path)


class Walk:
    """Starts and ends at the root, whose only row is the folder."""

    def __init__(self, run, chance):
        self.run, self.chance, self.depth = run, chance, 0

    def press(self, *keys, answer):
        """Waits until the log has one more line with `answer`."""
        before = self.run.text().count(answer)
        self.run.act(*[word for key in keys for word in ("key", key)])
        session.until(lambda: self.run.text().count(answer) > before or not self.run.runs(),
                      f"the answer to {' '.join(keys)}", ANSWER)
        if not self.run.runs():
            raise session.Fault("the player ended")

    def enter(self, *keys):
        self.press(*keys, "Return", answer="-------ItemCount")
        self.depth += 1

    def rows(self):
        text = self.run.text()
        return [int(re.findall(f"-------{what} cout ([0-9]+)", text)[-1]) for what in ("file", "video")]

    def play(self, folders, videos, folder):
        first = ["Down"] * folders
        marks = [key for _ in range(min(videos, 12))
                 for key in ("Return", "Down")[self.chance.random() < 0.3:]]
        if self.chance.random() < 0.3:
            folder.turn()
        left = [] if marks.count("Down") == videos else ["Left"]  # the last Down led to Play
        self.press(*first, *marks, *left, "Return", answer=session.PLAYS)
        time.sleep(self.chance.uniform(0.2, 1.5))
        for _ in range(8):
            if not self.run.plays():
                return
            self.run.act("key", "Left", "key", "Return")
            time.sleep(1)
        raise session.Fault("the list cannot be reached")

    def go(self, folder):
        self.run.act("mousemove", *BACK, "click", 1)  # wherever the focus was
        self.enter("Right", "Right")  # over Exit to the first row
        for _ in range(30):
            folders, videos = self.rows()
            if videos and self.chance.random() < 0.5:
                self.play(folders, videos, folder)
                break
            if not folders:
                break
            self.enter(*["Down"] * self.chance.randrange(min(folders, 9)))
        while self.depth:
            self.press("BackSpace", answer="path-----  ")
            self.depth -= 1


def road(run, count, seed):
    clip = run.work / "clip.mp4"
    clips.make(clip, "testsrc2=size=320x240", 8)
    path = os.fsencode(run.folder / "odd")
    os.mkdir(path)  # the list shows its row from the start
    run.start()
    run.wait_for_list()
    os.rmdir(path)
    for number in range(count):
        chance = random.Random(f"{seed} {number}")
        folder = Folder(path, clip.read_bytes(), chance)
        try:
            Walk(run, chance).go(folder)
        except session.Fault as fault:
            raise session.Fault(f"folder {number} of seed {seed}: {fault}") from fault
        raw = RAW.search((run.work / "player.log").read_bytes())
        if raw:
            raise session.Fault(f"folder {number} of seed {seed}: {raw[0]} in the log")
        folder.remove()
    run.interrupt()
    run.finish()
    scans, played = (run.text().count(line) for line in ("-------ItemCount", session.PLAYS))
    return f"{count} folders, seed {seed}: {scans} scans, {played} times played, each key answered"


def main(build, count=10, seed=1):
    return session.run(session.Session(build), lambda run: road(run, int(count), int(seed)))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
