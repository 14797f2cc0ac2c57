#!/usr/bin/python3 -B
"""checks.py [ARCHITECTURE]: boots a board with the player's package and works it by keys and taps.
Each check stands alone: it begins on the list, with nothing marked. All of them share one boot.
build/board/ARCHITECTURE/seen keeps pictures, a film and the console's output."""
import argparse
import json
import re
import shutil
import sys
import tempfile
import time
from pathlib import Path

from PIL import Image, ImageChops

TOP = Path(__file__).resolve().parents[2]
sys.path.append(str(TOP / "tools"))

import board_system
from board import Board, Failure, crop, mask, share
from board_system import run

SKY = (99, 192, 249)       # behind the list
CURRENT = (255, 233, 231)  # the current row
MARK = (11, 122, 75)
BAR = (79, 101, 118)
FRAME = (255, 194, 26)     # of the focused button
IDLE = (18, 18, 28)
BLACK, WHITE = (0, 0, 0), (255, 255, 255)
TIME_WIDTH = 140  # px, at least
ICON = 38  # px
VIEWS = {"R": (208, 32, 32), "G": (32, 208, 32), "B": (32, 32, 208), "Y": (208, 208, 32)}
QUARTERS = [(.1, .1, .4, .35), (.6, .1, .9, .35), (.1, .55, .4, .75), (.6, .55, .9, .75)]
SHORT, LONG, RAW, BROKEN, TEN_SECONDS, CHANGING = range(6)  # the rows of the list
PLAY, BACK, FIRST_ROW, QUARTER_2 = (122, -47), (264, -34), (300, 66), (-100, 100)  # places, px

CONFIG = "/home/kvr/1_morvastine/cfg_system.txt"
MARGINS = "/home/kvr/1_morvastine/cfg_position.txt"
STICK = "/home/kvr/video/stick"
FILLER = "/home/filler"
MP4 = "x264enc key-int-max=10 ! mp4mux"
JPEG = "jpegenc quality=100 ! avimux"
COLOURS = [(f"{way}.mp4", f"format=I420,colorimetry={way}:0:0",
            "x264enc quantizer=4 pass=quant ! matroskamux")  # mp4mux loses the full range
           for way in ("1:3", "1:4", "2:3", "2:4")]
COLOURS += [(f"{way}.avi", f"format={way},colorimetry=1:4:0:0", JPEG) for way in ("I420", "Y42B")]
SLOW_DISK = 6400  # bytes a second: the first picture takes 20 s
HUB = "quadplayer-hub --no-prompt --socket /run/quadplayer-link/socket"
GIVE_UP_AFTER = 3  # failures
CHECKS = {"daily": [], "long": [], "device": []}


def check(function, kind="daily"):
    CHECKS[kind].append(function)
    return function


def check_of(kind):
    return lambda function: check(function, kind)


def expect(condition, what):
    if not condition:
        raise Failure("not so: " + what)


def looks(screen):
    """'list', 'idle', or the colours of the four quarters, each '?' if unknown: 'RGBY' is all views."""
    if share(screen, SKY, 8, (0, .95, 1, 1)) > .9:
        return "list"
    if share(screen, IDLE, 4, (.1, .1, .9, .4)) > .99:
        return "idle"
    return "".join(next((name for name, colour in VIEWS.items()
                         if share(screen, colour, 40, quarter) > .9), "?") for quarter in QUARTERS)


class Player:
    """The player on a board: looks at it and works it."""

    def __init__(self, board):
        self.board = board
        self.press, self.tap, self.shell, self.wait = (board.press, board.tap, board.shell,
                                                       board.wait)

    def see(self, what, seconds=None):
        self.wait(lambda: looks(self.board.screen()) == what, "to see " + what, seconds)
        self.board.picture(what)

    def highlight(self):
        """The upper edge of the current row in px, or 0 without one."""
        box = mask(self.board.screen(), CURRENT, 4, (.1, 0, .9, .85)).getbbox()
        return box[1] if box else 0

    def marked(self):
        return share(self.board.screen(), MARK, 40, (0, 0, .1, .85)) > 0

    def mark(self, row):
        """Marks a row, or enters the folder there, by keys. The focus is on the list."""
        self.press("left", "right", "right", "right", *["down"] * row, "ret")

    def start(self, row, what="RGBY"):
        """Plays one recording, by keys."""
        self.mark(row)
        self.press("left", "ret")
        self.see(what)

    def bar(self):
        return share(self.board.screen(), BAR, 8, (.45, .9, .55, .98)) > .4

    def tap_play(self, row):
        self.tap(300, 66 + 48 * row)
        self.wait(self.marked, "a check mark")
        self.tap(*PLAY)
        self.see("RGBY")

    def back(self):
        """From the player page to the list. Left of the first button is the last one, Back."""
        self.press("esc", "left", "ret")  # esc only shows the bar
        self.see("list")

    def restart(self, **settings):
        begin = time.monotonic()
        lines = ["QT_QPA_PLATFORM=eglfs", *(f"{name}={value}" for name, value in settings.items())]
        text = "\\n".join(lines)
        self.shell(f"printf '{text}\\n' > /etc/default/quadplayer; systemctl restart quadplayer")
        self.see("list")
        return time.monotonic() - begin

    def make_ready(self):
        """Makes sure that the list is there and nothing is marked."""
        if looks(self.board.screen()) != "list" or self.marked():
            self.restart()

    def recover(self):
        """After a failed check: restores what checks change, and restarts the player."""
        self.shell(f"rm -f {MARGINS} {FILLER}; umount -l /var {STICK}; rmdir {STICK}; "
                   f"tar -x --no-same-owner -f /dev/vdb -C / .{CONFIG}")
        self.restart()

    def connect_hub(self, who):
        """Starts a hub as this user in place of another, and returns the file of its output."""
        output = f"/tmp/hub-{who}"
        self.shell("pkill -INT quadplayer-hub && pidwait quadplayer-hub; "
                   f"setpriv --reuid {who} --regid {who} --init-groups {HUB} > {output} &")
        self.wait(lambda: "connected" in self.shell(f"cat {output}"), f"{who}'s hub connected")
        return output

    def devices(self):
        """How many input devices the player has opened."""
        return int(self.shell("ls -l /proc/$(pgrep -x quadplayer)/fd 2> /dev/null | grep -c input/event"))

    def console(self):
        return self.shell("cat /dev/vcs1")

    def property(self, name):
        return self.shell(f"systemctl show -P {name} quadplayer")

    def journal(self, command="cat", **how):
        """What the command prints of the journal since the player's last start."""
        start = self.property("InvocationID")
        return self.shell(f"journalctl -o cat _SYSTEMD_INVOCATION_ID={start} | {command}", **how)


def the_list_comes_up(player):
    """Comes first in every run, also with --only."""
    player.see("list", 3 * player.board.limit)
    print(player.shell("timeout 20 systemd-analyze || true"))


@check
def a_key_moves_the_highlight(player):
    before = player.wait(player.highlight, "a current row")
    player.press("down")
    player.wait(lambda: player.highlight() not in (0, before), "another row")


@check
def keys_play_choose_views_and_go_back(player):
    player.start(LONG)
    for key, views in (("1", "RRRR"), ("4", "YYYY"), ("0", "RGBY")):
        player.press(key)
        player.see(views)
    player.back()


@check
def taps_choose_views_and_go_back(player):
    player.tap_play(LONG)
    player.wait(lambda: not player.bar(), "the bar hiding itself")
    player.tap(*QUARTER_2)  # shows the bar until 10 s after the last tap
    player.wait(player.bar, "the bar")
    for views in "GGGG", "RGBY":
        player.tap(*QUARTER_2)
        player.see(views)
    player.tap(*BACK)
    player.see("list")


@check
def two_keys_alone_play_to_the_end(player):
    player.restart(QUADPLAYER_OPTIONS="--twokeymode=on")
    player.press("2", *["1"] * (CHANGING + 1), "2")  # mark row 0, walk past the last row to Play
    player.see("RGBY")
    player.see("list")
    player.restart()


@check
def devices_work_that_are_plugged_in_later_and_again(player):
    fixed = player.devices()
    for kind in ("usb-kbd", "usb-tablet") * 2:
        player.board.qmp("device_add", driver=kind, id=kind)
        player.wait(lambda: player.devices() > fixed, "the player opening the device")
        before = player.highlight(), player.marked()
        if kind == "usb-kbd":
            player.press("down")
        else:
            player.tap(*FIRST_ROW)
        player.wait(lambda: (player.highlight(), player.marked()) != before, "the list reacting")
        player.board.qmp("device_del", id=kind)
        player.wait(lambda: player.devices() == fixed, "the player closing the device")


@check
def keys_reach_no_console_behind_the_picture(player):
    player.wait(lambda: "login:" in player.console(), "a prompt on the console")
    player.press("q", "u", "x")
    a_key_moves_the_highlight(player)
    expect("qux" not in player.console(), "the prompt hears nothing")


@check
def Qt_does_not_warn_of_its_runtime_folder(player):
    player.journal("grep 'runtime directory'", fails=True)


@check
def killed_it_comes_back(player):
    for signal in "KILL", "TERM":
        restarts, begin = int(player.property("NRestarts")), time.monotonic()
        player.shell(f"systemctl kill -s {signal} quadplayer")
        player.wait(lambda: looks(player.board.screen()) != "list", "no list")
        player.see("list")
        print(f"SIG{signal} to list: {time.monotonic() - begin:.1f} s")
        expect(player.property("NRestarts") == str(restarts + 1), "one restart")


@check
def root_and_members_of_video_can_be_its_hub(player):
    player.shell("useradd -G video friend")
    player.shell(f"setpriv --reuid nobody --clear-groups {HUB}", fails=True)
    for who in ("friend", "root"):
        player.connect_hub(who)


@check
def stopped_while_it_plays_it_tells_the_hub_once(player):
    output = player.connect_hub("root")
    player.start(LONG)
    print("stopped:", player.shell("time -p systemctl stop quadplayer"))
    expect(player.property("Result") == "success", "the unit ended well")
    expect(player.property("ExecMainStatus") == "0", "status 0")
    expect(player.shell(f"grep -c received {output}") == "1", "one message")


@check
def stopped_it_gives_the_console_its_keys_back(player):
    player.shell("systemctl stop quadplayer")
    player.press("q", "u", "x")
    player.wait(lambda: "qux" in player.console(), "what was typed on the console")


@check
def after_Exit_it_stays_away(player):
    player.press("right", "ret")
    player.wait(lambda: player.property("ActiveState") == "inactive", "the unit inactive")
    expect(player.property("Result") == "success", "the unit ended well")
    expect(player.property("NRestarts") == "0", "no restart")
    player.wait(lambda: looks(player.board.screen()) != "list", "no list")


@check
def without_a_configuration_it_leaves_the_screen_alone(player):
    player.shell(f"mv {CONFIG} /tmp; systemctl restart quadplayer")
    player.wait(lambda: player.property("ConditionResult") == "no", "the start refused")
    player.shell("pgrep -x quadplayer", fails=True)
    player.shell(f"mv /tmp/cfg_system.txt {CONFIG}")


@check
def without_OpenGL_it_says_so_and_leaves(player):
    said = player.shell("systemctl stop quadplayer; timeout 60 quadplayer -platform linuxfb; [ $? = 69 ]")
    expect("OpenGL" in said.splitlines()[-1], "the last line tells why: " + said)


@check
def thousands_of_recordings_are_all_in_the_journal(player):
    many = 2000
    player.shell(f"mkdir /home/kvr/many; cd /home/kvr/many; seq -f %05g.mp4 {many} | xargs touch; cd /; "
                 f"sed -i.short s,video,many, {CONFIG}")
    print(f"list of {many}: {player.restart():.1f} s")
    player.wait(lambda: player.journal("grep -c listwigdetsort.item=") == str(2 * many), "all, twice")
    player.shell(f"mv {CONFIG}.short {CONFIG}")
    print(f"list of 6: {player.restart():.1f} s")


@check
def a_slow_disk_delays_the_picture_only(player):
    def throttle(rate):
        player.board.qmp("block_set_io_throttle", device="disk", bps=0, bps_rd=rate, bps_wr=0,
                         iops=0, iops_rd=0, iops_wr=0)

    player.start(RAW)  # loads all but the recording into memory
    player.see("list")
    player.shell("dd of=/home/kvr/video/2raw.avi oflag=nocache conv=notrunc,fdatasync count=0")
    throttle(SLOW_DISK)
    begin = time.monotonic()
    try:
        player.start(RAW)
        print(f"picture from a slow disk: {time.monotonic() - begin:.1f} s")
    finally:
        throttle(0)
    player.back()


@check_of("long")
def a_full_or_read_only_disk_keeps_no_recording_from_playing(player):
    free = "df -B 1 --output=avail / | tail -n 1"
    for spoil, mend in ((f"fallocate -l $({free}) {FILLER}; [ $({free}) = 0 ]", f"rm {FILLER}"),
                        ("mount --bind /var /var; mount -o remount,bind,ro /var", "umount /var")):
        player.shell(spoil)
        player.restart()
        player.start(SHORT)
        player.see("list")
        expect(player.property("NRestarts") == "0", "no restart")
        player.shell("systemctl stop quadplayer; " + mend)
        player.restart()


@check
def a_stick_may_be_pulled_while_it_plays(player):
    stick = make_stick(player.board.seen.parent / "stick")
    player.board.qmp("blockdev-add", **{"driver": "file", "node-name": "stick", "filename": str(stick)})

    def plug():
        player.board.qmp("device_add", driver="usb-storage", id="stick", drive="stick")
        player.wait(lambda: player.shell(f"mount -L stick {STICK} && echo here || true") == "here",
                    "the stick mounted")

    def pull():
        player.board.qmp("device_del", id="stick")

    player.shell(f"mkdir {STICK}")
    plug()
    player.restart()
    player.mark(0)  # enters the folder
    player.start(1)  # behind lost+found
    pull()
    player.see("idle")
    print(player.journal("grep 'CPlayer file'"))
    player.back()
    player.shell(f"umount -l {STICK}")
    plug()
    player.press("backspace", "right", "ret")  # from the empty list, which leaves the focus to Exit
    player.start(1)
    player.back()
    player.shell(f"umount {STICK}; rmdir {STICK}")
    pull()
    player.restart()


@check
def a_damaged_recording_leaves_the_page_grey(player):
    player.start(BROKEN, "idle")
    player.back()


@check
def everything_fits_on_small_and_large_screens(player, screens=(((800, 480), (20, 12, 44, 26)),
                                                                ((1920, 1080), (0, 0, 0, 0)))):
    for size, margins in screens:
        player.shell(f"echo EGL_MARGIN={','.join(map(str, margins))} > {MARGINS}; "
                     f"echo '{json.dumps(screen_mode(*size))}' > /board/mode")
        player.restart(QT_QPA_EGLFS_KMS_CONFIG="/board/mode")
        player.wait(lambda: box_without(player.board.screen(), SKY) ==
                    (40, 30, size[0] - 40, size[1] - 30), f"the list within {size}")
        player.start(LONG)
        player.press("esc")
        player.wait(player.bar, "the bar")
        player.board.picture("bar")
        expect_layout(player.board.screen(), size, margins)
    player.shell(f"rm {MARGINS}")
    player.restart()


def screen_mode(width, height):
    line, lines = width + 160, height + 30
    return {"outputs": [{"name": "Virtual1", "mode":
            f"{line * lines * 60 / 1e6} {width} {width + 16} {width + 48} {line} "
            f"{height} {height + 3} {height + 9} {lines} -hsync +vsync"}]}


def expect_layout(screen, size, margins):
    expect(screen.size == size, f"the screen has {size}, not {screen.size}")
    page = (margins[0], margins[1], size[0] - margins[2], size[1] - margins[3])
    expect(box_without(screen, BLACK) == page, f"the page is {page} of {size}")
    page = screen.crop(page)
    labels = mask(page, WHITE, 60, (0, .2, 1, .75)).getbbox()
    expect(abs(labels[0] + labels[2] - page.width) < 6, f"the labels are in the middle, {labels}")
    bar = page.crop((0, page.height - 57, page.width, page.height - 11))
    columns = ImageChops.invert(mask(bar, BAR)).resize((bar.width, 1), Image.BOX).getdata()
    row = "".join("x" if value else " " for value in columns)
    parts = [match.span() for match in re.finditer("x+( {1,7}x+)*", row)]
    expect(len(parts) == 6, f"the bar has five buttons and the time, {parts}")
    expect(parts[5][1] - parts[5][0] > TIME_WIDTH, f"the time is not cut off, {parts}")
    frame = mask(bar, FRAME).getbbox()
    expect(frame[3] - frame[1] > ICON, f"the first button is not cut off, {frame}")


def box_without(screen, colour):
    return ImageChops.invert(mask(screen, colour, 4)).getbbox()


sys.modules["checks"] = sys.modules[__name__]  # for those of other files, also when this is the program
import imported


@check
def no_sanitizer_has_reported_anything(player):
    player.shell("! journalctl -o cat | grep -E 'Sanitizer|runtime error'")


@check
def purged_it_takes_its_check_marks_along(player):
    player.shell("systemctl stop quadplayer; dpkg --purge quadplayer; ! ls -d /home/kvr/res")
    player.shell("dpkg -i /board/*.deb; systemctl --quiet enable quadplayer")


@check_of("long")
def it_comes_back_from_power_off(player):
    player.board.qmp("system_reset")
    begin = time.monotonic()
    player.wait(lambda: looks(player.board.screen()) != "list", "no list")
    player.see("list", 3 * player.board.limit)
    print(f"power-off to list: {time.monotonic() - begin:.1f} s")


@check_of("long")
def frozen_it_comes_back(player):
    drop_in = "/run/systemd/system/quadplayer.service.d"
    player.shell(f"mkdir {drop_in}; printf '[Service]\\nWatchdogSec=20\\nTimeoutAbortSec=5\\n' > {drop_in}/a.conf; "
                 "systemctl daemon-reload")
    player.restart()
    player.shell("systemctl kill -s STOP quadplayer")
    player.wait(lambda: player.property("NRestarts") == "1", "a restart")
    player.see("list")
    expect(player.shell("fgconsole") == "7", "its console stays in front from start to start")
    player.shell(f"rm -r {drop_in}; systemctl daemon-reload")
    player.restart()


@check_of("long")
def everything_fits_on_every_screen(player):
    everything_fits_on_small_and_large_screens(player, [
        (size, margins) for size in ((800, 480), (1024, 600), (1280, 720), (1920, 1080))
        for margins in ((0, 0, 0, 0), (20, 12, 44, 26))])


@check_of("device")
def the_program_of_the_device_plays_every_frame(player):
    player.start(TEN_SECONDS)
    for key, views in (("2", "GGGG"), ("0", "RGBY")):
        player.press(key)
        player.see(views)
    player.see("list")
    player.press("up", "ret")  # from Play to Exit
    player.wait(lambda: player.property("ActiveState") == "inactive", "the unit inactive")
    expect(player.property("Result") == "success", "the unit ended well")
    player.journal("grep '^frames: 20 exported, 20 uploaded'")


def make_recording(file, frames, encoder=MP4, caps="format=I420", size=(320, 240), turned=0, sink="filesink"):
    """At two frames a second, each view in its colour, or in that of another one."""
    width, height = size
    colours = list(VIEWS.values())
    sources = "".join(
        f" videotestsrc pattern=solid-color foreground-color=0xff{r:02x}{g:02x}{b:02x} num-buffers=400"
        f" ! video/x-raw,width={width // 2},height={height // 2},framerate=2/1 ! c.sink_{number}"
        for number, (r, g, b) in enumerate(colours[turned:] + colours[:turned]))
    run("sh", "-c", f"gst-launch-1.0 -q compositor name=c sink_1::xpos={width // 2} "
        f"sink_2::ypos={height // 2} sink_3::xpos={width // 2} sink_3::ypos={height // 2} "
        f"! video/x-raw,format=RGB,width={width},height={height} ! videoconvert ! video/x-raw,{caps} "
        f"! identity eos-after={frames + 1} ! {encoder} ! {sink} location={file}" + sources)


def make_recordings(folder):
    """The names begin with the numbers of the rows."""
    ten_bits = MP4, "format=I420_10LE"  # ORC compiles code to convert them
    for name, *how in (("0short.mp4", 10, *ten_bits), ("1long.mp4", 400), ("2raw.avi", 20, "avimux"),
                       ("4ten.mp4", 20)):
        make_recording(folder / name, *how)
    make_changing(folder / "5changing.avi")
    (folder / "3broken.mp4").write_bytes((folder / "1long.mp4").read_bytes()[:4000])


def make_changing(file, before=40, after=160):
    """Its size changes midway."""
    with tempfile.TemporaryDirectory() as folder:
        pictures, encoder = f"{folder}/%03d.jpg", "jpegenc quality=100"
        make_recording(pictures, before, encoder, turned=1, sink="multifilesink")
        make_recording(pictures, after, encoder, size=(192, 144), turned=2,
                       sink=f"multifilesink index={before}")
        run("sh", "-c", f"gst-launch-1.0 -q multifilesrc location={pictures} caps=image/jpeg,width=320,"
            f"height=240,framerate=2/1 ! avimux ! filesink location={file} 2> /dev/null")  # avimux complains


def make_stick(image):
    """A disk image with one recording, too large to be in memory before the stick is pulled."""
    with tempfile.TemporaryDirectory() as folder:
        make_recording(f"{folder}/long.avi", 200, "avimux")
        image.unlink(missing_ok=True)
        run("/sbin/mke2fs", "-q", "-t", "ext4", "-L", "stick", "-d", folder, image, "32M")
    return image


def make_extra(folder, package, *more):
    """Fills the folder of what the board unpacks: package, recordings, files of the folders `more`."""
    for name in ("board", "home/kvr/1_morvastine", "home/kvr/video", "home/kvr/colours"):
        (folder / name).mkdir(parents=True)
    shutil.copy(package, folder / "board")
    shutil.copy(TOP / "docs/examples/cfg_system.txt", folder / "home/kvr/1_morvastine")
    make_recordings(folder / "home/kvr/video")
    for name, caps, encoder in COLOURS:
        make_recording(folder / "home/kvr/colours" / name, 40, encoder, caps)
    for files in more:
        shutil.copytree(files, folder, symlinks=True, dirs_exist_ok=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("arch", nargs="?", default=run("dpkg", "--print-architecture").strip())
    parser.add_argument("--package", help="instead of the one of this tree")
    parser.add_argument("--extra", nargs=1, default=[], help="a folder of files that the board gets too")
    parser.add_argument("--kind", choices=CHECKS, default="daily", help="which checks: 'long' takes "
                        "minutes; 'device' is for the package for the device, on the board armhf")
    parser.add_argument("--only", default="", help="the checks with this text in their names")
    parser.add_argument("--display", help="only boot, and show the screen there, e.g. gtk or vnc=:1")
    options = parser.parse_args()
    work = TOP / "build/board" / options.arch
    seen = work / "seen"
    for folder in (seen, work / "extra"):
        shutil.rmtree(folder, ignore_errors=True)
    seen.mkdir(parents=True)
    package, system, more = board_system.make(
        options.arch, "device" if options.kind == "device" else options.package)
    make_extra(work / "extra", package, *more, *options.extra)
    board = Board(options.arch, system, work / "extra", seen, display=options.display or "none")
    try:
        if options.display:
            return 0, board.process.wait()
        chosen = [c for c in CHECKS[options.kind] if options.only in c.__name__]
        return run_checks(Player(board), [the_list_comes_up, *chosen])
    finally:
        board.close()


def run_checks(player, checks):
    passed = failed = 0
    prepare = lambda: None
    for function in checks:
        name = function.__name__.replace("_", " ")
        begin = time.monotonic()
        try:
            prepare()
            function(player)
            prepare = player.make_ready
            passed += 1
            print(f"passed {name} ({time.monotonic() - begin:.1f} s)", flush=True)
        except Failure as failure:
            failed += 1
            print(f"FAILED {name}: {failure}", flush=True)
            player.board.picture("failed " + name)
            print(player.journal("tail -n 30"))
            if failed == GIVE_UP_AFTER:
                break
            prepare = player.recover
    player.board.film()
    return passed, len(checks) - passed  # a check that did not run counts as failed


if __name__ == "__main__":
    results = 0, 1
    try:
        results = main()
    finally:
        print(f"{results[0]} passed, {results[1]} failed", flush=True)
    sys.exit(min(results[1], 1))
