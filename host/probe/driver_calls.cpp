#include "host/probe/driver_calls.h"

#include <chrono>

namespace vastra {
namespace {

constexpr DriverFunctions kOffersNothing = {};

}  // namespace

CString StatusName(int status) {
  if (status == statusOk) return "statusOk";
  const CDriverFailure* failure = FindFailure(status);
  return failure ? CString(failure->name) : "unknown status " + CString(std::to_string(status));
}

CString StatusMeaning(int status) {
  const CDriverFailure* failure = FindFailure(status);
  return failure ? failure->meaning : "";
}

bool IsOpenStatus(int status) {
  const CDriverFailure* failure = FindFailure(status);
  return status == statusOk || (failure && *failure->open);
}

bool IsTransferStatus(int status) {
  const CDriverFailure* failure = FindFailure(status);
  return status == statusOk || (failure && *failure->transfer);
}

bool HasErrorText(int status) { return FindFailure(status) && FindFailure(status)->text; }

CDriverErrorText ErrorTextFor(const DriverFunctions& table, int status) {
  return HasErrorText(status) ? table.*FindFailure(status)->text : nullptr;
}

CDriverCalls::CDriverCalls(HMODULE module) : m_module(module) {
  m_isDriver = module && AskHeader(module, m_header);
  m_functions = m_header.functions ? m_header.functions : &kOffersNothing;
  if (!m_isDriver) return;
  m_version = AskVersion(module);
  GiveHost(module, nullptr);
}

// Calls function, and then at once the function for the words on its status.
template <class Function>
CDriverReply CDriverCalls::Ask(const int& handle, const Function& function) const {
  using CCallClock = std::chrono::steady_clock;
  CDriverReply reply;
  reply.words = "an exception left the driver";
  const CCallClock::time_point begin = CCallClock::now();
  AskDriver(0, [&] { return reply.status = function(), reply.words.Empty(), 0; });
  reply.milliseconds = std::chrono::duration<double, std::milli>(CCallClock::now() - begin).count();
  if (const CDriverErrorText words = ErrorTextFor(Table(), reply.status))
    reply.words = AskDriver<const char*>(nullptr, [&] { return words(handle); });
  return reply;
}

CDriverReply CDriverCalls::Open(const DriverConfig& config, int mode, int& handle) const {
  handle = kNoHandle;
  CDriverReply reply = Ask(handle, [&] { return Table().Open(ToRecord(config), mode, &handle); });
  if (reply.status != statusOk) handle = kNoHandle;
  return reply;
}

CDriverReply CDriverCalls::Read(std::span<float> values, int handle) const {
  return Ask(handle, [&] { return Table().Read(values.data(), static_cast<int>(values.size()), handle); });
}

CDriverReply CDriverCalls::Write(std::span<float> values, int handle) const {
  return Ask(handle, [&] { return Table().Write(values.data(), static_cast<int>(values.size()), handle); });
}

void CDriverCalls::Close(int handle) const {
  if (m_version >= kVersionWithClose && Table().Close) AskDriver(0, [&] { return Table().Close(handle), 0; });
}

}  // namespace vastra
