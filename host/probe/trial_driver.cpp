#include "host/probe/trial_driver.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <thread>

namespace vastra {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostWords = 4096;  // bytes in which the words of a driver have to end
constexpr int kMostNoted = 500;           // bytes, about
const float kUntouched = std::bit_cast<float>(0x7FC5A5A5u);
constexpr auto kReadPatience = 1s;

bool IsUntouched(float value) { return std::bit_cast<UINT>(value) == std::bit_cast<UINT>(kUntouched); }

}  // namespace

CString TrialStatusName(int status) { return status == kException ? "an exception" : StatusName(status); }

bool IsUtf8(const CString& text) { return IsJsonText(CJson(text.Std())); }

void CNotes::Add(const CString& words) {
  const std::lock_guard lock(m_mutex);
  if (m_text.GetLength() < kMostNoted && m_text.Find(words) < 0)
    m_text += (m_text.IsEmpty() ? "" : "; ") + words;
}

void CTrialDriver::Send(const CJson& message) const {
  const std::string line = message.dump(-1, ' ', false, CJson::error_handler_t::replace) + "\n";
  for (std::size_t done = 0; done < line.size();) {
    const ssize_t part = ::write(m_pipe, line.data() + done, line.size() - done);
    if (part < 0 && errno != EINTR) ::_exit(1);
    if (part > 0) done += static_cast<std::size_t>(part);
  }
}

bool CTrialDriver::Load(CString& reason) {
  Send({{"call", "loading"}});
  m_module = LoadModule(m_test.path, &reason);
  if (!m_module) return false;
  reason = "no GetDriverHeader";
  if (!FindExport(m_module, "GetDriverHeader")) return false;
  reason = "GetDriverHeader returned no header";
  if (!AskForHeader()) return false;
  m_name = m_header.name;
  const auto version =
      reinterpret_cast<decltype(&GetDriverApiVersion)>(FindExport(m_module, "GetDriverApiVersion"));
  if (version) Call("GetDriverApiVersion", [&] { m_version = version(); });
  const auto setHost = reinterpret_cast<decltype(&SetDriverHost)>(FindExport(m_module, "SetDriverHost"));
  if (setHost) Call("SetDriverHost", [&] { setHost(nullptr); });
  m_table = m_header.functions;
  return true;
}

void CTrialDriver::Unload() { FreeModule(m_module); }

bool CTrialDriver::AskForHeader() {
  bool given = false;
  return Call("GetDriverHeader", [&] { given = AskHeader(m_module, m_header); }) && given;
}

CString CTrialDriver::Describe(const char* call, int status) const {
  const CString words = HasErrorText(status) && !m_lastWords.IsEmpty() ? ": " + m_lastWords : CString();
  return CString(call) + " failed (" + TrialStatusName(status) + words + ")";
}

void CTrialDriver::AskWords(const char* call, int status, int handle) {
  if (!HasErrorText(status)) return;
  const CString name = status == statusReplyError ? "GetReplyError" : "GetExtendedError";
  ++m_wordsAsked;
  const CDriverErrorText words = ErrorTextFor(*m_table, status);
  if (!words)
    return m_wordFaults.Add(CString(call) + " returned " + TrialStatusName(status) + ", and there is no " +
                            name);
  const char* text = nullptr;
  if (!Call(name, [&] { text = words(handle); })) return;
  if (!text) return m_wordFaults.Add(name + " returned null after " + call);
  const CString copy(text, ::strnlen(text, kMostWords));
  if (copy.IsEmpty()) m_wordFaults.Add(name + " returned an empty text after " + call);
  if (static_cast<std::size_t>(copy.GetLength()) == kMostWords)
    m_wordFaults.Add("the text of " + name + " does not end within " + Decimal(kMostWords) + " bytes");
  else if (!IsUtf8(copy))
    m_wordFaults.Add("the text of " + name + " is not UTF-8: " + copy.Left(kMostNoted));
  const std::lock_guard lock(m_lastMutex);
  m_lastWords = copy.Left(kMostNoted);
}

void CTrialDriver::Open(CConnection& connection, int mode) {
  connection.status = kException;
  connection.handle = kNoHandle;
  Call("Open", [&] { connection.status = m_table->Open(connection.record, mode, &connection.handle); });
  AskWords("Open", connection.status, connection.handle);
}

void CTrialDriver::Close(const CConnection& connection) {
  if (connection.status == statusOk && HasCloseCall())
    Call("Close", [&] { m_table->Close(connection.handle); });
}

void CTrialDriver::CheckArea(std::span<const float> area, int status) {
  const auto before = area.first(kGuard), after = area.last(kGuard);
  const auto values = area.subspan(kGuard, area.size() - 2 * kGuard);
  if (!std::ranges::all_of(before, IsUntouched)) m_areaFaults.Add("it wrote before the first value");
  if (!std::ranges::all_of(after, IsUntouched)) m_areaFaults.Add("it wrote after the last value");
  const auto left = std::ranges::find_if(values, IsUntouched);
  if (status == statusOk && left != values.end())
    m_areaFaults.Add("value " + Decimal(left - values.begin() + 1) + " of " +
                     Decimal(static_cast<long long>(values.size())) + " was left as it was, with statusOk");
}

int CTrialDriver::Read(CConnection& connection) {
  const std::size_t count = m_config.variableCount;
  std::vector<float> area(count + 2 * kGuard, kUntouched);
  int status = kException;
  const bool returned = Call(
      "Read", [&] { status = m_table->Read(&area[kGuard], static_cast<int>(count), connection.handle); });
  AskWords("Read", status, connection.handle);
  if (!returned) return status;
  ++m_transfers;
  CheckArea(area, status);
  if (!IsTransferStatus(status)) m_statusFaults.Add("Read returned " + TrialStatusName(status));
  return status;
}

int CTrialDriver::ReadWell(CConnection& connection) {
  const Clock::time_point end = Clock::now() + kReadPatience;
  for (;;) {
    const int status = Read(connection);
    if (status == statusOk || Clock::now() >= end) return status;
    std::this_thread::sleep_for(kTrialRest);
  }
}

int CTrialDriver::Write(CConnection& connection, std::vector<float> values) {
  int status = kException;
  const bool returned = Call("Write", [&] {
    status = m_table->Write(values.data(), static_cast<int>(values.size()), connection.handle);
  });
  AskWords("Write", status, connection.handle);
  m_transfers += returned;
  return status;
}

}  // namespace vastra
