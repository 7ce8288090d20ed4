"""Shared by the tests of the commands: the real program, real files, logs made byte by byte, and a real terminal."""
import json
import os
import shlex
import struct
import subprocess
import tempfile
import time
import types
import unittest

VASTRA = os.environ["VASTRA"]


class CommandTest(unittest.TestCase):
    """Each test works in a folder of its own, in the zone UTC."""
    zone = "UTC"

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vastra-")
        self.addCleanup(folder.cleanup)
        self.folder = os.path.realpath(folder.name)

    def path(self, *parts):
        return os.path.join(self.folder, *parts)

    def environment(self):
        return dict(os.environ, TZ=self.zone)

    def start(self, *args, program=VASTRA, **options):
        return subprocess.Popen([program, *args], **{"cwd": self.folder, "env": self.environment(), **options})

    def vastra(self, *args, **options):
        with self.start(*args, **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}) as process:
            out, err = process.communicate(timeout=60)
        err = (err or b"").decode("utf-8", "surrogateescape")
        return types.SimpleNamespace(status=process.returncode, out=out, err=err, json=lambda: json.loads(out))

    def expect(self, args, status=0, out="", err="", **options):
        """Runs a command. out: its output; err: how its only message begins, a pattern. None: anything."""
        args = args.split() if isinstance(args, str) else args
        result = self.vastra(*args, **options)
        with self.subTest(args):
            self.assertEqual(status, result.status, result.err)
            self.assertIn(out.encode() if isinstance(out, str) else out, [None, result.out])
            if err is not None:
                self.assertRegex(result.err, r"\A%s\Z" % (err and r"(\S+ )?vastra: " + err + r"[^\n]*\n"))
        return result

    def on_terminal(self, *args, output=False, **environment):
        """What args show on a terminal, as standard error, or as standard output too."""
        command = shlex.join([VASTRA, *args]) + ("" if output else " >/dev/null")
        script = subprocess.run(["script", "-qec", command, "/dev/null"], cwd=self.folder, timeout=60,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                env={**self.environment(), "TERM": "xterm", **environment})
        return script.stdout.decode(errors="surrogateescape")

    def until(self, value, expected=True):
        """Waits until value returns what is expected."""
        end = time.monotonic() + 60
        while (now := value()) != expected and time.monotonic() < end:
            time.sleep(.02)
        self.assertEqual(expected, now)

    def write(self, name, content):
        """Writes bytes, a text or a tree as JSON; returns the name."""
        content = json.dumps(content) if isinstance(content, dict) else content
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

    def rows(self, folder="logs"):
        """The rows of all text copies in the folder, without their times."""
        return [row.split(",")[1:] for name in sorted(os.listdir(self.path(folder))) if name.endswith(".csv")
                for row in self.read(os.path.join(folder, name)).decode().splitlines()[1:]]


def log(names, samples):
    """The bytes of a binary log. A sample is its second, and its values."""
    parts = [struct.pack("<IIiiIBH", 0x2C0F0781, 0, *[(samples or [(0,)])[i][0] for i in (0, -1)], 0, 0, len(names)),
             *(bytes([len(name.encode(errors="surrogateescape"))]) + name.encode(errors="surrogateescape") for name in names), struct.pack("<I", len(samples))]
    parts += [struct.pack("<H%df" % len(values), len(values), *values) for _, *values in samples]
    parts += [struct.pack("<H", len(samples)), *(struct.pack("<iHhhH", time, 0, 0, 0, 0) for time, *_ in samples),
              struct.pack("<I", 0)]
    return b"".join(parts)


def simulated(outputs=(), waveforms="counter", names=("x",), driver={}, input={}, **more):
    """A configuration that reads the simulator."""
    node = {"nodeName": "N", "driver": {"plcType": 9001, "text1": waveforms, **driver}, "varNames": list(names)}
    return {"input": {"scanPeriod": 10, "plcNodes": [node], **input}, "outputs": list(outputs), **more}


def replayed(files, outputs=(), **more):
    """A configuration that replays logs as fast as possible."""
    return {"input": {"simulating": 1, "asFastAsPossible": 1, "inputFiles": files}, "outputs": list(outputs), **more}


def output(directory, names=("x",), **more):
    return {"enableText": "WriteToLog = 1;", "varNames": list(names), "saveRp": 1, "directory": directory, **more}
