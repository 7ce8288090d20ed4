// Whole stories of the desktop, from the main window on, by captions, mouse and keys. They run without a
// screen and, as the test "screen", in real windows of X.
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>

#include "host/desktop/chart_windows.h"
#include "tests/history/history_fixture.h"
#include "tests/host/desktop_window.h"
#include "tests/screens/sheet_user.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

class Story : public Desktop {
 protected:
  Story() { ::setenv("HOME", m_dir.Path(), 1); }

  static CChartWindow* Chart() {
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (auto* chart = dynamic_cast<CChartWindow*>(widget); chart && chart->isVisible()) return chart;
    return nullptr;
  }
  // Double-clicks a variable in the list of the chart.
  static void Plot(CChartWindow& chart, const char* variable) {
    auto* list = Find<QTreeWidget>(&chart, "Variables");
    QList<QTreeWidgetItem*> found;
    ASSERT_TRUE(Wait([&] {
      found = list->findItems(variable, Qt::MatchExactly | Qt::MatchRecursive);
      return !found.isEmpty();
    })) << variable;
    list->scrollToItem(found.front());
    const QPoint place = list->visualItemRect(found.front()).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
    EXPECT_TRUE(std::ranges::count(chart.View().State().Variables(), CString(variable)));
  }
  static bool WaitForPicture(CChartWindow& chart) {
    return Wait([&] {
      const CChartState& state = chart.View().State();
      const CChartPicture& picture = state.Picture();
      return picture.isFinal && picture.query.variables == state.Variables() &&
             picture.query.range.from <= state.Range().from && picture.query.range.to >= state.Range().to;
    });
  }
  static CMoment SpanOf(CChartWindow& chart) {
    const CMomentRange range = chart.View().State().Range();
    return range.to - range.from;
  }
  // Of the first curve in the present range.
  static float Greatest(CChartWindow& chart) {
    float greatest = -std::numeric_limits<float>::infinity();
    for (const CCurveStep& step : chart.View().State().Picture().curves.at(0))
      if (step.values) greatest = std::max(greatest, step.greatest);
    return greatest;
  }
  static QPoint PlaceOf(CChartWindow& chart, CMoment moment, double height) {
    const CChartBox plot = chart.View().Frame().plot;
    return QPointF(chart.View().Scale(0).X(moment), plot.Bottom() - height * plot.height).toPoint();
  }
  static void Drag(QWidget& widget, QPoint from, QPoint to) {
    QTest::mousePress(&widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(&widget, (from + to) / 2);
    QTest::mouseMove(&widget, to);
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, to);
  }
};

TEST_F(Story, AFirstLoggerAndItsMovingChart) {
  CMainWindow window;
  window.show();
  CSheetUser user;
  const auto isWritten = [](QWidget* assistant) {
    EXPECT_TRUE(Find<QPlainTextEdit>(assistant, "Written")->toPlainText().contains("Kiln.json"));
  };
  user.Run(
      [&] { return ActionOf(window, "New Logger...")->trigger(), 1; },
      {"Name=Kiln / &Next >",
       [](QWidget* assistant) { Find<QTableWidget>(assistant, "Variables")->item(0, 0)->setText("Heat"); },
       "&Next >", [](QWidget* assistant) { Find<QSpinBox>(assistant, "Scan period")->setValue(20); },
       "&Next > / &Next > / &Write", isWritten, "&Finish"});
  ASSERT_TRUE(Wait([&] { return HasStatus(window, "Running"); }));
  window.activateWindow();
  ASSERT_TRUE(Wait([&] { return window.isActiveWindow(); }));
  QTest::keyClick(&window, Qt::Key_6, Qt::ControlModifier);
  CChartWindow* const chart = Chart();
  ASSERT_TRUE(chart) << "the key does not open it";
  Plot(*chart, "Heat");
  const auto steps = [&] {
    const auto& curves = chart->View().State().Picture().curves;
    return curves.empty() ? 0U : curves[0].size();
  };
  ASSERT_TRUE(Wait([&] { return steps() > 20; })) << "no live rows";
  const CMoment end = chart->View().State().Range().to;
  EXPECT_TRUE(Wait([&] { return chart->View().State().Range().to > end + 200; })) << "it does not follow";
  chart->close();
  ActionOf(window, "Stop")->trigger();
  EXPECT_TRUE(Wait([&] { return HasStatus(window, "Stopped"); }));
}

TEST_F(Story, ADeviceDiesAndComesBackInEachWindow) {
  WriteBytes(m_demo, R"({"input": {"scanPeriod": 20, "plcNodes": [
{"nodeName": "Kiln", "absent": "nan", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["a"]},
{"nodeName": "Dead", "absent": "nan", "driver": {"plcType": 9077}, "varNames": ["b", "c"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["b"], "saveRp": 1, "directory": "."}]})");
  ::setenv("FAULT", "none", 1);
  CTestWindow window(m_demo);
  window.Start();
  const auto state = [&] { return Part(window, "Dead")->text(1); };
  ASSERT_TRUE(Wait([&] { return state() == "good"; }));
  for (const Qt::Key key : {Qt::Key_4, Qt::Key_5, Qt::Key_6}) {
    window.activateWindow();
    ASSERT_TRUE(Wait([&] { return window.isActiveWindow(); }));
    QTest::keyClick(&window, key, Qt::ControlModifier);
  }
  CChartWindow* const chart = Chart();
  ASSERT_TRUE(chart && TopLevel("Values") && TopLevel("Message Log"));
  Plot(*chart, "b");
  const QAbstractItemModel* values = Find<QTableView>(TopLevel("Values"), "Values")->model();
  const QAbstractItemModel* log = Find<QTableView>(TopLevel("Message Log"), "Messages")->model();
  const auto age = [&] { return values->index(1, CValueTable::columnAge).data().toString(); };
  const auto isLogged = [&](const char* text) {
    for (int row = 0; row < log->rowCount(); ++row)
      if (log->index(row, CMessageModel::partColumn).data() == "Dead" &&
          log->index(row, CMessageModel::textColumn).data().toString().contains(text))
        return true;
    return false;
  };
  const auto isMarked = [&] {
    const CChartState& shown = chart->View().State();  // the curves: a, b, c
    return std::ranges::any_of(shown.StepsOf(1), &CCurveStep::hasInvalid) && shown.AwayOf(0).empty() &&
           !shown.AwayOf(1).empty() && shown.ValueOf(1, {}).isAway;
  };
  ASSERT_TRUE(Wait([&] { return !age().isEmpty(); }));
  EXPECT_FALSE(age().startsWith("away") || isMarked());
  ::setenv("FAULT", "words fail", 1);
  ASSERT_TRUE(Wait([&] { return state().startsWith("away since "); }));
  EXPECT_TRUE(Wait([&] { return age().startsWith("away"); }));
  EXPECT_TRUE(Wait([&] { return isLogged("It does not work."); }));
  EXPECT_TRUE(Wait(isMarked)) << "the chart does not show that the node is away";
  EXPECT_TRUE(Find<QLabel>(&window, "Problem")->isVisible());
  ::setenv("FAULT", "none", 1);
  EXPECT_TRUE(Wait([&] { return state() == "good" && !age().startsWith("away"); }));
  EXPECT_TRUE(Wait([&] { return !Find<QLabel>(&window, "Problem")->isVisible(); }));
  ActionOf(window, "Stop")->trigger();
  EXPECT_TRUE(Wait([&] { return state() == "stopped"; }));
  ::unsetenv("FAULT");
}

// Of a week of rows each minute, one row on Tuesday, 2026-03-03, at 02:17 UTC is hot.
TEST_F(Story, WhatHappenedOnTuesdayNight) {
  constexpr CMoment kDay = 86'400'000, kMinute = 60'000, kMonday = 1'772'409'600'000;
  constexpr CMoment kHot = kMonday + kDay + 2 * 60 * kMinute + 17 * kMinute;
  std::filesystem::create_directory((m_dir / "week").Std());
  for (int day = 0; day < 7; ++day) {
    std::vector<CTestRow> rows;
    for (CMoment moment = kMonday + day * kDay; moment < kMonday + (day + 1) * kDay; moment += kMinute)
      rows.push_back(
          {moment, {moment == kHot ? 990.F : 850.F + static_cast<float>(moment / kMinute % 7), 1}});
    const CString name = "week/" + CString(std::to_string(day)) + ".rph";
    WriteBytes(m_dir / name, Written(Names({"Temp", "Lid"}), StoreOf(rows)));
  }
  CTestWindow window;
  QMimeData folder;
  folder.setUrls({QUrl::fromLocalFile(ToScreen(m_dir / "week"))});
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &folder, Qt::LeftButton, {});
  QApplication::sendEvent(&window, &enter);
  ASSERT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &folder, Qt::LeftButton, {});
  QApplication::sendEvent(&window, &drop);
  CChartWindow* const chart = Chart();
  ASSERT_TRUE(chart);
  chart->resize(900, 600);
  if (chart->View().State().Variables().empty()) Plot(*chart, "Temp");
  QTest::keyClick(&chart->View(), Qt::Key_Home);
  ASSERT_TRUE(WaitForPicture(*chart));
  EXPECT_EQ(Greatest(*chart), 990) << "the peak is lost in the picture of the week";
  EXPECT_GE(SpanOf(*chart), 7 * kDay - kMinute);

  const auto action = [&](const char* text) {
    for (QAction* one : chart->findChildren<QAction*>())
      if (one->text().remove('&') == text) return one;
    throw std::runtime_error(text);
  };
  for (const CMoment around : {10 * 60 * kMinute, 10 * kMinute}) {
    action("Zoom Rectangle")->trigger();
    Drag(chart->View(), PlaceOf(*chart, kHot - around, 0.02), PlaceOf(*chart, kHot + around, 0.98));
    ASSERT_TRUE(WaitForPicture(*chart));
  }
  EXPECT_LT(SpanOf(*chart), 40 * kMinute);
  const QPointF hot = PlaceOf(*chart, kHot + kMinute / 4, 0.5);  // a pixel is some seconds
  QMouseEvent move(QEvent::MouseMove, hot, chart->View().mapToGlobal(hot), Qt::NoButton, Qt::NoButton, {});
  QApplication::sendEvent(&chart->View(), &move);
  QTest::keyClick(&chart->View(), Qt::Key_A);
  const auto* figures = Find<QTableWidget>(chart, "Cursors");
  EXPECT_TRUE(Wait([&] { return figures->rowCount() > 0 && figures->item(0, 1)->text() == "990"; }));
  window.chooser.path = m_dir / "tuesday.png";
  action("Save Picture...")->trigger();
  EXPECT_FALSE(QImage(ToScreen(window.chooser.path)).isNull());
  window.chooser.path = m_dir / "tuesday.csv";
  action("Export CSV...")->trigger();
  ASSERT_TRUE(Wait([&] { return std::filesystem::exists((m_dir / "tuesday.csv").Std()); }));
  const std::string rows = ReadBytes(m_dir / "tuesday.csv");
  EXPECT_NE(rows.find(",990"), std::string::npos) << rows;
  EXPECT_LT(std::ranges::count(rows, '\n'), 42) << "more than what can be seen";
}

}  // namespace
}  // namespace vastra
