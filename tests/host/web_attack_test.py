"""vastra-web under attack: requests that are not clear, connections that hold on to it, names of all bytes."""
import contextlib
import os
import re
import resource
import select
import socket
import subprocess
import urllib.parse

from commands import log
from web_server import WEB, ServerTest

HOST = b"Host: 127.0.0.1\r\n"
ABOUT = b"GET /api/v1/about HTTP/1.1\r\n" + HOST + b"\r\n"


def login(*headers, body=b"name=a"):
    return b"POST /login HTTP/1.1\r\n" + HOST + b"".join(one + b"\r\n" for one in headers) + b"\r\n" + body


def about(*headers):
    return ABOUT[:-2] + b"".join(one + b"\r\n" for one in headers) + b"\r\n"


# What is sent, and the statuses of the answers. None at the end: the connection ends after them. A request that another
# server could end elsewhere may not be followed by one that was hidden in it.
RAW = [
    (login(b"Content-Length: 6"), [303]), (ABOUT * 30, [200] * 30), (login(b"Content-Length: 6") + ABOUT, [303, 200]),
    (login(b"Content-Length: 6", b"Transfer-Encoding: chunked", body=b"0\r\n\r\n" + ABOUT), [400, None]),
    (login(b"Transfer-Encoding: chunked", b"Content-Length: 6", body=b"0\r\n\r\n" + ABOUT), [400, None]),
    (login(b"Transfer-Encoding: chunked", body=b"6\r\nname=a\r\n0\r\n\r\n"), [400, None]),
    (login(b"Transfer-Encoding: xchunked", body=b"0\r\n\r\n"), [400, None]), (login(b"Transfer-Encoding: identity"), [400, None]),
    (login(b"Transfer-Encoding : chunked", b"Content-Length: 6"), [400, None]), (login(b"Content-Length : 6"), [400, None]),
    (login(b"Content-Length: 6", b"Content-Length: 5"), [400, None]), (login(b"Content-Length: 6", b"content-length: 6"), [400, None]),
    (login(b"Content-Length: 4097"), [413, None]), (login(b"Content-Length: 4096", body=b"a" * 4096), [303]),
    (login(body=b"name=a\r\n\r\n"), [303, None]),  # the body is a bad request of its own
    (about(b"Content-Length: 40") + ABOUT, [413, None]), (about(b"Content-Length: 0") + ABOUT, [200, 200]),
    (about(b"Host: evil.example"), [400, None]), (about(b"host:127.0.0.1"), [400, None]),
    (about(b"Range: bytes=5-1,-0,99999999999999999999-"), [200]), (about(b"Expect: 100-continue"), [100, 200]),
    (about(b"Connection: Upgrade", b"Upgrade: websocket"), [200]), (about(*[b"X: y"] * 3000), [431, None]),
    (about(b"Cookie: " + b"vastra-session=" + b"0" * 9000), [200]), (about(b"Cookie: " + b"vastra-session=0;" * 700), None),
    (about(*[b"Cookie: vastra-session=0"] * 300), [200]), (about(b"Cookie: =;;;= ; vastra-session"), [200]),
    (about(b"X-Forwarded-For: 1.2.3.4", b"X-Forwarded-Proto: https"), [200]),
    (b"HEAD /api/v1/stream HTTP/1.1\r\n" + HOST + b"\r\n" + ABOUT, [200, 200]),
    (b"HEAD /api/v1/loggers/old/rows.csv HTTP/1.1\r\n" + HOST + b"\r\n" + ABOUT, [200, 200]),
    (b"OPTIONS * HTTP/1.1\r\n" + HOST + b"\r\n", [405]), (b"TRACE / HTTP/1.1\r\n" + HOST + b"\r\n", [405]),
    (b"CONNECT a:1 HTTP/1.1\r\n" + HOST + b"\r\n", [405]), (b"A" * 20000, None), (b"GET / HTTP/9.9\r\n\r\n", [505, None]),
    (b"GET / HTTP/1.1\r\n\r\n", None), (bytes(range(256)), None), (b"\r\n" * 5000, None), (b"\x16\x03\x01\x02\x00\x01" + b"\0" * 500, None),
]
TRAVERSALS = ["/../../etc/passwd", "/%00", "/api/v1/loggers/%2e%2e/sample", "/..%2f..%2fetc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "/..%5c..%5cetc/passwd", "/%252e%252e/etc/passwd",
              "/..%c0%af..%c0%afetc/passwd", "/js/main.js%00.html", "/api/v1/about%00", "/js//main.js", "/js/./main.js",
              "/api/v1/loggers/old/log%3fid=a", "/api/v1/loggers/old/../old/sample",
              "/api/v1/loggers//", "/api/v1/loggers/%ff%fe/logs", "/api/v1/loggers/%0d%0aSet-Cookie:a/logs"]
NAMES = [b"\xe4\xff.rph", "\u00fc \u20ac.rph".encode(), b"a\"b\\c.rph", b"a\r\nSet-Cookie: b=c\r\n\r\n.rph", b"a;b%41=',.rph"]
SAVED = ['"__.rph"; filename*=UTF-8\'\'%EF%BF%BD%EF%BF%BD.rph', '"_ _.rph"; filename*=UTF-8\'\'%C3%BC%20%E2%82%AC.rph',
         '"a_b_c.rph"', '"a__Set-Cookie_ b=c____.rph"', '"a;b_41=\',.rph"; filename*=UTF-8\'\'a%3Bb%2541%3D%27%2C.rph']


class WebAttackTest(ServerTest):
    def connect(self, data=b"", **options):
        one = socket.create_connection(("127.0.0.1", self.port), timeout=20, **options)
        self.addCleanup(one.close)
        one.sendall(data)
        return one

    def answers(self, data):
        """The statuses of what comes back, and None if the connection ends soon."""
        one = self.connect()
        with contextlib.suppress(OSError):  # it may end before all is sent
            one.sendall(data)
        one.settimeout(.5)
        received, end = b"", []
        try:
            while not end:
                piece = one.recv(1 << 16)
                received += piece
                end = [] if piece else [None]
        except ConnectionError:
            end = [None]
        except socket.timeout:
            pass
        if data.startswith(b"HEAD"):  # nothing is between the heads
            self.assertEqual([], [one[:9] for one in received.split(b"\r\n\r\n")[:-1] if not one.startswith(b"HTTP/1.1 ")])
        return [int(status) for status in re.findall(rb"HTTP/1\.1 (\d+) ", received)] + end

    def good(self, path="/api/v1/about"):
        self.assertEqual(200, self.get(path)[0])

    def test_requests_that_are_not_clear(self):
        self.write("logs/a.rph", log(["x"], [(100, 1.0)]))
        server = self.serve("--folder", "old=" + self.path("logs"))
        for data, expected in RAW:
            with self.subTest(data[:90]):
                found = self.answers(data)
                if expected:
                    self.assertEqual(expected, found[:len(expected)])
                self.assertLessEqual(len(found), len(expected or [400, 400, None]))
        for path in TRAVERSALS:
            self.assertEqual(404, self.get(path)[0], path)
        self.ends_well(server)

    def test_connections_that_hold_on(self):
        resource.setrlimit(resource.RLIMIT_NOFILE, (min(4096, resource.getrlimit(resource.RLIMIT_NOFILE)[1]),) * 2)
        rows = 5000 if os.environ.get("SANITIZER") else 45000
        for name, begin in (("a", 100), ("b", 10**6)):
            self.write("logs/%s.rph" % name, log(list("abcdefghij"), [(begin + i, *[i / 7] * 10) for i in range(rows)]))
        server = self.serve("--folder", "old=" + self.path("logs"))
        # Some say nothing, some a byte at a time, some have asked for a stream or a large answer and do not read it.
        ask = b"GET /api/v1/loggers/old/rows%s HTTP/1.1\r\n" + HOST + b"\r\n"
        large = [self.connect(ask % b"?limit=100000") for _ in range(40)]
        streams = [self.connect(ABOUT.replace(b"about", b"stream")) for _ in range(100)]
        downloads = [self.connect(ask % b".csv") for _ in range(50)]
        for one in streams[:50]:
            one.shutdown(socket.SHUT_WR)
        self.until(lambda: select.select(large, [], [], 0)[0] == large, True)
        slow = [self.connect(ABOUT[:20 + i % 30]) for i in range(1300)]
        for i in range(5):
            for one in slow:
                with contextlib.suppress(OSError):
                    one.sendall(b"x")
            self.good()
            self.good("/api/v1/loggers/old/range")
        for one in streams[:50]:
            self.assertIn(b"event: now", one.recv(1 << 16))
        if not os.environ.get("SANITIZER"):
            with open("/proc/%d/status" % server.pid) as file:
                peak = next(int(line.split()[1]) for line in file if line.startswith("VmHWM"))
            self.assertLess(peak, 300 << 10)  # KB
        for one in large + streams + downloads + slow:
            one.close()
        self.good()
        self.ends_well(server)

    def test_names_of_all_bytes(self):
        for name in NAMES:
            with open(os.path.join(self.path("logs").encode(), name), "wb") as file:
                file.write(log(["T\udce4"], [(100, 1.0)]))
        self.serve("--folder", "old=" + self.path("logs"))
        logs = self.json("loggers/old/logs")["logs"]
        saved = []
        for one in logs:
            status, body, headers = self.get("/api/v1/loggers/old/log?" + urllib.parse.urlencode({"id": one["id"]}))
            self.assertEqual((200, 1), (status, body.count(b"T\xe4")))
            self.assertIsNone(headers["Set-Cookie"])
            saved.append(headers["Content-Disposition"])
        self.assertEqual(sorted("attachment; filename=" + one for one in SAVED), sorted(saved))
        self.assertEqual([[100000, 1]] * len(NAMES), self.json("loggers/old/rows?vars=T%EF%BF%BD")["rows"])

    def test_the_word_of_a_server_in_between(self):
        subprocess.run([WEB, "passwd", "users", "anna"], input=b"secret\n", cwd=self.folder, check=True)
        body = {word: urllib.parse.urlencode({"name": "anna", "password": word}) for word in ("secret", "wrong")}
        attempt = lambda word, *viewers: self.get("/login", "POST", {"X-Forwarded-For": ", ".join(viewers), "X-Forwarded-Proto": "https"}, body[word])
        self.serve("--users", "users")
        self.assertNotIn("Secure", attempt("secret", "192.0.2.1")[2]["Set-Cookie"])
        with open(self.path("said"), "wb") as said:
            self.serve("--users", "users", "--proxy", "127.0.0.1", stderr=said)
        self.assertRegex(attempt("secret", "192.0.2.1")[2]["Set-Cookie"], "; Secure$")
        places = [attempt("wrong", "192.0.2.1", "192.0.2.%d" % viewer)[2]["Location"] for viewer in (2, 2, 2, 2)]
        self.assertEqual(["/login?failed"] * 3 + ["/login?wait"], places)
        headers = attempt("secret", "192.0.2.2", "192.0.2.1")[2]
        self.assertEqual("/", headers["Location"])
        # A viewer has at most 200 requests at a time, also through a server in between.
        cookie = b"Cookie: " + headers["Set-Cookie"].split(";")[0].encode()
        ask = lambda what, viewer: about(b"X-Forwarded-For: " + viewer, cookie).replace(b"about", what)
        for _ in range(200):
            self.connect(ask(b"stream", b"192.0.2.3"))
        self.until(lambda: self.answers(ask(b"about", b"192.0.2.3")), [503, None])
        self.assertEqual([200], self.answers(ask(b"about", b"192.0.2.4")))
        self.assertIn(b'login of 192.0.2.2 as "anna" has failed', self.read("said"))

    def test_users_that_change(self):
        hashes = [subprocess.run(["openssl", "passwd", "-6", "-salt", "salt", word], capture_output=True, check=True).stdout.decode().strip()
                  for word in ("secret", "other")]
        self.write("users", "anna:%s\r\nbert:!%s\n" % tuple(hashes))
        os.chmod(self.path("users"), 0o644)
        with open(self.path("said"), "wb") as said:
            self.serve("--users", "users", stderr=said)
        self.assertIn(b"users: everybody on this machine can read", self.read("said"))
        post = lambda name, word: self.get("/login", "POST", body=urllib.parse.urlencode({"name": name, "password": word}))[2]
        old = "vastra-session=" + "1" * 64
        answer = self.get("/login", "POST", {"Cookie": old}, "name=anna&password=secret")[2]
        cookie = {"Cookie": answer["Set-Cookie"].split(";")[0]}
        self.assertNotEqual(old, cookie["Cookie"])
        status = lambda: self.get("/api/v1/about", headers=cookie)[0]
        self.assertEqual([200, "/login?failed", "/login?failed"], [status(), post("bert", "other")["Location"], post("anna", "secret\0")["Location"]])
        for content, expected in ((None, 401), ("anna:%s\n" % hashes[0], 200), ("anna\n", 401), ("anna:%s\n" % hashes[0], 200),
                                  ("anna:%s\n" % hashes[1], 401)):
            os.rename(self.path("users"), self.path("before")) if content is None else self.write("users", content)
            self.assertEqual(expected, status(), content)
        self.assertIn(b"users: line 1 is not NAME:HASH, of crypt(3): nobody may look until it is right", self.read("said"))

    def test_a_name_that_is_not_there_takes_as_long(self):
        # A method that takes much longer than the usual one.
        hashed = subprocess.run(["python3", "-W", "ignore", "-c", "import crypt; print(crypt.crypt('a', '$6$rounds=400000$salt'))"], capture_output=True, check=True)
        self.write("users", b"anna:" + hashed.stdout)
        server = self.serve("--users", "users", "--proxy", "127.0.0.1")
        used = {"anna": 0, "bert": 0}  # ticks of the processor
        for i in range(3):
            for name in used:
                used[name] -= self.ticks(server)
                self.get("/login", "POST", {"X-Forwarded-For": "192.0.2.%d" % i}, "name=%s&password=b" % name)
                used[name] += self.ticks(server)
        self.assertGreater(used["anna"], 9)
        self.assertGreater(used["bert"], used["anna"] / 3)

    def ticks(self, server):
        with open("/proc/%d/stat" % server.pid) as file:
            return sum(map(int, file.read().rsplit(")", 1)[1].split()[11:13]))
