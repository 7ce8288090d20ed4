"""The Modbus driver as its page shows it, and against devices of pymodbus, which has another author: what goes over the
wire is what both take for the protocol."""
import json
import os
import struct
import subprocess
import unittest

from pages import PageTest

HERE = os.path.dirname(os.path.abspath(__file__))
PAGE = os.path.join(HERE, "../../docs/modbus.md")
SERVER = [os.environ["PYTHON_WITH_PYMODBUS"], os.path.join(HERE, "modbus_server.py")]

# A type with its order, its letter in struct, a number, and its bytes on the wire, A being the highest. All types and
# orders are tests of the driver.
NUMBERS = [
    ("u16", "H", 0xABCD, "AB"), ("i16", "h", -2, "AB"), ("u32", "I", 0x12345600, "ABCD"),
    ("i32 badc", "i", -0x12345600, "BADC"), ("f32 cdab", "f", 12.25, "CDAB"), ("f64 dcba", "d", -1234.5, "HGFEDCBA"),
]

# What is read or written of a device that has the registers 0 to 9 except 5, and the end of its words.
REFUSED = [
    ("h10", 1, [], r"exception 2 \(Illegal data address\), holding register 10"),
    ("i8 x 3", 3, [], r"exception 2 \(.*\), input registers 8 to 10; value4 1 .*"),
    ("h4, h6", 2, [], r"exception 2 \(.*\), holding registers 4 to 6; value4 1 .*"),
    ("h40001", 1, [], r"exception 2 \(.*\), holding register 40001; .* 40001 may be h0"),
    ("c0", 1, [], r"exception 2 \(.*\), coil 0"),
    ("c0", 1, ["--write", "1"], r"exception 2 \(.*\), coil 0"),
    ("h9: u32", 1, ["--write", "1"], r"exception 2 \(.*\), holding registers 9 to 10"),
]


def registers(letter, number, order):
    data = struct.pack(">" + letter, number)
    data = bytes(data[ord(place) - ord("A")] for place in order)
    return list(struct.unpack(">%dH" % (len(data) // 2), data))


class Modbus(PageTest):
    def serve(self, units, *line):
        """Starts a device. Returns its place once it can be asked."""
        with open(self.path("device.log"), "ab") as log:
            process = subprocess.Popen([*SERVER, json.dumps(units), *line], stdout=subprocess.PIPE, stderr=log)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        place = process.stdout.readline().decode().strip()
        self.assertTrue(place, self.read("device.log"))
        return place

    def probe(self, place, text2, *args, unit=1):
        """The last call."""
        return self.vastra("probe", "9002", "--json", "--set", "text1=" + place, "--set", "station=%d" % unit,
                           "--set", "text2=" + text2, *args).json()["calls"][-1]

    def values(self, place, text2, count, **options):
        return self.probe(place, text2, "--count", str(count), **options).get("values")

    def write_values(self, place, text2, values, unit):
        call = self.probe(place, text2, "--write", ",".join(map(str, values)), unit=unit)
        self.assertEqual("statusOk", call["statusName"])

    def test_the_page(self):
        kiln = self.serve({1: {"hr": {0: [8505] + [0] * 9 + registers("f", 12.25, "CDAB")}, "di": {0: [1]}}})
        volts = [word for volts in (230.5, 231, 229.75) for word in registers("f", volts, "ABCD")]
        meter = self.serve({2: {"ir": {0: volts + [0] * 6 + registers("I", 123456, "ABCD")}}})
        self.follow(PAGE, {"192.168.0.10:502": kiln, "192.168.0.10": kiln, "192.168.0.11": meter})

    def test_values_are_the_same_on_both_sides(self):
        content, entries, bits = [], [], [1, 0, 1, 1, 0, 0, 0, 1, 0, 1, 1]
        for kind, letter, number, order in NUMBERS:
            entries.append("h%d: %s" % (len(content), kind))
            content += registers(letter, number, order)
        place = self.serve({1: {"hr": {0: content}}, 2: {"hr": {0: [0xFFFF] * len(content)}},
                            0: {"di": {3: bits}, "co": {3: [0] * 11}}})
        numbers, entries = [number for _, _, number, _ in NUMBERS], ", ".join(entries)
        self.assertEqual(numbers, self.values(place, entries, len(numbers)))
        self.write_values(place, entries, numbers, 2)
        self.assertEqual(content, self.values(place, "h0 x %d" % len(content), len(content), unit=2))
        self.assertEqual(bits, self.values(place, "d3 x 11", 11, unit=0))
        self.write_values(place, "c13, c3 x 10", bits[10:] + bits[:10], 0)
        self.assertEqual(bits[::-1], self.values(place, ", ".join("c%d" % i for i in range(13, 2, -1)), 11, unit=0))

    def test_what_a_device_refuses_is_told(self):
        place = self.serve({1: {"hr": {0: [1] * 5, 6: [1] * 4}, "ir": {0: [1] * 10}}})
        for text2, count, args, words in REFUSED:
            with self.subTest(text2):
                call = self.probe(place, text2, "--count", str(count), *args)
                self.assertEqual("statusReplyError", call["statusName"])
                self.assertRegex(call["words"], r"\AModbus %s unit 1: %s\Z" % (place, words))
        self.assertEqual([1, 1], self.probe(place, "h4, h6", "--count", "2", "--set", "value4=1").get("values"))

    def test_a_serial_line(self):
        numbers, mixed = list(range(1000, 1200)), [1, 0, 1, 1, 0, 0, 1, 0, 1, -5]
        line = self.serve({1: {"hr": {0: numbers}}, 7: {"hr": {0: [7]}, "co": {0: [0] * 9}}}, "line") + ":19200,8,E,1"
        self.assertEqual(numbers, self.values(line, "h0 x 200", 200))
        self.write_values(line, "c0 x 9, h0: i16", mixed, 7)
        self.assertEqual(mixed, self.values(line, "c0 x 9, h0: i16", 10, unit=7))
        self.assertIn("exception 2", self.probe(line, "h200")["words"])


if __name__ == "__main__":
    unittest.main()
