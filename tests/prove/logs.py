"""Reads logs and journals by docs/file-formats.md, without the logger's own code. Of a log that is not whole a
ValueError says why."""
import os
import struct

ENDINGS = (".rph", ".rpd", "h.csv", "d.csv")


class Failed(Exception):
    """What contradicts a claim."""


class NotRun(Exception):
    """Why a claim cannot be tested here."""


class Bytes:
    def __init__(self, data):
        self.data, self.at = data, 0

    def take(self, kind):
        size = struct.calcsize("<" + kind)
        if self.at + size > len(self.data):
            raise ValueError("ends at byte %d" % len(self.data))
        fields = struct.unpack_from("<" + kind, self.data, self.at)
        self.at += size
        return fields if len(fields) > 1 else fields[0]

    def count(self):
        short = self.take("H")
        return self.take("I") if short == 0xFFFF else short

    def text(self):
        length = self.take("B")
        if length == 0xFF:
            length = self.take("H")
            if length == 0xFFFF:
                length = self.take("I")
        return self.take("%ds" % length).decode() if length else ""

    def rest(self):
        return len(self.data) - self.at


def read_binary(data):
    """The number that the device has given each row."""
    log = Bytes(data)
    if log.take("I") != 0x2C0F0781:
        raise ValueError("is not a log")
    log.take("IiiI")
    log.text()
    names = [log.text() for _ in range(log.count())]
    rows = []
    for _ in range(log.take("I")):
        if log.count() != len(names):
            raise ValueError("has a row with another number of values")
        rows.append(int(log.take("f")))
        log.take("%ds" % (4 * len(names) - 4))
    if log.count() != len(rows):
        raise ValueError("has another number of times")
    times = [log.take("iHhhH") for _ in rows]
    if log.take("I") != 0 or log.rest():
        raise ValueError("has a bad end")
    if times != sorted(times, key=lambda time: time[:2]):
        raise ValueError("is not in the order of time")
    return rows


def read_text(data):
    lines = data.decode().split("\n")
    if len(lines) < 2 or lines.pop() != "":
        raise ValueError("ends within a line")
    fields = lines[0].count(",")
    if any(line.count(",") != fields for line in lines):
        raise ValueError("has a short line")
    return [int(float(line.split(",", 2)[1])) for line in lines[1:]]


def read_log(path):
    with open(path, "rb") as file:
        data = file.read()
    rows = (read_text if path.endswith(".csv") else read_binary)(data)
    if not rows:
        raise ValueError("has no samples")
    return rows


def crc32c(data):
    crc = 0xFFFFFFFF
    for byte in data:
        crc = CRC_TABLE[(crc ^ byte) & 0xFF] ^ crc >> 8
    return crc ^ 0xFFFFFFFF


def crc_of(byte):
    for _ in range(8):
        byte = byte >> 1 ^ 0x82F63B78 * (byte & 1)
    return byte


CRC_TABLE = [crc_of(byte) for byte in range(256)]


def read_journal(path):
    """The rows, and the name that their log is about to get, or None."""
    with open(path, "rb") as file:
        journal = Bytes(file.read())
    rows, named = [], None
    if journal.rest() < 8:
        return rows, named
    if journal.take("II") != (0x4A545356, 1):
        raise ValueError("%s is not a journal" % path)
    while journal.rest() >= 9:
        length, checksum, kind = journal.take("IIB")
        if kind not in (1, 2, 3) or length > journal.rest():
            break
        begin = journal.at
        if crc32c(struct.pack("<IB", length, kind) + journal.data[begin:begin + length]) != checksum:
            break
        if kind == 2:
            journal.take("12s")
            journal.count()
            rows.append(int(journal.take("f")))
        elif kind == 3:
            named = journal.text()
        journal.at = begin + length
    return rows, named


def order(name):
    """Sorts the names of logs in the order in which they were made: YYMMDDHHNN, after 99 NN~2, NN~3, ..."""
    number, _, more = name[:-5 if name.endswith(".csv") else -4].partition("~")
    return number, int(more or 1)


class Folder:
    """A folder of logs. Reads again only what has changed."""

    def __init__(self, path):
        self.path, self.seen = path, {}
        os.makedirs(path, exist_ok=True)

    def names(self, ending=ENDINGS):
        """The logs, the oldest first. The folder can change while it is listed: it is listed until it does not."""
        names = None
        while names != (now := sorted(os.listdir(self.path))):
            names = now
        return sorted((name for name in names if name[0] != "." and name.endswith(ending)), key=order)

    def read(self, ending=ENDINGS):
        """The rows of each log, by its name, the oldest log first. Failed names a log that is not whole."""
        logs = {}
        for name in self.names(ending):
            path = os.path.join(self.path, name)
            status = os.stat(path)
            version = status.st_ino, status.st_size, status.st_mtime_ns
            if self.seen.get(name, (None,))[0] != version:
                try:
                    self.seen[name] = version, read_log(path)
                except ValueError as fault:
                    raise Failed("a log that is not whole: %s %s" % (path, fault)) from None
            logs[name] = self.seen[name][1]
        return logs

    def rows(self, ending, in_order=True):
        """All rows of the logs with this ending. Failed if a row is there twice, or out of order."""
        logs = self.read(ending)
        rows = [row for log in logs.values() for row in log]
        for before, row in zip(rows, rows[1:]) if in_order else ():
            if row <= before:
                raise Failed("%s: row %d follows row %d in the logs %s" % (
                    self.path, row, before, ", ".join(name for name, log in logs.items() if row in log or before in log)))
        if len(set(rows)) != len(rows):
            raise Failed("%s: rows are there twice" % self.path)
        return rows

    def others(self):
        """What is neither a log nor a lock."""
        return sorted(name for name in os.listdir(self.path) if not name.endswith(ENDINGS + (".lock",)))
