"""The program as a process on the current display, driven by keys and taps, and a hub. Needs a build with
a DEVICE_ROOT, and writes to it."""
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time

LIMIT = 30  # seconds, for any wait: a sanitizer and a busy machine are slow
MESSAGE = "received type=1 tag=1 value=8 tag=2 value=1"
# GStreamer-Base complains so when it reads some of the damaged clips.
REPORTS = re.compile("QObject::(dis)?connect:|(?<!GStreamer-Base)-CRITICAL \\*\\*|AddressSanitizer|"
                     "LeakSanitizer|runtime error:")
PLAYS = "slotPagePlayerListToPagePlayer()"
LISTS = "slotPagePlayerToPagePlayerList()"

TOP = pathlib.Path(__file__).resolve().parents[2]
os.environ.setdefault("LSAN_OPTIONS", f"suppressions={TOP}/tests/sanitizers/lsan.supp:"
                                      "print_suppressions=0")


class Fault(Exception):
    """The program did something that it must not do."""


def until(condition, what, limit=LIMIT):
    end = time.monotonic() + limit
    while not condition():
        if time.monotonic() > end:
            raise Fault(f"waited in vain for {what}")
        time.sleep(0.02)


def screen(area):
    """The pixels of WIDTHxHEIGHT+X+Y, three bytes each."""
    return subprocess.run(["import", "-window", "root", "-crop", area, "-depth", "8", "rgb:-"],
                          stdout=subprocess.PIPE, check=True).stdout


class Session:
    """A device with a folder of recordings, and the runs of the program on it."""

    def __init__(self, build):
        self.build = pathlib.Path(build).resolve()
        self._work = tempfile.TemporaryDirectory()
        self.work = pathlib.Path(self._work.name)
        self.folder = self.work / "video"
        self.folder.mkdir()
        os.environ["XDG_RUNTIME_DIR"] = str(self.work)
        # Mesa's cache thread runs at the lowest priority, and the exit waits for it: too long on a busy
        # machine.
        os.environ["MESA_SHADER_CACHE_DISABLE"] = "true"
        cache = (self.build / "CMakeCache.txt").read_text()
        root = re.search("^DEVICE_ROOT:STRING=(.+)$", cache, re.M)[1]
        config = pathlib.Path(root + "/home/kvr/1_morvastine/cfg_system.txt")
        config.parent.mkdir(parents=True, exist_ok=True)
        config.write_text(f"{self.folder}\n")
        self.player = None
        self.hub = None

    def start(self, *arguments, before=()):
        """`before` is a command that executes the one after it."""
        self.hub = self._run("hub.log", "quadplayer-hub", "--no-prompt")
        until(lambda: "listening" in self.text("hub.log"), "the hub")
        self.player = self._run("player.log", "quadplayer", *arguments, before=before)

    def _run(self, log, program, *arguments, before=()):
        with open(self.work / log, "wb") as output:
            return subprocess.Popen([*before, self.build / program, *arguments],
                                    stdout=output, stderr=output)

    def text(self, log="player.log"):
        return (self.work / log).read_text(errors="replace")

    def has_keys(self):
        focus = subprocess.run(["xdotool", "getwindowfocus", "getwindowpid"], text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return focus.stdout.strip() == str(self.player.pid)

    def wait_for_list(self):
        until(self.has_keys, "the list")

    @staticmethod
    def act(*words):
        """Words of xdotool: key NAME, mousemove X Y click 1, sleep SECONDS."""
        subprocess.run(["xdotool", *map(str, words)], check=True)

    def runs(self):
        return self.player.poll() is None

    def plays(self):
        text = self.text()
        return text.rfind(PLAYS) > text.rfind(LISTS)

    def rows(self):
        """The number of folders and the names of the videos in the list."""
        until(lambda: "-------ItemCount" in self.text().rpartition(LISTS)[2], "the scan")
        scan = self.text().split("-------file cout")[-1]
        videos = re.findall('listwigdetsort.item= "(.*)"', scan)
        return int(scan.split()[0]), sorted(videos)

    def finish(self, limit=LIMIT):
        """Waits for the program to exit by itself, and checks how it did."""
        try:
            status = self.player.wait(limit)
            self.hub.terminate()
            self.hub.wait(LIMIT)
        except subprocess.TimeoutExpired as late:
            raise Fault(f"has not ended after {limit} s") from late
        if status != 0:
            raise Fault(f"ended with status {status}")
        report = REPORTS.search(self.text())
        if report:
            raise Fault(f"reported: {report[0]}")
        received = re.findall("^received.*", self.text("hub.log"), re.M)
        if received != [MESSAGE]:
            raise Fault(f"the message of the exit came {len(received)} times")

    def interrupt(self):
        self.player.send_signal(signal.SIGINT)

    def end(self):
        """Ends what still runs, and keeps the logs of a fault."""
        for process in filter(None, (self.player, self.hub)):
            process.kill()
            process.wait()

    def keep_logs(self):
        kept = tempfile.mkdtemp(prefix="quadplayer-")
        for log in self.work.glob("*.log"):
            log.rename(f"{kept}/{log.name}")
        return kept


def run(session, road):
    """Runs `road` and prints the line that it returns; 0 if there was no fault."""
    try:
        print(road(session), flush=True)
        return 0
    except Fault as fault:
        print(f"FAULT: {fault}; logs in {session.keep_logs()}", flush=True)
        return 1
    finally:
        session.end()
