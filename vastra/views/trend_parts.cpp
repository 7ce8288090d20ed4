#include "vastra/views/trend_parts.h"

#include <cstdlib>

namespace vastra {
namespace {

constexpr COLORREF kTrendWhite = RGB(255, 255, 255);
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kTimeTicks = RGB(255, 0, 0);
constexpr const char* kFace = "Times";

// Restores the context at the end of the block.
class CSavedContext {
 public:
  explicit CSavedContext(CDC& dc) : m_dc(dc) { dc.SaveDC(); }
  ~CSavedContext() { m_dc.RestoreDC(); }
  CSavedContext(const CSavedContext&) = delete;
  CSavedContext& operator=(const CSavedContext&) = delete;

 private:
  CDC& m_dc;
};

void Line(CDC& dc, CPoint from, CPoint to) {
  dc.MoveTo(from);
  dc.LineTo(to);
}

}  // namespace

void DrawCurves(CDC& dc, const CVariableArray& variables, CSize plot) {
  const CSavedContext saved(dc);
  const CRect all = CRect::Of({0, 0}, plot);
  dc.IntersectClipRect(all);
  dc.FillRect(all, CBrush{kTrendWhite});
  for (const CVariable* variable : variables) {
    dc.SelectObject(CPen{1, variable->m_color});
    CCurveWalk walk(variable->m_history, variable->Scale(), plot);
    for (auto run = walk.NextRun(); !run.empty(); run = walk.NextRun()) dc.Polyline(run);
  }
}

void CHorizScale::SetArea(const CRect& area) {
  m_area = area;
  m_bands = HorizBandsOf(area);
}

void CHorizScale::SetValues(UINT timeScan, UINT samples) {
  m_timeScan = timeScan;
  m_samples = samples;
}

CRect CHorizScale::Reach() const {
  const int letters = m_area.Width() / 25;
  return {m_area.left - letters, m_area.top, m_area.right + letters, m_area.bottom};
}

void CHorizScale::Paint(CDC& dc) const {
  const CSavedContext saved(dc);
  PaintTicks(dc);
  PaintNumbers(dc);
  PaintUnit(dc);
}

void CHorizScale::PaintTicks(CDC& dc) const {
  const CRect& ticks = m_bands.ticks;
  const int top = ticks.top + 1, bottom = ticks.bottom - 2;
  dc.SelectObject(CPen{1, kTimeTicks});
  Line(dc, {ticks.left, top}, {ticks.right, top});
  Line(dc, {ticks.left, top}, {ticks.left, bottom});
  Line(dc, {ticks.right, top}, {ticks.right, bottom});
  for (UINT i = 1; i < m_divisions; ++i) {
    const int x = HorizTick(ticks, m_divisions, i);
    Line(dc, {x, top}, {x, bottom});
  }
}

void CHorizScale::PaintNumbers(CDC& dc) const {
  const CRect& numbers = m_bands.numbers;
  dc.SelectObject(CFont({.height = numbers.Width() / 25 - 4,
                         .width = (numbers.top - numbers.bottom) / 8 - 2,
                         .escapement = 900,
                         .weight = 400,
                         .face = kFace,
                         .hasSerifs = true}));
  dc.SetTextAlign(TA_RIGHT);
  for (UINT i = 0; i <= m_divisions; ++i)
    dc.TextOut(HorizNumber(numbers, m_divisions, i), HorizText(m_timeScan, m_samples, m_divisions, i));
}

void CHorizScale::PaintUnit(CDC& dc) const {
  const CRect& unit = m_bands.unit;
  dc.SelectObject(
      CFont({.height = unit.Height() - 6, .width = unit.Width() / 40, .weight = 300, .face = kFace}));
  dc.SetTextAlign(TA_CENTER);
  dc.TextOut({(unit.left + 2 + unit.right - 2) / 2, unit.top + 7}, "Seconds");
}

void CVertScale::SetArea(const CRect& area) {
  m_area = area;
  m_bands = VertBandsOf(area);
}

// A number can be wider than its area.
CRect CVertScale::Reach() const {
  const int row = m_area.Height() / 14;
  return {m_area.left, m_area.top - row, m_area.right + m_area.Width(), m_area.bottom + row};
}

void CVertScale::Paint(CDC& dc) const {
  if (!m_variable) return;
  const CSavedContext saved(dc);
  PaintNumbers(dc);
  PaintTicks(dc);
}

void CVertScale::PaintNumbers(CDC& dc) const {
  const CRect& numbers = m_bands.numbers;
  dc.SelectObject(CFont(
      {.height = numbers.Height() / 14 - 3, .width = numbers.Width() / 8 - 1, .weight = 400, .face = kFace}));
  for (UINT i = 0; i <= m_divisions; ++i)
    dc.DrawText(VertText(m_variable->Scale(), m_divisions, i), VertNumber(numbers, m_divisions, i));
}

void CVertScale::PaintTicks(CDC& dc) const {
  const CRect& ticks = m_bands.ticks;
  const int left = ticks.left + 3, right = ticks.right - 3;
  dc.SelectObject(CPen{1, m_variable->m_color});
  Line(dc, {left, ticks.top}, {left, ticks.bottom});
  Line(dc, {left, ticks.top}, {right, ticks.top});
  Line(dc, {left, ticks.bottom}, {right, ticks.bottom});
  for (UINT i = 1; i < m_divisions; ++i) {
    const int y = VertTick(ticks, m_divisions, i);
    Line(dc, {left, y}, {right, y});
  }
}

CDisplaySquare::CDisplaySquare(CSize size, UINT divisor)
    : m_font({.height = size.cy, .width = size.cx / static_cast<int>(divisor), .weight = 300, .face = kFace}),
      m_parts(ItemPartsOf(size)) {}

void CDisplaySquare::Paint(CDC& dc, CPoint origin, COLORREF colour, const CString& name) const {
  const CSavedContext saved(dc);
  const CRect square = m_parts.square.Moved(origin.x, origin.y);
  dc.SelectObject(m_font);
  dc.SetTextColor(kBlack);
  dc.SetBkColor(kTrendWhite);  // behind a name that is wider than the legend
  dc.DrawText(name, m_parts.text.Moved(origin.x, origin.y));
  dc.FillRect(square, CBrush{colour});
  dc.SelectObject(CPen{1, kBlack});
  const CPoint corners[] = {{square.left, square.bottom},
                            {square.left, square.top},
                            {square.right, square.top},
                            {square.right, square.bottom},
                            {square.left, square.bottom}};
  dc.Polyline(corners);
}

void CLegend::SetValues(const CRect& frame, UINT rows) {
  m_frame = frame;
  m_rows = rows;
}

void CLegend::Paint(CDC& dc, const CVariableArray& variables) {
  if (m_frame.IsEmpty()) return;
  dc.FillRect(m_frame, CBrush{kTrendWhite});
  m_count = static_cast<UINT>(variables.GetSize());
  const CDisplaySquare square({m_frame.Width() - 30, LegendRow(m_frame, m_rows)}, 15);
  for (UINT i = 0; i < m_count; ++i) {
    const CVariable& variable = *variables[static_cast<int>(i)];
    square.Paint(dc, LegendItem(m_frame, m_rows, i), variable.m_color, variable.m_name);
  }
}

int CLegend::ItemOnPoint(CPoint point) const { return LegendItemOnPoint(m_frame, m_rows, m_count, point); }

}  // namespace vastra
