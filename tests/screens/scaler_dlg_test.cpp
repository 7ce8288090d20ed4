// The table of scales and limits, edited with keys and the mouse.
#include "vastra/screens/scaler_dlg.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QTableView>

#include <sstream>

#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

// The columns, "head width|" each, then the first rows, "text|" for each cell; "x" or "-" for a box.
std::string Table(const QTableView* view, int rows) {
  const QAbstractItemModel* model = view->model();
  const int columns = model->columnCount();
  std::string texts;
  for (int col = 0; col < columns; ++col)
    texts += model->headerData(col, Qt::Horizontal).toString().toStdString() + " " +
             std::to_string(view->columnWidth(col)) + "|";
  for (int cell = 0; cell < rows * columns; ++cell) {
    const QModelIndex index = model->index(cell / columns, cell % columns);
    const QVariant box = index.data(Qt::CheckStateRole);
    const char* state = box.toInt() == Qt::Checked ? "x|" : "-|";
    texts += box.isValid() ? state : index.data().toString().toStdString() + "|";
  }
  return texts;
}

// Types into the widget with the focus: the editor of a cell, or the table.
void Type(const std::string& keys) {
  for (const char key : keys) {
    QTest::keyClick(QApplication::focusWidget(), key);
    QApplication::processEvents();  // the editor closes after its key
  }
}

TEST(ScalerDlg, ShowsARowForEachVariableAndOkWritesWhatIsTyped) {
  const std::string kB = "b 1.23456788 -0.5 2e+10 1|", kC = "c 1 0 0 0|";
  const auto tabs = [](int count) { return std::string(static_cast<std::size_t>(count), '\t'); };
  const struct {
    const char* what;
    std::string keys, rows;  // "name scale low high clamping|" each
    const char* end = "OK";
    std::vector<std::pair<int, int>> clicks = {};  // on cells, before the keys
  } kCases[] = {
      {"cancelled", "\t8\r", kB + "b 1 0 0 0|", "Cancel"},
      {"visited cells", tabs(20), "a 1 0 0 0|" + kB + kC},
      {"not a number", tabs(6) + "abc\r", "a 1 0 0 0|b 0 -0.5 2e+10 1|" + kC},
      {"an open cell", tabs(13) + "-2.5e1 m", "a 1 0 0 0|" + kB + "c 1 0 -25 0|"},
      {"each column", "\t2\t3.5\t4\t \tx\t0.1\t", "a 2 3.5 4 1|b 0.100000001 -0.5 2e+10 1|" + kC},
      {"boxes", tabs(9) + " " + tabs(5) + " ", "a 1 0 0 0|b 1.23456788 -0.5 2e+10 0|c 1 0 0 1|"},
      {"the mouse", "7\t", "a 1 0 7 1|b 1.23456788 -0.5 2e+10 0|" + kC, "OK", {{0, 4}, {1, 4}, {0, 3}}},
      {"Escape for the cell alone", "\0337\033", "a 1 0 0 0|" + kB + kC, "OK", {{0, 3}}},
      {"Return for the cell and the dialog", "\t8\r\r", "a 8 0 0 0|" + kB + kC, ""},
  };
  for (const auto& c : kCases) {
    auto scaler = Configured<CScalerConfig>(R"({"scaler": [{"varName": "b", "scale": 1.23456789,
      "lowLimit": -0.5, "highLimit": 2e10, "clamping": 1}, {"varName": "b"}]})"_json);
    const CStringArray names = Names({"a", "b", "c"});
    CScalerDlg dialog;
    dialog.m_pNames = &names;
    dialog.m_pScaler = &scaler;
    const auto type = [&](QWidget* window) {
      auto* view = Find<QTableView>(window, "Scaler");
      EXPECT_EQ(QApplication::focusWidget(), view);
      EXPECT_EQ(view->horizontalHeader()->height(), 20);
      EXPECT_EQ(view->font().pointSize(), 8);
      EXPECT_EQ(view->model()->rowCount(), 3);
      EXPECT_EQ(Table(view, 2),
                "Variables 91|Scales 79|Min. Val. 79|Max. Val. 79|Clamp 50|"
                "a|1.0000|0.0000|0.0000|-|b|1.2346|-0.5000|20000000000.0000|x|");
      for (const auto& [row, col] : c.clicks) {
        const QRect cell = view->visualRect(view->model()->index(row, col));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, {cell.left() + 10, cell.center().y()});
      }
      Type(c.keys);
      if (*c.end) Find<QAbstractButton>(window, c.end)->click();  // the focus does not move
    };
    CSheetUser().Run(dialog, {type});
    std::ostringstream rows;
    rows.precision(9);
    for (const CScalerConfigNode& row : scaler.m_nodes)
      rows << row.m_varName.Std() << " " << row.m_scale << " " << row.m_lowLimit << " " << row.m_highLimit
           << " " << row.m_clamping << "|";
    EXPECT_EQ(rows.str(), c.rows) << c.what;
  }
}

}  // namespace
}  // namespace vastra
