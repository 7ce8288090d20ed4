"""What the tests of the commands share: the real program, real files, and logs made here byte by byte."""
import json
import os
import struct
import subprocess
import tempfile
import unittest

VASTRA = os.environ["VASTRA"]


class Result:
    def __init__(self, process):
        self.status = process.returncode
        self.out = process.stdout
        self.err = process.stderr.decode("utf-8", "surrogateescape")

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

    def vastra(self, *args, **options):
        options = dict(dict(stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment()), **options)
        return Result(subprocess.run([VASTRA, *args], cwd=self.folder, timeout=60, **options))

    def start(self, *args, **options):
        return subprocess.Popen([VASTRA, *args], cwd=self.folder, env=self.environment(), **options)

    def write(self, name, content):
        """Writes bytes, a text or a tree as JSON; gives the name."""
        if isinstance(content, dict):
            content = json.dumps(content)
        if isinstance(content, str):
            content = content.encode()
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content)
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()


def text(value):
    value = value.encode()
    return (bytes([len(value)]) if len(value) < 255 else b"\xff" + struct.pack("<H", len(value))) + value


def log(names, samples):
    """The bytes of a binary log. A sample is its second, and its values."""
    def time(second):
        return struct.pack("<iHhhH", second, 0, 0, 0, 0)
    first, last = samples[0][0], samples[-1][0]
    parts = [struct.pack("<IIiiI", 0x2C0F0781, 0, first, last, 0), b"\0",
             struct.pack("<H", len(names)), *map(text, names), struct.pack("<I", len(samples))]
    parts += [struct.pack("<H%df" % len(values), len(values), *values) for _, *values in samples]
    parts += [struct.pack("<H", len(samples)), *(time(second) for second, *_ in samples), struct.pack("<I", 0)]
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
    return {"enableText": "WriteToLog = 1;", "varNames": list(names), "saveRp": 1, "directory": directory,
            "nameVariable": "System Time", **more}
