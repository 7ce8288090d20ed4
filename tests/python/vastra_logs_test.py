"""vastra_logs, on logs of the logger and on damaged ones: compared with the command and with a plain model."""
import collections
import contextlib
import datetime
import os
import random
import re
import shutil
import struct
import time
import unittest.mock
import warnings

import numpy as np
import vastra_logs
from commands import LogTest, log, output, simulated

DOCS = os.path.join(os.path.dirname(vastra_logs.__file__), os.pardir, "docs")


def example(what=""):
    """The bytes of a worked example of docs/file-formats.md."""
    with open(os.path.join(DOCS, "file-formats.md")) as page:
        table = page.read().split("### A worked example" + what + "\n")[1].split("\n##")[0]
    return bytes.fromhex("".join(re.findall(r"^\| \d+ \| ([0-9A-F ]+) \|", table, re.M)))


def image(names, samples, extra=b""):
    """The bytes of a log. A sample is its milliseconds and its values, which may be more or fewer than the names."""
    return b"".join([
        struct.pack("<IIiiIBH", 0x2C0F0781, 0, 0, 0, 0, 0, len(names)), *(bytes([len(name)]) + name for name in map(str.encode, names)),
        struct.pack("<I", len(samples)), *(struct.pack("<H%df" % len(values), len(values), *values) for _, *values in samples),
        struct.pack("<H", len(samples)), *(struct.pack("<iHhhH", when // 1000, when % 1000, -60, 0, 0) for when, *_ in samples),
        bytes(4), extra])


def model(logs, start, end, columns, unique):
    """What read returns for logs of (names, samples), row by row."""
    every = list(columns or dict.fromkeys(name for names, samples in logs for name in names
                                          if any(start <= when < end for when, *_ in samples))
                 or dict.fromkeys(name for names, _ in logs for name in names))
    rows, before = [], collections.Counter()
    for names, samples in logs:
        here = collections.Counter()
        for when, *values in samples:
            key = tuple(names), when, struct.pack("%df" % len(values), *values)
            here[key] += 1
            if (unique and here[key] <= before[key]) or not start <= when < end or not set(every) & set(names):
                continue
            found = dict(reversed(list(zip(names, values))))
            rows.append((when, [repr(found[name]) if name in found else None for name in every]))
        before |= here
    return every, sorted(rows, key=lambda row: row[0])


class PythonTest(LogTest):
    @contextlib.contextmanager
    def logger(self, end, *args):
        with self.start(*args) as logger, contextlib.ExitStack() as stack:
            stack.callback(getattr(logger, end))
            yield

    def counted(self, folder="logs"):
        """The rows as they were counted: those of one millisecond come in the order of the names of their logs."""
        with warnings.catch_warnings(action="error"):
            rows = vastra_logs.read(self.path(folder), columns="x")
        return [x for _, x in sorted(zip(rows.time.tolist(), rows["x"].tolist()))]

    def test_rows_are_those_of_the_text_logs(self):
        names = ["Sine", "Ramp", "Square", "Items"]
        self.write("c.json", simulated([output("logs", names, saveCsv=1, maxSamples=70)], "sine,ramp,square,counter", names))
        self.expect("run c.json --scans 500 --period 0 --quiet")
        rows = vastra_logs.read(self.path("logs"))
        self.assertEqual((names, 500, [70] * 7 + [10]), (rows.names, len(rows), [log.samples for log in rows.logs]))
        lines = [line for path in rows.logs for line in self.read(path.path[:-4] + "h.csv").decode().splitlines()[1:]]
        for line, when, values in zip(lines, rows.time.astype(object), rows.values.tolist()):
            clock = "%s:%d  %d" % (when.strftime("%a %b %d %H:%M:%S"), when.microsecond // 1000, when.year)
            self.assertEqual(line, ",".join([clock, *("%f" % value for value in values), ""]))

    def test_rows_are_those_of_a_plain_model(self):
        for seed in range(60):
            chance = random.Random(seed)
            folder, logs = self.path(str(seed)), []
            os.mkdir(folder)
            for i in range(chance.randrange(1, 6)):
                names = chance.choice([["a", "b", "c"], ["c", "a"], ["d", "a", "d"], ["b"]])
                times = [chance.randrange(-3000, 3000, chance.choice([1, 500])) for _ in range(chance.randrange(40))]
                even = chance.random() < 0.4 and len(names)
                samples = [[when, *(chance.choice([1.5, 2.5, float("nan"), float("inf")]) for _ in range(even or chance.randrange(5)))]
                           for when in (times if chance.random() < 0.3 else sorted(times))]
                logs.append(logs[-1] if logs and chance.random() < 0.5 else (names, samples))
                self.write("%s/%d.RPH" % (folder, i), image(*logs[-1], bytes(chance.choice([0, 0, 7]))))
            start, end = sorted(chance.randrange(-3500, 3500, 500) for _ in range(2))
            known = sorted({name for names, _ in logs for name in names})
            columns, unique = chance.choice([None, known[:1], known[::-1]]), chance.random() < 0.5
            at = [np.datetime64(when, "ms") for when in (start, end)]
            rows = vastra_logs.read(folder, *at, columns, unique=unique)
            self.assertTrue(np.isnan(rows.values[~rows.present]).all())
            found = [(int(when), [repr(float(v)) if there else None for v, there in zip(*row)])
                     for when, *row in zip(rows.time.astype("i8"), rows.values, rows.present)]
            self.assertEqual(model(logs, start, end, columns, unique), (rows.names, found), seed)

    def test_a_damaged_file_is_what_inspect_finds(self):
        """Cut at each byte, and with each byte changed."""
        for name, good in [("rph", example()), ("journal", example(" of a journal")), ("journal", example(" of a journal")[:80]),
                           ("rph", image(["a"], [(1, 1.0), (2,), (3, 2.0, 3.0)], b"more")), ("rph", image([], [])),
                           ("rph", image(["T"], [(1, 2.0)]).replace(b"\1T", b"\xff\x2c\1" + 300 * b"T"))]:
            bad = [good[:i] for i in range(len(good))] + [good[:i] + bytes([byte]) + good[i + 1:] for i in range(len(good))
                                                          for byte in {0, 2, 255, good[i] ^ 1}] + [good]
            files = [self.write("%d.%s" % (i, name), data) for i, data in enumerate(bad)]
            os.truncate(self.path(files[-1]), 17 << 20)
            with warnings.catch_warnings(action="ignore"):
                logs = vastra_logs.read([self.path(file) for file in files]).logs
            for data, ours, facts in zip(bad, logs, self.vastra("inspect", "--json", *files).json()):
                names = [name.encode("utf-8", "surrogateescape").decode("utf-8", "replace") for name in ours.names]
                theirs = sorted(time[0] * 1000 + time[1] for time in (facts.get("first"), facts.get("last")) if time)
                if ours.samples < 3:  # the third one lies between the first and the last
                    self.assertEqual((facts.get("error", ""), facts.get("names", []), facts.get("samples", 0), theirs), (
                        ours.fault, names, ours.samples, [int(t.astype("i8")) for t in (ours.first, ours.last) if ours.samples]), data)

    def test_damaged_logs_are_passed_over(self):
        self.write("logs/b.rph", log(["x"], [(1, 1.0)]))
        self.write("logs/a.rpd", log(["x", "y"], [(0, 2.0, 3.0)])[:40])
        os.mkfifo(self.path("logs/c.rph"))
        fault = "ends at byte 40 inside the values of sample 1 (from byte 31 on)"
        with self.assertWarnsRegex(vastra_logs.LogWarning, "a.rpd: " + re.escape(fault)):
            rows = vastra_logs.read(self.path("logs"))
        self.assertEqual(([1.0], [fault, "", "is not a regular file"]), (rows["x"].tolist(), [log.fault for log in rows.logs]))
        for file, what in [("logs/a.rpd", fault), ("none", "No such file or directory")]:
            with self.assertRaises(vastra_logs.LogError) as raised:
                vastra_logs.read(self.path(file))
            self.assertEqual((self.path(file), what), (raised.exception.file, raised.exception.fault))
        with self.assertRaisesRegex(ValueError, 'there is no variable "X"'):
            vastra_logs.read(self.path("logs/b.rph"), columns="X")

    def test_a_log_is_read_once_with_its_journal_and_its_subfolders(self):
        journal, name = example(" of a journal"), "logs/.vastra-0123456789abcdef-1000.journal"
        self.write(name, journal)
        self.write("logs/0109090200.rph", image(["x"], [(1000000000250, 1.5)]))
        self.assertEqual([1.5], self.counted())
        self.assertEqual(1, len(vastra_logs.catalogue([self.path(name), self.path("logs"), self.path("logs/0109090200.rph")])))
        for other in [image(["y"], [(1000000000250, 1.5)]), image(["x"], [(1000000000251, 1.5)])]:
            self.write("logs/0109090200.rph", other)
            self.assertEqual(2, len(vastra_logs.read(self.path("logs"))))
        self.write(name, journal[:80])  # given up after a fault, with another one of the same log
        self.write(name.replace("1000", "1001"), journal)
        self.assertEqual(2, len(vastra_logs.read(self.path("logs"))))
        self.write(name.replace("1000", "2000"), journal[:50])  # just made
        self.assertEqual(2, len(vastra_logs.catalogue(self.path("logs"))))
        shutil.copytree(self.path("logs"), self.path("logs", "sub"))
        for rows, options in [(2, {}), (4, {"recursive": True}), (2, {"recursive": True, "unique": True})]:
            self.assertEqual(rows, len(vastra_logs.read(self.path("logs"), **options)))
        os.symlink(shutil.copytree(self.path("logs"), self.path("other")), self.path("logs/link"))
        os.mkdir(self.path("logs/a.rph"))
        self.write("logs/a.rph/0.rph", image(["x"], []))
        found = [os.path.relpath(log.path, self.path("logs")) for log in vastra_logs.catalogue(self.path("logs"), recursive=True)]
        self.assertEqual(["", "", "a.rph", "sub", "sub"], [os.path.dirname(path) for path in found])

    def test_no_sample_is_missing_or_read_twice_while_the_logger_runs(self):
        """With logs that it saves, and with one that each run continues."""
        begins = lambda rows: [*(i for i, value in enumerate(rows) if value == rows[0]), len(rows)]
        for folder, samples in [("logs", 20), ("one", 100000)]:
            self.write("c.json", simulated([output(folder, maxSamples=samples)], input={"scanPeriod": 1}))
            before = []
            for run, stop in enumerate(["kill", "terminate", "kill"]):
                with self.logger(stop, "run", "c.json", "--quiet", "--create-folders"):
                    self.until(lambda: os.path.isdir(self.path(folder)) and len(begins(self.counted(folder))) == run + 2)
                    for _ in range(50):
                        now = self.counted(folder)
                        begun = begins(now)
                        self.assertEqual([now[0] + i for j, k in zip(begun, begun[1:]) for i in range(k - j)], now)
                        self.assertEqual((before, run + 2), (now[:len(before)], len(begun)))
                        before = now

    def test_a_log_that_is_saved_while_its_folder_is_read_counts_once(self):
        journal, path = example(" of a journal"), "logs/.vastra-0123456789abcdef-1000.journal"
        self.write(path, journal[:107])
        add_logs = vastra_logs._Scan._add_logs

        def save(scan, folder):
            self.write(path, journal)
            self.write("logs/0109090200.rph", image(["x"], [(1000000000250, 1.5)]))
            os.remove(self.path(path))
            return add_logs(scan, folder)
        with unittest.mock.patch.object(vastra_logs._Scan, "_add_logs", save):
            self.assertEqual([1.5], self.counted())

    @unittest.mock.patch.object(vastra_logs, "_PIECE", 10000)
    def test_a_journal_is_read_up_to_a_damaged_record(self):
        names = ["a", "b", "c"]
        self.write("c.json", simulated([output("logs", names, maxSamples=100000)], "counter,counter,counter", names))
        with self.logger("kill", "run", "c.json", "--quiet", "--period", "1"):
            self.until(lambda: len(vastra_logs.read(self.path("logs"))) > 500)
        journal, rows = next(n for n in os.listdir(self.path("logs")) if "journal" in n), vastra_logs.read(self.path("logs"))
        self.assertEqual(self.vastra("convert", "logs/" + journal).out.count(b"\n"), len(rows) + 1)
        self.assertTrue((rows.values == rows.values[:1, :1] + np.arange(len(rows))[:, None]).all())
        data = bytearray(self.read("logs/" + journal))
        data[-100 * (9 + 12 + 2 + 12) + 30] ^= 1
        self.write("logs/" + journal, data)
        self.assertEqual(len(rows) - 100, len(vastra_logs.read(self.path("logs"))))

    def test_times_are_given_in_many_forms(self):
        self.addCleanup(time.tzset)
        self.enterContext(unittest.mock.patch.dict(os.environ, TZ="Europe/Berlin"))
        time.tzset()
        now = time.time_ns() // 1000000
        self.write("a.rph", image(["x"], [(0, 1.0), (1711846800000, 2.0), (1729987200000, 3.0), (1729990800000, 4.0), (now - 1, 5.0)]))
        naive, aware = datetime.datetime(2024, 3, 31, 3), datetime.datetime(2024, 3, 31, 1, 0, 0, 1, datetime.timezone.utc)
        for start, end, values in [
                (None, naive, [1]), (naive, "2024-03-31T03:00:00.001", [2]), (aware, "2024-03-31T03:00:01", []),
                ("2024-10-27T02:00", "2024-10-27T02:00:00.001", [3]), ("2024-10-27T02:00+01:00", "2024-10-27T02:00+00:00", [4]),
                (np.datetime64("2024-03-31T01"), np.datetime64("2024-03-31T01:00:00.000000001"), [2]),
                (datetime.date(1970, 1, 1), "1970-01-02", [1]), ("1970-01-01T01:00", "1970-01-02", [1]), ("-1m", None, [5]), ("-1w", "-1h", []),
                (datetime.datetime.min, datetime.datetime.max, [1, 2, 3, 4, 5]), ("2024-10-27T01:00Z", "now", [4, 5])]:
            self.assertEqual(values, vastra_logs.read(self.path("a.rph"), start, end)["x"].tolist(), (start, end))
        for wrong in ["yesterday", 5, np.datetime64("NaT"), "-7", object()]:
            with self.assertRaisesRegex(ValueError, "is not a time"):
                vastra_logs.read(self.path("a.rph"), wrong)
        index = vastra_logs.read(self.path("a.rph")).frame("local").index
        self.assertEqual("2024-10-27 02:00:00+01:00", str(index[3]))

    def test_the_example_of_the_readme(self):
        minute = (time.time_ns() // 60_000_000_000 - 1) * 60_000
        self.write("logs/a.rph", image(["Items", "Temp"], [(minute + i, i, 2.0 * i) for i in range(3)]))
        with open(os.path.join(DOCS, os.pardir, "README.md")) as page, contextlib.chdir(self.folder):
            exec(re.search(r"^```python\n(.*?)^```$", page.read().replace("even", "logs"), re.M | re.S)[1], {})
        self.assertRegex(self.read("week.csv").decode(), r"^time,Temp,Items\n[-0-9]+ [:0-9]+[-+][0-9:]+,2.0,1.0\n$")

    def test_frames_keep_no_value_apart_from_a_logged_nan(self):
        self.write("logs/a.rph", image(["x", "\u00e4"], [(1, float("nan"), 1.0), (2, 2.0)]).replace(b"\xc3\xa4", b"\xe4!"))
        frame = vastra_logs.read(self.path("logs")).frame("Asia/Kolkata", nullable=True)
        self.assertEqual((["x", "\udce4!"], ["nan 1.0", "2.0 <NA>"], "1970-01-01 05:30:00.001000+05:30"),
                         (list(frame.columns), ["%s %s" % row for row in zip(*map(frame.get, frame))], str(frame.index[0])))
        self.assertEqual(1, int(vastra_logs.read(self.path("logs")).frame().iloc[:, 1].isna().sum()))
        with unittest.mock.patch.dict("sys.modules", pandas=None), self.assertRaisesRegex(ImportError, "python3-pandas"):
            vastra_logs.read(self.path("logs")).frame()
