#include "vastra/console/console_wnd.h"

#include <algorithm>

#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

constexpr UINT kLinesQueued = 1;  // the message that a console posts to itself
constexpr COLORREF kWhite = RGB(255, 255, 255);

}  // namespace

int CConsoleWnd::Create(const CString& title, int x, int y, int width, int height, CWnd* parent) {
  m_thread = std::this_thread::get_id();
  CreateTopLevel(title, CRect::Of({x, y}, {width, height}), parent, verticalScrollBar | ownGround);
  SetScrollRange(0, m_store.GetScrollMax());
  return 1;
}

CConsoleArea CConsoleWnd::Area() const { return {GetClientRect().Height(), std::max(TextHeight(), 1)}; }

void CConsoleWnd::Write(const CString& text, COLORREF colour, DWORD /*reserved*/) {
  if (!IsOnItsThread()) return Queue(text, colour);
  TakeQueued();
  m_store.Add(text, colour, Area());
  Redraw();
}

// The queue is limited to the size of the store: more lines would push out its first ones.
void CConsoleWnd::Queue(const CString& text, COLORREF colour) {
  const std::lock_guard lock(m_lock);
  const bool isFirst = m_queued.empty();
  m_queued.push_back({text, colour});
  if (m_queued.size() > CConsoleStore::kMaxLines) m_queued.pop_front();
  if (isFirst) Post(kLinesQueued, 0, 0);
}

// Returns whether there were any.
bool CConsoleWnd::TakeQueued() {
  std::deque<CConsoleStore::CLine> lines;
  {
    const std::lock_guard lock(m_lock);
    lines.swap(m_queued);
  }
  if (lines.empty()) return false;
  const CConsoleArea area = Area();
  for (const CConsoleStore::CLine& line : lines) m_store.Add(line.text, line.colour, area);
  return true;
}

void CConsoleWnd::OnMessage(UINT message, WPARAM, LPARAM) {
  if (message == kLinesQueued && TakeQueued()) Redraw();
}

void CConsoleWnd::Clear() {
  TakeQueued();
  m_store.Clear();
  Redraw();
}

void CConsoleWnd::OnVScroll(UINT code, int position) {
  m_store.Scroll(code, position);
  Redraw();
}

// Updates scroll bar and screen. The range is set first, since the position can be outside the old one.
void CConsoleWnd::Redraw() {
  SetScrollRange(0, m_store.GetScrollMax());
  SetScrollPos(m_store.GetScrollPos());
  Invalidate();
  if (IsSeen()) UpdateWindow();
}

void CConsoleWnd::OnSize(int cx, int cy) {
  m_rows.Forget();
  m_picture.DeleteObject();
  if (cx <= 0 || cy <= 0) return;
  if (!m_picture.CreateCompatibleBitmap(*this, {cx, cy})) AfxMessageBox("Out of Memory!", MB_ICONSTOP);
}

bool CConsoleWnd::OnPaint(const CRect& /*dirty*/) {
  const CConsoleArea area = Area();
  m_store.Paint(area);
  if (m_picture.IsCreated()) {
    Draw(area);
    CDC(*this).BitBlt({0, 0}, m_picture);
  }
  return true;
}

void CConsoleWnd::Draw(CConsoleArea area) {
  const auto [moved, firstRow] = m_rows.Show(m_store, area);
  const bool hasMoved = moved == 0 || m_picture.ScrollRows(-moved * area.line);
  DrawRows(hasMoved ? firstRow : 0, area);
}

// Each line is clipped to its row, so that rows can be moved and drawn independently.
void CConsoleWnd::DrawRows(int firstRow, CConsoleArea area) {
  const int width = m_picture.Size().cx;
  int y = firstRow * area.line;
  if (y >= area.height) return;
  CDC context(m_picture);
  context.FillRect({0, y, width, area.height}, {kWhite});
  if (m_store.GetTop() == CConsoleStore::kNone) return;
  for (int i = m_store.GetTop() + firstRow; i < m_store.GetCount() && y < area.height; ++i, y += area.line) {
    const CConsoleStore::CLine& line = m_store.GetLine(i);
    context.SaveDC();
    context.IntersectClipRect({0, y, width, y + area.line});
    context.SetTextColor(line.colour);
    context.TextOut({0, y}, " " + line.text);
    context.RestoreDC();
  }
}

}  // namespace vastra
