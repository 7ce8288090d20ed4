#include "host/probe/driver_calls.h"

#include <algorithm>
#include <chrono>
#include <iterator>

namespace vastra {
namespace {

constexpr DriverFunctions kOffersNothing = {};

struct CStatus {
  int status;
  const char* name;
  const char* meaning;
  CDriverWords DriverFunctions::*words;
  bool isOfOpen;
  bool isOfTransfer;
};
constexpr CStatus kStatuses[] = {
    {statusNoMemory, "statusNoMemory", "the driver has run out of memory", nullptr, true, true},
    {statusExtendedError, "statusExtendedError", "", &DriverFunctions::GetExtendedError, true, true},
    {statusOk, "statusOk", "", nullptr, true, true},
    {statusNotOpened, "statusNotOpened", "the handle is not open", nullptr, false, true},
    {statusInvalidFrame, "statusInvalidFrame", "a bad frame came from the device", nullptr, false, true},
    {statusTimeout, "statusTimeout", "no reply in time", nullptr, false, true},
    {statusInvalidMode, "statusInvalidMode", "the driver does not open for this", nullptr, true, false},
    {statusReplyError, "statusReplyError", "", &DriverFunctions::GetReplyError, true, true},
};

const CStatus* Find(int status) {
  const auto row = std::ranges::find(kStatuses, status, &CStatus::status);
  return row == std::end(kStatuses) ? nullptr : row;
}

}  // namespace

CString StatusName(int status) {
  const CStatus* row = Find(status);
  return row ? CString(row->name) : "unknown status " + CString(std::to_string(status));
}

CString StatusMeaning(int status) {
  const CStatus* row = Find(status);
  return row ? row->meaning : "";
}

bool IsOpenStatus(int status) { return Find(status) && Find(status)->isOfOpen; }

bool IsTransferStatus(int status) { return Find(status) && Find(status)->isOfTransfer; }

bool HasWords(int status) { return Find(status) && Find(status)->words; }

CDriverWords WordsFor(const DriverFunctions& table, int status) {
  return HasWords(status) ? table.*Find(status)->words : nullptr;
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
  using Clock = std::chrono::steady_clock;
  CDriverReply reply;
  reply.words = "an exception left the driver";
  const Clock::time_point begin = Clock::now();
  AskDriver(0, [&] { return reply.status = function(), reply.words.Empty(), 0; });
  reply.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
  if (const CDriverWords words = WordsFor(Table(), reply.status))
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
