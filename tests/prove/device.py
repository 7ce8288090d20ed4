"""A device that gives each row a number of its own, and so knows every row: a Modbus TCP server whose registers 0 and 1
are a number that rises with each read, over all runs of the logger."""
import socket
import socketserver
import struct
import threading
import time


class Device:
    """address: for text1 of the driver. A float holds the numbers exactly up to 2**24."""

    def __init__(self):
        self.lock, self.answering = threading.Lock(), threading.Lock()
        self.connections = []
        self.writes = []  # what was written to register 0
        self.reads = []  # (the connection, when the read was asked for) of each number, from 1 on
        self.open = {}  # connections by the address of the logger; False: closed
        device = self

        class Connection(socketserver.StreamRequestHandler):
            def handle(self):
                device.open[self.client_address] = True
                device.connections.append(self.connection)
                while len(head := self.rfile.read(12)) == 12:
                    if head[7] == 16:  # write registers
                        data = self.rfile.read(1 + 2 * head[11])
                        with device.lock:
                            device.writes.append(struct.unpack(">I", data[1:5])[0])
                        self.wfile.write(head[:4] + b"\0\6" + head[6:])
                        continue
                    with device.answering:  # a number that is given is sent
                        if device.is_away:
                            return
                        number = device.next(self) if head[11] == 2 else 0  # else the driver asks whether it is there
                        registers = struct.pack(">I", number)[:2 * head[11]]
                        self.wfile.write(head[:4] + struct.pack(">HBBB", 3 + len(registers), head[6], head[7], len(registers)) +
                                         registers)

            def finish(self):
                device.open[self.client_address] = False  # and no flush: the logger was killed

        class Server(socketserver.ThreadingTCPServer):
            daemon_threads = True

            allow_reuse_address = True

            def handle_error(self, request, client_address):
                pass

        self.serve, self.port = lambda port: Server(("127.0.0.1", port), Connection), 0
        self.come()
        self.address = "127.0.0.1:%d" % self.port

    def come(self):
        """Listens, again at the same port."""
        self.is_away, self.server = False, self.serve(self.port)
        self.port = self.server.server_address[1]
        threading.Thread(target=self.server.serve_forever, args=(0.01,), daemon=True).start()

    def go(self):
        """Refuses connections and closes those that are open."""
        self.server.shutdown()
        self.server.server_close()
        with self.answering:
            self.is_away = True
            for connection in self.connections:
                try:
                    connection.shutdown(socket.SHUT_RDWR)
                except OSError:
                    pass  # it is closed
            self.connections.clear()

    def settle(self):
        """Waits until what a process that has ended had sent is counted."""
        with socket.create_connection(self.server.server_address) as last:
            address = last.getsockname()
        while self.open.get(address, True) or any(list(self.open.values())):
            time.sleep(0.001)

    def next(self, connection):
        with self.lock:
            self.reads.append((connection, time.monotonic()))
            return len(self.reads)

    def count(self):
        with self.lock:
            return len(self.reads)

    def kept_before(self, first, moment):
        """The rows from first on that the logger has certainly kept before the moment: it has asked for the next one."""
        with self.lock:
            rows = list(enumerate(self.reads, 1))[first - 1:]
        return [(row, after[1]) for (row, read), (_, after) in zip(rows, rows[1:])
                if read[0] is after[0] and after[1] < moment]


def node(device):
    return {"nodeName": "Device", "driver": {"plcType": 9002, "text1": device.address, "station": 1, "text2": "h0: u32"},
            "varNames": ["Row"]}
