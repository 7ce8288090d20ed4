"""A device of pymodbus for the tests. Its argument is what it has, as JSON, {unit: {table: {address: [values]}}} with
the tables co, di, hr and ir. It prints its place once it can be asked."""
import asyncio
import json
import sys

from pymodbus.datastore import ModbusServerContext, ModbusSlaveContext, ModbusSparseDataBlock
from pymodbus.server.async_io import ModbusTcpServer


def slave(tables):
    return ModbusSlaveContext(zero_mode=True, **{
        name: ModbusSparseDataBlock({int(address): values for address, values in tables.get(name, {}).items()})
        for name in ("co", "di", "hr", "ir")})


async def serve(units):
    slaves = {int(unit): slave(tables) for unit, tables in json.loads(units).items()}
    server = ModbusTcpServer(ModbusServerContext(slaves, single=False), address=("127.0.0.1", 0))
    task = asyncio.create_task(server.serve_forever())
    await server.serving
    print("127.0.0.1:%d" % server.server.sockets[0].getsockname()[1], flush=True)
    await task

asyncio.run(serve(sys.argv[1]))
