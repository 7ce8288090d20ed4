// The geometry of the trend window: its controls, the points of its curves, the ticks and numbers of its
// scales and the items of its legend. Whole pixels, truncated towards zero.
#pragma once

#include <array>
#include <span>

#include "vastra/platform/list.h"
#include "vastra/ui/geometry.h"

namespace vastra {

constexpr CSize kTrendMinSize = {400, 325};  // of the window with its frame
constexpr int kTrendPoints = 100;            // of a curve
// The least height of a caption with its edge. The layout moves up by the caption; with less than this (some
// screens report 0) the last controls would be below the window.
constexpr int kTrendCaption = 23;

struct CTrendLayout {
  CRect legend, edit, config, freeze, load, save, cancel, plot, vertScale, horizScale;
};
// client: the size of the client area. frame: the outer edges of the window in client coordinates; no control
// is placed above the client area.
CTrendLayout LayOutTrend(CSize client, const CRect& frame);

// The values at the bottom and the top of the plot.
struct CScale {
  double minimum = 0.0;
  double maximum = 10000.0;
};
// The scale of a curve whose first value is value: from 0 to the next number beyond value with one non-zero
// digit. A value that is not finite has the default scale.
CScale StartScale(double value);

// The points of one curve, from the newest at the right edge on. NaN leaves a gap; a scale without height has
// no points. The distance of a point from the plot is limited to what drawing can represent.
class CCurveWalk {
 public:
  // history: newest first; values after kTrendPoints are ignored. plot: the size of the plot.
  CCurveWalk(const CList<float, float>& history, CScale scale, CSize plot);
  // The next two or more points without a gap; empty: no more. Valid until the next call.
  std::span<const CPoint> NextRun();

 private:
  bool Place(float value, int& y) const;

  CList<float, float>::CIterator<const float> m_next;
  int m_count;  // values that were used
  CSize m_plot;
  CScale m_scale;
  double m_perUnit;  // pixels
  std::array<CPoint, kTrendPoints> m_run;
};

// The time axis. The newest point, 0 seconds, is at the right.
struct CHorizBands {
  CRect ticks, numbers, unit;
};
CHorizBands HorizBandsOf(const CRect& area);
int HorizTick(const CRect& ticks, UINT divisions, UINT i);         // x, from the left
CPoint HorizNumber(const CRect& numbers, UINT divisions, UINT i);  // from the right
CString HorizText(UINT timeScan, UINT samples, UINT divisions, UINT i);

// The value axis. The lowest number is at the bottom.
struct CVertBands {
  CRect ticks, numbers;
};
CVertBands VertBandsOf(const CRect& area);
int VertTick(const CRect& ticks, UINT divisions, UINT i);  // y, from the bottom
CRect VertNumber(const CRect& numbers, UINT divisions, UINT i);
CString VertText(CScale scale, UINT divisions, UINT i);

// The legend: rows of one height, one item each.
int LegendRow(const CRect& frame, UINT rows);  // the height of a row
CPoint LegendItem(const CRect& frame, UINT rows, UINT i);
// The item at point; -1: none. Inside the frame only the y coordinate of point counts.
int LegendItemOnPoint(const CRect& frame, UINT rows, UINT count, CPoint point);

// One item of the legend, relative to its corner.
struct CItemParts {
  CRect square, text;
};
CItemParts ItemPartsOf(CSize size);

}  // namespace vastra
