#include "host/cli/terminal/terminal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

#include "host/cli/terminal/screen.h"
#include "host/cli/time_text.h"
#include "host/common/shown_text.h"
#include "host/run/run_messenger.h"

namespace vastra {
namespace {

// The priorities of the journal, by the colour of a line and its first word.
struct CPriority {
  COLORREF colour;
  const char* begin;
  const char* prefix;
};
constexpr CPriority kPriorities[] = {{kErrorColour, "Fatal", "<2>"},
                                     {kErrorColour, "", "<3>"},
                                     {kWarningColour, "", "<4>"},
                                     {kNoticeColour, "", "<5>"}};

const char* PrefixOf(const std::string& text, COLORREF colour) {
  for (const CPriority& priority : kPriorities)
    if (priority.colour == colour && text.starts_with(priority.begin)) return priority.prefix;
  return "<6>";
}

// Each line of text gets the prefix.
std::string WithPrefix(const std::string& text, const char* prefix) {
  std::string lines = prefix;
  for (const char character : text) {
    lines += character;
    if (character == '\n') lines += prefix;
  }
  return lines;
}

// Whether file is the stream that the system has connected with its journal: "DEVICE:INODE".
bool IsJournalStream(int file) {
  const char* stream = std::getenv("JOURNAL_STREAM");
  struct stat status = {};
  return stream && ::fstat(file, &status) == 0 &&
         std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == stream;
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
      m_coloured(m_canErase && !std::getenv("NO_COLOR")),
      m_lines(STDERR_FILENO),
      m_output(STDOUT_FILENO) {}

bool CTerminal::HasStatus() const { return m_canErase && (!m_quiet || m_statusFile == STDOUT_FILENO); }

bool CTerminal::PutStatusOnOutput() {
  m_statusFile = STDOUT_FILENO;
  return m_canErase = CanErase(STDOUT_FILENO);
}

void CTerminal::Line(const CString& text, COLORREF colour) { Lines(CString(Printable(text.View())), colour); }

void CTerminal::FollowJournal() {
  m_isJournal = IsJournalStream(STDERR_FILENO);
  if (m_isJournal) m_stamped = m_coloured = false;
}

void CTerminal::Lines(const CString& text, COLORREF colour) {
  std::string shown = PrintableLines(text.View());
  if (!m_told.IsNew(shown)) return;
  if (m_isJournal) shown = WithPrefix(shown, PrefixOf(shown, colour));
  if (m_stamped) shown = LocalTimeText(std::time(nullptr)) + " " + shown;
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
