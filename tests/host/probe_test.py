"""vastra probe: values and statuses of the simulator, and what its test of a module finds in drivers that break a rule
each."""
import concurrent.futures
import os
import re
import signal
import subprocess

from commands import CommandTest, VASTRA

FAULTY = os.environ["FAULTY_DRIVER"]
SIMULATOR = os.path.join(os.path.dirname(VASTRA), "simulator.so")

HEADER, NAME, TABLE, VERSION, TRANSFERS, CLOSE, OPEN, READ, WRITE, TEXTS, MODE, HANDLES, THREADS, LEAK, FAILED_OPEN, \
    STATUSES, WORDS, FORMS, ID, CHECK, THROWS, UNLOAD = range(22)

# A fault, the rules that it breaks, and a part of the words for the first of them.
FAULTS = [
    ("none", [], None),
    ("has a new ID each time", [HEADER, ID], "9500, then 9501"),
    ("has no name", [NAME], "null"),
    ("is named in Latin-1", [NAME], "UTF-8"),
    ("has no table", [TABLE, TRANSFERS, CLOSE], "null"),
    ("is of the future", [VERSION], "4; from 1 to 3"),
    ("has no transfer", [TRANSFERS], "neither"),
    ("has no Close", [CLOSE], "end with the module"),
    ("gives a status of Read", [OPEN], "statusTimeout"),
    ("stores no handle", [OPEN], "no handle"),
    ("writes behind", [READ], "after the last value"),
    ("reads behind", [WRITE], "after the last value"),
    ("writes before", [READ], "before"),
    ("leaves a value", [READ], "value 2 of 2"),
    ("writes with 1", [WRITE], "unknown status 1"),
    ("keeps a text", [TEXTS], "overwritten"),
    ("refuses a mode", [MODE], "statusNotOpened"),
    ("has one handle", [HANDLES], "handle 0"),
    ("serves one thread", [THREADS], "statusTimeout"),
    ("knows handles of the thread", [THREADS], "statusNotOpened"),
    ("leaves a file", [LEAK], "files went from"),
    ("gives 0", [STATUSES], "unknown status 0"),
    ("words null", [WORDS], "null"),
    ("words empty", [WORDS], "empty"),
    ("words in Latin-1", [WORDS], "UTF-8"),
    ("words without end", [WORDS], "does not end"),
    ("words missing", [WORDS], "no GetExtendedError"),
    ("shows a form", [FORMS], "no forms"),
    ("throw, call", [WRITE, FAILED_OPEN, THROWS], "it returned an exception"),
    ("forgets its ID", [ID], "plcType is 0"),
    ("refuses what it opens", [CHECK], "Open succeeded, and it returned: text1 is wrong."),
    ("answers in Latin-1", [CHECK], "UTF-8"),
    # The test ends with these.
    ("crashes at once", [HEADER], "signal 11 (Segmentation fault) in GetDriverHeader"),
    ("crashes", [READ], "signal 11 (Segmentation fault) in Read"),
    ("writes far behind", [READ], "signal 11 (Segmentation fault) in Read"),
    ("exits", [READ], "ended with status 7 in Read"),
    ("hangs", [READ], "within 1 s in Read"),
    ("crashes without a handle", [FAILED_OPEN], "signal 11 (Segmentation fault) in GetExtendedError"),
    ("leaves a thread", [LEAK, UNLOAD], "threads from"),
]

# Arguments after "probe", the exit status, and a part of the one line that says what is wrong.
WRONG = [
    ("9001 --set station", 2, "FIELD=VALUE"),
    ("9001 --set =1", 2, "FIELD=VALUE"),
    ("9001 --set speed=1", 2, "the fields are cardNumber, registerAddress, registerAddressExt, plcNodeAddress, timeOut, "
                              "station, text1, text2, value1, value2, value3, value4, value5"),
    ("9001 --set station=1x", 2, "must be a whole number from -2147483648 to 2147483647"),
    ("9001 --set plcType=1", 2, "set with the driver"),
    ("9001 --set openState=1", 2, "openState is 0"),
    ("9001 --set variableCount=1", 2, "--count"),
    ("9001 --count 0", 2, "from 1"),
    ("9001 --count 1 --write 1,2", 2, "2 values"),
    ("9001 --write 1e99", 2, "1e99"),
    ("9001 --reads -1", 2, "from 0"),
    ("4711", 1, "vastra drivers"),
    ("4294976297", 1, "vastra drivers"),
    ("gone.so", 1, "No such file"),
    ("text.so", 1, "text.so: it is not a module: it has no ELF header"),
    ("fifo.so", 1, "fifo.so: it is a FIFO"),
    ("/lib/x86_64-linux-gnu/libm.so.6", 1, "no GetDriv"),
]


class Probe(CommandTest):
    def probe(self, *args, fault="none"):
        return self.vastra("probe", *args, env=dict(self.environment(), FAULT=fault))

    def calls(self, *args):
        return [(call["call"], call["statusName"], call.get("values"), call.get("words"))
                for call in self.probe("9001", "--json", *args).json()["calls"]]

    def test_writes_and_reads_as_the_driver_is_set(self):
        result = self.probe("9001", "--set", "text1=counter,constant", "--set", "value2=2500", "--count", "2",
                            "--reads", "2")
        self.assertEqual((0, ""), (result.status, result.err))
        self.assertRegex(result.out.decode(), r"\ASimulator  \(simulator.so\), ID 9001, version 3\n.*\n"
                         r"Open   statusOk +[\d.]+\nRead   statusOk +[\d.]+  1 2.5\nRead   statusOk +[\d.]+  2 2.5\n\Z")
        station, values = ["--set", "station=7", "--write", "-1.5,0.1,inf,-nan"], [-1.5, 0.1, "inf", "nan"]
        opened = [("Open", "statusOk", None, None)]
        wrote = opened + [("Write", "statusOk", values, None)]
        self.assertEqual(wrote, self.calls(*station))
        self.assertEqual(wrote + opened + [("Read", "statusOk", values, None)], self.calls(*station, "--reads", "1"))
        self.assertEqual(opened, self.calls("--reads", "0"))

    def test_tells_a_status_with_its_words_and_goes_on(self):
        for status, name, words in ((109, "statusTimeout", None), (61, "unknown status 61", None),
                                    (157, "statusReplyError", "Simulator: call 2 fails because value4 is 2.")):
            args = ["--set", "value4=2", "--set", "value5=%d" % status, "--reads", "3"]
            calls = self.calls(*args)
            self.assertEqual(["statusOk", "statusOk", name, "statusOk"], [call[1] for call in calls])
            self.assertEqual((None, words), calls[2][2:])
        self.assertEqual(1, self.probe("9001", *args).status)
        self.assertEqual([("Open", "statusExtendedError", None, "Simulator: station is negative: -1")],
                         self.calls("--set", "station=-1"))
        self.assertEqual("", self.probe("9001", "--set", "station=-1").err)
        modbus = ["9002", "--set", "text1=127.0.0.1:1", "--set", "text2=h0 x 2", "--reads", "0"]
        self.assertIn("--count", self.probe(*modbus).err)
        self.assertEqual("", self.probe(*modbus, "--count", "1").err)

    def test_what_is_wrong_is_one_line(self):
        self.write("text.so", "This is not a module.\n")
        os.mkfifo(self.path("fifo.so"))
        for args, status, words in WRONG:
            self.expect("probe " + args, status, err=".*" + re.escape(words))

    def test_an_interrupt_ends_it_well(self):
        process = self.start("probe", "9001", "--reads", "1000000000", stdout=subprocess.PIPE)
        while b"Read" not in process.stdout.readline():
            pass
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=60)
        self.assertEqual(0, process.returncode)

    def test_finds_the_rule_that_a_module_breaks(self):
        args = [FAULTY, "--json", "--write", "1,2", "--reads", "1", "--limit"]
        with concurrent.futures.ThreadPoolExecutor(16) as pool:  # most of the time is patience with a driver
            results = list(pool.map(lambda row: self.probe(*args, "1" if row[0] == "hangs" else "60", fault=row[0]), FAULTS))
        for (fault, broken, words), result in zip(FAULTS, results):
            with self.subTest(fault):
                rules = result.json()["contract"]
                self.assertEqual(broken, [i for i, rule in enumerate(rules) if not rule["kept"]])
                self.assertEqual(UNLOAD + 1, len(rules))
                self.assertEqual(1 if broken else 0, result.status)
                if broken:
                    self.assertIn(words, rules[broken[0]]["words"])
                ended = "in the test" in result.err
                self.assertEqual(ended, not result.json()["calls"] and fault != "has no table")

    def test_every_rule_is_tried_that_the_settings_allow(self):
        for args, not_tried in ((["--write", "1"], []), ([], [WRITE]), (
                ["--set", "station=-1"], [READ, WRITE, TEXTS, MODE, HANDLES, THREADS, LEAK, STATUSES])):
            rules = self.probe(SIMULATOR, *args, "--json").json()["contract"]
            self.assertEqual(not_tried, [i for i, rule in enumerate(rules)
                                         if rule.get("words", "").startswith("not tried: ")])

