// CChartState: a chart without its window: what it shows, where it is, its cursors, and the picture that is
// known so far. The view draws it, the window asks for new pictures. Without Qt.
#pragma once

#include <map>
#include <optional>
#include <span>

#include "vastra/charts/chart_cursor_rules.h"
#include "vastra/charts/chart_range_rules.h"
#include "vastra/charts/time_axis_geometry.h"

namespace vastra {

constexpr std::size_t kCursors = 2;

// When the nodes of variables did not answer, in the order of time; without a name: of all other variables.
using CAwayRanges = std::map<CString, std::vector<CMomentRange>>;

class VASTRA_API CChartState {
 public:
  // What moves the chart.
  enum EMove { moveWheel, moveDrag, moveKeys, moveRectangle, moveWhole, moveFollow, moveAxis };
  using Time = CChartPlaces::Time;

  const CChartLayout& Layout() const { return m_layout; }
  void SetLayout(CChartLayout layout);  // that of a file
  CChartLayout StoredLayout() const;    // for a file: without a range if the user has chosen none
  CChartClock Clock() const { return CChartClock(m_layout.isUtc); }
  void SetUtc(bool isUtc) { m_layout.isUtc = isUtc; }

  // Units of variables; those without one are not in it.
  void SetUnits(std::map<CString, CString> units);
  CString UnitOf(const CString& variable) const;
  CString Caption(const CChartCurve& curve) const;  // "Temp [K]"
  CString AxisUnit(int id) const;                   // of all its curves, or empty

  // Curves. Each call leaves the axes as they have to be.
  bool Add(const CString& variable);  // false: it is there, or there is no room
  void Remove(std::size_t curve);
  void RemoveAll();
  void Use(std::size_t curve, int axis);  // as UseAxis
  void SetColour(std::size_t curve, unsigned colour) { m_layout.curves[curve].colour = colour; }
  void SetHidden(std::size_t curve, bool isHidden);
  std::size_t Selected() const { return m_selected; }  // kNoCurve: none
  void Select(std::size_t curve) { m_selected = curve < m_layout.curves.size() ? curve : kNoCurve; }
  std::vector<CString> Variables() const;  // of the curves

  // The place.
  const CMomentRange& Range() const { return m_layout.range; }
  bool HasRange() const { return m_layout.range.to > m_layout.range.from; }
  const CMomentRange& Rows() const { return m_rows; }
  void SetRows(const CMomentRange& rows);  // of the data; follows it, or shows all until the user moves
  void Show(const CMomentRange& range, EMove move);
  void Zoom(CMoment about, double factor, EMove move);  // about the end while it follows
  void Pan(double part, EMove move);                    // of the length; ends to follow
  // A rectangle: a range, and parts of the height from the bottom, from 0 to 1.
  void ShowRectangle(const CMomentRange& range, double low, double high);
  void ShowWhole();
  void Follow(bool isFollowing);
  // Begins with the last length milliseconds before now, and follows.
  void StartFollowing(CMoment length, CMoment now);
  // The same without a step back: while the pointer drags from a place to the next.
  void DragTo(const CMomentRange& range);
  bool HasBack() const { return m_places.HasBack(); }
  bool HasForward() const { return m_places.HasForward(); }
  void Back();
  void Forward();

  // Values of an axis; id 0: of all axes. height: the place that stays, from 0 at the bottom to 1.
  void ZoomValues(int id, double height, double factor, EMove move);
  void PanValues(int id, double part, EMove move);  // of the height
  void SetAxisRange(int id, const CAxisRange& range);
  void SetAutomatic(int id);

  // The picture. Curves are found in it by their variables.
  void SetPicture(CChartPicture picture);
  const CChartPicture& Picture() const { return m_picture; }
  std::span<const CCurveStep> StepsOf(std::size_t curve) const;

  // What the logger has said of nodes that are away: logs without rows say nothing of it.
  void SetAway(CAwayRanges away) { m_away = std::move(away); }
  std::span<const CMomentRange> AwayOf(std::size_t curve) const;
  // The value of a curve at a moment; without one, the newest value of the picture.
  CValueAt ValueOf(std::size_t curve, std::optional<CMoment> moment) const;

  // Cursors.
  bool HasCursors() const { return m_hasCursors; }
  void ShowCursors(bool areShown);  // in the visible range
  CMoment CursorAt(std::size_t cursor) const { return m_cursors[cursor]; }
  std::size_t ActiveCursor() const { return m_active; }
  void SetActive(std::size_t cursor) { m_active = cursor; }
  void MoveCursor(std::size_t cursor, CMoment moment);
  CMomentRange BetweenCursors() const;  // both ends belong to it

 private:
  void Leave(EMove move);
  void GoTo(const CChartPlace& place);
  void SetRange(const CMomentRange& range);
  void Settle();
  void FindSteps();
  std::vector<CCurveFacts> Facts() const;
  void FitAxes();

  CChartLayout m_layout;
  std::map<CString, CString> m_units;
  CMomentRange m_rows = {0, 0};
  bool m_showsAll = true;  // the user has not moved yet
  CChartPlaces m_places;
  CChartPicture m_picture;
  std::vector<std::size_t> m_steps;  // of each curve its place in the picture, or kNoCurve
  CAwayRanges m_away;
  std::size_t m_selected = kNoCurve;
  bool m_hasCursors = false;
  CMoment m_cursors[kCursors] = {kFirstMoment - 1, kFirstMoment - 1};  // not placed yet
  std::size_t m_active = 0;
};

}  // namespace vastra
