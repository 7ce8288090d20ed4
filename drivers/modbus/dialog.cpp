// The dialog of the driver: a form for all its settings.
#include "drivers/common/node_form.h"
#include "line.h"
#include "settings.h"
#include "values.h"

namespace modbus {
namespace {

constexpr int kLowestAdded = -999999;  // lists for people have numbers of up to six digits

constexpr driver::CChoice kWorkarounds[] = {
    {0, "None"},
    {kSingleRequests, "One request for each value"},
    {kCloseAfterScan, "Connection closed after each scan"},
    {kSingleRequests | kCloseAfterScan, "Both"},
};

constexpr driver::CField kFields[] = {
    {"Device",
     "text1: the address of the device. On the network 192.168.0.10 or plc.plant:1502, with port 502 if "
     "none is given; on a serial line /dev/ttyUSB0:19200,8,E,1, with rate, data bits, parity (N, E, O) and "
     "stop bits.",
     &DriverRecord::text1},
    {"Unit",
     "station: number of the unit, also called slave address: 1 to 247 on a serial line; on the network 0 to "
     "255, where it selects one of the devices of a gateway.",
     &DriverRecord::station, 0, kLastUnit},
    {"Time-out (ms)", "timeOut: longest time to wait for a reply, in milliseconds. 0 means 1000.",
     &DriverRecord::timeOut, 0, kLongestTimeOut},
    {"Values",
     "text2: one value for each variable, in order, with commas between: h100, c5, h200 x 3: f32 cdab. "
     "Kinds: c coil, d discrete input, h holding register, i input register. Addresses count from 0: what a "
     "list calls 40101 is h100. Types of registers: u16 (if none is given), i16, u32, i32, f32, f64; orders "
     "of their bytes: abcd (if none is given), cdab, badc, dcba.",
     &DriverRecord::text2},
    {"Added to each address",
     "registerAddress: a number that is added to each address of the values. With -40001 they are given as "
     "in a list that calls the first register 40001: h40101 is register 100. 0 means that addresses count "
     "from 0.",
     &DriverRecord::registerAddress, kLowestAdded, kLastAddress},
    {"Pause between requests (ms)",
     "value1: pause after each reply before the next request, in milliseconds: for a device that loses "
     "requests that come too soon. 0 means no pause.",
     &DriverRecord::value1, 0, kLongestPause},
    {"Pause after connecting (ms)",
     "value2: how long the first request waits after connecting, in milliseconds: for a device or gateway "
     "that is not ready at once. 0 means no pause.",
     &DriverRecord::value2, 0, kLongestPause},
    {"Most registers in a request",
     "value3: how many registers a request has at most, for a device that refuses longer requests. Of coils "
     "and discrete inputs a request has up to sixteen times as many. 0 means 125, the most there can be.",
     &DriverRecord::value3, 0, kMostRegisters},
    {"Workarounds",
     "value4: what the device needs. One request for each value: it has gaps between its registers, or "
     "refuses several at once. Connection closed after each scan: it serves few connections. Both: it needs "
     "the one and the other.",
     &DriverRecord::value4, kWorkarounds, "Value"},
};

constexpr DriverRecord NewNode() {
  DriverRecord record = {};
  record.station = 1;
  record.timeOut = kDefaultTimeOut;
  return record;
}

}  // namespace
}  // namespace modbus

constinit const driver::CNodeForm driver::kNodeForm = {
    modbus::kDriverId, "Modbus", modbus::kFields, modbus::NewNode(), modbus::CheckSettings, modbus::LineName};
