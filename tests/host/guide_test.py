"""The hosts of docs/host-guide.md do what it says."""
import os
import re
import signal
import subprocess
import time
import unittest

from commands import CommandTest

SMALL_HOST = os.environ["SMALL_HOST"]
LEVEL_HOST = os.environ["LEVEL_HOST"]
GUIDE = os.environ["GUIDE"]


class Guide(CommandTest):
    def rows(self):
        """The rows of the one text copy in the folder, without the names."""
        name, = [name for name in os.listdir(self.path("logs")) if name.endswith(".csv")]
        return self.read("logs/" + name).decode().splitlines()[1:]

    def setUp(self):
        super().setUp()
        os.mkdir(self.path("logs"))

    def test_it_logs_what_its_equation_lets_through(self):
        host = subprocess.run([SMALL_HOST, "logs", "6"], cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual((0, b"0 of 6 scans failed\n", b""), (host.returncode, host.stdout, host.stderr))
        self.assertEqual(["2.000000", "3.000000", "4.000000", "5.000000", "6.000000"],
                         [row.split(",")[1] for row in self.rows()])

    def test_an_interrupt_loses_nothing(self):
        host = subprocess.Popen([SMALL_HOST, "logs", "100000"], cwd=self.folder, stdout=subprocess.PIPE)
        time.sleep(1)
        host.send_signal(signal.SIGINT)
        host.communicate(timeout=30)
        self.assertEqual(0, host.returncode)
        self.assertGreater(len(self.rows()), 3)

    def test_a_folder_that_is_missing_is_told(self):
        host = subprocess.run([SMALL_HOST, "none"], cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual(1, host.returncode)
        self.assertIn(b"There is a problem with the destination directory", host.stderr)

    def test_logic_of_its_own_holds_the_level(self):
        with open(GUIDE, encoding="utf-8") as file:
            self.write("level.json", re.search(r"```json\n(.*?)```", file.read(), re.S)[1])
        host = subprocess.run([LEVEL_HOST, "level.json", "200"], cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual((0, b"200 scans, 0 failed writes\n", b""), (host.returncode, host.stdout, host.stderr))
        levels = [float(row.split(",")[1]) for row in self.rows()]
        self.assertLess(levels[0], 1)
        self.assertLess(max(levels), 75)
        self.assertLess(max(abs(level - 60) for level in levels[-50:]), 0.5)


if __name__ == "__main__":
    unittest.main()
