"""A peer of the readers of feeds: a logger that says what a test wants, also what no logger says."""
import json
import os
import socket
import threading
import time

NOW = [1_700_000_000, 250, 0, 0]
HELLO = {"type": "hello", "feed": 1, "name": "kiln", "vastra": "0.1.0", "configuration": "/etc/vastra/kiln.json", "pid": 7,
         "started": NOW, "period": 500, "variables": ["x", "y"], "stages": {"nodes": ["N"]}, "later": {"a": [1]}}
STATE = {"type": "state", "state": "running", "since": NOW, "reason": "", "nodes": [{"name": "N", "up": True, "since": NOW}],
         "writes": [], "folders": [{"path": "/var", "free": 1_500_000_000}, {"path": "/gone", "free": None}], "unsaved": [],
         "lastError": None, "lastSample": NOW, "lastSampleAge": 0.25}
LEDGER = {"name": "All", "kind": "output", "offered": 100, "unwanted": 10, "taken": 90, "recovered": 0, "onDisk": 60, "rotated": 5,
          "inJournal": 20, "inMemory": 10, "lost": 0, "losses": []}
COUNTS = {"type": "counts", "read": 100, "failedReads": 3, "late": 2, "scans": 103, "logs": {"closed": 4, "failed": 1},
          "failedWrites": {"smart": 0, "outputs": 1, "summaries": 0, "plcWrite": 0, "trend": 0}, "ledger": [LEDGER]}
MESSAGE = {"type": "message", "number": 1, "time": NOW, "severity": "error", "function": "read", "link": "CPlcLink",
           "name": "Simulator (N)", "text": "Timeout error."}


def lines(*trees):
    return b"".join(json.dumps(tree).encode() + b"\n" for tree in trees)


WELL = lines(HELLO, {"type": "later"}, STATE, COUNTS)


class FakeFeed:
    """Sends parts, one after the other, to each connection; a function yields parts. Then closes if it is told to."""

    def __init__(self, path, parts, closes=False, kind=socket.SOCK_STREAM, accepts=True):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        self.parts, self.closes, self.asked, self.open = parts, closes, [], []
        self.socket = socket.socket(socket.AF_UNIX, kind)
        self.socket.bind(path)
        if kind != socket.SOCK_DGRAM:
            self.socket.listen(64 if accepts else 0)
        if accepts and kind == socket.SOCK_STREAM:
            threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            try:
                connection = self.socket.accept()[0]
            except OSError:
                return
            self.open.append(connection)
            for task in self.answer, self.hear:
                threading.Thread(target=task, args=(connection,), daemon=True).start()

    def answer(self, connection):
        try:
            for part in self.parts() if callable(self.parts) else [self.parts]:
                connection.sendall(part)
            if self.closes:
                connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass

    def hear(self, connection):
        try:
            self.asked.append(json.loads(connection.makefile().readline()))
        except (OSError, ValueError):
            pass

    def requests(self, count):
        end = time.monotonic() + 10
        while len(self.asked) < count and time.monotonic() < end:
            time.sleep(.01)
        return self.asked

    def stop(self):
        for one in [self.socket, *self.open]:
            try:
                one.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
            one.close()
