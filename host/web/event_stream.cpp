#include "host/web/event_stream.h"

#include <algorithm>

#include "vastra/history/moment.h"

namespace vastra {
namespace {

CTextPtr NowText() {
  return ShareText([] {
    _timeb now;
    _ftime(now);
    return "{\"now\":" + std::to_string(MomentOf(now)) + "}";
  });
}

CTextPtr DroppedText(const std::string& logger, const char* kind, std::uint64_t count) {
  return ShareText([logger, kind, count] { return JsonText({{"logger", logger}, {kind, count}}); });
}

void AppendEvent(const char* event, const std::string& data, std::string& text) {
  text.append("event: ").append(event).append("\ndata: ").append(data).append("\n\n");
}

}  // namespace

CEventStream::CEventStream(std::shared_ptr<CWatchBoard> board, const CStreamRequest& request,
                           std::function<void()> onReady)
    : m_board(std::move(board)), m_onReady(std::move(onReady)) {
  for (const std::string& name : request.samples)
    if (m_cursors.size() < kMostNames) CursorOf(name).wantsSamples = true;
  for (const std::string& name : request.messages)
    if (m_cursors.size() < kMostNames) CursorOf(name).wantsMessages = true;
  for (const std::string& name : request.logs)
    if (m_cursors.size() < kMostNames) CursorOf(name);
}

CEventStream::CCursor& CEventStream::CursorOf(const std::string& name) {
  const auto found = std::find_if(m_cursors.begin(), m_cursors.end(),
                                  [&name](const CCursor& cursor) { return cursor.name == name; });
  if (found != m_cursors.end()) return *found;
  m_cursors.emplace_back().name = name;
  return m_cursors.back();
}

bool CEventStream::Take(std::string& text) {
  text.clear();
  std::vector<CPending> pending;
  {
    const std::lock_guard lock(m_board->lock);
    m_isTold = false;
    pending = Collect();
  }
  for (const CPending& one : pending) AppendEvent(one.event, one.text->Text(), text);
  return !pending.empty();
}

void CEventStream::Close() {
  const std::lock_guard lock(m_telling);
  m_onReady = nullptr;
}

void CEventStream::Tell() {
  {
    const std::lock_guard lock(m_board->lock);
    if (m_isTold || !HasNews()) return;
    m_isTold = true;
  }
  const std::lock_guard lock(m_telling);
  if (m_onReady) m_onReady();
}

bool CEventStream::HasNews() const {
  const auto isBehind = [](const CCursor& cursor) {
    const std::shared_ptr<const CLoggerRecord>& record = cursor.now;
    if (!record) return false;
    if (record != cursor.record || cursor.log != record->Logs().Last()) return true;
    return (cursor.wantsSamples &&
            (cursor.variables != record->Variables() || cursor.sample != record->Sample())) ||
           (cursor.wantsMessages && cursor.message != record->Messages().Last());
  };
  return m_changes != m_board->changes || m_list != m_board->list || m_beats != m_board->beats ||
         std::any_of(m_cursors.begin(), m_cursors.end(), isBehind);
}

std::vector<CEventStream::CPending> CEventStream::Collect() {
  std::vector<CPending> pending;
  std::size_t room = kMostMessages;
  if (m_beats != m_board->beats) pending.push_back({"now", NowText()});
  m_beats = m_board->beats;
  if (m_list != m_board->list && m_board->list) pending.push_back({"loggers", m_board->list});
  m_list = m_board->list;
  if (m_changes != m_board->changes)
    for (CCursor& cursor : m_cursors) cursor.now = m_board->Find(cursor.name);
  m_changes = m_board->changes;
  for (CCursor& cursor : m_cursors) {
    const std::shared_ptr<const CLoggerRecord>& record = cursor.now;
    if (!record) continue;
    if (cursor.record != record) {
      cursor.message = record->Messages().Before();
      cursor.log = record->Logs().Last();  // only new ones are told
      cursor.record = record;
    }
    if (cursor.wantsSamples) CollectSample(cursor, pending);
    if (cursor.wantsMessages) CollectMessages(cursor, room, pending);
    CollectLogs(cursor, pending);
  }
  return pending;
}

void CEventStream::CollectSample(CCursor& cursor, std::vector<CPending>& pending) {
  const CLoggerRecord& record = *cursor.record;
  if (cursor.variables != record.Variables()) pending.push_back({"variables", record.Variables()});
  if (cursor.sample != record.Sample() && record.Sample()) pending.push_back({"sample", record.Sample()});
  cursor.variables = record.Variables();
  cursor.sample = record.Sample();
}

// A Take is not longer than so many messages, so that the lists of many loggers are not one text.
void CEventStream::CollectMessages(CCursor& cursor, std::size_t& room, std::vector<CPending>& pending) {
  for (const CTextRing::CEntry& entry : cursor.record->Messages().Entries()) {
    if (entry.number <= cursor.message) continue;
    if (room == 0) return;
    --room;
    if (const std::uint64_t missed = entry.number - cursor.message - 1)
      pending.push_back({"dropped", DroppedText(cursor.name, "messages", missed)});
    pending.push_back({"message", entry.text});
    cursor.message = entry.number;
  }
}

void CEventStream::CollectLogs(CCursor& cursor, std::vector<CPending>& pending) {
  for (const CTextRing::CEntry& entry : cursor.record->Logs().Entries()) {
    if (entry.number <= cursor.log) continue;
    if (const std::uint64_t missed = entry.number - cursor.log - 1)
      pending.push_back({"dropped", DroppedText(cursor.name, "logs", missed)});
    pending.push_back({"log", entry.text});
    cursor.log = entry.number;
  }
}

}  // namespace vastra
