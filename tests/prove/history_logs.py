"""Folders of logs and journals by chance, and which rows a reader has to find in each file. Writes the bytes by
docs/file-formats.md, without the logger's own code."""
import os
import shutil
import struct
from typing import NamedTuple

from logs import crc32c

PLACES = ("start", "reserved", "number of names", "name", "number of samples", "values", "number of times", "time", "trailer")
POOL = (b"Temp", b"temp", b"Flow", b"a,b", b'say "x"', b"Druck \xc3\xa4", b"\xfc", b"x", b"Level " + b"9" * 300)
SPECIAL = [struct.pack("<f", value) for value in (0.0, -0.0, 1e-45, 3.4028235e38, -3.4028235e38, 0.1, 16777216.0, float("inf"),
                                                  float("-inf"))] + [b"\0\0\xc0\x7f", b"\1\0\x80\xff"]


LAST_MOMENT = 1000 * 2**31 - 1


class Row(NamedTuple):
    moment: int    # milliseconds since 1970
    record: bytes  # its time record
    values: bytes  # floats


class Log(NamedTuple):
    names: tuple  # bytes
    rows: list    # in the order of the file


def count_of(number):
    return struct.pack("<H", number) if number < 0xFFFF else struct.pack("<HI", 0xFFFF, number)


def text_of(text):
    return (struct.pack("<B", len(text)) if len(text) < 255 else struct.pack("<BH", 255, len(text))) + text


def row_of(moment, values, zone=(0, 0, 0), more=0):
    """more: whole seconds that the milliseconds have."""
    return Row(moment, struct.pack("<iHhhH", moment // 1000 - more, moment % 1000 + 1000 * more, *zone), values)


def parts_of(log):
    """The bytes of a log as pairs: the kind of a place, and the bytes there."""
    span = [row.record[:4] for row in (log.rows[:1] + log.rows[-1:])] or [bytes(4)] * 2
    return ([("start", bytes.fromhex("81070f2c00000000") + span[0] + span[-1] + bytes(4)), ("reserved", b"\0"),
             ("number of names", count_of(len(log.names)))] + [("name", text_of(name)) for name in log.names] +
            [("number of samples", struct.pack("<I", len(log.rows)))] +
            [("values", count_of(len(row.values) // 4) + row.values) for row in log.rows] +
            [("number of times", count_of(len(log.rows)))] + [("time", row.record) for row in log.rows] + [("trailer", bytes(4))])


def bytes_of(log):
    return b"".join(part for _, part in parts_of(log))


def is_deceptive(log):
    """Whether the records are uneven, have the size of even ones together, and may look like even ones in places, too. A
    reader of a part of such a log cannot see that."""
    sizes = [len(row.values) for row in log.rows]
    uneven = sum(size != sizes[0] for size in sizes)
    return (uneven and sum(sizes) == len(sizes) * sizes[0] and
            (uneven > 2 or any(b"\1\0" in row.values for row in log.rows)))


def odd_bytes(log, chance):
    """The same log with what a reader skips."""
    head, _, *rest = parts_of(log)
    body = b"".join(part for _, part in rest[:-1 - len(log.rows) - 1])
    start = head[1][:4] + chance.randbytes(16)
    times = b"".join(row.record for row in log.rows)
    more = chance.randrange(3)
    return (start + text_of(chance.randbytes(chance.choice((0, 3, 254, 255, 300)))) + body + count_of(len(log.rows) + more) + times +
            bytes(12 * more) + chance.randbytes(4 + chance.randrange(40)))


def cut(log, chance, place):
    """The bytes of the log up to a byte of such a place."""
    parts = parts_of(log)
    numbers = [i for i, part in enumerate(parts) if part[0] == place] or [len(parts) - 1]
    number = chance.choice(numbers)
    return b"".join(part for _, part in parts[:number]) + parts[number][1][:chance.randrange(len(parts[number][1]))]


# Journals

def record_of(kind, payload):
    head = struct.pack("<IB", len(payload), kind)
    return head[:4] + struct.pack("<I", crc32c(head + payload)) + head[4:] + payload


def note_of(name, rows):
    return text_of(name) + rows[0].record + struct.pack("<Q", len(rows))


def journal_parts(names, rows, extension, continues=None, named=None):
    """The start and the head, and then the other records. continues, named: a name and the rows of that log."""
    head = (b"\0" + b"".join(map(text_of, (b"o", b"d", b"", b"System Time"))) + b"\0" + text_of(extension) + b"\1\0" +
            bytes(8 + 24) + count_of(len(names)) + b"".join(map(text_of, names)) +
            (b"\1" + note_of(*continues) if continues else b"\0"))
    parts = [struct.pack("<II", 0x4A545356, 1) + record_of(1, head)]
    parts += [record_of(2, row.record + count_of(len(row.values) // 4) + row.values) for row in rows]
    return parts + ([record_of(3, note_of(*named))] if named else [])


class Tree:
    """A folder that is filled by chance. logs: the rows that each file has for a reader; faults: the files that it has to
    report; named: those that a journal names. All by their paths."""

    def __init__(self, path, chance):
        self.path, self.chance = path, chance
        self.logs, self.faults, self.whole, self.named = {}, set(), [], set()
        shutil.rmtree(path, ignore_errors=True)
        self.folders = [path] + [os.path.join(path, below) for below in chance.sample(("a", "a/b", "B", "c.rph", "ä"), 3)]
        for folder in self.folders:
            os.makedirs(folder, exist_ok=True)
        self.sets = [self.choose_names() for _ in range(chance.choice((1, 2, 4)))]
        self.base = 1000 * chance.choice((-86400, 0, 10**9, 1750000000, 1999999999, 2**31 - 4000))
        self.window = 1000 * chance.choice((1, 60, 3600, 86400 * 3, 86400 * 400))
        self.number = 0

    def choose_names(self):
        names = self.chance.sample(POOL, self.chance.choice((1, 2, 2, 3, 5)))
        return tuple(names + [name for name in names[:1] if self.chance.random() < 0.2])  # the first one twice

    def moments(self, count):
        return [min(moment, LAST_MOMENT) for moment in self.free_moments(count)]

    def free_moments(self, count):
        chance = self.chance
        first = self.base + chance.randrange(self.window)
        step = chance.choice((1, 1, 10, 1000, 1000, max(1, self.window // 50)))
        shape = chance.choice(("even", "even", "even", "jitter", "equal", "backwards", "wild"))
        if shape == "wild":
            return [self.base + chance.randrange(self.window) for _ in range(count)]
        if shape == "equal":
            return [first + step * (i // 4) for i in range(count)]
        jitter = step if shape == "jitter" else 0
        moments = [first + step * i + chance.randint(0, jitter) for i in range(count)]
        if shape == "backwards":
            at = chance.randrange(count + 1)
            moments[at:] = [moment - step * chance.randrange(1, 20) for moment in moments[at:]]
        return moments

    def values(self, size, special):
        chance = self.chance
        kinds = chance.choices((0, 1), (1, special), k=size)
        return b"".join(chance.choice(SPECIAL) if kind else struct.pack("<f", chance.uniform(-9, 9) * 10 ** chance.randrange(9))
                        for kind in kinds)

    def new_log(self):
        chance = self.chance
        names, count = chance.choice(self.sets), chance.choice((0, 1, 2, 3, 5, 8, 13, 20, 20, chance.choice((127, 128, 129, 300))))
        special, zone = chance.choice((0, 0, 0.1, 9)), chance.choice(((0, 0, 0), (0, 0, 0), (-60, 1, 0), (300, 0, 7)))
        sizes = [len(names)] * count
        shape = chance.random()
        if shape < 0.08:  # any sizes
            sizes = [max(0, size + chance.randint(-2, 2)) for size in sizes]
        elif shape < 0.16 and count > 2:  # the file has the size of a log with even records
            i, j = chance.sample(range(1, count), 2)
            sizes[i], sizes[j], special = sizes[i] - 1, sizes[j] + 1, 0
        more = chance.choice((0,) * 9 + (64,))
        return Log(names, [row_of(moment, self.values(size, special), zone, more) for moment, size in zip(self.moments(count), sizes)])

    def next_log(self):
        """A new log, or one that has rows of another one."""
        chance = self.chance
        if not self.whole or chance.random() < 0.75:
            return self.new_log()
        log = chance.choice(self.whole)
        rows = log.rows
        if chance.random() < 0.5:  # some of them, and some twice
            rows = sorted(chance.choices(rows, k=len(rows)), key=lambda row: row.moment)
        return Log(log.names if chance.random() < 0.9 else log.names[::-1], rows)

    def next_path(self, folder=None):
        self.number += 1
        name = self.chance.choice(("%d", "%d", "%d", "0%d", "Z%d", "ä %d", "a,%d", ".%d")) % self.number
        return os.path.join(folder or self.chance.choice(self.folders), name + self.chance.choice((".rph", ".rph", ".rpd", ".RPH")))

    def write(self, path, data, log=None):
        """log: what a reader finds; None: the file is damaged."""
        with open(path, "wb") as file:
            file.write(data)
        self.forget(path)
        if log:
            self.logs[path] = log
            self.whole.append(log)
        else:
            self.faults.add(path)

    def forget(self, path):
        self.logs.pop(path, None)
        self.faults.discard(path)

    def add(self):
        """Adds a log, a damaged log or something else."""
        chance, path, log = self.chance, self.next_path(), self.next_log()
        kind = chance.random()
        if is_deceptive(log):
            return
        if kind < 0.18:
            self.write(path, cut(log, chance, chance.choice(PLACES)))
        elif kind < 0.20:
            self.write(path, chance.choice((b"", b"TimeStamp,x,\n", b"\x7fELF" + bytes(99), bytes.fromhex("81070f2c") * 9)))
        elif kind < 0.22 and log.rows:  # a row without a time
            data = bytes_of(log)
            at = len(data) - 4 - 12 * len(log.rows) - 2
            self.write(path, data[:at] + count_of(len(log.rows) - 1) + data[at + 2:])
        elif kind < 0.24:
            self.add_other(path)
        elif kind < 0.28:
            self.write(path, odd_bytes(log, chance), log)
        elif kind < 0.40:
            self.add_journal()
        else:
            self.write(path, bytes_of(log), log)

    def add_other(self, path):
        """What is not a file of a log of its own."""
        kind = self.chance.randrange(5)
        if kind == 0:
            os.mkfifo(path)
            self.faults.add(path)
        elif kind == 1 and self.logs:  # a link to a log is a log
            target = self.chance.choice(sorted(self.logs))
            if target.endswith(".journal"):
                return
            os.symlink(os.path.abspath(target), path)
            self.logs[path] = self.logs[target]
        elif kind == 2:
            os.symlink("nowhere", path[:-4])
        elif kind == 3:
            os.symlink(os.path.abspath(self.path), path[:-4] + " link")  # is not followed
        else:
            with open(path + ".part", "wb") as file:
                file.write(bytes_of(self.new_log()))

    def add_journal(self):
        """A journal, and perhaps the log that has some of its samples."""
        chance, folder = self.chance, self.chance.choice(self.folders)
        log = self.new_log()
        if not log.rows:
            return
        before = chance.choice((0, 0, len(log.rows) // 2))  # rows that a stop had saved
        names, old, rows = log.names, log.rows[:before], log.rows[before:]
        path = self.next_path(folder)
        self.named.add(path)
        name, extension = os.path.splitext(os.path.basename(path))
        named = chance.random() < 0.7 or bool(old)
        parts = journal_parts(names, rows, os.fsencode(extension), (os.fsencode(name), old) if old else None,
                              (os.fsencode(name), log.rows) if named and chance.random() < 0.8 or named and not old else None)
        skip = 0
        saved = chance.choice(("missing", "whole", "part", "part", "before", "other", "cut")) if named else "missing"
        if saved in ("whole", "part", "before"):
            count = {"whole": len(log.rows), "part": chance.randint(before + (not before), len(log.rows)), "before": before}[saved]
            saved_log = Log(names, log.rows[:count])
            if count and not is_deceptive(saved_log):
                self.write(path, bytes_of(saved_log), saved_log)
                skip = count - before
        elif saved == "other":
            other = Log(names, log.rows[1:] + [row_of(self.base, b"")])
            if other.rows[0].record != log.rows[0].record and not is_deceptive(other):
                self.write(path, bytes_of(other), other)
        elif saved == "cut":
            self.write(path, cut(log, chance, chance.choice(PLACES)))
        self.write_journal(folder, names, rows, parts, skip, bool(old))

    def write_journal(self, folder, names, rows, parts, skip, continues):
        chance, data = self.chance, b"".join(parts)
        self.number += 1
        path = os.path.join(folder, ".vastra-%016x-%d.journal" % (chance.choice((7, 2**63)), 1000 * self.number + 1))
        kind = chance.random()
        if kind < 0.3:  # torn, or zeros after a power cut
            end = chance.randint(0, len(data))
            data = data[:end] + bytes(chance.choice((0, 0, 99)) * (end > 7))
        elif kind < 0.4:
            data += chance.randbytes(chance.randrange(1, 60))
        whole, size = -1, 0
        for part in parts:  # zeros can be the rest of a record
            whole += data[size:size + len(part)] == part
            size += len(part)
        with open(path, "wb") as file:
            file.write(data)
        if kind > 0.7:  # what a start that was killed has left of the same journal
            with open(path.replace("1.journal", "0.journal"), "wb") as file:
                file.write(b"".join(parts[:chance.randint(1, len(parts))]))
        if whole < len(parts) - 1 and not continues:  # its last record, with the name, is lost
            skip = 0
        if rows := rows[skip:min(max(whole, 0), len(rows))]:  # else it is left out
            self.logs[path] = Log(names, rows)
