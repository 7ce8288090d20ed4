"""A device of pymodbus for the tests. Its arguments are what it has, as JSON, {unit: {table: {address: [values]}}} with
the tables co, di, hr and ir, and "line" if it is on a serial line. It prints its place once it can be asked."""
import asyncio
import json
import os
import pty
import sys
import threading
import tty

from pymodbus.datastore import ModbusServerContext, ModbusSlaveContext, ModbusSparseDataBlock
from pymodbus.server.async_io import ModbusSerialServer, ModbusTcpServer
from pymodbus.transaction import ModbusRtuFramer


def slave(tables):
    return ModbusSlaveContext(zero_mode=True, **{
        name: ModbusSparseDataBlock({int(address): values for address, values in tables.get(name, {}).items()})
        for name in ("co", "di", "hr", "ir")})


def copy(source, target):
    while True:
        os.write(target, os.read(source, 4096))


def cable():
    """The names of the ends of a serial line."""
    inner, outer = zip(pty.openpty(), pty.openpty())
    for end in outer:
        tty.setraw(end)
    for ends in (inner, inner[::-1]):
        threading.Thread(target=copy, args=ends, daemon=True).start()
    return map(os.ttyname, outer)


async def serve(units, *line):
    slaves = {int(unit): slave(tables) for unit, tables in json.loads(units).items()}
    context = ModbusServerContext(slaves, single=False)
    if line:
        port, place = cable()
        server = ModbusSerialServer(context, ModbusRtuFramer, port=port)
        await server.start()
        print(place, flush=True)
        await server.serve_forever()
    server = ModbusTcpServer(context, address=("127.0.0.1", 0))
    task = asyncio.create_task(server.serve_forever())
    await server.serving
    print("127.0.0.1:%d" % server.server.sockets[0].getsockname()[1], flush=True)
    await task

asyncio.run(serve(*sys.argv[1:]))
