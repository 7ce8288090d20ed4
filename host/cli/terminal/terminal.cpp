#include "host/cli/terminal/terminal.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "host/cli/terminal/screen.h"
#include "host/cli/time_text.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

// Ignores failures: without a reader there is no place to report them.
void Print(int file, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t part = ::write(file, text.data() + done, text.size() - done);
    if (part < 0 && errno != EINTR) return;
    if (part > 0) done += static_cast<std::size_t>(part);
  }
}

}  // namespace

CTerminal& CTerminal::Instance() {
  static CTerminal terminal;
  return terminal;
}

CTerminal::CTerminal()
    : m_isTerminal(::isatty(STDERR_FILENO)),
      m_statusFile(STDERR_FILENO),
      m_canErase(CanErase(STDERR_FILENO)),
      m_coloured(m_canErase && !std::getenv("NO_COLOR")) {}

bool CTerminal::HasStatus() const { return m_canErase && (!m_quiet || m_statusFile == STDOUT_FILENO); }

bool CTerminal::PutStatusOnOutput() {
  m_statusFile = STDOUT_FILENO;
  return m_canErase = CanErase(STDOUT_FILENO);
}

void CTerminal::Line(const CString& text, COLORREF colour) { Lines(CString(Printable(text.View())), colour); }

void CTerminal::Lines(const CString& text, COLORREF colour) {
  const std::lock_guard lock(m_mutex);
  std::string shown =
      (m_stamped ? LocalTimeText(std::time(nullptr)) + " " : "") + PrintableLines(text.View());
  if (m_coloured && colour != kPlain) shown = Coloured(shown, colour);
  const bool overStatus = m_isTerminal && !m_status.empty();
  if (overStatus) Print(m_statusFile, Home(m_status) + kEraseBelow);
  Print(STDERR_FILENO, shown + "\n");
  if (overStatus) Print(m_statusFile, Drawn(m_status));
}

void CTerminal::Remark(const CString& text, COLORREF colour) {
  if (!m_quiet) Line(text, colour);
}

void CTerminal::Status(const std::vector<std::string>& lines) {
  if (!HasStatus()) return;
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> fitting = Fit(lines, ScreenSizeOf(m_statusFile));
  if (fitting == m_status) return;
  Print(m_statusFile, Home(m_status) + Drawn(fitting) + kEraseBelow);
  m_status = std::move(fitting);
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
