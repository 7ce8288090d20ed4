#include "vastra/charts/chart_commands.h"

#include <QAction>

#include "vastra/charts/chart_view.h"

namespace vastra {
namespace {

constexpr double kStep = 0.1, kPage = 0.9;  // of the range, by keys
constexpr double kNearer = 0.7, kFarther = 1 / kNearer;
constexpr double kMiddle = 0.5;  // of the height
constexpr int kFewPixels = 1, kManyPixels = 20;

CMoment MiddleOf(const CMomentRange& range) { return range.from + (range.to - range.from) / 2; }

// The axis of the selected curve; 0, all of them, if none is selected.
int ChosenAxis(const CChartState& state) {
  const auto& curves = state.Layout().curves;
  return state.Selected() < curves.size() ? curves[state.Selected()].axis : 0;
}

// About the active cursor if it is visible, else about the middle.
void ZoomByKey(CChartState& state, double factor) {
  const CMoment cursor = state.CursorAt(state.ActiveCursor());
  const bool isSeen = state.HasCursors() && state.Range().Has(cursor);
  state.Zoom(isSeen ? cursor : MiddleOf(state.Range()), factor, CChartState::moveKeys);
}

void MoveCursorBy(CChartView& view, int pixels) {
  const CMomentRange range = view.State().Range();
  const double pixel = static_cast<double>(range.to - range.from) / view.Frame().plot.width;
  const auto by = static_cast<CMoment>(pixels * std::max(pixel, 1.0));
  view.Change([by](CChartState& state) {
    if (!state.HasCursors()) state.ShowCursors(true);
    state.MoveCursor(state.ActiveCursor(), state.CursorAt(state.ActiveCursor()) + by);
  });
}

// Takes a cursor that is not visible to the place that the user points at, or into the middle.
void TakeCursor(CChartView& view, std::size_t cursor) {
  const std::optional<CMoment> pointed = view.Pointed();
  view.Change([&](CChartState& state) {
    const bool isSeen = state.HasCursors() && state.Range().Has(state.CursorAt(cursor));
    state.ShowCursors(true);
    if (pointed || !isSeen) state.MoveCursor(cursor, pointed.value_or(MiddleOf(state.Range())));
    state.SetActive(cursor);
  });
}

void SelectNext(CChartState& state, int step) {
  const auto count = static_cast<int>(state.Layout().curves.size());
  if (count == 0) return;
  const int now = state.Selected() == kNoCurve ? (step > 0 ? -1 : 0) : static_cast<int>(state.Selected());
  state.Select(static_cast<std::size_t>((now + step + count) % count));
}

// Its key ends a drag first.
void SelectNone(CChartView& view) {
  if (!view.Cancel()) view.Change([](CChartState& state) { state.Select(kNoCurve); });
}

bool HasAnyRange(const CChartState& state) { return state.HasRange(); }
bool HasBetween(const CChartState& state) { return state.HasCursors(); }
bool HasSelected(const CChartState& state) { return state.Selected() < state.Layout().curves.size(); }
bool HasAxes(const CChartState& state) { return !state.Layout().axes.empty(); }
bool HasCurves(const CChartState& state) { return !state.Layout().curves.empty(); }

struct CCommandRow {
  EChartMenu menu;
  const char* text;
  std::initializer_list<const char*> keys;
  void (*run)(CChartView& view);
  bool (*isEnabled)(const CChartState& state) = nullptr;
  bool (*isChecked)(const CChartView& view) = nullptr;  // null: it has no mark
};

template <void (*change)(CChartState&)>
void Run(CChartView& view) {
  view.Change(change);
}

using TState = CChartState;
const CCommandRow kChartCommands[] = {
    {EChartMenu::view, "&Whole Range", {"Home"}, Run<[](TState& s) { s.ShowWhole(); }>, HasAnyRange},
    {EChartMenu::view,
     "&Back",
     {"Alt+Left", "Backspace"},
     Run<[](TState& s) { s.Back(); }>,
     [](const TState& s) { return s.HasBack(); }},
    {EChartMenu::view,
     "&Forward",
     {"Alt+Right", "Shift+Backspace"},
     Run<[](TState& s) { s.Forward(); }>,
     [](const TState& s) { return s.HasForward(); }},
    {EChartMenu::view,
     "F&ollow",
     {"F", "End"},
     Run<[](TState& s) { s.Follow(!s.Layout().isFollowing); }>,
     HasAnyRange,
     [](const CChartView& view) { return view.State().Layout().isFollowing; }},
    {EChartMenu::view,
     "Zoom &Rectangle",
     {"Z"},
     [](CChartView& view) { view.StartRectangle(!view.IsRectangleStarted()); },
     HasAnyRange,
     [](const CChartView& view) { return view.IsRectangleStarted(); }},
    {EChartMenu::view, "Zoom &In", {"+", "="}, Run<[](TState& s) { ZoomByKey(s, kNearer); }>, HasAnyRange},
    {EChartMenu::view, "Zoom &Out", {"-"}, Run<[](TState& s) { ZoomByKey(s, kFarther); }>, HasAnyRange},
    {EChartMenu::view,
     "&Earlier",
     {"Left"},
     Run<[](TState& s) { s.Pan(-kStep, TState::moveKeys); }>,
     HasAnyRange},
    {EChartMenu::view,
     "&Later",
     {"Right"},
     Run<[](TState& s) { s.Pan(kStep, TState::moveKeys); }>,
     HasAnyRange},
    {EChartMenu::view,
     "Page E&arlier",
     {"PgUp", "Shift+Left"},
     Run<[](TState& s) { s.Pan(-kPage, TState::moveKeys); }>,
     HasAnyRange},
    {EChartMenu::view,
     "Page La&ter",
     {"PgDown", "Shift+Right"},
     Run<[](TState& s) { s.Pan(kPage, TState::moveKeys); }>,
     HasAnyRange},
    {EChartMenu::view,
     "&UTC",
     {"U"},
     Run<[](TState& s) { s.SetUtc(!s.Layout().isUtc); }>,
     nullptr,
     [](const CChartView& view) { return view.State().Layout().isUtc; }},
    {EChartMenu::values,
     "&Automatic Range",
     {"V"},
     Run<[](TState& s) { s.SetAutomatic(ChosenAxis(s)); }>,
     HasAxes},
    {EChartMenu::values,
     "Zoom Values &In",
     {"Shift+Up"},
     Run<[](TState& s) { s.ZoomValues(ChosenAxis(s), kMiddle, kNearer, TState::moveKeys); }>,
     HasAxes},
    {EChartMenu::values,
     "Zoom Values &Out",
     {"Shift+Down"},
     Run<[](TState& s) { s.ZoomValues(ChosenAxis(s), kMiddle, kFarther, TState::moveKeys); }>,
     HasAxes},
    {EChartMenu::values,
     "&Higher Values",
     {"Up"},
     Run<[](TState& s) { s.PanValues(ChosenAxis(s), kStep, TState::moveKeys); }>,
     HasAxes},
    {EChartMenu::values,
     "&Lower Values",
     {"Down"},
     Run<[](TState& s) { s.PanValues(ChosenAxis(s), -kStep, TState::moveKeys); }>,
     HasAxes},
    {EChartMenu::cursors,
     "&Cursors",
     {"C"},
     Run<[](TState& s) { s.ShowCursors(!s.HasCursors()); }>,
     HasAnyRange,
     [](const CChartView& view) { return view.State().HasCursors(); }},
    {EChartMenu::cursors,
     "Cursor &A Here",
     {"A"},
     [](CChartView& view) { TakeCursor(view, 0); },
     HasAnyRange},
    {EChartMenu::cursors,
     "Cursor &B Here",
     {"B"},
     [](CChartView& view) { TakeCursor(view, 1); },
     HasAnyRange},
    {EChartMenu::cursors,
     "Move &Left",
     {"Ctrl+Left"},
     [](CChartView& view) { MoveCursorBy(view, -kFewPixels); },
     HasAnyRange},
    {EChartMenu::cursors,
     "Move &Right",
     {"Ctrl+Right"},
     [](CChartView& view) { MoveCursorBy(view, kFewPixels); },
     HasAnyRange},
    {EChartMenu::cursors,
     "Move Far L&eft",
     {"Ctrl+Shift+Left"},
     [](CChartView& view) { MoveCursorBy(view, -kManyPixels); },
     HasAnyRange},
    {EChartMenu::cursors,
     "Move Far R&ight",
     {"Ctrl+Shift+Right"},
     [](CChartView& view) { MoveCursorBy(view, kManyPixels); },
     HasAnyRange},
    {EChartMenu::cursors,
     "&Zoom Between Cursors",
     {"Return", "Enter"},
     Run<[](TState& s) { s.Show(s.BetweenCursors(), TState::moveKeys); }>,
     HasBetween},
    {EChartMenu::curves,
     "Select &Next",
     {"Ctrl+Down", "N"},
     Run<[](TState& s) { SelectNext(s, 1); }>,
     HasCurves},
    {EChartMenu::curves,
     "Select &Previous",
     {"Ctrl+Up", "P"},
     Run<[](TState& s) { SelectNext(s, -1); }>,
     HasCurves},
    {EChartMenu::curves, "Select N&one", {"Esc"}, SelectNone, HasSelected},
    {EChartMenu::curves,
     "&Hide",
     {"H"},
     Run<[](TState& s) { s.SetHidden(s.Selected(), !s.Layout().curves[s.Selected()].isHidden); }>,
     HasSelected,
     [](const CChartView& view) {
       const TState& state = view.State();
       return HasSelected(state) && state.Layout().curves[state.Selected()].isHidden;
     }},
    {EChartMenu::curves,
     "Axis of Its O&wn",
     {"W"},
     Run<[](TState& s) { s.Use(s.Selected(), 0); }>,
     HasSelected},
    {EChartMenu::curves, "&Remove", {"Del"}, Run<[](TState& s) { s.Remove(s.Selected()); }>, HasSelected},
    {EChartMenu::curves, "Remove A&ll", {"Ctrl+Del"}, Run<[](TState& s) { s.RemoveAll(); }>, HasCurves},
};

}  // namespace

QList<CChartCommand> MakeChartCommands(CChartView& view) {
  QList<CChartCommand> commands;
  for (const CCommandRow& row : kChartCommands) {
    auto* action = new QAction(row.text, &view);
    QList<QKeySequence> keys;
    for (const char* key : row.keys) keys << QKeySequence(key);
    action->setShortcuts(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setCheckable(row.isChecked != nullptr);
    QObject::connect(action, &QAction::triggered, &view, [&view, &row] { row.run(view); });
    view.addAction(action);
    commands << CChartCommand{row.menu, action};
  }
  UpdateChartCommands(commands, view);
  return commands;
}

void UpdateChartCommands(const QList<CChartCommand>& commands, const CChartView& view) {
  qsizetype i = 0;
  for (const CCommandRow& row : kChartCommands) {
    QAction* action = commands[i++].action;
    action->setEnabled(!row.isEnabled || row.isEnabled(view.State()));
    if (row.isChecked) action->setChecked(row.isChecked(view));
  }
}

}  // namespace vastra
