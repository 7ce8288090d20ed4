"""vastra check, import, export and report: what a configuration contains and whether it would run."""
import os
import re
import struct
import unittest

from commands import LogTest, output, replayed, simulated

GOOD = simulated([output("logs", ["x", "Typo"], name="All")])
EVIL = "x\x1b[2J\n\x7fy\x9b5m"  # control characters, an escape sequence, a line feed

# A configuration, the status, and the message. run opens a stage as a whole and does not name the entry in braces.
REFUSED = [
    ("{", 3, r"line|parse|syntax|end"),
    ("", 3, "the file ends too early"),
    ("VSTX\xff", 3, "neither"),
    ({"outputs": [{}, {"maxLogs": -1}]}, 3, r"outputs\[1\]\.maxLogs: "),
    (simulated(input={"preprocess": 1, "preEquationText": "y = x; z = 2 * * x;", "preNewVars": ["y"]}), 3,
     r"input\.preEquation\w+: statement 2, offset 9: "),
    (simulated([output("logs"), output("logs", enableText="WriteToLog = x > Limit;")]), 3,
     r"outputs\[1\]\.enable\w+: statement 1, offset 17: "),
    (simulated(smart={"inputVars": ["x"], "outputVars": ["Out"], "equationText": "s = Out;"}), 3,
     r"smart\.equation\w+: statement 1, offset 4: "),
    (simulated(summaries=[{}, {"summaryText": "s = nobody;", "saveRp": 1, "directory": "logs"}]), 3,
     r"summaries\[1\]\.summary\w+: statement 1, offset 4: "),
    (simulated(summaries=[{"enableText": "SampleIsValid = nobody;"}]), 3,
     r"summaries\[0\]\.enable\w+: statement 1, offset 16: "),
    (simulated(trend={"calculateExtra": 1, "equationText": "t = nobody;"}), 3, r"trend\.equation\w+: statement 1, offset 4: "),
    (simulated(input={"plcNodes": []}), 1, "input: .*no PLC node"),
    (simulated(driver={"plcType": 4711}), 1, "input: .*driver"),
    (replayed(["none.rph"]), 1, "input: "),
    (simulated([output("logs"), output("logs", nameVariable="y")]), 1, r"outputs{\[1\]}: "),
    (simulated(summaries=[{"saveRp": 1, "directory": "nowhere"}]), 1, r"summaries{\[0\]}: "),
    (simulated(smart={"outputVars": ["x"]}), 1, "smart: "),
    (simulated(plcWrite={"nodes": [{"driver": {"plcType": 4711}, "varNames": ["x"]}]}), 1,
     r"plcWrite{\.nodes\[0\]}: .*no driver 4711 is"),
]

# One configuration that runs, and its warnings.
WARNED = simulated([output("logs", enableText="RestartLog = 0;"), output("logs", maxLogs=0), output("logs", maxSamples=0)],
                   plcWrite={"nodes": [{"driver": {"plcType": 9001}, "varNames": ["x"],
                                        "scaler": [{"varName": "x"}, {"varName": "X"}]}]})
WARNED["input"]["plcNodes"].append({"driver": {"plcType": 4711}, "varNames": ["z"]})
WARNINGS = [r"input\.plcNodes\[1\]: no driver 4711 ", r"plcWrite\.nodes\[0\]\.scaler\[1\]\.varName: the node has no variable X$",
            r"outputs\[0\]\.enableEquations: .*WriteToLog", r"outputs\[1\]\.maxLogs: ", r"outputs\[1\]\.directory: ",
            r"outputs\[2\]\.maxSamples: ", r"outputs\[2\]\.directory: "]


class Forms(LogTest):
    def test_check_lists_the_variables_of_each_stage_and_marks_the_unknown_ones(self):
        config = simulated([output("logs", ["a", "s", EVIL], name="All")],
                           summaries=[{"summaryText": "n = n + s;", "varNames": ["n", "b"]}],
                           input={"preprocess": 1, "preEquationText": "a = x;", "preNewVars": ["a", "c"]},
                           smart={"equationText": "i = a;", "inputVars": ["i", "d"], "outputVars": ["s"]},
                           plcWrite={"disableWriting": 1, "nodes": [{"driver": {"plcType": 4711}, "varNames": ["x"]}]},
                           trend={"calculateExtra": 1, "equationText": "t = a;", "extraVars": ["t", "e"]})
        result = self.vastra("check", self.write("c.json", config))
        self.assertEqual(0, result.status, result.err)
        self.assertEqual("""input: 2 variables
  a\n  c  (unknown: always 0)
smart.inputVars: 2 variables
  i\n  d  (unknown: always 0)
smart.outputVars: 1 variable
  s
outputs[0] "All": 3 variables
  a\n  s\n  x?[2J??y?5m  (unknown: always 0)
summaries[0]: 2 variables
  n\n  b  (unknown: always 0)
plcWrite.nodes[0]: 1 variable
  x  (unknown: always 0)
trend: 4 variables
  a\n  c\n  t\n  e  (unknown: always 0)
""", result.out.decode())

    def test_check_and_run_refuse_and_say_where_it_is_wrong(self):
        for config, status, words in REFUSED:
            for command in [["check"], ["run", "--scans", "1", "--json"]]:
                with self.subTest(words=words, command=command):
                    place = re.sub("{(.*)}", r"\1" if command == ["check"] or status == 3 else "", words)
                    result = self.vastra(command[0], self.write("c.json", config), *command[1:])
                    self.assertEqual((status, b""), (result.status, result.out if command[1:] else b""), result.err)
                    self.assertRegex(result.err, r"(?m)^(\S+ )?vastra: c\.json: " + place)
        self.assertEqual([], os.listdir(self.path("logs")))

    def test_equations_not_in_use_are_not_compiled_and_those_without_names_see_their_own(self):
        bad = {"equationText": "bad;"}
        unused = simulated(trend=bad, smart=bad, input={"preEquationText": "bad;"}, summaries=[{"summaryText": "bad;"}])
        own = simulated([output("logs", enableText="x = WriteToLog;")], input={"preprocess": 1}, summaries=[
            {"enableText": "y = RestartSummary;", "summaryText": "z = Sum;", "varNames": ["Sum"]}])
        for config in [unused, own]:
            self.assertEqual(0, self.vastra("check", self.write("c.json", config)).status)

    def test_warnings_name_the_key(self):
        self.write("c.json", WARNED)
        for command in [["check", "c.json"], ["run", "c.json", "--scans", "1"]]:
            result = self.vastra(*command)
            self.assertEqual(0, result.status)
            for words in WARNINGS:
                self.assertRegex(result.err, r"(?m)vastra: c\.json: warning: " + words)
            self.assertEqual(len(WARNINGS), result.err.count("warning: "), result.err)

    def test_both_forms_are_read_and_lead_to_each_other(self):
        self.write("c.json", GOOD)
        self.assertEqual(0, self.vastra("import", "c.json", "c.vst").status)
        exported = self.vastra("export", "c.vst")
        self.assertEqual(exported.out, self.vastra("export", "c.json").out)
        self.assertEqual(self.path("logs"), exported.json()["outputs"][0]["directory"])
        self.write("again.json", exported.out)
        self.assertEqual(0, self.vastra("import", "again.json", "again.vst", "--version", "1003").status)
        self.assertEqual(self.read("c.vst"), self.read("again.vst"))
        for name in ["c.json", "c.vst"]:
            self.assertTrue(self.vastra("report", name).out.startswith(b"[*** Input ***]\r\n\r\n[AutoStart]\r\nNo\r\n"))
            self.assertEqual(0, self.vastra("run", name, "--scans", "2", "--quiet").status)

    def test_import_warns_of_what_the_file_cannot_hold(self):
        self.write("c.json", simulated([output("logs", nameVariable="x")], plcWrite={"disableWriting": 1}))
        for version, lost in [(1003, ["plcWrite.disableWriting"]), (1002, ["outputs[0].nameVariable", "plcWrite.disableWriting"])]:
            result = self.vastra("import", "c.json", "c.vst", "--version", str(version))
            self.assertEqual((0, b"VSTR" + struct.pack("<I", version)), (result.status, self.read("c.vst")[:8]))
            self.assertEqual(lost, re.findall(r"(?m)^vastra: c\.json: warning: (\S+): .*%d" % version, result.err))

    def test_a_refused_import_changes_nothing(self):
        self.write("old.vst", b"old")
        self.write("c.json", GOOD)
        os.link(self.path("c.json"), self.path("same.json"))
        for source, target, status in [(GOOD, "none/new.vst", 1), (GOOD, "logs", 1), (GOOD, "./logs/../c.json", 2),
                                       (GOOD, "same.json", 2), ('{"version": 7}', "old.vst", 3)]:
            result = self.vastra("import", self.write("c.json", source), target)
            self.assertEqual(status, result.status)
            self.assertRegex(result.err, r"\Avastra: [^\n]*\n\Z")
        self.assertEqual((b"old", b'{"version": 7}'), (self.read("old.vst"), self.read("c.json")))
        self.assertEqual(["c.json", "logs", "old.vst", "same.json"], sorted(os.listdir(self.folder)))

    def test_what_is_not_utf8_has_no_json(self):
        self.vastra("import", self.write("c.json", simulated(names=["NAME"])), "c.vst")
        self.write("c.vst", self.read("c.vst").replace(b"NAME", b"N\xffME"))
        result = self.vastra("export", "c.vst")
        self.assertEqual((1, b""), (result.status, result.out))
        self.assertIn("vastra: c.vst: input.plcNodes[0].varNames[0]: ", result.err)


if __name__ == "__main__":
    unittest.main()
