#include "host/run/run_messenger.h"

#include <algorithm>

#include "host/common/shown_text.h"

namespace vastra {

void CRunMessenger::Send(const char* linkType, const char* linkName, char function, char severity,
                         const char* text) {
  if ((severity == severityBegin || severity == severityEnd) && Drops(severity == severityEnd)) return;
  CReader* const reader =
      severity >= severityFatal && severity <= severityNotice ? m_pReader.load() : nullptr;
  const std::string name = Printable(linkName);
  if (!reader || reader->TakeMessage(linkType, name.c_str(), function, severity, text ? text : ""))
    CMessenger::Send(linkType, name.c_str(), function, severity, text);
  else if (severity != severityNotice)
    m_depth = std::max(m_depth - 1, 0);  // the line ends its operation, shown or not
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
