#include "host/cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "host/cli/time_text.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

constexpr const char* kEraseBelow = "\033[J";

// Whether file is a terminal that can erase a line.
bool ObeysCodes(int file) {
  const char* kind = std::getenv("TERM");
  return ::isatty(file) && !(kind && std::strcmp(kind, "dumb") == 0);
}

// The escape code of the basic colour that is nearest: a channel counts if it has at least half of the
// strongest one. The terminal's own colours stay readable on a dark ground and on a light one.
int ColourCode(COLORREF colour) {
  const COLORREF red = colour & 0xFF, green = colour >> 8 & 0xFF, blue = colour >> 16 & 0xFF;
  const COLORREF half = (std::max({red, green, blue}) + 1) / 2;
  return 30 + (red >= half) + 2 * (green >= half) + 4 * (blue >= half);
}

// The text with the time before each of its lines.
std::string Stamped(std::string text) {
  const std::string stamp = LocalTimeText(std::time(nullptr)) + " ";
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += stamp.size())
    text.insert(++at, stamp);
  return stamp + text;
}

// What reads file may be gone; there is nobody left to tell then.
void Print(int file, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t part = ::write(file, text.data() + done, text.size() - done);
    if (part < 0 && errno != EINTR) return;
    if (part > 0) done += static_cast<std::size_t>(part);
  }
}

// Rows and columns of a terminal.
winsize SizeOf(int file) {
  winsize size = {};
  if (::ioctl(file, TIOCGWINSZ, &size) != 0) size = {};
  if (size.ws_row < 2) size.ws_row = 24;
  if (size.ws_col < 2) size.ws_col = 80;
  return size;
}

// As much of a UTF-8 text as fits into columns.
std::string_view Cut(std::string_view text, int columns) {
  std::size_t at = 0;
  for (; at < text.size(); ++at)
    if (!IsInsideCharacter(text[at]) && columns-- == 0) break;
  return text.substr(0, at);
}

// The lines of text that fit on the terminal, cut to its width. A line that were full could wrap.
std::vector<std::string> Fit(std::string_view text, int file) {
  std::vector<std::string> lines;
  for (const winsize size = SizeOf(file); !text.empty() && lines.size() + 1 < size.ws_row;) {
    const std::string_view line = text.substr(0, text.find('\n'));
    lines.emplace_back(Cut(line, size.ws_col - 1));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return lines;
}

// From the end of lines to their beginning.
std::string Home(const std::vector<std::string>& lines) {
  if (lines.empty()) return {};
  return lines.size() < 2 ? "\r" : "\r\033[" + std::to_string(lines.size() - 1) + "A";
}

std::string Drawn(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line + "\033[K";
  return text;
}

}  // namespace

CTerminal& CTerminal::Instance() {
  static CTerminal terminal;
  return terminal;
}

CTerminal::CTerminal()
    : m_isTerminal(::isatty(STDERR_FILENO)),
      m_statusFile(STDERR_FILENO),
      m_statusObeys(ObeysCodes(STDERR_FILENO)),
      m_coloured(m_statusObeys && !std::getenv("NO_COLOR")) {}

bool CTerminal::HasStatus() const { return m_statusObeys && (!m_quiet || m_statusFile == STDOUT_FILENO); }

bool CTerminal::PutStatusOnOutput() {
  m_statusFile = STDOUT_FILENO;
  return m_statusObeys = ObeysCodes(STDOUT_FILENO);
}

void CTerminal::Line(const CString& text, COLORREF colour) {
  const std::lock_guard lock(m_mutex);
  std::string shown = m_stamped ? Stamped(text.Std()) : text.Std();
  if (m_coloured && colour != kPlain)
    shown = "\033[" + std::to_string(ColourCode(colour)) + "m" + shown + "\033[0m";
  const bool overStatus = m_isTerminal && !m_status.empty();
  if (overStatus) Print(m_statusFile, Home(m_status) + kEraseBelow);
  Print(STDERR_FILENO, shown + "\n");
  if (overStatus) Print(m_statusFile, Drawn(m_status));
}

void CTerminal::Remark(const CString& text, COLORREF colour) {
  if (!m_quiet) Line(text, colour);
}

void CTerminal::Status(const CString& text) {
  if (!HasStatus()) return;
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> lines = Fit(text.View(), m_statusFile);
  if (lines == m_status) return;
  Print(m_statusFile, Home(m_status) + Drawn(lines) + kEraseBelow);
  m_status = std::move(lines);
}

EExit Fail(EExit status, const CString& subject, const CString& words) {
  CTerminal::Instance().Line("vastra: " + subject + ": " + words, kErrorColour);
  return status;
}

void Warn(const CString& subject, const CString& words) {
  CTerminal::Instance().Remark("vastra: " + subject + ": warning: " + words, kWarningColour);
}

}  // namespace vastra
