#include "host/fleet/live_table.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "host/common/shown_text.h"
#include "host/fleet/text_table.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kDrawPause{1}, kFaultShown{60};
constexpr std::size_t kMostLoggersShown = 5000;
constexpr std::size_t kLongestCell = 60;  // bytes

// The columns; the last one is as long as it is.
const std::vector<std::string> kHeadings = {"SITE", "NODE", "LOGGER", "STATE",  "AGE",
                                            "READ", "LATE", "LOST",   "PROBLEM"};

std::string Cell(const std::string& text) { return OneLine(Shortened(text.c_str(), kLongestCell)); }

std::uint64_t LostRows(const CCountsLine& counts) {
  std::uint64_t sum = 0;
  for (const CLedgerFacts& entry : counts.ledger) sum += entry.ledger.lost;
  return sum;
}

std::size_t ScreenRows() {
  winsize size = {};
  constexpr std::size_t kUnknown = 24;
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 ? size.ws_row : kUnknown;
}

}  // namespace

void CLiveTable::Hear(const CFleetLogger& logger, const CLiveMessage& message, Time now) {
  const Key key = {logger.node.site, logger.node.name, logger.name};
  CSeen* const seen = Find(key, now);
  if (seen == nullptr) return;
  Note(*seen, message, now);
  if (!m_isScreen) PrintLine(key, *seen, now);
}

// In place of one that has gone, if there are too many.
CLiveTable::CSeen* CLiveTable::Find(const Key& key, Time now) {
  if (const auto found = m_loggers.find(key); found != m_loggers.end()) return &found->second;
  if (m_loggers.size() >= kMostLoggersShown) {
    const auto gone = std::find_if(m_loggers.begin(), m_loggers.end(),
                                   [&](const auto& one) { return one.second.contact.IsGone(now); });
    if (gone == m_loggers.end()) {
      Tell("there are more than " + std::to_string(kMostLoggersShown) + " loggers; the first ones are shown");
      return nullptr;
    }
    m_loggers.erase(gone);
  }
  return &m_loggers[key];
}

// The clock of another machine may be wrong: an age is what has passed here.
void CLiveTable::Note(CSeen& seen, const CLiveMessage& message, Time now) {
  seen.contact.Note(message, now);
  seen.isGoneTold = false;
  for (const CLiveMessage::CLine& line : message.lines) {
    if (line.text.empty()) continue;
    if (const auto* const hello = std::get_if<CHelloLine>(&line.event)) {
      seen.status.hello.period = hello->period;  // all that is needed of it
    } else if (const auto* const state = std::get_if<CStateLine>(&line.event)) {
      seen.status.state = *state;
      seen.age = state->lastSampleAge;
      seen.aged = now;
    } else if (const auto* const counts = std::get_if<CCountsLine>(&line.event)) {
      seen.status.counts = *counts;
    } else if (const auto* const sample = std::get_if<CSampleLine>(&line.event);
               sample && std::exchange(seen.sample, sample->number) != sample->number) {
      seen.age = 0;
      seen.aged = now;
    }
  }
}

std::vector<std::string> CLiveTable::Cells(const Key& key, CSeen& seen, Time now) {
  const auto& [site, node, name] = key;
  CLoggerStatus& status = seen.status;
  status.fault = seen.contact.Fault(now);
  status.state.lastSampleAge = seen.age;
  if (seen.age) *status.state.lastSampleAge += std::chrono::duration<double>(now - seen.aged).count();
  status.awaitsCounts = true;
  status.problems = ProblemsOf(status);
  const std::string problem =
      status.problems.empty() ? ""
                              : status.problems.front() + (status.problems.size() > 1 ? " (and more)" : "");
  std::vector<std::string> cells = {Cell(site), Cell(node), Cell(name),
                                    status.IsUp() ? Cell(status.state.state) : "gone",
                                    seen.age ? AgeWords(*status.state.lastSampleAge) : "-"};
  if (status.counts)
    cells.insert(cells.end(), {std::to_string(status.counts->read), std::to_string(status.counts->late),
                               std::to_string(LostRows(*status.counts))});
  else
    cells.insert(cells.end(), 3, "-");
  cells.push_back(OneLine(problem));
  return cells;
}

void CLiveTable::PrintLine(const Key& key, CSeen& seen, Time now) {
  const std::vector<std::string> cells = Cells(key, seen, now);
  m_out << Printable(cells[0]) << '/' << Printable(cells[1]) << '/' << Printable(cells[2]) << ": "
        << Printable(cells[3]) << ", sample " << cells[4] << " old, read " << cells[5] << ", late "
        << cells[6] << ", lost " << cells[7];
  if (!cells.back().empty()) m_out << "; " << Printable(cells.back());
  m_out << std::endl;
}

void CLiveTable::Tell(const std::string& line) {
  if (!m_isScreen) return m_log.Tell(line);
  m_fault = line;
  m_faultTime = std::chrono::steady_clock::now();
}

void CLiveTable::Turn(Time now) {
  if (now < m_due) return;
  m_due = now + kDrawPause;
  if (m_isScreen) return Draw(now);
  for (auto& [key, seen] : m_loggers)
    if (seen.contact.IsGone(now) && !std::exchange(seen.isGoneTold, true) && !seen.contact.ended)
      PrintLine(key, seen, now);
}

// From the upper left corner, without wrapping; what is behind each line and below the last one is erased.
void CLiveTable::Draw(Time now) {
  std::vector<std::vector<std::string>> rows = {kHeadings};
  constexpr std::size_t kFrameRows = 4;
  const std::size_t most = std::max(ScreenRows(), kFrameRows + 1) - kFrameRows;
  std::size_t gone = 0;
  for (auto& [key, seen] : m_loggers) {
    gone += seen.contact.IsGone(now);
    if (rows.size() > most) continue;
    rows.push_back(Cells(key, seen, now));
    for (std::string& cell : rows.back()) cell = Printable(cell);
  }
  std::string text =
      Counted(m_loggers.size(), "logger") + ", " + std::to_string(gone) + " gone\n" + TextTable(rows);
  if (m_loggers.size() >= rows.size())
    text += "and " + std::to_string(m_loggers.size() + 1 - rows.size()) + " more\n";
  if (!m_fault.empty() && now - m_faultTime < kFaultShown) text += Printable(m_fault) + "\n";
  m_out << "\033[?7l\033[H";
  for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = text.find('\n', begin);
    m_out << text.substr(begin, end - begin) << "\033[K\r\n";
  }
  m_out << "\033[J\033[?7h" << std::flush;
}

}  // namespace vastra
