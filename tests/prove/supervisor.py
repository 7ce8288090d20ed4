"""A small manager of services: a process with the socket of the notify protocol, and a watchdog that kills it."""
import os
import re
import signal
import socket
import subprocess
import threading
import time


class Service:
    """Starts command in folder. watchdog: seconds. said: what the process has sent, in order."""

    def __init__(self, command, folder, watchdog=3, environment=os.environ, **options):
        self.command, self.watchdog = command, watchdog
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind("\0vastra-%d-%s" % (self.socket.fileno(), os.urandom(8).hex()))
        self.socket.settimeout(0.05)
        self.options = {"cwd": folder, "text": True, "stdin": subprocess.DEVNULL, **options,
                        "env": {**environment, "NOTIFY_SOCKET": "@" + self.socket.getsockname()[1:].decode(),
                                "WATCHDOG_USEC": str(int(watchdog * 1e6))}}
        self.process, self.said, self.starved, self.fed = None, [], 0, None
        threading.Thread(target=self.listen, daemon=True).start()

    def start(self):
        self.fed, self.said = None, []
        self.process = subprocess.Popen(self.command, **self.options)
        return self

    def listen(self):
        while True:
            try:
                text = self.socket.recv(65536).decode()
                self.said.append(text)
                self.fed = time.monotonic() if self.fed or text == "READY=1" else None  # counts from READY on
            except socket.timeout:
                pass
            if self.fed and time.monotonic() - self.fed > self.watchdog and self.process.poll() is None:
                self.starved, self.fed = self.starved + 1, None
                self.process.send_signal(signal.SIGKILL)

    def wait_for(self, pattern, count=1):
        """Waits until so many of what was said match the pattern. Returns whether they did."""
        end = time.monotonic() + 60
        while sum(bool(re.search(pattern, text)) for text in list(self.said)) < count:
            if self.process.poll() is not None or time.monotonic() > end:
                return False
            time.sleep(0.005)
        return True

    def reload(self):
        """Asks for a reload and waits for its end. Returns whether it came."""
        count = self.said.count("READY=1")
        self.process.send_signal(signal.SIGHUP)
        return self.wait_for("^READY=1$", count + 1)
