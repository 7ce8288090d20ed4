#include "host/cli/live_view.h"

#include <algorithm>
#include <limits>

#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/terminal.h"
#include "host/cli/time_text.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kTablePause{100}, kLinePause{1000};
constexpr std::size_t kSparks = 40;  // values of a spark line
constexpr int kNameWidth = 24, kValueWidth = 14;

std::string Blanks(std::size_t count) { return std::string(count, ' '); }

std::string PadRight(const std::string& text, std::size_t width) {
  return text + Blanks(width - std::min(width, WidthOf(text)));
}

std::string PadLeft(const std::string& text, std::size_t width) {
  return Blanks(width - std::min(width, WidthOf(text))) + text;
}

// Bars of eight heights, the lowest value at the lowest; what is no finite number leaves a gap. Values that
// are all the same lie in the middle.
std::string SparkLine(const std::deque<float>& values) {
  constexpr const char* kBars[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  float lowest = std::numeric_limits<float>::infinity(), highest = -lowest;
  for (const float value : values)
    if (std::isfinite(value)) lowest = std::min(lowest, value), highest = std::max(highest, value);
  const double range = double{highest} - double{lowest};
  std::string line;
  for (const float value : values) {
    const double height = range > 0 ? (double{value} - double{lowest}) / range * 7 : 3;
    line += std::isfinite(value) ? kBars[std::lround(height)] : " ";
  }
  return line;
}

}  // namespace

CLiveView::CLiveView(const CString& subject, CStringArray wanted)
    : m_subject(subject),
      m_wanted(std::move(wanted)),
      m_onTerminal(CTerminal::Instance().PutStatusOnOutput()),
      m_pace(m_onTerminal ? kTablePause : kLinePause),
      m_shown(!m_onTerminal) {}

EExit CLiveView::Begin(const CStringArray& names) {
  for (const CString& name : m_wanted.IsEmpty() ? names : m_wanted) {
    const int index = FindIn(names, name);
    if (index < 0) return Fail(kWrongUse, m_subject, "--vars " + name + ": there is no such variable");
    m_rows.push_back({Printable(name.View()), index, {}});
  }
  return kDone;
}

void CLiveView::Refresh(CLogTrendings& trend) {
  if (!trend.Read(&m_sample)) return;
  ++m_read;
  m_shown = false;
}

CScanLoop::Time CLiveView::Show(const CScanLoop&) {
  if (m_shown) return CScanLoop::Time::max();
  if (!m_pace.IsDue()) return m_pace.Next();
  if (m_onTerminal) {
    TakeSparks();
    CTerminal::Instance().Status(CString(Table()));
  } else {
    PrintLine();
  }
  m_shown = true;
  return CScanLoop::Time::max();
}

EExit CLiveView::End() {
  if (m_onTerminal)
    CTerminal::Instance().EndStatus();
  else if (!m_shown)
    PrintLine();
  return m_status;
}

void CLiveView::PrintLine() {
  if (m_status == kDone) m_status = PrintData(Line());
}

void CLiveView::TakeSparks() {
  for (CRow& row : m_rows) {
    if (row.m_index < m_sample.m_values.GetSize()) row.m_last.push_back(m_sample.m_values[row.m_index]);
    if (row.m_last.size() > kSparks) row.m_last.pop_front();
  }
}

std::string CLiveView::Table() const {
  if (m_read == 0) return "Waiting for the first sample";
  std::string text = LocalTimeText(m_sample.m_time) + "  " + std::to_string(m_read) + " read";
  for (const CRow& row : m_rows)
    text += "\n" + PadRight(row.m_name, kNameWidth) +
            PadLeft(row.m_last.empty() ? "" : ToText(row.m_last.back()), kValueWidth) + "  " +
            SparkLine(row.m_last);
  return text;
}

std::string CLiveView::Line() const {
  std::string text = LocalTimeText(m_sample.m_time);
  for (const CRow& row : m_rows)
    if (row.m_index < m_sample.m_values.GetSize())
      text += " " + row.m_name + "=" + ToText(m_sample.m_values[row.m_index]);
  return text + "\n";
}

}  // namespace vastra
