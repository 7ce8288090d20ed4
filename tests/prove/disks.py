"""Claims on a disk that is full, slow, read-only or absent."""
import errno
import os
import shutil
import subprocess

from device import Device
from logger import Logger, shim, wants
from logs import Failed, Folder, NotRun

NAMES = {"binary": "Binary", "text": "Text", "summary": "Each fifth"}  # of the ledgers


def mount(*arguments):
    ended = subprocess.run(["mount", *arguments], capture_output=True, text=True)
    if ended.returncode:
        raise NotRun("not run: " + ended.stderr.strip())


def mount_memory(folder, options):
    os.makedirs(folder, exist_ok=True)
    mount("-t", "tmpfs", "-o", options, "tmpfs", folder)


def unmount(folder):
    subprocess.run(["umount", "--lazy", folder], check=True)


def fill(path):
    """Extends a file until the disk is full."""
    with open(path, "ab", buffering=0) as file:
        for size in (65536, 4096, 1):
            try:
                while True:
                    file.write(b"\0" * size)
            except OSError as fault:
                if fault.errno != errno.ENOSPC:
                    raise


def account(logger, counts, elsewhere=None, exactly=True):
    """Compares the ledgers of a run with the logs, row by row. elsewhere: a place with more logs of the run. Returns the
    sums of the ledgers. exactly: otherwise a row in a log may be counted as lost, since its folder could not be synced."""
    ledgers = {entry["name"]: entry for entry in counts["ledger"]}
    offered = range(logger.first, logger.device.count() + 1)
    for form, rows in logger.rows().items():
        entry = ledgers[NAMES[form[0]]]
        wanted = {row for row in offered if wants(form, row)}
        rows = [row for row in rows if row in wanted]
        for row in Folder(os.path.join(elsewhere, form[0])).rows(form[1]) if elsewhere else []:
            if form[0] != "summary" or row not in rows:  # a log that grows is written as a whole again
                rows.append(row)
        gone = wanted - set(rows)
        if len(rows) != len(set(rows)):
            raise Failed("%s%s: rows are there twice" % form)
        if entry["taken"] != len(wanted):
            raise Failed("%s: of %d rows %d are wanted, the ledger says: %s" % (form[0], len(offered), len(wanted), entry))
        counted = entry["lost"] + entry["rotated"] + entry["inJournal"] + entry["inMemory"]
        if not exactly and form == ("summary", "d.csv"):
            continue  # a copy, which is not counted
        if len(gone) > counted or exactly and len(gone) != counted:
            raise Failed("%s%s: %d of %d rows are not in the logs, the ledger says: %s" % (
                *form, len(gone), len(wanted), entry))
    return {key: sum(entry[key] for entry in ledgers.values()) for key in ("taken", "lost", "rotated", "inJournal", "recovered")}


def rename(disk):
    os.rename(disk, disk + ".away")


def rename_back(disk):
    os.rename(disk + ".away", disk)


def replace(disk):
    rename(disk)
    for name in NAMES:
        os.makedirs(os.path.join(disk, name))


def use_up_inodes(disk):
    try:
        for number in range(10000):
            open(os.path.join(disk, "inode%d" % number), "w").close()
    except OSError as fault:
        if fault.errno != errno.ENOSPC:
            raise


def free_inodes(disk):
    for name in os.listdir(disk):
        if name.startswith("inode"):
            os.remove(os.path.join(disk, name))


def make_read_only(disk):
    view = disk + ".view"
    os.makedirs(view)
    mount("--bind", disk, view)
    mount("-o", "remount,bind,ro", view)
    mount("--move", view, disk)
    os.rmdir(view)


FAULTS = [  # the text, what is done, what mends it
    ("absent for a while", rename, rename_back),
    ("absent at the end", rename, None),
    ("replaced by an empty one", replace, None),
    ("read-only for a while", make_read_only, unmount),
    ("without inodes for a while", use_up_inodes, free_inodes),
]


def folders(run):
    """The folder of the logs has a fault in the middle of a run."""
    rows, seen = 0, []
    for text, fault, mend in FAULTS * run.count:
        disk = os.path.join(run.work, text.replace(" ", "-"))
        if fault is use_up_inodes:
            mount_memory(disk, "size=16m,nr_inodes=60")
        logger = Logger(run.work, Device(), period=4, place=disk, options=("--close-within", "3"))
        logger.start()
        logger.wait_for_rows(100)
        fault(disk)
        logger.more_rows(200)
        if mend:
            mend(disk)
            logger.more_rows(100)
        counts = logger.stop()
        if fault is rename and not mend:
            rename_back(disk)
        sums = account(logger, counts, disk + ".away" if fault is replace else None, mend is not None)
        if sums["lost"] and mend:
            raise Failed("%s: %s" % (text, sums))
        logger.start()
        logger.wait_for_rows()
        logger.stop()
        logger.rows(in_order=False)
        logger.left()
        if fault is use_up_inodes:
            unmount(disk)
        rows += sums["taken"]
        seen += ["%s: %d lost" % (text, sums["lost"])]
        for place in (disk, disk + ".away"):
            shutil.rmtree(place, ignore_errors=True)
    return "%d rows, each one in a log or counted; %s" % (rows, ", ".join(seen[-len(FAULTS):]))


def full(run):
    """A small disk is filled and freed again and again: first with memory to wait, then with little memory."""
    seen = []
    for hold, width in (64, 1), (1, 1000):
        disk = os.path.join(run.work, "disk%d" % hold)
        mount_memory(disk, "size=16m")
        device = Device()
        logger = Logger(run.work, device, period=4, place=disk, samples=50, width=width, options=("--hold", str(hold)))
        logger.start()
        logger.wait_for_rows(100)
        for _ in range(run.count):
            ballast = os.path.join(disk, "ballast")
            goal = device.count() + 600
            while device.count() < goal:
                fill(ballast)  # takes what the rotation has freed, too
                logger.more_rows(10)
            os.remove(ballast)
            logger.more_rows(200)
        sums = account(logger, logger.stop())
        if hold == 64 and sums["lost"] + sums["rotated"] or hold == 1 and not sums["lost"]:
            raise Failed("with --hold %d: %s" % (hold, sums))
        logger.options = ()  # with memory for all journals, and room for their logs
        mount("-o", "remount,size=64m", disk)
        logger.start()
        logger.wait_for_rows()
        if sum(entry["recovered"] for entry in logger.stop()["ledger"]) < sums["inJournal"]:
            raise Failed("fewer than %d rows are recovered" % sums["inJournal"])
        logger.rows(in_order=False)  # recovered rows are in a new log
        logger.left()
        unmount(disk)
        seen.append("%(taken)d rows, %(lost)d lost, %(rotated)d rotated" % sums)
    return "full %d times: %s; with --hold 1: %s; each one counted" % (run.count, *seen)


def slow(run):
    """Each sync takes half a second."""
    logger = Logger(run.work, Device(), period=50, samples=40, options=("--sync", "0", "--close-within", "200"),
                    environment=shim(run.work, SHIM_SYNC=500))
    logger.start()
    logger.wait_for_rows(run.count)
    counts = logger.stop()
    account(logger, counts)
    logger.left()
    reads = [moment for _, moment in logger.device.reads]
    seen = "%d scans of 50 ms, %d late, the longest pause %d ms" % (
        counts["read"], counts["late"], 1000 * max(after - before for before, after in zip(reads, reads[1:])))
    if counts["late"] > counts["read"] * run.slack / 2:  # a scan that waits for a sync makes nine late
        raise Failed(seen)
    return seen
