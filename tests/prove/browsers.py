"""The claim that a browser shows what is logged: the tests of the page, with what kills and chance are in repeated."""
import os
import re
import subprocess

import viewers
from logs import Failed, NotRun

TESTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "browser", "run")


def pages(run):
    ended = subprocess.run([TESTS], env={**os.environ, "WEB": viewers.program(), "ROUNDS": str(run.count)},
                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if ended.returncode == 77:
        raise NotRun("not run: " + ended.stdout.strip().rsplit("not run: ", 1)[-1])
    with open(os.path.join(run.work, "tests.log"), "w") as file:
        file.write(ended.stdout)
    seen = re.search(r"^(?:# )?claim: (.*)$", ended.stdout, re.MULTILINE)
    if ended.returncode or not seen:
        raise Failed("; ".join(sorted(set(re.findall(r"^ *not ok \d+ - (.*)$", ended.stdout, re.MULTILINE)))) or ended.stdout[-1000:])
    return seen[1]
