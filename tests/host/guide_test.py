"""The hosts of docs/host-guide.md do what it says."""
import os
import re
import signal
import subprocess
import time

from commands import LogTest

SMALL_HOST, LEVEL_HOST, GUIDE = os.environ["SMALL_HOST"], os.environ["LEVEL_HOST"], os.environ["GUIDE"]


class Guide(LogTest):
    def test_the_small_host_logs_what_its_equation_selects_and_loses_nothing(self):
        with self.start("logs", "100000", program=SMALL_HOST, stdout=subprocess.DEVNULL) as host:
            time.sleep(2)
            host.send_signal(signal.SIGINT)
        self.assertEqual(0, host.returncode)
        self.assertGreater(len(self.rows()), 0)
        self.expect("logs 6", 0, "0 of 6 scans failed\n", program=SMALL_HOST)
        self.assertEqual([2, 3, 4, 5, 6], [float(row[0]) for row in self.rows()])
        self.assertIn("There is a problem with the destination directory",
                      self.expect("none", 1, None, None, program=SMALL_HOST).err)

    def test_logic_of_its_own_holds_the_level(self):
        self.write("level.json", re.search(r"```json\n(.*?)```", self.read(GUIDE).decode(), re.S)[1])
        said = self.expect("level.json 200", 0, "200 scans, 0 failed writes\n", None, program=LEVEL_HOST).err
        self.assertRegex(said, r"\A%s/\d{10}h\.csv is complete\n\Z" % self.path("logs"))
        levels = [float(row[0]) for row in self.rows()]
        self.assertTrue(levels[0] < 1 and max(levels) < 75, levels)
        self.assertLess(max(abs(level - 60) for level in levels[-50:]), 0.5)
