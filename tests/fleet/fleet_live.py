#!/usr/bin/env python3
"""Live values: what the loggers of a node do is seen from elsewhere, through real servers, a real shipper and a real
watch. Feeds and messages that nobody of good will makes cost nothing but themselves."""
import json
import os
import pathlib
import socket
import statistics
import subprocess
import sys
import tempfile
import time
import unittest

from fleet_parts import BIN, Client, Fleet, Process, wait

os.environ.setdefault("VASTRA", str(BIN / "vastra"))
sys.path.append(str(pathlib.Path(__file__).parent.parent / "host"))
from commands import log, output, simulated  # noqa: E402
from fake_feed import HELLO, STATE, FakeFeed, lines  # noqa: E402

FAR = "plant.gw.kiln"
PATIENCE = 60  # seconds: a machine full of tests may be slow
TIMED = "FLEET_TIMES" in os.environ  # measures, too: on a machine that does nothing else
JUNK = 30_000 if TIMED else 100  # files that are not logs: a walk through many takes a while


class LiveTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vl-")  # short: the path of a socket has at most 107 bytes
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.fleet = Fleet(cls.folder / "f", 1)
        cls.addClassCleanup(cls.fleet.end)
        cls.logs, cls.feeds = cls.fleet.add_node("gw"), cls.folder / "feeds"
        (cls.feeds / "kiln").mkdir(parents=True)
        (cls.logs / "junk").mkdir()
        for i in range(JUNK):
            (cls.logs / "junk" / f"{i}.txt").touch()
        cls.fleet.start_archive()
        cls.fleet.start_shipper("gw", "--feeds", cls.feeds)
        cls.watch("feeds", "--feeds", cls.folder / "far")
        cls.lines = cls.watch("lines")

    @classmethod
    def watch(cls, name, *options):
        watch = Process([BIN / "vastra-fleet", "watch", "--server", cls.fleet.cluster.url, *options], cls.folder / f"{name}.log")
        cls.addClassCleanup(lambda: watch.kill(15))
        return watch

    def run_logger(self):
        """A logger whose counter is the number of its sample."""
        (self.folder / "kiln.json").write_text(json.dumps(simulated(
            [output(str(self.logs), maxSamples=50)], names=("x", "y"), waveforms="counter,sine", variables={"x": {"unit": "bar"}})))
        logger = Process([BIN / "vastra", "run", self.folder / "kiln.json", "--feed", self.feeds / "kiln/feed", "--quiet"],
                         self.folder / "kiln.log")
        self.addCleanup(lambda: logger.is_up() and logger.kill(15))
        wait(lambda: (self.feeds / "kiln/feed").exists() or not logger.is_up(), PATIENCE, "the feed")
        self.assertTrue(logger.is_up(), logger.text())
        return logger

    def listen(self):
        client = Client(self.fleet.cluster.ports[0])
        client.listen("vastra.live.>")
        self.addCleanup(client.lines.close)
        self.addCleanup(client.socket.close)
        return client

    def next(self, client, logger="kiln", key="live"):
        """The next message about a logger that has this key."""
        while True:
            found, data = client.take()
            if found == "vastra.live.plant.gw." + logger and key in (message := json.loads(data)):
                return message

    def status(self):
        done = subprocess.run([BIN / "vastra", "status", FAR, "--json", "--dir", self.folder / "far"], capture_output=True, timeout=30)
        return json.loads(done.stdout)[0]

    def read_feed(self, path, request):
        feed = socket.socket(socket.AF_UNIX)
        self.addCleanup(feed.close)
        feed.settimeout(30)
        feed.connect(str(path))
        feed.sendall(json.dumps(request).encode() + b"\n")
        return map(json.loads, feed.makefile())

    def samples(self, path, count, request):
        found = {}
        for line in self.read_feed(path, {"want": ["sample"], **request}):
            if line["type"] == "sample":
                found[line["number"]] = line
            if len(found) >= count:
                return found

    def test_what_a_logger_does_is_seen_and_that_it_ends(self):
        client = self.listen()
        logger = self.run_logger()
        message, begin = self.next(client, key="hello"), time.monotonic()
        self.assertEqual([{"variable": "x", "unit": "bar"}], message["hello"]["units"])
        messages = hellos = seen = 0
        while messages < 11 or seen < 5:  # a busy machine may send the sample and the counts in turn
            message = self.next(client)
            messages += 1
            hellos += "hello" in message
            if {"sample", "counts"} <= message.keys():
                self.assertEqual(message["sample"]["number"], message["sample"]["values"][0])
                self.assertAlmostEqual(message["counts"]["read"], message["sample"]["number"], delta=1000)
                seen += 1
            self.assertLess(messages, 100)
        self.assertIn(hellos, range(1, messages))  # every ten seconds
        self.assertGreater(time.monotonic() - begin, messages / 2)  # one a second, at most
        logger.kill(15)
        self.assertEqual("stopped", self.next(client, key="ended")["state"]["state"])
        wait(lambda: "plant/gw/kiln: gone" in self.lines.text(), PATIENCE, "the end is shown")
        self.assertRegex(self.lines.text(), r"plant/gw/kiln: running, sample \d+ s old, read \d+, late \d+, lost 0\n")

    def test_a_distant_feed_is_that_of_the_logger(self):
        logger = self.run_logger()
        far = self.folder / "far" / FAR / "feed"
        wait(lambda: far.exists() and self.status()["up"], PATIENCE, "the distant feed")
        status = self.status()
        self.assertEqual(("running", logger.process.pid, 10), (status["state"], status["pid"], status["period"]))
        hello = next(self.read_feed(far, {"want": ["sample"]}))
        self.assertEqual(["plant/gw:" + str(self.logs)], [one["folder"] for one in hello["stages"]["outputs"]])
        near = self.samples(self.feeds / "kiln/feed", 1, {})
        first, = near
        parts = {request: self.samples(far, 3, json.loads(request)) for request in ("{}", '{"vars": ["none", "y", "x"]}')}
        for request, found in parts.items():
            self.assertGreater(min(found), first - 1000)
            for number, line in found.items():
                values = line["values"] if request == "{}" else [line["values"][2], line["values"][1]]
                self.assertEqual(number, values[0])
                self.assertEqual(line, found[number] if request == "{}" else {**line, "values": [None, *values[::-1]]})
        logger.kill(9)
        wait(lambda: not self.status()["up"], PATIENCE, "the distant feed says that the logger has gone")
        self.assertIn("gone since", self.status()["problems"][0])

    def test_a_log_is_in_the_archive_as_soon_as_it_is_closed(self):
        self.run_logger()
        there = self.fleet.archive_folder / "plant/gw/logs"
        begin, delays = time.time(), {}

        def see():
            for path in self.logs.glob("*.rph"):
                closed = path.stat().st_mtime
                if path.name not in delays and closed > begin and (there / path.name).exists():
                    delays[path.name] = time.time() - closed
            return len(delays) >= (20 if TIMED else 5)
        wait(see, PATIENCE, "closed logs are in the archive")
        if TIMED:
            self.assertLess(statistics.median(delays.values()), 1.5, delays)
            print(f"live: median of {len(delays)} logs {statistics.median(delays.values()):.2f} s")

    def test_bad_feeds_cost_only_themselves(self):
        secret = self.folder / "f/nodes/gw/secret.rph"
        secret.write_bytes(log(["x"], [(1, 2), (2, 3)]))
        (self.logs / "link").symlink_to(secret.parent)
        closed = [{"type": "log", "event": "closed", "path": str(path)} for path in
                  (secret, self.logs / "link/secret.rph", self.logs, "", "/", "x" * 5000)]

        def flood():
            yield lines(HELLO)
            while True:
                yield lines(STATE, *closed) * 100
        sample = {"type": "sample", "number": 1, "time": [1, 0, 0, 0], "values": [0.125] * 100_000}
        for name, parts, more in (("flood", flood, {}), ("mute", b"", {}), ("full", b"", {"accepts": False}), ("huge", lines(HELLO, STATE, sample), {}),
                                  ("none", b"{]\n", {}), ("long", b"x" * (5 << 20), {})):
            FakeFeed(str(self.feeds / name / "feed"), parts, **more)
        client = self.listen()
        self.run_logger()
        self.next(client)
        for _ in range(5):
            self.next(client)
        self.assertNotIn("sample", self.next(client, "huge", "state"))
        wait(lambda: '"sample" of its feed has more than 512 KiB' in self.fleet.shippers["gw"].text(), PATIENCE, "a line about the huge sample")
        (self.logs / "late.rph").write_bytes(b"no log")
        wait(lambda: (self.fleet.archive_folder / "plant/gw/logs/late.rph").exists(), 60, "a file is shipped")
        self.assertEqual([], list(self.fleet.archive_folder.rglob("*secret*")))

    def test_bad_messages_cost_only_themselves(self):
        client, live = Client(self.fleet.cluster.ports[0]), "vastra.live.plant.evil."
        self.addCleanup(client.socket.close)
        self.addCleanup(client.lines.close)
        hello = json.dumps(HELLO)
        for name, data in (("a", "{"), ("b", '{"live":2}'), ("c", '{"live":1,"hello":%s}' % json.dumps(STATE)), ("d", "[" * 100_000),
                           ("=2E=2E=2F=2E=2E=2Fx", '{"live":1,"hello":%s}' % hello), ("=2Ex", '{"live":1,"hello":%s}' % hello),
                           ("e=0A", '{"live":1,"hello":%s}' % hello), ("F" * 250, '{"live":1,"hello":%s}' % hello),
                           ("g", '{"live":1,"hello":%s,\n"state":%s}' % (hello.replace(",", ",\n"), json.dumps(STATE)))):
            client.publish(live + name, data.encode())
        far = self.folder / "far"
        wait((far / "plant.evil.g/feed").exists, PATIENCE, "the one that is right has a feed")
        found = self.read_feed(far / "plant.evil.g/feed", {"want": ["state"]})
        self.assertEqual(["hello", "state"], [next(found)["type"] for _ in range(2)])
        self.assertEqual(["plant.evil.g"], [one.name for one in far.iterdir() if "evil" in one.name])
        self.assertFalse([one for one in self.folder.iterdir() if one.name == "x"])


if __name__ == "__main__":
    unittest.main()
