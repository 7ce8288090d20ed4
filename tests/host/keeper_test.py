"""Logs that are kept: what a kill, a full disk and bad files leave, in files and in the account."""
import os
import resource
import signal
import subprocess

from commands import LogTest, log, output, replayed, simulated


class Keeper(LogTest):
    def limited(self, limit, *args):
        """A run in which no file can have more bytes than limit."""
        def set_limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
        return self.vastra("run", "c.json", "--period", "0", *args, preexec_fn=set_limit)

    def run_json(self, *args, status=0, limit=resource.RLIM_INFINITY):
        """Runs the configuration and balances the accounts; returns the counts and the messages."""
        result = self.limited(limit, "--json", *args)
        self.assertEqual(status, result.status, result.err)
        for entry in result.json()["ledger"]:
            self.assertEqual(entry["offered"], entry["unwanted"] + entry["taken"], entry)
            self.assertEqual(entry["taken"] + entry["recovered"],
                             sum(entry[place] for place in ["onDisk", "inJournal", "inMemory", "lost"]), entry)
            self.assertEqual(entry["lost"], sum(loss["rows"] for loss in entry["losses"]), entry)
        return result.json(), result.err

    def samples(self, *paths):  # of all logs and journals together
        return sum(log.get("samples", 0) for log in self.vastra("inspect", "--json", *paths).json()) if paths else 0

    def clear(self):
        for file in os.listdir(self.path("logs")):
            os.remove(self.path("logs", file))

    def journals(self):
        return [self.path("logs", file) for file in os.listdir(self.path("logs")) if file.endswith(".journal")]

    def kill(self, samples):
        """Kills a run when its journal has so many samples; returns how many it has then."""
        run = self.start("run", "c.json", stderr=subprocess.DEVNULL)
        self.addCleanup(run.kill)
        self.until(lambda: self.samples(*self.journals()) >= samples)
        self.expect("check c.json", out=None)  # also while a process writes these logs
        run.kill()
        run.wait()
        return self.samples(*self.journals())

    def test_a_kill_loses_no_journaled_row_and_the_next_start_tells_once(self):
        for name, place, added in [("A", 0, 5), ("B", 1, 0)]:  # the output goes on; another one is in its place
            with self.subTest(name=name):
                self.clear()
                self.write("c.json", simulated([output("logs", name="A", saveCsv=1)]))
                rows = self.kill(20)
                self.assertGreaterEqual(rows, 20)
                self.write("c.json", simulated([output("logs", name=name, saveCsv=1)]))
                counts, err = self.run_json("--scans", "5")
                entry = counts["ledger"][place]
                self.assertEqual(("A", rows, rows + added), (entry["name"], entry["recovered"], entry["onDisk"]))
                self.assertEqual(1, err.count("recovered %d samples, " % rows), err)
                self.assertEqual([[str(x) + ".000000", ""] for x in [*range(1, rows + 1), *range(1, 6)]], self.rows())
                logs = [self.path("logs", file) for file in sorted(os.listdir(self.path("logs"))) if file[0] != "."]
                self.assertEqual((logs, []), (counts["files"], self.journals()))
                self.assertNotIn("recovered", self.run_json("--scans", "0")[1])

    def test_the_account_is_that_of_the_files(self):
        os.mkdir(self.path("sums"))
        self.write("c.json", simulated(
            [output("logs", enableText="WriteToLog = x % 3 != 0;", maxSamples=7, maxLogs=3), {"varNames": ["x"]}],
            summaries=[{"enableText": "SampleIsValid = 1; WriteToSummary = x % 10 == 0;", "summaryText": "n = n + 1;",
                        "varNames": ["n"], "saveRp": 1, "maxSamples": 4, "directory": "sums"}]))
        counts = self.run_json("--scans", "100")[0]
        kept, nothing, sums = counts["ledger"]
        self.assertEqual([(100, 33, 67), (100, 100, 0), (67, 10)],
                         [(entry["offered"], entry["unwanted"], entry["onDisk"]) for entry in [kept, nothing]] +
                         [(kept["taken"], sums["onDisk"])])
        self.assertEqual((18, 18 + 10), (kept["onDisk"] - kept["rotated"], self.samples(*counts["files"])))

    def test_rows_that_are_lost_come_first_and_rows_in_a_journal_are_told(self):
        """A limit of the size of files is a disk on which nothing, or only the smaller journal, has space."""
        self.write("c.json", simulated([output("logs", saveRp=0, saveCsv=1, maxSamples=50)]))
        end = "100 read, 0 failed reads, 0 late, 0 failed writes, "
        for limit, status, key, line in [
                (1, 1, "lost", r"100 rows lost \(File too large\), " + end + "0 files written"),
                (1800, 0, "inJournal", end + "0 files written, 100 rows in a journal only: the next run makes a log of them")]:
            args = ["--scans", "100", "--close-within", "10" if status == 0 else "0.3"]
            with self.subTest(key):
                counts, err = self.run_json(*args, status=status, limit=limit)
                self.assertEqual(100, counts["ledger"][0][key], err)
                self.assertEqual(status == 1, "vastra: c.json: 100 rows lost (File too large)\n" in err)
                self.clear()
                self.assertRegex(self.limited(limit, "--quiet", *args).err.splitlines()[-1], " vastra: " + line + "$")
        self.assertEqual(100, self.run_json("--scans", "0")[0]["ledger"][0]["recovered"])
        self.assertEqual(100, len(self.rows()))

    def test_bad_logs_of_a_replay_are_named_and_left_out(self):
        good = log(["x"], [(1700000000 + i, float(i)) for i in range(9)])
        files = {"in.rph": good, "cut.rph": good[:-20], "empty.rph": b"", "y.rph": log(["y"], [(1700000009, 1.0)])}
        for name, content in files.items():
            self.write(name, content)
        os.mkfifo(self.path("fifo.rph"))
        names = [*files, "fifo.rph", "gone.rph"]
        self.write("c.json", replayed(names, [output("logs", saveCsv=1)]))
        counts, err = self.run_json()
        self.assertEqual((9, 9), (counts["read"], len(self.rows())))
        strict = self.expect("run c.json --strict", 1, err=None).err
        for index, name in enumerate(names[1:], 1):
            line = r"vastra: c\.json: %%sinput\.inputFiles\[%d\]: \S*%s: .*%%s" % (index, name)
            self.assertRegex(err, line % ("warning: ", ": the log is left out"))
            self.assertRegex(strict, line % ("", ""))
        own = [name for name in counts["files"] if name.endswith(".rph")]
        self.write("c.json", replayed(own, [output("logs")]))
        self.expect("run c.json", 3, err=r"c\.json: outputs\[0\]\.directory: input\.inputFiles\[0\], ")
        self.write("c.json", replayed(own, [output("logs", usePrefix=1, prefix="p")]))
        self.expect("check c.json", err="", out=None)
        self.expect("check c.json --plain", err=r"c\.json: warning: outputs\[0\]\.directory: input\.inputFiles\[0\], ", out=None)
