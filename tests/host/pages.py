"""Shared by the tests of pages: the files of a page are written, its commands run in order, and their output is what the
page shows. "..." is any text, on a line of its own any number of lines. A busy machine may be late."""
import os
import re
import subprocess

from commands import CommandTest, VASTRA

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../..")


def pattern(shown):
    lines = "".join(r"(?:.*\n)*" if line == "..." else re.escape(line).replace(r"\.\.\.", ".*") + r"\n"
                    for line in shown.splitlines())
    return r"\A" + lines.replace(r"0\ late", r"\d+\ late").replace('"late":0', r'"late":\d+') + r"\Z"


class PageTest(CommandTest):
    def follow(self, page, places=None):
        """places: what to write in place of texts of the page."""
        text = self.read(os.path.join(ROOT, page)).decode()
        for place, here in (places or {}).items():
            text = text.replace(place, here)
        run = 0
        for block in re.finditer(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S):
            for name in re.findall(r"`([^`\n]+)`:\s*\Z", text[:block.start()]) if block[1] == "json" else ():
                self.write(name, block[2])
            for command in re.split(r"^\$ ", block[2], flags=re.M)[1:] if block[1] == "console" else ():
                command, _, shown = command.partition("\n")
                with self.subTest(command):
                    self.assertRegex(self.shell(command), pattern(shown))
                    run += 1
        self.assertGreater(run, 5)

    def shell(self, command):
        path = os.path.dirname(VASTRA) + ":" + os.environ["PATH"]
        result = subprocess.run(["sh", "-ec", command], cwd=self.folder, env=dict(os.environ, PATH=path), timeout=60,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(0, result.returncode, result.stdout)
        return re.sub(r".*Warning: scans are late: .*\n", "", result.stdout.decode())
