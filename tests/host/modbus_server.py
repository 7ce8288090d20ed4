"""A device of pymodbus for the tests. Its arguments are what it has, as JSON, {unit: {table: {address: [values]}}} with
the tables co, di, hr and ir, and where it is: a port of this machine (0: a free one) or the path of a serial line. It
prints the place once it can be asked."""
import asyncio
import json
import sys

from pymodbus.datastore import ModbusServerContext, ModbusSlaveContext, ModbusSparseDataBlock
from pymodbus.server.async_io import ModbusSerialServer, ModbusTcpServer
from pymodbus.transaction import ModbusRtuFramer


def device(units):
    def table(content):
        return ModbusSparseDataBlock({int(address): values for address, values in content.items()})
    return ModbusServerContext(single=False, slaves={
        int(unit): ModbusSlaveContext(zero_mode=True, **{name: table(tables.get(name, {}))
                                                         for name in ("co", "di", "hr", "ir")})
        for unit, tables in units.items()})


async def serve(context, place):
    if place.startswith("/"):
        server = ModbusSerialServer(context, ModbusRtuFramer, port=place)
        await server.start()
        print(place, flush=True)
        await server.serve_forever()
    server = ModbusTcpServer(context, address=("127.0.0.1", int(place)), allow_reuse_address=True)
    task = asyncio.create_task(server.serve_forever())
    await asyncio.wait([task, server.serving], return_when=asyncio.FIRST_COMPLETED)
    if not task.done():
        print(server.server.sockets[0].getsockname()[1], flush=True)
    await task

asyncio.run(serve(device(json.loads(sys.argv[1])), sys.argv[2]))
