#include "host/cli/watch_view.h"

#include <unistd.h>

#include <cerrno>

#include "host/cli/number_text.h"
#include "host/cli/terminal/figures.h"
#include "host/cli/terminal/terminal.h"
#include "host/cli/time_text.h"
#include "host/common/shown_text.h"
#include "vastra/platform/file.h"

namespace vastra {
namespace {

constexpr std::size_t kSparks = 40;  // values of a spark line
constexpr int kNameWidth = 24, kValueWidth = 14;

}  // namespace

CWatchView::CWatchView(const CString& subject, CStringArray wanted)
    : m_subject(subject),
      m_wanted(std::move(wanted)),
      m_onTerminal(CTerminal::Instance().PutStatusOnOutput()),
      m_lines(STDOUT_FILENO),
      m_pace(Pause()),
      m_shown(!m_onTerminal) {}

EExit CWatchView::Begin(const CStringArray& names) {
  m_rows.clear();
  for (const CString& name : m_wanted.IsEmpty() ? names : m_wanted) {
    const int index = FindIn(names, name);
    if (index < 0) return Fail(kWrongUse, m_subject, "--vars " + name + ": there is no such variable");
    m_rows.push_back({name.Std(), index, {}});
  }
  return kDone;
}

void CWatchView::Take(const CLogSample& sample, std::uint64_t number) {
  m_sample = sample;
  m_read = number;
  m_shown = false;
}

CScanLoop::Time CWatchView::Show() {
  if (m_shown) return CScanLoop::Time::max();
  if (!m_pace.IsDue()) return m_pace.Next();
  if (m_onTerminal) {
    TakeSparks();
    CTerminal::Instance().Status(Table());
  } else {
    PrintLine();
  }
  m_shown = true;
  return CScanLoop::Time::max();
}

EExit CWatchView::End() {
  if (m_onTerminal)
    CTerminal::Instance().EndStatus();
  else if (!m_shown)
    PrintLine();
  m_lines.Drain();
  TakeFault();
  return m_status;
}

void CWatchView::PrintLine() {
  TakeFault();
  if (m_status == kDone) m_lines.Add(Printable(Line()));
}

// A reader that has closed the pipe needs no message.
void CWatchView::TakeFault() {
  const int fault = m_lines.Fault();
  if (fault == 0 || m_status != kDone) return;
  m_status = kFailed;
  if (fault != EPIPE) Fail(kFailed, "standard output", CFileException("", fault).Text());
}

void CWatchView::TakeSparks() {
  for (CRow& row : m_rows) {
    if (row.m_index < m_sample.m_values.GetSize()) row.m_last.push_back(m_sample.m_values[row.m_index]);
    if (row.m_last.size() > kSparks) row.m_last.pop_front();
  }
}

std::vector<std::string> CWatchView::Table() const {
  if (m_read == 0) return {"Waiting for the first sample"};
  std::vector<std::string> lines = {LocalTimeText(m_sample.m_time) + "  " + std::to_string(m_read) + " read"};
  for (const CRow& row : m_rows)
    lines.push_back(PadRight(row.m_name, kNameWidth) +
                    PadLeft(row.m_last.empty() ? "" : ToText(row.m_last.back()), kValueWidth) + "  " +
                    SparkLine(row.m_last));
  return lines;
}

std::string CWatchView::Line() const {
  std::string text = LocalTimeText(m_sample.m_time);
  for (const CRow& row : m_rows)
    if (row.m_index < m_sample.m_values.GetSize())
      text += " " + row.m_name + "=" + ToText(m_sample.m_values[row.m_index]);
  return text;
}

}  // namespace vastra
