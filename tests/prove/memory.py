"""The claim "memory": a command that gets no memory at one moment, or none from that moment on, ends with a line."""
import json
import os
import random
import subprocess

from logger import compile_library
from logs import Failed, Folder

CONFIGURATION = {
    "input": {"scanPeriod": 10, "plcNodes": [
        {"nodeName": "Kiln", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["x"], "absent": "nan", "aliveVar": "Alive"}]},
    "outputs": [{"enableText": "WriteToLog = 1;", "varNames": ["x", "Alive"], "saveRp": 1, "directory": "logs"}]}
COMMANDS = (("run", "c.json", "--scans", "1", "--json", "--close-within", "0.5"), ("check", "c.json"), ("inspect", "one.rph"), ("convert", "one.rph"),
            ("eval", "y = 2 * a;", "--var", "a=1"))
ENDS_OF_THE_C_LIBRARY = {127: b"cannot allocate memory for thread-local data: ABORT\n",
                         -6: b"Fatal glibc error: failed to register TLS destructor: out of memory\n"}


def call(work, arguments, number, goes_on=False):
    """Runs a command whose allocation with this number fails. Returns its status, output and messages."""
    logs = os.path.join(work, "logs")
    for file in os.listdir(logs):
        os.remove(os.path.join(logs, file))
    environment = {**os.environ, "LD_PRELOAD": os.path.join(work, "memory.so"), "SHIM_NTH": str(number),
                   "SHIM_COUNT": os.path.join(work, "count"), **({"SHIM_FROM": "1"} if goes_on else {})}
    try:
        ended = subprocess.run([os.environ["VASTRA"], *arguments], cwd=work, env=environment, capture_output=True, timeout=60)
    except subprocess.TimeoutExpired:
        return "hangs", b"", b""
    return ended.returncode, ended.stdout, ended.stderr


def fault(work, arguments, status, out, messages):
    """What is wrong with the end of a command, or None."""
    if status == 0 and arguments[0] == "run":
        counts = json.loads(out)["ledger"][0]
        if counts["lost"] or counts["onDisk"] + counts["inJournal"] != counts["taken"] or counts["inMemory"]:
            return "a row is lost with status 0: %s" % counts
        folder = Folder(os.path.join(work, "logs"))
        folder.read()
        return None if len(folder.rows(".rph")) == counts["onDisk"] else "the log does not have the row"
    if status in ENDS_OF_THE_C_LIBRARY and ENDS_OF_THE_C_LIBRARY[status] in messages:
        return None  # a thread without memory of its own: nothing of the logger is asked
    if status == 3 and b"memory" in messages:
        return None  # what a driver says of its settings
    return None if status == 0 or status == 1 and messages.endswith(b"\n") else "status %s: %s" % (status, messages[-200:])


def memory(run):
    compile_library(os.path.join(run.work, "memory.so"), "memory_shim.c")
    os.mkdir(os.path.join(run.work, "logs"))
    with open(os.path.join(run.work, "c.json"), "w") as file:
        json.dump(CONFIGURATION, file)
    status, out, _ = call(run.work, COMMANDS[0], 0)
    os.link(json.loads(out)["files"][0], os.path.join(run.work, "one.rph"))
    chance, done, refused = random.Random(run.seed), 0, 0
    for arguments in COMMANDS:
        call(run.work, arguments, 0)
        with open(os.path.join(run.work, "count")) as file:
            count = int(file.read())
        numbers = range(1, count + 1)
        for number in numbers if count <= run.count else sorted(chance.sample(numbers, run.count)):
            for goes_on in (False, True):
                status, out, messages = call(run.work, arguments, number, goes_on)
                wrong = fault(run.work, arguments, status, out, messages)
                if wrong:
                    raise Failed("%s, allocation %d%s: %s" % (arguments[0], number, " and later" if goes_on else "", wrong))
                done, refused = done + 1, refused + (status != 0)
    return "%d commands: %d ended with a line and without status 0, %d did their work" % (done, refused, done - refused)
