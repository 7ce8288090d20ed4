"""Shared by the tests of the commands: the real program, real files, logs made byte by byte, and a real terminal."""
import json
import os
import pty
import signal
import struct
import subprocess
import tempfile
import unittest

VASTRA = os.environ["VASTRA"]


class Result:
    def __init__(self, status, out, err):
        self.status, self.out, self.err = status, out, err.decode("utf-8", "surrogateescape")

    def json(self):
        return json.loads(self.out)


class CommandTest(unittest.TestCase):
    """Each test works in an empty folder of its own, in the zone UTC."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vastra-")
        self.addCleanup(folder.cleanup)
        self.folder = os.path.realpath(folder.name)
        self.zone = "UTC"

    def path(self, *parts):
        return os.path.join(self.folder, *parts)

    def environment(self):
        return dict(os.environ, TZ=self.zone)

    def start(self, *args, **options):
        options = {"cwd": self.folder, "env": self.environment(), **options}
        return subprocess.Popen([options.pop("program", VASTRA), *args], **options)

    def vastra(self, *args, **options):
        process = self.start(*args, **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options})
        with process:
            out, err = process.communicate(timeout=60)
        return Result(process.returncode, out, err or b"")

    def on_terminal(self, *args, output=False, until=None, **environment):
        """What args show on a terminal, as standard error, or as standard output too. Interrupted at `until`."""
        ours, theirs = pty.openpty()
        process = self.start(*args, stdout=theirs if output else subprocess.DEVNULL, stderr=theirs,
                             env={**self.environment(), "TERM": "xterm", **environment})
        os.close(theirs)
        shown = b""
        while True:
            try:
                shown += os.read(ours, 65536)
            except OSError:  # the other end is closed
                break
            if until and until in shown.decode(errors="replace"):
                process.send_signal(signal.SIGINT)
                until = None  # a second signal would end it at once
        os.close(ours)
        process.wait(timeout=30)
        return shown.decode(errors="surrogateescape")

    def write(self, name, content):
        """Writes bytes, a text or a tree as JSON; returns the name."""
        if isinstance(content, dict):
            content = json.dumps(content)
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content.encode() if isinstance(content, str) else content)
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()


class LogTest(CommandTest):
    """With a folder for logs."""

    def setUp(self):
        super().setUp()
        os.mkdir(self.path("logs"))

    def rows(self):
        """The rows of all text copies in the folder, as lists of their columns."""
        return [row.split(",") for name in sorted(os.listdir(self.path("logs"))) if name.endswith(".csv")
                for row in self.read("logs/" + name).decode().splitlines()[1:]]


def log(names, samples):
    """The bytes of a binary log. A sample is its second, and its values."""
    parts = [struct.pack("<IIiiI", 0x2C0F0781, 0, samples[0][0], samples[-1][0], 0), b"\0",
             struct.pack("<H", len(names)), *(bytes([len(name.encode())]) + name.encode() for name in names),
             struct.pack("<I", len(samples))]
    parts += [struct.pack("<H%df" % len(values), len(values), *values) for _, *values in samples]
    parts += [struct.pack("<H", len(samples)), *(struct.pack("<iHhhH", time, 0, 0, 0, 0) for time, *_ in samples),
              struct.pack("<I", 0)]
    return b"".join(parts)


def simulated(outputs=(), waveforms="counter", names=("x",), **more):
    """A configuration that reads the simulator."""
    driver = {"plcType": 9001, "text1": waveforms, **more.pop("driver", {})}
    node = {"nodeName": "N", "driver": driver, "varNames": list(names)}
    return {"input": {"scanPeriod": 10, "plcNodes": [node], **more.pop("input", {})},
            "outputs": list(outputs), **more}


def replayed(files, outputs=(), **more):
    """A configuration that replays logs as fast as possible."""
    return {"input": {"simulating": 1, "asFastAsPossible": 1, "inputFiles": files}, "outputs": list(outputs), **more}


def output(directory, names=("x",), **more):
    return {"enableText": "WriteToLog = 1;", "varNames": list(names), "saveRp": 1, "directory": directory, **more}
