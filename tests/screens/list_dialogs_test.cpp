// The dialogs with lists of names.
#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/files.h"
#include "vastra/screens/conf_var_list_dlg.h"
#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/new_var_dlg.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/screens/var_list_dlg.h"
#include "vastra/screens/variables_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class ListDialogs : public testing::Test {
 protected:
  // The file that the user chooses from now on, with bytes; without a name the user cancels.
  CStep Choose(const char* name, const char* bytes = "") {
    return [=, this](QWidget*) {
      WriteBytes(m_dir / "list", bytes);
      m_user.chooser.path = *name ? m_dir / name : CString();
    };
  }
  CSheetUser m_user;
  CTempDir m_dir;
};

const std::string kInsert = " / Insert  New Variable / New Variable=";

TEST_F(ListDialogs, AFreeListIsEditedAndOnlyOkReturnsIt) {
  const auto isFocused = [](QWidget* w) { EXPECT_EQ(Find<QLineEdit>(w, "New Variable"), w->focusWidget()); };
  const auto press = [](QWidget* window) { QTest::keyClick(window, Qt::Key_Return); };
  const auto list = [](QWidget* window) { return Find<QListWidget>(window, "Variable List"); };
  const auto moveDown = [=](QWidget* w) { QTest::keyClick(list(w), Qt::Key_Down, Qt::ControlModifier); };
  const auto drag = [=](QWidget* w) { EXPECT_TRUE(list(w)->model()->moveRow({}, 2, {}, 0)); };
  for (const char* end : {"Cancel", "OK"}) {
    CVarListDlg dialog;
    dialog.m_list = Names({"a", "b", "c"});
    m_user.Run(dialog,
               {"Insert  New Variable", isFocused,
                "OK / !Message|The name of the variable can't be a null string|30 / New Variable= A", press,
                "Variable List?a,b,c, A," + kInsert + "x / Cancel" + kInsert +
                    "a / OK / !This variable already exists in the list / Variable List?a,b,c, A, / "
                    "Variable List#1 / Delete Variable / Delete Variable / "
                    "!You must select a variable / Variable List?a,c, A, / Variable List#0",
                moveDown, "Variable List?c,a, A,", drag, end});
    EXPECT_EQ(Joined(dialog.m_list), *end == 'O' ? " A,c,a," : "a,b,c,");
  }
}

TEST_F(ListDialogs, AListIsExportedAndImported) {
  const auto isExported = [&](QWidget*) {
    EXPECT_EQ(ReadBytes(m_user.chooser.path), "b\r\n\xC3\xA9\r\n\xE9 latin\r\na\r\n\r\n");
    const CFileQuestion& file = m_user.chooser.file;
    EXPECT_TRUE(file.save && file.asksToOverwrite && file.defaultExtension == "txt");
    EXPECT_EQ(file.filter, "Text Files (*.txt)|*.txt||");
  };
  CVarListDlg dialog;
  dialog.m_list = Names({"b", "\xC3\xA9", "\xE9 latin", "a"});
  m_user.Run(dialog, {Choose("list"), "Export ", isExported, "Delete All / Import / OK"});
  EXPECT_EQ(Joined(dialog.m_list), "b,\xC3\xA9,\xE9 latin,a,");
  EXPECT_FALSE(m_user.chooser.file.save);
  m_user.Run(dialog,
             {Choose("list", "a\r\nb\r\na"), "Import / !Invalid list, variables must not be repeated.",
              Choose("none"), "Import / !An error ocurred when trying to open the file", Choose("none/list"),
              "Export  / !An error ocurred when trying to save the file", Choose(""),
              "Import / Export  / ! / Variable List?b,\u00E9,\u00E9 latin,a,",
              Choose("list", "b\r\na\r\n\r\na"), "Import / Variable List?b,a,", Choose("list"),
              "Import / Variable List? / Delete Variable / ! / Export  / "
              "!You can't export an empty list / OK"});
  EXPECT_EQ(Joined(dialog.m_list), "");
}

TEST_F(ListDialogs, AvailableNamesAreAppendedUnlessTheyAreSelectedAlready) {
  const std::string kSome = " / !The variable or some of the variables selected already exist in the list / ";
  for (const char* end : {"Cancel", "OK"}) {
    CVariablesDlg dialog;
    dialog.SetAvailableVars(Names({"a", "b", "A", "c", "a"}));
    dialog.m_selected = Names({"x"});
    m_user.Run(
        dialog,
        {"-> / Available Vars#3 / Available Vars#0 / -> / ! / Selected Vars?x,a,c, / "
         "Available Vars#1 / ->" +
             kSome + "Selected Vars?x,a,c,b, / ->>" + kSome +
             "Selected Vars?x,a,c,b,A, / Delete All / -> / ! / Selected Vars?a,b,A,c,a, / Selected Vars#0 / "
             "Delete Variable / Selected Vars?b,A,c,a," +
             kInsert + "n / OK / Selected Vars?b,A,c,a,n,",
         Choose("list", "b\r\na"), "Import / Export  / Available Vars?a,b,A,c,a,", end});
    EXPECT_EQ(Joined(dialog.m_selected), *end == 'O' ? "b,a," : "x,");
  }
}

TEST_F(ListDialogs, FixedNamesCannotBeDeleted) {
  const std::string kThere = " / OK / !Message|This variable already exists in the list|30";
  CConfVarListDlg dialog;
  dialog.m_source = Names({"s", "t"});
  dialog.m_added = Names({"a", "b"});
  m_user.Run(dialog,
             {"!" + kInsert + "s" + kThere + kInsert + "b" + kThere +
              " / Variable List#1 / Delete Variable / !Message|You can't delete source variables|30 / "
              "Variable List#2 / Delete Variable / Delete Variable / "
              "!Message|You must select a variable|30 / Variable List?s,t,b," +
              kInsert + "c / OK / OK"});
  EXPECT_EQ(Joined(dialog.m_added), "b,c,");
}

TEST(Screens, NoCaptionIsCut) {
  CLogTrendings stage;
  std::tuple<CTrendFacadeDlg, CNewVarDlg, CVarListDlg, CVariablesDlg, CConfVarListDlg, CEquationsDlg,
             CDriverTypeDlg, CInputPage, CPlcWritePage>
      dialogs;
  std::get<0>(dialogs).SetInputPointers(nullptr, &stage);
  const auto look = [](CDialog& dialog) {
    ASSERT_EQ(dialog.Create(), 1);
    for (const QWidget* widget : dialog.Widget()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
      const QString name = widget->accessibleName();
      EXPECT_TRUE(dialog.Widget()->rect().contains(widget->geometry())) << name.toStdString();
      if (!qobject_cast<const QAbstractButton*>(widget) && !qobject_cast<const QLabel*>(widget)) continue;
      EXPECT_LE(widget->fontMetrics().horizontalAdvance(name), widget->width() - 4) << name.toStdString();
    }
  };
  std::apply([&](auto&... each) { (look(each), ...); }, dialogs);
}

}  // namespace
}  // namespace vastra
