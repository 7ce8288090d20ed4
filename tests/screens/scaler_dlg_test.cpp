// The table of scales and limits, edited with mouse and keys.
#include "vastra/screens/scaler_dlg.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QTableView>

#include <map>
#include <sstream>

#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

// Clicks into a cell, near its left edge, where a box is.
void ClickCell(QTableView* view, int row, int col) {
  const QRect cell = view->visualRect(view->model()->index(row, col));
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.topLeft() + QPoint(12, cell.height() / 2));
}

// Types into the widget with the focus: the editor of a cell, or the table. "<" is the key that goes back.
void Type(const std::string& keys) {
  const std::map<char, Qt::Key> kKeys = {{'\t', Qt::Key_Tab}, {'<', Qt::Key_Backtab}, {'\r', Qt::Key_Return}};
  for (const char key : keys) {
    if (kKeys.contains(key))
      QTest::keyClick(QApplication::focusWidget(), kKeys.at(key));
    else
      QTest::keyClick(QApplication::focusWidget(), key);
    QApplication::processEvents();  // the editor closes after its key
  }
}

// The columns, "head width|" each.
std::string Columns(const QTableView* view) {
  std::string texts;
  for (int col = 0; col < view->model()->columnCount(); ++col)
    texts += view->model()->headerData(col, Qt::Horizontal).toString().toStdString() + " " +
             std::to_string(view->columnWidth(col)) + "|";
  return texts;
}

// The first rows, "text|" for each cell; "x" or "-" for a box.
std::string Rows(const QTableView* view, int rows) {
  std::string texts;
  for (int cell = 0, columns = view->model()->columnCount(); cell < rows * columns; ++cell) {
    const QModelIndex index = view->model()->index(cell / columns, cell % columns);
    const QVariant box = index.data(Qt::CheckStateRole);
    texts +=
        (box.isValid() ? box.toInt() == Qt::Checked ? "x" : "-" : index.data().toString().toStdString()) +
        "|";
  }
  return texts;
}

using CTableUser = std::function<void(QTableView*)>;

// Runs the dialog on the variables a, b and c and returns the rows, "name scale low high clamping|" each.
std::string WorkIn(const CTableUser& user, const char* end) {
  auto scaler = Configured<CScalerConfig>(R"({"scaler": [{"varName": "b", "scale": 1.23456789,
    "lowLimit": -0.5, "highLimit": 2e10, "clamping": 1}, {"varName": "b"}]})");
  const CStringArray names = Names({"a", "b", "c"});
  CScalerDlg dialog;
  dialog.m_pNames = &names;
  dialog.m_pScaler = &scaler;
  CSheetUser().Run(dialog, {[&](QWidget* window) {
                     EXPECT_TRUE(QTest::qWaitForWindowActive(window));
                     auto* view = Find<QTableView>(window, "Scaler");
                     EXPECT_EQ(QApplication::focusWidget(), view);
                     user(view);
                     if (*end) Find<QAbstractButton>(window, end)->click();  // the focus does not move
                   }});
  std::ostringstream rows;
  rows.precision(9);
  for (const CScalerConfigNode& row : scaler.m_nodes)
    rows << row.m_varName.Std() << " " << row.m_scale << " " << row.m_lowLimit << " " << row.m_highLimit
         << " " << row.m_clamping << "|";
  return rows.str();
}

const std::string kB = "b 1.23456788 -0.5 2e+10 1|";

TEST(ScalerDlg, ShowsARowForEachVariableAndCancelChangesNothing) {
  const auto look = [](QTableView* view) {
    EXPECT_EQ(Columns(view), "Variables 91|Scales 79|Min. Val. 79|Max. Val. 79|Clamp 50|");
    EXPECT_EQ(view->model()->rowCount(), 3);
    EXPECT_EQ(view->horizontalHeader()->height(), 20);
    EXPECT_EQ(view->font().pointSize(), 8);
    EXPECT_EQ(Rows(view, 2), "a|1.0000|0.0000|0.0000|-|b|1.2346|-0.5000|20000000000.0000|x|");
    ClickCell(view, 0, 1);
    Type("8\r");
  };
  EXPECT_EQ(WorkIn(look, "Cancel"), kB + "b 1 0 0 0|");
}

TEST(ScalerDlg, OkWritesWhatIsTypedAndClicked) {
  const struct {
    const char* what;
    std::vector<std::pair<int, int>> clicked;
    std::string keys, rows;
    const char* end = "OK";
  } kCases[] = {
      {"visited cells", {{0, 1}}, std::string(20, '\t'), "a 1 0 0 0|" + kB + "c 1 0 0 0|"},
      {"not a number", {{1, 1}}, "abc\r", "a 1 0 0 0|b 0 -0.5 2e+10 1|c 1 0 0 0|"},
      {"an open cell", {{2, 3}}, "-2.5e1 m", "a 1 0 0 0|" + kB + "c 1 0 -25 0|"},
      {"keys alone", {}, "\t2\t3.5\t4\t \tx\t0.1<", "a 2 3.5 4 1|b 0.100000001 -0.5 2e+10 1|c 1 0 0 0|"},
      {"boxes", {{1, 4}, {2, 4}}, "  ", "a 1 0 0 0|b 1.23456788 -0.5 2e+10 0|c 1 0 0 1|"},
      {"Return for the cell and the dialog", {{0, 1}}, "8\r\r", "a 8 0 0 0|" + kB + "c 1 0 0 0|", ""},
  };
  for (const auto& c : kCases) {
    const auto user = [&](QTableView* view) {
      for (const auto& [row, col] : c.clicked) ClickCell(view, row, col);
      Type(c.keys);
    };
    EXPECT_EQ(WorkIn(user, c.end), c.rows) << c.what;
  }
}

constexpr CControl kControls[] = {{CControl::grid, "Grid", {7, 7, 124, 313}}};
constexpr CDialogTemplate kTemplate = {"", {140, 330}, kControls};

TEST(Grid, ShowsTheArraysOfItsOwnerInThirtyRows) {
  CGridWnd grid;
  CDialog dialog(kTemplate);
  EXPECT_EQ(grid.GetRowCount(), 0u);
  ASSERT_EQ(dialog.Create(), 1);
  grid.SubclassDlgItem(dialog, "Grid");
  CStringArray names = Names({"a", "\xE9"});
  CArray<float, float> values;
  for (const float value : {1.005f, -123456.789f, 0.0f}) values.Add(value);
  grid.InitGrid(&names, &values);

  auto* view = Find<QTableView>(dialog.Widget(), "Grid");
  EXPECT_EQ(view->model()->rowCount(), 30);
  EXPECT_EQ(Columns(view), "Variables 100|Values 85|");
  EXPECT_EQ(Rows(view, 4), "a|1.00|\u00E9|-123456.79||0.00|||");
  EXPECT_FALSE(view->model()->flags(view->model()->index(0, 1)) & Qt::ItemIsEditable);
  names.RemoveAll();
  values.SetSize(1);
  EXPECT_EQ(Rows(view, 2), "|1.00|||") << "the grid shows a copy";
}

}  // namespace
}  // namespace vastra
