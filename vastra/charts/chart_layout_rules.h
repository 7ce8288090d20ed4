// What a chart shows: its curves, their axes and the range. Without Qt.
#pragma once

#include <map>
#include <vector>

#include "vastra/charts/value_axis_geometry.h"
#include "vastra/history/moment.h"

namespace vastra {

struct CChartAxis {
  int id = 1;  // above 0, unique in a layout
  bool isAutomatic = true;
  CAxisRange range = {};

  bool operator==(const CChartAxis&) const = default;
};

struct CChartCurve {
  CString variable;
  int axis = 0;         // id; 0: chosen as soon as values are known
  unsigned colour = 0;  // see chart_colour_rules.h
  bool isHidden = false;

  bool operator==(const CChartCurve&) const = default;
};

struct CChartLayout {
  std::vector<CChartCurve> curves;  // of different variables
  std::vector<CChartAxis> axes;
  CMomentRange range = {0, 0};  // empty: all rows
  bool isFollowing = false;
  bool isUtc = false;
};

constexpr std::size_t kMostCurves = 64;  // of a chart
constexpr int kMostAxes = 8;
constexpr std::size_t kNoCurve = SIZE_MAX;

// The index of the curve of a variable, or kNoCurve.
VASTRA_API std::size_t FindCurve(const CChartLayout& layout, const CString& variable);
// Adds a curve of the colour that is used least. False: it is there, or there are kMostCurves.
VASTRA_API bool AddCurve(CChartLayout& layout, const CString& variable);
void RemoveCurve(CChartLayout& layout, std::size_t curve);

VASTRA_API CChartAxis* FindAxis(CChartLayout& layout, int id);
// The place of an axis among the axes, from 0; -1: no such axis.
int PlaceOfAxis(const CChartLayout& layout, int id);
// A new axis; the id of the last one if there are kMostAxes.
int AddAxis(CChartLayout& layout);
// Moves a curve to an axis, or to a new one if id is 0. Axes without a curve are removed.
void UseAxis(CChartLayout& layout, std::size_t curve, int id);

// What is known of a curve when an axis is chosen for it.
struct CCurveFacts {
  CString unit;
  bool hasValues = false;
  double least = 0, greatest = 0;
};
// Chooses axes for the curves without one that have values, in their order: an axis of the same unit on which
// all its curves can still be read, else a new one, at most kAxesByThemselves.
constexpr int kAxesByThemselves = 4;
void ChooseAxes(CChartLayout& layout, const std::vector<CCurveFacts>& facts);

}  // namespace vastra
