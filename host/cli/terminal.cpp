#include "host/cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "host/cli/time_text.h"

namespace vastra {
namespace {

constexpr const char* kEraseLine = "\r\033[K";

bool IsDumb() {
  const char* kind = std::getenv("TERM");
  return kind && std::strcmp(kind, "dumb") == 0;
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

// Standard error may be gone; there is nobody left to tell then.
void Print(const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t part = ::write(STDERR_FILENO, text.data() + done, text.size() - done);
    if (part < 0 && errno != EINTR) return;
    if (part > 0) done += static_cast<std::size_t>(part);
  }
}

std::size_t Width() {
  winsize size = {};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : 80;
}

}  // namespace

CTerminal& CTerminal::Instance() {
  static CTerminal terminal;
  return terminal;
}

CTerminal::CTerminal()
    : m_isTerminal(::isatty(STDERR_FILENO)),
      m_obeysCodes(m_isTerminal && !IsDumb()),
      m_coloured(m_obeysCodes && !std::getenv("NO_COLOR")) {}

void CTerminal::Line(const CString& text, COLORREF colour) {
  const std::lock_guard lock(m_mutex);
  std::string shown = m_stamped ? Stamped(text.Std()) : text.Std();
  if (m_coloured && colour != kPlain)
    shown = "\033[" + std::to_string(ColourCode(colour)) + "m" + shown + "\033[0m";
  Print((m_status.IsEmpty() ? "" : kEraseLine) + shown + "\n" + m_status.Std());
}

void CTerminal::Remark(const CString& text, COLORREF colour) {
  if (!m_quiet) Line(text, colour);
}

void CTerminal::Status(const CString& text) {
  if (!HasStatusLine()) return;
  const std::lock_guard lock(m_mutex);
  const CString shown = text.Left(static_cast<int>(Width()) - 1);
  if (shown == m_status) return;
  m_status = shown;
  Print(kEraseLine + m_status.Std());
}

EExit Fail(EExit status, const CString& subject, const CString& words) {
  CTerminal::Instance().Line("vastra: " + subject + ": " + words, kErrorColour);
  return status;
}

void Warn(const CString& subject, const CString& words) {
  CTerminal::Instance().Remark("vastra: " + subject + ": warning: " + words, kWarningColour);
}

}  // namespace vastra
