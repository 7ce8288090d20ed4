"""vastra run and demo: whole runs, from a configuration to files, and how they are stopped."""
import json
import os
import re
import signal
import subprocess
import time
import unittest

from commands import CommandTest, log, output, replayed, simulated

NO_FAILURES = {"smart": 0, "outputs": 0, "summaries": 0, "plcWrite": 0, "trend": 0}
STAMP = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d "


class Run(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("logs"))

    def counts(self, *args):
        result = self.vastra("run", *args, "--json")
        self.assertEqual(0, result.status, result.err)
        return result.json()

    def test_a_replay_ends_by_itself_and_its_end_is_no_failed_read(self):
        self.write("a.rph", log(["x"], [(10, 1.0), (11, 2.0)]))
        self.write("b.rph", log(["x"], [(20, 3.0)]))
        self.write("other.rph", log(["y"], [(15, 3.0)]))
        config = replayed(["b.rph", "a.rph"], [output("logs", saveCsv=1, nameVariable="x", maxSamples=2)])
        for options in [[], ["--threaded"], ["--period", "1"]]:
            with self.subTest(options):
                counts = self.counts(self.write("c.json", config), *options)
                self.assertEqual({"read": 3, "failedReads": 0, "late": counts["late"], "failedWrites": NO_FAILURES,
                                  "files": [self.path("logs", name) for name in ["1.rph", "1h.csv", "3.rph", "3h.csv"]]},
                                 counts)
        config["input"]["inputFiles"].append("other.rph")
        self.assertEqual((3, 1), tuple(self.counts(self.write("c.json", config))[key] for key in ["read", "failedReads"]))

    def test_scans_count_failed_reads_and_the_driver_recovers(self):
        config = simulated([output("logs")], driver={"value4": 3, "value5": 109})
        for options in [[], ["--threaded"]]:
            with self.subTest(options):
                result = self.vastra("run", self.write("c.json", config), "--scans", "7", "--json", *options)
                self.assertEqual((0, 5, 2), (result.status, result.json()["read"], result.json()["failedReads"]))
                self.assertEqual(2, len(re.findall(r"Timeout error\.", result.err)))

    def test_a_failed_write_is_counted_and_the_run_goes_on(self):
        config = simulated([output("logs", maxSamples=2)])
        run = self.start("run", self.write("c.json", config), "--scans", "60", "--json", stdout=subprocess.PIPE,
                         stderr=subprocess.PIPE)
        while not os.listdir(self.path("logs")):
            time.sleep(0.01)
        os.rename(self.path("logs"), self.path("gone"))
        out, _ = run.communicate(timeout=30)
        counts = json.loads(out)
        self.assertEqual((0, 60), (run.returncode, counts["read"]))
        self.assertGreater(counts["failedWrites"]["outputs"], 0)
        self.assertEqual([], counts["files"])

    def test_only_files_of_this_run_that_are_still_there_are_named(self):
        self.write("logs/kept.csv", "old")
        self.write("logs/old.rph", log(["x"], [(1, 1.0)]))
        os.utime(self.path("logs/old.rph"), (1, 1))
        self.write("a.rph", log(["x"], [(i, float(i)) for i in range(5)]))
        self.write("logs/4.rph", b"to be written over")
        config = replayed(["a.rph"], [output("logs/", nameVariable="x", maxSamples=1, maxLogs=2), output("./logs", saveRp=0)])
        self.assertEqual([self.path("logs", name) for name in ["3.rph", "4.rph"]],
                         self.counts(self.write("c.json", config))["files"])
        self.assertEqual(["3.rph", "4.rph", "kept.csv"], sorted(os.listdir(self.path("logs"))))

    def test_a_signal_stops_it_with_every_log_flushed(self):
        config = self.write("c.json", simulated([output("logs", saveCsv=1)]))
        for signals in [[signal.SIGINT], [signal.SIGTERM], [signal.SIGHUP], [signal.SIGTERM, signal.SIGINT, signal.SIGTERM]]:
            for options in [[], ["--threaded"], ["--period", "0"], ["--period", "3600000"]]:
                with self.subTest(signals=signals, options=options):
                    run = self.start("run", config, "--json", "--debug", *options, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                    for line in run.stderr:  # until the first sample is in the log
                        if b"End - OutputFileLink( CFileLink,Write)" in line:
                            break
                    for number in signals:
                        run.send_signal(number)
                    out, _ = run.communicate(timeout=10)
                    counts = json.loads(out)
                    self.assertEqual(0, run.returncode)
                    rows = self.rows(counts["files"])
                    self.assertEqual(counts["read"], rows)
                    self.assertGreater(rows, 0)

    def test_a_signal_that_is_sent_again_and_again_costs_nothing(self):
        config = self.write("c.json", simulated([output("logs", saveCsv=1)]))
        for _ in range(5):
            run = self.start("run", config, "--json", "--debug", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            run.stderr.readline()
            run.stderr.close()
            while run.poll() is None:
                run.send_signal(signal.SIGTERM)
            with run.stdout as out:
                self.assertIn("read", json.load(out))
            self.assertEqual(0, run.returncode)

    def rows(self, files):
        return sum(self.read(file).count(b"\n") - 1 for file in files if file.endswith(".csv"))

    def test_time_goes_by_the_period_and_missed_scans_are_late(self):
        config = self.write("c.json", simulated(input={"scanPeriod": 60000}))
        begin = time.monotonic()
        self.assertEqual(0, self.counts(config, "--scans", "1")["late"])
        self.assertEqual(0, self.counts(config, "--scans", "500", "--period", "0")["late"])
        self.assertLess(time.monotonic() - begin, 30)

    def test_lines_begin_with_the_time_and_an_offset(self):
        config = self.write("c.json", simulated([output("logs", maxLogs=0)], driver={"value4": 2, "value5": 1}))
        for zone, offset in [("UTC", "+00:00"), ("Asia/Kolkata", "+05:30"), ("America/St_Johns", "-0[23]:30")]:
            self.zone = zone
            lines = self.vastra("run", config, "--scans", "2", "--debug").err.splitlines()
            self.assertGreater(len(lines), 10)
            for line in lines:
                self.assertRegex(line, "^" + STAMP)
                self.assertRegex(line[19:26], "^" + re.escape(offset).replace(r"\-0\[23\]", "-0[23]"))
        missing = self.vastra("run", "none.json")
        self.assertEqual(3, missing.status)
        self.assertRegex(missing.err, r"\A%svastra: none.json: No such file or directory\n\Z" % STAMP)

    def test_verbosity(self):
        config = self.write("c.json", simulated([output("logs", maxLogs=0)], driver={"value4": 2, "value5": 109}))
        kinds = {}
        for option in ["--quiet", "--json", "--debug"]:
            err = self.vastra("run", config, "--scans", "3", option).err
            kinds[option] = {kind for kind in ["Begin", "End", "Error", "warning", "3 read", "2 read"] if kind in err}
        self.assertEqual({"--quiet": {"Error"}, "--json": {"Error", "warning"},
                          "--debug": {"Begin", "End", "Error", "warning", "2 read"}}, kinds)

    def test_the_trace_is_that_of_the_stages_alone(self):
        config = simulated([output("logs")], input={"preprocess": 1, "preEquationText": "y = x;", "preNewVars": ["y"]})
        err = self.vastra("run", self.write("c.json", config), "--scans", "1", "--debug").err
        lines = [re.sub(STAMP, "", line) for line in err.splitlines()]
        self.assertEqual("Begin - InputPreprocessEquatorLink( CEquatorLink,Open)", lines[0])
        self.assertEqual(1, sum("Begin - Simulator (N)( CPlcLink,Open)" in line for line in lines))

    def test_output_that_cannot_be_written_fails_after_the_logs_are_safe(self):
        config = self.write("c.json", simulated([output("logs", saveCsv=1)]))
        with open("/dev/full", "wb") as full:
            result = self.vastra("run", config, "--scans", "3", "--json", stdout=full)
        self.assertEqual(1, result.status)
        self.assertEqual(3, self.rows([self.path("logs", name) for name in os.listdir(self.path("logs"))]))
        read, write = os.pipe()
        os.close(read)
        run = self.start("run", config, "--scans", "3", stderr=write)
        os.close(write)
        self.assertEqual(0, run.wait(timeout=30))


class Watch(CommandTest):
    def setUp(self):
        super().setUp()
        self.config = self.write("c.json", simulated(names=["x", "y"], trend={
            "baseVars": ["x"], "equationText": "d = y - x; e = 1 / 0;", "calculateExtra": 1, "extraVars": ["d", "e"]}))

    def lines(self, *args):
        result = self.vastra("watch", self.config, *args)
        self.assertEqual(0, result.status, result.err)
        lines = [line.split(" ", 1) for line in result.out.decode().splitlines()]
        for stamp, _ in lines:
            self.assertRegex(stamp, STAMP.strip().replace(r":\d\d[", r":\d\d\.\d{3}["))
        return [line for _, line in lines], result.err

    def test_on_a_pipe_it_prints_a_line_a_second_and_the_last_sample(self):
        lines, err = self.lines("--scans", "5", "--period", "0")
        self.assertEqual(["x=1 y=1 d=0 e=inf", "x=5 y=5 d=0 e=inf"], lines)
        self.assertIn("trend.baseVars: differ", err)
        self.assertIn("5 read", err)
        self.assertEqual(["d=0 x=1", "d=0 x=3"], self.lines("--scans", "3", "--period", "0", "--vars", "d,x")[0])
        lines, _ = self.lines("--scans", "15", "--period", "100", "--vars", "x", "--threaded")
        self.assertIn(len(lines), range(2, 9), lines)

    def test_a_variable_that_is_not_there_is_refused(self):
        for names in ["x,z", "", "x,"]:
            result = self.vastra("watch", self.config, "--vars", names, "--scans", "1")
            self.assertEqual((2, b""), (result.status, result.out))
            self.assertRegex(result.err, "c.json: --vars z?: there is no such variable")
        result = self.vastra("watch", self.write("none.json", replayed(["none.rph"])), "--vars", "x")
        self.assertEqual(1, result.status)
        self.assertIn("none.json: input: the stage does not open", result.err)

    def test_a_reader_that_has_gone_does_not_end_the_run(self):
        with open("/dev/full", "wb") as full:
            result = self.vastra("watch", self.config, "--scans", "2", "--period", "0", stdout=full)
        self.assertEqual((1, 1), (result.status, result.err.count("standard output")))


class Demo(CommandTest):
    def test_it_logs_and_leaves_a_configuration_that_runs(self):
        result = self.vastra("demo", "--scans", "45", "--period", "0")
        self.assertEqual((0, b""), (result.status, result.out))
        self.assertEqual(["Batch1.rph", "Batch1h.csv", "Batch2.rph", "Batch2h.csv", "Batch3.rph", "Batch3h.csv"],
                         sorted(os.listdir(self.path("demo-logs/batches"))))
        self.assertIn("demo-logs/batches/Batch3h.csv", result.err)
        rows = [row.split(",") for name in os.listdir(self.path("demo-logs/means")) if name.endswith("d.csv")
                for row in self.read("demo-logs/means/" + name).decode().splitlines()[1:]]
        self.assertEqual(["1.000000", "1.000000", "2.000000", "2.000000"], [row[1] for row in rows])
        self.assertIn("vastra inspect demo-logs", result.err)
        self.assertNotIn("rror", result.err)
        counts = self.vastra("run", "demo-logs/demo.json", "--scans", "21", "--period", "0", "--json").json()
        self.assertEqual((21, 0, 8), (counts["read"], counts["failedReads"], len(counts["files"])))

    def test_it_keeps_what_the_user_made_of_its_configuration(self):
        self.write("there/demo.json", "{}")
        result = self.vastra("demo", "--out", "there", "--scans", "1")
        self.assertEqual((0, b"{}"), (result.status, self.read("there/demo.json")))
        self.assertIn("there/demo.json: warning: ", result.err)
        self.write("file", "")
        self.assertEqual(1, self.vastra("demo", "--out", "file").status)


if __name__ == "__main__":
    unittest.main()
