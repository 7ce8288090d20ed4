#include "host/run/run_messenger.h"

#include <algorithm>

#include "host/common/message_text.h"
#include "host/common/shown_text.h"
#include "vastra/core/console_sink.h"
#include "vastra/platform/prompt.h"

namespace vastra {

void CRunMessenger::Send(const char* linkType, const char* linkName, char function, char severity,
                         const char* text) {
  const bool isTrace = severity < severityFatal || severity > severityNotice;
  if ((severity == severityBegin || severity == severityEnd) && Drops(severity == severityEnd)) return;
  const std::string name = Printable(Shortened(linkName)), cut = Shortened(text ? text : "");
  if (isTrace)
    return CMessenger::Send(linkType, name.c_str(), function, severity, text ? cut.c_str() : nullptr);
  CReader* const reader = m_pReader.load();
  const CString place = m_forPeople && reader ? reader->Place() : CString();
  const char* const where = place.IsEmpty() ? name.c_str() : static_cast<const char*>(place);
  const CRunMessage message = {{}, severity, function, linkType, where, cut.c_str()};
  const bool isShown = !(m_forPeople && AddsNothing(message)) &&
                       (!reader || reader->TakeMessage(linkType, where, function, severity, cut.c_str()));
  if (!isShown) return EndOperation(severity);
  if (!m_forPeople)
    return CMessenger::Send(linkType, name.c_str(), function, severity, text ? cut.c_str() : nullptr);
  EndOperation(severity);
  Say(message);
  if (severity == severityFatal && m_fatalFilter && !m_holdsBoxes)
    AfxMessageBox(CString(MessageText(message)), MB_OK | MB_ICONSTOP);
}

// A line other than a Notice ends its operation, shown or not.
void CRunMessenger::EndOperation(char severity) {
  if (severity != severityNotice) m_depth = std::max(m_depth - 1, 0);
}

void CRunMessenger::Say(const CRunMessage& message) {
  if (!m_forPeople)
    return CMessenger::Send(message.link, message.name, message.function, message.severity, message.text);
  constexpr COLORREF kColours[] = {kErrorColour, kErrorColour, kWarningColour, kNoticeColour};
  const int filters[] = {m_fatalFilter, m_errorFilter, m_warningFilter, m_noticeFilter};
  const auto kind = static_cast<unsigned char>(message.severity);
  if (!filters[kind]) return;
  WriteToConsole(0, CString(MessageText(message)), kColours[kind], 0);
}

CRunMessenger::CQuiet::CQuiet(CRunMessenger& messenger) : m_messenger(messenger) {
  int(&f)[5] = m_filters;
  m_messenger.GetFilters(f[0], f[1], f[2], f[3], f[4]);
  m_messenger.SetFilters(0, 0, 0, 0, 0);
}

CRunMessenger::CQuiet::~CQuiet() {
  const int(&f)[5] = m_filters;
  m_messenger.SetFilters(f[0], f[1], f[2], f[3], f[4]);
}

}  // namespace vastra
