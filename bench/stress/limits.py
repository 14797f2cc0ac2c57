#!/usr/bin/python3 -B
"""limits.py BUILD_DIR [TEXT]: works the program by keys under one limit after the other (those with TEXT in
their names), and prints a table of what the user sees: list, Play, Back, SIGINT. Under each limit the
pages must answer keys and SIGINT, or the program must end with a line and a status. Runs as root, on the
current display; needs ffmpeg and a C compiler.
"""
import os
import shlex
import shutil
import signal
import subprocess
import sys
import time

import clips
import session

LIST_WITHIN, PICTURE_WITHIN, END_WITHIN = 10, 4, 6  # seconds
FORMAT = ["-c:v", "mpeg4", "-flags", "+ildct+ilme", "-c:a", "pcm_s16le"]  # interlaced: ORC compiles code for it
SPOT = "1x1+320+160"

# Refuses blocks above $LIMIT bytes.
MALLOC = r"""
#include <errno.h>
#include <stdlib.h>
void *__libc_malloc(size_t), *__libc_calloc(size_t, size_t), *__libc_realloc(void *, size_t);
static size_t limit = -1;
__attribute__((constructor)) static void start(void) { limit = strtoul(getenv("LIMIT"), 0, 10); }
static int refuse(size_t size) { return size > limit && (errno = ENOMEM); }
void *malloc(size_t size) { return refuse(size) ? 0 : __libc_malloc(size); }
void *calloc(size_t n, size_t size) { return refuse(n * size) ? 0 : __libc_calloc(n, size); }
void *realloc(void *old, size_t size) { return refuse(size) ? 0 : __libc_realloc(old, size); }
"""

# The kernel limits the threads of other users than root only. This one may read the build as root does.
USER = "setpriv --reuid 4711 --inh-caps +dac_override --ambient-caps +dac_override"
FULL = "mount -t tmpfs -o size=64k none /mnt; ! cat /dev/zero > /mnt/full"
READ_ONLY = "findmnt -rno TARGET -t ext4,overlay,tmpfs | xargs -I{} mount -o remount,bind,ro {}; ! touch /tmp/x"


def mounted(steps):
    """A command that runs another one with mounts of its own."""
    return f"unshare -m sh -c '({steps}) 2> /dev/null || exit; exec env \"$@\"' sh"


def limits(shim):
    yield "none", ""
    for count in (3, 4, 8, 12, 16, 20, 24, 32, 64):
        yield f"{count} descriptors", f"prlimit --nofile={count}"
    for size in (100, 200, 300, 400, 700, 1000):
        yield f"{size} MB of addresses", f"prlimit --as={size << 20}"
    for count in (0, 4, 8, 12, 16, 24, 32):
        yield f"{count} threads", f"{USER} prlimit --nproc={count}"
    for size in (10, 50, 100, 300, 1000, 4000):
        yield f"no block above {size} kB", f"env LD_PRELOAD={shim} LIMIT={size << 10}"
    yield "full disk", f"{mounted(FULL)} GST_REGISTRY=/mnt/registry HOME=/mnt"
    yield "full disk, caches on it", f"{mounted(FULL)} XDG_CACHE_HOME=/mnt MESA_SHADER_CACHE_DISABLE=false"
    yield "full disk, XDG_RUNTIME_DIR on it", f"{mounted(FULL)} XDG_RUNTIME_DIR=/mnt"
    yield "read-only disk", mounted(READ_ONLY)
    yield "no /dev/shm", mounted("mount -t tmpfs -o ro none /dev/shm")
    yield "no home", "env HOME=/nonexistent XDG_CACHE_HOME=/nonexistent TMPDIR=/nonexistent"


# What libraries do under a limit, and the player cannot help.
THEIRS = {
    "full disk, caches on it": "Mesa maps a file that the disk has no room for",
    "full disk, XDG_RUNTIME_DIR on it": "ORC does the same",
}


def has_picture():
    red, green, blue = session.screen(SPOT)
    return green > 200 and max(red, blue) < 60


def work(run):
    """Works the program by keys, and returns what the user sees."""
    end = time.monotonic() + LIST_WITHIN
    while not run.has_keys():
        if not run.runs() or time.monotonic() > end:
            return "no list"
        time.sleep(0.1)
    run.act("sleep", 0.3, "key", "Return", "key", "Left", "key", "Return")  # marks and plays
    end = time.monotonic() + PICTURE_WITHIN
    while not (picture := has_picture()) and time.monotonic() < end:
        time.sleep(0.1)
    for _ in range(4):
        if run.plays() and run.runs():
            run.act("key", "Left", "key", "Return", "sleep", 1)
    page = "no player" if session.PLAYS not in run.text() else "picture" if picture else "no picture"
    return f"list, {page}, " + ("no way back" if run.plays() else "list" if run.runs() else "end")


def try_limit(run, name, how):
    run.start(before=shlex.split(how))
    seen = work(run)
    run.interrupt()
    try:
        status = run.player.wait(END_WITHIN)
    except subprocess.TimeoutExpired:
        status = "hangs"
    run.end()
    last = (run.text().strip().splitlines() or [""])[-1]
    worked = seen.endswith(", list") and status == 0
    told = last and status not in (0, "hangs", -signal.SIGSEGV, -signal.SIGBUS)
    fault = not worked and not told or "terminate called" in run.text()
    why = THEIRS.get(name, "") if fault else "" if worked else last[:90]
    print(f"| {name} | {seen} | {status} | {why} |", flush=True)
    return f"{name}: {seen}, {status}" if fault and name not in THEIRS else ""


def road(run, text):
    clips.make(run.folder / "clip.avi", "color=c=lime:size=320x240", 8, FORMAT)
    run.work.chmod(0o755)
    if "XAUTHORITY" in os.environ:  # the other user may use the display, too
        os.environ["XAUTHORITY"] = shutil.copyfile(os.environ["XAUTHORITY"], run.work / "display").as_posix()
    shim = run.work / "shim.so"
    subprocess.run(["cc", "-shared", "-fPIC", "-x", "c", "-", "-o", shim], input=MALLOC.encode(), check=True)
    print("| limit | seen | status | why |\n|---|---|---|---|")
    tried = [try_limit(run, name, how) for name, how in limits(shim) if text in name]
    if any(tried):
        raise session.Fault("; ".join(filter(None, tried)))
    return f"{len(tried)} limits"


def main(build, text=""):
    return session.run(session.Session(build), lambda run: road(run, text))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
