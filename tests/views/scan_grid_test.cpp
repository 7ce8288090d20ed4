// The scan grid on real stages.
#include "tests/views/live_views.h"

namespace vastra {
namespace {

class ScanGrid : public LiveViews {
 protected:
  // The rows with text, as "name value|".
  std::string Rows() {
    const QAbstractItemModel* model = m_grid->Widget()->findChild<QTableView*>()->model();
    std::string all;
    for (int row = 0; row < model->rowCount(); ++row) {
      const std::string name = model->index(row, 0).data().toString().toStdString();
      const std::string value = model->index(row, 1).data().toString().toStdString();
      if (!(name + value).empty()) all += name + " " + value + "|";
    }
    return all;
  }
};

TEST_F(ScanGrid, EachRowShowsTheValueOfItsNameFromTheNextRefreshOn) {
  QWidget* window = OpenGrid();
  EXPECT_EQ(Rows(), "");
  Write({1, 2.346F, 3});
  Choose(window, {"c", "b"});
  EXPECT_EQ(Rows(), "c 3.00|b 2.35|");
  m_grid->ResetVarNames();
  EXPECT_EQ(Rows(), "c 0.00|b 0.00|");
  m_grid->Refresh();
  EXPECT_EQ(Rows(), "c 3.00|b 2.35|");
  Scan({4, 5});  // a sample without c
  EXPECT_EQ(Rows(), "c 3.00|b 5.00|");
  m_trendings.Close();
  m_grid->Refresh();
  EXPECT_EQ(Rows(), "c 3.00|b 5.00|");
}

TEST_F(ScanGrid, AFrozenGridCollectsValuesAndShowsThemAtTheNextRefresh) {
  QWidget* window = OpenGrid();
  Choose(window, {"a"});
  QApplication::processEvents();
  CPaints paints(window->findChild<QTableView*>()->viewport());
  Click(window, "Freeze");
  Scan({7, 0, 0});
  EXPECT_EQ(paints.Take(), 0);
  EXPECT_EQ(Rows(), "a 7.00|");
  Click(window, "Unfreeze");
  EXPECT_EQ(paints.Take(), 0);
  m_grid->Refresh();
  EXPECT_EQ(paints.Take(), 1);
  EXPECT_NO_THROW(Find<QAbstractButton>(window, "Freeze"));
}

TEST_F(ScanGrid, LostNamesAreRemovedAndTheOthersMoveUp) {
  const CBoxes kLost = {"Message|Some variables had to be removed from the grid.|30"};
  QWidget* window = OpenGrid();
  WriteSelection(m_dir / "x.grd", Names({"c", "lost", "a"}));
  Write({1, 2, 3});
  Load(window, m_dir / "x.grd");
  EXPECT_EQ(m_prompter.Take(), kLost);
  EXPECT_EQ(Rows(), "c 3.00|a 1.00|");
  m_trendings.GetOptions()->m_baseVars = Names({"x", "a"});
  m_trendings.GetOptions()->m_extraVars = Names({"y"});
  m_grid->ResetVarNames();
  EXPECT_EQ(m_prompter.Take(), kLost);
  Choose(window, {"y", "a"});
  EXPECT_EQ(Rows(), "y 3.00|a 2.00|");
  m_trendings.GetOptions()->m_baseVars.RemoveAll();
  m_trendings.GetOptions()->m_extraVars.RemoveAll();
  Click(window, "Edit");
  EXPECT_EQ(m_prompter.Take(), CBoxes({kLost[0], "Message|No variables available.|30"}));
}

TEST_F(ScanGrid, ASelectionIsSavedAndLoaded) {
  QWidget* window = OpenGrid();
  Choose(window, {"b", "a"});
  m_chooser.path = m_dir / "s.grd";
  Click(window, "Save");
  EXPECT_EQ(m_chooser.file.defaultExtension.Std() + " " + m_chooser.file.name.Std() + " " +
                m_chooser.file.filter.Std() + " " + std::to_string(m_chooser.file.save) + " " +
                std::to_string(m_chooser.file.asksToOverwrite),
            "grd Grid Grid Files (*.grd)|*.grd|All Files (*.*)|*.*|| 1 1");
  Choose(window, {"c"});
  Load(window, m_dir / "s.grd");
  EXPECT_FALSE(m_chooser.file.save || m_chooser.file.mustExist);
  EXPECT_EQ(Rows(), "b 0.00|a 0.00|");

  WriteBytes(m_dir / "cut", ReadBytes(m_dir / "s.grd").substr(0, 11));
  const struct {
    const char *file, *button, *box, *rows;
  } kFaults[] = {
      {"none", "Load", "Message|Error reading file.|30", "b 0.00|a 0.00|"},
      {"cut", "Load", "Message|Error reading file.|30", "b 0.00| 0.00|"},  // until the names are mapped again
      {"none/x", "Save", "", "b 0.00| 0.00|"},
      {"", "Load", "", "b 0.00| 0.00|"},
  };
  for (const auto& row : kFaults) {
    m_chooser.path = *row.file ? m_dir / row.file : CString();
    Click(window, row.button);
    EXPECT_EQ(m_prompter.Take(), *row.box ? CBoxes({row.box}) : CBoxes()) << row.file;
    EXPECT_EQ(Rows(), row.rows) << row.file;
  }
  m_grid->ResetVarNames();
  EXPECT_EQ(Rows(), "b 0.00|");
  m_chooser.path = m_dir / "s.grd";
  const CFileSizeLimit full(3);
  Click(window, "Save");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Couldn't write file.|30"}));
}

TEST_F(ScanGrid, AClosedGridClearsThePointerOfTheHost) {
  Click(OpenGrid(), "Cancel");
  EXPECT_EQ(m_grid, nullptr);
  m_grid = new CVarScanDlg;
  m_grid->SetInputPointers(&m_input, nullptr, &m_grid);
  EXPECT_EQ(m_grid->Create(), 0);
  EXPECT_EQ(m_grid, nullptr);
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Incorrect initialization.|30"}));
}

}  // namespace
}  // namespace vastra
