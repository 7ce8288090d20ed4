"""Shared by the tests of pages: the files of a page are written, its commands run in order, and their output is what the
page shows. "..." is any text, on a line of its own any number of lines. A busy machine may be late."""
import os
import re
import subprocess

from commands import CommandTest, VASTRA


def blocks(text):
    """Language, content and the text before it, for each code block."""
    before = 0
    for match in re.finditer(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S):
        yield match[1], match[2], text[before:match.start()]
        before = match.end()


def commands(console):
    """Each command of a console block with the output shown below it."""
    for part in re.split(r"^\$ ", console, flags=re.M)[1:]:
        command, _, shown = part.partition("\n")
        yield command, shown


def pattern(shown):
    lines = "".join(r"(?:.*\n)*" if line == "..." else re.escape(line).replace(r"\.\.\.", ".*") + r"\n"
                    for line in shown.splitlines())
    return r"\A" + lines.replace(r"0\ late", r"\d+\ late").replace('"late":0', r'"late":\d+') + r"\Z"


class PageTest(CommandTest):
    def follow(self, page, places=None):
        """places: what to write in place of texts of the page."""
        with open(page, encoding="utf-8") as file:
            text = file.read()
        for place, here in (places or {}).items():
            text = text.replace(place, here)
        run = 0
        for language, content, before in blocks(text):
            if language == "json":
                self.write(re.findall(r"`([^`\n]+)`:\s*\Z", before)[0], content)
            for command, shown in commands(content) if language == "console" else ():
                with self.subTest(command):
                    self.assertRegex(self.shell(command), pattern(shown))
                    run += 1
        self.assertGreater(run, 5)

    def shell(self, command):
        path = os.path.dirname(VASTRA) + ":" + os.environ["PATH"]
        result = subprocess.run(["sh", "-ec", command], cwd=self.folder, env=dict(os.environ, PATH=path), timeout=60,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(0, result.returncode, result.stdout)
        return result.stdout.decode()
