"""Claims on driver modules that crash, hang, lie or are not whole: they are left out and do no harm."""
import json
import os
import random
import re
import shutil
import socket
import struct
import subprocess
from concurrent.futures import ThreadPoolExecutor

from logger import compile_driver
from logs import Failed

NO_FAULT = "MODULE_FAULT".ljust(39)
CRASH, HUNG = r"crashed %s: signal \d+", r"hung %s: no return within 2 s"
PLACES = {"load": "while it was loaded", "header": "in GetDriverHeader", "version": "in GetDriverApiVersion",
          "unload": "while it was unloaded"}

# What a module does, where, and the begin of the reason why it is left out; None: it is a driver in spite of it.
FAULTS = [(what, where, "it " + reason % PLACES[where]) for where in PLACES for what, reason in [
    ("crash", CRASH), ("write to 1", CRASH), ("overflow", CRASH), ("abort", CRASH), ("kill", CRASH),
    ("exit", "ended its process %s: status 0"), ("_exit", "ended its process %s: status 7"),
    ("hang", HUNG), ("spin", HUNG), ("stop", HUNG)]] + [
    ("throw", "header", "an exception left GetDriverHeader"), ("close", "load", "it ended its process"),
    ("lie", "load", "its trial sent something else"), ("print", "header", "its trial sent something else"),
    ("has a wild name", "", "it crashed while its name was read"),
    ("has an open name", "", "it crashed while its name was read"),
    ("has a huge name", "", "its name does not end within 1000 bytes"),
    ("is named in Latin-1", "", "its name is not UTF-8"), ("has a wild table", "", "it crashed while its table was read"),
    ("has a new ID each time", "", "its ID is another one each time"),
    ("has no name", "", None), ("fork", "load", None), ("crashes", "", None)]


def compiled(work):
    """The bytes of the module without a fault."""
    path = os.path.join(work, "module")
    compile_driver(path, 9600, NO_FAULT)
    with open(path, "rb") as file:
        return file.read()


def with_fault(module, what, where):
    fault = "%s, %s" % (what, where) if where else what
    return module.replace(NO_FAULT.encode(), fault.encode().ljust(39, b"\0"))


def write(path, data, mode=0o755):
    with open(path, "wb") as file:
        file.write(data)
    os.chmod(path, mode)


def make_files(folder, module, cuts):
    """Files that are not whole modules. Returns the begin of the reason for each of them."""
    reasons = {}

    def add(name, data, reason, mode=0o755):
        write(os.path.join(folder, name + ".so"), data, mode)
        reasons[name + ".so"] = reason

    def change(name, at, form, number, reason):
        add(name, module[:at] + struct.pack(form, number) + module[at + struct.calcsize(form):], reason)

    for size in cuts:
        add("cut-%06d" % size, module[:size], "it is cut short: it has %d bytes" % size if size >= 64 else "it is not a module")
    change("machine", 18, "<H", 2, "it is for another machine")
    change("class", 4, "<B", 1, "it is for another machine")
    change("type", 16, "<H", 1, "it is not a shared library")
    change("damaged", 54, "<H", 1, "its ELF header is damaged")
    change("segments", 56, "<H", 0xFFFF, "it is cut short")
    change("offset", 32, "<Q", 2**64 - 8, "it is cut short")
    add("empty", b"", "it is not a module")
    add("text", b"#!/bin/sh\nexit 0\n" * 9, "it is not a module")
    add("zeros", module[:len(module) // 4].ljust(len(module), b"\0"), "")
    add("writable", module, "all users can write to it", 0o757)
    os.mkdir(os.path.join(folder, "folder.so"))
    os.mkfifo(os.path.join(folder, "fifo.so"))
    os.symlink("nothing", os.path.join(folder, "link.so"))
    os.symlink("/dev/zero", os.path.join(folder, "device.so"))
    with socket.socket(socket.AF_UNIX) as place:
        place.bind(os.path.join(folder, "socket.so"))
    reasons.update({"folder.so": "it is a folder", "fifo.so": "it is a FIFO", "link.so": "it is a link to nothing",
                    "device.so": "it is a device", "socket.so": "it is a socket"})
    add("owner", module, "it belongs to user 65534")
    try:
        os.chown(os.path.join(folder, "owner.so"), 65534, -1)
    except OSError:  # not as root, or in a name space without this user
        reasons["owner.so"] = None
    return reasons


def mutant(module, chance):
    """The module with a few changed bytes, so that anything may be wrong."""
    data = bytearray(module)
    for _ in range(chance.randint(1, 8)):
        data[chance.randrange(chance.choice([64, 1024, len(data)]))] = chance.randrange(256)
    return data


class Host:
    """A program with a good driver in a folder of its own, and what its commands say of other modules."""

    def __init__(self, work):
        self.work, self.folder = work, os.path.join(work, "host")
        self.program = os.path.join(self.folder, "vastra")
        for folder in (self.folder, os.path.join(work, "logs")):
            os.makedirs(folder)
        for name in ("vastra", "simulator.so"):
            shutil.copy(os.path.join(os.path.dirname(os.path.realpath(os.environ["VASTRA"])), name), self.folder)
        node = {"nodeName": "N", "driver": {"plcType": 9001}, "varNames": ["x"]}
        log = {"enableText": "WriteToLog = 1;", "varNames": ["x"], "saveRp": 1, "directory": "logs"}
        with open(os.path.join(work, "c.json"), "w") as file:
            json.dump({"input": {"scanPeriod": 1, "plcNodes": [node]}, "outputs": [log]}, file)

    def say(self, command, folder):
        """The output of the command, and the reason why each module is left out."""
        ended = subprocess.run([self.program, *command.split(), "--driver-folder", folder], cwd=self.work, timeout=600,
                               stdin=subprocess.DEVNULL, capture_output=True)
        out, err = ended.stdout.decode(errors="replace"), ended.stderr.decode(errors="replace")
        said = [(os.path.basename(path), reason) for path, reason in re.findall(r"vastra: (\S+\.so): left out: (.*)", err)]
        if ended.returncode or len(said) != len(dict(said)) or command.startswith("run") and '{"read":3,' not in out:
            raise Failed("%s: status %d: %s%s" % (command, ended.returncode, out[-500:], err[-1000:]))
        return out, dict(said)

    def left(self):
        """Processes of the host, of which none may be left."""
        found = []
        for name in filter(str.isdigit, os.listdir("/proc")):
            try:
                found += [name] if os.readlink("/proc/%s/exe" % name).startswith(self.program) else []
            except OSError:  # it has ended, or belongs to another user
                pass
        return found


def modules(run):
    """All kinds by each command, beside the host and in a folder of their own; then modules with changed bytes."""
    chance, module, host = random.Random(run.seed), compiled(run.work), Host(run.work)
    expected, folder = {"open.so": "all users can write to its folder"}, os.path.join(run.work, "folder")
    for number, (what, where, reason) in enumerate(FAULTS):
        name = "%s%02d.so" % (what.replace(" ", "-"), number)
        write(os.path.join(host.folder, name), with_fault(module, what, where))
        expected[name] = reason
    cuts = [1, 63, 64, 500] + [chance.randrange(600, len(module)) for _ in range(min(run.count, 100))] + [len(module) - 1]
    expected.update(make_files(host.folder, module, cuts))
    os.mkdir(folder)
    write(os.path.join(folder, "open.so"), module)
    os.chmod(folder, 0o1777)
    commands = ["drivers", "run c.json --scans 3 --period 0 --json", "check c.json"]
    with ThreadPoolExecutor(len(commands)) as pool:
        for command, (_, said) in zip(commands, pool.map(lambda command: host.say(command, folder), commands)):
            for name in {*said, *expected}:
                reason = expected.get(name)
                if (reason is None) != (name not in said) or reason and not re.match(reason, said[name]):
                    raise Failed("%s: %s: %s, and not: %s" % (command, name, said.get(name, "is a driver"), reason))
    os.chmod(folder, 0o755)
    bare = Host(os.path.join(run.work, "bare"))
    for number in range(run.count):
        write(os.path.join(folder, "mutant-%05d.so" % number), mutant(module, chance))
    out, said = bare.say("drivers", folder)
    listed = re.findall(r"\((\S*\.so)\)", out)
    if len(listed) + len(said) != run.count + 2 or "simulator.so" not in listed:
        raise Failed("drivers: %d listed and %d left out of %d" % (len(listed), len(said), run.count + 2))
    if host.left() + bare.left():
        raise Failed("processes left: %s" % (host.left() + bare.left()))
    bad = sum(reason is not None for reason in expected.values())
    return "%d kinds, each left out with its reason by `drivers`, `run` and `check`, %d in spite of a fault a driver; of %d " \
        "modules with changed bytes %d left out; no process left" % (bad, len(expected) - bad, run.count, len(said))
