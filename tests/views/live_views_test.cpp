// The scan grid and the trend window on real stages, and the choice of their variables.
#include <QFrame>
#include <QLineEdit>
#include <QTableView>

#include <array>
#include <bit>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/recorder.h"
#include "tests/support/windows.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/views/trending_dlg.h"
#include "vastra/views/var_scan_dlg.h"
#include "vastra/views/var_selection_dlg.h"

namespace vastra {
namespace {

using CBoxes = std::vector<std::string>;
constexpr COLORREF kFirst = 0xFA5A5A, kSecond = 0x5AFA5A;
constexpr COLORREF kWhite = 0xFFFFFF, kBlack = 0, kYellow = 0x00FFFF;
const char* const kLost = "Message|Some variables had to be removed from the trending.|30";
const char* const kLostRows = "Message|Some variables had to be removed from the grid.|30";
const char* const kUnreadable = "Message|Error reading file.|30";

// An input of three variables a, b, c, then the trending stage.
class LiveViews : public testing::Test {
 protected:
  LiveViews() {
    auto* node = new CPlcNodeConfig;
    node->m_driver.plcType = 9001;  // the simulator
    node->m_driver.text1 = "constant";
    node->m_driver.variableCount = 3;
    node->m_varNames = m_names = Names({"a", "b", "c"});
    m_input.GetOptions()->m_plcNodes.AddTail(node);
    EXPECT_EQ(m_input.Open(), 1);
    EXPECT_EQ(m_trendings.Open(m_names), 1);
  }
  ~LiveViews() override {
    if (m_trend) m_trend->DestroyWindow();
    if (m_grid) m_grid->DestroyWindow();
  }

  QWidget* OpenTrend() {
    m_trend = new CTrendingDlg;
    m_trend->SetInputPointers(&m_input, &m_trendings, &m_trend);
    m_trend->SetGridPointer(&m_grid);
    m_trend->SetTimeScan(1000);
    EXPECT_EQ(m_trend->Create(), 1);
    m_trend->ShowWindow(SW_SHOW);
    return m_trend->Widget();
  }
  QWidget* OpenGrid() {
    m_grid = new CVarScanDlg;
    m_grid->SetInputPointers(&m_input, &m_trendings, &m_grid);
    m_grid->SetTrendPointer(&m_trend);
    EXPECT_EQ(m_grid->Create(), 1);
    m_grid->ShowWindow(SW_SHOW);
    return m_grid->Widget();
  }

  void Write(std::initializer_list<float> values) {
    CLogSample sample;
    for (const float value : values) sample.m_values.Add(value);
    EXPECT_EQ(m_trendings.Write(sample), 1);
  }
  // Writes a sample and refreshes the open views.
  void Scan(std::initializer_list<float> values) {
    Write(values);
    if (m_trend) m_trend->Refresh();
    if (m_grid) m_grid->Refresh();
  }
  // The user chooses exactly names, in this order.
  static void Choose(QWidget* window, std::initializer_list<const char*> names) {
    const auto user = [&](QWidget* dialog) {
      Click(dialog, "<<");
      auto* list = Find<QListWidget>(dialog, "Available variables");
      for (const char* name : names) {
        list->findItems(name, Qt::MatchExactly).at(0)->setSelected(true);
        Click(dialog, "--->");
      }
      Click(dialog, "OK");
    };
    WhileModal([&] { Click(window, "Edit"); }, user);
  }
  void Load(QWidget* window, const char* file) {
    m_chooser.path = m_dir / file;
    Click(window, "Load");
  }

  CRecorder m_recorder;
  CTestPrompter m_prompter;
  CTestChooser m_chooser;
  CTempDir m_dir;
  CLogInput m_input;
  CLogTrendings m_trendings;
  CStringArray& m_names = m_trendings.GetOptions()->m_baseVars;
  CTrendingDlg* m_trend = nullptr;  // the host's variables
  CVarScanDlg* m_grid = nullptr;
};

class ScanGrid : public LiveViews {
 protected:
  // The rows with text, as "name value|".
  std::string Rows() const {
    const QAbstractItemModel* model = m_view->model();
    QString all;
    for (int row = 0; row < model->rowCount(); ++row) {
      const QString text =
          model->index(row, 0).data().toString() + " " + model->index(row, 1).data().toString();
      if (text != " ") all += text + "|";
    }
    return all.toStdString();
  }

  QWidget* const m_window = OpenGrid();
  QTableView* const m_view = m_window->findChild<QTableView*>();
};

TEST_F(ScanGrid, EachRowShowsTheValueOfItsNameFromTheNextRefreshOn) {
  EXPECT_EQ(Rows(), "");
  const QAbstractItemModel* model = m_view->model();
  EXPECT_EQ(model->rowCount(), 30);
  EXPECT_EQ(model->headerData(1, Qt::Horizontal).toString(), "Values");
  EXPECT_EQ(std::pair(m_view->columnWidth(0), m_view->columnWidth(1)), std::pair(100, 85));
  EXPECT_FALSE(model->flags(model->index(0, 1)) & Qt::ItemIsEditable);
  Write({1, 2.346F, 3});
  Choose(m_window, {"c", "b"});
  EXPECT_EQ(Rows(), "c 3.00|b 2.35|");
  m_grid->ResetVarNames();
  EXPECT_EQ(Rows(), "c 0.00|b 0.00|");
  Scan({4, 5});
  EXPECT_EQ(Rows(), "c 0.00|b 5.00|") << "a sample without c";
  m_trendings.Close();
  m_grid->Refresh();
  EXPECT_EQ(Rows(), "c 0.00|b 5.00|");
}

TEST_F(ScanGrid, AFrozenGridCollectsValuesAndShowsThemAtTheNextRefresh) {
  Choose(m_window, {"a"});
  QApplication::processEvents();
  CPaints paints(m_view->viewport());
  Click(m_window, "Freeze");
  Scan({7, 0, 0});
  EXPECT_EQ(paints.Take(), 0);
  EXPECT_EQ(Rows(), "a 7.00|");
  Click(m_window, "Unfreeze");
  EXPECT_EQ(paints.Take(), 0);
  m_grid->Refresh();
  EXPECT_EQ(paints.Take(), 1);
}

TEST_F(ScanGrid, LostNamesAreRemovedAndTheOthersMoveUp) {
  WriteSelection(m_dir / "x.grd", Names({"c", "lost", "a"}));
  Write({1, 2, 3});
  Load(m_window, "x.grd");
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLostRows}));
  EXPECT_EQ(Rows(), "c 3.00|a 1.00|");
  m_names = Names({"x", "a"});
  m_trendings.GetOptions()->m_extraVars = Names({"y"});
  m_grid->ResetVarNames();
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLostRows}));
  Choose(m_window, {"y", "a"});
  EXPECT_EQ(Rows(), "y 3.00|a 2.00|");
}

TEST_F(ScanGrid, ASelectionIsSavedAndLoaded) {
  Choose(m_window, {"b", "a"});
  m_chooser.path = m_dir / "s.grd";
  Click(m_window, "Save");
  const CFileQuestion& asked = m_chooser.file;
  EXPECT_EQ(asked.defaultExtension + " " + asked.name + " " + asked.filter,
            "grd Grid Grid Files (*.grd)|*.grd|All Files (*.*)|*.*||");
  EXPECT_TRUE(asked.save && asked.asksToOverwrite);
  Choose(m_window, {"c"});
  Load(m_window, "s.grd");
  EXPECT_FALSE(asked.save || asked.mustExist);
  const std::string former = ReadBytes(m_dir / "s.grd");
  WriteBytes(m_dir / "cut", former.substr(0, 11));
  for (const char* file : {"none", "cut"}) {
    EXPECT_EQ(Rows(), "b 0.00|a 0.00|");
    Load(m_window, file);
  }
  EXPECT_EQ(m_prompter.Take(), CBoxes(2, kUnreadable));
  EXPECT_EQ(Rows(), "b 0.00| 0.00|") << "until the names are mapped again";
  m_grid->ResetVarNames();
  EXPECT_EQ(Rows(), "b 0.00|");
  for (const CString& path : {m_dir / "none/x", CString()}) {  // cannot be created; cancelled
    m_chooser.path = path;
    Click(m_window, "Save");
    EXPECT_EQ(m_prompter.Take(), CBoxes());
  }
  m_chooser.path = m_dir / "s.grd";
  const CFileSizeLimit full(3);
  Click(m_window, "Save");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Couldn't write file.|30"}));
  EXPECT_EQ(ReadBytes(m_chooser.path), former);
}

class TrendWindow : public LiveViews {
 protected:
  QImage Grab() const { return m_window->grab().toImage(); }
  QRect Frame(const char* name) const { return Find<QFrame>(m_window, name)->geometry(); }

  // The smallest rectangle around the pixels of colour inside the frame of part.
  QRect Coloured(COLORREF colour, const char* part = "Trends") const {
    const QImage shown = Grab().copy(Frame(part).adjusted(2, 2, -2, -2));
    QRect found;
    for (int y = 0; y < shown.height(); ++y)
      for (int x = 0; x < shown.width(); ++x)
        if (PixelOf(shown, x, y) == colour) found |= QRect(x, y, 1, 1);
    return found;
  }

  // The contents of Save: "name minimum..maximum colour|" of each curve, then the index of the selected one.
  std::string Curves() {
    CTrendSelection saved;
    m_chooser.path = m_dir / "curves";
    Click(m_window, "Save");
    EXPECT_EQ(ReadSelection(m_chooser.path, saved), ESelectionFile::good);
    QString all;
    for (const auto& [name, minimum, maximum, colour] : saved.curves)
      all += QString::asprintf("%s %g..%g %06X|", name.Std().c_str(), minimum, maximum, colour);
    return all.toStdString() + std::to_string(saved.scaleIndex);
  }

  QPoint Item(UINT i) const {
    const CPoint item = LegendItem(m_trend->Place("Legend").GetPlace(), 20, i);
    return {item.x + 40, item.y + 5};
  }
  // The user opens the menu of item and chooses entry.
  void TakeFromMenu(UINT item, int entry) {
    Grab();
    TakeEntry(entry);
    QTest::mousePress(m_window, Qt::RightButton, {}, Item(item));
  }
  // The user chooses entry from the next menu.
  static void TakeEntry(int entry) {
    QTimer::singleShot(0, [entry] {
      QWidget* menu = QApplication::activePopupWidget();
      for (int i = 0; i <= entry; ++i) QTest::keyClick(menu, Qt::Key_Down);
      QTest::keyClick(menu, Qt::Key_Return);
    });
  }
  // The user types into the scale dialog that open opens.
  static void TypeScale(const std::function<void()>& open, const char* minimum, const char* maximum) {
    WhileModal(open, [=](QWidget* dialog) {
      Find<QLineEdit>(dialog, "Minimum value:")->setText(minimum);
      Find<QLineEdit>(dialog, "Maximum value:")->setText(maximum);
      Click(dialog, "OK");
    });
  }
  static void Configure(QWidget* window) {
    WhileModal([&] { Click(window, "Config"); }, [](QWidget* dialog) { Click(dialog, "OK"); });
  }

  QWidget* m_window = OpenTrend();
};

TEST_F(TrendWindow, ACurveGrowsFromTheRightEdgeToTheLeftAndCanBeFrozen) {
  Write({3.5F, 0, 0});
  Choose(m_window, {"a"});  // adds the first point
  const int width = Frame("Trends").width(), y = Frame("Trends").height() / 8;
  int points = 1;
  for (const auto& [wanted, left] : {std::pair(2, width - width / 99), {100, 0}}) {
    for (; points < wanted; ++points) m_trend->Refresh();
    EXPECT_EQ(Coloured(kFirst), QRect(QPoint(left, y), QPoint(width - 5, y))) << points;
  }
  m_trend->RefreshTimeScan(500);
  EXPECT_EQ(Coloured(kFirst), QRect());

  QApplication::processEvents();
  CPaints paints(m_window, Frame("Trends"));
  m_trend->Refresh();
  EXPECT_EQ(paints.Take(), 1);
  Click(m_window, "Freeze");
  for (int i = 1; i < 100; ++i) m_trend->Refresh();
  EXPECT_EQ(paints.Take(), 0);
  Click(m_window, "Unfreeze");
  EXPECT_EQ(paints.Take(), 1);
  EXPECT_EQ(Coloured(kFirst).left(), 0) << "points that came meanwhile";
}

TEST_F(TrendWindow, ANewSelectionKeepsScalesByNameAndColoursRestart) {
  Write({37.2F, -3.5F, 0});
  Choose(m_window, {"a", "b", "c"});
  EXPECT_EQ(Curves(), "a 0..40 FA5A5A|b -4..0 5AFA5A|c 0..0 FAFA5A|0");
  for (const COLORREF colour : {0x123456u, 0u}) {
    m_chooser.colour = colour;
    TakeFromMenu(1, 2);
    EXPECT_EQ(Curves(), "a 0..40 FA5A5A|b -4..0 123456|c 0..0 FAFA5A|0");
  }
  Write({99, 99, 99});
  Choose(m_window, {"c", "b"});
  EXPECT_EQ(Curves(), "c 0..0 FA5A5A|b -4..0 5AFA5A|0");
  Choose(m_window, {});
  EXPECT_EQ(Curves(), "0");
  m_trendings.Close();
  Choose(m_window, {"a"});
  EXPECT_EQ(Curves(), "a 0..10000 FA5A5A|0") << "nothing to measure it by";
}

TEST_F(TrendWindow, LegendMenuAndKeyboardSelectAndScaleACurve) {
  Choose(m_window, {"a", "b", "c"});
  Grab();
  for (const UINT item : {2u, 3u}) {
    QTest::mouseClick(m_window, Qt::LeftButton, {}, Item(item));
    EXPECT_EQ(Curves().back(), '2');
  }
  TakeFromMenu(1, 0);
  EXPECT_EQ(Curves().back(), '1');
  TypeScale([&] { QTest::mouseDClick(m_window, Qt::LeftButton, {}, Item(0)); }, "-1", "1");
  const QPoint scale = Frame("Vertical scale").center();
  TypeScale([&] { QTest::mouseDClick(m_window, Qt::LeftButton, {}, scale); }, "2", "3");
  TypeScale([&] { TakeFromMenu(2, 1); }, "5", "5");
  TypeScale([&] { TakeFromMenu(2, 1); }, "x", "5");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Maximum value must be greater than minimum value.|30",
                                       "|Please enter a number.|30"}));
  EXPECT_EQ(Curves(), "a -1..1 FA5A5A|b 2..3 5AFA5A|c 0..10000 FAFA5A|1");

  QWidget* focus = Find<QAbstractButton>(m_window, "Freeze");
  std::string selected;
  for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_PageUp}) {
    QTest::keyClick(focus, key);
    selected += Curves().back();
  }
  EXPECT_EQ(selected, "2210");
  m_chooser.colour = 0x123456;
  TakeEntry(2);
  QTest::keyClick(focus, Qt::Key_Menu);
  EXPECT_EQ(Curves(), "a -1..1 123456|b 2..3 5AFA5A|c 0..10000 FAFA5A|0");
}

TEST_F(TrendWindow, TheScalesShowTheTimeAndTheSelectedCurve) {
  WriteSelection(m_dir / "x", CTrendSelection{{{"a", 0, 1, kFirst}, {"b", 0, 1, kSecond}}, 1});
  Load(m_window, "x");
  const QImage shown = Grab();
  const QPoint values = Frame("Vertical scale").topLeft();
  EXPECT_EQ(PixelOf(shown, values.x() + 3, values.y() + 5), kSecond);
  const auto [ticks, numbers, unit] = HorizBandsOf(m_trend->Place("Horizontal scale").GetPlace());
  for (UINT i = 0; i < 10; ++i)
    EXPECT_EQ(PixelOf(shown, HorizTick(ticks, 10, i), ticks.bottom - 3), RGB(255, 0, 0)) << i;

  // "100" reads upward and ends at its point.
  const CPoint end = HorizNumber(numbers, 10, 10);
  QRect ink;
  for (int y = end.y; y < end.y + 25; ++y)
    for (int x = end.x - 8; x < end.x + 20; ++x)
      if (qRed(shown.pixel(x, y)) < 100) ink |= QRect(x, y, 1, 1);
  EXPECT_GT(ink.height(), ink.width());
  EXPECT_LE(ink.top(), end.y + 2);
  m_trend->RefreshTimeScan(10);
  EXPECT_NE(Grab(), shown);
}

TEST_F(TrendWindow, AFileSetsColoursScalesAndTheSelectedCurve) {
  const CCurveRecord a = {"a", -1, 1, 0x111111}, b = {"b", 0, 0.5, 0x222222}, lost = {"lost", 5, 6, 0x333333};
  const struct {
    CTrendSelection file;
    const char* curves;
    CBoxes boxes;
  } kCases[] = {
      {{{b, a}, 1}, "b 0..0.5 222222|a -1..1 111111|1", {}},
      {{{lost, b, a}, 2}, "b 0..0.5 FA5A5A|a -1..1 5AFA5A|0", {kLost}},
      {{{b, a}, 2}, "b 0..0.5 222222|a -1..1 111111|0", {}},
  };
  for (const auto& row : kCases) {
    WriteSelection(m_dir / "x", row.file);
    Load(m_window, "x");
    EXPECT_EQ(m_prompter.Take(), row.boxes);
    EXPECT_EQ(Curves(), row.curves);
    Scan({1, 2, 3});
    Grab();
  }
  const std::string before = Curves(), file = ReadBytes(m_dir / "x");
  WriteBytes(m_dir / "other", "notours" + file);
  WriteSelection(m_dir / "x", CTrendSelection{{{"c", 0, 1, 1}, a, lost}, 0});
  WriteBytes(m_dir / "cut", ReadBytes(m_dir / "x").substr(0, file.size() + 10));
  for (const char* name : {"none", "other", "cut"}) Load(m_window, name);
  EXPECT_EQ(m_prompter.Take(), CBoxes({kUnreadable, "Message|Invalid file!.|30", kUnreadable}));
  Scan({1, 2, 3});
  EXPECT_EQ(Curves(), before);
  // The names that were read are the selection. Its curves are made when the variables are mapped again.
  m_trend->ResetVarNames();
  EXPECT_EQ(Curves(), "c 0..10 FA5A5A|a -1..1 5AFA5A|0");
}

TEST_F(TrendWindow, LostVariablesClearAllPointsButTheOtherScalesStay) {
  Write({10, 15, 30});
  Choose(m_window, {"a", "b"});
  m_trend->Refresh();
  m_names = Names({"b", "x", "a"});
  m_trend->ResetVarNames();
  EXPECT_FALSE(Coloured(kFirst).isNull()) << "names that only move keep their points";
  const auto user = [&](QWidget* dialog) {
    m_names = Names({"x", "b"});
    m_trend->ResetVarNames();
    Click(dialog, "OK");  // to the scale of the curve that was lost
  };
  WhileModal([&] { TakeFromMenu(0, 1); }, user);
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLost}));
  EXPECT_EQ(Curves(), "b 0..20 FA5A5A|0");
  EXPECT_TRUE(Coloured(kFirst).isNull());
  for (int i = 0; i < 2; ++i) Scan({0, 15});
  EXPECT_EQ(Coloured(kFirst).top(), Frame("Trends").height() / 4);
  EXPECT_TRUE(Coloured(kSecond).isNull());
}

TEST_F(TrendWindow, ChangingTheExtraVariablesReopensTheStageAndServesBothWindows) {
  QWidget* grid = OpenGrid();
  Write({1, 2, 3});
  for (QWidget* window : {m_window, grid}) Choose(window, {"c"});
  // Neither window is refreshed while the other shows its box.
  CPaints paints(grid->findChild<QTableView*>()->viewport());
  m_prompter.user = [&, first = true]() mutable {
    if (!std::exchange(first, false)) return;
    paints.Take();
    m_grid->Refresh();
    EXPECT_EQ(paints.Take(), 0);
  };
  m_names = Names({"a", "b"});
  Configure(m_window);
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLost, kLostRows}));
  EXPECT_EQ(Curves(), "0");
  grid->grab(), paints.Take();
  Scan({1, 2, 3});
  EXPECT_EQ(paints.Take(), 1);

  m_input.Close();
  for (QWidget* window : {m_window, grid}) Configure(window);
  EXPECT_EQ(m_prompter.Take(), CBoxes(2, "Message|Modification couldn't be done due to internal error.|30"));
  EXPECT_EQ(m_trendings.IsOpen(), 1);
  m_trendings.Close();
  Configure(grid);
  EXPECT_EQ(m_prompter.Take(), CBoxes());
  EXPECT_EQ(m_trendings.IsOpen(), 0);
}

TEST_F(TrendWindow, ItsControlsFollowItsSizeDownToTheSmallest) {
  const char* const kParts[] = {"Legend", "Edit",   "Config", "Freeze",         "Load",
                                "Save",   "Cancel", "Trends", "Vertical scale", "Horizontal scale"};
  Write({1, 2, 3});
  Choose(m_window, {"a"});
  for (const QSize size : {QSize(900, 700), QSize(10, 10)}) {
    m_window->resize(size);
    QApplication::processEvents();
    const QSize shown = m_window->size(), frame = m_window->frameSize() - shown;
    EXPECT_EQ(shown, size.expandedTo(QSize(400, 325) - frame));
    CRect outer = m_trend->GetFrameRect();
    outer.top = -23;  // this screen has a thinner caption
    const CTrendLayout layout = LayOutTrend({shown.width(), shown.height()}, outer);
    const auto places = std::bit_cast<std::array<CRect, std::size(kParts)>>(layout);
    for (std::size_t i = 0; i < places.size(); ++i) {
      const QRect is = Find<QWidget>(m_window, kParts[i])->geometry();
      EXPECT_EQ(CRect::Of({is.x(), is.y()}, {is.width(), is.height()}), places[i]) << kParts[i];
      EXPECT_TRUE(m_window->rect().contains(is)) << kParts[i];
    }
    for (int i = 0; i < 2; ++i) m_trend->Refresh();
    EXPECT_EQ(Coloured(kFirst).right(), layout.plot.Width() - 5);
  }
}

TEST_F(TrendWindow, InADarkThemePlotAndLegendStayWhite) {
  const QPalette former = QApplication::palette();
  QPalette dark = former;
  dark.setColor(QPalette::Window, Qt::black);
  dark.setColor(QPalette::WindowText, Qt::yellow);
  QApplication::setPalette(dark);
  m_names = Names({"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"});  // wider than the legend, without tall letters
  Choose(m_window, {m_names[0]});
  std::string colours;  // of each part: white, black, yellow, the first curve
  for (const char* part : {"Trends", "Legend", "Vertical scale", "Horizontal scale"}) {
    for (const COLORREF colour : {kWhite, kBlack, kYellow, kFirst})
      colours += Coloured(colour, part).isNull() ? '.' : 'x';
    colours += '|';
  }
  EXPECT_EQ(colours, "x...|xx.x|.xxx|.xx.|");
  const QImage shown = Grab();
  EXPECT_EQ(PixelOf(shown, Frame("Trends").right() + 1, Frame("Trends").center().y()), kBlack);
  EXPECT_EQ(PixelOf(shown, Frame("Legend").right() + 2, Item(0).y()), kWhite) << "above the name's letters";
  QApplication::setPalette(former);
}

TEST_F(TrendWindow, TwentyCurvesOrThirtyRowsCanBeSelected) {
  m_names.RemoveAll();
  Click(m_window, "Edit");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|No variables available.|30"}));
  const auto user = [](QWidget* dialog) { Click(dialog, ">>"), Click(dialog, "OK"); };
  for (const auto& [window, limit] : {std::pair(m_window, 20), {OpenGrid(), 30}}) {
    m_names.SetSize(limit + 1);
    WhileModal([w = window] { Click(w, "Edit"); }, user);
    const std::string text = "Message|Maximum number of variables is " + std::to_string(limit) + "|00";
    EXPECT_EQ(m_prompter.Take(), CBoxes({text}));
  }
}

TEST_F(TrendWindow, TheHostMayDestroyBothViewsWhileABoxOfOneIsOpen) {
  std::size_t boxes = 0;
  m_prompter.user = [&] {
    if (--boxes == 0) m_trend->DestroyWindow(), m_grid->DestroyWindow();
  };
  QWidget* grid = nullptr;
  const struct {
    std::function<void()> act;
    std::size_t box = 1;  // the box that destroys both views; it must be the last
  } kCases[] = {{[&] { m_trend->ResetVarNames(); }}, {[&] { m_grid->ResetVarNames(); }},
                {[&] { Click(m_window, "Edit"); }},  {[&] { Click(grid, "Edit"); }},
                {[&] { Configure(m_window); }},      {[&] { Configure(m_window); }, 2},
                {[&] { Configure(grid); }},          {[&] { Configure(grid); }, 2}};
  for (const auto& [act, box] : kCases) {
    m_names = Names({"a", "b", "c"});
    if (!m_trend) m_window = OpenTrend();
    grid = OpenGrid();
    for (QWidget* window : {m_window, grid}) Choose(window, {"a", "b"});
    m_names = Names({"b"});
    boxes = box;
    act();
    EXPECT_TRUE(!m_trend && !m_grid);
    EXPECT_EQ(m_prompter.Take().size(), box);
  }
}

TEST_F(TrendWindow, AClosedWindowClearsThePointerOfTheHost) {
  m_window->activateWindow();
  QApplication::processEvents();
  ASSERT_TRUE(m_window->isActiveWindow());
  QWidget* grid = OpenGrid();
  Click(m_window, "Cancel");
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(m_trend, nullptr);
  ASSERT_TRUE(m_grid) << "opened while the trend was the active window";
  Click(grid, "Cancel");
  EXPECT_EQ(m_grid, nullptr);
  m_trend = static_cast<CTrendingDlg*>(RUNTIME_CLASS(CTrendingDlg).CreateObject());
  m_trend->SetInputPointers(nullptr, &m_trendings, &m_trend);
  m_grid = new CVarScanDlg;
  m_grid->SetInputPointers(&m_input, nullptr, &m_grid);
  EXPECT_EQ(m_trend->Create() + m_grid->Create(), 0);
  EXPECT_TRUE(!m_trend && !m_grid);
  EXPECT_EQ(m_prompter.Take(), CBoxes(2, "Message|Incorrect initialization.|30"));
}

constexpr const char *kLeft = "Available variables", *kRight = "Selected variables";

void DoubleClick(QListWidget* list, int row) {
  const QPoint place = list->visualItemRect(list->item(row)).center();
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
}

TEST(VarSelection, ButtonsAndDoubleClicksMoveMarkedNamesAndOkAloneChecksTheLimit) {
  CTestPrompter prompter;
  CStringArray available = Names({"a", "b", "c", "d", "b", "f"}), selected = Names({"d", "x"});
  CVarSelectionDlg dialog;
  dialog.m_pAvailable = &available;
  dialog.m_pSelected = &selected;
  dialog.m_max = 2;
  const auto lists = [&] {
    return Joined(dialog.List(kLeft).GetTexts()) + "|" + Joined(dialog.List(kRight).GetTexts());
  };
  const auto mover = [&](QWidget* window) {
    auto* left = Find<QListWidget>(window, kLeft);
    auto* right = Find<QListWidget>(window, kRight);
    for (const int row : {0, 2}) left->item(row)->setSelected(true);
    for (int twice = 0; twice < 2; ++twice) Click(window, "--->");
    EXPECT_EQ(lists(), "b,b,f,|d,x,a,c,");
    for (const int row : {2, 1}) DoubleClick(left, row);
    EXPECT_EQ(lists(), "b,|d,x,a,c,f,b,");
    QTest::keyClick(left, Qt::Key_Down);
    EXPECT_TRUE(left->item(0)->isSelected()) << "after a move no entry is the current one";
    Click(window, "OK");
    EXPECT_EQ(prompter.Take(), std::vector<std::string>{"Message|Maximum number of variables is 2|00"});
    ASSERT_TRUE(window->isVisible());
    right->setCurrentRow(1);
    for (int twice = 0; twice < 2; ++twice) Click(window, "<---");
    EXPECT_EQ(lists(), "b,|d,a,c,f,b,") << "a name that is not available";
    for (const int row : {4, 1, 0}) DoubleClick(right, row);
    EXPECT_EQ(lists(), "a,b,d,b,|c,f,");
    EXPECT_EQ(Joined(selected), "d,x,");
    Click(window, "OK");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDOK); }, mover);
  EXPECT_EQ(Joined(selected), "c,f,");
  const auto canceller = [&](QWidget* window) {
    Click(window, ">>");
    EXPECT_EQ(lists(), "|c,f,a,b,d,b,");
    Click(window, "<<");
    EXPECT_EQ(lists(), "a,b,c,d,b,f,|");
    Click(window, "Cancel");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDCANCEL); }, canceller);
  EXPECT_EQ(Joined(selected), "c,f,");
}

}  // namespace
}  // namespace vastra
