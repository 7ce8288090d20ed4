#include "host/cli/terminal/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <ctime>

#include "host/cli/terminal/screen.h"
#include "host/cli/time_text.h"
#include "host/common/shown_text.h"

namespace vastra {
CTerminal& CTerminal::Instance() {
  static CTerminal terminal;
  return terminal;
}

CTerminal::CTerminal()
    : m_isTerminal(::isatty(STDERR_FILENO)),
      m_statusFile(STDERR_FILENO),
      m_canErase(CanErase(STDERR_FILENO)),
      m_coloured(m_canErase && !std::getenv("NO_COLOR")),
      m_lines(STDERR_FILENO),
      m_output(STDOUT_FILENO) {}

bool CTerminal::HasStatus() const { return m_canErase && (!m_quiet || m_statusFile == STDOUT_FILENO); }

bool CTerminal::PutStatusOnOutput() {
  m_statusFile = STDOUT_FILENO;
  return m_canErase = CanErase(STDOUT_FILENO);
}

void CTerminal::Line(const CString& text, COLORREF colour) { Lines(CString(Printable(text.View())), colour); }

void CTerminal::Lines(const CString& text, COLORREF colour) {
  std::string shown =
      (m_stamped ? LocalTimeText(std::time(nullptr)) + " " : "") + PrintableLines(text.View());
  if (m_coloured && colour != kPlain) shown = Coloured(shown, colour);
  m_lines.Add(shown);
}

void CTerminal::Remark(const CString& text, COLORREF colour) {
  if (!m_quiet) Line(text, colour);
}

void CTerminal::Status(const std::vector<std::string>& lines) {
  if (!HasStatus()) return;
  (m_isTerminal ? m_lines : m_output).SetStatus(Fit(lines, ScreenSizeOf(m_statusFile)), m_statusFile);
}

void CTerminal::Drain() {
  m_lines.Drain();
  m_output.Drain();
}

EExit Fail(EExit status, const CString& subject, const CString& words) {
  CTerminal::Instance().Line("vastra: " + subject + ": " + words, kErrorColour);
  return status;
}

void PrintPlace(const CString& text, int offset) {
  const CMarkedPlace marked = MarkPlace(text.View(), static_cast<std::size_t>(offset));
  CTerminal::Instance().Line(CString(marked.line));
  CTerminal::Instance().Line(CString(marked.caret));
}

void Warn(const CString& subject, const CString& words) {
  CTerminal::Instance().Remark("vastra: " + subject + ": warning: " + words, kWarningColour);
}

}  // namespace vastra
