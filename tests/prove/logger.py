"""The logger under test: a configuration with three logs of the device's rows, and its process."""
import atexit
import json
import os
import subprocess
import time

from device import node
from logs import Failed, Folder, NotRun

EACH = 5  # rows of the device in a row of the summary
HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
FORMS = (("binary", ".rph"), ("text", "h.csv"), ("summary", ".rpd"), ("summary", "d.csv"))


RUNNING = []


def start_process(command, **options):
    """A process that ends with the claims. They run side by side, so each keeps its own."""
    process = subprocess.Popen(command, **options)
    RUNNING.append(process)
    return process


@atexit.register
def kill_all():
    for process in RUNNING:
        process.kill()


class Logger:
    """Three folders in place: binary has .rph, text h.csv, summary .rpd and d.csv with each fifth row. The first
    variable of all is the number that the device has given the row."""

    def __init__(self, work, device, period=10, samples=30, logs=100000, place="", width=1, options=(), environment={}):
        self.work, self.device, self.options = work, device, options
        self.environment = {**os.environ, "TZ": "UTC", **environment}
        self.samples, self.logs, self.process = samples, logs, None
        self.folders = {name: Folder(os.path.join(work, place, name)) for name in ("binary", "text", "summary")}
        names = ["Row"] + ["More%d" % i for i in range(1, width)]
        log = {"enableText": "WriteToLog = 1;", "varNames": names, "maxSamples": samples, "maxLogs": logs}
        summary = {"enableText": "SampleIsValid = 1; WriteToSummary = Row %% %d == 0;" % EACH,
                   "summaryText": "Last = Row;", "varNames": ["Last"], "saveRp": 1, "saveCsv": 1,
                   "maxSamples": samples, "maxSummaries": logs, "name": "Each fifth"}
        configuration = {
            "input": {"scanPeriod": period, "plcNodes": [node(device)], "preprocess": 1, "preNewVars": names,
                      "preEquationText": " ".join("%s = Row;" % name for name in names[1:]) or "Row = Row;"},
            "outputs": [{**log, "name": "Binary", "directory": self.folders["binary"].path, "saveRp": 1},
                        {**log, "name": "Text", "directory": self.folders["text"].path, "saveCsv": 1}],
            "summaries": [{**summary, "directory": self.folders["summary"].path}]}
        with open(os.path.join(work, "logger.json"), "w") as file:
            json.dump(configuration, file)

    def run(self, errors):
        """Returns a new process of the logger."""
        return start_process([os.environ["VASTRA"], "run", "logger.json", "--json", *self.options], cwd=self.work, text=True,
                             env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors)

    def start(self, errors=None):
        """Starts and does not wait. errors: for standard error, in place of a file in the memory."""
        self.first = self.device.count() + 1
        self.errors = os.fdopen(os.memfd_create("messages"), "w+")  # no disk can make a message wait
        self.process = self.run(errors or self.errors)

    def wait_for_rows(self, count=1):
        """Waits until the run has read so many rows."""
        end = time.monotonic() + 60 + count
        while self.device.count() < self.first + count - 1:
            if self.process.poll() is not None or time.monotonic() > end:
                raise Failed("no row is read: " + self.messages())
            time.sleep(0.002)

    def more_rows(self, count):
        self.wait_for_rows(self.device.count() - self.first + 1 + count)

    def said(self):
        self.errors.seek(0)
        return self.errors.read()

    def messages(self):
        return self.said()[-1000:]

    def kill(self):
        """Returns how long before the kill each row of the run was kept."""
        if self.process.poll() is not None:
            raise Failed("the logger ended by itself: " + self.messages())
        moment = time.monotonic()
        self.process.kill()
        self.process.communicate()
        self.device.settle()
        self.errors.close()
        return {row: moment - then for row, then in self.device.kept_before(self.first, moment)}

    def stop(self):
        """Ends the run by SIGTERM. Returns what --json prints, after a check of its ledger and of the status."""
        self.process.terminate()
        out, _ = self.process.communicate(timeout=300)
        if self.process.returncode not in (0, 1):
            raise Failed("status %d: %s" % (self.process.returncode, self.messages()))
        counts = json.loads(out)
        for entry in counts["ledger"]:
            if (entry["offered"] != entry["unwanted"] + entry["taken"] or entry["taken"] + entry["recovered"] !=
                    entry["onDisk"] + entry["inJournal"] + entry["inMemory"] + entry["lost"]):
                raise Failed("the ledger of %s has a wrong sum: %s" % (entry["name"], entry))
        if self.process.returncode != any(entry["lost"] for entry in counts["ledger"]):
            raise Failed("status %d: %s" % (self.process.returncode, self.messages()))
        self.last = self.messages()
        self.errors.close()
        return counts

    def read(self):
        """Failed if a log is not whole."""
        for folder in self.folders.values():
            folder.read()

    def rows(self, in_order=True):
        """The rows in the logs of each form. Failed if a log is not whole, or a row is there twice or out of order."""
        return {form: self.folders[form[0]].rows(form[1], in_order) for form in FORMS}

    def left(self):
        """Failed if there is anything beside logs and locks."""
        for folder in self.folders.values():
            if folder.others():
                raise Failed("%s: left: %s: %s" % (folder.path, ", ".join(folder.others()[:5]), self.last))


def compile_library(path, source, *options):
    try:
        subprocess.run(["cc", "-shared", "-fPIC", "-O1", "-o", path, os.path.join(HERE, source), *options], check=True)
    except OSError as fault:
        raise NotRun("not run: cc: %s" % fault.strerror) from None


def compile_driver(path, number, fault):
    """A module with this ID and fault."""
    compile_library(path, "../support/faulty_driver.c", "-fexceptions", "-D_GNU_SOURCE", "-I" + ROOT, "-DMODULE_ID=%d" % number,
                    '-DMODULE_NAME="Faulty"', '-DMODULE_FAULT="%s"' % fault, "-lgcc_s")


def shim(work, **settings):
    """The environment that preloads shim.c with these settings."""
    library = os.path.join(work, "shim.so")
    compile_library(library, "shim.c")
    return {"LD_PRELOAD": library, **{name: str(value) for name, value in settings.items()}}


def wants(form, row):
    return form[0] != "summary" or row % EACH == 0


def missing(logger, kept):
    """Which of the kept rows are in no log, by form: {form: {row: age}}."""
    found = {form: set(rows) for form, rows in logger.rows().items()}
    return {form: {row: age for row, age in kept.items() if wants(form, row) and row not in found[form]}
            for form in FORMS}
