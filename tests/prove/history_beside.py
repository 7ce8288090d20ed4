"""The claims on `vastra convert` while the folder changes: by a writer of logs that the test knows, and by a logger."""
import os
import random
import struct
import threading
import time

from device import Device
from history import DIGEST, convert, table_of, unix
from history_logs import Log, bytes_of, row_of
from logger import FORMS, Logger, shim
from logs import Failed

BASE, EACH = 1_750_000_000_000, 7  # the moment of row 0, and milliseconds between two rows
STEP = 700
PAUSE = 0.1  # seconds; an export has more bytes than the buffers of the command and of a pipe


def log_of(rows, number):
    names = (b"Id", b"X") if number % 2 else (b"X", b"Id")
    values = [struct.pack("<2f", row, 1) if number % 2 else struct.pack("<2f", 1, row) for row in rows]
    return bytes_of(Log(names, [row_of(BASE + EACH * row, value) for row, value in zip(rows, values)]))


class Writer(threading.Thread):
    """Adds, extends and removes logs and digests until it is stopped. Each row has a number of its own. there: when the
    rows of each log were complete; gone: when their removal began."""

    def __init__(self, folder, chance):
        super().__init__(daemon=True)
        self.folder, self.chance, self.stopped, self.fault = folder, chance, threading.Event(), None
        self.free, self.next, self.logs, self.number = [], 1, {}, 0
        self.there, self.gone = {}, {}
        os.makedirs(folder)
        for _ in range(200):
            self.add()
        self.staying = set(self.logs)

    def take(self, count):
        """Rows that no log has, mixed with those of the next logs."""
        while len(self.free) < 3 * count:
            self.free.append(self.next)
            self.next += 1
        rows = self.chance.sample(self.free, count)
        self.free = [row for row in self.free if row not in set(rows)]
        return sorted(rows)

    def replace(self, name, rows, number):
        with open(os.path.join(self.folder, name + ".part"), "wb") as file:
            file.write(log_of(rows, number))
        os.replace(file.name, file.name[:-5])

    def done(self, name, rows, number):
        moment = time.monotonic()
        self.logs[name] = rows, number
        self.there.update((row, moment) for row in rows if row not in self.there)

    def add(self):
        self.number += 1
        name, rows = "%d.rph" % self.number, self.take(self.chance.choice((1, 5, 30, 300)))
        self.replace(name, rows, self.number)
        self.done(name, rows, self.number)

    def add_slowly(self):
        """In place, so that a reader can find a part of the log."""
        self.number += 1
        name, rows = "%d.rph" % self.number, self.take(50)
        data = log_of(rows, self.number)
        with open(os.path.join(self.folder, name), "wb", 0) as file:
            for at in range(0, len(data), 97):
                file.write(data[at:at + 97])
                time.sleep(0.002)
        self.done(name, rows, self.number)

    def extend(self):
        name = self.chance.choice(sorted(self.logs))
        rows, number = self.logs[name]
        rows = rows + self.take(self.chance.choice((1, 20)))
        self.replace(name, rows, number)
        self.done(name, rows, number)

    def remove(self):
        """A log, or the end of one in place."""
        names = sorted(set(self.logs) - self.staying)
        if len(names) > 30:
            name = self.chance.choice(names)
            rows, _ = self.logs.pop(name)
            moment, path = time.monotonic(), os.path.join(self.folder, name)
            self.gone.update((row, moment) for row in rows)
            if self.chance.random() < 0.7:
                os.unlink(path)
            else:
                os.truncate(path, self.chance.randrange(os.path.getsize(path)))

    def remove_digest(self):
        path = os.path.join(self.folder, DIGEST)
        if os.path.exists(path) and self.chance.random() < 0.1:
            os.unlink(path)

    def run(self):
        try:
            while not self.stopped.is_set():
                self.chance.choice((self.add, self.add, self.extend, self.extend, self.remove, self.remove, self.add_slowly,
                                    self.remove_digest))()
                time.sleep(self.chance.choice((0, 0.001, 0.01)))
        except Exception as fault:
            self.fault = fault

    def rows(self, begin, end):
        """Those that an export from begin to end has to have, and those that it may have."""
        there, gone = dict(self.there), dict(self.gone)
        return ({row for row, moment in there.items() if moment < begin and gone.get(row, end + 1) > end},
                {row for row in there if gone.get(row, begin) >= begin})


def export(run, writer, *options):
    """The rows of the export, those that it has to have and those that it may have. While nobody reads its output, logs that
    it has listed are changed before it reads them."""
    begin = time.monotonic()
    out, errors = convert(run, writer.folder, "--format", "jsonl", "--time", "unix", "--vars", "Id,X", *options,
                     pause=PAUSE)
    end = time.monotonic()
    time.sleep(0.05)  # the writer notes a log after it is there
    return table_of(out, "jsonl")[1], *writer.rows(begin, end), errors


def check_rows(run, writer, *options):
    found, needed, possible, errors = export(run, writer, *options)
    rows = [int(float(texts[1])) for texts in found]
    if any(after <= row for row, after in zip(rows, rows[1:])):
        raise Failed("rows twice or not in order: %s" % rows)
    for row, texts in zip(rows, found):
        if texts[0] != unix(BASE + EACH * row):
            raise Failed("row %d at %s, not %s" % (row, texts[0], unix(BASE + EACH * row)))
    if not needed <= set(rows) <= possible:
        raise Failed("missing: %s, from nowhere: %s: %s" % (sorted(needed - set(rows))[:20], sorted(set(rows) - possible)[:20],
                                                            "; ".join(errors)))
    return len(rows)


def check_steps(run, writer):
    found, needed, possible, _ = export(run, writer, "--step", "0.7", "--by", "max", "--digest")
    steps = {texts[0]: int(float(texts[1])) for texts in found}
    for rows, is_wrong in ((needed, lambda found, most: found < most), (possible, lambda found, most: found > most)):
        most = {unix((BASE + EACH * row) // STEP * STEP): row for row in sorted(rows)}
        for begin in most if rows is needed else steps:
            if begin not in steps or begin not in most or is_wrong(steps[begin], most[begin]):
                raise Failed("the step at %s is %s, with rows to %s" % (begin, steps.get(begin), most.get(begin)))
    return len(found)


def changing(run):
    """Exports of rows and, with a digest that is removed again and again, of steps, two at a time."""
    chance = random.Random(run.seed)
    writer = Writer(os.path.join(run.work, "logs"), chance)
    writer.start()
    rows, faults = [], []

    def ask(number):
        try:
            for turn in range(number, run.count, 2):
                rows.append((check_steps(run, writer) if turn % 3 == 2 else check_rows(run, writer, *["--unique"] * (turn % 3))))
        except Exception as fault:
            faults.append(fault)

    asking = [threading.Thread(target=ask, args=(number,)) for number in range(2)]
    for thread in asking:
        thread.start()
    for thread in asking:
        thread.join()
    writer.stopped.set()
    writer.join()
    for fault in faults + [writer.fault] * (writer.fault is not None):
        raise fault
    check_rows(run, writer)
    check_steps(run, writer)
    return ("%d exports of up to %d rows while %d logs were added and %d rows were removed: the rows of the logs that stay are "
            "complete, in order, once" % (len(rows), max(rows), writer.number, len(writer.gone)))


def newest(run):
    """Converts the folder of a logger with small logs again and again, with stops in between. Half of the runs have slow
    syncs, so that logs and their journals are there at the same time."""
    logger, chance, oldest = Logger(run.work, Device(), period=4, samples=7), random.Random(run.seed), 0
    disks = [logger.environment, {**logger.environment, **shim(run.work, SHIM_SYNC=20)}]
    logger.start()
    logger.wait_for_rows()
    for number in range(run.count):
        form, step, name = ((FORMS[0], 1, "Row"), (FORMS[2], 5, "Last"))[number % 2]
        begin = time.monotonic()
        kept = [(row, then) for row, then in logger.device.kept_before(logger.first, begin) if row % step == 0]
        out, _ = convert(run, logger.folders[form[0]].path, "--format", "csv", "--time", "unix", *["--unique"] * (number % 3 == 0),
                         status=None)
        rows = [int(float(texts[1])) for texts in table_of(out, "csv")[1]] if out else []
        if rows != list(range(step, len(rows) * step + 1, step)):
            before, row = next(pair for pair in zip([0] + rows, rows) if pair[0] + step != pair[1])
            raise Failed("%s: row %d follows row %d" % (form[0], row, before))
        last = rows[-1] if rows else 0
        oldest = max([oldest] + [begin - then for row, then in kept if row > last])
        if oldest > (run.slack if run.slack < 0.2 else 5):  # the short form tests no times
            raise Failed("%s: a row is not seen %d ms after it was kept; the last is row %d" % (form[0], 1000 * oldest, last))
        time.sleep(chance.uniform(0, 0.03))
        if number % 20 == 19:
            logger.stop()
            logger.environment = disks[number // 20 % 2 == 0]
            logger.start()
            logger.wait_for_rows()
    logger.stop()
    return "%d exports of %d logs: no hole, no row twice, none older than %d ms missing" % (
        run.count, len(logger.folders["binary"].names(".rph")), 1000 * oldest + 1)
