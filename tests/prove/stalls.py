"""The claim that nobody has to read what a run says."""
import os
import pty
import random
import signal
import termios
import time

from device import Device
from logger import FORMS, Logger
from logs import Failed


class Reader:
    """Reads standard error up to a moment and then stalls: leaves a pipe unread, holds a terminal by XOFF or leaves it
    unread, or closes its end."""

    def __init__(self, kind):
        self.kind, self.seen = kind, b""
        self.ours, self.theirs = pty.openpty() if kind.startswith("terminal") else os.pipe()
        os.set_blocking(self.ours, False)

    def read_for(self, seconds):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            try:
                self.seen += os.read(self.ours, 65536)
            except BlockingIOError:
                time.sleep(0.005)
            except OSError:  # the terminal has no writer any more
                return

    def stall(self):
        if self.kind.endswith("closed"):
            os.close(self.ours)
        if self.kind == "terminal held":
            termios.tcflow(self.theirs, termios.TCOOFF)

    def go_on(self, seconds):
        if self.kind == "terminal held":
            termios.tcflow(self.theirs, termios.TCOON)
        self.read_for(seconds)


KINDS = ["pipe unread", "pipe closed", "terminal unread", "terminal held", "terminal closed"]
LONGEST = 1.5  # seconds from SIGTERM to the end: the stop itself, and no wait for the reader


def stalls(run):
    """A run that says much, with readers that stall at a random moment. Some of them go on again, and find the number of
    lines that are missing."""
    chance, late, scans, longest, told = random.Random(run.seed), 0, 0, 0, 0
    logger = Logger(run.work, Device(), period=10, samples=20, options=("--debug",))
    for number in range(run.count):
        kind = KINDS[number % len(KINDS)]
        goes_on = number % (2 * len(KINDS)) >= len(KINDS) and not kind.endswith("closed")
        reader = Reader(kind)
        logger.start(reader.theirs)
        reader.read_for(chance.uniform(0.1, 0.5))
        logger.wait_for_rows()
        reader.stall()
        logger.more_rows(300 if goes_on else 50)  # 300: more lines than the queue holds
        if goes_on:
            reader.go_on(1)
            told += b" lines dropped" in reader.seen
        begin = time.monotonic()
        logger.process.send_signal(signal.SIGTERM)
        counts = logger.stop()
        longest = max(longest, time.monotonic() - begin)
        late, scans = late + counts["late"], scans + counts["read"] + counts["failedReads"]
        if counts["read"] != logger.device.count() - logger.first + 1:
            raise Failed("%s: %d of %d rows were read" % (kind, counts["read"], logger.device.count() - logger.first + 1))
    rows = logger.rows()[FORMS[0]]
    if rows != list(range(1, logger.device.count() + 1)):
        raise Failed("%d of %d rows are in the logs" % (len(rows), logger.device.count()))
    seen = "%d stalls, %d scans, %d late, the longest stop %d ms; %d readers that went on found the lines counted" % (
        run.count, scans, late, 1000 * longest, told)
    if longest > LONGEST + 10 * run.slack or late > scans * run.slack / 5 or not told and run.count > len(KINDS):
        raise Failed(seen)
    return seen
