"""The claim on loggers that are left alone: three services under a small manager, and all that happens to them."""
import json
import mmap
import os
import random
import struct
import time

from device import Device
from disks import account, fill, mount_memory, unmount
from kills import compare
from logger import Logger, shim
from logs import Failed, NotRun
from supervisor import Service

COUNT, WATCHDOG = 3, 3
BAD = ['{"input": ', '{"inputs": {}}', '{"outputs": [{"saveRp": 1, "varNames": ["None"], "directory": "/nowhere"}]}']


class Soaked(Logger):
    """A logger that is a service on a disk of its own, with a clock of its own."""

    def __init__(self, work, name, environment):
        disk, steps = os.path.join(work, name), os.path.join(work, name + ".steps")
        with open(steps, "wb") as file:
            file.write(bytes(8))
        with open(steps, "r+b") as file:
            self.steps = mmap.mmap(file.fileno(), 8)
        try:
            mount_memory(disk, "size=32m")
            self.mounted = True
        except NotRun:
            self.mounted = False
        super().__init__(os.path.join(work, name), Device(), period=10, samples=50)
        with open(self.path()) as file:
            self.configuration = json.load(file)
        self.service = Service([os.environ["VASTRA"], "run", "logger", "--service", "--retry", "--json"], self.work, WATCHDOG,
                               {**self.environment, **environment, "SHIM_STEPS": steps})
        self.kept, self.stopped = {}, 0

    def path(self):
        return os.path.join(self.work, "logger.json")

    def run(self, errors):
        self.service.options.update(stdout=-1, stderr=errors)
        return self.service.start().process

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
        moment, starved = time.monotonic(), self.service.starved
        while self.process.poll() is None and time.monotonic() < moment + 10 * WATCHDOG:
            time.sleep(0.01)
        if self.service.starved != starved + 1:
            raise Failed("the watchdog did not find a dead loop")
        self.device.settle()
        self.kept.update({row: moment - then for row, then in self.device.kept_before(self.first, moment)})
        self.revive()

    def finish(self, chance=None):
        """A stop, after which the account of the run agrees with the logs."""
        counts, merged = self.stop(), {}
        for entry in counts["ledger"]:  # an output that a reload has opened again has several
            old = merged.setdefault(entry["name"], entry)
            if old is not entry:
                old.update({key: old[key] + value for key, value in entry.items() if isinstance(value, int)})
        account(self, {"ledger": list(merged.values())})
        self.kept.update({row: 1 for row in range(self.first, self.device.count() + 1)})
        self.stopped += 1

    def restarted(self, chance):
        self.finish()
        self.revive()

    def reloaded(self, chance):
        """Five times, good and bad, with the rows going on."""
        for _ in range(5):
            good = chance.random() < 0.6
            self.configuration["input"]["scanPeriod"] = chance.choice([5, 10, 20])
            self.configuration["outputs"][0]["maxSamples"] = self.samples + chance.randrange(3)
            text = json.dumps(self.configuration) if good else chance.choice(BAD)
            with open(self.path() + ".new", "w") as file:
                file.write(text)
            os.rename(self.path() + ".new", self.path())
            before = self.said().count(": reloaded")
            if not self.service.reload():
                raise Failed("a reload did not end: %s" % self.messages())
            self.more_rows(2)
            if (self.said().count(": reloaded") == before + 1) != good:
                raise Failed("reload of %s: %s" % (text, self.messages()))
        with open(self.path(), "w") as file:
            json.dump(self.configuration, file)

    def said(self):
        self.errors.seek(0)
        return self.errors.read()

    def rows(self, in_order=True):
        return super().rows(in_order=False)  # the clock is set

    def stepped(self, chance):
        self.steps[:] = struct.pack("<q", chance.randrange(-7200, 7200))
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


EVENTS = ("killed", "reloaded", "stepped", "hung", "restarted", "filled")


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
