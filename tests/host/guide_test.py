"""The hosts of docs/host-guide.md do what it says."""
import os
import re
import signal
import subprocess
import time

from commands import LogTest, Result

SMALL_HOST, LEVEL_HOST, GUIDE = os.environ["SMALL_HOST"], os.environ["LEVEL_HOST"], os.environ["GUIDE"]


class Guide(LogTest):
    def host(self, *args, interrupt_after=None):
        with subprocess.Popen(args, cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as host:
            if interrupt_after:
                time.sleep(interrupt_after)
                host.send_signal(signal.SIGINT)
            out, err = host.communicate(timeout=60)
        return Result(host.returncode, out, err)

    def test_the_small_host_logs_what_its_equation_selects_and_loses_nothing(self):
        host = self.host(SMALL_HOST, "logs", "6")
        self.assertEqual((0, b"0 of 6 scans failed\n", ""), (host.status, host.out, host.err))
        self.assertEqual([2, 3, 4, 5, 6], [float(row[0]) for row in self.rows()])
        self.assertEqual(0, self.host(SMALL_HOST, "logs", "100000", interrupt_after=1).status)
        self.assertGreater(len(self.rows()), 3)
        host = self.host(SMALL_HOST, "none")
        self.assertEqual(1, host.status)
        self.assertIn("There is a problem with the destination directory", host.err)

    def test_logic_of_its_own_holds_the_level(self):
        with open(GUIDE, encoding="utf-8") as file:
            self.write("level.json", re.search(r"```json\n(.*?)```", file.read(), re.S)[1])
        host = self.host(LEVEL_HOST, "level.json", "200")
        self.assertEqual((0, b"200 scans, 0 failed writes\n", ""), (host.status, host.out, host.err))
        levels = [float(row[0]) for row in self.rows()]
        self.assertTrue(levels[0] < 1 and max(levels) < 75, levels)
        self.assertLess(max(abs(level - 60) for level in levels[-50:]), 0.5)
