"""What `vastra convert` has to write of a folder of logs: the rules of docs/history.md as plainly as they can be written."""
import collections
import math
import os
import struct
from fractions import Fraction


def files_of(path, recursive):
    """The files of a folder in the order of a reader: logs, journals, folders below it."""
    entries = sorted(os.scandir(path), key=lambda entry: os.fsencode(entry.name))
    logs = [entry.path for entry in entries if entry.name.lower().endswith((".rph", ".rpd")) and not entry.is_dir()]
    journals = [entry.path for entry in entries if entry.name.startswith(".vastra-") and entry.name.endswith(".journal")]
    journals.sort(key=lambda path: (path.rsplit("-", 1)[0], int(path.rsplit("-", 1)[1][:-8])))
    below = [entry.path for entry in entries if recursive and entry.is_dir(follow_symlinks=False)]
    return logs + journals + [file for folder in below for file in files_of(folder, True)]


def all_files(paths, recursive):
    """Those of all paths, each once."""
    found = [file for path in paths for file in (files_of(path, recursive) if os.path.isdir(path) else [path])]
    return list(dict.fromkeys(found))


def rows_of(logs, begin, end, wanted=None, unique=False):
    """The names of the columns, and the rows as (moment, values, place of each column)."""
    places = [{name: i for i, name in reversed(list(enumerate(log.names)))} for log in logs]
    found = [(row.moment, number, row) for number, log in enumerate(logs) for row in log.rows
             if begin <= row.moment < end and (wanted is None or any(name in places[number] for name in wanted))]
    found.sort(key=lambda entry: entry[:2])  # keeps the order of the file
    if unique:
        found = without_repeats(found, logs)
    seen = [logs[number].names for number in sorted({number for _, number, _ in found})] or [log.names for log in logs]
    names = wanted or list(dict.fromkeys(name for list_ in seen for name in list_))
    columns = [[place.get(name, -1) for name in names] for place in places]
    return names, [(moment, row.values, columns[number]) for moment, number, row in found]


def without_repeats(found, logs):
    """Each row as often as the log has it that has it most often."""
    result, kept, here, before = [], {}, {}, None
    for moment, number, row in found:
        if moment != before:
            before, kept, here = moment, collections.Counter(), collections.Counter()
        same = logs[number].names, row.record, row.values
        here[number, same] += 1
        if here[number, same] > kept[same]:
            kept[same] += 1
            result.append((moment, number, row))
    return result


def cells_of(values, places):
    floats = struct.unpack("<%df" % (len(values) // 4), values)
    return [floats[place] if 0 <= place < len(floats) else None for place in places]


def steps_of(rows, origin, step):
    """The steps that have rows: the begin of each, and for each column its finite values in order."""
    steps = {}
    for moment, values, places in rows:
        lists = steps.setdefault(origin + (moment - origin) // step * step, [[] for _ in places])
        for cell, list_ in zip(cells_of(values, places), lists):
            if cell is not None and math.isfinite(cell):
                list_.append(cell)
    return steps


def is_mean(found, values):
    """Whether a double is the mean, but for its last digit and what 90 digits of a sum cannot have."""
    exact = sum(map(Fraction, values)) / len(values)
    size = sum(abs(Fraction(value)) for value in values) / len(values)
    return abs(Fraction(found) - exact) <= abs(exact) / 2**52 + size / 2**90


def is_same(found, value):
    """Whether a text gives the float, with its sign; all NaN are the same."""
    return repr(struct.unpack("<f", struct.pack("<f", float(found)))[0]) == repr(value)


def is_step(found, values, by):
    if by == "mean":
        return is_mean(float(found), values)
    value = {"min": min, "max": max, "first": lambda v: v[0], "last": lambda v: v[-1]}[by](values)
    return is_same(found, value) or value == float(found) == 0 and by in ("min", "max")
