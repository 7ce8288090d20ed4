"""Claims on plants whose devices come, go and hang, and on drivers that do not return."""
import asyncio
import json
import math
import os
import random
import resource
import signal
import subprocess
import threading
import time

from logger import compile_driver
from logs import Failed, NotRun
from supervisor import Service

PATIENCE, CLOSE_WITHIN = 2, 2
WATCHDOG = 1  # of a service: shorter than what a driver is waited for


class Plant:
    """Modbus devices, each with an address of its own. A device gives each read that it answers the next number. It answers,
    refuses (nobody listens at its port) or hangs (it takes requests and says nothing)."""

    def __init__(self, count):
        self.states, self.numbers = ["answers"] * count, [0] * count
        self.servers, self.connections = [None] * count, [set() for _ in range(count)]
        self.ports = [0] * count
        self.loop = asyncio.new_event_loop()
        threading.Thread(target=self.loop.run_forever, daemon=True).start()
        self.call(self.listen_all())

    def call(self, work):
        return asyncio.run_coroutine_threadsafe(work, self.loop).result(60)

    async def listen_all(self):
        for index in range(len(self.states)):
            await self.listen(index)

    async def listen(self, index):
        server = await asyncio.start_server(lambda reader, writer: self.serve(index, reader, writer), "127.0.0.1", self.ports[index])
        self.servers[index], self.ports[index] = server, server.sockets[0].getsockname()[1]

    async def serve(self, index, reader, writer):
        self.connections[index].add(writer)
        try:
            while head := await reader.readexactly(12):
                while self.states[index] == "hangs":
                    await asyncio.sleep(0.05)
                self.numbers[index] += 1
                number = self.numbers[index]
                size = 2 * head[11]  # the driver asks a device that was away for one register
                writer.write(head[:4] + bytes((0, 3 + size, head[6], 4, size)) + number.to_bytes(4, "big")[:size])
        except (asyncio.IncompleteReadError, ConnectionError):
            pass
        self.connections[index].discard(writer)
        writer.close()

    async def change(self, index, state):
        if self.states[index] == "refuses":
            await self.listen(index)
        self.states[index] = state
        if state == "refuses":
            self.servers[index].close()
            for writer in self.connections[index]:
                writer.transport.abort()

    def set(self, index, state):
        self.call(self.change(index, state))

    def nodes(self):
        return [{"nodeName": "N%d" % i, "driver": {"plcType": 9002, "text1": "127.0.0.1:%d" % port, "station": 1,
                                                   "text2": "i0: u32", "timeOut": 500},
                 "varNames": ["V%d" % i], "absent": "nan", "aliveVar": "A%d" % i} for i, port in enumerate(self.ports)]


class Run:
    def __init__(self, work, name, nodes, period, plc_write=(), options=(), environment={}):
        self.folder = os.path.join(work, name)
        os.makedirs(self.folder)
        names = [name for node in nodes for name in (*node["varNames"], node["aliveVar"])]
        with open(self.folder + ".json", "w") as file:
            json.dump({"input": {"scanPeriod": period, "plcNodes": nodes}, "plcWrite": {"nodes": list(plc_write)},
                       "outputs": [{"enableText": "WriteToLog = 1;", "varNames": names, "saveCsv": 1, "maxSamples": 200,
                                    "directory": self.folder}]}, file)
        self.errors = open(self.folder + ".err", "w+")
        self.process = Service(
            [os.environ["VASTRA"], "run", self.folder + ".json", "--json", "--patience", str(PATIENCE), "--close-within",
             str(CLOSE_WITHIN), *options], None, WATCHDOG, {**os.environ, **environment}, stdout=subprocess.PIPE,
            stderr=self.errors).start().process

    def stop(self, slack):
        """Ends the run by SIGTERM. Returns the counts, and how long it took. Failed if the ledger or the log is wrong."""
        begin = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        try:
            out, _ = self.process.communicate(timeout=120)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise Failed("no end 120 s after SIGTERM: " + self.said()[-500:])
        took = time.monotonic() - begin
        if self.process.returncode or took > PATIENCE + CLOSE_WITHIN + slack:
            raise Failed("status %d, %.1f s after SIGTERM: %s" % (self.process.returncode, took, self.said()[-1000:]))
        counts = json.loads(out)
        ledger = counts["ledger"][0]
        if (ledger["taken"], ledger["onDisk"]) != (counts["read"], counts["read"]) or len(self.rows()) != counts["read"]:
            raise Failed("%d read, %d rows, %s" % (counts["read"], len(self.rows()), ledger))
        return counts, took

    def said(self):
        self.errors.seek(0)
        return self.errors.read()

    def rows(self):
        rows = []
        for name in sorted(os.listdir(self.folder)):
            if name.endswith("h.csv"):
                with open(os.path.join(self.folder, name)) as file:
                    rows += [[float(value) for value in line.split(",")[1:-1]] for line in file.read().splitlines()[1:]]
        return rows


def check(rows, good, held=()):
    """Failed if a value of a good node is missing, or one of another node is wrong. Returns the number of values."""
    last = dict.fromkeys(held, math.nan)
    for number, row in enumerate(rows, 1):
        for index, (value, alive) in enumerate(zip(row[::2], row[1::2])):
            if index in good:
                if (value, alive) != (number, 1):
                    raise Failed("row %d: good node %d: %s, alive %d" % (number, index, value, alive))
            elif value <= last.get(index, 0) or math.isnan(value) if alive else str(value) != str(last.get(index) if index in held else math.nan):
                raise Failed("row %d: node %d: %s after %s, alive %d" % (number, index, value, last.get(index), alive))
            elif alive:
                last[index] = value
    return len(rows) * len(good)


def plant(run):
    """Ten devices of which five come, go and hang, with a stop at any moment."""
    chance, values, scans, changes, slow, longest = random.Random(run.seed), 0, 0, 0, 0, 0
    for part in range(max(1, run.count // 60)):
        devices = Plant(10)
        logger = Run(run.work, "plant%d" % part, devices.nodes(), 100)
        end = time.monotonic() + min(run.count, 60) + chance.uniform(0, 1)
        while time.monotonic() < end:
            time.sleep(chance.uniform(0, 1))
            devices.set(5 + chance.randrange(5), chance.choice(("answers", "refuses", "hangs")))
            changes += 1
        counts, took = logger.stop(run.slack + 0.5)
        values += check(logger.rows(), range(5))
        scans, longest = scans + counts["read"], max(longest, took)
        said = logger.said()
        slow += counts["late"]
        if counts["failedReads"] or slow > 8 * changes or run.count >= 60 and "took longer than the period" in said:
            raise Failed("%s: %s" % (counts, said[-1000:]))
    return "%d scans, %d changes: %d values of good nodes, none missing; %d scans late, with the node named; a stop took at most %.1f s" % (
        scans, changes, values, slow, longest)


def thousand(run):
    """A thousand nodes with half of them dead."""
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    if hard < 4096:
        raise NotRun("not run: at most %d open files" % hard)
    resource.setrlimit(resource.RLIMIT_NOFILE, (4096, hard))
    devices = Plant(1000)
    for index in range(500, 1000):
        devices.set(index, "refuses" if index % 2 else "hangs")
    logger = Run(run.work, "thousand", devices.nodes(), 2000)
    time.sleep(run.count)
    counts, took = logger.stop(run.slack + 2)
    values = check(logger.rows(), range(500))
    return "%d scans of 2 s, %d late, %d values of 500 good nodes, none missing; the stop took %.1f s" % (
        counts["read"], counts["late"], values, took)


def hanging(run):
    """A driver that does not return from each of its calls, beside a node that answers; SIGTERM at any moment."""
    modules, chance, longest, rows = os.path.join(run.work, "drivers"), random.Random(run.seed), 0, 0
    os.makedirs(modules)
    compile_driver(os.path.join(modules, "hanging.so"), 9700, "counts")
    bad = {"nodeName": "Bad", "driver": {"plcType": 9700}, "varNames": ["X"], "absent": "hold", "aliveVar": "XAlive"}
    written = {"nodeName": "Set", "driver": {"plcType": 9700}, "varNames": ["X"]}
    for number in range(run.count):
        call = ("open", "read", "write", "close")[number % 4]
        devices = Plant(1)
        logger = Run(run.work, "%s%d" % (call, number), devices.nodes() + [bad], 50, [written],
                     ["--service", "--driver-folder", modules], {"HANGS": call, "HANGS_AFTER": str(chance.randrange(4))})
        while len(logger.said()) == 0 and devices.numbers[0] == 0:
            time.sleep(0.01)
        time.sleep(chance.uniform(0, 2 * PATIENCE))
        _, took = logger.stop(run.slack + 0.5)
        rows += check(logger.rows(), range(1), [1])
        longest = max(longest, took)
    return "%d runs with SIGTERM at any moment: %d rows, none missing, the process gone after at most %.1f s of %d" % (
        run.count, rows, longest, PATIENCE + CLOSE_WITHIN)
