"""The claim on loggers that are left alone: three services under a small manager, and all that happens to them."""
import json
import mmap
import os
import random
import struct
import threading
import time

from device import Device
from disks import account, fill, mount_memory, unmount
from kills import compare
from logger import shim
from logs import Failed, NotRun
from served import SYNTAX, Served

COUNT, WATCHDOG = 3, 3
BAD = [*SYNTAX, '{"outputs": [{"saveRp": 1, "varNames": ["None"], "directory": "/nowhere"}]}']


class Soaked(Served):
    """A logger on a disk of its own, with a clock of its own."""

    def __init__(self, work, name, environment):
        disk, steps = os.path.join(work, name), os.path.join(work, name + ".steps")
        with open(steps, "wb") as file:
            file.write(bytes(16))
        with open(steps, "r+b") as file:
            self.steps = mmap.mmap(file.fileno(), 16)
        try:
            mount_memory(disk, "size=32m")
            self.mounted = True
        except NotRun:
            self.mounted = False
        super().__init__(os.path.join(work, name), Device(), WATCHDOG, environment={**environment, "SHIM_STEPS": steps},
                         period=10, samples=50)
        self.kept, self.stopped = {}, 0

    def revive(self):
        self.start()
        self.wait_for_rows()
        if not self.service.wait_for("READY") or self.service.said[0] != "READY=1":
            raise Failed("not ready first: %s" % self.service.said)

    def killed(self, chance):
        self.kept.update(self.kill())
        self.revive()

    def hung(self, chance):
        """The loop is dead: the watchdog finds it."""
        self.process.send_signal(19)
        moment = time.monotonic()
        while self.process.poll() is None and time.monotonic() < moment + 10 * WATCHDOG:
            time.sleep(0.01)
        if self.service.starved != 1:
            raise Failed("the watchdog did not find a dead loop")
        self.service.starved = 0
        self.device.settle()
        self.kept.update({row: moment - then for row, then in self.device.kept_before(self.first, moment)})
        self.revive()

    def finish(self, chance=None):
        """A stop, after which the account of the run agrees with the logs."""
        account(self, self.stop())
        self.kept.update({row: 1 for row in range(self.first, self.device.count() + 1)})
        self.stopped += 1

    def restarted(self, chance):
        self.finish()
        self.revive()

    def reloaded(self, chance):
        """Five times, good and bad, with the rows going on."""
        for _ in range(5):
            self.configuration["input"]["scanPeriod"] = chance.choice([5, 10, 20])
            self.configuration["outputs"][0]["maxSamples"] = self.samples + chance.randrange(3)
            good = chance.random() < 0.6
            self.reload(self.configuration if good else chance.choice(BAD), good)
            self.more_rows(2)
        self.write(json.dumps(self.configuration))

    def rows(self, in_order=True):
        return super().rows(in_order=False)  # the clock is set

    def stepped(self, chance):
        self.steps[:8] = struct.pack("<q", chance.randrange(-7200, 7200))
        self.more_rows(20)

    def filled(self, chance):
        """A disk that is full for 200 rows, and then has space until all is saved."""
        if not self.mounted:
            return
        ballast = os.path.join(self.work, "ballast")
        goal = self.device.count() + 200
        while self.device.count() < goal:
            fill(ballast)
            self.more_rows(10)
        os.remove(ballast)
        self.restarted(chance)


    def gone(self, chance):
        """The device is away for a while, perhaps also when the logger starts."""
        self.device.go()
        time.sleep(chance.uniform(0, 1))
        if chance.random() < 0.5:
            self.finish()
            self.start()
            time.sleep(chance.uniform(0, 1))
        self.device.come()
        self.more_rows(5)

    def stuck(self, chance):
        """A disk with a sync that takes longer than the time of the watchdog: at a stop, or at a start that recovers rows."""
        stops = chance.random() < 0.5
        if not stops:
            self.kept.update(self.kill())
        self.steps[8:] = struct.pack("<q", 1000 * (WATCHDOG + 1))
        threading.Timer(2, self.steps.__setitem__, (slice(8, 16), bytes(8))).start()
        if stops:
            self.finish()
        self.revive()


EVENTS = ("killed", "reloaded", "stepped", "hung", "restarted", "filled", "gone", "stuck")


def soak(run):
    chance, environment = random.Random(run.seed), shim(run.work)
    loggers = [Soaked(run.work, "logger%d" % number, environment) for number in range(COUNT)]
    for logger in loggers:
        logger.revive()
    for number in range(run.count):
        event = EVENTS[number % len(EVENTS)] if number < len(EVENTS) else chance.choice(EVENTS)
        logger = chance.choice(loggers)
        getattr(logger, event)(chance)
        time.sleep(chance.uniform(0, 0.2))
    oldest = []
    for logger in loggers:
        logger.finish()
        oldest.append(compare(logger, logger.kept, run.slack))
        if logger.mounted:
            unmount(logger.work)
    return "%d events, %d rows kept, %s; %d accounts agree with the logs" % (
        run.count, sum(len(logger.kept) for logger in loggers), max(oldest), sum(logger.stopped for logger in loggers))
