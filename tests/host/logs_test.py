"""vastra inspect and convert, on logs made here and on logs that the logger wrote."""
import os
import resource
import socket
import struct
import subprocess

from commands import LogTest, log, output, replayed, simulated

SAMPLES = [(1000000000, 1.5, -2.0), (1000000060, 2.25, 0.0)]


class Logs(LogTest):
    def setUp(self):
        super().setUp()
        self.write("a.rph", log(["Temp", "Flow"], SAMPLES))
        self.write("cut.rph", self.read("a.rph")[:50])

    def test_inspect_shows_the_good_logs_beside_the_bad_ones(self):
        self.write("empty.rph", log(["x"], [(5, 1.0)])[:25] + bytes(10))
        cut, none, empty, good = self.expect("inspect cut.rph none.rph empty.rph a.rph --json", 1, out=None).json()
        self.assertEqual(["file", "error"], list(cut))
        self.assertIn("50", cut["error"])
        self.assertEqual({"file": "none.rph", "error": "No such file or directory"}, none)
        self.assertEqual({"file": "empty.rph", "names": ["x"], "samples": 0, "first": None, "last": None}, empty)
        self.assertEqual({"file": "a.rph", "names": ["Temp", "Flow"], "samples": 2,
                          "first": [1000000000, 0, 0, 0], "last": [1000000060, 0, 0, 0]}, good)
        self.expect("inspect cut.rph empty.rph a.rph", 1, "empty.rph\n  0 samples of 1 variable\n  - x\n"
                    "a.rph\n  2 samples of 2 variables\n  from  2001-09-09T01:46:40.000+00:00\n"
                    "  to    2001-09-09T01:47:40.000+00:00\n  - Temp\n  - Flow\n", "cut.rph: ")

    def test_what_is_not_a_file_is_named_and_not_waited_for(self):
        self.write("c.json", simulated())
        os.mkfifo(self.path("fifo"))
        with socket.socket(socket.AF_UNIX) as server:
            server.bind(self.path("socket"))
            for name, kind in [("fifo", "a FIFO"), ("socket", "a socket"), ("logs", "a folder"), ("/dev/null", "a device")]:
                for command in ["inspect ", "convert "]:
                    self.expect(command + name, 1, err="%s: %s" % (name, "has no logs" if name == "logs" else "is %s, not a log" % kind))
                for command in ["run %s", "check %s", "export %s", "report %s", "import %s new.vst"]:
                    self.expect(command % name, 3, err="%s: is %s, not a configuration" % (name, kind))
                self.expect("import c.json " + name, 1, err="%s: not written: it is %s" % (name, kind))
        self.write("r.json", replayed(["fifo"], [output("logs", ["Temp"])]))
        for option in ["--quiet", "--plain"]:
            self.expect("run r.json " + option, 1, err=None)

    def test_a_file_of_holes_is_refused_without_the_memory(self):
        """The counts of the first log need 87 bytes; those of the second one more than the file has."""
        def limit():
            if not os.environ.get("SANITIZER"):
                resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))
        self.write("cut.rph", self.read("a.rph")[:50].replace(struct.pack("<I", 2), b"\xff\xff\xff\xff"))
        for name, status, words in [("a.rph", 1, "has 10737418240 bytes, of which its counts need 87"),
                                    ("cut.rph", 1, "has 10737418240 bytes, of which most are a hole in the file")]:
            os.truncate(self.path(name), 10 << 30)
            for command in ["inspect ", "convert "]:
                self.expect(command + name, status, err="%s: %s" % (name, words), preexec_fn=limit)
        self.write("big.json", "{")
        os.truncate(self.path("big.json"), 10 << 30)
        self.expect("check big.json", 3, err="big.json: is larger than 64 MB, the most that a configuration", preexec_fn=limit)
        self.write("r.json", replayed(["a.rph"], [output("logs", ["Temp"])]))
        self.expect("run r.json --strict", 1, err="r.json: input.inputFiles\\[0\\]: .*a.rph: has 10737418240 bytes", preexec_fn=limit)

    def test_names_stay_as_they_are_except_on_a_line(self):
        self.write("--json.rph", log(["T"], [(0, 1.0)]).replace(b"\x01T", b"\x04\xfc\n\x9b\x85"))
        self.expect("inspect -- --json.rph", out=b"--json.rph\n  1 sample of 1 variable\n  from  1970-01-01T00:00:00.000+00:00\n"
                    b"  to    1970-01-01T00:00:00.000+00:00\n  - \xfc???\n")
        self.assertEqual(["\ufffd\n\ufffd\ufffd"], self.vastra("inspect", "--json", "--", "--json.rph").json()[0]["names"])
        self.assertIn(b",\xfc\n\x9b\x85,\n", self.vastra("convert", "--", "--json.rph").out)

    def test_convert_writes_what_the_logger_writes_or_nothing(self):
        self.write("c.json", replayed(["a.rph"], [output("logs", ["Temp", "Flow"], saveCsv=1)]))
        os.symlink("a.rph", self.path("link.rph"))
        before = sorted(os.listdir(self.folder) + ["a.csv"])
        self.zone = "Asia/Kolkata"
        self.expect("run c.json --quiet")
        csv = self.read("logs/0109090700h.csv")
        self.expect("convert logs/0109090700.rph", out=csv)
        self.expect("convert a.rph --csv a.csv")
        full = {"restore_signals": False, "preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (50, 50))}
        for args, status, err, options in [
                ("cut.rph --csv a.csv", 1, "cut.rph: ends at byte 50", {}), ("a.rph --csv none/a.csv", 1, "none/a.csv: No such file", {}),
                ("a.rph --csv a.csv", 1, "a.csv: File too large", full), ("a.rph --csv logs/../a.rph", 2, "logs/../a.rph: not written", {}),
                ("link.rph --csv a.rph", 2, "a.rph: not written", {})]:
            self.expect("convert " + args, status, err=err, **options)
        self.assertEqual((csv, log(["Temp", "Flow"], SAMPLES)), (self.read("a.csv"), self.read("a.rph")))
        self.assertEqual(before, sorted(os.listdir(self.folder)))

    def test_a_reader_that_wants_no_more_ends_convert_without_a_message(self):
        self.write("long.rph", log(["x"], [(i, 1.0) for i in range(30000)]))
        convert = self.start("convert", "long.rph", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        convert.stdout.readline()
        convert.stdout.close()
        with convert.stderr as err:
            self.assertEqual((1, b""), (convert.wait(timeout=30), err.read()))
