#include "host/run/live_state.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <type_traits>

namespace vastra {
namespace {

// Such as ".csv".
CString FormOf(const CString& path) {
  const int dot = path.ReverseFind('.');
  return dot < 0 ? CString() : path.Mid(dot);
}

bool AreSameFiles(const CLastLog& a, const CLastLog& b) {
  return a.source.key == b.source.key && FormOf(a.path) == FormOf(b.path);
}

}  // namespace

CLiveSnapshot CLiveState::Snapshot() const {
  for (;;) {
    CLiveSnapshot snapshot;
    const CFixed fixed = CopyFixed(snapshot);
    if (!fixed.values) return snapshot;
    snapshot.names = *fixed.names;
    snapshot.values.resize(fixed.values->size());
    while (!CopyNumbers(*fixed.values, snapshot)) std::this_thread::yield();
    if (snapshot.samples == 0) snapshot.values.clear();
    const std::lock_guard lock(m_mutex);
    if (m_values == fixed.values) return snapshot;  // else the numbers can be of samples with other names
  }
}

bool CLiveState::CopyNewest(CLiveNewest& newest) const {
  constexpr int kTries = 100;
  std::shared_ptr<const Values> values;
  {
    const std::lock_guard lock(m_mutex);
    newest.names = m_names;
    newest.ledger = m_ledger;
    newest.nodes = m_nodes;
    newest.written = m_written;
    newest.saved = m_saved;
    newest.unsaved = m_unsaved;
    values = m_values;
  }
  newest.values.resize(values ? values->size() : 0);
  for (int i = 0; values && i < kTries; ++i) {
    if (!CopyNumbers(*values, newest)) continue;
    const std::lock_guard lock(m_mutex);
    return m_values == values;
  }
  return !values;
}

void CLiveState::SetLedger(std::shared_ptr<const std::vector<CRunLedger>> ledger) {
  const std::lock_guard lock(m_mutex);
  m_ledger.swap(ledger);
}

void CLiveState::SetNodes(std::vector<CNodeState> nodes, std::vector<CNodeState> written) {
  auto read = std::make_shared<const std::vector<CNodeState>>(std::move(nodes));
  auto others = std::make_shared<const std::vector<CNodeState>>(std::move(written));
  const std::lock_guard lock(m_mutex);
  m_nodes.swap(read);
  m_written.swap(others);
}

// Copies what the mutex guards.
CLiveState::CFixed CLiveState::CopyFixed(CLiveSnapshot& snapshot) const {
  const std::lock_guard lock(m_mutex);
  snapshot.isRunning = m_isRunning;
  snapshot.logs = m_logs;
  snapshot.messages = m_messages;
  std::rotate(snapshot.messages.begin(), snapshot.messages.begin() + static_cast<std::ptrdiff_t>(m_oldest),
              snapshot.messages.end());
  return {m_names, m_values};
}

// False: the writer has stored meanwhile. The acquiring loads keep their order, so that a sequence number
// that is the same before and after says that nothing in between changed.
bool CLiveState::CopyNumbers(const Values& values, CLiveNumbers& numbers) const {
  static_assert(std::is_trivially_copyable_v<CHead>);
  const std::uint64_t before = m_sequence.load(std::memory_order_acquire);
  Word words[kWords];
  std::transform(m_words.begin(), m_words.end(), words,
                 [](const auto& word) { return word.load(std::memory_order_acquire); });
  std::transform(values.begin(), values.end(), numbers.values.begin(),
                 [](const auto& value) { return value.load(std::memory_order_acquire); });
  if (before % 2 != 0 || m_sequence.load(std::memory_order_relaxed) != before) return false;
  CHead head;
  std::memcpy(&head, words, sizeof head);
  numbers.time = head.time;
  numbers.samples = head.samples;
  numbers.number = head.number;
  numbers.read = head.read;
  numbers.counts = head.counts;
  return true;
}

void CLiveState::StoreHead() {
  Word words[kWords] = {};
  std::memcpy(words, &m_head, sizeof m_head);
  for (std::size_t i = 0; i < kWords; ++i) m_words[i].store(words[i], std::memory_order_release);
}

void CLiveState::Started(const CStringArray& names) {
  {
    const std::lock_guard lock(m_mutex);
    m_isRunning = true;
    m_logs.clear();
    m_saved.clear();
    m_unsaved.clear();
  }
  m_head.counts = {};
  m_head.number = 0;
  Renamed(names);
}

void CLiveState::Renamed(const CStringArray& names) {
  auto copy = std::make_shared<const std::vector<CString>>(names.begin(), names.end());
  auto values = std::make_shared<Values>(copy->size());
  m_head.samples = 0;  // there is none with these names yet
  const std::lock_guard lock(m_mutex);
  m_names.swap(copy);
  m_values.swap(values);
  BeginChange();
  StoreHead();
  EndChange();
}

void CLiveState::Sampled(const CLogSample& sample) {
  const auto count = std::min(m_values->size(), static_cast<std::size_t>(sample.m_values.GetSize()));
  m_head.time = sample.m_time;
  m_head.read = std::chrono::steady_clock::now();
  ++m_head.samples;
  ++m_head.number;
  BeginChange();
  StoreHead();
  for (std::size_t i = 0; i < count; ++i)
    (*m_values)[i].store(sample.m_values[static_cast<int>(i)], std::memory_order_release);
  EndChange();
}

void CLiveState::Counted(const CRunCounts& counts) {
  m_head.counts = counts;
  BeginChange();
  StoreHead();
  EndChange();
}

void CLiveState::Message(const CRunMessage& message) {
  auto kept = std::make_shared<const CKeptMessage>(CKeptMessage{
      message.time, message.severity, message.function, message.link, message.name, message.text});
  const std::lock_guard lock(m_mutex);
  if (m_messages.size() < kMessages) return m_messages.push_back(std::move(kept));
  m_messages[m_oldest].swap(kept);
  m_oldest = (m_oldest + 1) % kMessages;
}

void CLiveState::LogClosed(const CLogSource& source, const CSavedLog& log) {
  Keep(std::make_shared<const CLastLog>(CLastLog{source, log.path, log.first, log.last, log.samples, {}}));
}

void CLiveState::LogNotSaved(const CLogSource& source, const CUnsavedLog& log) {
  Keep(std::make_shared<const CLastLog>(CLastLog{source, log.path, {}, {}, log.samples, log.reason}));
}

// Puts log in the place of the former one of its source.
void CLiveState::KeepLast(Logs& logs, std::shared_ptr<const CLastLog> log) {
  const auto former = std::find_if(logs.begin(), logs.end(),
                                   [&](const auto& other) { return other->source.key == log->source.key; });
  if (former == logs.end()) return logs.push_back(std::move(log));
  former->swap(log);
}

void CLiveState::Keep(const std::shared_ptr<const CLastLog>& log) {
  const std::lock_guard lock(m_mutex);
  std::erase_if(m_unsaved, [&](const auto& other) { return AreSameFiles(*other, *log); });
  KeepLast(m_logs, log);
  if (log->reason.IsEmpty())
    KeepLast(m_saved, log);
  else
    m_unsaved.push_back(log);
}

void CLiveState::KeepUnsaved(const std::vector<CString>& paths) {
  const std::lock_guard lock(m_mutex);
  std::erase_if(m_unsaved,
                [&](const auto& log) { return std::ranges::find(paths, log->path) == paths.end(); });
}

void CLiveState::Stopped() {
  const std::lock_guard lock(m_mutex);
  m_isRunning = false;
}

}  // namespace vastra
