// The table of scales and limits, edited with mouse and keys.
#include "vastra/screens/scaler_dlg.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QTableView>

#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

using CTableUser = std::function<void(QTableView*)>;

void ClickCell(QTableView* view, int row, int col, int x = -1) {
  const QRect cell = view->visualRect(view->model()->index(row, col));
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                    x < 0 ? cell.center() : cell.topLeft() + QPoint(x, cell.height() / 2));
}

// Types into the widget with the focus: the editor of a cell, or the table.
void Type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); }
void Press(Qt::Key key) {
  QTest::keyClick(QApplication::focusWidget(), key);
  QApplication::processEvents();  // the editor closes after its key
}

std::string Row(const QTableView* view, int row) {
  std::string texts;
  for (int col = 0; col < view->model()->columnCount(); ++col) {
    const QModelIndex index = view->model()->index(row, col);
    const QVariant box = index.data(Qt::CheckStateRole);
    texts += (box.isValid() ? box.toInt() == Qt::Checked ? "x" : "-" : index.data().toString().toStdString());
    texts += "|";
  }
  return texts;
}

CScalerConfigNode Scaled(const char* name, float scale, float low, float high, int clamping) {
  CScalerConfigNode row;
  row.m_varName = name;
  row.m_scale = scale;
  row.m_lowLimit = low;
  row.m_highLimit = high;
  row.m_clamping = clamping;
  return row;
}

// Runs the dialog on the variables a, b and c and returns the changed rows by "scale low high clamping".
std::string WorkIn(const CTableUser& user, const char* end, int result) {
  CScalerConfig scaler;
  scaler.m_nodes.Add(Scaled("gone", 9, 9, 9, 1));
  scaler.m_nodes.Add(Scaled("b", 1.23456789f, -0.5f, 2e10f, 1));
  const CStringArray names = Names({"a", "b", "c"});
  CScalerDlg dialog;
  dialog.m_pNames = &names;
  dialog.m_pScaler = &scaler;
  CSteps steps = {[&](QWidget* window) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    auto* view = Find<QTableView>(window, "Scaler");
    EXPECT_EQ(QApplication::focusWidget(), view);
    user(view);
    if (end) Find<QAbstractButton>(window, end)->click();  // the focus does not move
  }};
  EXPECT_EQ(CSheetUser().Run(dialog, steps), result);
  CString rows;
  for (const CScalerConfigNode& row : scaler.m_nodes) {
    CString text;
    text.Format("%s %.9g %.9g %.9g %d|", row.m_varName.Std().c_str(), static_cast<double>(row.m_scale),
                static_cast<double>(row.m_lowLimit), static_cast<double>(row.m_highLimit), row.m_clamping);
    rows += text;
  }
  return rows.Std();
}

const char* const kUntouched = "a 1 0 0 0|b 1.23456788 -0.5 2e+10 1|c 1 0 0 0|";

TEST(ScalerDlg, ShowsARowForEachVariableAndCancelChangesNothing) {
  const auto look = [](QTableView* view) {
    std::string heads;
    for (int col = 0; col < view->model()->columnCount(); ++col)
      heads += view->model()->headerData(col, Qt::Horizontal).toString().toStdString() + " " +
               std::to_string(view->columnWidth(col)) + "|";
    EXPECT_EQ(heads, "Variables 91|Scales 79|Min. Val. 79|Max. Val. 79|Clamp 50|");
    EXPECT_EQ(view->model()->rowCount(), 3);
    EXPECT_EQ(view->horizontalHeader()->height(), 20);
    EXPECT_EQ(view->font().pointSize(), 8);
    EXPECT_EQ(Row(view, 0), "a|1.0000|0.0000|0.0000|-|");
    EXPECT_EQ(Row(view, 1), "b|1.2346|-0.5000|20000000000.0000|x|");
    ClickCell(view, 0, 1);
    Type("8");
    Press(Qt::Key_Return);
  };
  EXPECT_EQ(WorkIn(look, "Cancel", IDCANCEL), "gone 9 9 9 1|b 1.23456788 -0.5 2e+10 1|");
}

TEST(ScalerDlg, OkWritesWhatIsTypedAndClicked) {
  const struct {
    const char* what;
    CTableUser user;
    const char* rows;
  } kCases[] = {
      {"cells are only visited",
       [](QTableView* view) {
         ClickCell(view, 0, 1);
         for (int i = 0; i < 20; ++i) Press(Qt::Key_Tab);
       },
       kUntouched},
      {"not a number",
       [](QTableView* view) {
         ClickCell(view, 1, 1);
         Type("abc");
         Press(Qt::Key_Return);
       },
       "a 1 0 0 0|b 0 -0.5 2e+10 1|c 1 0 0 0|"},
      {"the cell is still open",
       [](QTableView* view) {
         ClickCell(view, 2, 3);
         Type("-2.5e1 m");
       },
       "a 1 0 0 0|b 1.23456788 -0.5 2e+10 1|c 1 0 -25 0|"},
      {"the cell is cancelled",
       [](QTableView* view) {
         ClickCell(view, 2, 3);
         Type("7");
         Press(Qt::Key_Escape);
       },
       kUntouched},
      {"keys alone; the name cannot be edited",
       [](QTableView*) {
         for (const char* text : {"2", "3.5", "4", " ", "x", "0.1"}) {
           Press(Qt::Key_Tab);
           *text == ' ' ? Press(Qt::Key_Space) : Type(text);
         }
         Press(Qt::Key_Backtab);
       },
       "a 2 3.5 4 1|b 0.100000001 -0.5 2e+10 1|c 1 0 0 0|"},
      {"boxes",
       [](QTableView* view) {
         ClickCell(view, 1, 4, 12);
         ClickCell(view, 2, 4, 12);
         Press(Qt::Key_Space);
         Press(Qt::Key_Space);
       },
       "a 1 0 0 0|b 1.23456788 -0.5 2e+10 0|c 1 0 0 1|"},
  };
  for (const auto& c : kCases) EXPECT_EQ(WorkIn(c.user, "OK", IDOK), c.rows) << c.what;
  const CTableUser user = [](QTableView* view) {
    ClickCell(view, 0, 1);
    Type("8");
    Press(Qt::Key_Return);
    EXPECT_TRUE(view->isVisible());
    Press(Qt::Key_Return);
  };
  EXPECT_EQ(WorkIn(user, nullptr, IDOK), "a 8 0 0 0|b 1.23456788 -0.5 2e+10 1|c 1 0 0 0|")
      << "Return ends both";
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
  EXPECT_EQ(view->model()->headerData(0, Qt::Horizontal).toString(), "Variables");
  EXPECT_EQ(view->model()->headerData(1, Qt::Horizontal).toString(), "Values");
  EXPECT_EQ(Row(view, 0) + Row(view, 1) + Row(view, 2) + Row(view, 3), "a|1.00|\u00E9|-123456.79||0.00|||");
  EXPECT_EQ(view->columnWidth(0), 100);
  EXPECT_EQ(view->columnWidth(1), 85);
  EXPECT_FALSE(view->model()->flags(view->model()->index(0, 1)) & Qt::ItemIsEditable);
  names.RemoveAll();
  values.SetSize(1);
  EXPECT_EQ(Row(view, 0) + Row(view, 1), "|1.00|||") << "the grid shows a copy";
}

}  // namespace
}  // namespace vastra
