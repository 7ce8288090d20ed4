// The dialogs with lists of names.
#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/files.h"
#include "vastra/screens/conf_var_list_dlg.h"
#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/new_var_dlg.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/scaler_dlg.h"
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

const CSteps kInsert = {"Insert  New Variable", [](QWidget* box) {
                          EXPECT_EQ(Find<QLineEdit>(box, "New Variable"), box->focusWidget());
                        }};

TEST_F(ListDialogs, AFreeListIsEditedAndOnlyOkReturnsIt) {
  const auto list = [](QWidget* window) { return Find<QListWidget>(window, "Variable List"); };
  const struct {
    CStringArray before;
    CSteps steps;
    const char* after;
  } kCases[] = {
      {Names({"a"}), kInsert + CSteps{"New Variable=A / OK"}, "a,A,"},
      {Names({"a"}), kInsert + CSteps{"New Variable=b / Cancel"}, "a,"},
      {Names({"a"}), kInsert + CSteps{"New Variable=a / OK / !This variable already exists in the list"},
       "a,"},
      {Names({"a", "b", "c"}),
       {"Variable List#1 / Delete Variable / Delete Variable / !You must select a variable"},
       "a,c,"},
      {{}, {"Delete Variable"}, ""},
      {Names({"a", "b"}), {"Delete All"}, ""},
      {Names({"a", "b", "c"}),
       {"Variable List#0", [=](QWidget* w) { QTest::keyClick(list(w), Qt::Key_Down, Qt::ControlModifier); }},
       "b,a,c,"},
      {Names({"a", "b", "c"}),
       {[=](QWidget* w) { EXPECT_TRUE(list(w)->model()->moveRow({}, 2, {}, 0)); }},
       "c,a,b,"},
      {Names({"old"}), {Choose("list", "b\r\na\r\n\r\na"), "Import"}, "b,a,"},
      {Names({"old"}), {Choose("list"), "Import"}, ""},
      {Names({"old"}), {Choose(""), "Import / Export "}, "old,"},
      {Names({"old"}),
       {Choose("none"), "Import / !An error ocurred when trying to open the file", Choose("none/list"),
        "Export  / !An error ocurred when trying to save the file"},
       "old,"},
      {Names({"old"}),
       {Choose("list", "a\r\nb\r\na"), "Import / !Invalid list, variables must not be repeated."},
       "old,"},
      {{}, {"Export ", "!You can't export an empty list"}, ""},
  };
  for (const auto& c : kCases) {
    for (const char* end : {"Cancel", "OK"}) {
      CVarListDlg dialog;
      dialog.m_list = c.before;
      m_user.Run(dialog, c.steps + CSteps{std::string("Variable List?") + c.after, end});
      EXPECT_EQ(Joined(dialog.m_list), *end == 'O' ? c.after : Joined(c.before));
    }
  }
}

TEST_F(ListDialogs, AnImportReadsBackAnExport) {
  CVarListDlg dialog;
  dialog.m_list = Names({"b", "\xC3\xA9", "\xE9 latin", "a"});
  const auto look = [&](QWidget*) {
    EXPECT_EQ(ReadBytes(m_user.chooser.path), "b\r\n\xC3\xA9\r\n\xE9 latin\r\na\r\n\r\n");
    const CFileQuestion& file = m_user.chooser.file;
    EXPECT_TRUE(file.save && file.asksToOverwrite && file.defaultExtension == "txt");
    EXPECT_EQ(file.filter, "Text Files (*.txt)|*.txt||");
  };
  m_user.Run(dialog, {Choose("list"), "Export ", look, "Delete All / Import / OK"});
  EXPECT_EQ(Joined(dialog.m_list), "b,\xC3\xA9,\xE9 latin,a,");
  EXPECT_FALSE(m_user.chooser.file.save);
}

TEST_F(ListDialogs, AvailableNamesAreAppendedUnlessTheyAreSelectedAlready) {
  const std::string kSome = "!The variable or some of the variables selected already exist in the list";
  const struct {
    CStringArray selected;
    CSteps steps;
    const char* after;
  } kCases[] = {
      {Names({"x"}), {"->"}, "x,"},
      {Names({"x"}), {"Available Vars#3 / Available Vars#0 / ->"}, "x,a,c,"},
      {Names({"b", "x"}), {"Available Vars#0 / Available Vars#1 / -> / " + kSome}, "b,x,a,"},
      {{}, {"Available Vars#0 / Available Vars#4 / ->"}, "a,a,"},
      {Names({"c"}), {"->>", kSome}, "c,a,b,A,a,"},
      {Names({"x", "y"}), {"Selected Vars#0", "Delete Variable"}, "y,"},
      {Names({"x"}), {Choose("list", "b\r\na"), "Import / Export "}, "b,a,"},
      {Names({"x"}), CSteps{"Delete All"} + kInsert + CSteps{"New Variable=n / OK"}, "n,"},
  };
  for (const auto& c : kCases) {
    for (const char* end : {"Cancel", "OK"}) {
      CVariablesDlg dialog;
      dialog.SetAvailableVars(Names({"a", "b", "A", "c", "a"}));
      dialog.m_selected = c.selected;
      m_user.Run(dialog, c.steps + CSteps{"!", "Available Vars?a,b,A,c,a,", end});
      EXPECT_EQ(Joined(dialog.m_selected), *end == 'O' ? c.after : Joined(c.selected));
    }
  }
}

TEST_F(ListDialogs, FixedNamesCannotBeDeleted) {
  const std::string kThere = "!Message|This variable already exists in the list|30";
  CConfVarListDlg dialog;
  dialog.m_source = Names({"s", "t"});
  dialog.m_added = Names({"a", "b"});
  m_user.Run(dialog, kInsert + CSteps{"New Variable=s / OK / " + kThere} + kInsert +
                         CSteps{"New Variable=b / OK / " + kThere +
                                " / Variable List#1 / Delete Variable / !Message|You can't delete source "
                                "variables|30 / Variable List#2 / Delete Variable / Delete Variable / "
                                "!Message|You must select a variable|30 / Variable List?s,t,b,"} +
                         kInsert + CSteps{"New Variable=c / OK / OK"});
  EXPECT_EQ(Joined(dialog.m_added), "b,c,");
}

TEST_F(ListDialogs, ANewVariableHasAName) {
  CNewVarDlg dialog;
  EXPECT_EQ(m_user.Run(dialog,
                       {"OK / !Message|The name of the variable can't be a null string|30 / New Variable= x",
                        [](QWidget* window) { QTest::keyClick(window, Qt::Key_Return); }}),
            IDOK);
  EXPECT_EQ(dialog.m_name, " x");
}

TEST(Screens, NoCaptionIsCut) {
  CLogTrendings stage;
  CTrendFacadeDlg facade;
  facade.SetInputPointers(nullptr, &stage);
  CNewVarDlg newVar;
  CVarListDlg varList;
  CVariablesDlg variables;
  CConfVarListDlg conf;
  CEquationsDlg equations;
  CDriverTypeDlg node;
  CScalerDlg scaler;
  const CStringArray names;
  CScalerConfig rows;
  scaler.m_pNames = &names;
  scaler.m_pScaler = &rows;
  CInputPage input;
  CPlcWritePage write;
  for (CDialog* dialog : std::initializer_list<CDialog*>{&newVar, &varList, &variables, &conf, &equations,
                                                         &facade, &node, &scaler, &input, &write}) {
    ASSERT_EQ(dialog->Create(), 1);
    for (const QWidget* widget : dialog->Widget()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
      const QString name = widget->accessibleName();
      EXPECT_TRUE(dialog->Widget()->rect().contains(widget->geometry())) << name.toStdString();
      if (!qobject_cast<const QAbstractButton*>(widget) && !qobject_cast<const QLabel*>(widget)) continue;
      EXPECT_LE(widget->fontMetrics().horizontalAdvance(name), widget->width() - 4) << name.toStdString();
    }
  }
}

}  // namespace
}  // namespace vastra
