"""The claims of a fleet, with three servers on this machine. tests/fleet has the cases."""
import os
import re
import subprocess
import sys

from logs import Failed

PROMISES = {
    "kills": "Shipper, archive and servers killed %(count)d times at random moments while files come and change",
    "older": "A file of the backlog that is replaced while it is sent",
    "partition": "The archive stopped for longer than the servers wait for it, and the shipper too",
    "wiped": "All servers wiped while chunks and receipts wait, and a version that comes back",
    "full_disk": "The archive's disk full, and with room again",
    "damaged": "Chunks of another client, damaged, false and with names that lead elsewhere, in the places of good ones",
    "links": "Links and files in the way in the archive",
    "removed": "Files are removed only with the receipt of their own version, and later logs of a name stored beside the earlier; names in any encoding",
    "clock": "A node's clock wrong by years",
    "permissions": "A hostile node that forges receipts and speaks for another",
    "tls_leaf": "TLS, signed credentials and a leaf server with a domain of its own, while one of three servers has stopped",
    "basics": "A stream of the servers that is full",
}


def fleet(run):
    programs = os.path.dirname(os.environ["VASTRA"])
    if not os.path.exists(os.path.join(programs, "vastra-fleet")):
        for build in (["script/bootstrap", "fleet"], ["script/build", "fleet", "vastra_fleet_program"]):
            if subprocess.run(build, stdout=sys.stderr).returncode:
                raise Failed(" ".join(build))
    environment = os.environ | {"VASTRA_BIN": programs, "FLEET_SEED": str(run.seed), "FLEET_KILLS": str(run.count),
                                "FLEET_TIMES": "1", "TMPDIR": run.work}

    def seen(case, *command):
        ended = subprocess.run([sys.executable, *command], env=environment, capture_output=True, text=True)
        found = re.search(rf"^{case}: (.*)$", ended.stdout, re.MULTILINE)
        if ended.returncode or not found:
            raise Failed("%s: %s" % (case, ended.stderr[-2000:]))
        return found[1]

    rows = [("A fleet's archive equals the files of its nodes. " + promise % {"count": run.count},
             "files at the end: " + seen(case, "tests/fleet/fleet_faults.py", case, "--long")) for case, promise in PROMISES.items()]
    return [*rows, ("A log that a logger closes is in the archive at once", seen("live", "tests/fleet/fleet_live.py"))]
