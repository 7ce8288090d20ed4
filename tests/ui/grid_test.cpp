// Cells that can be edited. The contents of the grids are tested with their windows.
#include "vastra/ui/grid.h"

#include <QLineEdit>
#include <QTableView>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr CControl kGridControls[] = {{CControl::grid, "Grid", {7, 7, 200, 100}},
                                      {CControl::defaultButton, "OK", {7, 120, 50, 14}}};
constexpr CDialogTemplate kGridTemplate = {"", {220, 140}, kGridControls};

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

class GridCells : public testing::Test, public CDialog {
 protected:
  GridCells() : CDialog(kGridTemplate) {}
  void OnInitDialog() override {
    m_grid.SubclassDlgItem(*this, "Grid");
    m_grid.SetReadOnly(m_readOnly);
    m_view = Find<QTableView>(Widget(), "Grid");
  }
  void OnOK() override {
    m_grid.TransferCurrentCell();
    CDialog::OnOK();
  }

  void ClickAt(int row, int col, bool atLeft = false) {
    const QRect cell = m_view->visualRect(m_view->model()->index(row, col));
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {},
                      atLeft ? QPoint(cell.left() + 10, cell.center().y()) : cell.center());
  }
  QLineEdit* Editor() { return qobject_cast<QLineEdit*>(Widget()->focusWidget()); }
  // Types text into a cell, then key.
  void TypeAt(int row, const char* text, Qt::Key key = Qt::Key_unknown) {
    ClickAt(row, 1);
    Editor()->selectAll();
    QTest::keyClicks(Editor(), text);
    if (key != Qt::Key_unknown) QTest::keyClick(Editor(), key);
    QCoreApplication::processEvents();
    EXPECT_TRUE(Widget()->isVisible()) << "Return or Escape in a cell ends the dialog";
  }

  bool m_readOnly = false;
  CTestGrid m_grid;
  QTableView* m_view = nullptr;
};

TEST_F(GridCells, AreStoredWhenTheyAreLeft) {
  const auto& cells = m_grid.cells;
  const auto user = [&](QWidget* window) {
    ClickAt(0, 1);
    ClickAt(1, 1);
    EXPECT_EQ(m_grid.told, "") << "a cell that was opened but not edited";
    TypeAt(0, "1.5", Qt::Key_Return);
    EXPECT_EQ(cells[0][1], "1.5");
    TypeAt(1, "no");
    ClickAt(0, 0);
    EXPECT_EQ(cells[1][1], "two");
    TypeAt(1, "gone", Qt::Key_Escape);
    EXPECT_EQ(cells[1][1], "two");
    QTest::qWait(QApplication::doubleClickInterval());
    TypeAt(0, "a", Qt::Key_Tab);
    EXPECT_EQ(cells[0][1], "a");
    EXPECT_EQ(m_view->currentIndex(), m_view->model()->index(0, 2));
    TypeAt(1, "last");
    Click(window, "OK");
  };
  WhileModal([&] { EXPECT_EQ(DoModal(), IDOK); }, user);
  EXPECT_EQ(cells[1][1], "last") << "the cell that was open at OK";
  EXPECT_EQ(m_grid.told, "vvvv");
}

TEST_F(GridCells, WithBoxesAreChangedByMouseAndSpaceBar) {
  const auto clicks = [&] { ClickAt(0, 2, true), ClickAt(1, 2, true), ClickAt(0, 1); };
  const auto writer = [&](QWidget*) {
    clicks();
    EXPECT_TRUE(Editor());
    EXPECT_EQ(m_grid.cells[0][2] + m_grid.cells[1][2], "10");
    m_view->setCurrentIndex(m_view->model()->index(0, 2));
    QTest::keyClick(m_view, Qt::Key_Space);
    EXPECT_EQ(m_grid.cells[0][2], "0");
    EXPECT_EQ(std::exchange(m_grid.told, ""), "ccc");
  };
  WhileModal([&] { DoModal(); }, writer);
  m_readOnly = true;
  const auto reader = [&](QWidget*) {
    clicks();
    EXPECT_FALSE(Editor());
    EXPECT_EQ(m_grid.told, "");
  };
  WhileModal([&] { DoModal(); }, reader);
}

}  // namespace
}  // namespace vastra
