"""vastra run as a service, and vastra init: the notify protocol, the journal, reload, retry, and the unit."""
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time

from commands import VASTRA, LogTest, log, output, replayed, simulated

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../prove"))
from supervisor import Service  # noqa: E402

UNIT = os.path.join(os.path.dirname(__file__), "../../debian/vastra@.service")


class ServiceTest(LogTest):
    def service(self, *args, program=VASTRA, **options):
        errors = open(self.path("errors"), "w+")
        service = Service([program, "run", "c.json", "--service", *args], self.folder, stderr=errors,
                          environment=self.environment(), **{"watchdog": 30, **options}).start()
        self.addCleanup(errors.close)
        self.addCleanup(service.process.kill)
        return service

    def end(self, service, status=0):
        service.process.terminate()
        self.assertEqual(status, service.process.wait(60), self.errors())

    def errors(self):
        return self.read("errors").decode()

    def wait_for_error(self, words):
        self.until(lambda: words in self.errors() or self.errors())

    def test_it_says_how_it_is_and_feeds_its_watchdog(self):
        """Also while the next scan is an hour away."""
        for period in ["0", "3600000"]:
            self.write("c.json", simulated([output("logs")]))
            service = self.service("--period", period, watchdog=6)
            self.assertTrue(service.wait_for("WATCHDOG=1"))
            self.assertTrue(service.wait_for(r"STATUS=running: [1-9]\d* scan.*, last sample 20.*in memory"))
            self.end(service)
            self.assertEqual("READY=1", service.said[0])
            self.until(lambda: service.said[-1].startswith("STOPPING=1"))
            self.assertEqual(0, service.starved)

    def test_lines_for_the_journal_have_priorities(self):
        self.write("c.json", simulated([output("logs", maxSamples=0)], driver={"value4": 2, "value5": 109}))
        with open(self.path("errors"), "wb") as errors:
            status = os.fstat(errors.fileno())
            for stream, pattern in [("%d:%d" % (status.st_dev, status.st_ino), r"<[3456]>\D"), ("8:1", r"\d{4}-\d\d-")]:
                errors.truncate(0)
                self.vastra("run", "c.json", "--scans", "3", "--service", stderr=errors,
                            env={**self.environment(), "JOURNAL_STREAM": stream})
                lines = self.errors().replace("\0", "").splitlines()
                self.assertEqual([], [line for line in lines if not re.match(pattern, line)])
                self.assertGreater(len(lines), 3)
                if "<" in pattern:
                    for prefix, words in [("<3>", "Error"), ("<4>", "warning"), ("<5>", "input: 1 node"), ("<6>", " read, ")]:
                        self.assertTrue(any(line.startswith(prefix) and words in line for line in lines), (words, lines))

    def test_root_is_where_relative_paths_begin(self):
        self.write("c.json", simulated([output("a", saveCsv=1)]))
        self.expect("import c.json d.vst", 0)
        binary = self.read("d.vst").replace(self.path("a").encode(), b"a" * len(self.path("a")))
        self.write("d.vst", binary)
        for number, (file, folder) in enumerate([("c.json", "a"), ("d", "a" * len(self.path("a")))]):
            self.expect(["run", file, "--service", "--scans", "2", "--period", "0", "--root", "r%d" % number, "--create-folders"],
                        err=None)
            self.assertEqual(2, len(self.rows("r%d/%s" % (number, folder))))

    def test_what_can_come_is_waited_for_and_told_once(self):
        """A module, a folder, a log to replay; a signal ends the wait. What cannot come is refused."""
        os.mkdir(self.path("bin"))
        program, places = shutil.copy(VASTRA, self.path("bin")), [os.path.dirname(VASTRA), self.path("bin")]
        copy = lambda name: shutil.copy(*(os.path.join(place, name) for place in places))  # noqa: E731
        for configuration, reason, come in [
                (simulated([output("logs")]), "no driver 9001", lambda: copy("simulator.so")),
                (simulated([output("later")]), "later: No such file", lambda: os.mkdir(self.path("later"))),
                (replayed(["a.rph"], [output("logs")]), "no log to replay",
                 lambda: self.write("a.rph", log(["x"], [(5, 1.0)])))]:
            self.write("c.json", configuration)
            with self.subTest(reason):
                service = self.service("--retry", "--period", "10", program=program)
                self.assertTrue(service.wait_for("STATUS=waiting: .*" + reason), self.errors())
                time.sleep(1.5)  # the second attempt
                self.assertEqual(1, len(re.findall(reason, self.errors())), self.errors())
                if "later" in reason:
                    self.end(service)
                    continue
                come()
                self.wait_for_error("c.json: the logger has started")
                if "replay" in reason:
                    self.assertEqual(0, service.process.wait(60), self.errors())
                else:
                    self.end(service)
        for wrong in ["{", simulated([output("logs", ["z"])]), simulated([output("logs", enableText="x = ;")]),
                      simulated([output("logs", nameVariable="z")])]:
            self.write("c.json", wrong)
            self.expect("run c.json --service --retry", 3, out=None, err=None)

    def test_a_reload_uses_a_good_configuration_and_no_other(self):
        """While it runs, and while it waits."""
        good = simulated([output("logs"), output("more", saveCsv=1)])
        self.write("c.json", simulated([output("logs")]))
        service = self.service("--create-folders")
        self.assertTrue(service.wait_for("STATUS=running"))
        for wrong, words in [("{", "c.json: "), (simulated([output("logs", ["z"])]), "no variable \"z\""),
                             (simulated([output("logs")], driver={"plcType": 9999}), "no driver 9999"), (good, "c.json: reloaded")]:
            self.write("c.json", wrong)
            self.assertTrue(service.reload(), self.errors())
            self.wait_for_error(words)
        self.assertEqual(3, self.errors().count("not reloaded"), self.errors())
        self.assertTrue(any(text.startswith("RELOADING=1\nMONOTONIC_USEC=") for text in service.said))
        time.sleep(.2)
        self.end(service)
        self.assertGreater(len(self.rows("more")), 0)
        self.write("c.json", simulated([output("none")]))
        service = self.service("--retry")
        self.assertTrue(service.wait_for("STATUS=waiting"))
        for text in ["{", simulated([output("logs")])]:
            self.write("c.json", text)
            self.assertTrue(service.reload(), self.errors())
        self.assertTrue(service.wait_for("STATUS=running"), self.errors())
        self.end(service)

    def test_a_reload_after_which_nothing_opens_is_no_success(self):
        """The new folder is another process's, the old one was removed."""
        os.makedirs(self.path("more"))
        self.write("other.json", simulated([output("more", name="Other")]))
        other = self.start("run", "other.json", stderr=subprocess.PIPE)
        self.addCleanup(other.__exit__, None, None, None)
        self.addCleanup(other.kill)
        next(line for line in other.stderr if b"outputs[0]" in line)
        for options, status in [(["--retry"], 0), ([], 1)]:
            self.write("c.json", simulated([output("logs", enableText="WriteToLog = 0;")]))
            service = self.service("--json", "--close-within", ".1", *options, stdout=subprocess.PIPE)
            self.assertTrue(service.wait_for("STATUS=running"), self.errors())
            os.rename(self.path("logs"), self.path("gone"))
            self.write("c.json", simulated([output("more", name="Other")]))
            service.process.send_signal(signal.SIGHUP)
            self.wait_for_error("c.json: outputs: the stage does not open: outputs[0].directory: " + self.path("logs"))
            if options:
                self.assertTrue(service.wait_for("STATUS=waiting: .*logs: No such file"), service.said)
                os.rename(self.path("gone"), self.path("logs"))
                self.wait_for_error("c.json: the logger has started")
                service.process.terminate()
            counts = json.loads(service.process.communicate(timeout=60)[0])
            self.assertEqual(status, service.process.returncode, self.errors())
            self.until(lambda: any(text.startswith("STOPPING") for text in service.said), bool(options))
            self.assertEqual(counts["read"], counts["ledger"][0]["offered"])

    def test_init_writes_what_starts(self):
        lines = "systemctl enable --now vastra@%s\nsystemctl status vastra@%s\n"
        for name, options in [("kiln", []), ("a.b_C-1", ["--modbus", "192.168.0.10"])]:
            self.expect(["init", name, "--dir", ".", *options], 0, lines % (name, name), r"\./%s\.json: written" % name)
            before = self.read(name + ".json")
            self.expect(["init", name, "--dir", "."], 1, err=r"\./%s\.json: not written: File exists" % name)
            self.assertEqual(before, self.read(name + ".json"))
        self.assertIn(b'"text1": "192.168.0.10"', before)
        self.expect("run kiln --service --scans 2 --root logs --create-folders --quiet")
        self.assertEqual(["all", "batches", "means"], sorted(os.listdir(self.path("logs"))))
        for name in ["", ".a", "-a", "a/b", "a b", "a@b", "\xe4", "a.json", "a" * 65]:
            self.expect(["init", name, "--dir", "."] if name[:1] != "-" else ["init", "--dir", ".", "--", name], 2, err=".*")
        self.expect("init kiln --dir none", 1, err="none/kiln.json: not written: No such file")

    def test_the_unit_is_hardened(self):
        if not shutil.which("systemd-analyze"):
            self.skipTest("there is no systemd-analyze")
        shown = subprocess.run(["systemd-analyze", "security", "--offline=true", UNIT], capture_output=True, text=True).stdout
        self.assertLessEqual(float(re.search(r"exposure level for \S+: ([\d.]+)", shown)[1]), 2.0)
