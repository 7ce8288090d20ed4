// The scan grid on real stages.
#include "tests/views/live_views.h"

namespace vastra {
namespace {

class ScanGrid : public LiveViews {
 protected:
  // The rows with text, as "name value|".
  std::string Rows() const {
    const QAbstractItemModel* model = m_view->model();
    QString all;
    for (int row = 0; row < model->rowCount(); ++row) {
      const QString text =
          model->index(row, 0).data().toString() + " " + model->index(row, 1).data().toString();
      if (text != " ") all += text + "|";
    }
    return all.toStdString();
  }

  QWidget* const m_window = OpenGrid();
  QTableView* const m_view = m_window->findChild<QTableView*>();
};

TEST_F(ScanGrid, EachRowShowsTheValueOfItsNameFromTheNextRefreshOn) {
  EXPECT_EQ(Rows(), "");
  Write({1, 2.346F, 3});
  Choose(m_window, {"c", "b"});
  EXPECT_EQ(Rows(), "c 3.00|b 2.35|");
  m_grid->ResetVarNames();
  EXPECT_EQ(Rows(), "c 0.00|b 0.00|");
  Scan({4, 5});
  EXPECT_EQ(Rows(), "c 0.00|b 5.00|") << "a sample without c";
  m_trendings.Close();
  m_grid->Refresh();
  EXPECT_EQ(Rows(), "c 0.00|b 5.00|");
}

TEST_F(ScanGrid, AFrozenGridCollectsValuesAndShowsThemAtTheNextRefresh) {
  Choose(m_window, {"a"});
  QApplication::processEvents();
  CPaints paints(m_view->viewport());
  Click(m_window, "Freeze");
  Scan({7, 0, 0});
  EXPECT_EQ(paints.Take(), 0);
  EXPECT_EQ(Rows(), "a 7.00|");
  Click(m_window, "Unfreeze");
  EXPECT_EQ(paints.Take(), 0);
  m_grid->Refresh();
  EXPECT_EQ(paints.Take(), 1);
}

TEST_F(ScanGrid, LostNamesAreRemovedAndTheOthersMoveUp) {
  const CBoxes kLost = {"Message|Some variables had to be removed from the grid.|30"};
  WriteSelection(m_dir / "x.grd", Names({"c", "lost", "a"}));
  Write({1, 2, 3});
  Load(m_window, "x.grd");
  EXPECT_EQ(m_prompter.Take(), kLost);
  EXPECT_EQ(Rows(), "c 3.00|a 1.00|");
  m_names = Names({"x", "a"});
  m_trendings.GetOptions()->m_extraVars = Names({"y"});
  m_grid->ResetVarNames();
  EXPECT_EQ(m_prompter.Take(), kLost);
  Choose(m_window, {"y", "a"});
  EXPECT_EQ(Rows(), "y 3.00|a 2.00|");
}

TEST_F(ScanGrid, ASelectionIsSavedAndLoaded) {
  Choose(m_window, {"b", "a"});
  m_chooser.path = m_dir / "s.grd";
  Click(m_window, "Save");
  const CFileQuestion& asked = m_chooser.file;
  EXPECT_EQ(asked.defaultExtension + " " + asked.name + " " + asked.filter,
            "grd Grid Grid Files (*.grd)|*.grd|All Files (*.*)|*.*||");
  EXPECT_TRUE(asked.save && asked.asksToOverwrite);
  Choose(m_window, {"c"});
  Load(m_window, "s.grd");
  EXPECT_FALSE(asked.save || asked.mustExist);
  EXPECT_EQ(Rows(), "b 0.00|a 0.00|");

  WriteBytes(m_dir / "cut", ReadBytes(m_dir / "s.grd").substr(0, 11));
  const struct {
    const char *file, *rows;
  } kFaults[] = {{"none", "b 0.00|a 0.00|"}, {"cut", "b 0.00| 0.00|"}};  // until the names are mapped again
  for (const auto& [file, rows] : kFaults) {
    Load(m_window, file);
    EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Error reading file.|30"}));
    EXPECT_EQ(Rows(), rows);
  }
  m_grid->ResetVarNames();
  EXPECT_EQ(Rows(), "b 0.00|");
  m_chooser.path = m_dir / "none/x";
  Click(m_window, "Save");
  m_chooser.path = "";
  for (const char* button : {"Save", "Load"}) Click(m_window, button);  // both cancelled
  EXPECT_EQ(m_prompter.Take(), CBoxes());
  m_chooser.path = m_dir / "s.grd";
  const CFileSizeLimit full(3);
  Click(m_window, "Save");
  EXPECT_EQ(m_prompter.Take(), CBoxes({"Message|Couldn't write file.|30"}));
}

}  // namespace
}  // namespace vastra
