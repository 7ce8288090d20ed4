// The window of a chart over a folder of logs, driven by captions, mouse and keys.
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTableWidget>
#include <QTreeWidget>
#include <QWheelEvent>

#include <cmath>

#include "tests/history/history_fixture.h"
#include "tests/support/windows.h"
#include "vastra/charts/chart_layout_file.h"
#include "vastra/charts/chart_window.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

// Logs of 1000 s: Temp counts the seconds, Flow is half of it and away from 400 s to 500 s; no rows from 700
// s to 800 s.
class ChartWindow : public CLogFixture {
 protected:
  ChartWindow() {
    for (int log = 0; log < 10; ++log) {
      std::vector<CTestRow> rows;
      for (int second = log * 100; second < log * 100 + 100 && log != 7; ++second) {
        const auto value = static_cast<float>(second);
        rows.push_back({second * 1000, {value, log == 4 ? kNone : value / 2}});
      }
      const std::string name = "logs/" + std::to_string(log) + ".rph";
      std::filesystem::create_directories((m_dir / "logs").Std());
      if (!rows.empty()) WriteBytes(m_dir / name.c_str(), Written(Names({"Temp", "Flow"}), StoreOf(rows)));
    }
    m_window.resize(900, 600);
    m_window.show();
    m_window.View().Change([](CChartState& state) { state.SetUtc(true); });
  }
  ~ChartWindow() override { EXPECT_EQ(m_boxes.Take(), std::vector<std::string>()); }

  static bool Wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }
  const CChartState& State() { return m_window.View().State(); }
  // Opens the folder, and both curves by the list.
  void Open() {
    m_window.AddPaths({m_dir / "logs"});
    auto* list = Find<QTreeWidget>(&m_window, "Variables");
    ASSERT_TRUE(Wait([&] { return list->topLevelItemCount() == 2; }));
    list->setFocus();
    QTest::keyClick(list, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(list, Qt::Key_Return);
    WaitForPicture();
    m_window.View().setFocus();
  }
  void WaitForPicture() {
    ASSERT_TRUE(Wait([&] {
      const CChartPicture& picture = State().Picture();
      return picture.isFinal && picture.query.variables == State().Variables() &&
             picture.query.range.from <= State().Range().from && picture.query.range.to >= State().Range().to;
    }));
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&m_window.View(), key, modifiers);
  }
  QAction* ActionOf(const char* text) {
    for (QAction* action : m_window.findChildren<QAction*>())
      if (action->text().remove('&') == text) return action;
    throw std::runtime_error(text);
  }
  QPoint PlaceOf(CMoment moment, double height = 0.5) {
    const CChartBox plot = m_window.View().Frame().plot;
    return QPointF(m_window.View().Scale(0).X(moment), plot.Bottom() - height * plot.height).toPoint();
  }
  void Turn(QPoint place, int notches, Qt::KeyboardModifiers modifiers = {}) {
    QWheelEvent event(place, m_window.View().mapToGlobal(place), {}, {0, notches * 120}, Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&m_window.View(), &event);
  }
  void DragMouse(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mousePress(&m_window.View(), Qt::LeftButton, modifiers, from);
    QTest::mouseMove(&m_window.View(), (from + to) / 2);
    QTest::mouseMove(&m_window.View(), to);
    QTest::mouseRelease(&m_window.View(), Qt::LeftButton, modifiers, to);
  }
  void Drop(const QMimeData& data, QPoint place) {
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&m_window.View(), &enter);
    QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&m_window.View(), &drop);
  }
  std::string Range() {  // in whole seconds
    const auto seconds = [](CMoment moment) {
      return std::to_string(std::llround(static_cast<double>(moment) / 1000));
    };
    return seconds(State().Range().from) + "-" + seconds(State().Range().to);
  }
  std::string Row(int row) {
    auto* table = Find<QTableWidget>(&m_window, "Cursors");
    std::string text;
    for (int column = 0; column < table->columnCount(); ++column)
      text += table->item(row, column)->text().toStdString() + "|";
    return text;
  }
  bool HasColour(QImage image, const QColor& colour, QRect part) {
    image = image.convertToFormat(QImage::Format_RGB32);
    for (int y = part.top(); y <= part.bottom(); ++y)
      for (int x = part.left(); x <= part.right(); ++x)
        if (image.pixelColor(x, y) == colour) return true;
    return false;
  }

  CTestPrompter m_boxes;
  CTestChooser m_chooser;
  CChartWindow m_window;
};

TEST_F(ChartWindow, AFolderBecomesAPicture) {
  Open();
  EXPECT_EQ(Range(), "-20-1019") << "the whole range";
  m_window.View().setFocus();
  const QImage image = m_window.View().grab().toImage();
  const CChartFrame frame = m_window.View().Frame();
  const QColor temp = QColor::fromRgb(0x1c6dd0), flow = QColor::fromRgb(0xd4600a);
  const auto column = [&](CMoment from, CMoment to) {
    return QRect(QPoint(PlaceOf(from).x(), static_cast<int>(frame.plot.top)),
                 QPoint(PlaceOf(to).x(), static_cast<int>(frame.plot.Bottom()) - 6));
  };
  EXPECT_TRUE(HasColour(image, temp, column(100'000, 300'000)));
  EXPECT_TRUE(HasColour(image, flow, column(100'000, 300'000)));
  EXPECT_FALSE(HasColour(image, temp, column(710'000, 790'000))) << "a line crosses the gap";
  EXPECT_FALSE(HasColour(image, flow, column(410'000, 490'000))) << "a node that is away has values";
  const QRect lane(QPoint(PlaceOf(410'000).x(), static_cast<int>(frame.plot.Bottom()) - 2),
                   QPoint(PlaceOf(490'000).x(), static_cast<int>(frame.plot.Bottom()) - 2));
  EXPECT_TRUE(HasColour(image, flow, lane)) << "nothing marks the node that is away";
  auto* list = Find<QTreeWidget>(&m_window, "Variables");
  QTest::keyClicks(Find<QLineEdit>(&m_window, "Search"), "LO");
  EXPECT_TRUE(list->topLevelItem(0)->isHidden());
  EXPECT_FALSE(list->topLevelItem(1)->isHidden());
  m_window.SetGroups({{"Kiln", {"Temp", "Flow"}}});
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Down}) {
    list->clearSelection();
    Find<QLineEdit>(&m_window, "Search")->setFocus();
    QTest::keyClick(Find<QLineEdit>(&m_window, "Search"), key);
    ASSERT_TRUE(list->currentItem()) << key;
    EXPECT_EQ(list->currentItem()->text(0), "Flow") << "the node cannot be shown";
    EXPECT_TRUE(list->currentItem()->isSelected()) << key;
  }
}

TEST_F(ChartWindow, TheMouseMovesTheChart) {
  Open();
  Turn(PlaceOf(250'000), 1);
  const std::string zoomed = Range();
  EXPECT_EQ(zoomed, "34-865") << "the moment under the pointer does not stay";
  DragMouse(PlaceOf(300'000), PlaceOf(200'000));
  const std::string dragged = Range();
  EXPECT_NEAR(static_cast<double>(State().Range().from), 134'000, 2000);
  DragMouse(PlaceOf(300'000, 0.25), PlaceOf(500'000, 0.75), Qt::ShiftModifier);
  EXPECT_NEAR(static_cast<double>(State().Range().from), 300'000, 2000);
  EXPECT_NEAR(static_cast<double>(State().Range().to), 500'000, 2000);
  const CAxisRange values = State().Layout().axes[0].range;
  EXPECT_NEAR(values.Span(), 500, 15) << "the rectangle does not choose values";
  Turn(PlaceOf(400'000, 0), 1, Qt::ControlModifier);
  EXPECT_NEAR(State().Layout().axes[0].range.Span(), 400, 15);
  EXPECT_NEAR(State().Layout().axes[0].range.low, values.low, 5);
  const CChartBox axis = m_window.View().Frame().axes[0];
  const QPoint onAxis(static_cast<int>(axis.left + 5), static_cast<int>(axis.top + 50));
  DragMouse(onAxis, onAxis + QPoint(0, static_cast<int>(axis.height / 4)));
  EXPECT_NEAR(State().Layout().axes[0].range.low, values.low + 100, 10) << "an axis is dragged";
  Key(Qt::Key_Left, Qt::AltModifier);
  Key(Qt::Key_Backspace);
  Key(Qt::Key_Backspace);
  EXPECT_EQ(Range(), dragged);
  EXPECT_TRUE(State().Layout().axes[0].isAutomatic);
  Key(Qt::Key_Backspace);
  EXPECT_EQ(Range(), zoomed) << "a drag is one step back";
}

TEST_F(ChartWindow, ThePointerStaysWhereTheMouseIs) {
  Open();
  const QPoint place = PlaceOf(250'000);
  QTest::mouseMove(&m_window.View(), place);
  ASSERT_TRUE(m_window.View().Pointed());
  EXPECT_NEAR(static_cast<double>(*m_window.View().Pointed()), 250'000, 2000);
  Key(Qt::Key_PageDown);  // the rows move, not the mouse
  ASSERT_TRUE(m_window.View().Pointed());
  EXPECT_EQ(m_window.View().Pointed(), m_window.View().Scale(0).MomentAt(place.x()));
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&m_window.View(), &leave);
  EXPECT_FALSE(m_window.View().Pointed());
}

TEST_F(ChartWindow, KeysDoAllThatTheMouseDoes) {
  Open();
  WaitForPicture();
  const struct {
    Qt::Key key;
    Qt::KeyboardModifier modifier;
    const char* range;
  } kKeys[] = {{Qt::Key_Plus, Qt::NoModifier, "136-863"},    {Qt::Key_Right, Qt::NoModifier, "209-936"},
               {Qt::Key_PageUp, Qt::NoModifier, "-446-281"}, {Qt::Key_Backspace, Qt::NoModifier, "-20-1019"},
               {Qt::Key_Right, Qt::AltModifier, "-446-281"}, {Qt::Key_Minus, Qt::NoModifier, "-602-437"},
               {Qt::Key_Home, Qt::NoModifier, "-20-1019"},   {Qt::Key_F, Qt::NoModifier, "-19-1020"},
               {Qt::Key_Plus, Qt::NoModifier, "286-1014"}};
  for (const auto& row : kKeys) {
    Key(row.key, row.modifier);
    EXPECT_EQ(Range(), row.range) << row.key;
  }
  EXPECT_TRUE(ActionOf("Follow")->isChecked());
  Key(Qt::Key_Home);
  Key(Qt::Key_N);
  EXPECT_EQ(State().Selected(), 0U);
  Key(Qt::Key_Z);
  EXPECT_TRUE(ActionOf("Zoom Rectangle")->isChecked());
  Key(Qt::Key_Escape);
  EXPECT_FALSE(ActionOf("Zoom Rectangle")->isChecked());
  EXPECT_EQ(State().Selected(), 0U) << "the key that ends the rectangle ends the selection";
  Key(Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_FALSE(State().Layout().axes[0].isAutomatic);
  Key(Qt::Key_V);
  EXPECT_TRUE(State().Layout().axes[0].isAutomatic);
  Key(Qt::Key_W);
  EXPECT_EQ(State().Layout().axes.size(), 2U) << "an axis of its own";
  Key(Qt::Key_H);
  EXPECT_TRUE(State().Layout().curves[0].isHidden);
  Key(Qt::Key_Delete);
  EXPECT_EQ(State().Variables(), std::vector<CString>{"Flow"});
  Key(Qt::Key_U);
  EXPECT_FALSE(State().Layout().isUtc);
}

TEST_F(ChartWindow, CursorsHaveExactFigures) {
  Open();
  Key(Qt::Key_C);
  ASSERT_TRUE(Find<QTableWidget>(&m_window, "Cursors")->isVisible());
  DragMouse(PlaceOf(State().CursorAt(0)), PlaceOf(100'000));
  QTest::mouseClick(&m_window.View(), Qt::LeftButton, Qt::ShiftModifier, PlaceOf(600'000));
  const auto a = static_cast<double>(State().CursorAt(0)), b = static_cast<double>(State().CursorAt(1));
  EXPECT_NEAR(a, 100'000, 2000);
  EXPECT_NEAR(b, 600'000, 2000);
  const double first = std::floor(a / 1000), last = std::floor(b / 1000), from = std::ceil(a / 1000);
  CString row;
  row.Format("Temp|%g|%g|%g|%g|%g|%.7g|%g|", first, last, last - first, from, last, (from + last) / 2,
             last - from + 1);
  EXPECT_TRUE(Wait([&] { return Row(0) == row.Std(); })) << Row(0) << " in place of " << row.Std();
  EXPECT_TRUE(Wait([&] {
    return Row(1).find("|" + std::to_string(static_cast<int>(last - from) + 1 - 100) + "|") !=
           std::string::npos;
  })) << "values of a node that is away do not count: "
      << Row(1);
  QTest::qWait(300);  // values of the picture give way to those that were asked for
  EXPECT_EQ(Row(0), row.Std());
  auto* times = Find<QLabel>(&m_window, "Times of the cursors");
  EXPECT_TRUE(times->text().contains("B - A 8 min ")) << times->text().toStdString();
  m_window.View().setFocus();
  Key(Qt::Key_Left, Qt::ControlModifier);
  EXPECT_LT(static_cast<double>(State().CursorAt(1)), b) << "keys move the cursor that was moved last";
  Key(Qt::Key_Return);
  EXPECT_EQ(State().Range().from, State().CursorAt(0));
  auto* table = Find<QTableWidget>(&m_window, "Cursors");
  table->setFocus();
  QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
  EXPECT_TRUE(QGuiApplication::clipboard()->text().contains("Variable\tA\tB\tB - A\tMin"));
  auto* missing = Find<QLabel>(&m_window, "Missing rows");
  EXPECT_FALSE(missing->isVisible());
  std::filesystem::remove((m_dir / "logs/3.rph").Std());
  m_window.View().setFocus();
  Key(Qt::Key_Left, Qt::ControlModifier);
  EXPECT_TRUE(Wait([&] { return missing->isVisible(); }))
      << "figures without the rows of a log look complete";
  EXPECT_TRUE(missing->text().endsWith("/logs/3.rph: was removed after it was listed"))
      << missing->text().toStdString();
  table->setFocus();
  QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
  EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(missing->text()));
}

TEST_F(ChartWindow, ALayoutIsSavedAndLoaded) {
  Open();
  Key(Qt::Key_N);
  Key(Qt::Key_W);
  DragMouse(PlaceOf(300'000), PlaceOf(500'000), Qt::ShiftModifier);
  const std::string range = Range();
  m_chooser.path = m_dir / "layout.json";
  ActionOf("Save Layout...")->trigger();
  EXPECT_EQ(m_chooser.file.defaultExtension, "json");
  Key(Qt::Key_Delete, Qt::ControlModifier);
  Key(Qt::Key_Home);
  ActionOf("Load Layout...")->trigger();
  EXPECT_EQ(State().Variables(), (std::vector<CString>{"Temp", "Flow"}));
  EXPECT_NE(State().Layout().curves[0].axis, State().Layout().curves[1].axis);
  EXPECT_EQ(Range(), range);
  WriteBytes(m_dir / "layout.json", "{\"chart\": 1,\n\"curves\": [}");
  ActionOf("Load Layout...")->trigger();
  const auto boxes = m_boxes.Take();
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_NE(boxes[0].find("layout.json: line 2: "), std::string::npos) << boxes[0];
  EXPECT_EQ(State().Variables().size(), 2U) << "a bad file has changed the chart";
}

TEST(ChartLayoutFile, ABadLayoutHasOneFaultWithItsPlace) {
  const std::pair<const char*, const char*> kFaults[] = {
      {R"([])", "is not an object of JSON"},
      {R"({"curves": []})", "chart: is not 1: this is no layout of a chart, or one of a later version"},
      {R"({"chart": 1, "curves": 3})", "curves: is not a list"},
      {R"({"chart": 1, "curves": [3]})", "curves[0]: is not an object"},
      {R"({"chart": 1, "curves": [{"variable": "a", "axis": 7}]})", "curves[0].axis: there is no axis 7"},
      {R"({"chart": 1, "curves": [{"variable": "a"}, {"variable": "a"}]})",
       "curves[1].variable: \"a\" has a curve already"},
      {R"({"chart": 1, "curves": [{"variable": "a", "colour": "x"}]})",
       "curves[0].colour: \"x\" is no colour of curves"},
      {R"({"chart": 1, "axes": [{"id": 1.5}]})", "axes[0].id: is not a whole number from 0 to 1000000"},
      {R"({"chart": 1, "axes": [{"id": 1, "low": 2, "high": 1}]})", "axes[0].high: is not above low"},
      {R"({"chart": 1, "axes": [{"id": 1, "low": 2}]})", "axes[0].high: is not a number"},
      {R"({"chart": 1, "from": "yesterday", "to": "today"})",
       "from: is not a time such as \"2026-03-01T11:00:00.000Z\""},
      {R"({"chart": 1, "utc": 1})", "utc: is neither true nor false"},
  };
  for (const auto& [text, fault] : kFaults) {
    CChartLayout layout;
    AddCurve(layout, "kept");
    EXPECT_EQ(ReadLayoutText(text, layout), fault);
    EXPECT_EQ(layout.curves.size(), 1U) << text;
  }
  CChartLayout layout = {.curves = {{"a", 3, 5, true}, {"b", 1, 0, false}},
                         .axes = {{1, true, {}}, {3, false, {-1, 0.1}}},
                         .range = {-1500, 1'774'746'000'250},
                         .isFollowing = true,
                         .isUtc = true};
  CChartLayout read;
  EXPECT_EQ(ReadLayoutText(LayoutText(layout), read), "");
  EXPECT_EQ(read.curves, layout.curves);
  EXPECT_EQ(read.axes, layout.axes);
  EXPECT_EQ(read.range.from, -1500);
  EXPECT_EQ(read.range.to, layout.range.to);
  EXPECT_TRUE(read.isFollowing && read.isUtc);
}

TEST_F(ChartWindow, PicturesAndRowsAreWritten) {
  Open();
  m_window.SetUnits({{"Temp", "\u00B0C"}});
  m_chooser.path = m_dir / "chart.png";
  ActionOf("Save Picture...")->trigger();
  const QImage image(ToScreen(m_chooser.path));
  EXPECT_EQ(image.width(), 2 * m_window.View().width());
  EXPECT_TRUE(HasColour(image, QColor::fromRgb(0x1c6dd0), image.rect()));
  m_chooser.path = m_dir / "chart.svg";
  ActionOf("Save Picture...")->trigger();
  const std::string svg = ReadBytes(m_chooser.path);
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("Temp [\u00B0C]"), std::string::npos);
  ActionOf("Copy Picture")->trigger();
  EXPECT_FALSE(QGuiApplication::clipboard()->image().isNull());
  m_window.View().Change([](CChartState& state) {
    state.Show({99'500, 103'000}, CChartState::moveKeys);
    state.SetUtc(true);
  });
  m_chooser.path = m_dir / "rows.csv";
  ::setenv("TZ", "Asia/Kolkata", 1);
  ::tzset();
  ActionOf("Export CSV...")->trigger();
  const auto saysWritten = [](const QLabel* label) {
    return (label->text() + label->toolTip()).contains("rows.csv was written");
  };
  ASSERT_TRUE(Wait([&] { return std::ranges::any_of(m_window.findChildren<QLabel*>(), saysWritten); }));
  ::unsetenv("TZ");
  ::tzset();
  const std::string csv = ReadBytes(m_chooser.path);
  EXPECT_NE(csv.find("\n1970-01-01 00:01:40.000,100,50\n"), std::string::npos) << csv;
  EXPECT_EQ(std::ranges::count(csv, '\n'), 4) << csv;
  m_chooser.path = m_dir / "none/rows.csv";
  ActionOf("Export CSV...")->trigger();
  std::vector<std::string> faults;
  EXPECT_TRUE(Wait([&] { return !(faults = m_boxes.Take()).empty(); }));
  EXPECT_EQ(faults, std::vector<std::string>{"|" + m_chooser.path.Std() + ": No such file or directory|30"});
}

TEST_F(ChartWindow, VariablesAreDroppedOnThePlotOrOnAnAxis) {
  Open();
  Key(Qt::Key_Delete, Qt::ControlModifier);
  QMimeData data;
  data.setText("Temp\nFlow");
  CChartView& view = m_window.View();
  Drop(data, PlaceOf(100'000));
  WaitForPicture();
  ASSERT_EQ(State().Layout().axes.size(), 1U);
  view.Change([](CChartState& state) { state.Use(0, 0); });
  data.setText("Temp");
  const CChartBox axis = view.Frame().axes[0];
  Drop(data, QPointF(axis.left + 5, axis.top + 50).toPoint());
  EXPECT_EQ(State().Layout().curves[0].axis, State().Layout().curves[1].axis);
}

TEST_F(ChartWindow, TheRangeOfAnAxisIsSetInItsDialog) {
  Open();
  const CChartBox axis = m_window.View().Frame().axes[0];
  WhileModal(
      [&] {
        QTest::mouseDClick(&m_window.View(), Qt::LeftButton, {},
                           QPoint(static_cast<int>(axis.left + 5), static_cast<int>(axis.top + 50)));
      },
      [&](QWidget* dialog) {
        auto* low = Find<QLineEdit>(dialog, "From");
        low->clear();
        QTest::keyClicks(low, "2000");
        Click(dialog, "OK");
        EXPECT_TRUE(std::ranges::any_of(dialog->findChildren<QLabel*>(), [](const QLabel* label) {
          return label->text() == "To has to be above From";
        }));
        low->clear();
        QTest::keyClicks(low, "-5");
        Click(dialog, "OK");
      });
  EXPECT_FALSE(State().Layout().axes[0].isAutomatic);
  EXPECT_EQ(State().Layout().axes[0].range.low, -5);
}

}  // namespace
}  // namespace vastra
