"""The command line itself: help, wrong use, driver modules, and output that cannot be written."""
import os
import re
import shutil

from commands import CommandTest, VASTRA, output, simulated

# Arguments, and a part of the message.
WRONG = [
    ("", "a COMMAND is required"), ("fly\x1b[2J", "command fly?[2J "), ("run", "FILE is required"), ("run a.json b.json", "b.json"),
    ("run a.json --scans -1", "--scans"), ("run a.json --scans 1x", "1x"), ("run a.json --scans", "--scans"),
    ("run a.json --scans 99999999999999999999", "not a whole number"), ("run a.json --scans 2 --scans 3", "--scans"),
    ("run a.json --period 4294967296", "4294967295"), ("run a.json --debug --quiet", "--debug"),
    ("watch a.json --vars a b", "not expected: b"), ("eval y=a; --var a=1.5x", "1.5x"), ("eval y=a; --var =1", "NAME=VALUE"),
    ("import a.json b.vst --version 1001", "1001"), ("eval y=1; --passes 0", "from 1"),
]

LEFT_OUT = "dangling\\?.so: left out: it is a link to nothing\nvastra: c.so: not used: b.SO has the same ID 9001"


class Usage(CommandTest):
    def test_wrong_use_is_one_line_and_status_2(self):
        for line, words in WRONG:
            self.expect(line, 2, err=".*" + re.escape(words))

    def test_help_has_an_example_and_version_is_data(self):
        for command in "demo run watch init check import export report inspect convert eval drivers probe".split():
            self.assertIn(b"Example:\n  vastra " + command.encode(), self.expect(command + " --help", out=None).out)
        self.assertRegex(self.expect("--version", out=None).out, rb"\Avastra \d+\.\d+\.\d+\n\Z")

    def test_drivers_lists_modules_and_what_is_left_out(self):
        program = shutil.copy(VASTRA, self.path("vastra"))
        shutil.copy(os.path.join(os.path.dirname(VASTRA), "simulator.so"), self.path("b.SO"))
        for name, target in [("dangling\n.so", "nothing"), ("c.so", "b.SO")]:
            os.symlink(target, self.path(name))
        self.expect("drivers", 0, "  0        9001  Simulator  (b.SO)\n  1        9001  Simulator  (c.so)\n", LEFT_OUT, program=program)
        self.assertEqual([{"index": i, "id": 9001, "name": "Simulator", "file": file} for i, file in enumerate(["b.SO", "c.so"])],
                         self.vastra("drivers", "--json", program=program).json())

    def test_drivers_are_found_in_folders_of_the_command_line_and_the_environment(self):
        program = shutil.copy(VASTRA, self.path("vastra"))
        for name in ["a", "b"]:
            os.mkdir(self.path(name))
            shutil.copy(os.path.join(os.path.dirname(VASTRA), "simulator.so"), self.path(name, "s.so"))
        self.write("c.json", simulated())
        a, b = self.path("a", "s.so"), self.path("b", "s.so")
        listed, twice = "  0        9001  Simulator  (%s)\n", "%s: left out: the file of this name in %s is used"
        for folders, variable, found, message in [
                ("a", "", a, ""), ("a b", "", a, twice % (b, self.path("a"))), ("b a", "", b, twice % (a, self.path("b"))),
                ("", ":a::b", a, twice % (b, self.path("a"))), ("b", "./b:" + self.folder, b, ""),
                ("a", "none", a, "VASTRA_DRIVERS: none: No such file or directory")]:
            use = {"program": program, "env": {**self.environment(), "VASTRA_DRIVERS": variable}}
            options = ["--driver-folder=" + folder for folder in folders.split()]
            self.expect(["drivers", *options], 0, listed % found, message, **use)
            for command in ["run c.json --scans 1 --quiet", "check c.json", "probe 9001"]:
                self.expect([*command.split(), *options], 0, None, None, **use)
        self.expect("run c.json --driver-folder c.json", 2, err="c.json: cannot be searched for drivers: Not a directory")

    def test_data_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            for args in ["--help", "--version", "drivers", "drivers --json", "eval y=1;"]:
                self.expect(args, 1, out=None, err="standard output: No space left on device", stdout=full)
        os.mkdir(self.path("logs"))
        self.write("c.json", simulated([output("logs")]))
        self.expect("watch c.json --scans 2 --period 0 --quiet", 1, None, "standard output: Bad file", stdout=None,
                    preexec_fn=lambda: os.closerange(0, 2))  # a closed stream does not become a file or a pipe of the run
