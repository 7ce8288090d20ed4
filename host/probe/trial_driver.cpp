#include "host/probe/trial_driver.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

namespace vastra {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostWords = 4096;  // bytes in which the words of a driver have to end
constexpr int kMostNoted = 500;           // bytes, about
constexpr auto kReadPatience = 1s;

}  // namespace

CString TrialStatusName(int status) { return status == kException ? "an exception" : StatusName(status); }

bool IsUtf8(const CString& text) { return IsJsonText(CJson(text.Std())); }

void CNotes::Add(const CString& words) {
  if (words.IsEmpty()) return;
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

CString CTrialDriver::FindTextFault(const CString& name, const CString& copy) {
  if (static_cast<std::size_t>(copy.GetLength()) >= kMostWords)
    return "the text of " + name + " does not end within " + Decimal(kMostWords) + " bytes";
  return IsUtf8(copy) ? CString() : "the text of " + name + " is not UTF-8: " + copy.Left(kMostNoted);
}

CString CTrialDriver::AskQuestion(const char* name, const DriverConfig& config) {
  const CDriverQuestion ask = FindQuestion(m_module, name);
  if (!ask) return CString();
  m_hasQuestions = true;
  CConnection given(config);
  CString answer;
  Call(name, [&] {
    const char* const text = ask(given.record);
    answer = CString(text ? text : "", text ? ::strnlen(text, kMostWords) : 0);
  });
  m_questionFaults.Add(FindTextFault(name, answer));
  return answer;
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
  m_wordFaults.Add(FindTextFault(name, copy));
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

void CTrialDriver::CheckValues(std::span<const float> values) {
  const auto left = std::ranges::find_if(values, CValueArea::IsUntouched);
  if (left != values.end())
    m_readFaults.Add("value " + Decimal(left - values.begin() + 1) + " of " +
                     Decimal(static_cast<long long>(values.size())) + " was left as it was, with statusOk");
}

int CTrialDriver::Read(CConnection& connection) {
  const CValueArea area(m_config.variableCount);
  const int count = static_cast<int>(m_config.variableCount);
  int status = kException;
  const bool returned =
      Call("Read", [&] { status = m_table->Read(area.Values().data(), count, connection.handle); });
  m_readFaults.Add(area.FindFault());
  AskWords("Read", status, connection.handle);
  if (!returned) return status;
  ++m_transfers;
  if (status == statusOk) CheckValues(area.Values());
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

int CTrialDriver::Write(CConnection& connection, const std::vector<float>& values) {
  const CValueArea area(values.size());
  std::ranges::copy(values, area.Values().begin());
  int status = kException;
  const bool returned = Call("Write", [&] {
    status = m_table->Write(area.Values().data(), static_cast<int>(values.size()), connection.handle);
  });
  m_writeFaults.Add(area.FindFault());
  AskWords("Write", status, connection.handle);
  m_transfers += returned;
  return status;
}

}  // namespace vastra
