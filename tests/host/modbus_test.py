"""The Modbus driver as its page shows it, and against devices of pymodbus, which has another author: what goes over the
wire is what both take for the protocol."""
import json
import os
import struct
import subprocess

from pages import PageTest, ROOT

SERVER = [os.environ["PYTHON_WITH_PYMODBUS"], os.path.join(ROOT, "tests/host/modbus_server.py")]

# A type with its order, its letter in struct, a number, and its bytes on the wire, A being the highest. All types and
# orders are tests of the driver.
NUMBERS = [
    ("u16", "H", 0xABCD, "AB"), ("i16", "h", -2, "AB"), ("u32", "I", 0x12345600, "ABCD"),
    ("i32 badc", "i", -0x12345600, "BADC"), ("f32 cdab", "f", 12.25, "CDAB"), ("f64 dcba", "d", -1234.5, "HGFEDCBA"),
]

# What is read or written of a device that has ten registers and no coil, and the end of its words.
REFUSED = [
    ("h10", [], "holding register 10"),
    ("i8 x 3", ["--count", "3"], "input registers 8 to 10; value4 1 .*"),
    ("h40001", [], "holding register 40001; .* 40001 may be h0"),
    ("c0", ["--write", "1"], "coil 0"),
]


def registers(letter, number, order):
    data = struct.pack(">" + letter, number)
    data = bytes(data[ord(place) - ord("A")] for place in order)
    return list(struct.unpack(">%dH" % (len(data) // 2), data))


class Modbus(PageTest):
    def serve(self, units):
        """Starts a device. Returns its place once it can be asked."""
        with open(self.path("device.log"), "ab") as log:
            process = subprocess.Popen([*SERVER, json.dumps(units)], stdout=subprocess.PIPE, stderr=log)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        place = process.stdout.readline().decode().strip()
        self.assertTrue(place, self.read("device.log"))
        return place

    def probe(self, place, text2, *args, unit=1):
        """The last call."""
        return self.vastra("probe", "9002", "--json", "--set", "text1=" + place, "--set", "station=%d" % unit,
                           "--set", "text2=" + text2, *args).json()["calls"][-1]

    def values(self, place, text2, count, unit):
        return self.probe(place, text2, "--count", str(count), unit=unit).get("values")

    def test_the_page(self):
        kiln = self.serve({1: {"hr": {0: [8505] + [0] * 9 + registers("f", 12.25, "CDAB")}, "di": {0: [1]}}})
        volts = [word for volts in (230.5, 231, 229.75) for word in registers("f", volts, "ABCD")]
        meter = self.serve({2: {"ir": {0: volts + [0] * 6 + registers("I", 123456, "ABCD")}}})
        self.follow("docs/modbus.md", {"192.168.0.10:502": kiln, "192.168.0.10": kiln, "192.168.0.11": meter})

    def test_values_are_the_same_on_both_sides(self):
        content, entries, numbers, bits = [], [], [number for _, _, number, _ in NUMBERS], [1, 0, 1, 1, 0, 0, 0, 1, 0, 1, 1]
        for kind, letter, number, order in NUMBERS:
            entries.append("h%d: %s" % (len(content), kind))
            content += registers(letter, number, order)
        place = self.serve({1: {"hr": {0: content}}, 2: {"hr": {0: [0xFFFF] * len(content)}},
                            0: {"di": {3: bits}, "co": {3: [0] * 11}}})
        self.assertEqual(numbers, self.values(place, ", ".join(entries), len(numbers), 1))
        self.assertEqual(bits, self.values(place, "d3 x 11", 11, 0))
        for unit, text2, written in [(2, ", ".join(entries), numbers), (0, "c13, c3 x 10", bits[10:] + bits[:10])]:
            call = self.probe(place, text2, "--write", ",".join(map(str, written)), unit=unit)
            self.assertEqual("statusOk", call["statusName"])
        self.assertEqual(content, self.values(place, "h0 x %d" % len(content), len(content), 2))
        self.assertEqual(bits[::-1], self.values(place, ", ".join("c%d" % i for i in range(13, 2, -1)), 11, 0))

    def test_what_a_device_refuses_is_told(self):
        place = self.serve({1: {"hr": {0: [1] * 10}, "ir": {0: [1] * 10}}})
        for text2, args, words in REFUSED:
            call = self.probe(place, text2, *args)
            self.assertEqual("statusReplyError", call["statusName"])
            self.assertRegex(call["words"], r"\AModbus %s unit 1: exception 2 \(Illegal data address\), %s\Z" % (place, words))
