#!/usr/bin/env python3
"""What must not lose, double or change a log on its way into the archive: kills, partitions, wiped servers, a full
disk, damaged and forged messages. Each case ends with the archive equal to the nodes' files.

    fleet_faults.py [CASE...]      all cases without names; --long makes more rounds
"""
import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from fleet_parts import BIN, SUFFIXES, Client, Cluster, Fleet, Key, Process, free_ports, openssl, wait

sys.path.append(str(pathlib.Path(__file__).parent.parent / "prove"))
from logs import crc32c  # noqa: E402

LONG = "--long" in sys.argv
CHUNK = 256 << 10


def token(text):
    return "".join(chr(b) if chr(b).isascii() and (chr(b).isalnum() or b in b"-_") else f"={b:02X}"
                   for b in text.encode())


def log_subject(kind, node, key, content, chunk=None):
    subject = f"vastra.{kind}.plant.{token(node)}.{token(key)}.{hashlib.sha256(content).hexdigest()}"
    return subject if chunk is None else f"{subject}.{chunk}"


def fill(folder, count, rng, sizes=(0, 1, 900, 30_000, 33_000, CHUNK, CHUNK + 1, 700_000)):
    for i in range(count):
        (folder / f"log {rng.random()}.rph").write_bytes(rng.randbytes(sizes[i % len(sizes)]))


def kills(fleet, rng):
    """Shipper, archive and servers are killed at random moments while files come and change."""
    logs = fleet.add_node("a")
    fleet.start_archive()
    fleet.start_shipper("a")
    for _ in range(int(os.environ.get("FLEET_KILLS", 8))):
        fill(logs, 8, rng)
        changed = rng.choice(list(logs.iterdir()))
        changed.with_suffix(".part").write_bytes(rng.randbytes(rng.randrange(600_000)))
        changed.with_suffix(".part").rename(changed)
        victim = rng.choice([fleet.shippers["a"], fleet.archive, *fleet.cluster.servers])
        time.sleep(rng.random())
        victim.kill()
        time.sleep(rng.random() * (3 if LONG else 0.3))
        victim.start()
    fleet.wait_complete(240)


def partition(fleet, rng):
    """The archive hears nothing for longer than the servers wait for it, and the shipper does the same."""
    fleet.add_node("a")
    fleet.start_archive()
    fleet.start_shipper("a")
    fill(fleet.nodes["a"], 40, rng)
    time.sleep(0.5)
    for process, seconds in ((fleet.archive, 75 if LONG else 8), (fleet.shippers["a"], 20 if LONG else 3)):
        process.signal(signal.SIGSTOP)
        fill(fleet.nodes["a"], 8, rng)
        time.sleep(seconds)
        process.signal(signal.SIGCONT)
    fleet.wait_complete(120)


def wiped(fleet, rng):
    """All servers lose everything while chunks and receipts wait; a version that came before comes again."""
    logs = fleet.add_node("a")
    fill(logs, 24, rng)
    first = (logs / "same.rph")
    first.write_bytes(b"first")
    fleet.start_shipper("a")
    fleet.start_archive()
    fleet.wait_complete(60)
    fleet.archive.kill()
    first.write_bytes(b"second")
    fill(logs, 240, rng, (300_000,))
    wait(lambda: Client(fleet.cluster.ports[0]).stream("VASTRA_LOGS")["messages"] > 20, 30, "chunks wait")
    fleet.cluster.wipe()
    fleet.cluster.init()
    fleet.archive.start()
    fleet.wait_complete(240)
    first.write_bytes(b"first")
    fleet.wait_complete(150)


def full_disk(fleet, rng):
    """The disk of the archive is full, and has room again."""
    fleet.archive_folder.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2m", "none", fleet.archive_folder], check=True)
    try:
        logs = fleet.add_node("a")
        fill(logs, 60, rng, (30_000, 33_000, 200_000))
        ballast = fleet.archive_folder / ".ballast"
        ballast.write_bytes(bytes(1_500_000))
        fleet.start_archive("--state", fleet.folder / "record")
        fleet.start_shipper("a")
        wait(lambda: "No space left" in fleet.archive.text(), 60, "the archive says that the disk is full")
        assert fleet.archive.is_up()
        subprocess.run(["mount", "-o", "remount,size=90m", fleet.archive_folder], check=True)
        fleet.wait_complete(120)
        ballast.unlink()
    finally:
        if fleet.archive and fleet.archive.is_up():
            fleet.archive.kill(signal.SIGTERM)
        fleet.snapshot = [fleet.missing(), fleet.extra()]
        subprocess.run(["umount", fleet.archive_folder], check=True)


def damaged(fleet, rng):
    """Another client's chunks take the places of the node's before it sends them."""
    logs = fleet.add_node("a")
    whole, parts, mixed = rng.randbytes(50_000), rng.randbytes(CHUNK + 1000), rng.randbytes(CHUNK + 9)
    for name, content in (("whole", whole), ("parts", parts), ("mixed", mixed)):
        (logs / f"{name}.rph").write_bytes(content)
    client = Client(fleet.cluster.ports[0])

    def inject(key, content, chunk, data, length=None, size=None):
        head = {"chunk": chunk, "size": len(content) if size is None else size,
                "length": len(data) if length is None else length, "crc32c": crc32c(data)}
        client.ask(log_subject("log", "a", key, content, chunk), json.dumps(head).encode() + b"\n" + data)

    client.ask(log_subject("log", "a", "logs/whole.rph", whole, 0), b"no head at all")
    inject("logs/mixed.rph", mixed, 0, rng.randbytes(CHUNK))           # a good chunk of something else
    inject("logs/parts.rph", parts, 1, b"x" * 5, length=1000)          # short
    inject("logs/parts.rph", parts, 9, b"x" * 5, size=10 * CHUNK - CHUNK + 5)  # another size
    for name in ("..", ".hidden", "a/b", "x\n"):
        client.ask(f"vastra.log.plant.{token(name)}.{token('logs/x.rph')}.{'0' * 64}.0", b"junk")
    for key in ("../../evil.rph", "/evil.rph", "logs/../../../evil.rph", "evil", "logs//x", "a/" + "x" * 256):
        client.ask(log_subject("log", "a", key, b"evil", 0), json.dumps(
            {"chunk": 0, "size": 4, "length": 4, "crc32c": crc32c(b"evil")}).encode() + b"\nevil")
    client.ask("vastra.log.nonsense", b"junk")
    fleet.start_shipper("a")
    wait(lambda: sum(node["sent"]["files"] for node in fleet.status()["nodes"]) == 3, 60, "all are at the servers")
    fleet.start_archive()
    fleet.wait_complete(150)
    wait(lambda: client.stream("VASTRA_LOGS")["messages"] == 0, 60, "the stream is empty")
    assert not list(fleet.folder.rglob("evil*"))


def links(fleet, rng):
    """A link in the archive leads nowhere, and a file in the place of a folder stops nothing else."""
    logs, outside = fleet.add_node("a"), fleet.folder / "outside"
    outside.mkdir()
    there = fleet.archive_folder / "plant" / "a" / "logs"
    there.mkdir(parents=True)
    (there / "deep").symlink_to(outside)
    (there / "one.rph").symlink_to(outside / "target")
    (there / "taken").write_bytes(b"a file")
    (logs / "deep").mkdir()
    (logs / "taken").mkdir()
    for name in ("deep/x.rph", "taken/y.rph", "one.rph", "two.rph"):
        (logs / name).write_bytes(name.encode())
    fleet.start_archive()
    fleet.start_shipper("a")
    wait(lambda: len(fleet.missing()) == 2, 60, "the other files are there")
    time.sleep(1)
    assert not list(outside.iterdir()), list(outside.iterdir())
    assert "deep/x.rph: cannot be stored" in fleet.archive.text(), fleet.archive.text()
    shutil.rmtree(logs / "deep")
    shutil.rmtree(logs / "taken")
    (there / "deep").unlink()
    (there / "taken").unlink()


def removed(fleet, rng):
    """Only a file whose own version has a receipt is removed."""
    logs = fleet.add_node("a")
    names = ["byte \\x.rph", "ümlaut.rpd", "a=b*c>d.rph", "x.RPH"]
    for name in names:
        (logs / name).write_bytes(name.encode() * 30)
    raw = os.fsencode(logs) + b"/latin-\xe9.rph"
    with open(raw, "wb") as file:
        file.write(b"latin")
    fleet.start_shipper("a", "--delete-after", "0s")
    time.sleep(8)
    assert len(list(logs.iterdir())) == 5, "a file without a receipt was removed"
    kept = {path.name: path.read_bytes() for path in logs.iterdir()}
    fleet.start_archive()
    wait(lambda: not list(logs.iterdir()), 60, "the files are removed")
    there = fleet.archive_folder / "plant" / "a" / "logs"
    assert {path.name: path.read_bytes() for path in there.iterdir()} == kept
    # Later logs of a name are stored beside the first one, each once, whatever is killed or lost.
    for number in (2, 3):
        for name, size in (("byte \\x.rph", 900), ("a=b*c>d.rph", 900), ("x.RPH", CHUNK + 900)):
            (logs / "part").write_bytes(rng.randbytes(size))
            kept[name.replace(".", f"~{number}.")] = (logs / "part").read_bytes()
            (logs / "part").rename(logs / name)
        time.sleep(rng.random() * 4)
        victim = fleet.archive if number == 2 else fleet.shippers["a"]
        victim.kill()
        victim.start()
        wait(lambda: not list(logs.iterdir()), 120, "the later logs are removed")
        assert {path.name: path.read_bytes() for path in there.iterdir()} == kept
    # One stays on the node, while the shipper loses its state and the archive its record, and then it changes.
    fleet.shippers["a"].kill()
    fleet.start_shipper("a")
    changing, stored = logs / "x.RPH", there / "x~4.RPH"
    changing.write_bytes(b"before")
    wait(stored.exists, 60, "a fourth log is stored")
    fleet.shippers["a"].kill()
    shutil.rmtree(fleet.folder / "state")
    fleet.shippers["a"].start()
    wait(lambda: fleet.status()["nodes"][0]["archived"]["files"] == 1, 60, "the archive has it already")
    fleet.archive.kill()
    shutil.rmtree(fleet.archive_folder / ".state")
    changing.write_bytes(b"after")
    fleet.archive.start()
    wait(lambda: stored.read_bytes() == b"after", 150, "its change is stored in its place")
    assert {path.name: path.read_bytes() for path in there.iterdir()} == kept | {stored.name: b"after"}
    changing.unlink()
    shutil.rmtree(there)


def clock(fleet, rng):
    """The clock of the node is wrong by years, both ways."""
    logs = fleet.add_node("a")
    fill(logs, 8, rng)
    for i, path in enumerate(sorted(logs.iterdir())):
        os.utime(path, (10 ** 8, 10 ** 8) if i % 2 else (4 * 10 ** 9, 4 * 10 ** 9))
    (logs / "new.rph").write_bytes(b"old")
    fleet.start_archive()
    fleet.start_shipper("a")
    fleet.wait_complete(60)
    (logs / "new.rph").write_bytes(b"newer by content, older by clock")
    os.utime(logs / "new.rph", (10 ** 8, 10 ** 8))
    fleet.wait_complete(120)


def permissions(fleet, rng):
    """A node can say nothing in the name of another one, and no receipts: with the users that init prints."""
    fleet.cluster.end()
    settings = subprocess.run([BIN / "vastra-fleet", "init", "--print", "--node", "plant/a", "--node", "plant/b"],
                              capture_output=True, text=True, check=True).stdout
    accounts = settings[settings.index("accounts:"):].replace('"..."', '"secret"').replace(
        "jetstream: enabled", "jetstream: { max_file: 300MB, max_bytes_required: true }")
    fleet.cluster = Cluster(fleet.folder / "closed", 1, accounts)
    creds = {name: fleet.folder / f"{name.replace('/', '-')}.creds" for name in ("admin", "archive", "watch", "plant/a", "plant/b")}
    for name, path in creds.items():
        path.write_text(f"{name}:secret\n")
    init = [BIN / "vastra-fleet", "init", "--server", fleet.cluster.url, "--creds", creds["admin"], "--replicas", "1"]

    def refused(*options):
        return subprocess.run([*init, *options], capture_output=True, text=True, timeout=60).stderr
    wait(lambda: "init needs --max-bytes" in refused(), 30, "the account asks for limits")
    most = re.search(r"--max-bytes is (\d+) at most", refused("--max-bytes", "300MB"))[1]
    said = fleet.cluster.init("--creds", creds["admin"], "--max-bytes", most)
    assert f"DONE: made, 1 replicas, at most {int(most) // 20} bytes" in said, said
    plain = subprocess.run([BIN / "vastra-fleet", "status", "--server", fleet.cluster.url.replace("nats:", "tls:"), "--creds",
                            creds["watch"]], capture_output=True, text=True, timeout=60)
    assert plain.returncode == 1 and "the servers have no TLS" in plain.stderr, plain  # no password without TLS
    for name in "ab":
        logs = fleet.add_node(name)
        fill(logs, 3, rng)
        (logs / "parts.rph").write_bytes(rng.randbytes(2 * CHUNK))
        config = fleet.folder / f"{name}.conf"  # the part of another command is not for this one
        config.write_text(f'[ship]\ncreds = "{creds[f"plant/{name}"]}"\n[archive]\ncreds = "{creds["archive"]}"\n')
        fleet.start_shipper(name, "--delete-after", "0s", "--config", config)
    kept = {name: {path: path.read_bytes() for path in logs.iterdir()} for name, logs in fleet.nodes.items()}
    victim = (fleet.nodes["b"] / "parts.rph")
    content, subject = victim.read_bytes(), log_subject("done", "b", "logs/parts.rph", victim.read_bytes())
    receipt = json.dumps({"receipt": subject, "bytes": len(content), "sequence": 10 ** 9}).encode()
    admin = Client(fleet.cluster.ports[0], "admin", "secret")
    wait(lambda: admin.stream("VASTRA_LOGS")["messages"] >= 6, 30, "both have sent")
    hostile = Client(fleet.cluster.ports[0], "plant/a", "secret")
    own = log_subject("log", "a", "logs/x.rph", b"x", 0)
    for forged in (subject, log_subject("done", "a", "logs/x.rph", b"x"), log_subject("log", "b", "logs/x.rph", b"x", 0),
                   "vastra.status.plant.b", "vastra.live.plant.b.kiln", "$JS.API.STREAM.PURGE.VASTRA_LOGS",
                   "$JS.API.STREAM.DELETE.VASTRA_LOGS", "$JS.API.CONSUMER.MSG.NEXT.VASTRA_LOGS.archive"):
        before = len(hostile.faults)
        hostile.publish(forged, receipt)
        assert hostile.take() is None and len(hostile.faults) == before + 1, forged
        assert "Permissions Violation" in hostile.faults[-1], hostile.faults
    # The servers' answers go to any subject: of a receipt, with the bytes of a report, and of another's answers.
    hostile.publish("vastra.status.plant.a", receipt)
    watcher = Client(fleet.cluster.ports[0], "watch", "secret")
    watcher.publish("$JS.API.STREAM.MSG.GET.VASTRA_STATUS", b'{"last_by_subj":"vastra.status.plant.a"}', subject)
    watcher.publish("$JS.API.DIRECT.GET.VASTRA_STATUS.vastra.status.plant.a", b"", subject)
    for i, reply in enumerate((subject, *(f"_INBOX.plant.b.a.chunk.{i}" for i in range(9)))):
        hostile.publish(own + str(i), b"junk", reply)
    time.sleep(4)
    assert all(path.exists() for files in kept.values() for path in files), "a file went without a receipt"
    fleet.start_archive("--creds", creds["archive"])
    wait(lambda: not any(path.exists() for files in kept.values() for path in files), 90, "all are archived")
    for name, files in kept.items():
        for path, data in files.items():
            assert (fleet.archive_folder / "plant" / name / "logs" / path.name).read_bytes() == data
    shutil.rmtree(fleet.archive_folder / "plant")


def tls_leaf(fleet, rng):
    """TLS on all lines, users with signed credentials, a leaf with a JetStream domain of its own; a stopped server is left."""
    fleet.cluster.end()
    place = fleet.folder / "secrets"
    place.mkdir()
    for name in ("ca", "foreign"):
        openssl("req", "-x509", "-newkey", "ed25519", "-nodes", "-subj", f"/CN={name}", "-addext", "subjectAltName=IP:127.0.0.1",
                "-keyout", place / f"{name}.key", "-out", place / f"{name}.pem")
    operator, system, account = Key("O", place / "operator"), Key("A", place / "system"), Key("A", place / "account")
    free = dict.fromkeys(("subs", "data", "payload", "imports", "exports", "conn", "leaf"), -1) | {"wildcards": True}
    stored = dict.fromkeys(("mem_storage", "disk_storage", "streams", "consumer"), -1)
    accounts = {system: operator.sign(system, type="account", limits=free),
                account: operator.sign(account, type="account", limits=free | stored)}
    settings = subprocess.run([BIN / "vastra-fleet", "init", "--print", "--domain", "hub", "--node", "plant/b", "--leaf", "plant"],
                              capture_output=True, text=True, check=True).stdout
    allowed = {"admin": ({}, {})} | {
        name: [{"allow": json.loads(one)} for one in lists] for name, *lists in
        re.findall(r'user: "([^"]*)", .*\n *publish: (.*)\n *subscribe: (.*)\n', settings)}
    for name, (pub, sub) in allowed.items():
        key = Key("U", place / "user")
        token_of = account.sign(key, type="user", pub=pub, sub=sub, subs=-1, data=-1, payload=-1)
        (place / f"{name.replace('/', '-')}.creds").write_text(
            f"-----BEGIN NATS USER JWT-----\n{token_of}\n------END NATS USER JWT------\n\n"
            f"-----BEGIN USER NKEY SEED-----\n{key.seed}\n------END USER NKEY SEED------\n")
    fleet.cluster = cluster = Cluster(
        fleet.folder / "closed", 3, f"operator: {operator.sign(operator, type='operator')}\nsystem_account: {system.name}\n"
        f"resolver: MEMORY\nresolver_preload: {{ {', '.join(f'{key.name}: {text}' for key, text in accounts.items())} }}\n",
        ", domain: hub", f'tls {{ cert_file: "{place}/ca.pem", key_file: "{place}/ca.key", ca_file: "{place}/ca.pem" }}')

    def secret(user, *more):
        return "--tls-ca", place / "ca.pem", "--domain", "hub", "--creds", place / f"{user}.creds", *more
    cluster.init(*secret("admin"))
    urls, port = cluster.url, free_ports(1)[0]
    remotes = ", ".join(f'"tls://127.0.0.1:{one}"' for one in cluster.leaves)
    (place / "leaf.conf").write_text(
        f'server_name: leaf\nlisten: "127.0.0.1:{port}"\njetstream {{ store_dir: "{place}/leaf", domain: site }}\nping_interval: 10s\n'
        f'leafnodes {{ reconnect: 1, remotes: [ {{ urls: [{remotes}], credentials: "{place}/plant.creds"\n'
        f'tls {{ ca_file: "{place}/ca.pem" }} }} ] }}\n')
    leaf = Process(["nats-server", "-c", place / "leaf.conf"], place / "leaf.log")
    at_leaf = f"nats://127.0.0.1:{port}"
    for server, options, words in ((urls, secret("watch", "--tls-ca", place / "foreign.pem"), "--tls-ca is not who"),
                                   (urls, secret("plant-b"), "Permissions Violation for"),
                                   (urls, secret("operator"), "operator.creds: No such file"),
                                   (at_leaf, (), "$JS.API.STREAM.INFO.VASTRA_STATUS: stream not found")):
        done = subprocess.run([BIN / "vastra-fleet", "status", "--server", server, *options], capture_output=True, text=True,
                              timeout=30)
        assert done.returncode == 1 and words in done.stderr and done.stderr.count("\n") == 1, (done, words)
    cluster.url = at_leaf
    fill(fleet.add_node("a"), 8, rng)
    for words in ("0 files archived, 8 sent", "8 files archived, 0 sent"):  # the second one asks for the receipts
        done = subprocess.run(fleet.ship_command("a", "--once", "--domain", "hub"), capture_output=True, text=True, timeout=60)
        assert words in done.stderr, (words, done)
        if not fleet.archive:
            cluster.url = urls
            fleet.start_archive(*secret("archive"))
            cluster.url = at_leaf
            fleet.wait_complete(60)

    def set_payload(server, config, size):
        config.write_text(config.read_text() + f"max_payload: {size}\n")
        times = server.text().count("Reloaded server")
        server.signal(signal.SIGHUP)
        wait(lambda: server.text().count("Reloaded server") > times, 10, "the server has another max_payload")
    set_payload(leaf, place / "leaf.conf", "64KB")
    set_payload(cluster.servers[0], cluster.folder / "s0.conf", "64KB")
    fleet.start_shipper("a", "--domain", "hub")
    wait(lambda: "takes messages of 65536 bytes at most" in fleet.shippers["a"].text(), 30, "a says why it does not send")
    set_payload(leaf, place / "leaf.conf", "1MB")
    cluster.url = f"tls://127.0.0.1:{cluster.ports[0]}"
    fill(fleet.add_node("b"), 8, rng)
    fleet.start_shipper("b", *secret("plant-b"))
    fleet.wait_complete(60)
    good = int(re.findall(r"connected to nats://127.0.0.1:(\d+)", fleet.shippers["b"].text())[-1])  # not what b was told of
    stopped = cluster.servers[cluster.ports.index(good)]
    stopped.signal(signal.SIGSTOP)
    for logs in fleet.nodes.values():
        fill(logs, 8, rng)
    fleet.wait_complete(150)
    stopped.signal(signal.SIGCONT)
    leaf.kill()
    assert "the connection is lost" in fleet.shippers["b"].text(), fleet.shippers["b"].text()


def older(fleet, rng):
    """A large file of the backlog is replaced while it is sent: the new one overtakes, and nothing of the old follows."""
    logs = fleet.add_node("a")
    (logs / "large.rph").write_bytes(rng.randbytes(3_000_000))
    fleet.start_archive()
    fleet.start_shipper("a", "--limit", "250kB")
    wait(lambda: list(fleet.archive_folder.glob(".incoming/*")), 60, "the first chunks are there")
    (logs / "new.part").write_bytes(b"a small one")
    (logs / "new.part").rename(logs / "large.rph")
    fleet.wait_complete(60)
    time.sleep(14)  # what the rest would have taken


def basics(fleet, rng):
    """What a first user does, and what init, --limit, --csv, --once and status promise."""
    url = fleet.cluster.url

    def run(command, *options):
        return subprocess.run([BIN / "vastra-fleet", command, "--server", url, *options], capture_output=True,
                              text=True, timeout=60)
    logs = fleet.add_node("a")
    for i in range(50):
        (logs / f"{i}.csv").write_bytes(rng.randbytes(20_000) + b"\n")
    (logs / "notes.txt").write_bytes(b"not a log")
    began = time.monotonic()
    done = subprocess.run(fleet.ship_command("a", "--csv", "--once", "--limit", "200kB"), capture_output=True, timeout=60)
    assert done.returncode == 0 and 2 < time.monotonic() - began < 15, (done, time.monotonic() - began)
    node = fleet.status()["nodes"][0]
    assert (node["sent"], node["archived"]["files"], node["waiting"]["files"]) == ({"files": 50, "bytes": 1_000_050}, 0, 0), node
    for options, status, words in ((("--replicas", "3"), 0, "VASTRA_LOGS: is there, 3 replicas"),
                                   (("--replicas", "1"), 1, "replicas would be lowered from 3 to 1"),
                                   (("--max-bytes", "1MB"), 1, "and a limit of 1000000 would be less"),  # than it holds
                                   (("--max-bytes", "9MB"), 0, "max_bytes is now 9000000, was -1"),
                                   (("--max-bytes", "8MB"), 1, "would be lowered from 9000000 to 8000000")):
        done = run("init", *options)
        assert done.returncode == status and words in done.stdout + done.stderr, done
    held = json.loads(run("status", "--chunks", "--json").stdout)
    assert held["nodes"][0]["chunks"] == held["servers"]["messages"] > 3, held
    fleet.start_archive()
    fleet.start_shipper("a", "--csv")
    wait(lambda: fleet.status()["nodes"][0]["archived"]["files"] == 50, 60, "all have receipts")
    assert "plant  a     0 (0.0 MB)" in run("status").stdout, run("status").stdout
    assert not (fleet.archive_folder / "plant/a/logs/notes.txt").exists()
    (logs / "notes.txt").unlink()
    # A full stream holds back what is sent, and loses nothing.
    fleet.archive.kill()
    client = Client(fleet.cluster.ports[0])
    config = json.loads(client.ask("$JS.API.STREAM.INFO.VASTRA_LOGS")[1])["config"] | {"max_bytes": 1_000_000}
    assert b"error" not in client.ask("$JS.API.STREAM.UPDATE.VASTRA_LOGS", json.dumps(config).encode())[1]
    for i in range(20):
        (logs / f"more {i}.csv").write_bytes(rng.randbytes(100_000) + b"\n")
    wait(lambda: "maximum bytes exceeded" in fleet.shippers["a"].text(), 60, "the shipper says that the stream is full")
    fleet.archive.start()
    SUFFIXES.add(".csv")
    fleet.wait_complete(90)


CASES = {case.__name__: case for case in (basics, kills, older, partition, wiped, full_disk, damaged, links, removed, clock, permissions,
                                          tls_leaf)}


def main():
    names = [name for name in sys.argv[1:] if not name.startswith("-")] or list(CASES)
    seed = int(os.environ.get("FLEET_SEED", random.randrange(10 ** 6)))
    for name in names:
        began = time.monotonic()
        folder = tempfile.mkdtemp(prefix=f"fleet-{name}-")
        fleet = Fleet(folder)
        try:
            CASES[name](fleet, random.Random(seed))
            missing, extra = getattr(fleet, "snapshot", None) or (fleet.missing(), fleet.extra())
            assert not missing and not extra, f"missing {missing}, extra {extra}"
        except BaseException:
            print(f"{name}: seed {seed}, {folder}", file=sys.stderr)
            for process in [fleet.archive, *fleet.shippers.values()]:
                print(process and process.text()[-2000:], file=sys.stderr)
            raise
        finally:
            fleet.end()
        shutil.rmtree(folder, ignore_errors=True)
        seen = f"{fleet.compared} compared, no difference" if fleet.compared else "all as promised"  # at the end
        print(f"{name}: {seen}, {time.monotonic() - began:.0f} s", flush=True)


if __name__ == "__main__":
    main()
