"""A board in the emulator: its keys, its touch screen, its screen, and a root shell on it."""
import json
import socket
import subprocess
import tempfile
import time
from pathlib import Path

from PIL import Image, ImageChops

from board_system import run

MACHINES = {  # without AVX: emulated, it leaves dots along the edges of triangles
    "amd64": "qemu-system-x86_64 -M pc,i8042=off -accel tcg,thread=multi -cpu Nehalem".split(),
    "armhf": "qemu-system-arm -M virt -cpu cortex-a15".split(),
    "arm64": "qemu-system-aarch64 -M virt -cpu cortex-a57".split(),
}
CONSOLES = {"amd64": "ttyS0", "armhf": "ttyAMA0", "arm64": "ttyAMA0"}
LIMITS = {"amd64": 120, "armhf": 300, "arm64": 300}  # s, of every wait; a machine that is three times slower keeps them
AXIS_MAX = 32767


class Failure(Exception):
    pass


class Board:
    """Boots when it is made, from the folder `system`. Its second disk is an archive of the folder
    `extra`. Pictures and the console's output go to the folder `seen`."""

    def __init__(self, arch, system, extra, seen, size="800x480", display="none"):
        self.limit = LIMITS[arch]
        self.shell_commands = 0
        self.seen = seen
        self.dump = tempfile.NamedTemporaryFile(suffix=".ppm")
        run("tar", "-cf", f"{extra}.tar", "-C", extra, ".")
        width, height = size.split("x")
        (qmp, qmp_end), (self.shell_end, shell_end) = socket.socketpair(), socket.socketpair()
        ends = [end.fileno() for end in (qmp_end, shell_end)]
        self.process = subprocess.Popen([
            *MACHINES[arch], "-smp", "2", "-m", "2048", "-nodefaults", "-display", display,
            "-kernel", system / "kernel", "-initrd", system / "initrd",
            "-append", f"console={CONSOLES[arch]} quiet", "-serial", f"file:{seen}/console.log",
            "-drive", f"file={system}/disk,format=raw,if=virtio,snapshot=on,id=disk",
            "-drive", f"file={extra}.tar,format=raw,if=virtio,readonly=on",
            "-device", f"virtio-gpu-pci,xres={width},yres={height}",
            "-device", "virtio-keyboard-pci", "-device", "virtio-tablet-pci", "-device", "qemu-xhci",
            "-chardev", f"socket,id=qmp,fd={ends[0]}", "-mon", "chardev=qmp,mode=control",
            "-chardev", f"socket,id=shell,fd={ends[1]}",
            "-device", "virtio-serial-pci", "-device", "virtconsole,chardev=shell",
        ], pass_fds=ends)
        qmp_end.close()
        shell_end.close()
        self.qmp_end = qmp.makefile("rw")
        self.qmp_end.readline()
        self.qmp("qmp_capabilities")

    def close(self):
        self.process.kill()
        self.process.wait()

    def qmp(self, execute, **arguments):
        if self.process.poll() is not None:
            raise Failure("the board is off")
        self.qmp_end.write(json.dumps({"execute": execute, "arguments": arguments}) + "\n")
        self.qmp_end.flush()
        while True:
            answer = json.loads(self.qmp_end.readline() or '{"error": {"desc": "no more answers"}}')
            if "error" in answer:
                raise Failure(f"{execute}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]

    def wait(self, condition, what, seconds=None):
        """Waits until the condition holds, and returns its value."""
        end = time.monotonic() + (seconds or self.limit)
        while not (result := condition()):
            if time.monotonic() > end:
                raise Failure("in vain: " + what)
            time.sleep(0.2)
        return result

    def input(self, kind, **data):
        self.qmp("input-send-event", events=[{"type": kind, "data": data}])

    def press(self, *keys):
        for key in keys:
            for down in (True, False):
                self.input("key", down=down, key={"type": "qcode", "data": key})

    def tap(self, x, y):
        """Taps at a place in px. A negative one counts from the right or the bottom edge."""
        width, height = self.screen().size
        self.input("abs", axis="x", value=x % width * AXIS_MAX // width)
        self.input("abs", axis="y", value=y % height * AXIS_MAX // height)
        for down in (True, False):
            self.input("btn", down=down, button="left")

    def screen(self):
        self.qmp("screendump", filename=self.dump.name)
        return Image.open(self.dump.name).convert("RGB")

    def picture(self, name):
        number = len(list(self.seen.glob("*.png"))) + 1
        self.screen().save(self.seen / f"{number:02}-{name.replace(' ', '-')}.png")

    def film(self):
        frames = [Image.open(path).resize((640, 360)) for path in sorted(self.seen.glob("*.png"))]
        if frames:
            frames[0].save(self.seen / "film.webp", save_all=True, append_images=frames[1:],
                           duration=700)

    def answer(self, command):
        """What the shell prints up to the end of one command."""
        answer = b""
        try:
            while not answer.endswith(b"\004"):
                answer += self.shell_end.recv(1) or b"\nno answers\004"
        except OSError:
            raise Failure(f"no answer to: {command}\n{answer}") from None
        return answer[:-1].decode(errors="replace")

    def shell(self, command, fails=False):
        """What the command prints. It must succeed, or fail if `fails` says so."""
        self.shell_end.settimeout(self.limit)
        if self.shell_commands == 0:
            self.shell_commands = 1
            self.shell("stty -echo -opost")
        self.shell_commands += 1
        self.shell_end.sendall(
            f"{{ {command}\n}} 2>&1; printf '\\n%s {self.shell_commands}\\004' $?\n".encode())
        number = None
        while number != str(self.shell_commands):  # an earlier command may have answered too late
            output, last = self.answer(command).rsplit("\n", 1)
            status, number = last.split()
        if (status != "0") != fails:
            raise Failure(f"status {status} of: {command}\n{output}")
        return output.strip()


def crop(image, area):
    """The area, given in fractions of the image."""
    return image.crop([int(edge * image.size[i % 2]) for i, edge in enumerate(area)])


def mask(image, colour, tolerance=40, area=(0, 0, 1, 1)):
    """White where the area has the colour."""
    image = crop(image, area)
    bands = ImageChops.difference(image, Image.new("RGB", image.size, colour)).split()
    largest = ImageChops.lighter(ImageChops.lighter(bands[0], bands[1]), bands[2])
    return largest.point(lambda value: 255 * (value <= tolerance))


def share(*what):
    found = mask(*what)
    return found.histogram()[255] / (found.width * found.height)
