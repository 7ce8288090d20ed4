#include "vastra/core/messenger.h"

#include <algorithm>
#include <iterator>

#include "vastra/core/console_sink.h"
#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

// Indexed by function code.
constexpr const char* kFunctions[] = {
    "Open",        "Close",       "Read",       "Write", "Get Variable Names",
    "Communicate", "Constructor", "Destructor", "Flush", "PartialFlush"};
static_assert(std::size(kFunctions) == functionPartialFlush + 1, "one text for each function code");

constexpr UINT kConsole = 0;

}  // namespace

struct CMessenger::CKind {
  const char* prefix;
  COLORREF colour;
  CRelaxed<int> CMessenger::*filter;  // the line is shown unless this is 0; null: always
  int before, after;                  // change of m_depth before and after the line
};

// The kinds of line, indexed by severity code. A failure takes the place of the End of its operation, so it
// closes the indent that Begin has opened, even if its filter drops the line.
const CMessenger::CKind CMessenger::kKinds[6] = {
    {"Fatal error - ", kErrorColour, &CMessenger::m_fatalFilter, -1, 0},
    {"Error - ", kErrorColour, &CMessenger::m_errorFilter, -1, 0},
    {"Warning - ", kWarningColour, &CMessenger::m_warningFilter, -1, 0},
    {"Notice - ", 0x960000, &CMessenger::m_noticeFilter, 0, 0},
    {"Begin - ", 0x000000, &CMessenger::m_debugFilter, 0, 1},
    {"End - ", 0x000000, &CMessenger::m_debugFilter, -1, 0},
};
const CMessenger::CKind CMessenger::kOtherKind = {"", 0x000000, nullptr, 0, 0};

void CMessenger::Send(const char* linkType, const char* linkName, char function, char severity,
                      const char* text) {
  const auto code = static_cast<std::size_t>(static_cast<unsigned char>(severity));
  const CKind& kind = code < std::size(kKinds) ? kKinds[code] : kOtherKind;
  if (kind.before) m_depth = std::max(m_depth + kind.before, 0);
  if (kind.filter && !(this->*kind.filter)) return;
  Show(kind, linkType, linkName, function, severity, text);
}

// Separate from Send, so that a dropped line costs no more than the check of its filter.
void CMessenger::Show(const CKind& kind, const char* linkType, const char* linkName, char function,
                      char severity, const char* text) {
  const char* functionText = kFunctions[static_cast<unsigned char>(function)];
  CString line(std::string(3 * static_cast<std::size_t>(m_depth.Get()), ' '));
  line += kind.prefix;
  line += linkName;
  if (text) line = line + " : " + text;
  WriteToConsole(kConsole, line + "( " + linkType + "," + functionText + ")", kind.colour, 0);

  if (severity == severityFatal)
    AfxMessageBox(CString("Fatal error\n\n    ") + linkName + "\n    " + CString(text) +
                      "\n\nLinker type : " + linkType + "\nFunction :" + functionText,
                  MB_OK | MB_ICONSTOP);
  if (kind.after) m_depth = m_depth + kind.after;
}

void CMessenger::SetFilters(int fatal, int error, int warning, int notice, int debug) {
  m_fatalFilter = fatal;
  m_errorFilter = error;
  m_warningFilter = warning;
  m_noticeFilter = notice;
  m_debugFilter = debug;
}

void CMessenger::GetFilters(int& fatal, int& error, int& warning, int& notice, int& debug) const {
  fatal = m_fatalFilter;
  error = m_errorFilter;
  warning = m_warningFilter;
  notice = m_noticeFilter;
  debug = m_debugFilter;
}

}  // namespace vastra
