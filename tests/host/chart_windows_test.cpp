// The charts of the desktop: of the logger, of an output, and of logs and folders that are opened.
#include <QTreeWidget>

#include "host/desktop/chart_windows.h"
#include "tests/host/desktop_window.h"

namespace vastra {
namespace {

std::string TitleOf(const CString& path) {
  return std::filesystem::path(path.Std()).filename().string() + " - Chart";
}
CChartWindow* ChartTitled(const char* title) { return static_cast<CChartWindow*>(TopLevel(title)); }

std::vector<std::string> Listed(CChartWindow* chart) {
  std::vector<std::string> names;
  auto* list = Find<QTreeWidget>(chart, "Variables");
  for (int i = 0; i < list->topLevelItemCount(); ++i) {
    const QTreeWidgetItem* item = list->topLevelItem(i);
    names.push_back(item->text(0).toStdString());
    for (int j = 0; j < item->childCount(); ++j) names.push_back(" " + item->child(j)->text(0).toStdString());
  }
  return names;
}

// All values of a curve, as far as steps of one row have them.
std::vector<float> ValuesOfCurve(const CChartWindow& chart, std::size_t curve) {
  std::vector<float> values;
  for (const CCurveStep& step : const_cast<CChartWindow&>(chart).View().State().StepsOf(curve)) {
    values.push_back(step.first);
    if (step.values > 1) values.push_back(step.last);
  }
  return values;
}

void Choose(const QList<QAction*>& actions, const char* caption) {
  for (QAction* action : actions)
    if (action->text().remove('&') == caption) return action->trigger();
  throw std::runtime_error(caption);
}

TEST_F(Desktop, TheChartOfTheLoggerFollowsIt) {
  {
    CTestWindow window(m_demo);
    EXPECT_FALSE(ChartTitled("Chart"));
    ActionOf(window, "Chart")->trigger();
    CChartWindow* chart = ChartTitled("Chart");
    ASSERT_TRUE(chart);
    EXPECT_TRUE(chart->View().State().Layout().isFollowing);
    window.Start();
    ASSERT_TRUE(Wait([&] {
      return Listed(chart) == std::vector<std::string>{"N", " a", " b", "Others", " c"};
    }));
    ASSERT_TRUE(Wait([&] { return ValuesOfCurve(*chart, 0).size() > 20; }));
    const CMoment before = chart->View().State().Range().to;
    ASSERT_TRUE(Wait([&] { return chart->View().State().Range().to > before + 500; })) << "it does not move";
    ASSERT_TRUE(Stops(window));
    EXPECT_TRUE(Wait([&] { return !chart->View().State().Layout().isFollowing; }));
    // The samples that were live are in a log now, each of them once.
    chart->View().Change([](CChartState& state) {
      state.Show({state.Rows().from - 10, state.Rows().from + 300}, CChartState::moveKeys);
    });
    const auto count = [&] {
      float rows = 0;
      for (const CCurveStep& step : chart->View().State().StepsOf(0)) rows += static_cast<float>(step.values);
      return rows;
    };
    ASSERT_TRUE(Wait([&] { return chart->View().State().Picture().isFinal && count() > 10; }));
    const auto steps = chart->View().State().StepsOf(0);
    EXPECT_EQ(count(), steps.back().last - steps.front().first + 1) << "rows are missing or there twice";
    window.StopAndQuit();
  }
  CTestWindow again(m_demo);
  ASSERT_TRUE(ChartTitled("Chart")) << "the chart does not come back with its configuration";
  EXPECT_EQ(ChartTitled("Chart")->View().State().Variables(), (std::vector<CString>{"a", "b", "c"}));
}

TEST_F(Desktop, TheHistoryOfAnOutputIsAChart) {
  CTestWindow window(m_demo);
  ASSERT_TRUE(Runs(window, 20));
  ASSERT_TRUE(Stops(window));
  auto* tree = Find<QTreeWidget>(&window, "Plant");
  QTreeWidgetItem* item = Part(window, "All");
  emit tree->customContextMenuRequested(tree->visualItemRect(item).center());
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_TRUE(menu);
  Choose(menu->actions(), "Show History");
  menu->close();
  CChartWindow* chart = ChartTitled("History of All - Chart");
  ASSERT_TRUE(chart);
  ASSERT_TRUE(Wait([&] { return !ValuesOfCurve(*chart, 0).empty() && !ValuesOfCurve(*chart, 1).empty(); }))
      << "the chart is empty";
  EXPECT_FALSE(chart->View().State().Layout().isFollowing);
}

TEST_F(Desktop, LogsAndFoldersThatAreDroppedAreAChart) {
  CTestWindow window(m_demo);
  ASSERT_TRUE(Runs(window, 20));
  ASSERT_TRUE(Drop(window, {UrlOf(m_dir.Path())})) << "logs are refused while the logger runs";
  const std::string title = TitleOf(m_dir.Path());
  CChartWindow* chart = ChartTitled(title.c_str());
  ASSERT_TRUE(chart) << title;
  ASSERT_TRUE(Wait([&] { return !ValuesOfCurve(*chart, 0).empty(); }))
      << "the journal of the logger is not read";
  EXPECT_EQ(chart->View().State().Variables(), (std::vector<CString>{"a", "b"}))
      << "a few variables are shown at once";
  const auto span = [&] { return chart->View().State().Range().to - chart->View().State().Range().from; };
  const CMoment before = span();
  Choose(chart->findChildren<QAction*>(), "Zoom Rectangle");
  const QPoint from = chart->View().rect().center(), to = from + QPoint(50, 30);
  QTest::mousePress(&chart->View(), Qt::LeftButton, {}, from);
  for (const QPoint& place : {(from + to) / 2, to}) QTest::mouseMove(&chart->View(), place);
  QTest::mouseRelease(&chart->View(), Qt::LeftButton, {}, to);
  EXPECT_LT(span(), before / 4) << "the rectangle does not zoom";
  chart->close();
  EXPECT_TRUE(Wait([&] { return !ChartTitled(title.c_str()); }));
  EXPECT_TRUE(window.isVisible()) << "the program has ended with a chart";
}

TEST_F(Desktop, ChartsAloneEndWithTheLastOfThem) {
  CSettings settings;
  int closed = 0;
  CChartWindows charts(settings, [&] { ++closed; });
  charts.OpenPaths({m_dir.Path()});
  charts.OpenPaths({m_dir / "demo.rph"});
  ChartTitled("demo.rph - Chart")->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(closed, 0) << "another chart is open";
  ChartTitled(TitleOf(m_dir.Path()).c_str())->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(closed, 1);
}

TEST_F(Desktop, APathIsForAChartByItsKind) {
  std::filesystem::create_directory((m_dir / "folder.json").Std());
  const std::pair<const char*, bool> kPaths[] = {
      {"a.rph", true},       {"b.RPD", true},      {".vastra-k-1.journal", true},
      {"folder.json", true}, {"demo.json", false}, {"new.vst", false},
      {"missing", false},    {"rph", false}};
  for (const auto& [path, isForChart] : kPaths) EXPECT_EQ(IsChartPath(m_dir / path), isForChart) << path;
}

}  // namespace
}  // namespace vastra
