// Cells that can be edited. The contents of the grids are tested with their windows.
#include "vastra/ui/grid.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTableView>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr CControl kControls[] = {{CControl::grid, "Grid", {7, 7, 200, 100}},
                                  {CControl::defaultButton, "OK", {7, 120, 50, 14}}};
constexpr CDialogTemplate kTemplate = {"", {220, 140}, kControls};

// Two rows of a name, a text and a box. The text "no" is refused.
class CTestGrid : public CGXGridWnd {
 public:
  UINT GetRowCount() const override { return 2; }
  UINT GetColCount() const override { return 2; }
  void GetStyleRowCol(UINT row, UINT col, CGXStyle& style) const override {
    style.control = col == 0 ? CGXStyle::fixed : col == 1 ? CGXStyle::edit : CGXStyle::checkBox;
    style.text = row == 0 ? CString("Head") : cells[row - 1][col];
  }
  bool OnValidateCell(UINT row, UINT col) override {
    told += "v";
    if (GetCurrentText() == "no") return false;
    cells[row - 1][col] = GetCurrentText();
    return true;
  }
  void OnClickedButtonRowCol(UINT row, UINT col) override {
    told += "c";
    cells[row - 1][col] = GetCurrentText();
  }

  CString cells[2][3] = {{"A", "one", "0"}, {"B", "two", "1"}};
  std::string told;
};

class CTestDlg : public CDialog {
 public:
  CTestDlg() : CDialog(kTemplate) {}
  void OnInitDialog() override {
    grid.SubclassDlgItem(*this, "Grid");
    grid.SetReadOnly(readOnly);
  }
  void OnOK() override {
    grid.TransferCurrentCell();
    CDialog::OnOK();
  }

  bool readOnly = false;
  CTestGrid grid;
};

struct CUser {
  explicit CUser(QWidget* window) : view(Find<QTableView>(window, "Grid")) {}
  void ClickAt(int row, int col, bool atLeft = false) {
    const QRect cell = view->visualRect(view->model()->index(row, col));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                      atLeft ? QPoint(cell.left() + 10, cell.center().y()) : cell.center());
  }
  QLineEdit* Editor() {
    for (auto* edit : view->viewport()->findChildren<QLineEdit*>())
      if (edit->isVisible()) return edit;
    return nullptr;
  }
  void Type(const char* text) {
    ASSERT_TRUE(Editor());
    Editor()->selectAll();
    QTest::keyClicks(Editor(), text);
  }
  QTableView* view;
};

TEST(GridCells, AreStoredWhenTheyAreLeft) {
  CTestDlg dialog;
  const auto user = [&](QWidget* window) {
    CUser it(window);
    it.ClickAt(0, 1);
    it.ClickAt(1, 1);
    EXPECT_EQ(dialog.grid.told, "") << "a cell that was opened but not edited";
    it.ClickAt(0, 1);
    it.Type("1.5");
    QTest::keyClick(it.Editor(), Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_TRUE(window->isVisible()) << "Return in a cell ends the dialog";
    EXPECT_EQ(dialog.grid.cells[0][1], "1.5");

    it.ClickAt(1, 1);
    it.Type("no");
    it.ClickAt(0, 0);
    EXPECT_EQ(dialog.grid.cells[1][1], "two");
    it.ClickAt(1, 1);
    it.Type("gone");
    QTest::keyClick(it.Editor(), Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible()) << "Escape in a cell ends the dialog";
    EXPECT_EQ(dialog.grid.cells[1][1], "two");

    QTest::qWait(QApplication::doubleClickInterval());
    it.ClickAt(0, 1);
    it.Type("a");
    QTest::keyClick(it.Editor(), Qt::Key_Tab);
    QCoreApplication::processEvents();
    EXPECT_EQ(dialog.grid.cells[0][1], "a");
    EXPECT_EQ(it.view->currentIndex(), it.view->model()->index(0, 2));
    it.ClickAt(1, 1);
    it.Type("last");
    Click(window, "OK");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDOK); }, user);
  EXPECT_EQ(dialog.grid.cells[1][1], "last") << "the cell that was open at OK";
  EXPECT_EQ(dialog.grid.told, "vvvv");
}

TEST(GridCells, WithBoxesAreChangedByMouseAndSpaceBar) {
  CTestDlg dialog;
  const auto user = [&](QWidget* window) {
    CUser it(window);
    it.ClickAt(0, 2, true);
    EXPECT_EQ(dialog.grid.cells[0][2], "1");
    it.ClickAt(1, 2, true);
    EXPECT_EQ(dialog.grid.cells[1][2], "0");
    it.view->setCurrentIndex(it.view->model()->index(0, 2));
    QTest::keyClick(it.view, Qt::Key_Space);
    EXPECT_EQ(dialog.grid.cells[0][2], "0");
    EXPECT_EQ(dialog.grid.told, "ccc");
  };
  WhileModal([&] { dialog.DoModal(); }, user);

  dialog.readOnly = true;
  dialog.grid.told.clear();
  const auto reader = [&](QWidget* window) {
    CUser it(window);
    it.ClickAt(0, 2, true);
    it.ClickAt(0, 1);
    EXPECT_FALSE(it.Editor());
    EXPECT_EQ(dialog.grid.told, "");
  };
  WhileModal([&] { dialog.DoModal(); }, reader);
}

}  // namespace
}  // namespace vastra
