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

from logs import Failed, NotRun

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.join(HERE, "hostile.c")
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
    ("wild name", "", "it crashed while its name was read"), ("open name", "", "it crashed while its name was read"),
    ("huge name", "", "its name does not end within 1000 bytes"), ("Latin-1 name", "", "its name is not UTF-8"),
    ("wild table", "", "it crashed while its table was read"), ("new id", "", "its ID is another one each time"),
    ("null name", "", None), ("fork", "load", None), ("crash", "Read", None)]


def compiled(work):
    """The bytes of the module without a fault."""
    path = os.path.join(work, "hostile.o")
    try:
        subprocess.run(["cc", "-shared", "-fPIC", "-O1", "-fexceptions", "-D_GNU_SOURCE", "-I", os.path.dirname(os.path.dirname(HERE)),
                        "-o", path, SOURCE, "-lgcc_s"], check=True)
    except OSError as fault:
        raise NotRun("not run: cc: %s" % fault.strerror) from None
    with open(path, "rb") as file:
        return file.read()


def with_fault(module, what, where):
    for mark, text in ((b"WHAT", what), (b"WHERE", where)):
        module = module.replace(mark.ljust(23) + b"\0", text.encode().ljust(24, b"\0"))
    return module


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

    for size in cuts:
        reason = "it is cut short: it has %d bytes" if size >= 64 else "it is not a module" 
        add("cut-%06d" % size, module[:size], reason % size if "%" in reason else reason)
    add("empty", b"", "it is not a module")
    add("text", b"#!/bin/sh\nexit 0\n" * 9, "it is not a module")
    add("machine", module[:18] + struct.pack("<H", 2) + module[20:], "it is for another machine")
    add("class", module[:4] + b"\1" + module[5:], "it is for another machine")
    add("type", module[:16] + struct.pack("<H", 1) + module[18:], "it is not a shared library")
    add("damaged", module[:54] + struct.pack("<H", 1) + module[56:], "its ELF header is damaged")
    add("segments", module[:56] + struct.pack("<H", 0xFFFF) + module[58:], "it is cut short")
    add("offset", module[:32] + struct.pack("<Q", 2**64 - 8) + module[40:], "it is cut short")
    add("zeros", module[:len(module) // 4] + bytes(len(module) - len(module) // 4), "")
    add("library", open("/proc/self/exe", "rb").read(), "")
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


def mutants(folder, module, count, chance):
    """Copies of the module with a few changed bytes, so that anything may be wrong."""
    for number in range(count):
        data = bytearray(module)
        for _ in range(chance.randint(1, 8)):
            data[chance.randrange(chance.choice([64, 1024, len(data)]))] = chance.randrange(256)
        write(os.path.join(folder, "mutant-%05d.so" % number), bytes(data))


class Host:
    """A program with the good drivers in a folder of its own, and what its commands say of the modules there."""

    def __init__(self, work):
        self.folder, self.work = os.path.join(work, "host"), work
        place = os.path.dirname(os.path.realpath(os.environ["VASTRA"]))
        os.makedirs(os.path.join(work, "logs"))
        os.mkdir(self.folder)
        for name in ("vastra", "simulator.so"):
            shutil.copy(os.path.join(place, name), os.path.join(self.folder, name))
        self.program = os.path.join(self.folder, "vastra")
        with open(os.path.join(work, "c.json"), "w") as file:
            json.dump({"input": {"scanPeriod": 1, "plcNodes": [{"nodeName": "N", "driver": {"plcType": 9001}, "varNames": ["x"]}]},
                       "outputs": [{"enableText": "WriteToLog = 1;", "varNames": ["x"], "saveRp": 1, "directory": "logs"}]}, file)

    def say(self, command, folders=()):
        """The output of the command, and the reason why each module is left out."""
        options = ["--driver-folder=" + folder for folder in folders]
        ended = subprocess.run([self.program, *command.split(), *options], cwd=self.work, timeout=600, stdin=subprocess.DEVNULL,
                               capture_output=True)
        err = ended.stderr.decode(errors="replace")
        if ended.returncode:
            raise Failed("%s: status %d: %s" % (command, ended.returncode, err[-1000:]))
        said = [(os.path.basename(path), reason) for path, reason in re.findall(r"vastra: (\S+\.so): left out: (.*)", err)]
        reasons = dict(said)
        if len(said) != len(reasons):
            raise Failed("%s: two lines for one module: %s" % (command, err[-1000:]))
        if command.startswith("run") and json.loads(ended.stdout)["read"] != 3:
            raise Failed("%s: %s" % (command, ended.stdout))
        return ended.stdout.decode(errors="replace"), reasons

    def left(self):
        """Processes of the host, of which none may be left."""
        found = []
        for name in filter(str.isdigit, os.listdir("/proc")):
            try:
                if os.readlink("/proc/%s/exe" % name).startswith(self.program):
                    found.append(name)
            except OSError:  # it has ended, or belongs to another user
                pass
        return found


def compare(command, said, expected):
    for name, reason in expected.items():
        if (reason is None) != (name not in said) or reason and not re.match(reason, said[name]):
            raise Failed("%s: %s: %s, and not: %s" % (command, name, said.get(name, "is a driver"), reason))
    if set(said) - set(expected):
        raise Failed("%s: left out: %s" % (command, sorted(set(said) - set(expected))))


def modules(run):
    """All kinds beside the host and in a folder of their own, by each command; then modules with changed bytes."""
    chance = random.Random(run.seed)
    host, module = Host(run.work), compiled(run.work)
    expected, open_folder, mutant_folder = {}, os.path.join(run.work, "open"), os.path.join(run.work, "mutants")
    for number, (what, where, reason) in enumerate(FAULTS):
        name = "%s%02d.so" % (what.replace(" ", "-"), number)
        write(os.path.join(host.folder, name), with_fault(module, what, where))
        expected[name] = reason
    cuts = [1, 63, 64, 500] + [chance.randrange(600, len(module)) for _ in range(min(run.count, 100))] + [len(module) - 1]
    expected.update(make_files(host.folder, module, cuts))
    for folder in (open_folder, mutant_folder):
        os.mkdir(folder)
    write(os.path.join(open_folder, "open.so"), module)
    os.chmod(open_folder, 0o1777)
    expected["open.so"] = "all users can write to its folder"
    commands = ["drivers", "run c.json --scans 3 --period 0 --json", "check c.json"]
    with ThreadPoolExecutor(len(commands)) as pool:
        for command, (_, said) in zip(commands, pool.map(lambda command: host.say(command, [open_folder]), commands)):
            compare(command, said, expected)
    shutil.rmtree(host.folder)
    bare = Host(os.path.join(run.work, "bare"))
    mutants(mutant_folder, module, run.count, chance)
    out, said = bare.say("drivers", [mutant_folder])
    listed = re.findall(r"\((\S*\.so)\)", out)
    if len(listed) + len(said) != run.count + 1 or "simulator.so" not in listed:
        raise Failed("drivers: %d listed and %d left out of %d" % (len(listed), len(said), run.count + 1))
    if host.left() + bare.left():
        raise Failed("processes left: %s" % (host.left() + bare.left()))
    bad = sum(reason is not None for reason in expected.values())
    return "%d kinds, each left out with its reason by `drivers`, `run` and `check`, %d in spite of a fault a driver; of %d " \
        "modules with changed bytes %d left out; no process left" % (bad, len(expected) - bad, run.count, len(said))
