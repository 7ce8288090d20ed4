// CConnection: the connection of one handle. It sends the planned requests. After a failure it pauses, so
// that a dead device does not delay the other nodes.
#pragma once

#include "line.h"

namespace modbus {

class CConnection {
 public:
  // Begins to connect without waiting. Null with the reason in fault if the settings are wrong. Throws
  // std::bad_alloc.
  static std::unique_ptr<CConnection> Open(const DriverRecord& record, int mode, std::string& fault);
  CConnection(CSettings settings, std::shared_ptr<CLine> line);

  // Statuses. Calls for one connection never overlap.
  int Read(float* values, int count);
  int Write(const float* values, int count);
  // The text for the failure of the last call; valid until the next call.
  const char* LastError() const { return m_words.c_str(); }

 private:
  bool Checks(int count);
  bool FitTypes(const float* values);
  CTime PatienceFrom(CTime now) const;
  int Begin();
  int Exchange(const CRequest& request, const CFrame& frame, CFrame& reply);
  int FailExchange(const CResult& result, const std::string& where);
  int End(int status);
  int Fail(int status, const std::string& words);
  int Lose(const CResult& result, const std::string& where);

  const CSettings m_settings;
  const std::string m_name;
  std::shared_ptr<CLine> m_line;
  std::string m_words;
  std::string m_lost;  // the text of the failure that began the pause
  milliseconds m_pause{0};
  CTime m_restUntil;      // no attempt before
  CTime m_called;         // when the last transfer began
  CTime m_nextRequest;    // no request before
  bool m_isWary = false;  // the device has not answered since it failed
  // A bad frame came by a serial line since the last good transfer: a single one may be noise, and loses
  // nothing.
  bool m_wasNoise = false;
};

}  // namespace modbus
