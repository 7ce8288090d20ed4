"""vastra check, import, export and report: what a configuration holds and whether it would run."""
import json
import os
import re
import unittest

from commands import CommandTest, log, output, replayed, simulated

GOOD = simulated([output("logs", ["x", "Typo"], name="All")])

# What is wrong with a configuration, its status, and the line that says so.
REFUSED = [
    ("{", 3, r"line|parse|syntax|end"),
    ("", 3, "the file ends too early"),
    ("VSTX\xff", 3, "neither"),
    ({"inputs": {}}, 3, "inputs: "),
    ({"outputs": [{}, {"maxLogs": -1}]}, 3, r"outputs\[1\]\.maxLogs: "),
    (simulated(input={"preprocess": 1, "preEquationText": "y = x; z = 2 * * x;", "preNewVars": ["y"]}), 3,
     r"input\.preEquations: statement 2, offset 9: "),
    (simulated([output("logs"), output("logs", enableText="WriteToLog = x > Limit;")]), 3,
     r"outputs\[1\]\.enableEquations: statement 1, offset 17: "),
    (simulated([output("logs", enableText="WriteToLog = SmartOut;")],
               smart={"inputVars": ["x"], "outputVars": ["SmartOut"], "equationText": "s = SmartOut;"}), 3,
     r"smart\.equations: statement 1, offset 4: "),
    (simulated(summaries=[{"summaryText": "s = nobody;", "saveRp": 1, "directory": "logs"}]), 3,
     r"summaries\[0\]\.summaryEquations: statement 1, offset 4: "),
    (simulated(summaries=[{"enableText": "SampleIsValid = nobody;"}]), 3,
     r"summaries\[0\]\.enableEquations: statement 1, offset 16: "),
    (simulated(trend={"calculateExtra": 1, "equationText": "t = nobody;"}), 3, r"trend\.equations: statement 1, offset 4: "),
    (simulated(input={"plcNodes": []}), 1, "input: .*no PLC node"),
    (simulated(driver={"plcType": 4711}), 1, "input: .*driver"),
    (replayed(["none.rph"]), 1, "input: "),
    (simulated([output("nowhere")]), 1, r"outputs\[0\]: "),
    (simulated([output("logs"), output("logs", nameVariable="y")]), 1, r"outputs\[1\]: "),
    (simulated(summaries=[{"saveRp": 1, "directory": "nowhere"}]), 1, r"summaries\[0\]: "),
    (simulated(smart={"outputVars": ["x"]}), 1, "smart: "),
    (simulated(plcWrite={"nodes": [{"driver": {"plcType": 4711}, "varNames": ["x"]}]}), 1,
     r"plcWrite\.nodes\[0\]: .*no driver 4711 is"),
]

# Settings that are no fault, and what is said of them.
WARNED = [
    ([output("logs", enableText="RestartLog = 0;")], r"outputs\[0\]\.enableEquations: .*WriteToLog"),
    ([output("logs")], r"input\.plcNodes\[1\]: no driver 4711 "),
    ([output("logs")], r"plcWrite\.nodes\[0\]\.scaler\[1\]\.varName: the node has no variable X\n"),
    ([output("logs", maxLogs=0)], r"outputs\[0\]\.maxLogs: "),
    ([output("logs", maxSamples=0)], r"outputs\[0\]\.maxSamples: "),
    ([output("logs"), output("./logs/../logs")], r"outputs\[1\]\.directory: "),
]


class Forms(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("logs"))

    def test_check_lists_the_variables_of_each_stage(self):
        result = self.vastra("check", self.write("c.json", GOOD))
        self.assertEqual((0, ""), (result.status, result.err))
        self.assertEqual(b'input: 1 variable\n  x\noutputs[0] "All": 2 variables\n  x\n  Typo  (unknown: always 0)\n'
                         b"trend: 1 variable\n  x\n", result.out)

    def test_check_marks_names_that_nothing_gives(self):
        config = simulated([output("logs", ["a", "s"])], summaries=[{"summaryText": "n = n + s;", "varNames": ["n", "b"]}],
                           input={"preprocess": 1, "preEquationText": "a = x;", "preNewVars": ["a", "c"]},
                           smart={"equationText": "i = a;", "inputVars": ["i", "d"], "outputVars": ["s"]},
                           trend={"calculateExtra": 1, "equationText": "t = a;", "extraVars": ["t", "e"]})
        lines = self.vastra("check", self.write("c.json", config)).out.decode().splitlines()
        marked = [line.split()[0] for line in lines if "unknown" in line]
        self.assertEqual((["c", "d", "b", "e"], 19), (marked, len(lines)))

    def test_check_and_run_refuse_and_say_where_it_is_wrong(self):
        for config, status, words in REFUSED:
            for command in [["check"], ["run", "--scans", "1", "--json"]]:
                with self.subTest(words=words, command=command):
                    result = self.vastra(command[0], self.write("c.json", config), *command[1:])
                    self.assertEqual(status, result.status, result.err)
                    if status == 1 and command[0] == "run":
                        words = re.sub(r"(\\\.nodes)?\\\[0?1?\\\]", "", words)  # run opens a stage as a whole
                    self.assertRegex(result.err, r"(?m)^(\S+ )?vastra: c\.json: " + words)
        self.assertEqual([], os.listdir(self.path("logs")))

    def test_equations_not_in_use_are_not_compiled(self):
        config = simulated([output("logs")], trend={"equationText": "bad"}, summaries=[{"summaryText": "bad;"}],
                           input={"preEquationText": "bad;"}, smart={"equationText": "bad;"})
        self.assertEqual(0, self.vastra("check", self.write("c.json", config)).status)

    def test_without_names_equations_see_those_of_their_own_variables(self):
        config = simulated([output("logs", enableText="x = WriteToLog;")], input={"preprocess": 1},
                           summaries=[{"enableText": "y = RestartSummary;", "summaryText": "z = Sum;", "saveRp": 1,
                                       "varNames": ["Sum"], "directory": "logs"}])
        self.assertEqual(0, self.vastra("check", self.write("c.json", config)).status)

    def test_warnings_name_the_key(self):
        for outputs, words in WARNED:
            with self.subTest(words):
                config = simulated(outputs)
                config["input"]["plcNodes"].append({"driver": {"plcType": 4711}, "varNames": ["z"]})
                config["plcWrite"] = {"nodes": [{"driver": {"plcType": 9001}, "varNames": ["x"],
                                                 "scaler": [{"varName": "x"}, {"varName": "X"}]}]}
                self.write("c.json", config)
                for command in [["check", "c.json"], ["run", "c.json", "--scans", "1"]]:
                    result = self.vastra(*command)
                    self.assertEqual(0, result.status)
                    self.assertRegex(result.err, r"(?m)vastra: c\.json: warning: " + words)

    def test_both_forms_are_taken_and_lead_to_each_other(self):
        self.write("c.json", GOOD)
        self.assertEqual(0, self.vastra("import", "c.json", "c.vst").status)
        exported = self.vastra("export", "c.vst")
        self.assertEqual(exported.out, self.vastra("export", "c.json").out)
        self.assertEqual(self.path("logs"), exported.json()["outputs"][0]["directory"])
        self.write("again.json", exported.out)
        self.assertEqual(0, self.vastra("import", "again.json", "again.vst").status)
        self.assertEqual(self.read("c.vst"), self.read("again.vst"))
        for name in ["c.json", "c.vst"]:
            self.assertTrue(self.vastra("report", name).out.startswith(b"[*** Input ***]\r\n\r\n[AutoStart]\r\nNo\r\n"))
            self.assertEqual(0, self.vastra("run", name, "--scans", "2", "--quiet").status)

    def test_import_tells_what_the_file_cannot_hold(self):
        self.write("c.json", simulated([output("logs")], plcWrite={"disableWriting": 1}))
        result = self.vastra("import", "c.json", "c.vst", "--version", "1002")
        self.assertEqual((0, b""), (result.status, result.out))
        lines = result.err.splitlines()
        self.assertTrue(all(line.startswith("vastra: c.json: warning: ") for line in lines), result.err)
        self.assertIn("plcWrite.disableWriting", result.err)
        self.assertEqual(b"VSTR\xea\x03\0\0", self.read("c.vst")[:8])

    def test_a_refused_import_changes_nothing(self):
        self.write("old.vst", b"old")
        for source, target, status in [('{"version": 7}', "old.vst", 3), (GOOD, "none/new.vst", 1), (GOOD, "logs", 1)]:
            result = self.vastra("import", self.write("c.json", source), target)
            self.assertEqual(status, result.status)
            self.assertRegex(result.err, r"\Avastra: [^\n]*\n\Z")
        self.assertEqual(b"old", self.read("old.vst"))
        self.assertEqual(["c.json", "logs", "old.vst"], sorted(os.listdir(self.folder)))

    def test_what_is_no_utf8_has_no_json(self):
        self.vastra("import", self.write("c.json", simulated(names=["NAME"])), "c.vst")
        self.write("c.vst", self.read("c.vst").replace(b"NAME", b"N\xffME"))
        result = self.vastra("export", "c.vst")
        self.assertEqual((1, b""), (result.status, result.out))
        self.assertIn("vastra: c.vst: input.plcNodes[0].varNames[0]: ", result.err)


if __name__ == "__main__":
    unittest.main()
