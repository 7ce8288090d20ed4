"""vastra inspect and convert, on logs made here and on logs that the logger wrote."""
import os
import socket
import subprocess
import unittest

from commands import LogTest, log, output, replayed

SAMPLES = [(1000000000, 1.5, -2.0), (1000000060, 2.25, 0.0)]
CSV = (b"TimeStamp,Temp,Flow,\nSun Sep 09 01:46:40:0  2001,1.500000,-2.000000,\n"
       b"Sun Sep 09 01:47:40:0  2001,2.250000,0.000000,\n")


class Logs(LogTest):
    def setUp(self):
        super().setUp()
        self.write("a.rph", log(["Temp", "Flow"], SAMPLES))
        self.write("cut.rph", self.read("a.rph")[:50])
        self.write("empty.rph", log(["x"], [(5, 1.0)])[:25] + bytes(10))

    def test_inspect_shows_the_good_logs_beside_the_bad_ones(self):
        result = self.vastra("inspect", "cut.rph", "none.rph", "empty.rph", "a.rph", "--json")
        self.assertEqual((1, ""), (result.status, result.err))
        cut, none, empty, good = result.json()
        self.assertEqual(["file", "error"], list(cut))
        self.assertIn("50", cut["error"])
        self.assertEqual({"file": "none.rph", "error": "No such file or directory"}, none)
        self.assertEqual({"file": "empty.rph", "names": ["x"], "samples": 0, "first": None, "last": None}, empty)
        self.assertEqual({"file": "a.rph", "names": ["Temp", "Flow"], "samples": 2,
                          "first": [1000000000, 0, 0, 0], "last": [1000000060, 0, 0, 0]}, good)

        plain = self.vastra("inspect", "cut.rph", "empty.rph", "a.rph")
        self.assertEqual(1, plain.status)
        self.assertRegex(plain.err, r"\Avastra: cut.rph: [^\n]*\n\Z")
        self.assertEqual(b"empty.rph\n  0 samples of 1 variable\n  - x\n"
                         b"a.rph\n  2 samples of 2 variables\n  from  2001-09-09T01:46:40.000+00:00\n"
                         b"  to    2001-09-09T01:47:40.000+00:00\n  - Temp\n  - Flow\n", plain.out)

    def test_what_is_not_a_file_is_named_and_not_waited_for(self):
        os.mkfifo(self.path("fifo"))
        with socket.socket(socket.AF_UNIX) as server:
            server.bind(self.path("socket"))
            for name, kind in [("fifo", "a FIFO"), ("socket", "a socket"), ("logs", "a folder"), ("/dev/null", "a device")]:
                for command in ["inspect", "convert"]:
                    result = self.vastra(command, name)
                    self.assertEqual((1, b"", "vastra: %s: is %s, not a log\n" % (name, kind)),
                                     (result.status, result.out, result.err))

    def test_names_that_are_not_utf8_stay_bytes_except_in_json(self):
        self.write("raw.rph", log(["T"], [(0, 1.0)]).replace(b"\x01T", b"\x04\xfc\n\x9b\x85"))
        self.assertIn(b"  - \xfc???\n", self.vastra("inspect", "raw.rph").out)
        self.assertEqual(["\ufffd\n\ufffd\ufffd"], self.vastra("inspect", "raw.rph", "--json").json()[0]["names"])
        self.assertIn(b",\xfc\n\x9b\x85,\n", self.vastra("convert", "raw.rph").out)

    def test_odd_file_names_stay_as_they_are(self):
        for name in ["[b].rph", "[a", "{c}", "ü\n.rph", "--json.rph"]:
            with self.subTest(name):
                self.write(name, self.read("a.rph"))
                result = self.vastra("inspect", "--json", "--", name)
                self.assertEqual((0, [name]), (result.status, [found["file"] for found in result.json()]))

    def test_convert_prints_what_the_logger_writes(self):
        config = replayed(["a.rph"], [output("logs", ["Temp", "Flow"], saveCsv=1)])
        self.zone = "Asia/Kolkata"
        self.assertEqual(0, self.vastra("run", self.write("c.json", config)).status)
        self.assertEqual(self.read("logs/0109090700h.csv"), self.vastra("convert", "logs/0109090700.rph").out)

    def test_convert_replaces_its_file_whole_or_not_at_all(self):
        os.symlink("a.rph", self.path("link.rph"))
        before = sorted(os.listdir(self.folder) + ["a.csv"])
        result = self.vastra("convert", "a.rph", "--csv", "a.csv")
        self.assertEqual((0, b"", "", CSV), (result.status, result.out, result.err, self.read("a.csv")))
        for log_file, csv, status, words in [("cut.rph", "a.csv", 1, "cut.rph: ends at byte 50"),
                                             ("a.rph", "none/a.csv", 1, "none/a.csv: No such file"),
                                             ("a.rph", "/dev/full", 1, "/dev/full: No space"),
                                             ("a.rph", "logs/../a.rph", 2, "logs/../a.rph: not written"),
                                             ("link.rph", "a.rph", 2, "a.rph: not written")]:
            with self.subTest(csv):
                result = self.vastra("convert", log_file, "--csv", csv)
                self.assertEqual(status, result.status)
                self.assertRegex(result.err, r"\Avastra: %s[^\n]*\n\Z" % words)
        self.assertEqual((CSV, log(["Temp", "Flow"], SAMPLES)), (self.read("a.csv"), self.read("a.rph")))
        self.assertEqual(before, sorted(os.listdir(self.folder)))

    def test_a_reader_that_wants_no_more_ends_convert_without_a_message(self):
        self.write("long.rph", log(["x"], [(i, 1.0) for i in range(30000)]))
        convert = self.start("convert", "long.rph", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        convert.stdout.readline()
        convert.stdout.close()
        with convert.stderr as err:
            self.assertEqual((1, b""), (convert.wait(timeout=30), err.read()))


if __name__ == "__main__":
    unittest.main()
