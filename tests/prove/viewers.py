"""The claim that the page's server brings each sample to many browsers, at once and at the logger's cost of nothing."""
import contextlib
import json
import os
import selectors
import statistics
import struct
import socket
import subprocess
import sys
import time
import urllib.parse
import urllib.request

import feeds
import history_logs
from logs import Failed

BROWSERS, PERIOD, LATEST, CORE, GROWTH = 50, 100, 0.2, 0.05, 4 << 20  # ms, s, of a core, bytes
LOGS, ROWS, CHART = 10_000, 100, 0.05  # s of the server's processor
CONFIGURATION = {
    "input": {"scanPeriod": PERIOD, "plcNodes": [
        {"nodeName": "N", "driver": {"plcType": 9001, "text1": ",".join(["sine"] * 50)}, "varNames": ["V%d" % i for i in range(50)]}]},
    "outputs": [{"enableText": "WriteToLog = 1;", "varNames": ["V0", "V1"], "saveRp": 1, "directory": "logs", "maxSamples": 600, "maxLogs": 100}]}


def start(name, command, **options):
    """A process, and its folder in /proc."""
    mark = "VIEWERS_%s=%d" % (name, os.getpid())
    process = subprocess.Popen(command, env={**os.environ, **dict([mark.split("=")])}, **options)
    return process, feeds.in_proc(mark.encode())


def processor(process):
    """Seconds that a process has used."""
    with open(process + "/stat") as file:
        fields = file.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def resident(process):
    with open(process + "/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


class Browser:
    """Reads the stream of samples. The clock is that of the logger, so that a line tells how old its sample is."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port))
        self.socket.sendall(b"GET /api/v1/stream?sample=kiln HTTP/1.1\r\nHost: localhost\r\n\r\n")
        self.input, self.ages, self.first, self.last = b"", [], None, None

    def read(self):
        data = self.socket.recv(1 << 18)
        if not data:
            raise Failed("the server has ended a stream")
        now = time.time()
        *lines, self.input = (self.input + data).split(b"\n")
        for line in lines:
            if line.startswith(b"data: ") and b'"number"' in line:
                sample = json.loads(line[6:])
                self.first, self.last = self.first or sample["number"], sample["number"]
                self.ages.append(now - sample["time"] / 1000)


def poll(port, count):
    """What pages ask for again and again."""
    base = "http://127.0.0.1:%d/api/v1/loggers/kiln/" % port
    with urllib.request.urlopen(base + "range") as answer:
        span = json.load(answer)
    query = urllib.parse.urlencode({"from": span["from"], "to": span["to"], "parts": 1000, "vars": "V0"})
    for _ in range(count):
        for path in ("buckets?" + query, "logs?from=0&to=%d" % (1 << 50), "sample"):
            with urllib.request.urlopen(base + path) as answer:
                answer.read()


def chart(run, web):
    """Seconds of the server's processor for the parts of one variable over all logs of a folder with a digest."""
    old, names, begin = os.path.join(run.work, "old"), tuple(b"V%d" % i for i in range(4)), 10**12
    os.makedirs(old)
    for i in range(LOGS):
        rows = [history_logs.row_of(begin + 1000 * (i * ROWS + k), struct.pack("<4f", i, k, -i, -k)) for k in range(ROWS)]
        with open(os.path.join(old, "%05d.rph" % i), "wb") as file:
            file.write(history_logs.bytes_of(history_logs.Log(names, rows)))
    command = [os.environ["VASTRA"], "convert", old, "--step", "1d", "--digest", "--out", os.path.join(run.work, "days.csv")]
    if subprocess.run(command, stdout=subprocess.DEVNULL).returncode:
        raise Failed(" ".join(command))
    with serving(web, "--dir", run.work, "--folder", "old=" + old) as (server, port):
        base = "http://127.0.0.1:%d/api/v1/loggers/old/" % port
        with urllib.request.urlopen(base + "range") as answer:
            span = json.load(answer)
        if span != {"from": begin, "to": begin + 1000 * (LOGS * ROWS - 1) + 1}:
            raise Failed("the range is %s" % span)
        used, elapsed = processor(server), []
        for _ in range(30):
            start = time.monotonic()
            with urllib.request.urlopen(base + "buckets?parts=1000&vars=V0") as answer:
                found = json.load(answer)["variables"][0]
            elapsed.append(time.monotonic() - start)
            if (found["least"][0], found["greatest"][-1]) != (0, LOGS - 1):
                raise Failed("the parts are wrong")
        return (processor(server) - used) / 30, statistics.median(elapsed)


@contextlib.contextmanager
def serving(web, *args):
    server, place = start("SERVER", [web, "--listen", "127.0.0.1:0", *args], stdout=subprocess.PIPE, text=True)
    try:
        yield place, int(server.stdout.readline().strip().strip("/").rsplit(":", 1)[1])
    finally:
        server.terminate()
        server.wait()


def program():
    web = os.path.join(os.path.dirname(os.environ["VASTRA"]), "vastra-web")
    for build in (["script/bootstrap", "web"], ["script/build", "web", "vastra_web_program"]):
        if not os.path.exists(web) and subprocess.run(build, stdout=sys.stderr).returncode:
            raise Failed(" ".join(build))
    return web


def viewers(run):
    web = program()
    os.makedirs(os.path.join(run.work, "kiln"))
    os.makedirs(os.path.join(run.work, "logs"))
    with open(os.path.join(run.work, "kiln.json"), "w") as file:
        json.dump(CONFIGURATION, file)
    process, logger = start("LOGGER", [os.environ["VASTRA"], "run", "kiln.json", "--feed", "kiln/feed", "--quiet"], cwd=run.work)
    try:
        time.sleep(2)
        before, seconds = processor(logger), run.count
        time.sleep(seconds)
        alone = (processor(logger) - before) / seconds
        with serving(web, "--dir", run.work) as (server, port):
            seen = watch(logger, server, port, seconds, alone)
    finally:
        process.terminate()
        process.wait()
    used, elapsed = chart(run, web)
    seen += "; a chart of one variable over %d logs with a digest took %.0f ms of the server's processor, %.0f ms in all" % (
        LOGS, 1000 * used, 1000 * elapsed)
    if used > CHART:
        raise Failed(seen)
    return seen


def watch(logger, server, port, seconds, alone):
    time.sleep(1)
    poll(port, 50)
    browsers, wait = [Browser(port) for _ in range(BROWSERS)], selectors.DefaultSelector()
    for browser in browsers:
        wait.register(browser.socket, selectors.EVENT_READ, browser)
    begin, used, served, size, polled = time.monotonic(), processor(logger), processor(server), resident(server), 0
    while time.monotonic() - begin < seconds:
        for key, _ in wait.select(0.5):
            key.data.read()
        if time.monotonic() - begin > polled:  # once a second, between two samples
            polled += 1
            poll(port, 1)
    elapsed = time.monotonic() - begin
    used, served, growth = ((processor(logger) - used) / elapsed, (processor(server) - served) / elapsed, resident(server) - size)
    missed = sum(one.last - one.first + 1 - len(one.ages) for one in browsers)
    ages = sorted(age for one in browsers for age in one.ages[10:])
    late = sum(age > LATEST for age in ages) / len(ages)
    seen = ("%d browsers, %d samples each, %d missed; after %.0f ms in the middle and %.0f ms at 99 in 100; the logger used "
            "%.1f %% of a core, without the server %.1f %%, the server %.1f %%; it grew by %.1f MB" % (
                BROWSERS, len(browsers[0].ages), missed, 1000 * ages[len(ages) // 2], 1000 * ages[len(ages) * 99 // 100],
                100 * used, 100 * alone, 100 * served, growth / (1 << 20)))
    if late > 0.01 or missed > len(ages) // 100 or used - alone > CORE or growth > GROWTH:
        raise Failed(seen)
    return seen
