// The geometry of a curve: the steps of a picture become lines, bands where they are denser than pixels, and
// marks of single values. No value is lost: the least and the greatest one of each column of pixels is part
// of it. Without Qt.
#pragma once

#include <span>
#include <utility>
#include <vector>

#include "vastra/charts/chart_data.h"
#include "vastra/charts/value_axis_geometry.h"

namespace vastra {

struct CPlotPoint {
  double x = 0, y = 0;

  bool operator==(const CPlotPoint&) const = default;
};

// Where moments and values are in a plot, in pixels.
struct CPlotScale {
  CMomentRange range = {0, 1};
  CAxisRange values = {};
  double left = 0, top = 0, width = 1, height = 1;

  double X(CMoment moment) const {
    return left +
           static_cast<double>(moment - range.from) * width / static_cast<double>(range.to - range.from);
  }
  double Y(double value) const { return top + (values.high - value) * height / values.Span(); }
  CMoment MomentAt(double x) const;  // within all moments
  double ValueAt(double y) const { return values.high - (y - top) * values.Span() / height; }
};

// A part of the points of a curve.
struct CPointRun {
  std::size_t first = 0, count = 0;
};

// A stretch in which some values were NaN or infinite.
struct CAwayStretch {
  double left = 0, right = 0;
  bool isWhole = false;  // there was no other value
};

class VASTRA_API CCurveGeometry {
 public:
  // steps: in the order of time. lineWidth: of the curve, in pixels. The vectors keep their memory from one
  // call to the next.
  void Build(std::span<const CCurveStep> steps, const CPlotScale& scale, double lineWidth);

  const std::vector<CPlotPoint>& Points() const { return m_points; }
  const std::vector<CPointRun>& Lines() const { return m_lines; }   // of Points: lines through two or more
  const std::vector<CPointRun>& Bands() const { return m_bands; }   // of Points: outlines of areas
  const std::vector<CPlotPoint>& Marks() const { return m_marks; }  // values that are drawn as points
  const std::vector<CAwayStretch>& Away() const { return m_away; }

 private:
  // What lies in one column of pixels, or a coarse step over several.
  struct CColumn {
    CPlotPoint first, last;
    double top = 0, bottom = 0;  // of the greatest and the least value
    double right = 0;            // the end of the column
    std::uint32_t values = 0;
    bool isJoined = false;
    bool isRough = false;

    double Middle() const { return (first.x + right) / 2; }
  };

  void CollectColumns(std::span<const CCurveStep> steps, const CPlotScale& scale);
  void AddStep(const CCurveStep& step, const CPlotScale& scale, bool isJoined);
  void AddAway(const CCurveStep& step, const CCurveStep* next, const CPlotScale& scale);
  bool IsNear(std::size_t i) const;
  bool IsWide(const CColumn& column) const;
  static bool IsRough(const CColumn& column);
  bool IsInBand(std::size_t i) const;
  std::size_t BandEnd(std::size_t first) const;
  void AddBand(std::size_t first, std::size_t end);
  static bool IsHigh(const CColumn& column);
  std::pair<double, double> SidesOf(std::size_t i, std::size_t first, std::size_t end, bool isHigherLeft,
                                    bool isHigherRight) const;
  void AddTop(std::size_t i, std::size_t first, std::size_t end);
  void AddBottom(std::size_t i, std::size_t first, std::size_t end);
  void AddLine(std::size_t i);
  void AddMark(std::size_t i);
  void AddSegment(CPlotPoint from, CPlotPoint to);

  std::vector<CColumn> m_columns;
  std::vector<CPlotPoint> m_points, m_marks;
  std::vector<CPointRun> m_lines, m_bands;
  std::vector<CAwayStretch> m_away;
  CPlotPoint m_clipLow, m_clipHigh;  // lines are clipped there, far outside of the plot
  double m_lineWidth = 1;
};

}  // namespace vastra
