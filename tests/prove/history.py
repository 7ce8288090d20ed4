"""The claims on the history of logs: what `vastra convert` writes of folders of logs is compared with a plain model."""
import csv
import datetime
import io
import json
import os
import random
import re
import subprocess
import time

import history_model as model
from history_logs import Tree, bytes_of
from logger import start_process
from logs import Failed

DIGEST = ".vastra-history.digest"
KINDS = ("mean", "min", "max", "first", "last")


def convert(run, *arguments, status=0, zone="UTC", pause=0):
    """The output of the command and its lines on standard error. pause: seconds in which nobody reads its output."""
    process = start_process([os.environ["VASTRA"], "convert", *arguments], cwd=run.work, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            env={**os.environ, "TZ": zone, "XDG_CACHE_HOME": os.path.join(run.work, "cache")})
    first = os.read(process.stdout.fileno(), 1) if pause else b""
    time.sleep(pause)
    out, errors = (part.decode(errors="surrogateescape") for part in process.communicate(timeout=600))
    out = first.decode() + out
    if status is not None and process.returncode != status:
        raise Failed("convert %s: status %d, not %d: %s" % (" ".join(arguments), process.returncode, status, errors[-500:]))
    return out, errors.splitlines()


def table_of(out, format):
    """The names of the columns, or None without rows of JSON, and the rows as texts; None: no value."""
    if format == "csv":
        head, *rows = csv.reader(io.StringIO(out, newline=""), strict=True)
        return head[1:], [[cell if cell else None for cell in row] for row in rows]
    rows = [json.loads(line, parse_float=str, parse_int=str) for line in out.splitlines()]
    return (list(rows[0])[1:] if rows else None), [list(row.values()) for row in rows]


def unix(moment):
    return "%s%d.%03d" % ("-" * (moment < 0), *divmod(abs(moment), 1000))


def typed(moment):
    when = datetime.datetime(1970, 1, 1) + datetime.timedelta(milliseconds=moment)
    return when.isoformat(timespec="milliseconds") + "Z"


def quoted(name):
    text = os.fsdecode(name)
    return '"%s"' % text.replace('"', '""') if re.search('[,"]', text) else text


class Query:
    """A question by chance at a folder, and its answer by the model."""

    def __init__(self, tree, paths, chance):
        self.paths, recursive = paths, chance.random() < 0.7
        files = model.all_files(paths, recursive)
        self.faults = [file for file in files if file in tree.faults]
        self.logs = [tree.logs[file] for file in files if file in tree.logs]
        self.format, self.arguments = chance.choice(("csv", "jsonl")), []
        self.status = int(not self.logs or any(path in tree.faults for path in paths))
        self.begin, self.end = -1 << 60, 1 << 60
        self.choose_range(chance)
        self.wanted = None
        known = sorted({name for log in self.logs for name in log.names})
        if known and chance.random() < 0.4:
            self.wanted = chance.sample(known, chance.randint(1, min(3, len(known))))
            self.arguments += ["--vars=" + ",".join(map(quoted, self.wanted))]
        self.unique = chance.random() < 0.3
        self.arguments += ["--recursive"] * recursive + ["--unique"] * self.unique + ["--format", self.format, "--time", "unix"]
        self.names, self.rows = model.rows_of(self.logs, self.begin, self.end, self.wanted, self.unique)

    def choose_range(self, chance):
        moments = [row.moment for log in self.logs for row in log.rows]
        if chance.random() < 0.5 or not moments:
            return
        ends = sorted(chance.choice(moments) + chance.choice((-1, 0, 0, 1, 500)) for _ in range(2))
        if chance.random() < 0.8:
            self.begin = ends[0]
            self.arguments += ["--from", typed(self.begin)]
        if chance.random() < 0.8 and ends[1] > self.begin:
            self.end = ends[1]
            self.arguments += ["--to", typed(self.end)]

    def ask(self, run, *more):
        """The rows as texts. Fails if there are other columns, and if other files are reported as damaged."""
        out, errors = convert(run, *self.paths, *self.arguments, *more, status=self.status)
        told = [line for line in errors if any("vastra: %s: " % fault in line for fault in self.faults)]
        rest = [line for line in errors if line not in told and "there are no rows in this range" not in line and
                "the column of" not in line]
        if len(told) != len(self.faults) or rest and self.logs:
            raise self.failed(more, "%d damaged files, told are %s" % (len(self.faults), "; ".join(told + rest)[:1000]))
        if not self.logs:
            return []
        names, rows = table_of(out, self.format)
        if self.format == "csv" and names != [os.fsdecode(name) for name in self.names]:
            raise self.failed(more, "the columns are %s, not %s" % (names, self.names))
        return rows

    def failed(self, more, text):
        return Failed("%s: %s" % (" ".join(map(repr, (*self.paths, *self.arguments, *more))), text))

    def check_rows(self, run):
        """Returns the number of values that were compared."""
        found = self.ask(run)
        if len(found) != len(self.rows):
            raise self.failed((), "%d rows, not %d" % (len(found), len(self.rows)))
        for number, (texts, (moment, values, places)) in enumerate(zip(found, self.rows)):
            cells = model.cells_of(values, places)
            if texts[0] != unix(moment) or not all(map(is_cell, texts[1:], cells)) or len(texts) != len(cells) + 1:
                raise self.failed((), "row %d is %s, not %s %s" % (number, texts, unix(moment), cells))
        return len(found) * len(self.names)

    def check_steps(self, run, chance, *more):
        """The same for steps."""
        span = self.rows[-1][0] - self.rows[0][0] + 1 if self.rows else 1
        step = chance.choice((1, 7, 1000, 60000, 86400000, max(1, span // 3), span, max(1, span // 100)))
        step = min(step, 36525 * 86400 * 1000)
        kind = chance.choice(KINDS)
        options = ["--step", "%.3f" % (step / 1000), "--by", kind, *more]
        origin = self.begin if "--from" in self.arguments else 0
        expected, found = sorted(model.steps_of(self.rows, origin, step).items()), self.ask(run, *options)
        if [texts[0] for texts in found] != [unix(begin) for begin, _ in expected]:
            raise self.failed(options, "the steps are %s..., not %s..." % ([texts[0] for texts in found][:5],
                                                                           [unix(begin) for begin, _ in expected][:5]))
        for texts, (begin, lists) in zip(found, expected):
            for text, values in zip(texts[1:], lists):
                if (text is None) != (not values) or values and not model.is_step(text, values, kind):
                    raise self.failed(options, "the step at %s is %s, of %s" % (texts[0], texts, [values[:9] for values in lists]))
        return len(found) * len(self.names)


def is_cell(text, value):
    return text is None if value is None else text is not None and model.is_same(text, value)


def change(tree, chance):
    """Adds logs, removes some and writes others again; damages the digests."""
    for _ in range(3):
        tree.add()
    linked = {os.path.realpath(path) for path in tree.logs if os.path.islink(path)}
    own = [path for path in sorted(tree.logs) if not os.path.islink(path) and not path.endswith(".journal") and
           os.path.realpath(path) not in linked and path not in tree.named]
    for path in chance.sample(own, min(4, len(own))):
        if chance.random() < 0.5:
            tree.forget(path)
            os.unlink(path)
        else:
            log = tree.logs[path]
            log = log._replace(rows=[row._replace(values=bytes(len(row.values))) for row in log.rows])
            tree.write(path, bytes_of(log), log)
    for folder in tree.folders:
        damage(os.path.join(folder, DIGEST), chance)


def damage(path, chance):
    if not os.path.exists(path) or chance.random() < 0.4:
        return
    with open(path, "rb") as file:
        data = bytearray(file.read())
    kind = chance.randrange(3)
    if kind == 0:
        return os.unlink(path)
    if kind == 1 and data:
        del data[chance.randrange(len(data)):]
    for _ in range(chance.randrange(4) if data else 0):
        data[chance.randrange(len(data))] ^= 1 << chance.randrange(8)
    with open(path, "wb") as file:
        file.write(data)


def history(run):
    """Half of the logs in one folder tree, the others in small ones."""
    chance = random.Random(run.seed)
    logs = queries = values = 0
    while logs < run.count:
        tree = make_tree(run, chance, logs)
        logs += tree.number
        for turn in range(2):
            for _ in range(4):
                query = Query(tree, paths_of(tree, chance), chance)
                values += query.check_rows(run)
                values += query.check_steps(run, chance) + query.check_steps(run, chance, "--digest")
                queries += 3
            change(tree, chance)
    return "%d logs in folders, %d exports: %d values, all as in the model" % (logs, queries, values)


def make_tree(run, chance, made):
    tree = Tree(os.path.join(run.work, "logs"), chance)
    for _ in range(run.count // 2 if not made and run.count > 2000 else chance.choice((1, 3, 8, 20))):
        tree.add()
    return tree


def paths_of(tree, chance):
    """The folder, or parts of it in any order."""
    if chance.random() < 0.6:
        return [tree.path]
    files = sorted(path for path in {**tree.logs, **dict.fromkeys(tree.faults)} if not path.endswith(".journal"))
    paths = chance.sample(tree.folders, 2) + chance.sample(files, min(2, len(files)))
    chance.shuffle(paths)
    return paths
