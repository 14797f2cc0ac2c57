"""The programs that this player is compared with. Each function runs one and returns its figures, by
column of the table; a figure that it cannot tell is missing."""

import re

from player import BUILD, ms, whole
from process import Process
from screen import BLACK, YELLOW

FRAMES = 600
CLIPS = {"": BUILD + "clips/plain", ", B-frames": BUILD + "clips/bframes"}


def file_of(folder):
    return f"{folder}/{folder.split('/')[-1]}.mp4"


def program(screen, *command):
    screen.wait_for(BLACK)
    process = Process(*command)
    first = screen.wait_for(YELLOW) - process.started
    return process, {"first ms": ms(first), **process.end()}


def decoding(screen, folder):
    return Process("gst-launch-1.0", "-q", "filesrc", "location=" + file_of(folder), "!", "qtdemux",
                   "!", "h264parse", "!", "avdec_h264", "!", "fakesink", "sync=false").end()


def mpv(*output):
    def run(screen, folder):
        process, figures = program(
            screen, "mpv", "--no-config", "--ao=null", "--hwdec=no", "--no-osc", "--no-border",
            "--geometry=1280x720+0+0", "--msg-level=all=error,statusline=status",
            "--term-status-msg=late=${decoder-frame-drop-count}+${frame-drop-count}.", *output,
            file_of(folder))
        dropped = re.findall(r"late=(\d+)\+(\d+)\.", process.text())[-1]
        return {"shown": FRAMES - sum(map(int, dropped)), **figures}
    return run


def gst_play(screen, folder):
    sink = "videoscale ! video/x-raw,width=1280,height=720 ! ximagesink"
    return program(screen, "gst-play-1.0", "--no-interactive", "--videosink=" + sink,
                   file_of(folder))[1]


def bare(what):
    return lambda screen, _: program(screen, BUILD + "bench/bench_surface", what)[1]


def engine(screen, folder):
    process = Process(BUILD + "bench/bench_player", "pace", file_of(folder))
    figures = process.end()
    text = process.text()
    told = {name: float(value) for name, value in re.findall(r"(\w+)=([-\d.]+)", text)}
    frames = re.findall(r"^frame (\S+) (\S+) (\S+)$", text, re.MULTILINE)
    return {**figures, "decoded": told["decoded"], "shown": told["shown"],
            "first ms": told["first"], "p50 ms": told["p50"], "p95 ms": told["p95"],
            "max ms": told["max"], "> 5 ms": told["late"],
            "frames": [tuple(map(float, frame)) for frame in frames]}


# Name of the row, what runs, and whether it plays a clip.
ROWS = [
    ("decoding only", decoding, True),
    ("mpv, X11 output", mpv("--vo=x11"), True),
    ("mpv, GL output", mpv("--vo=gpu", "--gpu-sw"), True),
    ("gst-play, X11 sink", gst_play, True),
    ("bare window without GL", bare("window"), False),
    ("bare QOpenGLWidget, cleared", bare("clear"), False),
    ("bare QOpenGLWidget, drawing a texture", bare("draw"), False),
    ("bare QOpenGLWidget, uploading it too", bare("upload"), False),
    ("this player, list to end and exit", whole, True),
    ("this player, engine and surface alone", engine, True),
]
