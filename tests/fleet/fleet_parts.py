"""The parts of a fleet in a test: a cluster of servers, shippers and an archive as processes, and a client that
speaks the servers' protocol by itself, so that a test can send what no shipper would."""
import base64
import binascii
import ctypes
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

BIN = pathlib.Path(os.environ["VASTRA_BIN"])
SUFFIXES = {".rph", ".rpd"}


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def wait(condition, seconds, what):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {seconds} s")
        time.sleep(0.05)


def end_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


class Process:
    """A program whose output goes to a file."""

    def __init__(self, command, log):
        self.command, self.log, self.process = [str(one) for one in command], pathlib.Path(log), None
        self.start()

    def start(self):
        with open(self.log, "ab") as log:
            self.process = subprocess.Popen(self.command, stdout=log, stderr=log, preexec_fn=end_with_parent)

    def kill(self, how=signal.SIGKILL):
        self.process.send_signal(how)
        return self.process.wait(30)

    def signal(self, how):
        self.process.send_signal(how)

    def is_up(self):
        return self.process.poll() is None

    def text(self):
        return self.log.read_text(errors="replace")


class Cluster:
    """Servers with further settings, also within the parts jetstream and, for all lines, tls."""

    def __init__(self, folder, count=3, accounts="", jetstream="", tls=""):
        self.folder, self.accounts, self.jetstream, self.tls = pathlib.Path(folder), accounts, jetstream, tls
        ports = free_ports(3 * count)
        self.ports, self.routes, self.leaves = ports[:count], ports[count:2 * count], ports[2 * count:]
        self.servers = [self._server(i) for i in range(count)]
        self.said = ""
        self.url = ",".join(f"{'tls' if tls else 'nats'}://127.0.0.1:{port}" for port in self.ports)

    def _server(self, i):
        self.folder.mkdir(parents=True, exist_ok=True)
        config = self.folder / f"s{i}.conf"
        routes = ", ".join(f"nats://127.0.0.1:{port}" for port in self.routes)
        cluster = f'cluster {{ name: C, listen: "127.0.0.1:{self.routes[i]}", routes: [{routes}]\n{self.tls} }}\n'
        config.write_text(f'server_name: s{i}\nlisten: "127.0.0.1:{self.ports[i]}"\n'
                          f'jetstream {{ store_dir: "{self.folder}/s{i}", max_file_store: 20GB {self.jetstream} }}\n{self.tls}\n'
                          f'leafnodes {{ listen: "127.0.0.1:{self.leaves[i]}"\n{self.tls} }}\n'
                          f'{cluster if len(self.ports) > 1 else ""}{self.accounts}')
        return Process(["nats-server", "-c", config], self.folder / f"s{i}.log")

    def init(self, *options):
        def made():
            done = subprocess.run([BIN / "vastra-fleet", "init", "--server", self.url, "--replicas",
                                   str(len(self.ports)), *options], capture_output=True, text=True, timeout=60)
            self.said = done.stdout + done.stderr
            return done.returncode == 0
        wait(made, 60, f"init: {self.said}")
        return self.said

    def wipe(self):
        for server in self.servers:
            server.kill()
        for i in range(len(self.servers)):
            shutil.rmtree(self.folder / f"s{i}", ignore_errors=True)
        for server in self.servers:
            server.start()

    def end(self):
        for server in self.servers:
            if server.is_up():
                server.signal(signal.SIGCONT)
                server.kill()


def openssl(*words):
    return subprocess.run(["openssl", *words], capture_output=True, check=True).stdout


class Key:
    """A key of the servers' tools, and what it signs: the operator O, an account A or a user U."""
    KINDS = {"O": 14 << 3, "A": 0, "U": 20 << 3}

    def __init__(self, kind, path):
        self.path, first = path, self.KINDS[kind]
        openssl("genpkey", "-algorithm", "ed25519", "-out", path)
        self.name = self._text(bytes([first]) + openssl("pkey", "-in", path, "-pubout", "-outform", "DER")[-32:])
        self.seed = self._text(bytes([18 << 3 | first >> 5, (first & 31) << 3]) +
                               openssl("pkey", "-in", path, "-outform", "DER")[-32:])

    @staticmethod
    def _text(data):
        return base64.b32encode(data + binascii.crc_hqx(data, 0).to_bytes(2, "little")).decode().rstrip("=")

    def sign(self, subject, **claims):
        body = {"jti": subject.name, "iat": int(time.time()) - 9, "iss": self.name, "name": "x", "sub": subject.name,
                "nats": claims | {"version": 2}}
        parts = [base64.urlsafe_b64encode(json.dumps(part).encode()).decode().rstrip("=")
                 for part in ({"typ": "JWT", "alg": "ed25519-nkey"}, body)]
        text = pathlib.Path(f"{self.path}.text")
        text.write_text(".".join(parts))
        signed = openssl("pkeyutl", "-sign", "-inkey", self.path, "-rawin", "-in", text)
        return ".".join([*parts, base64.urlsafe_b64encode(signed).decode().rstrip("=")])


class Client:
    """A connection that sends and takes messages one by one."""

    def __init__(self, port, user=None, password=None):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=30)
        self.lines = self.socket.makefile("rb")
        self.lines.readline()
        hello = {"verbose": False, "headers": True, "no_responders": True}
        if user:
            hello |= {"user": user, "pass": password}
        self.faults = []
        self.inbox = f"_INBOX.test.{id(self)}"
        self._send(f"CONNECT {json.dumps(hello)}\r\nSUB {self.inbox} 1\r\n".encode())

    def _send(self, data):
        self.socket.sendall(data)

    def publish(self, subject, data=b"", reply=""):
        self._send(f"PUB {subject} {reply} {len(data)}\r\n".encode() + data + b"\r\n")

    def listen(self, subject):
        self._send(f"SUB {subject} 2\r\n".encode())

    def take(self):
        """(subject, data) of the next message; None if an error or nothing came."""
        while True:
            line = self.lines.readline().split()
            if not line or line[0] == b"-ERR":
                self.faults.append(b" ".join(line).decode())
                return None
            if line[0] == b"PING":
                self._send(b"PONG\r\n")
            elif line[0] in (b"MSG", b"HMSG"):
                data = self.lines.read(int(line[-1]) + 2)[:-2]
                return line[1].decode(), data[int(line[-2]):] if line[0] == b"HMSG" else data

    def ask(self, subject, data=b""):
        self.publish(subject, data, self.inbox)
        return self.take()

    def stream(self, name):
        return json.loads(self.ask(f"$JS.API.STREAM.INFO.{name}")[1])["state"]


class Fleet:
    """Servers, an archive, and nodes with a folder of logs each."""

    def __init__(self, folder, count=3):
        self.folder = pathlib.Path(folder)
        self.cluster = Cluster(self.folder / "servers", count)
        self.cluster.init()
        self.archive_folder = self.folder / "archive"
        self.nodes, self.shippers = {}, {}
        self.archive = None

    def start_archive(self, *options):
        self.archive = Process([BIN / "vastra-fleet", "archive", "--server", self.cluster.url, "--into",
                                self.archive_folder, *options], self.folder / "archive.log")

    def add_node(self, name):
        self.nodes[name] = self.folder / "nodes" / name / "logs"
        self.nodes[name].mkdir(parents=True, exist_ok=True)
        return self.nodes[name]

    def ship_command(self, name, *options):
        return [BIN / "vastra-fleet", "ship", "--site", "plant", "--node", name, "--server", self.cluster.url,
                "--state", self.folder / "state" / name, *options, self.nodes[name]]

    def start_shipper(self, name, *options):
        self.shippers[name] = Process(self.ship_command(name, *options), self.folder / f"{name}.log")

    def missing(self):
        """What differs between the nodes' files and the archive."""
        wrong, self.compared = [], 0
        for name, logs in self.nodes.items():
            there = self.archive_folder / "plant" / name / "logs"
            for path in logs.rglob("*"):
                if path.suffix in SUFFIXES and path.is_file():
                    self.compared += 1
                    copy = there / path.relative_to(logs)
                    if not copy.is_file() or copy.read_bytes() != path.read_bytes():
                        wrong.append(str(path))
        return wrong

    def extra(self):
        """Files of the archive that no node has."""
        sent = {f"plant/{name}/logs/{path.relative_to(logs)}" for name, logs in self.nodes.items()
                for path in logs.rglob("*") if path.is_file()}
        return [str(path) for path in self.archive_folder.rglob("*")
                if path.is_file() and not str(path.relative_to(self.archive_folder)).startswith(".")
                and str(path.relative_to(self.archive_folder)) not in sent]

    def wait_complete(self, seconds=60):
        wait(lambda: not self.missing(), seconds, "the archive is complete")

    def status(self):
        done = subprocess.run([BIN / "vastra-fleet", "status", "--json", "--server", self.cluster.url],
                              capture_output=True, text=True, timeout=60)
        return json.loads(done.stdout)

    def end(self):
        for process in [*self.shippers.values(), self.archive]:
            if process and process.is_up():
                process.signal(signal.SIGCONT)
                process.kill(signal.SIGTERM)
        self.cluster.end()
