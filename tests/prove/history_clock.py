"""The claims on local time, against the zones of Python, and on a year of rows."""
import bisect
import csv
import datetime
import math
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zoneinfo
from array import array

from history import convert, table_of
from history_logs import Log, bytes_of, parts_of, row_of
from logs import Failed, NotRun

UTC = datetime.timezone.utc
ZONES = ("Europe/Berlin", "Europe/Dublin", "America/St_Johns", "America/Havana", "America/Santiago", "Australia/Lord_Howe",
         "Pacific/Chatham", "Africa/Casablanca", "Antarctica/Troll", "Pacific/Apia")
BEGIN, END, WEEK = -2**31 + 86400, 2**31 - 86400, 7 * 86400
AROUND = (-7200, -3600, -1800, -1, 0, 1, 1799, 1800, 3600, 7200)  # seconds from a change


def at(zone, seconds):
    return datetime.datetime.fromtimestamp(seconds, zone)


def changes_of(zone):
    """The seconds at which the clock of the zone is changed."""
    changes, offset = [], at(zone, BEGIN).utcoffset()
    for week in range(BEGIN, END - WEEK, WEEK):
        if (later := at(zone, week + WEEK).utcoffset()) != offset:
            seconds = range(week, week + WEEK + 1)
            changes.append(seconds[bisect.bisect_left(seconds, True, key=lambda s: at(zone, s).utcoffset() != offset)])
            offset = later
    return changes


def shown(when, form):
    """A time as --time writes it. An offset has whole minutes, and the clock shows the same ones."""
    if form == "local":
        return when.strftime("%Y-%m-%d %H:%M:%S.") + "%03d" % (when.microsecond // 1000)
    minutes = int(when.utcoffset().total_seconds() / 60)  # towards zero
    return when.astimezone(datetime.timezone(datetime.timedelta(minutes=minutes))).isoformat(timespec="milliseconds")


def zones(run):
    """Times at all changes since 1901 as they are written, and some of them as they are typed."""
    chance, rows = random.Random(run.seed), 0
    path = os.path.join(run.work, "log.rph")
    try:
        known = [zoneinfo.ZoneInfo(name) for name in ZONES]
    except zoneinfo.ZoneInfoNotFoundError as fault:
        raise NotRun("not run: %s" % fault) from None
    for zone in known:
        changes = changes_of(zone)
        moments = sorted({1000 * (change + more) + 5 * (i % 3) for change in changes for i, more in enumerate(AROUND)})
        with open(path, "wb") as file:
            file.write(bytes_of(Log((b"x",), [row_of(moment, bytes(4)) for moment in moments])))
        when = [datetime.datetime(1970, 1, 1, tzinfo=UTC) + datetime.timedelta(milliseconds=moment) for moment in moments]
        when = [moment.astimezone(zone) for moment in when]
        for form in ("local", "iso"):
            compare(zone, table(run, path, zone, "--time", form), [shown(moment, form) for moment in when], form)
        for _ in range(max(1, run.count // len(ZONES))):
            change = chance.choice(changes)
            local = at(zone, change - 1).replace(tzinfo=None) + datetime.timedelta(
                seconds=chance.choice((0, 1, 1, 1800, 3600, chance.randint(-7200, 7200))))
            check_typed(run, path, zone, moments, local, chance)
        rows += len(moments)
    return "%d times at all changes of %d zones since 1901 and %d typed ones, all as in Python" % (rows, len(ZONES), 2 * max(
        len(ZONES), run.count))


def table(run, path, zone, *options):
    out, _ = convert(run, path, "--format", "csv", *options, zone=zone.key)
    return [texts[0] for texts in table_of(out, "csv")[1]]


def compare(zone, found, expected, text):
    for i, (one, other) in enumerate(zip(found, expected)):
        if one != other:
            raise Failed("%s: %s: row %d is %s, not %s" % (zone.key, text, i, one, other))
    if len(found) != len(expected):
        raise Failed("%s: %s: %d rows, not %d" % (zone.key, text, len(found), len(expected)))


def check_typed(run, path, zone, moments, local, chance):
    """A time that the clock shows twice is the first one, and one that it leaves out is as before the change."""
    begin = local.replace(tzinfo=zone, fold=0).timestamp()
    text = local.isoformat(chance.choice(("T", " ")))
    left = [moment for moment in moments if moment >= 1000 * begin]
    form = ["--time", "unix"]
    found = table(run, path, zone, "--from", text, *form)
    compare(zone, found, ["%.3f" % (moment / 1000) for moment in left], "--from " + text)
    end = at(zone, math.floor(begin) + chance.choice((0, 1, 3600)))
    if end.utcoffset().seconds % 60 == 0:
        text = end.isoformat()
        found = table(run, path, zone, "--to", text, *form)
        compare(zone, found, ["%.3f" % (moment / 1000) for moment in moments if moment < 1000 * end.timestamp()], "--to " + text)


# A year

FIRST, ROWS, HALF_DAY, PERIOD = 1_704_067_200, 4000, 43200, 100_003
MEASURE = """import os, sys
process = os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ)
_, status, use = os.wait4(process, 0)
print(use.ru_maxrss, file=sys.stderr)
sys.exit(os.waitstatus_to_exitcode(status))"""
MOST_MEMORY = 96  # MB


def year(run):
    """Writes a row a second and compares the half days, first without a digest, then with a new one and with the same one."""
    chance = random.Random(run.seed)
    columns = [array("f", (chance.gauss(20, 9) for _ in range(PERIOD))), array("f", (chance.uniform(0, 1e7) for _ in range(PERIOD)))]
    folder = tempfile.mkdtemp(prefix="prove", dir="/dev/shm" if os.path.isdir("/dev/shm") else run.work)
    try:
        write_year(folder, columns, run.count * 86400)
        seen = []
        for kind, *options in (("mean",), ("mean", "--digest"), ("mean", "--digest"), ("max", "--digest")):
            begin = time.monotonic()
            rows, memory = half_days(run, folder, kind, *options)
            seen.append((time.monotonic() - begin, memory))
            compare_half_days(rows, columns, run.count, kind)
    finally:
        shutil.rmtree(folder)
    return "%d rows: %d half days as in the model, in %.1f s, with a digest in %.2f s; at most %d MB" % (
        run.count * 86400, 2 * run.count, seen[0][0], seen[2][0], max(memory for _, memory in seen))


def write_year(folder, columns, count):
    records = b"".join(struct.pack("<H2f", 2, *values) for values in zip(*columns)) * 2
    for number, begin in enumerate(range(0, count, ROWS)):
        rows = min(ROWS, count - begin)
        times, seconds = bytearray(12 * rows), array("i", range(FIRST + begin, FIRST + begin + rows)).tobytes()
        for byte in range(4):
            times[byte::12] = seconds[byte::4]
        place = begin % PERIOD * 10
        head = b"".join(part for _, part in parts_of(Log((b"Temp", b"Count"), []))[:5])
        with open(os.path.join(folder, "%05d.rph" % number), "wb") as file:
            file.write(head + struct.pack("<I", rows) + records[place:place + 10 * rows] + struct.pack("<H", rows) + times + bytes(4))


def half_days(run, folder, kind, *options):
    """The rows, and the memory of the process in MB."""
    command = [os.environ["VASTRA"], "convert", folder, "--step", "12h", "--by", kind, "--format", "csv", "--time", "unix", *options]
    ended = subprocess.run([sys.executable, "-S", "-c", MEASURE, *command], capture_output=True, text=True, cwd=run.work)
    if ended.returncode or not ended.stderr.strip().isdigit():
        raise Failed("%s: status %d: %s" % (" ".join(command), ended.returncode, ended.stderr[-500:]))
    memory = int(ended.stderr) / 1000
    if memory > MOST_MEMORY:
        raise Failed("%s: %d MB of memory" % (" ".join(command), memory))
    return list(csv.reader(ended.stdout.splitlines()))[1:], memory


def compare_half_days(rows, columns, days, kind):
    if len(rows) != 2 * days:
        raise Failed("%d half days, not %d" % (len(rows), 2 * days))
    doubled = [(column + column).tolist() for column in columns]
    for number, texts in enumerate(rows):
        begin = number * HALF_DAY % PERIOD
        for text, column in zip(texts[1:], doubled):
            values = column[begin:begin + HALF_DAY]
            value = max(values) if kind == "max" else math.fsum(values) / HALF_DAY
            found = struct.unpack("<f", struct.pack("<f", float(text)))[0] if kind == "max" else float(text)
            if texts[0] != "%d.000" % (FIRST + number * HALF_DAY) or abs(found - value) > math.ulp(value) * (kind == "mean"):
                raise Failed("%s of half day %d: %s, not %r" % (kind, number, texts, value))
