#include "vastra/charts/chart_state_rules.h"

#include <algorithm>
#include <cmath>

namespace vastra {
namespace {

struct CFound {
  bool hasValues = false;
  double least = 0, greatest = 0;

  void Add(double low, double high) {
    least = hasValues ? std::min(least, low) : low;
    greatest = hasValues ? std::max(greatest, high) : high;
    hasValues = true;
  }
};

// The values of the steps in range; if there are none, those of the steps around it, whose line crosses the
// range.
CFound ValuesIn(std::span<const CCurveStep> steps, const CMomentRange& range) {
  const auto add = [](CFound& found, const CCurveStep& step) {
    if (step.values > 0) found.Add(static_cast<double>(step.least), static_cast<double>(step.greatest));
  };
  CFound found;
  const auto first = std::ranges::lower_bound(steps, range.from, {}, &CCurveStep::to);
  auto step = first;
  for (; step != steps.end() && step->from < range.to; ++step) add(found, *step);
  if (found.hasValues) return found;
  if (first != steps.begin()) add(found, first[-1]);
  if (step != steps.end()) add(found, *step);
  return found;
}

}  // namespace

void CChartState::SetLayout(CChartLayout layout) {
  m_layout = std::move(layout);
  m_places.Clear();
  m_selected = kNoCurve;
  m_showsAll = !HasRange();
  if (m_showsAll) SetRange(WholeRange(m_rows, m_layout.range));
  if (m_layout.isFollowing) SetRange(FollowedRange(m_layout.range, m_rows));
  Settle();
}

CChartLayout CChartState::StoredLayout() const {
  CChartLayout layout = m_layout;
  if (m_showsAll) layout.range = {0, 0};
  return layout;
}

void CChartState::SetUnits(std::map<CString, CString> units) { m_units = std::move(units); }

CString CChartState::UnitOf(const CString& variable) const {
  const auto unit = m_units.find(variable);
  return unit == m_units.end() ? CString() : unit->second;
}

CString CChartState::Caption(const CChartCurve& curve) const {
  const CString unit = UnitOf(curve.variable);
  return unit.IsEmpty() ? curve.variable : curve.variable + " [" + unit + "]";
}

CString CChartState::AxisUnit(int id) const {
  CString unit;
  bool isFirst = true;
  for (const CChartCurve& curve : m_layout.curves) {
    if (curve.axis != id) continue;
    if (!isFirst && UnitOf(curve.variable) != unit) return {};
    unit = UnitOf(curve.variable);
    isFirst = false;
  }
  return unit;
}

bool CChartState::Add(const CString& variable) {
  const bool isAdded = AddCurve(m_layout, variable);
  Settle();
  return isAdded;
}

void CChartState::Remove(std::size_t curve) {
  if (curve >= m_layout.curves.size()) return;
  RemoveCurve(m_layout, curve);
  Select(m_selected == curve                            ? kNoCurve
         : m_selected > curve && m_selected != kNoCurve ? m_selected - 1
                                                        : m_selected);
  Settle();
}

void CChartState::RemoveAll() {
  m_layout.curves.clear();
  m_layout.axes.clear();
  m_selected = kNoCurve;
  Settle();
}

void CChartState::Use(std::size_t curve, int axis) {
  UseAxis(m_layout, curve, axis);
  Settle();
}

void CChartState::SetHidden(std::size_t curve, bool isHidden) {
  m_layout.curves[curve].isHidden = isHidden;
  FitAxes();
}

std::vector<CString> CChartState::Variables() const {
  std::vector<CString> variables;
  for (const CChartCurve& curve : m_layout.curves) variables.push_back(curve.variable);
  return variables;
}

void CChartState::SetRows(const CMomentRange& rows) {
  m_rows = rows;
  if (m_layout.isFollowing && HasRange())
    SetRange(FollowedRange(m_layout.range, rows));
  else if (m_showsAll)
    SetRange(WholeRange(rows, m_layout.range));
}

void CChartState::Leave(EMove move) {
  m_showsAll = false;
  m_places.Leave({m_layout.range, m_layout.axes}, move, Time::clock::now());
}

void CChartState::SetRange(const CMomentRange& range) {
  m_layout.range = range;
  FitAxes();
}

void CChartState::Show(const CMomentRange& range, EMove move) {
  Leave(move);
  m_layout.isFollowing = false;
  SetRange(LimitedRange(range));
}

void CChartState::Zoom(CMoment about, double factor, EMove move) {
  if (!HasRange()) return;
  Leave(move);
  const bool isFollowing = m_layout.isFollowing;
  const CMomentRange range = ZoomedAbout(m_layout.range, isFollowing ? m_layout.range.to : about, factor);
  SetRange(isFollowing ? FollowedRange(range, m_rows) : range);
}

void CChartState::Pan(double part, EMove move) {
  if (!HasRange()) return;
  const auto length = static_cast<double>(m_layout.range.to - m_layout.range.from);
  Show(Panned(m_layout.range, static_cast<CMoment>(std::llround(part * length))), move);
}

void CChartState::DragTo(const CMomentRange& range) {
  m_layout.isFollowing = false;
  SetRange(LimitedRange(range));
}

void CChartState::ShowRectangle(const CMomentRange& range, double low, double high) {
  Leave(moveRectangle);
  m_layout.isFollowing = false;
  for (CChartAxis& axis : m_layout.axes) {
    const CAxisRange former = axis.range;
    axis.range = DrawableRange({former.low + low * former.Span(), former.low + high * former.Span()});
    axis.isAutomatic = false;
  }
  SetRange(LimitedRange(range));
}

void CChartState::ShowWhole() {
  Leave(moveWhole);
  m_showsAll = true;
  m_layout.isFollowing = false;
  for (CChartAxis& axis : m_layout.axes) axis.isAutomatic = true;
  SetRange(WholeRange(m_rows, m_layout.range));
}

void CChartState::Follow(bool isFollowing) {
  if (isFollowing == m_layout.isFollowing) return;
  if (isFollowing) Leave(moveFollow);
  m_showsAll = false;
  m_layout.isFollowing = isFollowing;
  if (isFollowing && HasRange()) SetRange(FollowedRange(m_layout.range, m_rows));
}

void CChartState::StartFollowing(CMoment length, CMoment now) {
  m_showsAll = false;
  m_layout.isFollowing = true;
  SetRange(FollowedRange({now - length, now}, m_rows));
}

// Axes that were removed since do not come back, new ones stay.
void CChartState::GoTo(const CChartPlace& place) {
  for (const CChartAxis& former : place.axes)
    if (CChartAxis* axis = FindAxis(m_layout, former.id)) *axis = former;
  m_layout.isFollowing = false;
  m_showsAll = false;
  SetRange(place.range);
}

void CChartState::Back() {
  if (HasBack()) GoTo(m_places.Back({m_layout.range, m_layout.axes}));
}

void CChartState::Forward() {
  if (HasForward()) GoTo(m_places.Forward({m_layout.range, m_layout.axes}));
}

void CChartState::ZoomValues(int id, double height, double factor, EMove move) {
  Leave(move);
  for (CChartAxis& axis : m_layout.axes) {
    if (id != 0 && axis.id != id) continue;
    axis.range = ZoomedAbout(axis.range, axis.range.low + height * axis.range.Span(), factor);
    axis.isAutomatic = false;
  }
}

void CChartState::PanValues(int id, double part, EMove move) {
  Leave(move);
  for (CChartAxis& axis : m_layout.axes) {
    if (id != 0 && axis.id != id) continue;
    axis.range = Panned(axis.range, part * axis.range.Span());
    axis.isAutomatic = false;
  }
}

void CChartState::SetAxisRange(int id, const CAxisRange& range) {
  CChartAxis* axis = FindAxis(m_layout, id);
  if (!axis) return;
  Leave(moveAxis);
  axis->range = DrawableRange(range);
  axis->isAutomatic = false;
}

void CChartState::SetAutomatic(int id) {
  Leave(moveAxis);
  for (CChartAxis& axis : m_layout.axes)
    if (id == 0 || axis.id == id) axis.isAutomatic = true;
  FitAxes();
}

void CChartState::SetPicture(CChartPicture picture) {
  m_picture = std::move(picture);
  Settle();
}

std::span<const CCurveStep> CChartState::StepsOf(std::size_t curve) const {
  const std::size_t place = curve < m_steps.size() ? m_steps[curve] : kNoCurve;
  if (place >= m_picture.curves.size()) return {};
  return m_picture.curves[place];
}

// After a change of curves, picture or axes.
void CChartState::Settle() {
  FindSteps();
  ChooseAxes(m_layout, Facts());
  FitAxes();
}

std::span<const CMomentRange> CChartState::AwayOf(std::size_t curve) const {
  auto found = m_away.find(m_layout.curves[curve].variable);
  if (found == m_away.end()) found = m_away.find({});
  if (found == m_away.end()) return {};
  return found->second;
}

// No row is newer than the moment since which its node is away.
CValueAt CChartState::ValueOf(std::size_t curve, std::optional<CMoment> moment) const {
  const std::span<const CCurveStep> steps = StepsOf(curve);
  const CMoment newest = steps.empty() ? m_rows.to - 1 : steps.back().to;
  const CValueAt value = ValueAt(steps, moment.value_or(newest));
  const CMoment at = moment.value_or(m_rows.to - 1);
  const auto isThere = [&](const CMomentRange& away) {
    return away.Has(at) && (moment ? !value.hasValue : newest <= away.from);
  };
  return std::ranges::any_of(AwayOf(curve), isThere) ? CValueAt{.isAway = true} : value;
}

void CChartState::FindSteps() {
  m_steps.clear();
  const std::vector<CString>& known = m_picture.query.variables;
  for (const CChartCurve& curve : m_layout.curves) {
    const auto found = std::ranges::find(known, curve.variable);
    m_steps.push_back(found == known.end() ? kNoCurve : static_cast<std::size_t>(found - known.begin()));
  }
}

std::vector<CCurveFacts> CChartState::Facts() const {
  std::vector<CCurveFacts> facts;
  for (std::size_t i = 0; i < m_layout.curves.size(); ++i) {
    const CFound found = ValuesIn(StepsOf(i), m_layout.range);
    facts.push_back({UnitOf(m_layout.curves[i].variable), found.hasValues, found.least, found.greatest});
  }
  return facts;
}

void CChartState::FitAxes() {
  for (CChartAxis& axis : m_layout.axes) {
    if (!axis.isAutomatic) continue;
    CFound found;
    for (std::size_t i = 0; i < m_layout.curves.size(); ++i) {
      if (m_layout.curves[i].axis != axis.id || m_layout.curves[i].isHidden) continue;
      const CFound here = ValuesIn(StepsOf(i), m_layout.range);
      if (here.hasValues) found.Add(here.least, here.greatest);
    }
    if (found.hasValues) axis.range = FittedRange(found.least, found.greatest);
  }
}

void CChartState::ShowCursors(bool areShown) {
  m_hasCursors = areShown;
  if (!areShown) return;
  const CMomentRange& range = m_layout.range;
  const CMoment length = range.to - range.from;
  const CMoment places[kCursors] = {range.from + length / 3, range.from + 2 * (length / 3)};
  for (std::size_t i = 0; i < kCursors; ++i)
    if (!range.Has(m_cursors[i])) m_cursors[i] = places[i];
}

void CChartState::MoveCursor(std::size_t cursor, CMoment moment) {
  m_cursors[cursor] = std::clamp(moment, kFirstMoment, kEndMoment - 1);
  m_active = cursor;
  m_hasCursors = true;
}

CMomentRange CChartState::BetweenCursors() const {
  const auto [first, last] = std::minmax(m_cursors[0], m_cursors[1]);
  return {first, last + 1};
}

}  // namespace vastra
