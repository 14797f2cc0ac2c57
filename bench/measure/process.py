"""A program that is measured from its start to its end."""

import os
import re
import subprocess
import tempfile
import time


def cpu_of(pid):
    """CPU seconds so far, of all threads: the clock that clock_getcpuclockid() names."""
    return time.clock_gettime(~pid << 3 | 2)


class Process:
    def __init__(self, *command):
        self.output = tempfile.TemporaryFile("w+", errors="replace")
        self.started = time.monotonic()
        self._pid = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=self.output,
                                     stderr=subprocess.STDOUT).pid
        self._name = command[0]

    def cpu(self):
        return cpu_of(self._pid)

    def load(self, seconds):
        """CPU in percent of a core while it idles."""
        before, start = self.cpu(), time.monotonic()
        time.sleep(seconds)
        return 100 * (self.cpu() - before) / (time.monotonic() - start)

    def memory(self, field="VmHWM"):
        """MB, as /proc/PID/status has them: VmHWM is the peak, VmRSS what is in use now."""
        with open(f"/proc/{self._pid}/status") as status:
            return int(re.search(field + r":\s+(\d+)", status.read())[1]) / 1024

    def end(self, limit=120):
        """Waits for it to end by itself; CPU seconds and the peak of memory in MB."""
        last = time.monotonic() + limit
        while True:
            pid, status, usage = os.wait4(self._pid, os.WNOHANG)
            if pid:
                break
            if time.monotonic() > last:
                os.kill(self._pid, 9)
                raise TimeoutError(f"{self._name} did not end")
            time.sleep(0.005)
        if status:
            raise ChildProcessError(f"{self._name} ended with {status}:\n{self.text()[-2000:]}")
        return {"CPU s": usage.ru_utime + usage.ru_stime, "peak MB": usage.ru_maxrss / 1024}

    def text(self):
        self.output.seek(0)
        return self.output.read()
