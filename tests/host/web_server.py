"""Shared by the tests of vastra-web: a real server, and requests to it."""
import contextlib
import http.client
import json
import os
import signal
import subprocess
import urllib.parse

from commands import LogTest

WEB = os.environ["WEB"]


class ServerTest(LogTest):
    def serve(self, *args, **options):
        process = self.start("--listen", "127.0.0.1:0", "--dir", self.path("feeds"), *args, program=WEB, stdout=subprocess.PIPE, **options)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.port = urllib.parse.urlparse(process.stdout.readline().decode().strip()).port
        return process

    def get(self, path, method="GET", headers={}, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=20)
        with contextlib.closing(connection):
            connection.request(method, path, body, headers)
            answer = connection.getresponse()
            return answer.status, answer.read(), answer.headers

    def ends_well(self, server):
        self.assertIsNone(server.poll())
        server.send_signal(signal.SIGTERM)
        self.assertEqual(0, server.wait(20))

    def json(self, path):
        status, body, _ = self.get("/api/v1/" + path)
        self.assertEqual(200, status, body)
        return json.loads(body)
