// CLine: transport of frames to a device and back, by a TCP connection or a serial line.
#pragma once

#include <memory>
#include <string>

#include "frame.h"
#include "settings.h"

namespace modbus {

// The result of a step: statusOk, or a status of the driver interface and its text.
struct CResult {
  int status = statusOk;
  std::string words;     // without the name of the device
  bool pending = false;  // no failure yet: a later call continues

  bool IsGood() const { return status == statusOk; }
};

class CLine {
 public:
  CLine() = default;
  CLine(const CLine&) = delete;
  CLine& operator=(const CLine&) = delete;
  virtual ~CLine() = default;

  // Whether frames can be sent. A device that has closed its side is not connected.
  virtual bool IsConnected() = 0;
  // Connects, or continues to connect, and waits until `until` at most. A wary attempt is for a device that
  // has failed: it only counts as connected once it has answered.
  virtual CResult Connect(const CSettings& settings, CTime until, bool wary) = 0;
  // Sends request and waits for its reply, for the time-out at most; connects again first if the device
  // has closed the connection. After a failure the next exchange begins on a clean line, or IsConnected says
  // no.
  virtual CResult Exchange(const CSettings& settings, const CFrame& request, CFrame& reply) = 0;
  virtual void Drop() = 0;
};

// The name of the serial line that the node of record uses: the same for all names of its device. Empty for a
// node that is reached by TCP, or with wrong settings.
std::string LineName(const DriverRecord& record);

// The line for settings. A serial line is shared by all that name its device. Null with fault: it is in use
// with other settings.
std::shared_ptr<CLine> NewLine(const CSettings& settings, std::string& fault);

}  // namespace modbus
