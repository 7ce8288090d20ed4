#include "vastra/console/console_rules.h"

#include <algorithm>
#include <cstdlib>

#include "vastra/ui/window.h"

namespace vastra {
namespace {

constexpr long kFarthest = 0xFFFFFF;  // pixels; beyond all screens, and sums do not overflow

}  // namespace

void CConsoleStore::Add(const CString& text, COLORREF colour, CConsoleArea area) {
  if (m_lines.empty()) m_top = 0;
  m_lines.push_back({text, colour});
  const bool isFull = GetCount() > kMaxLines;
  if (isFull) {
    m_lines.pop_front();  // the top keeps its index, so the view scrolls
    ++m_removedCount;
  } else if (m_atEnd && GetCount() * area.line > area.height - area.line) {
    Advance();
  }
  m_maxPosition = std::max(GetCount() - (area.height - area.line) / area.line, 0);
  m_position = std::min(m_position, m_maxPosition);
  if (m_top == kNone) m_top = LineAt(m_position);  // the view was scrolled past the end of a very low window
}

void CConsoleStore::Advance() {
  if (m_top != kNone) m_top = LineAt(m_top + 1);
  ++m_position;  // the range grows with it
}

void CConsoleStore::Clear() {
  m_removedCount += GetCount();
  m_lines.clear();
  m_top = kNone;
  m_maxPosition = 1;
  m_position = std::min(m_position, m_maxPosition);
  m_atEnd = true;  // also if the view is not painted now
}

void CConsoleStore::Scroll(UINT code, int position) {
  switch (code) {
    case SB_LINEUP:
      position = m_position - 1;
      break;
    case SB_LINEDOWN:
      position = m_position + 1;
      break;
    case SB_PAGEUP:
      position = m_position - kPage;
      break;
    case SB_PAGEDOWN:
      position = m_position + kPage;
      break;
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK:
      break;
    default:
      position = m_position;
  }
  m_position = std::clamp(position, 0, m_maxPosition);
  m_top = LineAt(m_position);
}

// Painting goes down row by row and ends one row after the lower edge.
void CConsoleStore::Paint(CConsoleArea area) {
  const int rows = area.height / area.line + 2;
  m_atEnd = m_top == kNone || m_top + rows >= GetCount();
}

CConsoleRows::CStep CConsoleRows::Show(const CConsoleStore& store, CConsoleArea area) {
  if (area != m_area) Forget();
  m_area = area;
  const std::int64_t top = store.GetTopNumber();
  CStep step = {0, 0};
  if (m_first <= top && top < m_end) step = {static_cast<int>(top - m_first), static_cast<int>(m_end - top)};
  const int lines = store.GetTop() == CConsoleStore::kNone ? 0 : store.GetCount() - store.GetTop();
  m_first = top;
  m_end = top + std::min(lines, area.height / area.line);
  return step;
}

CString CConsolePlace::ToText() const {
  CString text;
  text.Format("%d,%d,%d,%d", x, y, width, height);
  return text;
}

void CConsolePlace::TakeFrom(const CString& text) {
  const char* at = text;
  for (int* number : {&x, &y, &width, &height}) {
    char* end = nullptr;
    const long value = std::strtol(at, &end, 10);
    if (end == at || value < -kFarthest || value > kFarthest) return;
    *number = static_cast<int>(value);
    if (*end != ',') return;
    at = end + 1;
  }
}

}  // namespace vastra
