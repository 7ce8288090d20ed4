"""The packages in a bare Debian 12: install, upgrade under a logger that runs, external project, remove, purge."""
import glob
import json
import os
import re
import shutil
import signal
import subprocess
import time

from logs import Failed, NotRun

ARCHITECTURE = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True).stdout.strip()
PACKAGES, BASE = "build/packages/*_%s.deb" % ARCHITECTURE, "build/debian"
KEPT = ["/etc/vastra/kiln.json", "/var/lib/vastra/kiln"]
EXTERNAL = """cp -r /tests /build && cmake -G Ninja -S /build/install -B /build/out -DCMAKE_BUILD_TYPE=Release >/dev/null &&
cmake --build /build/out >/dev/null && /build/out/scan_on_engine && /build/out/scan_on_vastra && QT_QPA_PLATFORM=offscreen /build/out/windows"""


class Debian:
    """A Debian 12 of its own below the folder work."""

    def __init__(self, work):
        self.root = os.path.join(work, "root")
        if not os.path.exists(BASE):
            sites = subprocess.run(["apt-get", "indextargets", "--format", "$(SITE) $(CODENAME)", "Created-By: Packages"],
                                   capture_output=True, text=True).stdout
            site = re.search(r"^(\S+) bookworm$", sites, re.M)
            if not site:
                raise NotRun("not run: apt has no source of Debian 12")
            made = subprocess.run(["debootstrap", "--variant=minbase", "bookworm", BASE + ".part", site[1]], capture_output=True, text=True)
            if made.returncode:
                raise Failed("debootstrap: " + made.stdout[-300:])
            os.rename(BASE + ".part", BASE)
        subprocess.run(["cp", "-a", BASE, self.root], check=True)
        shutil.copy("/etc/resolv.conf", self.path("/etc/resolv.conf"))
        subprocess.run(["mount", "-t", "proc", "proc", self.path("/proc")], check=True)

    def path(self, path):
        return self.root + path

    def start(self, command, **options):
        return subprocess.Popen(["chroot", self.root, "sh", "-c", command], text=True, **options,
                                env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8"})

    def run(self, command):
        with self.start(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            out, err = process.communicate()
        if process.returncode:
            raise Failed("%s: status %d: %s" % (command, process.returncode, (out + err)[-500:]))
        return out


def earlier(package, folder):
    """The same package with an earlier version."""
    tree = os.path.join(folder, "tree")
    subprocess.run(["dpkg-deb", "-R", package, tree], check=True)
    with open(tree + "/DEBIAN/control") as file:
        control = re.sub(r"(?m)^Version: .*", "Version: 0.0.1", file.read())
    with open(tree + "/DEBIAN/control", "w") as file:
        file.write(control)
    subprocess.run(["dpkg-deb", "--root-owner-group", "-b", tree, folder + "/earlier.deb"], check=True, stdout=subprocess.DEVNULL)


def upgrade(debian, new):
    """Upgrades under a logger that runs. Returns its rows."""
    logger = debian.start("exec setpriv --reuid vastra --regid vastra --clear-groups vastra run --root /var/lib/vastra/kiln "
                          "--create-folders --period 10 --json /etc/vastra/kiln.json", stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    time.sleep(2)
    debian.run("apt-get install -q -y " + new)
    time.sleep(1)
    if logger.poll() is not None:
        raise Failed("the logger ended during the upgrade")
    logger.send_signal(signal.SIGTERM)
    account = json.loads(logger.communicate(timeout=60)[0])["ledger"]
    rows = sum(entry["taken"] for entry in account)
    if logger.returncode or not rows or any(entry["onDisk"] != entry["taken"] + entry["recovered"] for entry in account):
        raise Failed("rows that are not on the disk after the upgrade: %s" % account)
    return rows


def packages(run):
    owner = re.findall(r"\d+", open("/proc/self/uid_map").read())
    if os.geteuid() or owner[:2] != ["0", "0"] or not shutil.which("debootstrap"):
        raise NotRun("not run: needs root and debootstrap")
    if not glob.glob(PACKAGES) and subprocess.run(["script/package"]).returncode:
        raise Failed("script/package")
    debian = Debian(run.work)
    for package in glob.glob(PACKAGES):
        shutil.copy(package, debian.root)
    shutil.copytree("tests", debian.path("/tests"))
    shutil.copytree("docs", debian.path("/docs"))
    earlier(glob.glob(debian.path("/vastra_*.deb"))[0], debian.root)
    debian.run("apt-get update -q && apt-get install -q -y --no-install-recommends /earlier.deb")
    debian.run("vastra init kiln && install -d -o vastra -g vastra -m 750 /var/lib/vastra/kiln && "
               "chmod 644 /etc/vastra/kiln.json")
    kept = open(debian.path(KEPT[0])).read()
    rows = upgrade(debian, "/vastra_*.deb")
    if kept != open(debian.path(KEPT[0])).read() or " 0.0.1 " in debian.run("dpkg-query -W -f ' ${Version} ' vastra"):
        raise Failed("the upgrade changed the configuration, or not the version")
    debian.run("apt-get install -q -y --allow-downgrades /earlier.deb && apt-get install -q -y /vastra_*.deb")
    debian.run("cd /tmp && vastra demo && vastra check demo-logs/demo.json && vastra drivers | grep Modbus")
    debian.run("apt-get install -q -y --no-install-recommends /vastra-desktop_*.deb /libvastra0_*.deb /libvastra-dev_*.deb g++ cmake "
               "ninja-build && vastra-desktop --version")
    debian.run(EXTERNAL)
    files = debian.run("dpkg -L vastra").split()
    for step in ["remove", "purge"]:
        debian.run("apt-get %s -q -y vastra" % step)
        left = [path for path in files if os.path.lexists(debian.path(path)) and not os.path.isdir(debian.path(path))]
        if left or any(not os.path.exists(debian.path(path)) for path in KEPT) or not glob.glob(debian.path(KEPT[1] + "/*/*.rph")):
            raise Failed("%s: left: %s; kept: %s" % (step, left, os.listdir(debian.path("/var/lib/vastra"))))
    debian.run("getent passwd vastra")
    return "upgraded under a logger with %d rows, all on the disk; configuration, logs and user are kept by remove and purge" % rows
