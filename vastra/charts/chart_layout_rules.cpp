#include "vastra/charts/chart_layout_rules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "vastra/charts/chart_colour_rules.h"

namespace vastra {
namespace {

constexpr double kReadable = 0.2;  // the part of an axis that a curve needs

constexpr double kEndless = std::numeric_limits<double>::infinity();

struct CExtremes {
  double least = kEndless, greatest = -kEndless;

  void Add(const CCurveFacts& facts) {
    if (!facts.hasValues) return;
    least = std::min(least, facts.least);
    greatest = std::max(greatest, facts.greatest);
  }
  double Span() const { return greatest - least; }
};

// How flat the flattest of the curves on axis id would be with one more: its part of the height. A curve that
// is constant counts as readable.
double Flatness(const CChartLayout& layout, const std::vector<CCurveFacts>& facts, int id,
                std::size_t added) {
  CExtremes all;
  double shortest = kEndless;
  for (std::size_t i = 0; i < layout.curves.size(); ++i) {
    if (layout.curves[i].axis != id && i != added) continue;
    all.Add(facts[i]);
    const double span = facts[i].greatest - facts[i].least;
    if (facts[i].hasValues && span > 0) shortest = std::min(shortest, span);
  }
  return all.Span() > 0 && std::isfinite(shortest) ? shortest / all.Span() : 1;
}

// The unit of the first curve of an axis.
const CString& UnitOf(const CChartLayout& layout, const std::vector<CCurveFacts>& facts, int id) {
  const auto curve = std::ranges::find(layout.curves, id, &CChartCurve::axis);
  return facts[static_cast<std::size_t>(curve - layout.curves.begin())].unit;
}

// The axis for a curve; 0: a new one.
int AxisFor(const CChartLayout& layout, const std::vector<CCurveFacts>& facts, std::size_t curve) {
  int best = 0, bestOfAll = 0;
  double flatness = kReadable, flatnessOfAll = -1;
  for (const CChartAxis& axis : layout.axes) {
    const double here = Flatness(layout, facts, axis.id, curve);
    const bool isSameUnit = UnitOf(layout, facts, axis.id) == facts[curve].unit;
    if (isSameUnit && here >= flatness) best = axis.id, flatness = here;
    if (here > flatnessOfAll) bestOfAll = axis.id, flatnessOfAll = here;
  }
  const bool isFull = static_cast<int>(layout.axes.size()) >= kAxesByThemselves;
  return best == 0 && isFull ? bestOfAll : best;
}

void RemoveIdleAxes(CChartLayout& layout) {
  std::erase_if(layout.axes, [&](const CChartAxis& axis) {
    return std::ranges::find(layout.curves, axis.id, &CChartCurve::axis) == layout.curves.end();
  });
}

}  // namespace

std::size_t FindCurve(const CChartLayout& layout, const CString& variable) {
  const auto found = std::ranges::find(layout.curves, variable, &CChartCurve::variable);
  return found == layout.curves.end() ? kNoCurve : static_cast<std::size_t>(found - layout.curves.begin());
}

bool AddCurve(CChartLayout& layout, const CString& variable) {
  if (FindCurve(layout, variable) != kNoCurve || layout.curves.size() >= kMostCurves) return false;
  std::array<int, kCurveColours> uses = {};
  for (const CChartCurve& curve : layout.curves) ++uses[curve.colour % kCurveColours];
  const auto colour = static_cast<unsigned>(std::ranges::min_element(uses) - uses.begin());
  layout.curves.push_back({.variable = variable, .colour = colour});
  return true;
}

void RemoveCurve(CChartLayout& layout, std::size_t curve) {
  layout.curves.erase(layout.curves.begin() + static_cast<std::ptrdiff_t>(curve));
  RemoveIdleAxes(layout);
}

CChartAxis* FindAxis(CChartLayout& layout, int id) {
  const auto found = std::ranges::find(layout.axes, id, &CChartAxis::id);
  return found == layout.axes.end() ? nullptr : &*found;
}

int PlaceOfAxis(const CChartLayout& layout, int id) {
  const auto found = std::ranges::find(layout.axes, id, &CChartAxis::id);
  return found == layout.axes.end() ? -1 : static_cast<int>(found - layout.axes.begin());
}

int AddAxis(CChartLayout& layout) {
  if (layout.axes.size() >= kMostAxes) return layout.axes.back().id;
  int id = 1;
  while (FindAxis(layout, id)) ++id;
  layout.axes.push_back({.id = id});
  return id;
}

void UseAxis(CChartLayout& layout, std::size_t curve, int id) {
  layout.curves[curve].axis = id > 0 && FindAxis(layout, id) ? id : AddAxis(layout);
  RemoveIdleAxes(layout);
}

void ChooseAxes(CChartLayout& layout, const std::vector<CCurveFacts>& facts) {
  for (std::size_t i = 0; i < std::min(layout.curves.size(), facts.size()); ++i) {
    if (layout.curves[i].axis != 0 || !facts[i].hasValues) continue;
    const int id = AxisFor(layout, facts, i);
    layout.curves[i].axis = id ? id : AddAxis(layout);
  }
}

}  // namespace vastra
