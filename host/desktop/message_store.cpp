#include "host/desktop/message_store.h"

#include <algorithm>
#include <utility>

#include "host/common/shown_text.h"

namespace vastra {

CMessageStore::CMessageStore(std::function<void()> wake, CLimits limits)
    : m_wake(std::move(wake)), m_limits(limits) {}

void CMessageStore::Add(CLoggedMessage line) {
  bool isFirst = false;
  {
    const std::lock_guard lock(m_mutex);
    isFirst = m_inbox.empty();
    if (!isFirst && IsRepeat(m_inbox.back(), line))
      Fold(m_inbox.back(), line);
    else if (m_inbox.size() < m_limits.lines)
      m_inbox.push_back(std::move(line));
    else
      ++m_leftOut;
  }
  if (isFirst) m_wake();
}

void CMessageStore::StartWriter(const CString& configuration) {
  m_configuration = configuration;
  m_pWriter.reset();  // before the next one reads its files, which can be the same
  if (configuration.IsEmpty()) return;
  m_pWriter =
      std::make_unique<CMessageWriter>(CMessageFiles(configuration, m_limits.fileBytes), m_limits.lines,
                                       std::vector<CLoggedMessage>(m_lines.begin(), m_lines.end()), m_wake);
}

void CMessageStore::Open(const CString& configuration) {
  Take();  // messages of the former configuration belong to its files
  m_lines.clear();
  StartWriter(configuration);
}

void CMessageStore::MoveTo(const CString& configuration) {
  if (configuration == m_configuration) return;
  Take();
  StartWriter(configuration);
}

CMessageStore::CChange CMessageStore::Take() {
  CChange change;
  const std::size_t before = m_lines.size();
  std::vector<CLoggedMessage> inbox = TakeInbox();
  if (m_pWriter) TakeStored(change);
  for (const CLoggedMessage& line : inbox) Append(line, change);
  if (m_pWriter) {
    m_pWriter->Put(std::move(inbox));
    if (const CString fault = m_pWriter->TakeFault(); !fault.IsEmpty())
      Append(DesktopLine(severityWarning, "The messages are not kept on the disk: " + fault.Std()), change);
  }
  Trim(change);
  change.isReset |= change.removed > before;
  change.hasLastChanged &= change.removed < before;
  return change;
}

std::vector<CLoggedMessage> CMessageStore::TakeInbox() {
  std::vector<CLoggedMessage> inbox;
  std::uint64_t leftOut = 0;
  {
    const std::lock_guard lock(m_mutex);
    inbox.swap(m_inbox);
    leftOut = std::exchange(m_leftOut, 0);
  }
  if (leftOut > 0)
    inbox.push_back(
        DesktopLine(severityWarning, Counted(leftOut, "message") + " came too fast and cannot be shown"));
  return inbox;
}

// The lines of the files go before those of this start, which can be among them after MoveTo. A line that
// cannot be read is reported here and not in the files, which would repeat the report at each start.
void CMessageStore::TakeStored(CChange& change) {
  std::optional<CMessageFiles::CStored> stored = m_pWriter->TakeStored();
  if (!stored || (stored->lines.empty() && stored->bad == 0)) return;
  change.isReset = true;
  const CKnownMessages known(stored->lines);
  std::erase_if(m_lines, [&](const CLoggedMessage& line) { return known.Has(line); });
  m_lines.insert(m_lines.begin(), std::make_move_iterator(stored->lines.begin()),
                 std::make_move_iterator(stored->lines.end()));
  if (stored->bad > 0)
    Append(
        DesktopLine(severityNotice, Counted(stored->bad, "line") + " of the kept messages cannot be read: " +
                                        CMessageFiles(m_configuration).Path().Std()),
        change);
}

void CMessageStore::Append(const CLoggedMessage& line, CChange& change) {
  if (!m_lines.empty() && IsRepeat(m_lines.back(), line)) {
    Fold(m_lines.back(), line);
    change.hasLastChanged |= change.added == 0;
    return;
  }
  m_lines.push_back(line);
  ++change.added;
}

void CMessageStore::Trim(CChange& change) {
  change.removed = m_lines.size() - std::min(m_lines.size(), m_limits.lines);
  m_lines.erase(m_lines.begin(), m_lines.begin() + static_cast<std::ptrdiff_t>(change.removed));
}

}  // namespace vastra
