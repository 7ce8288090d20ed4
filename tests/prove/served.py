"""The logger under test as a service that is reloaded."""
import json
import os
import time

from logger import Logger
from logs import Failed
from supervisor import Service

SYNTAX = ('{"input": ', '{"inputs": {}}')  # of configurations that are refused


class Served(Logger):
    """A logger under the small manager. watchdog: in seconds."""

    def __init__(self, work, device, watchdog=3, options=("--retry",), environment={}, **settings):
        super().__init__(work, device, options=options, environment=environment, **settings)
        self.service = Service([os.environ["VASTRA"], "run", "logger", "--service", "--json", *self.options], self.work,
                               watchdog, self.environment)
        with open(self.path()) as file:
            self.configuration = json.load(file)

    def path(self):
        return os.path.join(self.work, "logger.json")

    def run(self, errors):
        self.service.options.update(stdout=-1, stderr=errors)
        return self.service.start().process

    def write(self, text):
        with open(self.path() + ".new", "w") as file:
            file.write(text)
        os.rename(self.path() + ".new", self.path())

    def reload(self, configuration, good):
        """Reloads a configuration or a text. Failed if that ends otherwise than it should."""
        text = configuration if isinstance(configuration, str) else json.dumps(configuration)
        self.write(text)
        before, ends = self.said(), (": reloaded", ": not reloaded")
        came, until = self.service.reload(), time.monotonic() + 60
        while came and time.monotonic() < until and all(self.said().count(end) == before.count(end) for end in ends):
            time.sleep(0.001)  # the lines are written by a thread of their own
        if not came or self.said().count(ends[not good]) != before.count(ends[not good]) + 1:
            raise Failed("reload of %s: %s" % (text, self.messages()))

    def stop(self):
        """The accounts are merged by name: an output that a reload has opened again can have several."""
        counts, merged = super().stop(), {}
        for entry in counts["ledger"]:
            old = merged.setdefault(entry["name"], entry)
            if old is not entry:
                old.update({key: old[key] + value for key, value in entry.items() if isinstance(value, int)})
        if self.service.starved:
            raise Failed("the watchdog was not fed: %s" % self.last)
        return {**counts, "ledger": list(merged.values())}
