// The table of scales and limits, worked with the mouse and the keys.
#include "vastra/screens/scaler_dlg.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QTableView>

#include "tests/support/names.h"
#include "tests/support/windows.h"

namespace vastra {
namespace {

using CUser = std::function<void(QTableView*)>;

void ClickCell(QTableView* view, int row, int col, int x = -1) {
  const QRect cell = view->visualRect(view->model()->index(row, col));
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                    x < 0 ? cell.center() : cell.topLeft() + QPoint(x, cell.height() / 2));
}

// Types into what has the focus: a cell's editor or the table.
void Type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); }
void Press(Qt::Key key) {
  QTest::keyClick(QApplication::focusWidget(), key);
  QApplication::processEvents();  // an editor closes behind its key
}

std::string Shown(const QTableView* view, int row) {
  std::string texts;
  for (int col = 0; col < view->model()->columnCount(); ++col) {
    const QModelIndex index = view->model()->index(row, col);
    const QVariant box = index.data(Qt::CheckStateRole);
    texts += (box.isValid() ? box.toInt() == Qt::Checked ? "x" : "-" : index.data().toString().toStdString());
    texts += "|";
  }
  return texts;
}

// The rows of scaler, each number to its last bit.
std::string RowsOf(const CScalerConfig& scaler) {
  CString rows;
  for (const CScalerConfigNode& row : scaler.m_nodes) {
    CString text;
    text.Format("%s:%.9g %.9g %.9g %d|", row.m_varName.Std().c_str(), static_cast<double>(row.m_scale),
                static_cast<double>(row.m_lowLimit), static_cast<double>(row.m_highLimit), row.m_clamping);
    rows += text;
  }
  return rows.Std();
}

// Runs the dialog on a, b and c and gives the rows behind it.
std::string WorkIn(const CUser& user, const char* end, int result) {
  CScalerConfig scaler;
  const struct {
    const char* name;
    float scale, low, high;
    int clamping;
  } kRows[] = {
      {"gone", 9, 9, 9, 1}, {"b", 1.23456789f, -0.00001f, 2e10f, 1}, {"b", 5, 5, 5, 0}, {"A", 7, 7, 7, 1}};
  for (const auto& [name, scale, low, high, clamping] : kRows) {
    CScalerConfigNode row;
    row.m_varName = name;
    row.m_scale = scale;
    row.m_lowLimit = low;
    row.m_highLimit = high;
    row.m_clamping = clamping;
    scaler.m_nodes.Add(row);
  }
  const CStringArray names = Names({"a", "b", "c"});
  CScalerDlg dialog;
  dialog.m_pNames = &names;
  dialog.m_pScaler = &scaler;
  WhileModal([&] { EXPECT_EQ(result, dialog.DoModal()); },
             [&](QWidget* window) {
               EXPECT_TRUE(QTest::qWaitForWindowActive(window));
               auto* view = Find<QTableView>(window, "Scaler");
               EXPECT_EQ(view, QApplication::focusWidget());
               user(view);
               EXPECT_TRUE(window->isVisible() || !end) << "the dialog has ended too early";
               if (end) Find<QAbstractButton>(window, end)->click();  // the focus stays where it is
             });
  return RowsOf(scaler);
}

const char* const kUntouched = "a:1 0 0 0|b:1.23456788 -9.99999975e-06 2e+10 1|c:1 0 0 0|";

TEST(ScalerDlg, ShowsARowForEachVariable) {
  WorkIn(
      [](QTableView* view) {
        ASSERT_EQ(3, view->model()->rowCount());
        ASSERT_EQ(5, view->model()->columnCount());
        const char* const kHeads[] = {"Variables", "Scales", "Min. Val.", "Max. Val.", "Clamp"};
        const int kWidths[] = {91, 79, 79, 79, 50};
        for (int col = 0; col < 5; ++col) {
          EXPECT_EQ(kHeads[col], view->model()->headerData(col, Qt::Horizontal).toString().toStdString());
          EXPECT_EQ(kWidths[col], view->columnWidth(col));
        }
        EXPECT_EQ(20, view->horizontalHeader()->height());
        EXPECT_EQ(8, view->font().pointSize());
        EXPECT_EQ("a|1.0000|0.0000|0.0000|-|", Shown(view, 0));
        EXPECT_EQ("b|1.2346|-0.0000|20000000000.0000|x|", Shown(view, 1));
      },
      "Cancel", IDCANCEL);
}

TEST(ScalerDlg, TakesWhatIsTypedAndClicked) {
  const struct {
    const char* what;
    CUser user;
    const char* rows;
  } kCases[] = {
      {"nothing", [](QTableView*) {}, kUntouched},
      {"cells that are only visited",
       [](QTableView* view) {
         ClickCell(view, 0, 1);
         for (int i = 0; i < 20; ++i) Press(Qt::Key_Tab);
       },
       kUntouched},
      {"no number",
       [](QTableView* view) {
         ClickCell(view, 1, 1);
         Type("abc");
         Press(Qt::Key_Return);
         EXPECT_EQ("b|0.0000|-0.0000|20000000000.0000|x|", Shown(view, 1));
       },
       "a:1 0 0 0|b:0 -9.99999975e-06 2e+10 1|c:1 0 0 0|"},
      {"a cell that is still open",
       [](QTableView* view) {
         ClickCell(view, 2, 3);
         Type("-2.5e1 m");
       },
       "a:1 0 0 0|b:1.23456788 -9.99999975e-06 2e+10 1|c:1 0 -25 0|"},
      {"a cell that is given up",
       [](QTableView* view) {
         ClickCell(view, 2, 3);
         Type("7");
         Press(Qt::Key_Escape);
       },
       kUntouched},
      {"from cell to cell by keys alone",
       [](QTableView*) {
         for (const char* text : {"2", "3.5", "4"}) {
           Press(Qt::Key_Tab);
           Type(text);
         }
         Press(Qt::Key_Tab);
         Press(Qt::Key_Space);
         Press(Qt::Key_Tab);  // the name, which takes nothing
         Type("x");
         Press(Qt::Key_Tab);
         Type("0.1");
         Press(Qt::Key_Backtab);
       },
       "a:2 3.5 4 1|b:0.100000001 -9.99999975e-06 2e+10 1|c:1 0 0 0|"},
      {"boxes",
       [](QTableView* view) {
         ClickCell(view, 1, 4, 12);
         ClickCell(view, 2, 4, 12);
         EXPECT_EQ("b|1.2346|-0.0000|20000000000.0000|-|", Shown(view, 1));
         Press(Qt::Key_Space);
         Press(Qt::Key_Space);
       },
       "a:1 0 0 0|b:1.23456788 -9.99999975e-06 2e+10 0|c:1 0 0 1|"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.rows, WorkIn(c.user, "OK", IDOK));
    EXPECT_EQ("gone:9 9 9 1|b:1.23456788 -9.99999975e-06 2e+10 1|b:5 5 5 0|A:7 7 7 1|",
              WorkIn(c.user, "Cancel", IDCANCEL));
  }
}

TEST(ScalerDlg, ReturnEndsTheCellAndThenTheDialog) {
  const CUser user = [](QTableView* view) {
    ClickCell(view, 0, 1);
    Type("8");
    Press(Qt::Key_Return);
    EXPECT_TRUE(view->isVisible());
    EXPECT_EQ(view, QApplication::focusWidget());
    Press(Qt::Key_Return);
  };
  EXPECT_EQ("a:8 0 0 0|b:1.23456788 -9.99999975e-06 2e+10 1|c:1 0 0 0|", WorkIn(user, nullptr, IDOK));
}

}  // namespace
}  // namespace vastra
