"""What a terminal shows: colour, a bar or a status line, no control characters of others, and no codes elsewhere."""
import re

from commands import LogTest, log, output, replayed, simulated

RED, YELLOW, ERASE = "\033[31m", "\033[33m", "\r\033[J"
EVIL = "x\x1b[2J\n\x7fy\x9b5m"  # control characters, an escape sequence, a line feed


class Terminal(LogTest):
    def setUp(self):
        super().setUp()
        self.write("live.json", simulated([output("logs", maxSamples=100)], driver={"value4": 4, "value5": 109}))

    def test_errors_are_coloured_unless_the_user_says_no(self):
        shown = self.on_terminal("run", "live.json", "--scans", "4")
        self.assertIn(RED + "Error", shown)
        self.assertNotRegex(shown, r"\d{4}-\d\d-\d\dT")
        self.assertIn(RED, self.on_terminal("check", "none.json"))
        self.assertIn(YELLOW, self.on_terminal("check", self.write("c.json", simulated([output("logs", maxSamples=0)]))))
        self.assertNotIn("\033[3", self.on_terminal("run", "live.json", "--scans", "4", NO_COLOR="1"))
        self.assertNotIn("\033", self.on_terminal("run", "live.json", "--scans", "4", TERM="dumb"))

    def test_no_text_controls_the_terminal(self):
        node = {"nodeName": EVIL, "driver": {"plcType": 9001, "text1": "counter", "value4": 2, "value5": 109}, "varNames": [EVIL]}
        config = {"input": {"plcNodes": [node]}, "outputs": [output("logs", [EVIL], name=EVIL, prefix=EVIL, usePrefix=1)]}
        self.write("c.json", config)
        self.write(EVIL + ".rph", log([EVIL], [(1, 1.0)]))
        for args in [["check", "c.json"], ["report", "c.json"], ["export", "c.json"], ["inspect", EVIL + ".rph"],
                     ["inspect", EVIL], ["convert", EVIL + ".rph"], ["run", EVIL], ["eval", EVIL], [EVIL],
                     ["run", "c.json", "--scans", "2", "--period", "0"], ["watch", "c.json", "--scans", "8", "--period", "0"],
                     ["probe", "9001", "--set", "text1=" + EVIL]]:
            with self.subTest(args):
                shown = self.on_terminal(*args, output=True)
                self.assertIn("?", shown)
                self.assertNotIn("?\r", shown)  # line ends of a report
                self.assertNotRegex(re.sub(r"\x1b\[(\d*m|K|J|1A)|\r", "", shown), "[\0-\x08\x0b-\x1f\x7f-\x9f]")
        self.assertEqual(EVIL.encode(), re.search(rb"Node Name\r\n(.*)\r\n\r\n\*Con", self.vastra("report", "c.json").out, re.S)[1])

    def test_live_input_has_a_status_line_that_is_gone_at_the_end(self):
        shown = self.on_terminal("run", "live.json", "--scans", "40")
        self.assertRegex(shown, r"[1-9]\d* of 100")
        self.assertLess(shown.count("in memory"), 40)
        self.assertRegex(shown, r"of 100[^\r\n]*\r\x1b\[J\x1b\[31mError.*\r\n\d+ read")  # a line goes above it
        last = shown.split(ERASE)[-1]
        self.assertNotIn("in memory", last)
        self.assertIn("30 read, 10 failed reads, ", last)
        self.assertNotIn("in memory", self.on_terminal("run", "live.json", "--scans", "4", "--quiet"))

    def test_a_replay_has_a_bar_that_moves_within_a_log(self):
        self.write("a.rph", log(["x"], [(i, 1.0) for i in range(30)]))
        shown = self.on_terminal("run", self.write("replay.json", replayed(["a.rph"])), "--period", "20")
        self.assertIn("[....................]   0 %  log 1 of 1  ", shown)
        bars = re.findall(r"\[(#*)\.*\] +(\d+) %", shown)
        self.assertEqual([int(percent) // 5 for _, percent in bars], [len(bar) for bar, _ in bars])
        self.assertGreater(len({percent for _, percent in bars}), 2)
        self.assertEqual(79, max(map(len, re.findall(r"([^\r\n\x1b]*)\x1b\[K", shown))))

    def test_watch_shows_a_table_above_which_lines_go_and_leaves_nothing(self):
        shown = self.on_terminal("watch", "live.json", "--scans", "40", output=True)
        self.assertIn("Timeout error.", shown)
        self.assertRegex(shown, r":\d\d\S+  \d+ read\x1b\[K\r\nx +\d+  ▁[▁▂▃▄▅▆▇]*█\x1b\[K")
        self.assertRegex(shown, r"\x1b\[J[^\x1b]*(\x1b\[3[13]m[^\x1b]*\x1b\[0m\r\n)*vastra: \d+ read, .*\r\n\Z")
        self.write("wide.json", simulated(names=["x%d" % i for i in range(40)]))
        self.assertIn("\r\x1b[22A", self.on_terminal("watch", "wide.json", "--scans", "20", output=True))
        self.assertEqual([], re.findall(r"\x1b\[[^KJAm]*[^KJA\dm;]|\x1b[^\[]", shown))  # no mode to restore
