"""vastra check, import, export and report: what a configuration contains and whether it would run."""
import os
import re
import struct

from commands import LogTest, output, replayed, simulated

NO_DRIVER = {"nodes": [{"driver": {"plcType": 4711}, "varNames": ["x"]}]}
# Configurations that check and run do not accept, their status, that with --plain, and the message.
REFUSED = [
    (simulated([output("logs", usePrefix=1, prefix="a"), output("logs", nameVariable="y")]), 1, 1, r"outputs(\[1\])?: .*nameVariable"),
    (simulated(summaries=[{"saveRp": 1, "directory": "nowhere"}]), 3, 1, r"summaries\[0\].directory: .*nowhere"),
    (simulated(smart={"outputVars": ["x"]}), 1, 1, "smart: "),
    (simulated(plcWrite=NO_DRIVER), 3, 1, r"plcWrite.nodes\[0\].driver.plcType: no driver 4711 is"),
    (simulated([output("logs", ["X"])]), 3, 0, r"outputs\[0\].varNames\[0\]: there is no variable \"X\"; did you mean \"x\"\?"),
    (simulated([output("logs", maxLogs=0)]), 3, 0, r"outputs\[0\].maxLogs: "),
    (replayed(["none.rph"]), 1, 1, "input.*none.rph: No such file"),
]

# What a report lists, in this order.
BLOCKS = [b"Input", b"Multiple Outputs", b"Output", b"Multiple Summaries", b"Multiple Outputs to Plc", b"Smart", b"Trending"]


class Forms(LogTest):
    def test_check_marks_the_names_that_nothing_gives(self):
        self.write("c.json", simulated(
            [output("logs", ["a", "s", "x\x1b[2J\n\x7fy\x9b5m"])], summaries=[{"summaryText": "n = n + s;", "varNames": ["n", "b"]}],
            input={"preprocess": 1, "preEquationText": "a = x;", "preNewVars": ["a", "c"]},
            smart={"equationText": "i = a;", "inputVars": ["i", "d"], "outputVars": ["s"]},
            plcWrite={"disableWriting": 1, "nodes": [{"driver": {"plcType": 4711}, "varNames": ["a", "p"]}]},
            trend={"calculateExtra": 1, "equationText": "t = a;", "extraVars": ["t", "e"]}))
        self.expect("check c.json", 3, err=None)
        lines = self.expect("check c.json --plain", out=None, err=None).out.decode().splitlines()
        unknown = [line.split("  ")[1] for line in lines if line.endswith("  (unknown: always 0)")]
        self.assertEqual((["c", "d", "x?[2J??y?5m", "b", "p", "e"], 23), (unknown, len(lines)))

    def test_check_and_run_warn_or_refuse_and_say_where_it_is_wrong(self):
        wrong = simulated([output("logs", enableText="Limit = 1; WriteToLog = x > * Limit;", maxSamples=0)])
        for command in ["check c.json", "run c.json --scans 1 --json"]:
            self.write("c.json", "{")
            self.expect(command, 3, err="c.json: ")
            self.write("c.json", wrong)
            time = r"(\S+T\S+ )?"
            self.assertRegex(self.expect(command, 3, err=None).err, r"\A{0}vastra: c.json: warning: outputs\[0\].maxSamples: .*\n{0}"
                             r"vastra: c.json: outputs\[0\].enableText: statement 2, offset 18: .*\n{0} WriteToLog = x > \* Limit"
                             r"\n{0} {{18}}\^\n\Z".format(time))
        for config, status, plain, words in REFUSED:
            self.write("c.json", config)
            for command in ["check c.json", "run c.json --scans 1"]:
                self.assertRegex(self.expect(command, status, None, None).err, r"(?m)vastra: c\.json: (warning: )?" + words)
                self.assertEqual([], [file for file in os.listdir(self.path("logs")) if file[0] != "."])
            self.assertRegex(self.expect("check c.json --plain", plain, None, None).err, r"(?m)vastra: c\.json: (warning: )?" + words)

    def test_check_leaves_folders_out_and_run_makes_them(self):
        self.write("c.json", simulated([output("new/logs")]))
        self.expect("check c.json --no-folders", out=None)
        self.expect("run c.json --scans 1 --create-folders --quiet")
        self.assertEqual(1, len([file for file in os.listdir(self.path("new", "logs")) if file.endswith(".rph")]))

    def test_both_forms_are_read_and_lead_to_each_other(self):
        self.write("c.json", simulated([output("logs")]))
        self.expect("import c.json c.vst")
        exported = self.expect("export c.vst", out=None)
        self.expect("export c.json", out=exported.out)
        self.assertEqual(self.path("logs"), exported.json()["outputs"][0]["directory"])
        for name in ["c.json", "c.vst"]:
            report = self.vastra("report", name).out
            self.assertTrue(report.startswith(b"[*** Input ***]\r\n\r\n[AutoStart]\r\nNo\r\n"))
            self.assertEqual(BLOCKS, re.findall(rb"\[\*\*\* (.*?) ?\*\*\*\]", report))
            self.expect("run " + name + " --scans 2 --quiet")
        self.write("c.vst", self.read("c.vst").replace(b"\x01x", b"\x01\xff", 1))
        self.expect("export c.vst", 1, err=r"c.vst: input.plcNodes\[0\].varNames\[0\]: ")

    def test_import_warns_of_what_the_file_cannot_hold(self):
        self.write("c.json", simulated([output("logs", nameVariable="x")], plcWrite={"disableWriting": 1}))
        for version, lost in [(1003, ["plcWrite.disableWriting"]), (1002, ["outputs[0].nameVariable", "plcWrite.disableWriting"])]:
            result = self.expect("import c.json c.vst --version %d" % version, err=None)
            self.assertEqual(b"VSTR" + struct.pack("<I", version), self.read("c.vst")[:8])
            self.assertEqual(lost, re.findall(r"(?m)^vastra: c\.json: warning: (\S+): .*%d" % version, result.err))

    def test_a_refused_import_changes_nothing(self):
        self.write("old.vst", "old")
        self.write("c.json", simulated())
        os.link(self.path("c.json"), self.path("same.json"))
        before = self.read("c.json"), sorted(os.listdir(self.folder))
        for target, status in [("none/new.vst", 1), ("logs", 1), ("logs/../c.json", 2), ("same.json", 2)]:
            self.expect("import c.json " + target, status, err=target + ": not ")
        self.expect("import old.vst c.json", 3, err="old.vst: ")
        self.assertEqual(before, (self.read("c.json"), sorted(os.listdir(self.folder))))
