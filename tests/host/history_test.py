"""vastra convert and inspect on folders: ranges, formats, names and outputs. The claims "history" and "zones" of
script/prove compare steps and local times with what Python makes of the same rows."""
import csv
import io
import json
import math
import os
import random
import shutil
import signal
import sqlite3
import struct
import subprocess
import time

from commands import LogTest, log

SPECIAL = [0.0, -0.0, 1.0, 0.1, 1e-45, 3.4028235e38, 1.17549435e-38, 123456.79, 8388607.5, 16777216.0, 9.5e-5, 0.00012, 1e12, 1e13,
           -2.5, math.inf, -math.inf, math.nan]


def single(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


def timed(names, rows):
    """The bytes of a log; a row is its moment in milliseconds, and its values."""
    data = log(names, [(moment // 1000, *values) for moment, *values in rows])
    times = b"".join(struct.pack("<iHhhH", row[0] // 1000, row[0] % 1000, 0, 0, 0) for row in rows)
    return data[:-4 - len(times)] + times + data[-4:]


def number(text, kind=float):
    return None if text in ("", None) else kind(float(text))


class History(LogTest):
    def table(self, *args, status=0, err=""):
        """The rows of an export to standard output as CSV, without the header."""
        result = self.expect(["convert", *args], status, None, err)
        return list(csv.reader(io.StringIO(result.out.decode(), newline=""), strict=True))[1:]

    def same(self, expected, found):  # times and floats, of which the text may have fewer digits
        self.assertEqual(len(expected), len(found))
        found = [(number(time), *(number(cell, single) for cell in cells)) for time, *cells in found]
        for row, other in zip(expected, found):
            self.assertEqual([repr(value) for value in row], [repr(value) for value in other])

    def test_all_formats_read_back_to_the_same_numbers(self):
        random.seed(1)
        values = [single(value) for value in SPECIAL] + [single(struct.unpack("<f", random.randbytes(4))[0]) for _ in range(3000)]
        values += [single(random.uniform(-1, 1) * 10 ** random.randrange(-6, 13)) for _ in range(3000)]
        rows = [(1_700_000_000_000 + 250 * i, value, i) for i, value in enumerate(values)]
        self.write("logs/a.rph", timed(["V", "N"], rows[:4000]))
        self.write("logs/b.rph", timed(["N", "V", "More"], [(moment, i, v, 7) for moment, v, i in rows[4000:]]))
        expected = [(moment / 1000, v, float(i), 7.0 if i >= 4000 else None) for moment, v, i in rows]
        self.same(expected, self.table("logs", "--time", "unix"))
        lines = self.expect("convert logs --format jsonl --time unix", out=None).out.splitlines()
        found = [list(json.loads(line).values()) for line in lines]
        self.assertEqual(['{"time":1700000000.000,"V":0,"N":0,"More":null}', '"nan"'], [lines[0].decode(), json.dumps(found[17][1])])
        self.same(expected, found)
        self.expect("convert logs --out o.db --time unix")
        kept = {"nan": None, "-0.0": 0.0}  # a database has neither
        nulls = [tuple(kept.get(repr(value), value) for value in row) for row in expected]
        self.same(nulls, sqlite3.connect(self.path("o.db")).execute("select * from rows").fetchall())

    def test_names_are_kept_apart_and_written_by_the_rules_of_each_format(self):
        names = [b"a,b", b'say "x"', b"\xfc", b"\xfb", b"time", b"Temp", b"TEMP", b"line\nend"]
        data = log(["n%d" % i for i in range(8)], [(0, *range(8))])
        for i, name in enumerate(names):
            data = data.replace(b"\x02n%d" % i, bytes([len(name)]) + name)
        self.write("logs/a.rph", data)
        out = self.expect("convert logs --time utc", out=None, err="convert: warning: the column of \"time\" is \"time_2\"").out
        self.assertEqual(b'time,"a,b","say ""x""",\xfc,\xfb,time_2,Temp,TEMP,"line\nend"\n1970-01-01 00:00:00.000,0,1,2,3,4,5,6,7\n', out)
        found = self.vastra("convert", "logs", "--format", "jsonl").json()
        self.assertEqual(["time", "a,b", 'say "x"', "\ufffd", "\ufffd_2", "time_2", "Temp", "TEMP", "line\nend"], list(found))
        self.vastra("convert", "logs", "--out", "o.sqlite")
        rows = sqlite3.connect(self.path("o.sqlite")).execute("select * from rows")
        self.assertEqual(["time", "a,b", 'say "x"', "\ufffd", "\ufffd_2", "time_2", "Temp", "TEMP_2", "line\nend"], [c[0] for c in rows.description])
        self.assertEqual([("1970-01-01 00:00:00.000", *map(float, range(8)))], rows.fetchall())
        self.assertEqual([["1970-01-01 00:00:00.000", "7", "0", "1"]], self.table("logs", "--vars", 'line\nend,"a,b"', "--vars", '"say ""x""","a,b"'))

    def test_forms_of_times(self):
        self.zone = "Asia/Kolkata"
        begin = 1_772_303_400  # 2026-03-01 in India
        self.write("logs/a.rph", timed(["x"], [(begin * 1000 + i, 1) for i in range(-1, 3)]))
        for typed, rows in [("2026-03-01", 3), ("2026-03-01T00:00", 3), ("2026-03-01 00:00:00.0011", 1), ("2026-02-28T18:30:00.001Z", 2),
                            ("2026-02-28t18:30:00z", 3), ("2026-02-28T12:29:59.999-06:01", 0), ("2026-03-01T04:00:00+09:30", 3),
                            ("2026-02-28T23:59:60", 3), ("2024-02-29", 4), ("-9999999999w", 4), ("now", 0)]:
            self.assertEqual(rows, len(self.table("logs", "--from", typed, err=None)), typed)
            self.assertEqual(4 - rows, len(self.table("logs", "--to", typed, err=None)), typed)
        now = int(time.time())
        self.write("logs/a.rph", timed(["x"], [((now - age) * 1000, 1) for age in [90_000, 5000, 2000, 900, 20]]))
        for typed, rows in [("-90s", 1), ("-30m", 2), ("-1h", 3), ("-1d", 4), ("-1w", 5)]:
            self.assertEqual(rows, len(self.table("logs", "--from", typed)), typed)

    def test_wrong_use(self):
        self.write("logs/a.rph", log(["Temp", "Flow"], [(0, 1, 2)]))
        os.symlink("logs/a.rph", self.path("link"))
        for args, words in [
                ("--from x", "--from: x is not a time: .*-7d"), ("--to 2026-02-29", "2026-02-29 is not"), ("--from -7", "-7 is not"),
                ("--from 2026-03-01T24:00", "is not a time"), ("--from 2026-03-01T12:00+1:00", "is not"), ("--to 2026-3-1", "is not"),
                ("--from -d", "-d is not"), ("--from 2026-03-01T12:00:00.", "is not"), ("--from 2026-03-01x", "is not"),
                ("--from now --to -1d", "--from is not before --to"), ("--step 0", "0 is not a duration"), ("--step 0.9ms", "is not a duration"),
                ("--step 1y", "1y is not"), ("--step -1s", "is not"), ("--step nan", "is not"), ("--by min", "--by requires --step"),
                ("--step 1 --by median", "median is not one of mean|min"), ("--digest", "--digest requires --step"), ("--vars Tmep", '"Tmep"; did you mean "Temp"'),
                ("--vars Temp,,Flow", 'variable ""'), ("--vars \"Temp", "quotation mark"), ("--format xls", "csv|jsonl|sqlite"), ("--format sqlite", "needs --out"),
                ("--time gmt", "local|utc"), ("--csv a --out b", "--out excludes --csv"), ("--out logs/a.rph", "not written: it is a log"), ("--out link", "not written")]:
            self.expect("convert logs " + args, 2, err=".*" + words.replace("|", r"\|"))
        self.expect("inspect logs --gaps 1x", 2, err="inspect: --gaps: 1x is not a duration")

    def test_steps_of_a_relative_start_begin_at_whole_multiples(self):
        now = int(time.time())
        self.write("logs/a.rph", timed(["x"], [((now - 10_000 + i) * 1000, i) for i in range(0, 9900, 50)]))
        found = self.table("logs", "--from", "-2h", "--step", "15m", "--by", "last", "--time", "unix")
        self.assertEqual({0.0}, {float(row[0]) % 900 for row in found})
        self.assertIn(len(found), (8, 9))
        self.assertEqual(9850.0, float(found[-1][1]))

    def test_bad_logs_are_passed_over_and_named(self):
        good = log(["x"], [(0, 1), (1, 2)])
        self.write("logs/b.rph", good)
        self.write("logs/cut.rph", good[:-20])
        self.write("logs/copy.rph", good)
        os.makedirs(self.path("logs", "below"))
        self.write("logs/below/d.rph", log(["y"], [(2, 3)]))
        self.assertEqual(["1", "1", "2", "2"], [row[1] for row in self.table("logs", err="logs/cut.rph: warning: ends at byte")])
        self.assertEqual(["1", "2"], [row[1] for row in self.table("logs", "--unique", err="logs/cut.rph: ")])
        self.assertEqual(5, len(self.table("logs/", "--recursive", err="logs/cut.rph: ")))
        self.assertEqual(3, len(self.table("logs/b.rph", "logs/cut.rph", "logs/below/d.rph", status=1, err="logs/cut.rph: ends at byte")))
        self.expect("convert logs/cut.rph none.rph --out o.csv", 1, err="logs/cut.rph: .*\nvastra: none.rph: No such file")
        self.expect("convert logs/below --from 2020-01-01", out="time,y\n", err="convert: warning: there are no rows in this range")
        self.write("logs/below/empty.rph", log(["z"], []))
        self.expect("convert logs/below --vars z", out="time,z\n", err="convert: warning: there are no rows in this range")
        self.assertEqual(["logs"], os.listdir(self.folder))

    def test_an_output_is_whole_or_as_it_was(self):
        self.write("logs/a.rph", log(["x%d" % i for i in range(10)], [(i, *range(10)) for i in range(20000)]))
        for i in range(20):
            shutil.copy(self.path("logs/a.rph"), self.path("logs/%d.rph" % i))
        for name in ["o.csv", "o.jsonl", "o.db"]:
            self.write(name, "old")
        self.expect("convert logs --out o.db", 1, err="o.db: not written: it exists .--force")
        for signal_number, name in [(signal.SIGINT, "o.csv"), (signal.SIGTERM, "o.jsonl"), (signal.SIGINT, "o.db")]:
            for _ in range(10):  # an export can be faster than the signal
                with self.start("convert", "logs", "--out", name, "--force", stderr=subprocess.PIPE) as export:
                    while export.poll() is None and not os.path.exists(self.path(name + ".part")):
                        pass
                    export.send_signal(signal_number)
                    words = export.stderr.read().decode()
                if export.returncode == 1:
                    break
                self.write(name, "old")
            self.assertEqual((1, "vastra: %s: not written: a signal has ended the export\n" % name), (export.returncode, words))
        for name in ["o.csv", "o.jsonl", "o.db"]:
            self.assertEqual(b"old", self.read(name))
        self.expect("convert logs/a.rph --out none/o.csv", 1, err="none/o.csv: No such file")
        self.expect("convert logs/a.rph --out logs --format sqlite", 1, err="logs: not written: it is a folder")
        self.expect("convert logs/a.rph --out o.db --force")
        self.assertEqual((20000,), sqlite3.connect(self.path("o.db")).execute("select count(*) from rows").fetchone())
        self.assertIn("converted", self.on_terminal("convert", "logs", "--out", "o.csv"))
        export = self.start("convert", "logs", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        export.stdout.readline()
        export.stdout.close()
        with export.stderr as err:
            self.assertEqual((1, b""), (export.wait(timeout=30), err.read()))
        self.assertEqual(["logs", "o.csv", "o.db", "o.jsonl"], sorted(os.listdir(self.folder)))

    def test_what_a_table_of_sqlite_cannot_have_is_told(self):
        self.write("logs/a.rph", log(["x%d" % i for i in range(2000)], [(0, *range(2000))]))
        self.expect("convert logs --out o.db", 1, err="o.db: not written: a table of SQLite has at most 1999 variables, not 2000")
        self.expect(["convert", "logs", "--out", "o.db", "--vars", ",".join("x%d" % i for i in range(1, 2000))])
        self.assertEqual(2000, len(sqlite3.connect(self.path("o.db")).execute("select * from rows").fetchone()))

    def test_inspect_lists_folders_and_gaps(self):
        self.write("logs/a.rph", timed(["x", "y"], [(1000, 1, 2), (61_500, 3, 4)]))
        self.write("logs/b.rph", timed(["x"], [(200_000, 1), (3_800_000, 1)]))
        self.write("logs/cut.rph", self.read("logs/b.rph")[:-20])
        lines = ["logs/a.rph  2 samples of 2 variables  1970-01-01T00:00:01.000+00:00 - 1970-01-01T00:01:01.500+00:00",
                 "logs/b.rph  2 samples of 1 variable  1970-01-01T00:03:20.000+00:00 - 1970-01-01T01:03:20.000+00:00"]
        out = self.expect("inspect logs --gaps 2m", 1, None).out.decode().splitlines()
        gaps = [("1970-01-01T00:01:01.500+00:00", "1970-01-01T00:03:20.000+00:00"), ("1970-01-01T00:03:20.000+00:00", "1970-01-01T01:03:20.000+00:00")]
        self.assertEqual(lines, out[:2])
        self.assertRegex(out[2], "logs/cut.rph  ends at byte")
        self.assertEqual(["gap  %s - %s  %s" % (*gap, span) for gap, span in zip(gaps, ["0:02:18", "1:00:00"])], out[3:])
        self.expect("inspect logs/b.rph --gaps 2h", out=self.vastra("inspect", "logs/b.rph").out + b"no gap longer than 2:00:00\n")
        found = self.vastra("inspect", "logs", "logs/a.rph", "--json", "--gaps", "2m").json()
        self.assertEqual([list(gap) for gap in gaps], found["gaps"])
        facts = {"file": "logs/a.rph", "names": ["x", "y"], "samples": 2, "first": [1, 0, 0, 0], "last": [61, 500, 0, 0]}
        self.assertEqual([{**facts, "size": os.path.getsize(self.path("logs/a.rph"))}, facts], [found["logs"][0], found["logs"][3]])
        self.assertEqual(found["logs"][:3], self.vastra("inspect", "logs", "--json").json())
