#include "vastra/core/line_record.h"

#include <utility>

namespace vastra {
namespace {

thread_local CLineRecord* g_record = nullptr;

}  // namespace

CLineRecord* CLineRecord::OfThisThread() { return g_record; }

CLineRecord::CScope::CScope(CLineRecord& record) : m_pBefore(std::exchange(g_record, &record)) {}

CLineRecord::CScope::~CScope() { g_record = m_pBefore; }

// Lines are used again: a record that has been cleared allocates nothing for a line without a text.
void CLineRecord::Add(const CString& linkType, const CString& linkName, char function, const CFault& fault) {
  if (m_count == kMostLines) return;
  if (m_count == m_lines.size()) m_lines.emplace_back();
  CLine& line = m_lines[m_count++];
  line.linkType = &linkType;
  line.linkName = &linkName;
  line.function = function;
  line.severity = fault.severity;
  line.hasText = fault.text != nullptr;
  if (fault.text) line.text = fault.text;
}

void CLineRecord::SendTo(CMessenger& messenger) const {
  for (std::size_t i = 0; i < m_count; ++i) {
    const CLine& line = m_lines[i];
    messenger.Send(*line.linkType, *line.linkName, line.function, line.severity,
                   line.hasText ? static_cast<const char*>(line.text) : nullptr);
  }
}

const CString* CLineRecord::FirstFailure() const {
  for (std::size_t i = 0; i < m_count; ++i)
    if (m_lines[i].severity <= severityError) return &m_lines[i].text;
  return nullptr;
}

}  // namespace vastra
