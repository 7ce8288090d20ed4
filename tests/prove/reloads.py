"""The claim on reloads: a logger under load gets random configurations, good and bad."""
import copy
import json
import os
import random
import time

from device import Device
from logger import start_process
from logs import Failed, Folder
from served import SYNTAX, Served

SIMULATED = {"nodeName": "Simulated", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["More"]}
PLACES = ("A", "B", "C")  # names of the output that changes, and of its folders


def log(name, folder, each, **more):
    return {"name": name, "enableText": "WriteToLog = Row %% %d == 0;" % each, "varNames": ["Row"], "maxSamples": 500,
            "maxLogs": 100000, "directory": folder, "saveRp": 1, **more}


class Reloaded(Served):
    """The output Fixed stays as it is. Another one changes: its name, folder, variables and equation; or it is absent."""

    def __init__(self, work):
        super().__init__(work, Device(), options=())
        self.folders = {name: Folder(os.path.join(work, name)) for name in ("Fixed", *PLACES)}
        self.configuration.update(outputs=[log("Fixed", self.folders["Fixed"].path, 1)], summaries=[])
        self.write(json.dumps(self.configuration))
        self.plans = [(0, 0, lambda row: None)]  # the last row before a reload, the last one before its end, and where
        # the rows after it are logged
        taken = os.path.join(work, "Taken")
        os.makedirs(taken)
        with open(taken + ".json", "w") as file:
            json.dump({"input": {"plcNodes": [SIMULATED]},
                       "outputs": [log("Taken", taken, 1, varNames=["More"], enableText="WriteToLog = 1;")]}, file)
        self.other = start_process([os.environ["VASTRA"], "run", taken + ".json", "--quiet"])
        while not os.listdir(taken) and self.other.poll() is None:
            time.sleep(0.01)

    def another(self, chance):
        """A good configuration, and where it logs a row."""
        fresh, place, each = copy.deepcopy(self.configuration), chance.choice((None, *PLACES)), chance.randrange(1, 4)
        nodes = fresh["input"]["plcNodes"]
        nodes[0]["nodeName"] = chance.choice(("Device", "Other"))
        nodes[1:] = [SIMULATED] if chance.random() < 0.5 else []
        fresh["input"].update(scanPeriod=chance.choice((1, 2, 3)), preNewVars=["Row", "Twice"],
                              preEquationText="Twice = %d * Row;" % chance.randrange(3))
        fresh["outputs"][1:] = [log(
            place, self.folders[place].path, each, saveCsv=chance.randrange(2), maxSamples=chance.randrange(5, 500),
            varNames=["Row", "Twice"][:chance.randrange(1, 3)])] if place else []
        return fresh, lambda row: place if row % each == 0 else None

    def wrong(self, chance):
        """One that is refused, or that does not open."""
        wrong = self.another(chance)[0]
        fault = chance.choice(("syntax", "driver", {"varNames": ["None"]}, {"enableText": "x = ;"}, {"directory": "/proc"},
                               {"directory": os.path.join(self.work, "absent")},
                               {"directory": os.path.join(self.work, "Taken"), "name": "Taken"}))
        if fault == "syntax":
            return chance.choice(SYNTAX)
        if fault == "driver":
            wrong["input"]["plcNodes"][0]["driver"]["plcType"] = 9999
        else:
            wrong["outputs"].append({**log("Wrong", self.work, 1), **fault})
        return wrong

    def change(self, chance):
        """Returns whether the reload was a good one."""
        good, before = chance.random() < 0.6, self.device.count()
        fresh, place = self.another(chance) if good else (self.wrong(chance), None)
        self.reload(fresh, good)
        if good:
            self.configuration = fresh
            self.plans.append((before, self.device.count(), place))
        self.more_rows(chance.randrange(3))
        return good

    def compare(self, counts):
        """Failed unless each row is where the configuration of its moment logs it. Returns the number of rows."""
        rows, last = {name: folder.rows(".rph") for name, folder in self.folders.items()}, self.device.count()
        if rows["Fixed"] != list(range(1, last + 1)) or counts["read"] != last or counts["failedReads"]:
            raise Failed("%d rows, in the log that stays %d: %s" % (last, len(rows["Fixed"]), counts))
        found, end = {row: name for name in PLACES for row in rows[name]}, (last, last, self.plans[-1][2])
        for (_, begin, old), (before, after, new) in zip(self.plans, self.plans[1:] + [end]):
            if not any(all(found.get(row) == (old if row <= moment else new)(row) for row in range(begin + 1, after + 1))
                       for moment in range(before, after + 1)):
                raise Failed("rows %d to %d are in %s" % (begin + 1, after, [*map(found.get, range(begin + 1, after + 1))]))
        for entry in counts["ledger"]:
            if (entry["taken"], entry["onDisk"]) != (len(rows[entry["name"]]),) * 2:
                raise Failed("%d rows are in logs, the ledger says: %s" % (len(rows[entry["name"]]), entry))
        return last, len(found)


def reload(run):
    chance, logger = random.Random(run.seed), Reloaded(run.work)
    logger.start()
    logger.wait_for_rows()
    good = sum(logger.change(chance) for _ in range(run.count))
    rows, changing = logger.compare(logger.stop())
    logger.other.kill()
    return "%d good and %d bad ones: %d rows, each in the log that stays; %d rows in logs that came and went, none missing, none " \
        "twice" % (good, run.count - good, rows, changing)
