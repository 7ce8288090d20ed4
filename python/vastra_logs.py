"""Reads the logs of Vastra into numpy arrays and pandas frames.

    import vastra_logs
    rows = vastra_logs.read("/var/lib/vastra/kiln", "-7d", columns=["Temp", "Flow"])
    rows.time                  # numpy datetime64[ms], UTC, in order
    rows["Temp"]               # numpy float32; a logged NaN, and NaN where a log has no value (rows.present)
    rows.frame(tz="local")     # pandas, with a time index
    vastra_logs.catalogue("/var/lib/vastra/kiln")  # which logs there are, with the faults of the damaged ones

Binary logs (.rph, .rpd) and the journals of running loggers are read, never changed. docs/history.md describes
the module, docs/file-formats.md the bytes of the files. Needs numpy; frames need pandas, too.
"""
import bisect
import dataclasses
import datetime
import difflib
import hashlib
import os
import re
import stat
import struct
import time as clock
import warnings

import numpy

__all__ = ["Log", "LogError", "LogWarning", "Rows", "catalogue", "read"]

_MAGIC, _JOURNAL_MAGIC, _JOURNAL_VERSION = 0x2C0F0781, 0x4A545356, 1
_TIME = numpy.dtype([("time", "<i4"), ("millitm", "<u2"), ("timezone", "<i2"), ("dstflag", "<i2"), ("pad", "<u2")])
_LONG = 0xFFFF  # a count of 2 bytes that has the number after it, as u32
_HEAD_SIZE, _WINDOW, _PIECE = 4096, 1 << 16, 1 << 22  # bytes that are read at once: head, records, values
_EXCESS = 16 << 20  # bytes after the trailer from which on a file is not taken for a log
_MOST_NAMES = _MOST_RUNS = 1_000_000
_LONGEST_RECORD = 64 << 20  # of a journal
_JOURNALS_OF_A_LOG = 1000
_JOURNAL = re.compile(r"\.vastra-([0-9A-Fa-f]{16})-(0|[1-9][0-9]{0,19})\.journal")
_EPOCH = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
_BEGIN, _END = -(1 << 31) * 1000, (1 << 31) * 1000 + _LONG  # milliseconds; all rows are between them


class LogError(Exception):
    """A file that cannot be read as a log: file is its path, fault the reason."""

    def __init__(self, file, fault):
        super().__init__("%s: %s" % (_shown(file), fault))
        self.file, self.fault = file, fault


class LogWarning(UserWarning):
    """A damaged log that read has passed over."""


@dataclasses.dataclass(frozen=True)
class Log:
    """A log or a journal in a catalogue. With a fault, the fields after it are empty."""
    path: str
    fault: str = ""  # why it cannot be read; "" if it can
    size: int = 0  # bytes of the file
    names: tuple = ()  # of the variables, in the order of the file
    samples: int = 0
    first: numpy.datetime64 = numpy.datetime64("NaT", "ms")  # the earliest time, UTC; NaT without samples
    last: numpy.datetime64 = numpy.datetime64("NaT", "ms")  # the latest time


class Rows:
    """The rows of a time range, in time order. Rows of equal time are in the order of the logs.

    names    the variables, a list of strings
    time     numpy array, datetime64[ms], UTC
    values   numpy array, float32, a row for each time and a column for each name; NaN where a log has no value
    present  numpy array of the same shape, bool: False where a log has no value; True with a logged NaN
    source   numpy array, int32: which of logs a row is from
    logs     the catalogue, with the damaged logs, which have no rows
    """

    def __init__(self, names, time, values, present, source, logs):
        self.names, self.time, self.values, self.present = names, time, values, present
        self.source, self.logs = source, logs

    def __len__(self):
        return len(self.time)

    def __repr__(self):
        span = " from %s to %s UTC" % (self.time[0], self.time[-1]) if len(self) else ""
        return "<%d rows of %d variables%s>" % (len(self), len(self.names), span)

    def __getitem__(self, name):
        """The values of one variable."""
        return self.values[:, self._column(name)]

    def _column(self, name):
        if name not in self.names:
            raise KeyError(_no_variable(name, self.names))
        return self.names.index(name)

    def frame(self, tz="UTC", nullable=False):
        """A pandas DataFrame with a column for each variable and a time index in the zone tz; "local" is the zone
        of this machine. With nullable the columns are of the type Float32, in which no value is <NA> and a logged
        NaN stays NaN; else both are NaN."""
        try:
            import pandas
        except ImportError as error:
            raise ImportError("frame needs pandas (Debian: python3-pandas); the arrays are in time and values") from error
        index = pandas.DatetimeIndex(self.time, tz="UTC", name="time")
        if tz == "local":
            from dateutil.tz import gettz, tzlocal
            tz = gettz() or tzlocal()
        index = index.tz_convert(tz)
        if not nullable:
            return pandas.DataFrame(self.values, index, self.names)
        columns = {i: pandas.arrays.FloatingArray(self.values[:, i].copy(), ~self.present[:, i])
                   for i in range(len(self.names))}
        return pandas.DataFrame(columns, index).set_axis(self.names, axis=1)


def catalogue(paths, recursive=False):
    """The logs of paths as a list of Log: a path, or several, of files and of folders. A folder counts with its
    files that end in .rph or .rpd and the samples of its journals that no log has yet; with recursive also with
    its subfolders. Reads heads and times, no values. pandas.DataFrame(catalogue(...)) is a table of them."""
    return [entry.log for entry in _scan(_list_of(paths), recursive, lambda *_: None)]


def read(paths, start=None, end=None, columns=None, recursive=False, unique=False):
    """The rows of all logs of paths (see catalogue) from start on and before end, as Rows.

    start, end  datetime (without a zone: local time), date, numpy datetime64 (UTC), text: "now", "-7d" (s, m, h, d,
                w before now), or ISO 8601 (without a zone: local time); None: no limit
    columns     a name or several; rows of logs that have none of them are left out. None: the variables of all logs
                that have rows in the range, or of all logs if there are no rows
    unique      drops a row that an earlier log has as well: the same names, time record and values, byte for byte

    A damaged log is passed over with a LogWarning, and listed in the result's logs with its fault. One file alone
    that is damaged or missing raises LogError."""
    paths = _list_of(paths)
    now = clock.time_ns() // 1_000_000
    begin, stop = _moment(start, _BEGIN, now), _moment(end, _END, now)
    wanted = None if columns is None else list(dict.fromkeys([columns] if isinstance(columns, str) else columns))
    entries = _scan(paths, recursive, lambda source, layout, skip:
                    _read_part(source, layout, skip, begin, stop, wanted, unique))
    damaged = [entry.log for entry in entries if entry.log.fault]
    if len(paths) == 1 and damaged and damaged[0].path == paths[0]:
        raise LogError(damaged[0].path, damaged[0].fault)
    for log in damaged:
        warnings.warn("%s: %s; its rows are left out" % (_shown(log.path), log.fault), LogWarning, stacklevel=2)
    if wanted is not None:
        known = dict.fromkeys(name for entry in entries for name in entry.log.names)
        for name in wanted if known else ():
            if name not in known:
                raise ValueError(_no_variable(name, known))
    return _merge(entries, wanted, unique)


def _list_of(paths):
    return [os.fsdecode(path) for path in ([paths] if isinstance(paths, (str, bytes, os.PathLike)) else paths)]


def _shown(path):
    return "".join(c if c.isprintable() else "?" for c in path)


def _no_variable(name, known):
    near = difflib.get_close_matches(str(name), list(known), 1)
    return 'there is no variable "%s"%s' % (name, '; did you mean "%s"?' % near[0] if near else "")


# Times ---------------------------------------------------------------------------------------------------------------

def _moment(value, default, now):
    """The first whole millisecond that is not before value."""
    if value is None:
        return default
    try:
        return _parsed(value, now)
    except (ValueError, TypeError, OverflowError) as error:
        raise ValueError("%r is not a time: a datetime, a numpy datetime64, or a text such as 2026-03-01T12:00:00, "
                         "2026-03-01T12:00:00Z, -7d or now" % (value,)) from error


def _parsed(value, now):
    if isinstance(value, str):
        if value == "now":
            return now
        if before := re.fullmatch(r"-([0-9]+)([smhdw])", value):
            unit = {"s": 1, "m": 60, "h": 3600, "d": 86400, "w": 604800}[before[2]]
            return max(_BEGIN, now - int(before[1]) * unit * 1000)
        value = datetime.datetime.fromisoformat(value)
    if isinstance(value, numpy.datetime64):
        year = int(value.astype("datetime64[Y]").astype(int)) + 1970
        if numpy.isnat(value):
            raise ValueError(value)
        return _limited(year) or -int((numpy.datetime64(0, "ms") - value) // numpy.timedelta64(1, "ms"))
    if hasattr(value, "to_pydatetime"):  # of pandas; NaT differs from itself
        value = value.to_pydatetime(warn=False) if value == value else None
    if isinstance(value, datetime.date) and not isinstance(value, datetime.datetime):
        value = datetime.datetime(value.year, value.month, value.day)
    if not isinstance(value, datetime.datetime):
        raise TypeError(value)
    return _limited(value.year) or -((_EPOCH - value.astimezone()) // datetime.timedelta(milliseconds=1))


def _limited(year):
    return _BEGIN if year < 1901 else _END if year > 2100 else None


# Files ---------------------------------------------------------------------------------------------------------------

class _File:
    """A regular file that is read at any place. It may be cut by another process meanwhile."""

    def __init__(self, path):
        self.path = path
        self.file = os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC)
        self.update()
        if not stat.S_ISREG(self.status.st_mode):
            os.close(self.file)
            raise LogError(path, "is not a regular file")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.file)

    def update(self):
        self.status = os.fstat(self.file)
        self.size = self.status.st_size
        return self.size

    def is_hole(self):
        """Whether it is a large file that occupies little of the disk."""
        return self.size >= _EXCESS and self.status.st_blocks * 512 < self.size // 16

    def read(self, place, count):
        data = memoryview(bytearray(count)) if count < _HEAD_SIZE else memoryview(numpy.empty(count, "u1"))
        done = 0
        while done < count:
            part = os.preadv(self.file, [data[done:]], place + done)
            if part == 0:
                raise LogError(self.path, "was cut while it was read")
            done += part
        return data


class _Memory:
    """The bytes of a file that were read."""

    def __init__(self, path, data):
        self.path, self.data, self.size = path, memoryview(data), len(data)

    def read(self, place, count):
        return self.data[place:place + count]


class _Cut(Exception):
    """A field extends beyond the end."""


class _Cursor:
    """A place in a source whose bytes are not trusted. An operation that raises _Cut may have moved it."""

    def __init__(self, source, place=0):
        self.source, self.place = source, place
        self.window, self.begin = b"", place

    def take(self, count):
        if count > self.source.size - self.place:
            raise _Cut
        at = self.place - self.begin
        if at < 0 or at + count > len(self.window):
            size = max(count, _HEAD_SIZE if self.place == 0 else _WINDOW)
            self.window = self.source.read(self.place, min(size, self.source.size - self.place))
            self.begin, at = self.place, 0
        self.place += count
        return self.window[at:at + count]

    def skip(self, count):
        if count > self.source.size - self.place:
            raise _Cut
        self.place += count

    def number(self, form):
        return struct.unpack(form, self.take(struct.calcsize(form)))[0]

    def count(self):
        low = self.number("<H")
        return low if low != _LONG else self.number("<I")

    def text(self):
        size = self.number("<B")
        size = size if size != 0xFF else self.count()
        if _EXCESS <= size <= self.source.size - self.place:
            raise LogError(self.source.path, "has a text of %d bytes (from byte %d on)" % (size, self.place))
        return bytes(self.take(size))

    def record(self):
        count = self.count()
        self.skip(4 * count)
        return count

    def times(self, count, present):
        """The first count ones of the time records that are present."""
        self.skip(_TIME.itemsize * present)
        self.place -= _TIME.itemsize * present
        times = numpy.frombuffer(self.take(_TIME.itemsize * count), _TIME)
        self.skip(_TIME.itemsize * (present - count))
        return times

    def field(self, what, get):
        begin = self.place
        try:
            return get()
        except _Cut:
            raise LogError(self.source.path, "ends at byte %d inside %s (from byte %d on)"
                           % (self.source.size, what, begin)) from None


# Binary logs ---------------------------------------------------------------------------------------------------------

@dataclasses.dataclass(frozen=True)
class _Run:
    """Records of the same size that follow each other."""
    first: int  # the number of its first sample, from 0
    place: int  # of its first record, which begins with a count
    count: int  # floats of a record
    gap: int = 0  # bytes between two records

    @property
    def head(self):
        return struct.pack("<H", self.count) if self.count < _LONG else struct.pack("<HI", _LONG, self.count)

    @property
    def size(self):
        return len(self.head) + 4 * self.count

    @property
    def stride(self):
        return self.size + self.gap


@dataclasses.dataclass
class _Layout:
    names: tuple
    samples: int = 0
    runs: list = dataclasses.field(default_factory=list)
    times: numpy.ndarray = dataclasses.field(default_factory=lambda: numpy.empty(0, _TIME))
    guessed: bool = False  # the counts of the records were not looked at


class _Uneven(Exception):
    """The records of a log are not as their total size suggests."""


class _Names:
    """The names of the log that was read last: logs of a folder mostly have the same ones."""

    def __init__(self):
        self.bytes, self.count, self.names = b"", 0, ()

    def read(self, cursor):
        count = cursor.field("the number of names", cursor.count)
        if count > _MOST_NAMES:
            raise LogError(cursor.source.path, "has too many names")
        begin, size = cursor.place, len(self.bytes)
        if count == self.count and size <= cursor.source.size - begin and cursor.take(size) == self.bytes:
            return self.names
        cursor.place = begin
        names = tuple(_text_of(cursor.field("name %d" % (i + 1), cursor.text)) for i in range(count))
        self.bytes, self.count, self.names = bytes(cursor.source.read(begin, cursor.place - begin)), count, names
        return names


def _text_of(name):
    return name.decode("utf-8", "surrogateescape")


def _read_layout(file, names, guesses):
    """Where the parts of a log are, with its times. guesses: records of one size are recognised by their total size."""
    cursor = _Cursor(file)
    if file.size >= 4 and cursor.number("<I") != _MAGIC:
        raise LogError(file.path, "is not a log: its first bytes are those of another format")
    cursor.place = 0
    cursor.field("the start", lambda: cursor.take(20))
    cursor.field("the reserved text", cursor.text)
    layout = _Layout(names.read(cursor))
    layout.samples = cursor.field("the number of samples", lambda: cursor.number("<I"))
    if guesses and _guess(file, cursor, layout):
        return layout
    if file.is_hole() and layout.samples > _MOST_RUNS:
        raise LogError(file.path, "has %d bytes, of which most are a hole in the file" % file.size)
    _walk(cursor, layout)
    begin = cursor.place
    times = cursor.field("the number of times", cursor.count)
    if times < layout.samples:
        raise LogError(file.path, "has only %d times for its %d samples (byte %d)" % (times, layout.samples, begin))
    layout.times = cursor.field("the times", lambda: cursor.times(layout.samples, times))
    cursor.field("the trailer", lambda: cursor.skip(4))
    if file.size - cursor.place >= _EXCESS:
        raise LogError(file.path, "has %d bytes, of which its counts need %d" % (file.size, cursor.place))
    return layout


def _guess(file, cursor, layout):
    """Whether the log ends where it must end if all records are as long as the first one."""
    begin = cursor.place
    try:
        run = _Run(0, begin, cursor.count() if layout.samples else len(layout.names))
        cursor.place = begin
        cursor.skip(layout.samples * run.stride)
        if cursor.count() == layout.samples and file.size - cursor.place == _TIME.itemsize * layout.samples + 4:
            layout.times = cursor.times(layout.samples, layout.samples)
            layout.runs, layout.guessed = [run] if layout.samples else [], True
            return True
    except _Cut:
        pass
    cursor.place = begin
    return False


def _walk(cursor, layout):
    """Finds the records one by one, equal ones that follow each other together."""
    index, runs = 0, layout.runs
    while index < layout.samples:
        begin = cursor.place
        count = cursor.field("the values of sample %d" % (index + 1), cursor.record)
        index += 1
        if runs and runs[-1].count == count:
            index += _skip_equal(cursor, runs[-1], layout.samples - index)
        elif len(runs) == _MOST_RUNS:
            raise LogError(cursor.source.path, "has more than %d changes of the number of values" % _MOST_RUNS)
        else:
            runs.append(_Run(index - 1, begin, count))


def _skip_equal(cursor, run, most):
    """Skips records of the run that are in the cursor's window as a whole."""
    at = cursor.place - cursor.begin
    most = min(most, (len(cursor.window) - at) // run.stride)
    if most <= 0 or run.count >= _LONG:
        return 0
    counts = numpy.ndarray(most, "<u2", cursor.window, at, run.stride)
    other = numpy.flatnonzero(counts != run.count)
    equal = int(other[0]) if len(other) else most
    cursor.place += equal * run.stride
    return equal


def _read_values(source, layout, picks, begin, end, look=None):
    """The values at the places picks of the samples from begin to end, and whether they are there: None if all are.
    look is called with the records of each piece, their run, the number of the first one and how many they are."""
    values = numpy.empty((end - begin, len(picks)), "<f4")
    present = None
    runs = layout.runs
    at = bisect.bisect_right([run.first for run in runs], begin) - 1 if begin < end else len(runs)
    for run, after in zip(runs[at:], [*runs[at + 1:], None]):
        first, last = max(begin, run.first), min(end, after.first if after else layout.samples)
        if first >= last:
            break
        has = numpy.array([place < run.count for place in picks], bool)
        if not has.all():
            present = numpy.ones(values.shape, bool) if present is None else present
            present[first - begin:last - begin, ~has] = False
            values[first - begin:last - begin, ~has] = numpy.nan
        here = [place for place in picks if place < run.count]
        rows = max(1, _PIECE // run.stride)
        for i in range(first, last, rows):
            n = min(rows, last - i)
            data = source.read(run.place + (i - run.first) * run.stride, n * run.stride)
            heads = numpy.ndarray((n, len(run.head)), "u1", data, 0, (run.stride, 1))
            if layout.guessed and (heads != numpy.frombuffer(run.head, "u1")).any():
                raise _Uneven
            _copy(data, run, here, has, values[i - begin:i - begin + n])
            if look:
                look(data, run, i, n)
    return values, present


def _copy(data, run, here, has, values):
    """Copies the values at the places here of the records in data to the columns of values that has is true for."""
    if not here:
        return
    if has.all() and here == list(range(here[0], here[0] + len(here))):  # as one block of bytes for each record
        block = "V%d" % (4 * len(here))
        values.view(block)[:, 0] = numpy.ndarray(len(values), block, data, len(run.head) + 4 * here[0], run.stride)
        return
    values[:, has] = numpy.ndarray((len(values), run.count), "<f4", data, len(run.head), (run.stride, 4))[:, here]


# Journals ------------------------------------------------------------------------------------------------------------

def _crc_table():
    table = list(range(256))
    for _ in range(8):
        table = [crc >> 1 ^ (0x82F63B78 if crc & 1 else 0) for crc in table]
    return table


_CRC = _crc_table()
_CRC_ARRAY = numpy.array(_CRC, "u4")


def _crc32c(steps, crc, table):
    """The checksum after steps: the bytes of a record, or arrays with a byte of each record."""
    for byte in steps:
        crc = table[(crc ^ byte) & 0xFF] ^ crc >> 8
    return crc


def _are_whole(data, places, length):
    """Whether the records at places, with payloads of this length, have the checksums that they name."""
    size = 9 + length
    if len(places) < 8:
        return [_crc32c(data[at:at + 4] + data[at + 8:at + size], 0xFFFFFFFF, _CRC) ^ 0xFFFFFFFF ==
                int.from_bytes(data[at + 4:at + 8], "little") for at in places]
    whole = []
    each = max(1, _PIECE // size)
    view = numpy.frombuffer(data, "u1")
    for i in range(0, len(places), each):
        records = view[numpy.array(places[i:i + each])[:, None] + numpy.arange(size)]
        steps = numpy.ascontiguousarray(records.T)
        crc = _crc32c([*steps[:4], *steps[8:]], numpy.full(len(records), 0xFFFFFFFF, "u4"), _CRC_ARRAY)
        whole += (~crc == numpy.ascontiguousarray(records[:, 4:8]).view("<u4")[:, 0]).tolist()
    return whole


def _read_log_note(cursor):
    """The name of a log, the record of its first time and the number of its samples."""
    return cursor.text(), bytes(cursor.take(_TIME.itemsize)), cursor.number("<Q")


class _Journal:
    """The samples of a journal, which is read once and then followed to its end."""

    def __init__(self, path):
        self.path, self.fault, self.torn = path, "", False
        self.data, self.size = b"", 0
        self.layout, self.named = _Layout(()), None
        self.continues, self.extension, self.binary = None, b"", True
        self.file = None
        try:
            self.file = _File(path)
            self.follow()
        except (OSError, LogError) as error:
            self.fault = _reason(error)
            self.torn = isinstance(error, FileNotFoundError)  # its log is on the disk now

    def close(self):
        if self.file:
            self.file.__exit__()
        self.file = None

    def follow(self):
        """Reads the file, if it could be opened; again only if it has grown or was cut."""
        try:
            if self.file and (self.file.update() != self.size or not self.size):
                self.size, self.fault, self.torn, self.named = self.file.size, "", False, None
                # After a power cut, bytes that were never written can follow: a hole, which has no record.
                end = os.lseek(self.file.file, 0, os.SEEK_HOLE) if self.file.is_hole() else self.size
                self.data = bytes(self.file.read(0, end))
                self._parse()
        except (OSError, LogError) as error:
            self.fault, self.layout = _reason(error), _Layout(())

    def _parse(self):
        data = self.data
        if len(data) < 8 or data[:8] == bytes(8):
            return self._fail_torn()
        magic, version = struct.unpack("<II", data[:8])
        if magic != _JOURNAL_MAGIC:
            raise LogError(self.path, "is not a journal: its first bytes are those of another format")
        if version != _JOURNAL_VERSION:
            raise LogError(self.path, "is a journal of the unknown version %d" % version)
        records = self._find_records()
        if not records:
            return self._fail_torn()
        at, length = records[0]
        if not _are_whole(data, [at], length)[0] or data[at + 8] != 1 or not self._read_head(at + 9, length):
            if not data[at + 9 + length:].strip(b"\0"):
                return self._fail_torn()
            raise LogError(self.path, "has a damaged head (from byte 8 on)")
        self._read_records(records[1:])

    def _fail_torn(self):
        self.torn = True
        raise LogError(self.path, "ends inside its head (it has %d bytes)" % self.size)

    def _find_records(self):
        """Place and length of the payload of each record that the file has all bytes of."""
        records, at = [], 8
        while at + 9 <= len(self.data):
            length = int.from_bytes(self.data[at:at + 4], "little")
            is_zero = records and self.data[at + 8] == 0  # not a type
            if length > _LONGEST_RECORD or at + 9 + length > len(self.data) or is_zero:
                break
            records.append((at, length))
            at += 9 + length
        return records

    def _payload(self, at, length, get):
        """What get reads of a payload; None if the payload has another form."""
        cursor = _Cursor(_Memory(self.path, self.data[at:at + length]))
        try:
            result = get(cursor)
        except _Cut:
            return None
        return result if cursor.place == length else None

    def _read_head(self, at, length):
        def get(cursor):
            cursor.skip(1)
            for _ in range(4):  # name, directory, prefix, variable
                cursor.text()
            cursor.skip(1)
            extension, binary = cursor.text(), cursor.number("<B") != 0
            cursor.skip(1 + 2 * 4 + 3 * 8)
            names = [cursor.text() for _ in range(min(cursor.count(), cursor.source.size))]
            continues = _read_log_note(cursor) if cursor.number("<B") else None
            return extension, binary, names, continues
        head = self._payload(at, length, get)
        if head:
            self.extension, self.binary, names, self.continues = head
            self.layout = _Layout(tuple(map(_text_of, names)))
        return head is not None

    def _read_records(self, records):
        """Takes the records before the first one that is not whole."""
        good = numpy.zeros(len(records), bool)
        same = {}
        for i, (at, length) in enumerate(records):
            same.setdefault(length, []).append(i)
        for length, numbers in same.items():
            good[numbers] = _are_whole(self.data, [records[i][0] for i in numbers], length)
        samples, runs, after = [], [], 0
        for at, length in records[:int(good.argmin()) if not good.all() else None]:
            if self.data[at + 8] == 3:
                named = self._payload(at + 9, length, _read_log_note)
                if not named:
                    break
                self.named = named
                continue
            count = self._payload(at + 9, length, lambda cursor: (cursor.skip(_TIME.itemsize), cursor.record())[1])
            if self.data[at + 8] != 2 or count is None:
                break
            place = at + 9 + _TIME.itemsize
            if place != after or runs[-1].count != count:
                runs.append(_Run(len(samples), place, count, 9 + _TIME.itemsize))
            after = place + runs[-1].stride
            samples.append(self.data[at + 9:place])
        self.layout.samples, self.layout.runs = len(samples), runs
        self.layout.times = numpy.frombuffer(b"".join(samples), _TIME)

    def saved(self, logs):
        """How many of the first samples the log has that the journal names. logs: names, samples and first time of
        the logs, by their paths."""
        note = self.named or self.continues
        if not note:
            return 0
        goes_on = self.continues and (note[0] == self.continues[0] and (
            note[1] == self.continues[1] or not self.binary))
        before = self.continues[2] if goes_on else 0
        names, samples, first = logs.get(os.path.dirname(_key(self.path)) + b"/" + note[0] + self.extension, (None, 0, b""))
        if names != self.layout.names or first != note[1] or samples < before:
            return 0
        return min(samples - before, self.layout.samples)


# Folders -------------------------------------------------------------------------------------------------------------

@dataclasses.dataclass
class _Entry:
    log: Log
    part: object = None  # the rows that were read of it


def _key(path):
    """Identifies a file: the path with its folder without links."""
    folder, name = os.path.split(os.fsencode(path))
    return os.path.realpath(folder) + b"/" + name


def _reason(error):
    return getattr(error, "fault", None) or error.strerror or str(error)


def _milliseconds(times):
    return times["time"].astype("i8") * 1000 + times["millitm"]


def _log_of(path, size, layout, skip=0):
    moments = _milliseconds(layout.times[skip:])
    if not len(moments):
        return Log(path, "", size, layout.names)
    return Log(path, "", size, layout.names, len(moments), numpy.datetime64(int(moments.min()), "ms"),
               numpy.datetime64(int(moments.max()), "ms"))


class _Scan:
    """Finds the logs of paths and visits each one while its file is open."""

    def __init__(self, visit):
        self.visit = visit
        self.entries, self.seen = [], set()
        self.names = _Names()
        self.saved = {}  # for _Journal.saved

    def add_file(self, path, key, named=False):
        """named: the user has named the file, which must exist then."""
        if key in self.seen:
            return
        self.seen.add(key)
        size = 0
        try:
            size = os.stat(path).st_size
            self._read(path, key)
        except FileNotFoundError as error:  # removed since the folder was listed
            if named:
                self.entries.append(_Entry(Log(path, error.strerror)))
        except (OSError, LogError) as error:
            self.entries.append(_Entry(Log(path, _reason(error), size)))

    def _read(self, path, key):
        with _File(path) as file:
            for guesses in (True, False):
                layout = _read_layout(file, self.names, guesses)
                try:
                    part = self.visit(file, layout, 0)
                    break
                except _Uneven:
                    pass
            self.entries.append(_Entry(_log_of(path, file.size, layout), part))
            if layout.samples:
                self.saved[key] = layout.names, layout.samples, layout.times[:1].tobytes()

    def add_journals(self, journals, named=False):
        """Adds what the logs do not have. Of several journals of a log one has all samples."""
        best = {}
        for (key, number), journal in journals:
            if _key(journal.path) in self.seen:
                continue
            self.seen.add(_key(journal.path))
            log = (journal.path if journal.fault else key, number // _JOURNALS_OF_A_LOG)
            if log not in best or best[log].layout.samples <= journal.layout.samples:
                best[log] = journal
        for journal in best.values():
            skip = journal.saved(self.saved)
            if journal.fault and (named or not journal.torn):
                self.entries.append(_Entry(Log(journal.path, journal.fault, journal.size)))
            elif named or skip < journal.layout.samples:
                part = self.visit(_Memory(journal.path, journal.data), journal.layout, skip)
                self.entries.append(_Entry(_log_of(journal.path, journal.size, journal.layout, skip), part))

    def add_folders(self, path, recursive):
        """path and, if asked for, its subfolders, by name."""
        left = [path]
        while left:
            folder = left.pop()
            real = os.path.realpath(folder)
            if real not in self.seen:
                self.seen.add(real)
                below = self._add_folder(folder)
                left += reversed(below if recursive else [])

    def _add_folder(self, path):
        """The journals first, then the logs, then the ends of the journals: a log that was saved meanwhile has its
        name in the journal, which is open and therefore readable after its removal. Returns the subfolders."""
        journals = []
        try:
            names = [entry.name for entry in os.scandir(path)]
            found = sorted((match[1], int(match[2]), match[0]) for match in map(_JOURNAL.fullmatch, names) if match)
            journals = [((key, number), _Journal(os.path.join(path, name))) for key, number, name in found
                        if number < 1 << 64]
            folders = self._add_logs(path)
            for _, journal in journals:
                journal.follow()
        except OSError as error:
            self.entries.append(_Entry(Log(path, error.strerror)))
            return []
        finally:
            for _, journal in journals:
                journal.close()
        self.add_journals(journals)
        return folders

    def _add_logs(self, path):
        """Returns the subfolders."""
        entries = sorted(os.scandir(path), key=lambda entry: os.fsencode(entry.name))
        folder = _key(os.path.join(path, ""))
        for entry in entries:
            if entry.name.lower().endswith((".rph", ".rpd")) and not entry.is_dir():
                self.add_file(entry.path, folder + os.fsencode(entry.name))
        return [entry.path for entry in entries if entry.is_dir(follow_symlinks=False)]


def _scan(paths, recursive, visit):
    """The logs of paths, in order, each with the result of visit for its source, its layout and the number of samples
    at its beginning that do not count."""
    scan = _Scan(visit)
    named = []  # journals, which are compared with the logs when all of those are known
    for path in paths:
        if os.path.isdir(path):
            scan.add_folders(path, recursive)
        elif _is_journal(path):
            named.append((len(scan.entries), path))
        else:
            scan.add_file(path, _key(path), True)
    entries, scan.entries = scan.entries, []
    for at, path in reversed(named):
        journal = _Journal(path)
        journal.close()
        scan.add_journals([((path, 0), journal)], True)
        entries[at:at] = scan.entries
        scan.entries = []
    return entries


def _is_journal(path):
    try:
        with _File(path) as file:
            return file.size >= 4 and file.read(0, 4) == struct.pack("<I", _JOURNAL_MAGIC)
    except (OSError, LogError):
        return _JOURNAL.fullmatch(os.path.basename(path)) is not None


# Rows ----------------------------------------------------------------------------------------------------------------

@dataclasses.dataclass
class _Part:
    """The rows of one log that are in the range."""
    time: numpy.ndarray  # milliseconds
    names: list  # of the columns of values
    values: numpy.ndarray
    present: numpy.ndarray  # None: all values are present
    digests: list  # of time record and values, for unique


def _read_part(source, layout, skip, begin, stop, wanted, unique):
    """The rows from begin to stop, of the samples from skip on; None without any."""
    places = {}
    for place, name in enumerate(layout.names):
        places.setdefault(name, place)
    names = [name for name in (places if wanted is None else wanted) if name in places]
    moments = _milliseconds(layout.times[skip:])
    if (moments[1:] >= moments[:-1]).all():
        first, last = numpy.searchsorted(moments, [begin, stop])
        chosen = slice(None)
    else:
        inside = numpy.flatnonzero((moments >= begin) & (moments < stop))
        first, last = (inside[0], inside[-1] + 1) if len(inside) else (0, 0)
        chosen = inside - first
    first, last = int(first), int(last)
    if first >= last or (wanted is not None and not names):
        return None
    digests = []

    def look(data, run, index, rows):
        head, step, size = layout.times[index:index + rows].tobytes(), run.stride, run.size
        for i in range(rows):
            row = head[12 * i:12 * i + 12] + data[step * i:step * i + size]
            digests.append(hashlib.blake2b(row, digest_size=16).digest())

    values, present = _read_values(source, layout, [places[name] for name in names], first + skip, last + skip,
                                   look if unique else None)
    return _Part(moments[first:last][chosen], names, values[chosen], None if present is None else present[chosen],
                 [digests[i] for i in chosen] if unique and not isinstance(chosen, slice) else digests)


def _merge(entries, wanted, unique):
    sources = [(i, entry.part) for i, entry in enumerate(entries) if entry.part]
    names = wanted or list(dict.fromkeys(name for _, part in sources for name in part.names) or
                           dict.fromkeys(name for entry in entries for name in entry.log.names))
    moments = numpy.concatenate([part.time for _, part in sources] or [numpy.empty(0, "i8")])
    source = numpy.repeat(numpy.array([i for i, _ in sources], "i4"),
                          numpy.array([len(part.time) for _, part in sources], "i8"))
    order = None  # as the rows are
    if (moments[1:] < moments[:-1]).any():
        order = numpy.argsort(moments, kind="stable")
    if unique:
        order = _without_repeats(entries, sources, moments, source, numpy.arange(len(moments)) if order is None else order)
    total = len(moments) if order is None else len(order)
    place = None
    if order is not None:
        place = numpy.full(len(moments), -1)
        place[order] = numpy.arange(total)
        moments, source = moments[order], source[order]
    values = numpy.empty((total, len(names)), "f4")
    full = all(part.names == names and part.present is None for _, part in sources)
    present = numpy.broadcast_to(numpy.True_, values.shape) if full else numpy.zeros(values.shape, bool)
    if not full:
        values.fill(numpy.nan)
    _fill(values, None if full else present, names, sources, place)
    return Rows(names, moments.view("datetime64[ms]"), values, present, source, [entry.log for entry in entries])


def _fill(values, present, names, sources, place):
    """Puts the values of each part into their rows and columns, and lets go of the part."""
    begin = 0
    while sources:
        _, part = sources.pop(0)
        n = len(part.time)
        rows, kept = slice(begin, begin + n), slice(None)
        if place is not None:
            kept = place[rows] >= 0
            rows = place[rows][kept]
        if part.names == names:
            values[rows] = part.values[kept]
            if present is not None:
                present[rows] = True if part.present is None else part.present[kept]
        else:
            for i, name in enumerate(part.names):
                column = names.index(name)
                values[rows, column] = part.values[kept, i]
                present[rows, column] = True if part.present is None else part.present[kept, i]
        begin += n
        part.values = part.present = None


def _without_repeats(entries, sources, moments, source, order):
    """order without the rows that an earlier log has as well. Each row stays as often as in the log that has it most
    often."""
    ids, digests = {}, [digest for _, part in sources for digest in part.digests]
    sets = [ids.setdefault(entry.log.names, len(ids)) for entry in entries]
    times, logs = moments[order], source[order]
    equal = times[1:] == times[:-1]
    near = numpy.zeros(len(order) + 1, bool)  # rows that another row of the same time is beside
    near[1:-1] = equal
    near = near[1:] | near[:-1]
    keep = numpy.ones(len(order), bool)
    kept, here, before = {}, {}, None
    for i in numpy.flatnonzero(near).tolist():
        if times[i] != before:
            before, kept, here = times[i], {}, {}
        row = sets[logs[i]], digests[order[i]]
        count = here[logs[i], row] = here.get((logs[i], row), 0) + 1
        keep[i] = count > kept.get(row, 0)
        kept[row] = max(count, kept.get(row, 0))
    return order[keep]
