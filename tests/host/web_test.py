"""vastra-web from outside: a real server with a real logger, browsers that behave and others that do not."""
import base64
import contextlib
import gzip
import http.client
import json
import os
import re
import signal
import socket
import subprocess
import urllib.parse

from commands import log, output, simulated
from pages import ROOT
from web_server import WEB, ServerTest

REFUSED = [  # command lines: the status, and the message
    (["--listen", "here"], 2, "--listen here: is not ADDRESS:PORT"),
    (["--listen", "0.0.0.0:0"], 2, "command line: at 0.0.0.0:0 everybody in the network could look.*--users.*--open.*"),
    (["--listen", "[::]:0"], 2, "command line: at .*everybody.*"),
    (["--proxy", "host"], 2, "command line: --proxy host: is not an address in numbers"),
    (["--cert", "c"], 2, "command line: --cert and --key belong together"),
    (["--users", "none"], 1, "none: No such file or directory"),
    (["--users", "bad"], 1, "bad: line 2 is not NAME:HASH, of crypt.3."),
    (["--users", "empty"], 1, "empty: has no user.*"),
    (["--folder", "logs"], 1, "--folder logs: is not NAME=DIR"),
    (["--folder", "a/b=logs"], 1, "--folder a/b=logs: is not NAME=DIR"),
    (["--folder", "x=none"], 1, "--folder x=none: No such file or directory"),
    (["--what"], 2, "command line: .*--what.*"),
]
# Requests that no browser of ours sends: method, path, headers, status.
HOSTILE = [
    ("GET", "/etc/passwd", {}, 404), ("GET", "//", {}, 404), ("GET", "/api/v1/loggers/old/log?id=../../etc/passwd", {}, 404),
    ("GET", "/api/v1/loggers/old/log?id=%00", {}, 404), ("GET", "/api/v1/loggers/old/rows?from=a&to=9&vars=x", {}, 400),
    ("PUT", "/", {}, 405), ("DELETE", "/api/v1/loggers", {}, 405), ("POST", "/api/v1/loggers", {}, 405),
    ("GET", "/" + "a" * 40000, {}, 414), ("GET", "/", {"X": "a" * 40000}, 431), ("GET", "/", {"Host": "evil.example"}, 403),
    ("GET", "/api/v1/about", {"Sec-Fetch-Site": "cross-site"}, 403), ("GET", "/", {"Sec-Fetch-Site": "cross-site"}, 200),
    ("POST", "/login", {"Origin": "http://evil.example"}, 403), ("GET", "/api/v1/stream?" + "sample=a&" * 201, {}, 400),
    ("GET", "/api/v1/stream?" + "log=a&" * 201, {}, 400),
]


class WebTest(ServerTest):
    def log(self):
        os.makedirs(self.path("feeds", "kiln"), exist_ok=True)
        self.write("kiln.json", simulated([output(self.path("logs"), maxSamples=50, maxLogs=1000, saveCsv=1)], driver={"value4": 20, "value5": 109},
                                           variables={"x": {"unit": "bar"}}))
        process = self.start("run", "kiln.json", "--feed", self.path("feeds", "kiln", "feed"), "--quiet")
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def events(self, query, enough):
        """The events of a stream, lists of type and data, until there are enough of each of these types."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=20)
        found = []
        with contextlib.closing(connection):
            connection.request("GET", "/api/v1/stream?" + query)
            answer = connection.getresponse()
            self.assertEqual("text/event-stream", answer.headers["Content-Type"])
            while any(sum(one[0] == name for one in found) < count for name, count in enough.items()):
                self.assertLess(len(found), 3000)
                line = answer.readline().decode().rstrip("\n")
                if line.startswith("event: "):
                    found.append([line[7:], json.loads(answer.readline().decode()[6:])])
        return found

    def test_a_logger_that_dies_and_comes_back(self):
        server = self.serve()
        logger = self.log()
        self.until(lambda: [(one["name"], one["up"], one.get("state")) for one in self.json("loggers")["loggers"]], [("kiln", True, "running")])
        self.assertEqual([{"name": "x", "unit": "bar", "node": "N"}], self.json("loggers/kiln/variables")["variables"])
        events = self.events("sample=kiln&message=kiln", {"now": 1, "loggers": 1, "variables": 1, "log": 1, "message": 1, "sample": 6})
        samples = [data for name, data in events if name == "sample"]
        self.assertEqual(sorted(one["number"] for one in samples), [one["number"] for one in samples])
        said = {(data["place"], data["text"]) for name, data in events if name == "message"}
        self.assertIn(("N", "Timeout error."), said)
        now = self.json("loggers/kiln")
        self.assertEqual(("output", "Timeout error."), (now["stages"][0]["kind"], now["lastError"]["text"]))
        self.assertIn(b'vastra_scans_total{logger="kiln"} ', self.get("/metrics")[1])
        logger.send_signal(signal.SIGTERM)
        logger.wait()
        self.until(lambda: self.json("loggers")["loggers"][0]["up"], False)
        gone = self.json("loggers/kiln")
        self.assertEqual(gone["fault"], gone["problems"][0])
        self.assertGreater(len(self.json("loggers/kiln/messages?after=0")["messages"]), 0)
        # The counter counts: what was logged is what the interface gives, in each of its forms.
        logged = [int(float(row[0])) for row in self.rows()] or self.fail("nothing is logged")
        self.until(lambda: len(self.json("loggers/kiln/logs?from=0&to=" + "9" * 15)["logs"]), (len(logged) + 49) // 50)
        query = lambda: "from=%(from)d&to=%(to)d&vars=x" % self.json("loggers/kiln/range")
        # The last log is found a moment after its journal has gone.
        self.until(lambda: [row[1] for row in self.json("loggers/kiln/rows?limit=100000&" + query())["rows"]], logged)
        one = self.json("loggers/kiln/buckets?parts=1&" + query())["variables"][0]
        self.assertEqual([[min(logged)], [max(logged)]], [one["least"], one["greatest"]])
        self.log()
        self.until(lambda: self.json("loggers")["loggers"][0]["up"], True)
        self.ends_well(server)

    def test_folders_without_a_logger(self):
        data = log(["x", "y"], [(100, 1.5, 2.0), (101, 0.1, 3.0)])
        self.write("logs/a.rph", data)
        self.serve("--folder", "old=" + self.path("logs"))
        one = self.json("loggers/old/logs?from=0&to=200000")["logs"][0]
        status, body, headers = self.get("/api/v1/loggers/old/log?" + urllib.parse.urlencode({"id": one["id"]}))
        self.assertEqual((200, data), (status, body))
        self.assertIn("a.rph", headers["Content-Disposition"])
        rows = self.json("loggers/old/rows?from=0&to=200000&vars=x&vars=y")["rows"]
        self.assertEqual([[100000, 1.5, 2], [101000, .1, 3]], rows)

    def test_the_page_has_parts_of_one_version(self):
        self.serve()
        load = lambda path, **more: self.get(path, headers={"Accept-Encoding": "br, gzip;q=0.5", **more})
        size, parts = len(load("/")[1]), set(re.findall(r'(?:src|href)="(/[^"]+)"', self.get("/")[1].decode()))
        version = next(one for one in parts if one.endswith("/js/main.js"))[:-len("/js/main.js")]
        parts |= {version + "/js/" + name for name in os.listdir(os.path.join(ROOT, "host/web/page/js"))}
        parts |= {version + "/vendor/uPlot.iife.min.js", version + "/vendor/uPlot.min.css"}
        for path in parts:
            with self.subTest(path):
                status, packed, headers = load(path)
                self.assertEqual((200, "gzip", self.get(path)[1]), (status, headers["Content-Encoding"], gzip.decompress(packed)))
                self.assertIn("immutable", headers["Cache-Control"])
                self.assertEqual(304, load(path, **{"If-None-Match": '"a", W/' + headers["ETag"]})[0])
                self.assertEqual(200, load(path, **{"Accept-Encoding": "gzip;q=0", "If-None-Match": headers["ETag"]})[0])
                self.assertEqual(404, load(re.sub("^/.", "/x", path))[0])
                size += len(packed) + len(str(headers))
        self.assertLess(size, 300_000)

    def test_hostile_requests(self):
        self.write("logs/a.rph", log(["x"], [(100, 1.0)]))
        server = self.serve("--folder", "old=" + self.path("logs"))
        for method, path, headers, expected in HOSTILE:
            with self.subTest(path[:60], method=method):
                status, _, answered = self.get(path, method, headers)
                self.assertEqual(expected, status)
        self.ends_well(server)

    def test_login(self):
        subprocess.run([WEB, "passwd", "users", "anna"], input=b"se%cret\n", cwd=self.folder, check=True)
        self.assertEqual(0o600, os.stat(self.path("users")).st_mode & 0o777)
        self.serve("--users", "users")
        self.assertEqual((401, 401, 303, 200), tuple(self.get(path)[0] for path in ("/api/v1/about", "/metrics", "/", "/login")))
        attempt = lambda password: self.get("/login", "POST", body=urllib.parse.urlencode({"name": "anna", "password": password}))
        status, _, headers = attempt("se%cret")
        self.assertEqual((303, "/"), (status, headers["Location"]))
        self.assertRegex(headers["Set-Cookie"], "^vastra-session=[0-9a-f]{64}; Path=/; HttpOnly; SameSite=Strict; ")
        cookie = {"Cookie": "a=b; " + headers["Set-Cookie"].split(";")[0]}
        about = lambda: self.get("/api/v1/about", headers=cookie)
        self.assertEqual("anna", json.loads(about()[1])["user"])
        for bad in ("vastra-session=", "vastra-session=" + "0" * 64, "xvastra-session=" + cookie["Cookie"][-64:]):
            self.assertEqual(401, self.get("/api/v1/about", headers={"Cookie": bad})[0])
        basic = lambda pair: self.get("/metrics", headers={"Authorization": "Basic " + base64.b64encode(pair.encode()).decode()})[0]
        self.assertEqual([200, 401, 401], [basic(pair) for pair in ("anna:se%cret", "anna", ":")])
        self.assertEqual(401, self.get("/metrics", headers={"Authorization": "Basic ="})[0])
        self.assertEqual(200, basic("anna:se%cret"))
        # Failures wait, also with the right password. On a busy machine the first waits are over at the next attempt.
        for failures in range(3, 9):
            places = [attempt(password)[2]["Location"] for password in [*"abcdefgh"[:failures], "se%cret"]]
            self.assertEqual(["/login?failed"] * 3, places[:3])
            if places[-1] != "/":
                break
        self.assertEqual("/login?wait", places[-1])
        # A new password ends the sessions of the old one, and streams that last.
        self.assertEqual(200, about()[0])
        stream = socket.create_connection(("127.0.0.1", self.port), timeout=20)
        self.addCleanup(stream.close)
        stream.sendall(b"GET /api/v1/stream HTTP/1.1\r\nHost: a\r\nConnection: close\r\n" + ("Cookie: %s\r\n\r\n" % cookie["Cookie"]).encode())
        subprocess.run([WEB, "passwd", "users", "anna"], input=b"other\n", cwd=self.folder, check=True)
        self.assertEqual(401, about()[0])
        received = b"".join(iter(lambda: stream.recv(1 << 16), b""))
        self.assertIn(b"event: now", received)

    def test_wrong_use(self):
        self.write("bad", "# users\nanna\n")
        self.write("empty", "")
        for args, status, message in REFUSED:
            with self.subTest(args):
                result = subprocess.run([WEB, *args], cwd=self.folder, capture_output=True, timeout=20)
                self.assertEqual(status, result.returncode)
                self.assertRegex(result.stderr.decode(), r"\Avastra-web: " + message + r"\n\Z")
