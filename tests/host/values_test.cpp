// The window of values: its rules, its table over a live state, and the window over a simulated logger.
#include <QClipboard>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QTableView>

#include <cmath>
#include <limits>

#include "host/desktop/value_table.h"
#include "tests/host/desktop_window.h"
#include "tests/support/names.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();

TEST(ValueRules, TextsAreShortAndReadable) {
  const std::pair<float, const char*> values[] = {{0.1F, "0.1"},    {1e6F, "1000000"}, {16777216, "16777216"},
                                                  {1e20F, "1e+20"}, {-2.5F, "-2.5"},   {1e-6F, "1e-06"},
                                                  {0, "0"},         {-0.0F, "-0"},     {-kNan, "nan"},
                                                  {kInf, "inf"},    {-kInf, "-inf"},   {0.001F, "0.001"}};
  for (const auto& [value, text] : values) EXPECT_EQ(ValueText(value), text);
  const std::pair<double, const char*> ages[] = {
      {-3, "0.0 s"},          {0.49, "0.4 s"},   {9.99, "9.9 s"},       {10, "10 s"},
      {59.9, "59 s"},         {60, "1 min 0 s"}, {3599, "59 min 59 s"}, {3600, "1 h 0 min"},
      {86399, "23 h 59 min"}, {90061, "1 d 1 h"}};
  for (const auto& [age, text] : ages) EXPECT_EQ(AgeText(age), text);
}

TEST(ValueRules, NamesAreInTheOrderOfPeople) {
  const char* ordered[] = {"",     "2",  "02x",  "10",    "T",   "t",    "T1",
                           "T01a", "T2", "T2.9", "T2.10", "T10", "Tank", "\xC3\xA4"};
  for (std::size_t i = 0; i < std::size(ordered); ++i)
    for (std::size_t j = 0; j < std::size(ordered); ++j)
      EXPECT_EQ(CompareNatural(ordered[i], ordered[j]) < 0, i < j) << ordered[i] << " and " << ordered[j];
}

TEST(ValueRules, AValueIsStaleAfterThreePeriodsButNotWithinTwoSeconds) {
  const std::tuple<bool, bool, double, std::chrono::milliseconds, EStale> cases[] = {
      {true, false, 1.9, 10ms, EStale::no},  {true, false, 2.1, 10ms, EStale::old},
      {true, false, 14, 5000ms, EStale::no}, {true, false, 15.1, 5000ms, EStale::old},
      {true, true, 0, 10ms, EStale::away},   {false, true, 0, 10ms, EStale::stopped}};
  for (const auto& [isRunning, isAway, age, period, stale] : cases)
    EXPECT_EQ(StalenessOf(isRunning, isAway, age, period), stale) << age;
}

// A table over the nodes K (a, b, 0 or 1 in up) and L (a second a), and a computed variable.
struct CFedTable {
  CFedTable() {
    live->Started(names);
    statistics.Started(names);
    table.SetSource({live,
                     &statistics,
                     {},
                     {{"K", {"a10", "b"}, "up"}, {"L", {"a10"}, ""}},
                     1000ms,
                     {{"a9", {"m/s", "of the fan"}}}});
  }
  void Sample(std::initializer_list<float> values) {
    CLogSample sample;
    for (const float value : values) sample.m_values.Add(value);
    live->Sampled(sample);
    statistics.Sampled(sample);
  }
  CValueTable::EChange Look(std::chrono::milliseconds later = {}) {
    const auto change = table.Look(CValueTable::Time::clock::now() + later, {kStart});
    table.SetOrder(table.Sorted());
    return change;
  }
  std::string Row(int variable) {
    std::string row;
    for (int column = 0; column < CValueTable::columnAge; ++column)
      row += table.Text(variable, column).Std() + "|";
    return row;
  }
  std::string Sorted(int column, bool isDescending = false) {
    table.SetSort(column, isDescending);
    std::string order;
    for (const int variable : table.Sorted()) order += static_cast<char>('0' + variable);
    return order;
  }

  CStringArray names = Names({"a10", "b", "up", "a10", "a9"});
  std::shared_ptr<CLiveState> live = std::make_shared<CLiveState>();
  CValueStatistics statistics;
  CValueTable table{[](const CString& text) { return text.Std(); }};
};

TEST(ValueTable, OnlyFiniteValuesCountAndEachSampleDoes) {
  CFedTable fed;
  EXPECT_EQ(fed.Look(), CValueTable::EChange::variables);
  EXPECT_EQ(fed.Row(0), "a10|K||||||") << "without a sample there is no value";
  for (const float value : {1.F, kNan, 4.F, kInf, -kInf}) fed.Sample({value, value, 1, -value, 16777216});
  EXPECT_EQ(fed.Look(), CValueTable::EChange::texts);
  EXPECT_EQ(fed.Row(0), "a10|K|-inf||1|4|2.5|");
  EXPECT_EQ(fed.Row(3), "a10|L|inf||-4|-1|-2.5|") << "equal names are of the nodes in their order";
  EXPECT_EQ(fed.Row(4), "a9||16777216|m/s|16777216|16777216|16777216|");
  EXPECT_EQ(fed.table.Hint(4).Std().rfind("a9: of the fan\n", 0), 0u);
  EXPECT_EQ(fed.Look(), CValueTable::EChange::none);
  EXPECT_NE(std::string(fed.table.Hint(0)).find(" of 2 values since "), std::string::npos);
  fed.live->Renamed(Names({"b", "new"}));
  fed.statistics.Renamed(Names({"b", "new"}));
  fed.Look();
  fed.Sample({7, 8});
  fed.Look();
  EXPECT_EQ(fed.Row(0), "b|K|7||1|7|4|");
  EXPECT_EQ(fed.Row(1), "new||8||8|8|8|");
  fed.table.Reset();
  EXPECT_EQ(fed.Look(), CValueTable::EChange::texts);
  EXPECT_EQ(fed.Row(0), "b|K|7|||||");
}

TEST(ValueTable, WhatIsNotANumberIsLastInBothDirections) {
  CFedTable fed;
  fed.Sample({3, kNan, kInf, -3, -kInf});
  fed.Look();
  EXPECT_EQ(fed.Sorted(CValueTable::kUnsorted), "01234");
  EXPECT_EQ(fed.Sorted(CValueTable::columnName), "40312");
  EXPECT_EQ(fed.Sorted(CValueTable::columnNode, true), "30124") << "equal nodes are in the order of names";
  EXPECT_EQ(fed.Sorted(CValueTable::columnValue), "43021");
  EXPECT_EQ(fed.Sorted(CValueTable::columnValue, true), "20341");
  EXPECT_EQ(fed.Sorted(CValueTable::columnMin, true), "03412");
  const char* const searches[][2] = {{"", "20341"}, {" 10 a ", "03"}, {"L", "3"}, {"b up", ""}, {"K b", "1"}};
  for (const auto& [words, found] : searches) {
    fed.table.SetSearch(words);
    EXPECT_EQ(fed.Sorted(CValueTable::columnValue, true), found) << words;
  }
}

TEST(ValueTable, AValueOfANodeThatIsAwayIsOldThoughSamplesCome) {
  CFedTable fed;
  fed.live->SetNodes({{"K", false, {kStart - 65}, "no answer", {}}, {"L", true, {kStart - 65}, "", {}}}, {});
  fed.Sample({1, 2, 0, 4, 5});
  fed.Look(100ms);
  const char* ages[] = {"away, 1 min 5 s", "away, 1 min 5 s", "0.1 s", "0.1 s", "0.1 s"};
  for (int i = 0; i < fed.table.Variables(); ++i)
    EXPECT_EQ(fed.table.Text(i, CValueTable::columnAge), ages[i]) << i;
  EXPECT_NE(std::string(fed.table.Hint(1)).find("K is away since "), std::string::npos);
  EXPECT_EQ(fed.Sorted(CValueTable::columnAge), "43201") << "its own age, and equal ages by name";
  fed.Look(4000ms);
  EXPECT_EQ(fed.table.Text(2, CValueTable::columnAge).Left(9), "stale, 4.");
  fed.statistics.Stopped();
  fed.Look();
  EXPECT_TRUE(fed.table.IsStale(2));
  EXPECT_EQ(fed.table.Text(0, CValueTable::columnAge).Left(9), "stopped, ");
}

// The window of values of a main window.
struct CShownValues {
  explicit CShownValues(QAction* action) {
    action->trigger();
    window = TopLevel("Values");
    view = Find<QTableView>(window, "Values");
  }
  std::string Cell(int row, int column) const {
    return view->model()->index(row, column).data().toString().toStdString();
  }
  double Number(int row, int column) const { return std::atof(Cell(row, column).c_str()); }
  std::string Names() const {
    std::string names;
    for (int row = 0; row < view->model()->rowCount(); ++row) names += Cell(row, CValueTable::columnName);
    return names;
  }
  void ClickHeader(int column) const {
    const QHeaderView* header = view->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      {header->sectionViewportPosition(column) + 20, header->height() / 2});
  }
  void Search(const char* words) const {
    QTest::keyClick(Find<QLineEdit>(window, "Search"), Qt::Key_Escape);  // empties it
    QTest::keyClicks(Find<QLineEdit>(window, "Search"), words);
  }

  QWidget* window;
  QTableView* view;
};

TEST_F(Desktop, TheValuesFollowTheLogger) {
  {
    CTestWindow window(m_demo);
    const CShownValues values(ActionOf(window, "Values"));
    EXPECT_EQ(values.Names(), "abc");
    EXPECT_EQ(values.Cell(0, CValueTable::columnValue), "") << "before the first sample";
    window.Start();
    ASSERT_TRUE(Wait([&] { return values.Number(0, CValueTable::columnValue) > 20; }));
    EXPECT_EQ(values.Cell(0, CValueTable::columnNode) + values.Cell(2, CValueTable::columnNode), "N");
    EXPECT_EQ(values.Number(0, CValueTable::columnMin), 1);
    EXPECT_EQ(values.Number(2, CValueTable::columnMax), 2 * values.Number(0, CValueTable::columnValue));
    Click(values.window, "&Reset");
    ASSERT_TRUE(Wait([&] { return values.Number(0, CValueTable::columnMin) > 20; }));
    window.Trendings().GetOptions()->m_extraVars.Add("d");
    window.Trendings().OptionsChanged();
    ASSERT_TRUE(Wait([&] { return values.Cell(3, CValueTable::columnValue) == "0"; }));
    values.ClickHeader(CValueTable::columnValue);
    values.ClickHeader(CValueTable::columnValue);
    EXPECT_EQ(values.Names(), "cabd") << "the largest value is first, and equal ones by name";
    QTest::keyClick(values.view, Qt::Key_A, Qt::ControlModifier);
    const std::unique_ptr<QMimeData> dragged(
        values.view->model()->mimeData(values.view->selectionModel()->selectedIndexes()));
    EXPECT_EQ(dragged->text(), "c\na\nb\nd");

    ASSERT_TRUE(Stops(window));
    ASSERT_TRUE(Wait([&] { return values.Cell(0, CValueTable::columnAge).starts_with("stopped, "); }));
    EXPECT_GT(values.Number(0, CValueTable::columnValue), 40) << "the values are lost";
    EXPECT_TRUE(values.view->model()->index(0, 0).data(Qt::FontRole).value<QFont>().italic());
    values.Search("N B");
    EXPECT_EQ(values.Names(), "b");
    QTest::keyClick(values.view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(values.view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QGuiApplication::clipboard()->text().startsWith("b\tN\t"));
    EXPECT_EQ(QGuiApplication::clipboard()->text().count('\t'), CValueTable::columns - 1);
    EXPECT_TRUE(Says(*values.window, "1 of 4 variables"));
  }
  CTestWindow window(m_demo);
  const CShownValues again(ActionOf(window, "Values"));
  EXPECT_EQ(again.Names(), "b") << "the search is not remembered";
  again.Search("");
  EXPECT_EQ(again.view->horizontalHeader()->sortIndicatorSection(),
            static_cast<int>(CValueTable::columnValue));
}

TEST_F(Desktop, TenThousandValuesAreShownARowAtATime) {
  std::string names = "\"v0\"";
  for (int i = 1; i < 10000; ++i) names += ",\"v" + std::to_string(i) + '"';
  WriteBytes(m_demo, R"({"input": {"scanPeriod": 20, "plcNodes": [{"nodeName": "N", "driver":
{"plcType": 9001, "text1": "noise"}, "varNames": [)" +
                         names + "]}]}}");
  CTestWindow window(m_demo);
  const CShownValues values(ActionOf(window, "Values"));
  window.Start();
  ASSERT_TRUE(Wait([&] { return !values.Cell(0, CValueTable::columnMean).empty(); }));
  EXPECT_EQ(values.Cell(9999, CValueTable::columnName), "v9999");
  values.view->selectRow(4711);
  std::set<int> rows;
  std::map<int, int> cells;  // that were announced alone, by their columns
  QObject::connect(values.view->model(), &QAbstractItemModel::dataChanged,
                   [&](const QModelIndex& first, const QModelIndex& last) {
                     for (int row = first.row(); row <= last.row(); ++row) rows.insert(row);
                     if (first == last) ++cells[first.column()];
                   });
  values.ClickHeader(CValueTable::columnValue);
  ASSERT_TRUE(Wait([&] { return cells[CValueTable::columnValue] > 150; }));
  EXPECT_LT(rows.size(), 100U) << "rows that nobody sees are formatted";
  EXPECT_LT(cells[CValueTable::columnMin], cells[CValueTable::columnValue]) << "cells are drawn that stay";
  const QModelIndexList selected = values.view->selectionModel()->selectedRows();
  ASSERT_EQ(selected.size(), 1);
  EXPECT_EQ(selected[0].data().toString(), "v4711") << "the selection does not move with its variable";
  values.view->scrollToBottom();
  EXPECT_GT(values.view->rowAt(0), 9900);
}

}  // namespace
}  // namespace vastra
