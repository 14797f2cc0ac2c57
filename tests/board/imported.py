"""Checks with a decoder as those of open drivers: frames that are DMABUFs go to the screen uncopied."""
import re

from board import share
from checks import LONG, QUARTERS, SHORT, VIEWS, check, check_of, expect

COLOUR_OFF = 4  # of 255
FRAMES_OF_DECODER = 8


def restart(player, **settings):
    player.restart(GST_PLUGIN_PATH="/board/plugins", **settings)


def counts(player):
    """Frames exported, frames uploaded and buffers imported since the program's start."""
    line = player.journal("grep -E '^frames: [0-9]+ exported' | tail -n 1")
    return [int(number) for number in re.findall(r"\d+", line)]


def usage(player):
    """The program's DMABUFs and all its descriptors."""
    files = player.shell("ls -l /proc/$(pgrep -x quadplayer)/fd")
    return files.count("dmabuf"), len(files.splitlines())


@check
def frames_of_an_open_decoder_are_shown_uncopied(player):
    restart(player)
    player.start(LONG)
    screen = player.board.screen()
    for name, quarter in zip(VIEWS, QUARTERS):
        expect(share(screen, VIEWS[name], COLOUR_OFF, quarter) > .99, f"{name} as it was recorded")
    player.press("1")
    player.see("RRRR")
    player.press("0")
    player.see("RGBY")
    player.press("esc", "ret", "ret", "right", "right", "right", "ret")  # pause, play, 34 s forth
    player.see("RGBY")
    player.press("right", "ret")  # Back
    player.see("list")
    player.journal("grep -Fx 'frames: imported (NV12, 320x240 of 320x256)'")
    exported, uploaded, imported = counts(player)
    expect(exported > 0 and uploaded == 0, f"{exported} frames exported, {uploaded} uploaded")
    expect(0 < imported <= 2 * FRAMES_OF_DECODER, f"{imported} imports, before and after the seek")
    player.wait(lambda: usage(player)[0] == 0, "the decoder's memory gone with the file")
    player.restart()


@check
def frames_that_cannot_be_imported_are_copied(player):
    restart(player, MESA_EXTENSION_OVERRIDE="-GL_OES_EGL_image")
    player.start(SHORT)
    player.see("list")
    player.journal("grep -Fx 'frames: copied (no extension)'")
    expect(counts(player) == [10, 10, 0], "all ten frames exported and uploaded")
    player.restart()


@check_of("long")
def thirty_times_Play_and_Back_take_no_buffers(player):
    restart(player)
    used = []
    for _ in range(30):
        player.start(LONG)
        player.back()
        player.wait(lambda: usage(player)[0] == 0, "the decoder's memory gone with the file")
        used.append(usage(player)[1])
    print("descriptors:", *used)
    expect(max(used) == used[0], "as many descriptors as after the first time")
    player.restart()
