"""Claims on what kills and stops leave."""
import random
import time

from device import Device
from logger import FORMS, Logger, missing
from logs import Failed


def compare(logger, kept, within):
    """Fails if a row is missing that was kept longer than within before the end. Returns the oldest missing one's age."""
    lost = missing(logger, kept)
    for form, rows in lost.items():
        late = [row for row, age in rows.items() if age > within]
        if late:
            raise Failed("%s%s: %d rows are missing, such as row %d, kept %d ms before the end" % (
                *form, len(late), late[0], 1000 * rows[late[0]]))
    logger.left()
    return "none older than %d ms missing" % (1000 * max((age for rows in lost.values() for age in rows.values()), default=0))


def kills(run):
    """Kills at random moments of a run, a quarter of them in its first 60 ms."""
    chance = random.Random(run.seed)
    logger = Logger(run.work, Device(), samples=100)
    kept = {}
    for _ in range(run.count):
        logger.start()
        time.sleep(chance.uniform(0, 0.06) if chance.random() < 0.25 else chance.uniform(0, 1))
        kept.update(logger.kill())
        logger.read()
    logger.start()
    logger.wait_for_rows()
    logger.stop()
    return "%d kills, %d rows kept, %s, none twice, no short log" % (run.count, len(kept), compare(logger, kept, run.slack))


def stops(run):
    """Stops by SIGTERM at random moments, without a pause between the runs."""
    chance = random.Random(run.seed)
    device = Device()
    logger = Logger(run.work, device)
    read = 0
    for _ in range(run.count):
        logger.start()
        logger.wait_for_rows()
        time.sleep(chance.uniform(0, 0.5))
        read += logger.stop()["read"]
        logger.read()
    rows = logger.rows()
    compare(logger, {row: 1 for row in rows[FORMS[0]]}, 0)
    if len(rows[FORMS[0]]) != read:
        raise Failed("%d of %d rows are in the binary logs" % (len(rows[FORMS[0]]), read))
    return "%d stops, %d rows read, all in the logs, none twice" % (run.count, read)
