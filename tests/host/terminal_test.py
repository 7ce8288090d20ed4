"""What a terminal shows: colour, a bar or a status line, and nothing of it elsewhere."""
import os
import pty
import re
import signal
import subprocess
import unittest

from commands import CommandTest, VASTRA, log, output, replayed, simulated

RED, ERASE = "\033[31m", "\r\033[J"


class Terminal(CommandTest):
    def on_terminal(self, *args, output=False, until=None, **environment):
        """What args show on a terminal, as standard error, or as standard output too. Interrupted at `until`."""
        ours, theirs = pty.openpty()
        process = subprocess.Popen([VASTRA, *args], cwd=self.folder, stdout=theirs if output else subprocess.DEVNULL,
                                   stderr=theirs, env={**self.environment(), "TERM": "xterm", **environment})
        os.close(theirs)
        shown = b""
        while True:
            try:
                shown += os.read(ours, 65536)
            except OSError:  # the other end is closed
                break
            if until and until in shown.decode(errors="replace"):
                process.send_signal(signal.SIGINT)
                until = None  # a second one would end it at once
        os.close(ours)
        process.wait(timeout=30)
        return shown.decode()

    def setUp(self):
        super().setUp()
        os.mkdir(self.path("logs"))
        self.write("live.json", simulated([output("logs", maxSamples=100)], driver={"value4": 4, "value5": 109}))
        self.write("a.rph", log(["x"], [(i, 1.0) for i in range(30)]))
        self.write("replay.json", replayed(["a.rph"]))

    def test_errors_are_coloured_unless_the_user_says_no(self):
        self.assertIn(RED, self.on_terminal("run", "live.json", "--scans", "4"))
        self.assertIn(RED, self.on_terminal("check", "none.json"))
        self.assertNotIn("\033[3", self.on_terminal("run", "live.json", "--scans", "4", NO_COLOR="1"))
        dumb = self.on_terminal("run", "live.json", "--scans", "4", TERM="dumb")
        self.assertNotIn("\033", dumb)

    def test_live_input_has_a_status_line_that_is_gone_at_the_end(self):
        shown = self.on_terminal("run", "live.json", "--scans", "40")
        self.assertRegex(shown, r"[1-9]\d* of 100")
        self.assertLess(shown.count("in memory"), 40)
        last = shown.split(ERASE)[-1]
        self.assertNotIn("in memory", last)
        self.assertIn("30 read, 10 failed reads", last)
        self.assertNotIn("in memory", self.on_terminal("run", "live.json", "--scans", "4", "--quiet"))

    def test_a_replay_has_a_bar_that_moves_within_a_log(self):
        shown = self.on_terminal("run", "replay.json", "--period", "10")
        self.assertIn("[....................]   ", shown)
        self.assertIn("[##########", shown)
        self.assertIn("log 1 of 1", shown)

    def test_watch_shows_a_table_above_which_lines_go_and_leaves_nothing(self):
        shown = self.on_terminal("watch", "live.json", output=True, until="█")
        self.assertIn("Timeout error.", shown)
        self.assertRegex(shown, r":\d\d\S+  \d+ read\x1b\[K\r\nx +\d+  ▁[▁▂▃▄▅▆▇]*█\x1b\[K")
        self.assertRegex(shown, r"\r\x1b\[1A\x1b\[Jvastra: \d+ read, .*\r\n\Z")
        self.assertEqual([], re.findall(r"\x1b\[[^KJAm]*[^KJA\dm;]|\x1b[^\[]", shown))  # no mode to bring back


if __name__ == "__main__":
    unittest.main()
