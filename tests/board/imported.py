"""Checks with a decoder as those of open drivers: frames that are DMABUFs go to the screen uncopied."""
import re

from PIL import Image, ImageChops

from checks import (CHANGING, COLOURS, CONFIG, LONG, QUARTERS, SHORT, VIEWS, check, check_of, crop,
                    expect)

COLOUR_OFF = 4  # of 255
FRAMES_OF_DECODER = 8
OPEN = {"GST_PLUGIN_PATH": "/board/plugins"}
OPEN_BUT_COPIED = {**OPEN, "MESA_EXTENSION_OVERRIDE": "-GL_OES_EGL_image"}


def counts(player, which="tail"):
    """Frames exported, frames uploaded and buffers imported up to the end of the first or last file."""
    line = player.journal(f"grep -E '^frames: [0-9]+ exported' | {which} -n 1")
    return [int(number) for number in re.findall(r"\d+", line)]


def usage(player):
    """The program's DMABUFs and all its descriptors."""
    files = player.shell("ls -l /proc/$(pgrep -x quadplayer)/fd")
    return files.count("dmabuf"), len(files.splitlines())


def colour_difference(player):
    """The greatest of any view on the screen to what was recorded."""
    screen = player.board.screen()
    patches = [(crop(screen, area), VIEWS[name]) for name, area in zip(VIEWS, QUARTERS)]
    return max(high for patch, colour in patches for _, high in ImageChops.difference(
        patch, Image.new("RGB", patch.size, colour)).getextrema())


def when_the_bar_comes_back(player):
    """The bar with the position, and how often each streaming thread has waited."""
    player.wait(lambda: not player.bar(), "the bar hiding itself")
    player.press("esc")
    player.wait(player.bar, "the bar")
    waits = player.shell("cd /proc/$(pgrep -x quadplayer)/task; "
                         "grep ctxt $(grep -l : */comm | sed s/comm/status/)")
    return waits, crop(player.board.screen(), (0, .9, 1, 1)).tobytes()


@check
def frames_of_an_open_decoder_are_shown_uncopied(player):
    player.restart(**OPEN)
    player.start(LONG)
    off = colour_difference(player)
    expect(off <= COLOUR_OFF, f"colours as recorded, they are {off} off")
    for key, views in (("1", "RRRR"), ("0", "RGBY")):
        player.press(key)
        player.see(views)
    player.press("esc", "ret")  # pause
    when_the_bar_comes_back(player)  # now it has paused
    paused = when_the_bar_comes_back(player)
    expect(when_the_bar_comes_back(player) == paused, "position and streaming threads stand still")
    player.press("ret")
    expect(when_the_bar_comes_back(player) != paused, "it plays on")
    player.press("right", "right", "right", "ret")  # 34 s forth
    player.see("RGBY")
    player.press("esc", "right", "ret")  # Back; on a slow board the bar has hidden itself
    player.see("list")
    exported, uploaded, imported = counts(player)
    expect(exported > 0 and uploaded == 0, f"{exported} frames exported, {uploaded} uploaded")
    expect(0 < imported <= 2 * FRAMES_OF_DECODER, f"{imported} imports, before and after the seek")
    player.wait(lambda: usage(player)[0] == 0, "the decoder's memory gone with the file")
    player.restart()


@check
def the_next_file_and_another_size_midway_are_shown_uncopied(player):
    player.restart(**OPEN)
    player.mark(SHORT)
    player.wait(player.marked, "a check mark")  # a slow board loses more keys at once
    player.start(CHANGING)
    for views in "GBYR", "BYRG":
        player.see(views)
    player.back()
    expect(counts(player, "head")[:2] == [10, 0], "all ten frames of the first file exported")
    expect(counts(player)[1] == 0, "no frame uploaded")
    said = player.journal("grep -Fxc 'frames: imported (NV12, 320x240 of 320x256)'")
    expect(said == "2", f"one line for each file, not {said}")
    player.restart()


@check
def frames_that_cannot_be_imported_are_copied(player):
    player.restart(**OPEN_BUT_COPIED)
    player.start(SHORT)
    player.see("list")
    player.journal("grep -Fx 'frames: copied (no extension)'")
    expect(counts(player) == [10, 10, 0], "all ten frames exported and uploaded")
    player.restart()


@check_of("long")
def colours_are_those_that_were_recorded(player):
    player.shell(f"sed -i.short s,video,colours, {CONFIG}")
    for way, settings in ("imported", OPEN), ("copied", OPEN_BUT_COPIED):
        player.restart(**settings)
        off = {}
        for row, (name, *_) in enumerate(COLOURS):
            player.start(row)
            off[name] = colour_difference(player)
            player.back()
        print(way, off)
        expect(player.journal(f"grep -c '^frames: {way}'") == str(len(off)), f"all are {way}")
        expect(max(off.values()) <= COLOUR_OFF, "colours as recorded")
    player.shell(f"mv {CONFIG}.short {CONFIG}")
    player.restart()


@check_of("long")
def thirty_times_Play_and_Back_take_nothing(player):
    for settings in OPEN, {}:
        player.restart(**settings)
        descriptors, memory = [], []
        for _ in range(30):
            player.start(LONG)
            player.back()
            player.wait(lambda: usage(player)[0] == 0, "the decoder's memory gone with the file")
            descriptors.append(usage(player)[1])
            memory.append(int(player.shell("sed -n 's/VmRSS:[^0-9]*\\([0-9]*\\).*/\\1/p' "
                                           "/proc/$(pgrep -x quadplayer)/status")))
        print("descriptors:", *descriptors, "kB:", *memory)
        expect(max(descriptors) == descriptors[0], "as many descriptors as after the first time")
        expect(max(memory[5:]) - memory[4] < 5000, "no more than 5 MB after the fifth time")
        expect(player.property("NRestarts") == "0", "no restart")
