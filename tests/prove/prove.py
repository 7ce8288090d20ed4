"""Runs claims and prints the table of docs/reliability.md. script/prove calls it."""
import argparse
import os
import re
import shutil
import subprocess
import sys
import time
import traceback
from concurrent.futures import ThreadPoolExecutor
from typing import Callable, NamedTuple

import browsers
import disks
import feeds
import fleet
import history
import history_beside
import history_clock
import kills
import modules
import plant
import memory
import packages
import processes
import reloads
import replays
import soak
import stalls
import viewers
from logs import Failed, NotRun

PAGE = "docs/reliability.md"


class Run(NamedTuple):
    """What a test gets. It returns what was seen, or a list of pairs: a promise and what was seen of it."""
    count: int    # how many times
    work: str     # an empty folder
    seed: int     # for chance
    slack: float  # seconds after which a kept row is safe; longer in the short form, for loaded machines


class Claim(NamedTuple):
    name: str
    text: str
    test: Callable  # raises Failed if the claim does not hold
    short: int      # how many times; 0: not in the short form
    long: int


SWEEPS = {"keeper_test": ("build/release/bin/keeper_test", "Keeper.*"),
          "plc_test": ("build/release/tests/plc/modules/plc_test", "*AtRandom*")}


def sweeps(run):
    """Tests within a process in their long form. They print a line "claim: PROMISE: FIGURE" for each sweep."""
    for build in (["script/bootstrap", "test"], ["script/build", "test", *SWEEPS]):
        if subprocess.run(build, stdout=sys.stderr).returncode:
            raise Failed(" ".join(build))
    rows = []
    for name, (program, tests) in SWEEPS.items():
        ended = subprocess.run([program, "--gtest_filter=" + tests], capture_output=True, text=True,
                               env={**os.environ, "VASTRA_PROVE": "1"})
        found = re.findall(r"^claim: (.*?): (.*)$", ended.stdout, re.MULTILINE)
        if ended.returncode or not found:
            raise Failed("%s: status %d: %s" % (name, ended.returncode, " ".join(
                re.findall(r"^.*Failure\n.*|^\[  FAILED  \].*", ended.stdout, re.MULTILINE)[:5])))
        rows += [("A sweep in the process: " + text, figure) for text, figure in found]
    return rows


CLAIMS = [
    Claim("kills", "After a kill at any moment, each row that was kept 100 ms before is in a log once, in the order of "
          "time, and each log is whole", kills.kills, 15, 1000),
    Claim("stops", "After a stop each row is in a log once", kills.stops, 5, 200),
    Claim("full", "While a disk is full no scan stops; each row is in a log afterwards, or counted as lost or rotated",
          disks.full, 1, 20),
    Claim("folders", "A folder that is absent, replaced, read-only or without inodes stops no scan; each row is in a log "
          "afterwards, or counted as lost", disks.folders, 1, 5),
    Claim("slow", "A disk whose syncs take half a second makes no scan late", disks.slow, 60, 1200),
    Claim("two", "Of two starts of one configuration one is refused, with the process of the other; after a kill the next "
          "one starts", processes.two, 4, 100),
    Claim("reader", "A reader beside the logger sees each row once in logs and journals, and no short file",
          processes.reader, 120, 1000),
    Claim("rotations", "maxLogs full logs are kept, the newest ones, and names go on after 99", processes.rotations,
          150, 10000),
    Claim("gateway", "Starts that end in stops and power cuts leave full logs in order, also with a clock that restarts",
          processes.gateway, 4, 200),
    Claim("replays", "A replay writes to no PLC, and each row of it with --write-plc", replays.replays, 100, 10000),
    Claim("modules", "A driver module that crashes, hangs, ends its process, is cut short or can be changed by others is left "
          "out with one line, and every command works with the others", modules.modules, 20, 2000),
    Claim("plant", "Of ten devices five come, go and hang: no value of a good node is missing, and a scan is late only because of a "
          "node that a message names", plant.plant, 6, 600),
    Claim("thousand", "Of a thousand Modbus nodes half are dead: no value of the others is missing", plant.thousand, 0, 120),
    Claim("hanging", "A driver that does not return from open, read, write or close stops neither the other nodes nor the end",
          plant.hanging, 4, 60),
    Claim("stalls", "A terminal or pipe that nobody reads makes no scan late and no stop wait, and missing lines are counted",
          stalls.stalls, 6, 100),
    Claim("feed", "Beside readers of a feed that stall, flood, send garbage and vanish at most 2 scans in 100 more are late, good readers "
          "miss no message without a mark and get no sample twice; one that stalls is dropped after 10 s", feeds.feed, 3, 60),
    Claim("reload", "A logger under load gets configurations, good and bad: no row is lost that the old or the new one takes, and "
          "none is logged twice", reloads.reload, 10, 1000),
    Claim("soak", "Three services live through kills, dead loops, stops, reloads of good and bad configurations, full and stuck "
          "disks, steps of the clock and a device that comes and goes: each row that was kept is in a log once, each account agrees "
          "with the logs, and the watchdog is fed", soak.soak, 8, 400),
    Claim("history", "Exports of folders with logs that overlap, repeat, are cut, damaged or uneven, and with journals, have the rows "
          "and steps of a plain model, value by value, with digests that are old, damaged or removed, too", history.history, 60, 20000),
    Claim("changing", "While logs are added, extended and removed, an export has each row of the logs that stay once and in order",
          history_beside.changing, 12, 300),
    Claim("newest", "An export beside a logger has each row at most 100 ms after it was kept, and none twice, while logs follow "
          "each other", history_beside.newest, 20, 1000),
    Claim("zones", "Times are written and read as the clocks of ten zones show them, at all changes since 1901",
          history_clock.zones, 20, 2000),
    Claim("year", "Half days of a year at a row a second have the means and maxima of a plain model, in bounded memory",
          history_clock.year, 2, 365),
    Claim("memory", "A command that gets no memory at any moment, or none from then on, ends with a line and status 1, or "
          "does its work; no row is lost with status 0", memory.memory, 6, 1000000),
    Claim("packages", "The packages install, upgrade under a logger that runs, build an external project and go, in a bare Debian 12, "
          "and keep configurations and logs", packages.packages, 0, 1),
    Claim("sweeps", "", sweeps, 0, 1),
    Claim("viewers", "Of ten samples a second each of 50 browsers gets 99 in 100 within 200 ms, at less than 5 % of a core of "
          "the logger; the server does not grow, and a chart over 10,000 logs takes at most 50 ms of its processor",
          viewers.viewers, 0, 600),
    Claim("pages", "A browser shows the values of the logs, to the last digit and at any zoom; its address holds the view; it says "
          "that a logger or the server is gone, and goes on when it is back", browsers.pages, 0, 20),
    Claim("fleet", "", fleet.fleet, 0, 100),
]


def prove(claim, options):
    """Returns whether the claim holds, and its rows of the table."""
    count = options.count or (claim.short if options.short else claim.long)
    work = os.path.abspath(os.path.join(options.work, claim.name))
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    begin = time.monotonic()
    try:
        seen, holds = claim.test(Run(count, work, options.seed, 0.5 if options.short else 0.1)), True
        shutil.rmtree(work, ignore_errors=True)
    except NotRun as reason:
        seen, holds = str(reason), True
    except Exception as fault:  # also what the test itself cannot do
        if not isinstance(fault, Failed):
            traceback.print_exc()
        seen, holds = "FAILED: %s" % fault, False
    rows = seen if isinstance(seen, list) else [(claim.text, seen)]
    for text, figure in rows:
        print("%s: %s (%d s)" % (claim.name, figure, time.monotonic() - begin), flush=True)
    clean = str.maketrans("\n|", " /")
    return holds, ["| %s | %s | `script/prove %s` |" % (text, figure.translate(clean), claim.name) for text, figure in rows]


def write(table):
    """Puts the rows into the table of the page, in the place of those of the same claims."""
    with open(PAGE) as file:
        before, head, after = re.split(r"(\|---\|---\|---\|\n)", file.read())
    old = after[:after.find("\n\n") + 1] if "\n\n" in after else after
    rows = old.splitlines()
    new = [row for claim in CLAIMS
           for row in table.get(claim.name) or [row for row in rows if row.endswith("prove %s` |" % claim.name)]]
    with open(PAGE, "w") as file:
        file.write(before + head + "".join(row + "\n" for row in new) + after[len(old):])


def main():
    parser = argparse.ArgumentParser(prog="script/prove")
    parser.add_argument("claims", nargs="*", metavar="CLAIM", help=", ".join(claim.name for claim in CLAIMS))
    parser.add_argument("--short", action="store_true", help="what script/test runs")
    parser.add_argument("--write", action="store_true", help="put the figures into " + PAGE)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, help="how many times, in place of the claim's own number")
    parser.add_argument("--work", default="build/prove", help=argparse.SUPPRESS)
    options = parser.parse_args()
    unknown = set(options.claims) - {claim.name for claim in CLAIMS}
    if unknown:
        parser.error("no such claim: " + ", ".join(sorted(unknown)))
    claims = [claim for claim in CLAIMS if claim.name in options.claims or
              not options.claims and (claim.short or not options.short)]
    with ThreadPoolExecutor(4 if options.short else 1) as pool:
        results = list(pool.map(lambda claim: prove(claim, options), claims))
    table = {claim.name: rows for claim, (_, rows) in zip(claims, results)}
    failed = [claim.name for claim, (holds, _) in zip(claims, results) if not holds]
    print("\n| promised | seen | repeated by |\n|---|---|---|\n" + "\n".join(row for rows in table.values() for row in rows))
    if options.write and not failed:
        write(table)
    if failed:
        print("script/prove: failed: " + " ".join(failed), file=sys.stderr)
    return failed != []


if __name__ == "__main__":
    sys.exit(main())
