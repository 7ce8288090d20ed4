// The settings of a Modbus node, read from its record.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "plan.h"
#include "vastra/plc/driver_api.h"

namespace modbus {

using CClock = std::chrono::steady_clock;
using CTime = CClock::time_point;
using std::chrono::milliseconds;

constexpr int kDriverId = 9002;
constexpr int kDefaultTimeOut = 1000;  // milliseconds
constexpr int kLongestTimeOut = 60000;
constexpr int kLongestPause = 60000;
constexpr int kMostRegisters = 125;  // of a request, by the protocol
constexpr int kMostWritten = 123;    // the same when they are written
constexpr int kLastUnit = 255;
constexpr int kLastSerialUnit = 247;

// The bits of value4.
constexpr int kSingleRequests = 1;  // one request for each value
constexpr int kCloseAfterScan = 2;  // no connection between scans

// Where a device is reached: by TCP, or on a serial line.
struct CEndpoint {
  std::string name;  // for messages
  std::string host;  // empty: a serial line
  std::string port;
  std::string device;
  int baud;
  char parity;  // N, E or O
  int stop;     // bits

  bool HasSameSettings(const CEndpoint& other) const {
    return baud == other.baud && parity == other.parity && stop == other.stop;
  }
  bool IsSerial() const { return host.empty(); }
};

// Between two attempts to reach a device: it grows from the first to the longest, here those of a serial
// line.
struct CPauses {
  milliseconds first{500};
  milliseconds longest{30000};
};

struct CSettings {
  CEndpoint endpoint;
  int unit;
  milliseconds timeOut;       // of a reply
  milliseconds requestPause;  // between two requests
  milliseconds connectPause;  // after connecting
  bool closesAfterScan;
  int count;                       // of values
  std::vector<CRequest> requests;  // of one transfer
  CPauses pauses;
};

// Reads record into settings, for a node that is written or read. Returns an empty text, or the bad setting
// and the reason.
std::string ReadSettings(const DriverRecord& record, bool writes, CSettings& settings);
// The same check for a node that is read. variableCount 0: the number of its values is not checked.
std::string CheckSettings(const DriverRecord& record);

}  // namespace modbus
