// CConnection: the connection of one handle.
#pragma once

#include "settings.h"
#include "station.h"

namespace simulator {

// Calls for one connection never overlap. Read and Write return a status and allocate nothing.
class CConnection {
 public:
  // Null with the bad setting and the reason in fault. Throws std::bad_alloc.
  static std::unique_ptr<CConnection> Open(const DriverRecord& record, int mode, std::string& fault);
  explicit CConnection(CSettings settings);

  int Read(float* values, int count);
  int Write(const float* values, int count);
  // The text for the failure of the last call; valid until the next call.
  const char* LastError();

 private:
  int BeginCall();
  void Connect();
  void FillWaveforms(float* values, int count) const;
  bool HasRegisters(int count) const { return count <= CStation::kRegisters - m_settings.firstRegister; }

  const CSettings m_settings;
  const std::chrono::steady_clock::time_point m_opened = std::chrono::steady_clock::now();
  bool m_connected = false;
  CStation* m_station = nullptr;  // while connected: null without a station
  std::uint64_t m_calls = 0;
  std::uint64_t m_reads = 0;
  char m_error[80] = "";
};

}  // namespace simulator
