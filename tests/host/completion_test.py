"""Completion scripts and manual pages have the options of the help, and bash offers what a command accepts."""
import glob
import os
import re
import subprocess

from commands import CommandTest

OFFER = 'source ./script; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vastra; printf "%s\\n" "${COMPREPLY[@]}"'

# A command line, of which the last word is completed, and what is offered, in order.
OFFERED = [
    ("vastra --v", "--version"), ("vastra ins", "inspect"), ("vastra watch --driver", "--driver-folder"), ("vastra fly ", ""),
    ("vastra run a", "a b.json"), ("vastra run --debug a", "a b.json"), ("vastra run a.json a", ""), ("vastra inspect a b a", "a b.json"),
    ("vastra convert --csv a", "a b.json"), ("vastra convert --csv = a", "a b.json"), ("vastra convert --csv =", "a b.json|dir|script"),
    ("vastra demo --out ", "dir"), ("vastra run --scans ", ""), ("vastra run --scans 5 a", "a b.json"),
    ("vastra import --version ", "1002|1003"), ("vastra completion ", "bash|fish|zsh"),
]


class Completion(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("dir"))
        self.write("a b.json", "{}")
        self.write("script", self.vastra("completion", "bash").out)

    def offered(self, line):
        bash = subprocess.run(["bash", "-c", OFFER, "-", *line.split(" ")], cwd=self.folder, capture_output=True, text=True)
        self.assertEqual("", bash.stderr)
        return "|".join(sorted(bash.stdout.rstrip("\n").split("\n")))

    def test_bash_offers_what_a_command_accepts(self):
        for line, offered in OFFERED:
            with self.subTest(line):
                self.assertEqual(offered, self.offered(line))

    def test_scripts_and_pages_have_what_the_help_has(self):
        os.mkdir(self.path("man"))
        self.expect("man man")
        others = [self.vastra("completion", shell).out.decode() for shell in ["zsh", "fish"]]
        commands = re.findall(r"^  ([a-z]+)   ", self.vastra("--help").out.decode(), re.M)
        self.assertEqual("|".join(sorted(commands)), self.offered("vastra "))
        self.assertEqual(len(commands) + 1, len(os.listdir(self.path("man"))))
        for command in commands:
            options = re.findall(r"^  (?:-h,)?(--[\w-]+)", self.vastra(command, "--help").out.decode(), re.M)
            self.assertEqual("|".join(sorted(options)), self.offered("vastra %s --" % command))
            with open(self.path("man", "vastra-%s.1" % command)) as file:
                page = re.sub(r"\\f.", "", file.read()).replace(r"\-", "-")
            self.assertLessEqual(set(options), set(re.findall(r"^(?:-h, )?(--[\w-]+)", page, re.M)))
            for option in options:
                for script, line in zip(others, [r"'\*?%s=?\[" % option, r"command %s'( -s h)? -l %s " % (command, option[2:])]):
                    self.assertTrue(re.search(line, script), command + option)
        for page in glob.glob(self.path("man", "*")):
            groff = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-z", page], capture_output=True, text=True)
            self.assertEqual("", groff.stderr)
