// A driver module called directly, without a link: each call returns the driver's own status and its
// duration. The probe and the contract test use it.
#pragma once

#include <span>

#include "vastra/plc/driver_call.h"
#include "vastra/plc/driver_config.h"
#include "vastra/plc/driver_failure.h"

namespace vastra {

constexpr int kNoHandle = -1;

// "statusOk", or "unknown status 7".
CString StatusName(int status);
// The meaning of a status for which the driver has no words of its own; empty for the others.
CString StatusMeaning(int status);
// Whether status is one of those that Open, or Read and Write, may return.
bool IsOpenStatus(int status);
bool IsTransferStatus(int status);
// Whether the driver explains status in words, and its function for them: null if it lacks the function.
bool HasErrorText(int status);
CDriverErrorText ErrorTextFor(const DriverFunctions& table, int status);

struct CDriverReply {
  int status = kThrew;
  double milliseconds = 0;
  CString words;  // of the driver, or of the host for a call that threw
};

class CDriverCalls {
 public:
  // Becomes the owner of module, which may be null. IsDriver says whether it is a driver.
  explicit CDriverCalls(HMODULE module);
  CDriverCalls(const CDriverCalls&) = delete;
  CDriverCalls& operator=(const CDriverCalls&) = delete;
  ~CDriverCalls() { FreeModule(m_module); }

  bool IsDriver() const { return m_isDriver; }
  int Id() const { return m_header.id; }
  CString Name() const { return m_header.name; }
  int Version() const { return m_version; }
  const DriverFunctions& Table() const { return *m_functions; }

  // Only for functions that the table has. handle is -1 unless Open returned statusOk.
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
