"""Claims on several processes at the same logs, and on many logs and starts."""
import json
import os
import random
import subprocess
import time

from device import Device
from kills import compare
from logger import FORMS, Logger, shim, wants
from logs import Failed, order, read_journal


def two(run):
    """A second start of one configuration: after the first one, and at the same moment."""
    chance = random.Random(run.seed)
    logger = Logger(run.work, Device())
    kept = {}
    for number in range(run.count):
        logger.start()
        if number % 2:
            logger.wait_for_rows()
        time.sleep(chance.uniform(0, 0.02))
        second = logger.run(subprocess.PIPE)
        if number % 2 == 0:  # either of them can be the first one
            end = time.monotonic() + 20
            while second.poll() is None and logger.process.poll() is None and time.monotonic() < end:
                time.sleep(0.01)
            if logger.process.poll() is not None:
                message, refused = logger.messages(), logger.process
                logger.process, second = second, None
        if second:
            second.wait(20)
            message, refused = second.stderr.read(), second
        if refused.returncode != 1 or str(logger.process.pid) not in message:
            raise Failed("the second start: status %d: %s" % (refused.returncode, message))
        logger.more_rows(5)
        kept.update(logger.kill())
    logger.start()  # the lock of a process that was killed does not count
    logger.wait_for_rows()
    logger.stop()
    return "%d second starts refused with the process of the first; %d rows kept, %s" % (
        run.count, len(kept), compare(logger, kept, run.slack))


def view(logger, form, slack):
    """The rows that a reader sees in logs and journals, and that no log had to wait for. Fails at a hole or a repeated row."""
    folder, moment = logger.folders[form[0]], time.monotonic() - slack
    expected = [row for row, _ in logger.device.kept_before(logger.first, moment) if wants(form, row)]
    journals = {}
    names = [name for name in os.listdir(folder.path) if name.endswith(".journal")]
    for name in sorted(names, key=lambda name: -int(name.split("-")[2][:-8])):  # the newest first, as rows are added
        try:
            journals[name] = read_journal(os.path.join(folder.path, name))
        except FileNotFoundError:
            pass  # its log is in the folder
    logs = folder.read(form[1])
    rows = [row for log in logs.values() for row in log]
    saved = {row: name for name, log in logs.items() for row in log}
    for name, (more, _) in journals.items():
        here = {saved[row] for row in more if row in saved}
        try:
            named = read_journal(os.path.join(folder.path, name))[1] if here else None
        except FileNotFoundError:
            named = None
            here = set()
        if here and here != {(named or "") + form[1]}:
            raise Failed("%s: %s has rows of %s, and names %s" % (folder.path, name, ", ".join(here), named))
        rows += [row for row in more if row not in saved]
    rows.sort()
    step = 5 if form[0] == "summary" else 1
    if rows != list(range(step, len(rows) * step + 1, step)):
        before, row = next(pair for pair in zip([0] + rows, rows) if pair[0] + step != pair[1])
        raise Failed("%s%s: row %d follows row %d in logs and journals" % (*form, row, before))
    if expected and rows[-1:] < expected[-1:]:
        raise Failed("%s%s: row %d is not seen %d ms after it was kept" % (*form, expected[-1], 1000 * slack))
    return rows


def command(*arguments):
    return subprocess.run([os.environ["VASTRA"], *arguments], capture_output=True, text=True)


def inspect(logger, form):
    """Reads the newest logs and the journals by the command."""
    folder = logger.folders[form[0]]
    names = sorted(name for name in os.listdir(folder.path) if name.endswith((form[1], ".journal")))
    paths = [os.path.join(folder.path, name) for name in names[:3] + names[-10:]]
    for entry in json.loads(command("inspect", "--json", *paths).stdout or "[]"):
        if "error" in entry and os.path.exists(entry["file"]):
            raise Failed("inspect: %(file)s: %(error)s" % entry)
    for path in paths[:1] + paths[-1:]:
        converted = command("convert", path)
        if converted.returncode and os.path.exists(path):
            raise Failed("convert %s: %s" % (path, converted.stderr))
        values = [int(float(line.split(",")[1])) for line in converted.stdout.splitlines()[1:]]
        step = 5 if form[0] == "summary" else 1
        if values != list(range(values[0], values[0] + step * len(values), step) if values else []):
            raise Failed("convert %s: %s" % (path, values))


def reader(run):
    """Reads logs and journals while they are written, with stops in between."""
    logger, chance = Logger(run.work, Device(), period=4), random.Random(run.seed)
    logger.start()
    logger.wait_for_rows()
    views = commands = 0
    for number in range(run.count):
        for form in FORMS[:3]:
            view(logger, form, run.slack)
            views += 1
        time.sleep(chance.uniform(0, 0.03))
        if number % 20 == 10:
            for form in FORMS[0], FORMS[2]:
                inspect(logger, form)
                commands += 3
        if number % 100 == 99:
            logger.stop()
            logger.start()
            logger.wait_for_rows()
    logger.stop()
    rows = logger.rows()
    logger.left()
    return "%d views of %d rows and %d of `inspect` and `convert`: no hole, no row twice, no short log" % (
        views, len(rows[FORMS[0]]), commands)


def check_rotation(logger, text, full=True):
    """Fails if the number of logs is wrong, a log of an output but the newest is not full, or a name is left out. Summaries
    are not continued after a stop."""
    for folder, ending in FORMS:
        logs = logger.folders[folder].read(ending)
        places = [(number[:8], int(number[8:]) + repeated - 1) for number, repeated in map(order, logs)]
        if any(place[0] == before[0] and place[1] != before[1] + 1 for before, place in zip(places, places[1:])):
            raise Failed("%s: %s%s: a name is left out: %s" % (text, folder, ending, ", ".join(logs)))
        short = [name for name, rows in list(logs.items())[:-1] if len(rows) != logger.samples]
        if short and full and ending in (".rph", "h.csv"):
            raise Failed("%s: %s%s: not full: %s of %d" % (text, folder, ending, ", ".join(short), len(logs)))
        if len(logs) > logger.logs:
            raise Failed("%s: %s%s: %d logs, not %d" % (text, folder, ending, len(logs), logger.logs))


def rotations(run):
    """Many short logs within an hour, read as fast as possible."""
    logger = Logger(run.work, Device(), period=0, samples=2, logs=20)
    for _ in range(5):
        logger.start()
        logger.wait_for_rows(run.count * 2 // 5)
        logger.stop()
        for form, rows in logger.rows().items():
            step, last = (5, logger.device.count() // 5 * 5) if form[0] == "summary" else (1, logger.device.count())
            count = min(39 if form == FORMS[0] else 20, last // step)  # texts and summaries can have logs of one row
            if rows != list(range(last - step * (len(rows) - 1), last + 1, step)) or not count <= len(rows) <= 40:
                raise Failed("%s%s: %d rows to %d, not about 40 to %d" % (*form, len(rows), rows[-1], last))
        check_rotation(logger, "after a stop")
    logger.left()
    return "%d logs of 2 rows, the newest 20 kept in each form; the last is %s" % (
        logger.device.count() // 2, logger.folders["binary"].names()[-1])


def gateway(run):
    """Many starts that end in a stop or a power cut, with a good clock and with one that is further back at each start."""
    seen = []
    for boot in (None, 1772602400):  # 2026-03-04 05:33:20
        chance = random.Random(run.seed)
        logger = Logger(run.work, Device(), logs=5, place="clock%d" % bool(boot))
        environment, kept = logger.environment, {}
        for number in range(run.count + 1):
            if boot:
                logger.environment = {**environment, **shim(run.work, SHIM_CLOCK=boot - 10 * number)}
            logger.start()
            logger.wait_for_rows()
            time.sleep(chance.uniform(0, 0.6))
            if number < run.count and chance.random() < 0.5:
                kept.update(logger.kill())
            else:
                logger.stop()
        oldest = max(rows[0] for rows in logger.rows().values())
        compare(logger, {row: age for row, age in kept.items() if row >= oldest}, run.slack)
        check_rotation(logger, "after %d starts" % run.count, boot is None)
        seen.append("%d rows in %d logs" % (len(logger.rows()[FORMS[0]]), len(logger.folders["binary"].names(".rph"))))
    return "%d starts: of at most 5 logs of 30 rows %s are kept, with a clock that goes back %s" % (run.count, *seen)
