"""vastra status, messages and watch --attach: readers of feeds, with loggers that are well, ill, gone or hostile."""
import itertools
import os
import pty
import re
import signal
import socket
import subprocess
import time

from commands import CommandTest, output, simulated
from fake_feed import COUNTS, FakeFeed, HELLO, LEDGER, MESSAGE, NOW, STATE, WELL, lines

EVIL = "x\x1b[2J\n\\\"\x9b"
LOSS = {"cause": "No space left on device", "rows": 3, "first": NOW, "last": NOW}


def repeat(part, pause=0.0):
    return lambda: (time.sleep(pause) or part for _ in itertools.count())


# What a peer does, and what status says of it.
HOSTILE = {
    "stall": ({"parts": b""}, "the logger has not answered for 2 seconds"),
    "full": ({"parts": b"", "accepts": False}, "the logger has not answered for 2 seconds"),
    "silent": ({"parts": lines(HELLO)}, "the logger has not answered for 2 seconds"),
    "drip": ({"parts": repeat(b" ", .05)}, "the logger has not answered for 2 seconds"),
    "flood": ({"parts": lambda: itertools.chain([lines(HELLO)], itertools.repeat(b'{"type":"later","a":"%s"}\n' % (b"9" * 9999)))}, "the logger has not answered.*"),
    "huge": ({"parts": lambda: itertools.chain([lines(HELLO)], itertools.repeat(b"9" * 65536))}, "a line of the feed is longer than 4 MiB"),
    "cut": ({"parts": WELL[:len(lines(HELLO)) + 9], "closes": True}, "the logger has closed the connection"),
    "shut": ({"parts": b"", "closes": True}, "the logger has closed the connection"),
    "garbage": ({"parts": bytes(range(256)) * 9}, "a line is not one of a feed: not valid JSON.*"),
    "number": ({"parts": b"7\n"}, "a line is not one of a feed: not an object"),
    "deep": ({"parts": b"[" * 99999 + b"\n"}, "a line is not one of a feed: .*nested too deeply"),
    "other": ({"parts": lines({"type": "welcome"})}, "the first line is not the greeting of a logger"),
    "late": ({"parts": lines(STATE, HELLO)}, "the first line is not the greeting of a logger"),
    "two": ({"parts": lines({**HELLO, "feed": 2})}, "the feed has version 2, and this program reads version 1"),
    "none": ({"parts": lines({**HELLO, "feed": "1"})}, "the feed has version 0, and.*"),
    "refuses": ({"parts": lines({"type": "error", "text": "too many\x1b readers"})}, r"the logger refuses: too many\? readers"),
    "packets": ({"parts": b"", "kind": socket.SOCK_SEQPACKET}, "Protocol wrong type for socket"),
    "datagrams": ({"parts": b"", "kind": socket.SOCK_DGRAM}, "Protocol wrong type for socket"),
}

# Changes of a healthy logger's state and counts, and the problems that status then finds.
ILL = [
    ({}, {}, []),
    ({"lastSampleAge": 9.5}, {}, []),
    ({"lastSampleAge": 10.5}, {}, ["the last sample is 10 seconds old, more than 10 seconds"]),
    ({"lastSampleAge": "nan"}, {}, ["has read no sample yet"]),
    ({"lastSample": None, "lastSampleAge": None}, {}, ["has read no sample yet"]),
    ({"state": "waiting", "reason": "no such\ndevice"}, {}, ["is waiting: no such device"]),
    ({"state": "stopping"}, {}, ["is stopping"]),
    ({"nodes": [{"name": EVIL, "up": False, "reason": "Timeout"}, 7]}, {}, [
        "node x?[2J \\\"\x9b is away: Timeout".replace("\x9b", "?"), "node  is away"]),
    ({"writes": [{"name": "W", "up": False}]}, {}, ["node W is away for writing"]),
    ({"unsaved": [{"path": "/a.rph", "reason": "full"}]}, {}, ["not saved: /a.rph: full"]),
    ({}, {"ledger": [{**LEDGER, "lost": 4, "losses": [LOSS]}]}, ["1 row lost, All", "3 rows lost, All: No space left on device"]),
    ({}, {"ledger": [LEDGER, {**LEDGER, "kind": "summary", "lost": 1}]}, ["1 row lost, summaries[0]"]),
    ({"nodes": [{"up": False}] * 70}, {}, ["node  is away"] * 50 + ["and 20 more"]),
    ({"lastSample": "x", "lastSampleAge": [], "nodes": {}, "folders": 5, "since": [1]}, {"read": -1, "ledger": "x"}, ["has read no sample yet"]),
]


class FeedTest(CommandTest):
    def feed(self, name, parts, **options):
        feed = FakeFeed(self.path("run", name, "feed"), parts, **options)
        self.addCleanup(feed.stop)
        return feed

    def args(self, command):
        return [*(command.split() if isinstance(command, str) else command), "--dir", "run", "--etc", "etc"]

    def status(self, command="", status=1, err=""):
        return self.expect(self.args("status " + command), status, None, err)

    def metrics(self, text):
        """Parses strictly: family by family, each once, each series once, counters end in _total."""
        families, series, kind = [], {}, None
        for line in text.split("\n")[:-1]:
            if line.startswith("# HELP "):
                families.append(line.split(" ", 3)[2])
            elif line.startswith("# TYPE "):
                _, _, name, kind = line.split(" ")
                self.assertEqual(families[-1], name)
                self.assertEqual(kind == "counter", name.endswith("_total"))
            else:
                match = re.fullmatch(r'(\w+)(\{(?:[a-z]+="(?:[^"\\\n]|\\[\\"n])*",?)+\}) (\S+)', line)
                self.assertTrue(match, line)
                self.assertEqual((families[-1], True), (match[1], kind in ("counter", "gauge")))
                self.assertNotIn(match[1] + match[2], series)
                series[match[1] + match[2]] = float(match[3])
        self.assertEqual(len(families), len(set(families)))
        return series


class Status(FeedTest):
    def test_a_hostile_peer_is_a_problem_of_its_own_logger(self):
        for name, (options, _) in HOSTILE.items():
            self.feed(name, **options)
        self.feed("kiln", WELL)
        others = {"file": "feed is not a socket", "fifo": "feed is not a socket", "gone": "no logger runs here: Connection refused", "n" * 120: "longer than 107 bytes"}
        for name, problem in others.items():
            os.makedirs(self.path("run", name))
        self.write("run/file/feed", WELL)
        os.mkfifo(self.path("run/fifo/feed"))
        os.mkdir(self.path("run", "n" * 120, "feed"))
        with socket.socket(socket.AF_UNIX) as gone:
            gone.bind(self.path("run/gone/feed"))
        expected = {**{name: problem for name, (_, problem) in HOSTILE.items()}, **others, "kiln": None}
        loggers = self.status("--json").json()
        self.assertEqual(sorted(expected), [logger["name"] for logger in loggers])
        for logger in loggers:
            with self.subTest(logger["name"]):
                problem = expected[logger["name"]]
                self.assertEqual((problem is None,) * 2, (logger["up"], logger["well"]))
                self.assertRegex("|".join(logger["problems"]), problem and problem + r"\Z" or r"\A\Z")

    def test_each_thing_that_is_not_well_has_a_line(self):
        for i, (state, counts, _) in enumerate(ILL):
            self.feed("l%02d" % i, lines(HELLO, {**STATE, **state}, {**COUNTS, **counts}))
        self.feed("slow", lines({**HELLO, "period": 20000}, {**STATE, "lastSampleAge": 59}, COUNTS))
        loggers = self.status("--json").json()
        self.assertEqual([problems for _, _, problems in ILL] + [[]], [logger["problems"] for logger in loggers])
        self.assertEqual([not logger["problems"] for logger in loggers], [logger["well"] for logger in loggers])
        well = self.status("l00 --json", 0).json()[0]
        self.assertEqual((103, 100, 3, 2, 4, 1), tuple(well[key] for key in ["scans", "read", "failedReads", "late", "logsClosed", "logsFailed"]))
        self.assertEqual({**{k: v for k, v in LEDGER.items() if k != "name"}, "log": "All", "losses": {}}, well["rows"][0])
        self.assertEqual((NOW, NOW, 0.25, None), tuple(well[key] for key in ["started", "lastSample", "lastSampleAge", "lastError"]))

    def test_a_logger_that_should_be_there_is_down_and_not_absent(self):
        self.status("", 1, "status: there is no logger in " + re.escape(self.path("run")))
        self.assertEqual([], self.status("--json", 1, None).json())
        kiln = self.feed("kiln", WELL)
        os.makedirs(self.path("run/empty"))
        self.assertEqual(1, len(self.status("--json", 0).json()))
        self.assertEqual([{"want": ["state", "counts"], "interval": 1000}], kiln.requests(1))
        os.makedirs(self.path("etc/systemd/system/multi-user.target.wants"))
        os.mkdir(self.path("etc/vastra"))
        for name in ["a.json", "b.vst", ".hidden.json", "notes.txt", "kiln.json"]:
            self.write("etc/vastra/" + name, "{}")
        for unit in ["vastra@c.service", "vastra@.service", "ssh.service"]:
            os.symlink("/gone", self.path("etc/systemd/system/multi-user.target.wants", unit))
        loggers = self.status("--json").json()
        self.assertEqual([("a", False), ("b", False), ("c", False), ("kiln", True)], [(logger["name"], logger["up"]) for logger in loggers])
        self.assertEqual(["no logger runs here: No such file or directory"], loggers[0]["problems"])
        self.assertEqual(["kiln"], [logger["name"] for logger in self.status("kiln --json", 0).json()])
        self.status("kiln d", 1)
        for name in ["", "../kiln", ".kiln", "a/b", "a\nb", "n" * 201]:
            for command in [["status", name], ["messages", name], ["watch", "--attach", name]]:
                self.expect(self.args(command), 2, err=r"[^\n]*is not the name of a logger[^\n]*")
        self.write("etc/systemd/system/x.wants", "")
        self.expect("status --dir run/kiln/feed --etc no", 1, None, "status: .*run/kiln/feed: cannot be searched for loggers: Not a directory")

    def test_metrics_are_well_formed_whatever_the_names_are(self):
        node = {"name": EVIL, "up": True}
        self.feed('ev"il', lines(HELLO, {**STATE, "nodes": [node, node, {**node, "up": False}]}, {**COUNTS, "ledger": [
            LEDGER, LEDGER, {**LEDGER, "name": "outputs[0]"}, {**LEDGER, "name": "", "lost": 9, "losses": [LOSS, {**LOSS, "cause": EVIL}, LOSS]}]}))
        os.makedirs(self.path("etc/vastra"))
        self.write("etc/vastra/dead.json", "{}")
        series = self.metrics(self.status("--prometheus").out.decode())
        evil = r'logger="ev\"il"'
        for name, value in [
                ('up{logger="dead"}', 0), ('well{logger="dead"}', 0), ("up{%s}" % evil, 1), ("scans_total{%s}" % evil, 103),
                ("scans_failed_total{%s}" % evil, 3), ("scans_late_total{%s}" % evil, 2), ("last_sample_age_seconds{%s}" % evil, 0.25),
                ("last_sample_timestamp_seconds{%s}" % evil, NOW[0] + 0.25), ("start_time_seconds{%s}" % evil, NOW[0] + 0.25),
                (r'node_up{%s,node="x?[2J?\\\"?"}' % evil, 0), ('disk_free_bytes{%s,folder="/var"}' % evil, 1.5e9),
                ("logs_closed_total{%s}" % evil, 4), ('rows_offered_total{%s,log="outputs[1]"}' % evil, 100),
                ('rows_on_disk_total{%s,log="outputs[2]"}' % evil, 60), ('rows_in_memory{%s,log="outputs[3]"}' % evil, 10),
                ('rows_in_journal{%s,log="outputs[0]"}' % evil, 20), ('rows_rotated_total{%s,log="outputs[0]"}' % evil, 5),
                ('rows_lost_total{%s,log="outputs[3]",reason="No space left on device"}' % evil, 6),
                ('rows_lost_total{%s,log="outputs[3]",reason=""}' % evil, 0), ('rows_lost_total{%s,log="outputs[0]",reason=""}' % evil, 0)]:
            self.assertEqual(value, series.get("vastra_" + name), name)

    def test_the_table_is_aligned_and_nothing_in_it_controls_a_terminal(self):
        error = {**MESSAGE, "text": EVIL + "e" * 5000}
        self.feed("kiln", lines(HELLO, {**STATE, "state": EVIL, "reason": EVIL, "lastError": error, "lastSampleAge": 7200}, COUNTS))
        self.feed("mill", b"")
        out = self.status().out.decode()
        self.assertNotRegex(out, "[\0-\x09\x0b-\x1f\x7f-\x9f]")
        head, kiln, mill, *more = out.splitlines()
        self.assertEqual([["NAME", "STATE"], "2:00:00", ["mill", "down"]], [head.split()[:2], kiln[:head.index("AGE") + 3].split()[-1], mill.split()])
        self.assertEqual("103", kiln[:head.index("SCANS") + 5].split()[-1])
        self.assertRegex(more[-2], r"\Akiln: last error, 2023-11-14 22:13:20: Error: N: read: x\?\[2J .{100,300}\.\.\.\Z")
        self.assertEqual("mill: the logger has not answered for 2 seconds", more[-1])
        follow = self.start(*self.args("status kiln --follow"), stdout=subprocess.PIPE)
        for _ in range(2):
            next(line for line in follow.stdout if line.startswith(b"NAME"))
        follow.send_signal(signal.SIGTERM)
        follow.communicate(timeout=60)
        self.assertEqual(1, follow.returncode)


class Attached(FeedTest):
    def test_messages_are_printed_as_run_prints_them(self):
        more = {**MESSAGE, "severity": "notice", "link": "CLogKeeper", "name": "", "text": "saved " + EVIL}
        self.feed("kiln", lines(HELLO, STATE, MESSAGE, {"type": "dropped", "messages": 2}, more, {"type": "kept"}))
        shown = "2023-11-14T22:13:20+00:00 Error: N: read: Timeout error.\n2 messages dropped\n2023-11-14T22:13:20+00:00 saved x?[2J \\\"?\n"
        self.expect(self.args("messages kiln"), 0, shown)
        self.feed("endless", lambda: itertools.chain([lines(HELLO)], itertools.repeat(lines(MESSAGE))))
        endless = self.vastra(*self.args("messages endless"))
        self.assertEqual((1, "vastra: endless: the logger has not marked the end of the messages that it keeps\n"), (endless.status, endless.err))
        self.feed("stall", b"")
        self.expect(self.args("messages stall --follow"), 1, "", "stall: the logger has not answered for 2 seconds")
        self.expect(self.args("messages mill"), 1, "", "mill: no logger runs here: No such file or directory")
        for end, status in [(lambda follow: follow.send_signal(signal.SIGTERM), 0), (lambda follow: feed.stop(), 1)]:
            feed = self.feed("saw%d" % status, lines(HELLO, MESSAGE))
            follow = self.start(*self.args("messages saw%d --follow" % status), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertIn(b"Timeout error.", follow.stdout.readline())
            end(follow)
            err = follow.communicate(timeout=60)[1].decode()
            self.assertEqual((status, "vastra: saw1: the logger has closed the connection\n" * status), (follow.returncode, err))

    def samples(self, first):
        """Of a logger that has the variables x and y, and then y and z."""
        for number in itertools.count(first):
            if number == first + 3:
                yield lines({**HELLO, "variables": ["y", "z"]})
            values = [number, "inf"] if number < first + 3 else [None, -number]
            yield lines({"type": "sample", "number": number, "time": NOW, "values": values}, {"type": "sample", "number": 0, "time": NOW, "values": [1]})
            time.sleep(.05)

    def test_watch_follows_a_logger_through_a_reload_and_a_restart(self):
        feed = self.feed("kiln", lambda: itertools.chain([lines(HELLO, STATE)], self.samples(1)))
        watch = self.start(*self.args("watch --attach kiln"), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertRegex(watch.stdout.readline(), rb"\A2023-11-14T22:13:20.250\+00:00 x=1 y=inf\n\Z")
        self.assertRegex(watch.stdout.readline(), rb"\A\S+ y=nan z=-\d+\n\Z")
        self.assertEqual({"want": ["state", "sample"], "interval": 1000}, feed.requests(1)[0])
        feed.stop()
        self.assertIn(b"vastra: kiln: the logger has closed the connection; waiting for it", watch.stderr.readline())
        os.remove(self.path("run/kiln/feed"))
        self.feed("kiln", lambda: itertools.chain([lines(HELLO, {**STATE, "state": "waiting", "reason": EVIL})], self.samples(5)))
        self.assertIn(b"vastra: kiln: is there again", watch.stderr.readline())
        self.assertIn(b"vastra: kiln: is waiting: x?[2J?", watch.stderr.readline())
        next(line for line in watch.stdout if re.search(rb" x=[567]| z=-", line))  # a late watch misses some
        watch.send_signal(signal.SIGINT)
        watch.communicate(timeout=60)
        self.assertEqual(0, watch.returncode)
        self.expect(self.args("watch --attach kiln --vars z"), 2, err="kiln: --vars z: there is no such variable")
        self.expect(self.args("watch --attach mill"), 1, err="mill: no logger runs here: .*")
        for line, words in [("c.json --attach kiln", "FILE"), ("--attach kiln --scans 3", "--scans"), ("", "FILE or --attach NAME is required")]:
            self.expect("watch " + line, 2, err=".*" + words)
        self.expect("watch c.json --dir run", 2, err=".*--attach")

    def test_watch_on_a_terminal_ends_with_q(self):
        self.feed("kiln", lambda: itertools.chain([lines({**HELLO, "variables": [EVIL, "y"]}, STATE)], itertools.islice(self.samples(1), 3)))
        main, terminal = pty.openpty()
        watch = self.start(*self.args("watch --attach kiln"), stdin=terminal, stdout=terminal, stderr=terminal, start_new_session=True,
                           env={**self.environment(), "TERM": "xterm"}, preexec_fn=lambda: __import__("fcntl").ioctl(0, 0x540E, 0))
        os.close(terminal)
        shown = b""
        while b"3 read" not in shown:
            shown += os.read(main, 4096)
        os.write(main, b"xq")
        self.assertEqual(0, watch.wait(timeout=60))
        self.assertIn("x?[2J?", shown.decode(errors="replace"))
        os.close(main)

    def test_a_real_logger_is_well_again_when_the_disk_is(self):
        for folder in ["logs", "run/kiln"]:
            os.makedirs(self.path(folder))
        self.write("c.json", simulated([output("logs", maxSamples=5)]))
        run = self.start("run", "c.json", "--feed", "run/kiln/feed", "--quiet", stderr=subprocess.DEVNULL)
        self.addCleanup(run.wait)
        self.addCleanup(run.kill)

        def until(condition):
            end = time.monotonic() + 60
            while not condition(logger := self.vastra(*self.args("status kiln --json")).json()[0]):
                self.assertIsNone(run.poll())
                self.assertLess(time.monotonic(), end, logger)
            return logger
        logger = until(lambda logger: logger["well"] and logger["logsClosed"] > 1 and logger["rows"][0]["onDisk"] > 9)
        self.assertEqual((run.pid, 10), (logger["pid"], logger["period"]))
        self.assertIn(logger["rows"][0]["offered"], range(10, logger["read"] + 1))
        os.rename(self.path("logs"), self.path("away"))
        logger = until(lambda logger: not logger["well"])
        self.assertRegex(logger["problems"][0], r"\Anot saved: .*/logs/\d+\.rph: No such file or directory\Z")
        self.assertIn("No such file or directory", logger["lastError"]["text"])
        os.rename(self.path("away"), self.path("logs"))
        self.assertGreater(until(lambda logger: logger["well"])["logsFailed"], 0)
        self.metrics(self.status("kiln --prometheus", 0).out.decode())
        run.send_signal(signal.SIGSTOP)
        os.waitid(os.P_PID, run.pid, os.WSTOPPED | os.WNOWAIT)
        self.assertEqual(["the logger has not answered for 2 seconds"], self.status("kiln --json").json()[0]["problems"])
        run.send_signal(signal.SIGCONT)
        run.terminate()
        self.assertEqual(0, run.wait(timeout=60))
