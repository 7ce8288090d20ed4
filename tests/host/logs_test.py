"""vastra inspect and convert, on logs made here and on logs that the logger wrote."""
import os
import unittest

from commands import CommandTest, log, output, replayed, simulated

SAMPLES = [(1000000000, 1.5, -2.0), (1000000060, 2.25, 0.0)]
CSV = (b"TimeStamp,Temp,Flow,\nSun Sep 09 01:46:40:0  2001,1.500000,-2.000000,\n"
       b"Sun Sep 09 01:47:40:0  2001,2.250000,0.000000,\n")


class Logs(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.rph", log(["Temp", "Flow"], SAMPLES))
        self.write("cut.rph", log(["Temp", "Flow"], SAMPLES)[:50])

    def test_inspect_shows_the_good_logs_beside_the_bad_ones(self):
        result = self.vastra("inspect", "a.rph", "cut.rph", "none.rph", "--json")
        self.assertEqual((1, ""), (result.status, result.err))
        good, cut, none = result.json()
        self.assertEqual({"file": "a.rph", "names": ["Temp", "Flow"], "samples": 2,
                          "first": [1000000000, 0, 0, 0], "last": [1000000060, 0, 0, 0]}, good)
        self.assertEqual(["file", "error"], list(cut))
        self.assertIn("50", cut["error"])
        self.assertEqual({"file": "none.rph", "error": "No such file or directory"}, none)

        plain = self.vastra("inspect", "cut.rph", "a.rph")
        self.assertEqual(1, plain.status)
        self.assertRegex(plain.err, r"\Avastra: cut.rph: [^\n]*\n\Z")
        self.assertEqual(b"a.rph\n  2 samples of 2 variables\n  from  2001-09-09T01:46:40.000+00:00\n"
                         b"  to    2001-09-09T01:47:40.000+00:00\n  - Temp\n  - Flow\n", plain.out)

    def test_names_that_are_no_utf8_stay_bytes_but_for_json(self):
        self.write("raw.rph", log(["T"], [(0, 1.0)]).replace(b"\x01T", b"\x01\xfc"))
        self.assertIn(b"  - \xfc\n", self.vastra("inspect", "raw.rph").out)
        self.assertEqual(["\ufffd"], self.vastra("inspect", "raw.rph", "--json").json()[0]["names"])

    def test_odd_file_names_are_taken_as_they_are(self):
        for name in ["[b].rph", "[a", "{c}", "ü\n.rph", "--json.rph"]:
            with self.subTest(name):
                self.write(name, self.read("a.rph"))
                result = self.vastra("inspect", "--json", "--", name)
                self.assertEqual((0, [name]), (result.status, [found["file"] for found in result.json()]))

    def test_convert_gives_what_the_logger_writes(self):
        self.assertEqual((0, CSV, ""), self.outcome("convert", "a.rph"))
        os.mkdir(self.path("logs"))
        config = replayed(["a.rph"], [output("logs", ["Temp", "Flow"], saveCsv=1)])
        self.zone = "Asia/Kolkata"
        self.assertEqual(0, self.vastra("run", self.write("c.json", config)).status)
        self.assertEqual(2, len(os.listdir(self.path("logs"))))
        self.assertEqual(self.read("logs/0109090700h.csv"), self.vastra("convert", "logs/0109090700.rph").out)

    def test_convert_replaces_its_file_whole_or_not_at_all(self):
        self.assertEqual((0, b"", ""), self.outcome("convert", "a.rph", "--csv", "a.csv"))
        self.assertEqual(CSV, self.read("a.csv"))
        for args, words in [(["cut.rph", "--csv", "a.csv"], "cut.rph: ends at byte 50"),
                            (["a.rph", "--csv", "none/a.csv"], "none/a.csv: No such file"),
                            (["a.rph", "--csv", "/dev/full"], "/dev/full: No space")]:
            with self.subTest(args):
                result = self.vastra("convert", *args)
                self.assertEqual(1, result.status)
                self.assertRegex(result.err, r"\Avastra: %s[^\n]*\n\Z" % words)
        self.assertEqual(CSV, self.read("a.csv"))
        self.assertEqual(["a.csv", "a.rph", "cut.rph"], sorted(os.listdir(self.folder)))

    def test_convert_tells_a_full_disk(self):
        with open("/dev/full", "wb") as full:
            result = self.vastra("convert", "a.rph", stdout=full)
        self.assertEqual((1, "vastra: standard output: No space left on device\n"), (result.status, result.err))

    def outcome(self, *args):
        result = self.vastra(*args)
        return result.status, result.out, result.err


if __name__ == "__main__":
    unittest.main()
