"""The command line itself: help, wrong use, where words and data go."""
import os
import subprocess
import unittest

from commands import CommandTest, VASTRA

COMMANDS = ["demo", "run", "watch", "check", "import", "export", "report", "inspect", "convert", "eval", "drivers",
            "probe"]

# Arguments, and a part of the one line that says what is wrong.
WRONG = [
    ([], "required"),
    (["fly"], "fly"),
    (["run"], "FILE is required"),
    (["run", "a.json", "b.json"], "b.json"),
    (["run", "a.json", "--scans", "-1"], "--scans"),
    (["run", "a.json", "--scans", "1x"], "1x"),
    (["run", "a.json", "--scans", "99999999999999999999"], "not a whole number"),
    (["run", "a.json", "--scans", "2", "--scans", "3"], "--scans"),
    (["run", "a.json", "--period", "4294967296"], "4294967295"),
    (["run", "a.json", "--debug", "--quiet"], "--debug"),
    (["import", "a.json", "b.vst", "--version", "1001"], "1001"),
    (["import", "a.json"], "FILE is required"),
    (["inspect"], "LOG is required"),
    (["eval", "y = a;", "--var", "a"], "NAME=VALUE"),
    (["eval", "y = a;", "--var", "a=1.5x"], "1.5x"),
    (["eval", "y = a;", "--var", "=1"], "NAME=VALUE"),
    (["eval", "y = 1;", "--passes", "0"], "from 1"),
]


class Usage(CommandTest):
    def test_wrong_use_is_one_line_and_status_2(self):
        for args, words in WRONG:
            with self.subTest(args):
                result = self.vastra(*args)
                self.assertEqual((2, b""), (result.status, result.out))
                self.assertRegex(result.err, r"\Avastra: [^\n]*\n\Z")
                self.assertIn(words, result.err)

    def test_each_command_has_help_with_an_example(self):
        for command in COMMANDS:
            with self.subTest(command):
                result = self.vastra(command, "--help")
                self.assertEqual((0, ""), (result.status, result.err))
                self.assertIn(b"Example:\n  vastra " + command.encode(), result.out)

    def test_version_is_data(self):
        result = self.vastra("--version")
        self.assertEqual((0, ""), (result.status, result.err))
        self.assertRegex(result.out, rb"\Avastra \d+\.\d+\.\d+\n\Z")

    def test_data_that_cannot_be_written_is_a_failure(self):
        commands = [["--help"], ["--version"], ["drivers"], ["drivers", "--json"], ["eval", "y = 1;"]]
        for args in commands:
            with self.subTest(args), open("/dev/full", "wb") as full:
                result = self.vastra(*args, stdout=full)
                self.assertEqual((1, "vastra: standard output: No space left on device\n"), (result.status, result.err))
        read, write = os.pipe()
        os.close(read)
        result = self.vastra("drivers", "--json", stdout=write)
        os.close(write)
        self.assertEqual((1, ""), (result.status, result.err))
        closed = subprocess.run(["sh", "-c", '"$0" drivers >&-', VASTRA], capture_output=True)
        self.assertEqual((1, b"vastra: standard output: Bad file descriptor\n"), (closed.returncode, closed.stderr))


if __name__ == "__main__":
    unittest.main()
