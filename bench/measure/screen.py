"""A display of its own, watched one pixel at a time and worked by keys. A picture counts as shown when
its colour is there, whatever the program says."""

import ctypes
import os
import subprocess
import time

from process import cpu_of

SIZE = "1280x720x24"
EYE = (320, 180)  # in the second bar of the clips: yellow, or red where they are mirrored
SECOND_ROW = (1100, 136)  # of the list, right of its text
YELLOW = (255, 255, 0)
RED = (255, 0, 0)
BLACK = (0, 0, 0)

_LOOK_EVERY = 0.001  # s
_ALL_PLANES = ctypes.c_ulong(-1)
_Z_PIXMAP = 2


def near(colour, wanted):
    """Decoders and renderers round differently."""
    return all(abs(a - b) < 60 for a, b in zip(colour, wanted))


class Screen:
    def __init__(self):
        number, told = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(told), "-screen", "0", SIZE, "-nolisten", "tcp", "-noreset"],
            pass_fds=[told], stderr=subprocess.DEVNULL)
        os.close(told)
        with os.fdopen(number) as answer:
            os.environ["DISPLAY"] = ":" + answer.readline().strip()
        self._x = ctypes.CDLL("libX11.so.6")
        self._test = ctypes.CDLL("libXtst.so.6")
        for function in "XOpenDisplay", "XGetImage":
            getattr(self._x, function).restype = ctypes.c_void_p
        for function in "XDefaultRootWindow", "XStringToKeysym", "XGetPixel":
            getattr(self._x, function).restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(None))
        self._root = ctypes.c_ulong(self._x.XDefaultRootWindow(self._display))

    def __enter__(self):
        return self

    def __exit__(self, *error):
        self.server.terminate()  # which ends what still stands on it
        self.server.wait()

    def cpu(self):
        return cpu_of(self.server.pid)

    def colour(self, place=EYE):
        image = ctypes.c_void_p(self._x.XGetImage(
            self._display, self._root, *place, 1, 1, _ALL_PLANES, _Z_PIXMAP))
        pixel = self._x.XGetPixel(image, 0, 0)
        self._x.XDestroyImage(image)
        return pixel >> 16 & 255, pixel >> 8 & 255, pixel & 255

    def wait(self, seen, place=EYE, limit=30, every=_LOOK_EVERY):
        """The time at which seen(colour of the pixel) became true."""
        end = time.monotonic() + limit
        while not seen(self.colour(place)):
            if time.monotonic() > end:
                raise TimeoutError(f"the screen shows {self.colour(place)} at {place}")
            time.sleep(every)
        return time.monotonic()

    def wait_for(self, wanted, **how):
        return self.wait(lambda colour: near(colour, wanted), **how)

    def press(self, *keys):
        """Presses the keys one after the other; the time at which the last one was let go."""
        for key in keys:
            code = self._x.XKeysymToKeycode(
                self._display, ctypes.c_ulong(self._x.XStringToKeysym(key.encode())))
            for down in 1, 0:
                self._test.XTestFakeKeyEvent(self._display, code, down, ctypes.c_ulong(0))
            self._x.XFlush(self._display)
        return time.monotonic()
