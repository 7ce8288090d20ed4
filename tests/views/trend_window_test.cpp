// The trend window on real stages: its plot, and its curves after a selection, a file or other variables.
#include <QLineEdit>

#include "tests/views/live_views.h"

namespace vastra {
namespace {

constexpr COLORREF kFirst = 0xFA5A5A, kSecond = 0x5AFA5A;
constexpr COLORREF kWhite = 0xFFFFFF, kBlack = 0, kYellow = 0x00FFFF;
const char* const kLost = "Message|Some variables had to be removed from the trending.|30";
const char* const kUnreadable = "Message|Error reading file.|30";

using CPart = std::pair<const char*, CRect CTrendLayout::*>;
const CPart kParts[] = {{"Legend", &CTrendLayout::legend},
                        {"Edit", &CTrendLayout::edit},
                        {"Config", &CTrendLayout::config},
                        {"Freeze", &CTrendLayout::freeze},
                        {"Load", &CTrendLayout::load},
                        {"Save", &CTrendLayout::save},
                        {"Cancel", &CTrendLayout::cancel},
                        {"Trends", &CTrendLayout::plot},
                        {"Vertical scale", &CTrendLayout::vertScale},
                        {"Horizontal scale", &CTrendLayout::horizScale}};

class TrendWindow : public LiveViews {
 protected:
  TrendWindow() : m_window(OpenTrend()) { m_prompter.Take(); }

  QRect Frame(const char* name) const { return Find<QFrame>(m_window, name)->geometry(); }
  QSize PlotSize() const { return Frame("Trends").size(); }

  // The smallest rectangle around the pixels of colour, in coordinates of the plot.
  QRect Coloured(COLORREF colour) const {
    const QRect picture = Frame("Trends").adjusted(2, 2, -2, -2);
    const QImage shown = Grab(*m_trend).copy(picture);
    QRect found;
    for (int y = 0; y < shown.height(); ++y)
      for (int x = 0; x < shown.width(); ++x)
        if (PixelOf(shown, x, y) == colour) found |= QRect(x, y, 1, 1);
    return found;
  }

  // The contents of Save: "name minimum..maximum colour|" of each curve, then the index of the selected one.
  std::string Curves() {
    CTrendSelection selection;
    const CString path = std::exchange(m_chooser.path, m_dir / "curves");
    Click(m_window, "Save");
    m_chooser.path = path;
    EXPECT_EQ(ReadSelection(m_dir / "curves", selection), ESelectionFile::good);
    std::string all;
    for (const auto& [name, minimum, maximum, colour] : selection.curves) {
      CString text;
      text.Format("%s %g..%g %06X|", static_cast<const char*>(name), minimum, maximum, colour);
      all += text.Std();
    }
    return all + std::to_string(selection.scaleIndex);
  }

  QPoint Item(int i) const {
    const CRect frame = m_trend->Place("Legend").GetPlace();
    const CPoint item = LegendItem(frame, 20, static_cast<UINT>(i));
    return {item.x + 40, item.y + 5};
  }
  // The user opens the menu of item and chooses entry.
  void TakeFromMenu(int item, int entry) {
    Grab(*m_trend);
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

  QWidget* m_window;
};

TEST_F(TrendWindow, ACurveGrowsFromTheRightEdgeToTheLeft) {
  WriteSelection(m_dir / "x", CTrendSelection{{{"a", 0, 100, kFirst}}, 0});
  Load(m_window, m_dir / "x");
  Write({20, 0, 0});
  const int width = PlotSize().width(), y = PlotSize().height() * 80 / 100;
  const struct {
    int points, left;
  } kSteps[] = {{1, -1}, {2, width - width / 99}, {51, width - width * 50 / 99}, {100, 0}, {101, 0}};
  int points = 0;
  for (const auto& [wanted, left] : kSteps) {
    for (; points < wanted; ++points) m_trend->Refresh();
    EXPECT_EQ(Coloured(kFirst), left < 0 ? QRect() : QRect(QPoint(left, y), QPoint(width - 5, y))) << points;
  }
  m_trend->RefreshTimeScan(500);
  EXPECT_EQ(Coloured(kFirst), QRect());
  EXPECT_EQ(Curves(), "a 0..100 FA5A5A|0");
}

TEST_F(TrendWindow, RefreshPaintsThePlotAtOnceAndAFrozenPlotCollectsPoints) {
  Write({1, 0, 0});
  Choose(m_window, {"a"});
  QApplication::processEvents();
  CPaints paints(m_window, Frame("Trends"));
  Scan({1, 0, 0});
  EXPECT_EQ(paints.Take(), 1);
  EXPECT_FALSE(Coloured(kFirst).isNull()) << "choosing has refreshed it";
  paints.Take();
  Click(m_window, "Freeze");
  for (int i = 0; i < 100; ++i) Scan({1, 0, 0});
  EXPECT_EQ(paints.Take(), 0);
  Click(m_window, "Unfreeze");
  EXPECT_EQ(paints.Take(), 1);
  EXPECT_EQ(Coloured(kFirst).left(), 0);
}

TEST_F(TrendWindow, ANewSelectionKeepsScalesByNameAndColoursRestart) {
  Write({37.2F, -3.5F, 0});
  Choose(m_window, {"a", "b", "c"});
  EXPECT_EQ(Curves(), "a 0..40 FA5A5A|b -4..0 5AFA5A|c 0..0 FAFA5A|0");
  m_chooser.colour = 0x123456;
  TakeFromMenu(1, 2);
  EXPECT_EQ(Curves(), "a 0..40 FA5A5A|b -4..0 123456|c 0..0 FAFA5A|0");
  m_chooser.accepts = false;
  m_chooser.colour = 0;
  TakeFromMenu(1, 2);
  Write({99, 99, 99});
  Choose(m_window, {"c", "b"});
  EXPECT_EQ(Curves(), "c 0..0 FA5A5A|b -4..0 5AFA5A|0");
  Choose(m_window, {});
  EXPECT_EQ(Curves(), "0");
  m_trendings.Close();
  Choose(m_window, {"a"});
  EXPECT_EQ(Curves(), "a 0..10000 FA5A5A|0") << "nothing to measure it by";
}

TEST_F(TrendWindow, TheLegendSelectsAndScalesACurve) {
  Choose(m_window, {"a", "b", "c"});
  Grab(*m_trend);
  QTest::mouseClick(m_window, Qt::LeftButton, {}, Item(2));
  EXPECT_EQ(Curves().back(), '2');
  QTest::mouseClick(m_window, Qt::LeftButton, {}, Item(3));
  EXPECT_EQ(Curves().back(), '2');
  TakeFromMenu(1, 0);
  EXPECT_EQ(Curves().back(), '1');

  TypeScale([&] { QTest::mouseDClick(m_window, Qt::LeftButton, {}, Item(0)); }, "-1", "1");
  TypeScale([&] { QTest::mouseDClick(m_window, Qt::LeftButton, {}, Frame("Vertical scale").center()); }, "2",
            "3");
  EXPECT_EQ(Curves(), "a -1..1 FA5A5A|b 2..3 5AFA5A|c 0..10000 FAFA5A|1");
  TypeScale([&] { TakeFromMenu(2, 1); }, "5", "5");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Maximum value must be greater than minimum value.|30"}));
  TypeScale([&] { TakeFromMenu(2, 1); }, "x", "5");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"|Please enter a number.|30"}));
  EXPECT_EQ(Curves(), "a -1..1 FA5A5A|b 2..3 5AFA5A|c 0..10000 FAFA5A|1");
}

TEST_F(TrendWindow, TheKeyboardReachesEveryCurve) {
  Choose(m_window, {"a", "b", "c"});
  QWidget* focus = Find<QAbstractButton>(m_window, "Freeze");
  std::string selected;
  for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_PageUp}) {
    QTest::keyClick(focus, key);
    selected += Curves().back();
  }
  EXPECT_EQ(selected, "1221");
  m_chooser.colour = 0x123456;
  TakeEntry(2);
  QTest::keyClick(focus, Qt::Key_Menu);
  EXPECT_EQ(Curves(), "a 0..10000 FA5A5A|b 0..10000 123456|c 0..10000 FAFA5A|1");
}

TEST_F(TrendWindow, TheScalesShowTheTimeAndTheSelectedCurve) {
  Choose(m_window, {"a", "b"});
  Grab(*m_trend);
  QTest::mouseClick(m_window, Qt::LeftButton, {}, Item(1));
  const QImage shown = Grab(*m_trend);
  const CRect values = m_trend->Place("Vertical scale").GetPlace();
  EXPECT_EQ(PixelOf(shown, values.left + 3, values.top + 5), kSecond);
  const CHorizBands time = HorizBandsOf(m_trend->Place("Horizontal scale").GetPlace());
  for (UINT i = 0; i < 10; ++i)
    EXPECT_EQ(PixelOf(shown, HorizTick(time.ticks, 10, i), time.ticks.bottom - 3), RGB(255, 0, 0)) << i;

  // "100" reads upward and ends at its point.
  const CPoint end = HorizNumber(time.numbers, 10, 10);
  const auto ink = [&end](const QImage& image) {
    QRect all;
    for (int y = end.y; y < end.y + 25; ++y)
      for (int x = end.x - 8; x < end.x + 20; ++x)
        if (qRed(image.pixel(x, y)) < 100) all |= QRect(x, y, 1, 1);
    return all;
  };
  const QRect number = ink(shown);
  EXPECT_GT(number.height(), number.width());
  EXPECT_GE(number.left(), end.x);
  EXPECT_LE(number.top(), end.y + 2);
  m_trend->RefreshTimeScan(10);
  EXPECT_LT(ink(Grab(*m_trend)).height(), number.height()) << "\"1\"";
}

TEST_F(TrendWindow, AFileSetsColoursScalesAndTheSelectedCurve) {
  const CCurveRecord a = {"a", -1, 1, 0x111111}, b = {"b", 0, 0.5, 0x222222}, lost = {"lost", 5, 6, 0x333333};
  const struct {
    CTrendSelection file;
    const char* curves;
    CBoxes boxes;
  } kCases[] = {
      {{{b, a}, 1}, "b 0..0.5 222222|a -1..1 111111|1", {}},
      {{{b, a}, 2}, "b 0..0.5 222222|a -1..1 111111|0", {}},
      {{{b, a}, 0xFFFFFFFF}, "b 0..0.5 222222|a -1..1 111111|0", {}},
      {{{lost, b, a}, 2}, "b 0..0.5 FA5A5A|a -1..1 5AFA5A|0", {kLost}},
      {{{lost}, 0}, "0", {kLost}},
      {{{}, 7}, "0", {}},
  };
  for (const auto& row : kCases) {
    WriteSelection(m_dir / "x", row.file);
    Load(m_window, m_dir / "x");
    EXPECT_EQ(m_prompter.Take(), row.boxes);
    EXPECT_EQ(Curves(), row.curves);
    m_trend->Refresh();
    Grab(*m_trend);
  }
}

TEST_F(TrendWindow, AfterAFileThatCannotBeReadTheCurvesStay) {
  Scan({1, 2, 3});
  Choose(m_window, {"a"});
  const std::string before = Curves();
  WriteSelection(m_dir / "x", CTrendSelection{{{"c", 0, 1, 1}, {"b", 0, 1, 1}, {"lost", 0, 1, 1}}, 0});
  const std::string file = ReadBytes(m_dir / "x");
  WriteBytes(m_dir / "grid", "notours" + file);
  for (const char* name : {"none", "grid"}) Load(m_window, m_dir / name);
  EXPECT_EQ(m_prompter.Take(), CBoxes({kUnreadable, "Message|Invalid file!.|30"}));
  WriteBytes(m_dir / "x", file.substr(0, file.size() - 1));
  Load(m_window, m_dir / "x");
  EXPECT_EQ(m_prompter.Take(), CBoxes({kUnreadable}));
  Scan({1, 2, 3});
  EXPECT_EQ(Curves(), before);
  // The names that were read are the selection. Its curves are made when the variables are mapped again.
  m_trend->ResetVarNames();
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLost}));
  EXPECT_EQ(Curves(), "c 0..10 FA5A5A|b 0..10 5AFA5A|0");
}

TEST_F(TrendWindow, LostVariablesClearAllPointsButTheOtherScalesStay) {
  Write({10, 20, 30});
  Choose(m_window, {"a", "b"});
  for (int i = 0; i < 3; ++i) Scan({10, 20, 30});
  m_trendings.GetOptions()->m_baseVars = Names({"b", "x", "a"});
  m_trend->ResetVarNames();
  EXPECT_FALSE(Coloured(kFirst).isNull()) << "names that only move keep their points";
  m_trendings.GetOptions()->m_baseVars = Names({"x", "b"});
  m_trend->ResetVarNames();
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLost}));
  EXPECT_EQ(Curves(), "b 0..100 FA5A5A|0");
  EXPECT_TRUE(Coloured(kFirst).isNull());
  for (int i = 0; i < 3; ++i) Scan({0, 15});
  EXPECT_EQ(Coloured(kFirst).top(), PlotSize().height() * 85 / 100);
  EXPECT_TRUE(Coloured(kSecond).isNull());
}

TEST_F(TrendWindow, ChangingTheExtraVariablesReopensTheStageAndServesBothWindows) {
  QWidget* grid = OpenGrid();
  Write({1, 2, 3});
  Choose(m_window, {"a", "c"});
  Choose(grid, {"c"});
  // Both windows lose a name. Neither is refreshed while the other shows its box.
  CPaints paints(grid->findChild<QTableView*>()->viewport());
  m_prompter.user = [&, first = true]() mutable {
    if (!std::exchange(first, false)) return;
    paints.Take();
    m_grid->Refresh();
    EXPECT_EQ(paints.Take(), 0);
  };
  m_trendings.GetOptions()->m_baseVars = Names({"a", "b"});
  Configure(m_window);
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLost, "Message|Some variables had to be removed from the grid.|30"}));
  EXPECT_EQ(Curves(), "a 0..10 FA5A5A|0");
  Grab(*m_grid), paints.Take();
  Scan({1, 2, 3});
  EXPECT_EQ(paints.Take(), 1);

  m_input.Close();
  for (QWidget* window : {m_window, grid}) {
    Configure(window);
    EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Modification couldn't be done due to internal error.|30"}));
  }
  EXPECT_EQ(m_trendings.IsOpen(), 1);
  m_trendings.Close();
  Configure(grid);
  EXPECT_EQ(m_prompter.Take(), CBoxes());
  EXPECT_EQ(m_trendings.IsOpen(), 0);
}

TEST_F(TrendWindow, ItsControlsFollowItsSizeDownToTheSmallest) {
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
    for (const auto& [name, part] : kParts) {
      const QRect is = Find<QWidget>(m_window, name)->geometry();
      EXPECT_EQ(CRect::Of({is.x(), is.y()}, {is.width(), is.height()}), layout.*part) << name;
      EXPECT_TRUE(m_window->rect().contains(is)) << name;
    }
    for (int i = 0; i < 2; ++i) Scan({1, 2, 3});
    EXPECT_EQ(Coloured(kFirst).right(), layout.plot.Width() - 5);
  }
}

TEST_F(TrendWindow, InADarkThemePlotAndLegendStayWhite) {
  const QPalette former = QApplication::palette();
  QPalette dark = former;
  dark.setColor(QPalette::Window, Qt::black);
  dark.setColor(QPalette::WindowText, Qt::yellow);
  QApplication::setPalette(dark);
  const char* const kLong = "a name longer than the legend is wide";
  m_trendings.GetOptions()->m_baseVars = Names({kLong});
  Choose(m_window, {kLong});
  const QImage shown = Grab(*m_trend);
  QApplication::setPalette(former);
  EXPECT_EQ(PixelOf(shown, Frame("Legend").right() + 2, Item(0).y()), kWhite) << "above the name's letters";
  const auto colours = [&](const char* name) {
    QSet<COLORREF> all;
    const QRect part = Frame(name).adjusted(3, 3, -3, -3);
    for (int y = part.top(); y <= part.bottom(); ++y)
      for (int x = part.left(); x <= part.right(); ++x) all += PixelOf(shown, x, y);
    return all;
  };
  EXPECT_EQ(colours("Trends"), QSet<COLORREF>{kWhite});
  EXPECT_TRUE(colours("Legend").contains({kWhite, kBlack, kFirst}));
  EXPECT_FALSE(colours("Legend").contains(kYellow));
  for (const char* scale : {"Vertical scale", "Horizontal scale"}) {
    EXPECT_TRUE(colours(scale).contains({kBlack, kYellow})) << scale;
    EXPECT_FALSE(colours(scale).contains(kWhite)) << scale;
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
    m_trendings.GetOptions()->m_baseVars = Names({"a", "b", "c"});
    if (!m_trend) m_window = OpenTrend();
    grid = OpenGrid();
    for (QWidget* window : {m_window, grid}) Choose(window, {"a", "b"});
    m_trendings.GetOptions()->m_baseVars = Names({"b"});
    boxes = box;
    act();
    EXPECT_TRUE(!m_trend && !m_grid);
    EXPECT_EQ(m_prompter.Take().size(), box);
  }
}

TEST_F(TrendWindow, AClosedWindowClearsThePointerOfTheHost) {
  Choose(m_window, {"a"});
  m_window->activateWindow();
  QApplication::processEvents();
  ASSERT_TRUE(m_window->isActiveWindow());
  OpenGrid();
  Click(m_window, "Cancel");
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(m_trend, nullptr);
  EXPECT_NE(nullptr, m_grid) << "opened while the trend was the active window";
  m_trend = static_cast<CTrendingDlg*>(RUNTIME_CLASS(CTrendingDlg).CreateObject());
  m_trend->SetInputPointers(nullptr, &m_trendings, &m_trend);
  EXPECT_EQ(m_trend->Create(), 0);
  EXPECT_EQ(m_trend, nullptr);
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Incorrect initialization.|30"}));
}

}  // namespace
}  // namespace vastra
