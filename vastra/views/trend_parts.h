// The drawn parts of the trend window: the curves, two scales and the legend. They are not windows; they have
// places in the client area of the window.
#pragma once

#include "vastra/ui/drawing.h"
#include "vastra/views/variable.h"

namespace vastra {

// The curves on a white background, in the rectangle of size plot at 0, 0.
void DrawCurves(CDC& dc, const CVariableArray& variables, CSize plot);

// The time axis, below the curves.
class CHorizScale {
 public:
  void SetArea(const CRect& area);
  void SetValues(UINT timeScan, UINT samples);  // milliseconds between points, number of points
  void Paint(CDC& dc) const;
  CRect Reach() const;  // what Paint draws: numbers extend beyond the area

 private:
  void PaintTicks(CDC& dc) const;
  void PaintNumbers(CDC& dc) const;
  void PaintUnit(CDC& dc) const;

  CRect m_area;
  CHorizBands m_bands;
  UINT m_samples = 0;
  UINT m_timeScan = 100;
  UINT m_divisions = 10;
};

// The value axis of one curve, in its colour. Without a curve nothing is drawn.
class CVertScale {
 public:
  void SetArea(const CRect& area);
  void SetVariable(CVariable* variable) { m_variable = variable; }  // not owned
  CVariable* GetVariable() const { return m_variable; }
  const CRect& Area() const { return m_area; }
  void Paint(CDC& dc) const;
  CRect Reach() const;

 private:
  void PaintNumbers(CDC& dc) const;
  void PaintTicks(CDC& dc) const;

  CRect m_area;
  CVertBands m_bands;
  UINT m_divisions = 10;
  CVariable* m_variable = nullptr;
};

// One item of the legend: a square in the colour of the curve, and its name.
class CDisplaySquare {
 public:
  CDisplaySquare(CSize size, UINT divisor);  // the average width of a letter is size.cx / divisor
  void Paint(CDC& dc, CPoint origin, COLORREF colour, const CString& name) const;

 private:
  CFont m_font;
  CItemParts m_parts;
};

// The names of the curves, on a white background.
class CLegend {
 public:
  void SetValues(const CRect& frame, UINT rows);
  void Paint(CDC& dc, const CVariableArray& variables);
  int ItemOnPoint(CPoint point) const;  // -1: none
  const CRect& Frame() const { return m_frame; }

 private:
  UINT m_rows = 0;
  UINT m_count = 0;  // items at the last Paint
  CRect m_frame;
};

}  // namespace vastra
