"""vastra run, watch and demo: whole runs, from a configuration to files, and how they are stopped."""
import json
import os
import re
import resource
import signal
import subprocess
import time

from commands import LogTest, output, replayed, simulated

# Two requests that arrive at the same moment, as from timeout(1).
TOGETHER = [signal.SIGSTOP, signal.SIGTERM, signal.SIGINT, signal.SIGCONT]
STAMP = r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d"


class Run(LogTest):
    def counts_after(self, signals, *args, **options):
        """The counts of a run into an empty folder that gets the signals when its first sample is in the log."""
        for file in os.listdir(self.path("logs")):
            os.remove(self.path("logs", file))
        run = self.start("run", "c.json", "--json", "--debug", *args, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)
        next(line for line in run.stderr if b"End - OutputFileLink( CFileLink,Write)" in line)
        for number in signals:
            run.send_signal(number)
        if os.environ.get("SANITIZER") == "thread":  # which loses one signal in a thousand; the first that comes counts
            try:
                run.communicate(timeout=5)
            except subprocess.TimeoutExpired:
                run.send_signal(signal.SIGHUP)
        counts = json.loads(run.communicate(timeout=60)[0])
        self.assertEqual(0, run.returncode)
        return counts

    def test_a_signal_stops_it_with_every_log_flushed(self):
        self.write("c.json", simulated([output("logs", saveCsv=1)]))
        for signals in [[signal.SIGINT], [signal.SIGHUP], TOGETHER + [signal.SIGHUP] * 100]:
            for options in [[], ["--threaded"], ["--period", "0"], ["--period", "3600000"]]:
                with self.subTest(signals=signals[:3], options=options):
                    counts = self.counts_after(signals, *options)
                    rows = sum(self.read(file).count(b"\n") - 1 for file in counts["files"] if file.endswith(".csv"))
                    self.assertEqual(counts["read"], rows)
                    self.assertGreater(rows, 0)
        nohup = self.counts_after([signal.SIGHUP], "--scans", "30", preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.assertEqual(30, nohup["read"])

    def test_the_second_signal_ends_it_at_once(self):
        """The files are limited to one byte, so that the run waits for the disk when it closes."""
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1, 1))
        self.write("c.json", simulated([output("logs")]))
        run = self.start("run", "c.json", "--debug", "--close-within", "600", stderr=subprocess.PIPE, preexec_fn=limit)
        next(line for line in run.stderr if b"End - OutputFileLink( CFileLink,Write)" in line)
        run.send_signal(signal.SIGTERM)
        time.sleep(.5)  # a signal that comes with the first one is not a second one
        run.send_signal(signal.SIGINT)
        run.communicate(timeout=60)
        self.assertEqual(-signal.SIGINT, run.returncode)

    def test_messages_begin_with_the_time_and_depend_on_the_verbosity(self):
        self.write("c.json", simulated([output("logs", maxSamples=0)], driver={"value4": 2, "value5": 109},
                                       input={"preprocess": 1, "preEquationText": "y = x;", "preNewVars": ["y", "x"]}))
        self.zone = "Asia/Kolkata"
        for option, kinds in [("--quiet", ["Error"]), ("--json", ["Error", "warning"]),
                              ("--debug", ["Begin", "End", "Error", "warning", "2 read"])]:
            lines = self.vastra("run", "c.json", "--scans", "3", option).err.splitlines()
            for line in lines:
                self.assertRegex(line, STAMP + r"\+05:30 ")
            self.assertEqual(kinds, [kind for kind in ["Begin", "End", "Error", "warning", "2 read"] if kind in str(lines)])
        self.assertEqual(1, str(lines).count("Begin - Simulator (N)( CPlcLink,Open)"))

    def test_output_that_cannot_be_written_fails_after_the_logs_are_safe(self):
        self.write("c.json", simulated([output("logs", saveCsv=1)]))
        with open("/dev/full", "wb") as full:
            self.expect("run c.json --scans 3 --json", 1, out=None, err=None, stdout=full)
            self.assertEqual(3, len(self.rows()))
            watch = self.expect("watch c.json --scans 2 --period 0", 1, out=None, err=None, stdout=full)
            self.assertEqual(1, watch.err.count("standard output"))
            self.expect("run c.json --scans 3", stderr=full, out=None)

    def watch(self, args):
        result = self.expect("watch c.json " + args, out=None, err=None)
        return re.sub(STAMP + r"\.\d{3}\+00:00 ", "", result.out.decode(), flags=re.M).splitlines()

    def test_watch_on_a_pipe_prints_a_line_a_second_and_the_last_sample(self):
        self.write("c.json", simulated([output("logs", saveCsv=1)], names=["x", "y"], trend={
            "equationText": "d = y - x; e = 1 / 0;", "calculateExtra": 1, "extraVars": ["d", "e"]}))
        self.assertEqual(["x=1 y=1 d=0 e=inf", "x=5 y=5 d=0 e=inf"], self.watch("--scans 5 --period 0"))
        self.assertEqual(["d=0 x=1", "d=0 x=3"], self.watch("--scans 3 --period 0 --vars d,x"))
        self.assertIn(len(self.watch("--scans 15 --period 100 --vars x --threaded")), range(2, 9))
        for names in ["x,z", "", "x,"]:
            self.expect(["watch", "c.json", "--vars", names, "--scans", "1"], 2, err="c.json: --vars z?: there is no such variable")
        self.write("none.json", replayed(["none.rph"]))
        self.expect("watch none.json --vars x", 1, err=None)

    def test_the_demo_leaves_a_configuration_that_runs_and_keeps_that_of_the_user(self):
        err = self.expect("demo --scans 0 --out logs", err=None).err
        self.assertIn("vastra: 0 read, 0 failed reads, 0 late, 0 failed writes, 0 files written\n", err)
        self.assertNotIn("inspect", err)
        counts = self.expect("run logs/demo.json --scans 21 --period 0 --json", out=None, err=None).json()
        self.assertEqual((21, 0, 8), (counts["read"], counts["failedReads"], len(counts["files"])))
        self.write("logs/demo.json", "{}")
        self.assertIn("logs/demo.json: warning: ", self.expect("demo --out logs --scans 1", err=None).err)
        self.assertEqual(b"{}", self.read("logs/demo.json"))
        self.expect("demo --out logs/demo.json", 1, err="logs/demo.json: ")
