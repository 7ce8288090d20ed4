"""The claim that a replay changes nothing in the plant."""
import json
import os
import subprocess

from device import Device, node
from logger import Logger
from logs import Failed

SAYS = "plcWrite: a replay writes to no PLC; --write-plc writes"
CASES = [  # options, disableWriting, whether each row is written
    ([], 0, False), (["--write-plc"], 0, True), (["--write-plc"], 1, False), (["--plain"], 0, True), ([], 0, False),
]


def replays(run):
    """Replays logs with a node to write to, whose device counts what is written to it."""
    logger, target = Logger(run.work, Device(), period=0), Device()
    logger.start()
    logger.wait_for_rows(run.count)
    logger.stop()
    binary = logger.folders["binary"]
    rows = binary.rows(".rph")
    path, written = os.path.join(run.work, "replay.json"), 0
    for options, disabled, writes in CASES:
        with open(path, "w") as file:
            json.dump({"input": {"simulating": 1, "inputFiles": [os.path.join(binary.path, name) for name in binary.names(".rph")]},
                       "plcWrite": {"nodes": [node(target)], "disableWriting": disabled}}, file)
        for command in (["run", path, "--period", "0", *options], ["check", path, *(o for o in options if o == "--plain")]):
            ended = subprocess.run([os.environ["VASTRA"], *command], capture_output=True, text=True)
            says = not disabled and "--plain" not in options and (command[0] == "check" or not writes)
            if ended.returncode or (SAYS in ended.stderr) != says:
                raise Failed("%s: status %d: %s" % (command, ended.returncode, ended.stderr[-500:]))
        if target.writes != (rows if writes else []):
            raise Failed("%s: %d of %d rows were written" % (options, len(target.writes), len(rows)))
        written += len(target.writes)
        target.writes.clear()
    return "%d replays of %d rows: none written unless asked for, %d with --write-plc or --plain" % (len(CASES), len(rows), written)
