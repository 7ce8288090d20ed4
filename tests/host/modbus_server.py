"""A device of pymodbus for the tests. Its arguments are what it has, as JSON, {unit: {table: {address: [values]}}} with
the tables co, di, hr and ir, and the path of a serial line; without a path it has a port of this machine. It prints its
place once it can be asked."""
import asyncio
import json
import sys

from pymodbus.datastore import ModbusServerContext, ModbusSlaveContext, ModbusSparseDataBlock
from pymodbus.server.async_io import ModbusSerialServer, ModbusTcpServer
from pymodbus.transaction import ModbusRtuFramer


def slave(tables):
    return ModbusSlaveContext(zero_mode=True, **{
        name: ModbusSparseDataBlock({int(address): values for address, values in tables.get(name, {}).items()})
        for name in ("co", "di", "hr", "ir")})


async def serve(units, line=None):
    context = ModbusServerContext({int(unit): slave(tables) for unit, tables in json.loads(units).items()}, single=False)
    server = ModbusSerialServer(context, ModbusRtuFramer, port=line) if line else \
        ModbusTcpServer(context, address=("127.0.0.1", 0))
    await (server.start() if line else asyncio.sleep(0))
    task = asyncio.create_task(server.serve_forever())
    if not line:
        await server.serving
    print(line or "127.0.0.1:%d" % server.server.sockets[0].getsockname()[1], flush=True)
    await task

asyncio.run(serve(*sys.argv[1:]))
