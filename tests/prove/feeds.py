"""The claim that no reader of a feed disturbs the logger or the other readers. The readers are a process of their own."""
import glob
import json
import os
import random
import resource
import selectors
import socket
import subprocess
import sys
import time

from device import Device
from logger import FORMS, Logger, start_process
from logs import Failed

GOOD, STALL, HELD = 64, 10, 40 << 20  # readers, seconds, bytes of growth
HALF = b'{"want": ["sam'


class Reader:
    """One connection. A good one checks each line; the others do what their kind says."""

    def __init__(self, kind):
        self.kind, self.input, self.seen = kind, b"", {"sample": 0, "message": 0}
        self.lines, self.last, self.got = 0, "", {"sample": 0, "message": 0, "missed": 0}  # how many lines
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.setblocking(False)
        self.born = time.monotonic()
        while True:
            try:
                self.socket.connect("feed")
                break
            except BlockingIOError:  # the queue is full
                time.sleep(0.001)
        if kind == "good":
            self.send(b'{"interval": 50}\n')
        elif kind == "stall":
            self.send(json.dumps({"interval": 50, "vars": ["Row"] * 5000}).encode() + b"\n")

    def send(self, data):
        try:
            self.socket.send(data)
        except OSError:
            pass  # the queue is full, or the logger has closed the connection

    def receive(self):
        """False at the end of the connection."""
        try:
            data = self.socket.recv(1 << 16)
        except BlockingIOError:
            return True
        except OSError:
            return False
        *lines, self.input = (self.input + data).split(b"\n")
        for line in lines:
            self.take(json.loads(line))
        return data != b""

    def take(self, line):
        kind = self.last = line["type"]
        self.lines += 1
        if self.lines == 1 and kind not in ("hello", "error"):
            raise Failed("the first line is %s" % kind)
        if self.kind != "good":
            return
        if kind == "error":
            raise Failed("a good reader gets %s" % line)
        if kind == "dropped":
            self.seen["message"] += line.get("messages", 0)
            self.got["missed"] += line.get("messages", 0)
        if kind == "sample" and not self.seen[kind] < line["number"] == line["values"][0] - self.offset:
            raise Failed("sample %d with row %d follows %d" % (line["number"], line["values"][0], self.seen[kind]))
        if kind == "message" and line["number"] != self.seen[kind] + 1:
            raise Failed("message %d follows %d" % (line["number"], self.seen[kind]))
        if kind in self.seen:
            self.seen[kind] = line["number"]
        if kind in self.got:
            self.got[kind] += 1


MARK = b"FEED_OF="  # in the environment of the logger


def in_proc(mark):
    """The folder in /proc of the process with mark (bytes) in its environment. /proc can have other numbers than the name
    space."""
    for process in glob.glob("/proc/[0-9]*"):
        try:
            with open(process + "/environ", "rb") as file:
                if mark in file.read().split(b"\0"):
                    return process
        except OSError:  # it has ended
            pass
    raise Failed("there is no process of " + mark.decode())


class Crowd:
    def __init__(self, chance):
        self.chance, self.process, self.ended, self.refused, self.dropped = chance, in_proc(MARK + os.getcwd().encode()), 0, 0, []
        self.selector, self.readers, self.peak = selectors.DefaultSelector(), [], 0
        self.first = self.memory()

    def memory(self):
        with open(self.process + "/statm") as file:
            return int(file.read().split()[1]) * resource.getpagesize()

    def add(self, kind):
        reader = Reader(kind)
        self.readers.append(reader)
        if kind != "stall":
            self.selector.register(reader.socket, selectors.EVENT_READ, reader)

    def remove(self, reader):
        if reader.kind != "stall":
            self.selector.unregister(reader.socket)
        reader.socket.close()
        self.readers.remove(reader)

    def serve(self, seconds):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            for key, _ in self.selector.select(0.02):
                if not key.data.receive():
                    if key.data.kind == "good":
                        raise Failed("a good reader is dropped")
                    self.refused += key.data.last == "error"
                    self.remove(key.data)
            self.peak = max(self.peak, self.memory() - self.first)

    def storm(self, many):
        """Many connections at once, beside the good readers, that all are refused."""
        for _ in range(many):
            self.add("swarm")
        until = time.monotonic() + 30
        while len(self.readers) > GOOD and time.monotonic() < until:
            self.serve(0.1)
        if self.refused != many:
            raise Failed("%d of %d connections are refused" % (self.refused, many))

    def disturb(self):
        """What each reader that is not good does now."""
        for reader in list(self.readers):
            if reader.kind == "flood":
                reader.send(b'{"interval": 50, "vars": ["No"]}\n' * 500)
            elif reader.kind == "half" and self.chance.random() < 0.1:
                self.remove(reader)
            elif reader.kind == "stall" and self.hung_up(reader):
                if b"error" not in reader.socket.recv(100):  # else all places were taken
                    self.dropped.append(time.monotonic() - reader.born)
                self.remove(reader)
        kinds = [reader.kind for reader in self.readers]
        for kind, many in (("stall", 4), ("flood", 4), ("half", 4)):
            for _ in range(many - kinds.count(kind)):
                self.add(kind)
                self.readers[-1].send(HALF if kind == "half" else b"")
        for text in (b"\xff\0\n", b"x" * 70000, b"[]\n" * 1000, HALF + b"\n"):
            self.add("bad")
            self.readers[-1].send(text)
        for _ in range(4):
            Reader("gone").socket.close()

    @staticmethod
    def hung_up(reader):
        poll = selectors.select.poll()
        poll.register(reader.socket, selectors.select.POLLRDHUP)
        return bool(poll.poll(0))


def say(value):
    print(json.dumps(value), flush=True)


def crowd(seconds, seed, first):
    """The process of the readers."""
    os.nice(10)  # what is tested is the feed, and not who gets the processor
    resource.setrlimit(resource.RLIMIT_NOFILE, (4096,) * 2)
    Reader.offset = first - 1
    crowd = Crowd(random.Random(seed))
    for _ in range(GOOD):
        crowd.add("good")
    crowd.serve(seconds / 4)
    crowd.storm(1000 if seconds > STALL else 100)
    for reader in crowd.readers[GOOD // 2:]:
        crowd.remove(reader)
    end = time.monotonic() + seconds * 3 / 4
    while time.monotonic() < end:
        crowd.disturb()
        crowd.serve(0.2)
    for reader in [reader for reader in crowd.readers if reader.kind != "good"]:
        crowd.remove(reader)
    say("ready")
    good = list(crowd.readers)
    while crowd.readers:  # the logger is stopped
        for key, _ in crowd.selector.select(60) or sys.exit("the feed does not end"):
            if not key.data.receive():
                if key.data.last == "error":
                    raise Failed("a good reader is refused")
                crowd.ended += 1
                crowd.remove(key.data)
    say({"ended": crowd.ended, "refused": crowd.refused, "peak": crowd.peak, "dropped": crowd.dropped,
         **{kind: [reader.got[kind] for reader in good] for kind in good[0].got}})


def disturbed(run, logger):
    """A run with readers. Returns what they have seen, and the counts of the run."""
    with open(os.path.join(run.work, "logger.json"), "rb") as file:
        before = file.read()
    readers = start_process([sys.executable, os.path.abspath(__file__), str(run.count), str(run.seed), str(logger.first)],
                            cwd=run.work, stdout=subprocess.PIPE, text=True)
    ready = readers.stdout.readline()
    counts = logger.stop()
    out, _ = readers.communicate(timeout=60)
    with open(os.path.join(run.work, "logger.json"), "rb") as file:
        if readers.returncode or not ready or file.read() != before:
            raise Failed("the readers end with %s: %s" % (readers.returncode, out))
    return json.loads(out), counts


def feed(run):
    """count: seconds with readers, after a third of them without."""
    logger = Logger(run.work, Device(), period=10, samples=20, options=("--feed", "feed", "--debug"),
                    environment={MARK.decode()[:-1]: run.work})
    logger.start()
    logger.wait_for_rows()
    time.sleep(run.count / 3)
    quiet = logger.stop()
    logger.start()
    logger.wait_for_rows()
    seen, counts = disturbed(run, logger)
    rows = logger.rows()[FORMS[0]]
    if rows != list(range(1, logger.device.count() + 1)) or counts["failedReads"]:
        raise Failed("%d of %d rows are in the logs" % (len(rows), logger.device.count()))
    after = "%.1f to %.1f s" % (min(seen["dropped"]), max(seen["dropped"])) if seen["dropped"] else "10 s"
    text = "%d scans, %d late (without readers %d of %d); each of %d good readers got at least %d samples and %d messages, %d " \
        "were marked as missing; %d readers refused, %d stalled ones dropped after %s, %.1f MB of memory" % (
            counts["read"], counts["late"], quiet["late"], quiet["read"], seen["ended"], min(seen["sample"]),
            min(seen["message"]), sum(seen["missed"]), seen["refused"], len(seen["dropped"]), after, seen["peak"] / 1e6)
    is_long = run.count >= 4 * STALL  # no moment is compared in the short form: the machine can have other work
    late = is_long and counts["late"] / counts["read"] > quiet["late"] / quiet["read"] + run.slack / 5
    stalled = is_long and not seen["dropped"] or any(one < STALL for one in seen["dropped"])
    if late or stalled or seen["ended"] != GOOD // 2 or seen["peak"] > HELD or not all(seen["message"] + seen["sample"]):
        raise Failed(text)
    return text


if __name__ == "__main__":
    crowd(float(sys.argv[1]), *map(int, sys.argv[2:]))
