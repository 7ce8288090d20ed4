#include "host/fleet/live_table.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "host/common/shown_text.h"
#include "host/fleet/text_table.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kDrawPause{1}, kFaultShown{60};
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
  std::string fault = m_gate.Admit(logger, message);
  if (!fault.empty() && RemoveGone(now)) fault = m_gate.Admit(logger, message);
  if (!fault.empty()) return Tell(fault);
  CSeen& seen = m_loggers[key];
  Note(seen, message, now);
  if (!m_isScreen && (message.ended || !seen.status.state.state.empty())) PrintLine(key, seen, now);
}

// Makes room by removing a logger that sends nothing.
bool CLiveTable::RemoveGone(Time now) {
  const auto gone = std::find_if(m_loggers.begin(), m_loggers.end(),
                                 [&](const auto& one) { return one.second.contact.IsGone(now); });
  if (gone == m_loggers.end()) return false;
  const auto& [site, node, name] = gone->first;
  m_gate.Forget({{site, node}, name});
  m_loggers.erase(gone);
  return true;
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

// The first thing that is not well.
std::string CLiveTable::Problem(CSeen& seen, Time now) {
  CLoggerStatus& status = seen.status;
  status.fault = seen.contact.Fault(now);
  status.state.lastSampleAge = Age(seen, now);
  status.awaitsCounts = true;  // a message with them may be lost
  if (status.IsUp() && status.state.state.empty()) return "";
  const std::vector<std::string> problems = ProblemsOf(status);
  if (problems.empty()) return "";
  return OneLine(problems.front()) + (problems.size() > 1 ? " (and more)" : "");
}

std::optional<double> CLiveTable::Age(const CSeen& seen, Time now) {
  if (!seen.age) return std::nullopt;
  return *seen.age + std::chrono::duration<double>(now - seen.aged).count();
}

std::vector<std::string> CLiveTable::Cells(const Key& key, CSeen& seen, Time now) {
  const auto& [site, node, name] = key;
  const std::string problem = Problem(seen, now);
  const std::optional<double> age = Age(seen, now);
  const std::optional<CCountsLine>& counts = seen.status.counts;
  const auto number = [&](std::uint64_t count) { return counts ? std::to_string(count) : "-"; };
  return {Cell(site),
          Cell(node),
          Cell(name),
          seen.status.IsUp() ? Cell(seen.status.state.state) : "gone",
          age ? AgeWords(*age) : "-",
          number(counts ? counts->read : 0),
          number(counts ? counts->late : 0),
          number(counts ? LostRows(*counts) : 0),
          problem};
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

// From the upper left corner, without wrapping; erases the rest of each line and what is below the last one.
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
