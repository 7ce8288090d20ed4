#include "host/web/logger_record.h"

#include <algorithm>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

constexpr std::size_t kMostMessageBytes = std::size_t{1} << 20;
constexpr std::size_t kMostLogs = 100;
constexpr std::size_t kLongestName = 200;
constexpr std::uint64_t kMostMissing = 1'000'000;  // messages at once: numbers stay exact in a browser
constexpr std::size_t kMostFolders = 100;
constexpr double kOldest = 1e9;  // seconds
constexpr std::chrono::seconds kCountsPatience{3};

}  // namespace

CLoggerRecord::CLoggerRecord(const CLoggerPlace& place)
    : m_name(place.name.Std()),
      m_messages(kMostMessages, kMostMessageBytes),
      m_logs(kMostLogs, kMostMessageBytes) {
  m_status.place = place;
  m_status.fault = "the logger has not answered yet";
  CHelloLine none;
  TakeVariables(none);
}

void CLoggerRecord::Note(CFeedEvent& event, Time now) {
  m_now = now;
  std::visit([this](auto& known) { Note(known); }, event);
}

void CLoggerRecord::Fail(const std::string& fault) {
  m_status.fault = fault;
  m_status.state = {};
  m_status.counts.reset();
  m_lastSample.reset();
}

void CLoggerRecord::Note(CHelloLine& hello) {
  const bool isSame = hello.pid == m_status.hello.pid && hello.started == m_status.hello.started;
  if (!isSame) m_lastMessage.reset();
  TakeVariables(hello);
  m_status.hello = std::move(hello);
  m_hasAnswered = true;
}

// A sample belongs to the variables that were there when it came.
void CLoggerRecord::TakeVariables(CHelloLine& hello) {
  CSampleVariables list = {std::move(hello.variables), std::move(hello.units), std::move(hello.nodes),
                           std::move(hello.origins)};
  if (m_variables && *m_variables == list) return;
  if (m_variables && m_variables->names != list.names) m_sample.reset();
  m_variables = std::make_shared<const CSampleVariables>(std::move(list));
  m_variablesText =
      ShareText([name = m_name, variables = m_variables] { return VariablesText(name, *variables); });
}

void CLoggerRecord::Note(CStateLine& state) {
  const bool wasRunning = m_status.state.state == "running";
  m_status.state = std::move(state);
  m_status.fault.clear();
  if (!wasRunning) m_runningSince = m_now;
  m_lastSample = m_status.state.lastSample;
  m_lastAge = std::clamp(m_status.state.lastSampleAge.value_or(0), -kOldest, kOldest);
  m_lastHeard = m_now;
}

// The newest sample comes again after the connection: only another one is fresh.
void CLoggerRecord::Note(CSampleLine& sample) {
  if (m_lastSample != sample.time) m_lastAge = 0, m_lastHeard = m_now;
  m_lastSample = sample.time;
  m_sample = ShareText([name = m_name, line = std::move(sample)] { return SampleText(name, line); });
}

// The kept messages come again with each connection to the same process.
void CLoggerRecord::Note(CMessageLine& message) {
  if (m_lastMessage && message.number <= *m_lastMessage) return;
  if (m_lastMessage) m_messages.Skip(std::min(message.number - *m_lastMessage - 1, kMostMissing));
  m_lastMessage = message.number;
  message.text = Shortened(message.text.c_str(), kLongestMessage);
  for (std::string* text : {&message.link, &message.name}) *text = Shortened(text->c_str(), kLongestName);
  const std::size_t bytes = message.text.size() + message.link.size() + message.name.size();
  m_messages.Add(ShareText([name = m_name, number = m_messages.Next(), line = std::move(message)] {
                   return MessageText(name, number, line);
                 }),
                 bytes);
}

void CLoggerRecord::Note(CLogLine& log) {
  std::string text = LogText(m_name, log);
  const std::size_t bytes = text.size();
  m_logs.Add(ShareText([text = std::move(text)] { return text; }), bytes);
}

CLoggerStatus CLoggerRecord::Status(Time now) const {
  CLoggerStatus status = m_status;
  status.awaitsCounts = !status.counts && now - m_runningSince < kCountsPatience;
  status.state.lastSample = m_lastSample;
  status.state.lastSampleAge.reset();
  if (m_lastSample)
    status.state.lastSampleAge = m_lastAge + std::chrono::duration<double>(now - m_lastHeard).count();
  return status;
}

std::vector<std::string> CLoggerRecord::Folders() const {
  std::vector<std::string> folders;
  for (const auto* stages : {&m_status.hello.outputs, &m_status.hello.summaries})
    for (const CStageFacts& stage : *stages) {
      const bool isNew = std::find(folders.begin(), folders.end(), stage.folder) == folders.end();
      if (isNew && stage.folder.starts_with('/') && folders.size() < kMostFolders)
        folders.push_back(stage.folder);
    }
  return folders;
}

}  // namespace vastra
