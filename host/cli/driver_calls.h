// A driver module called directly, without a link: each call gives the driver's own status and the time that
// it took.
#pragma once

#include <span>

#include "vastra/plc/driver_call.h"
#include "vastra/plc/driver_config.h"

namespace vastra {

constexpr int kNoHandle = -1;
constexpr std::size_t kGuard = 64;  // floats around the values of a call, for drivers that write beside them

// "statusOk", or "unknown status 7".
CString StatusName(int status);
// In words, for a status of which a driver has none of its own.
CString StatusMeaning(int status);
// The function of table that has words for status; null if status has none or the driver lacks it.
using CDriverWords = const char* (*)(int handle);
bool HasWords(int status);
CDriverWords WordsFor(const DriverFunctions& table, int status);

struct CDriverReply {
  int status = kThrew;
  double milliseconds = 0;
  CString words;  // of the driver, or on what became of the call
};

class CDriverCalls {
 public:
  // Takes over the hold of module, of which IsDriver tells whether it is one.
  explicit CDriverCalls(HMODULE module);
  CDriverCalls(const CDriverCalls&) = delete;
  CDriverCalls& operator=(const CDriverCalls&) = delete;
  ~CDriverCalls() { FreeModule(m_module); }

  bool IsDriver() const { return m_isDriver; }
  int Id() const { return m_header.id; }
  CString Name() const { return m_header.name; }
  int Version() const { return m_version; }
  const DriverFunctions& Table() const { return *m_functions; }

  // Of functions that the table has. handle is -1 unless Open gave statusOk.
  CDriverReply Open(const DriverConfig& config, int mode, int& handle) const;
  CDriverReply Read(std::span<float> values, int handle) const;
  CDriverReply Write(std::span<float> values, int handle) const;
  void Close(int handle) const;

 private:
  template <class Function>
  CDriverReply Ask(const int& handle, const Function& function) const;

  HMODULE m_module;
  bool m_isDriver = false;
  DriverHeader m_header = {};
  const DriverFunctions* m_functions;
  int m_version = 1;
};

}  // namespace vastra
