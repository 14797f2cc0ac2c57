#!/usr/bin/env python3
"""interrupts.py BUILD_DIR [COUNT [SEED]]: runs the program COUNT (10) times from the start over list,
Play, pause and Back to Exit, and interrupts each run at a random moment, from SEED (1) on. Each run must
end within a second with status 0, and the hub must receive the exit message once. Uses the current
display; needs ffmpeg.
"""
import collections
import random
import subprocess
import sys
import time

import clips
import session

ROAD = """
    until [ "$(xdotool getwindowfocus getwindowpid 2>/dev/null)" = {pid} ]; do sleep 0.02; done
    exec xdotool key Return sleep 0.1 key Down sleep 0.1 key Return sleep 0.9 key Return sleep 0.2 \
        key Return sleep 0.3 key 3 sleep 0.2 key 0 key Right Return sleep 0.3 key Left Return \
        sleep 0.2 key Left Return sleep 0.3 key Up Return
"""
LONGEST = 4.0  # seconds from the start to the interrupt
GONE = "gone by Exit before"


def deals_with_interrupts(pid):
    """Before main() an interrupt ends any program."""
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        masks = [line.split()[1] for line in status if line.startswith(("SigBlk", "SigCgt"))]
    return any(int(mask, 16) & 2 for mask in masks)


def stage(text):
    if "path from cfg" not in text:
        return "starting"
    if session.PLAYS not in text:
        return "on the list"
    return "back on the list" if session.LISTS in text else "on the player"


def interrupt_once(run, moment):
    run.start()
    session.until(lambda: deals_with_interrupts(run.player.pid), "main()", 5)
    user = subprocess.Popen(["sh", "-c", ROAD.format(pid=run.player.pid)],
                            stderr=subprocess.DEVNULL)
    time.sleep(moment)
    where = stage(run.text()) if run.runs() else GONE
    run.interrupt()
    before = time.monotonic()
    try:
        run.finish()
    except session.Fault as fault:
        raise session.Fault(f"{moment:.3f} s after the start, {where}: {fault}") from fault
    finally:
        user.kill()
        user.wait()
    return where, time.monotonic() - before


def road(run, count, seed):
    chance = random.Random(seed)
    clips.make(run.folder / "clip.mp4", "testsrc2=size=320x240", 20)
    places = collections.Counter()
    longest = late = 0
    while places.total() - places[GONE] < count:
        where, seconds = interrupt_once(run, chance.uniform(0, LONGEST))
        places[where] += 1
        longest = max(longest, seconds)
        late += seconds >= 1
    stages = ", ".join(f"{number} {where}" for where, number in places.items())
    result = f"{count} interrupts, seed {seed}: {stages}; at most {longest * 1000:.0f} ms to the end"
    if late:
        raise session.Fault(f"{result}; {late} took a second or more")
    return result


def main(build, count=10, seed=1):
    return session.run(session.Session(build), lambda run: road(run, int(count), int(seed)))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
