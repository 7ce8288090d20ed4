#include "host/cli/driver_calls.h"

#include <chrono>

namespace vastra {
namespace {

constexpr DriverFunctions kOffersNothing = {};

constexpr struct {
  int status;
  const char* name;
  const char* meaning;
  CDriverWords DriverFunctions::*words;
} kStatuses[] = {
    {statusNoMemory, "statusNoMemory", "the driver has run out of memory", nullptr},
    {statusExtendedError, "statusExtendedError", "", &DriverFunctions::GetExtendedError},
    {statusOk, "statusOk", "", nullptr},
    {statusNotOpened, "statusNotOpened", "the handle is not open", nullptr},
    {statusInvalidFrame, "statusInvalidFrame", "a bad frame came from the device", nullptr},
    {statusTimeout, "statusTimeout", "no reply in time", nullptr},
    {statusInvalidMode, "statusInvalidMode", "the driver does not open for this", nullptr},
    {statusReplyError, "statusReplyError", "", &DriverFunctions::GetReplyError},
};

}  // namespace

CString StatusName(int status) {
  for (const auto& row : kStatuses)
    if (row.status == status) return row.name;
  return "unknown status " + CString(std::to_string(status));
}

CString StatusMeaning(int status) {
  for (const auto& row : kStatuses)
    if (row.status == status) return row.meaning;
  return {};
}

bool HasWords(int status) { return status == statusExtendedError || status == statusReplyError; }

CDriverWords WordsFor(const DriverFunctions& table, int status) {
  for (const auto& row : kStatuses)
    if (row.status == status && row.words) return table.*row.words;
  return nullptr;
}

CDriverCalls::CDriverCalls(HMODULE module) : m_module(module) {
  m_isDriver = module && AskHeader(module, m_header);
  m_functions = m_header.functions ? m_header.functions : &kOffersNothing;
  if (!m_isDriver) return;
  m_version = AskVersion(module);
  GiveHost(module, nullptr);
}

// Calls function and asks for the words on its status at once.
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
