"""Claims on driver modules that crash, hang, lie or are not whole: they are left out and do no harm."""
import json
import os
import random
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
