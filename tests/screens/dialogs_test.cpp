// The dialogs of lists of names, of equations and of the extra variables that the live views share.
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

class Dialogs : public testing::Test {
 protected:
  // The file that the user chooses from now on, with bytes if there are any; without a name the user cancels.
  CStep Choose(const char* name, const char* bytes = nullptr) {
    return [=, this](QWidget*) {
      m_user.chooser.path = *name ? m_dir / name : CString();
      if (bytes) WriteBytes(m_user.chooser.path, bytes);
    };
  }
  // In the dialog of the extra variables.
  int Run(CLogTrendings& stage, const CSteps& steps) {
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &stage);
    const int result = m_user.Run(dialog, steps);
    EXPECT_EQ(CTrendFacadeDlg::m_suOpen, 0u);
    return result;
  }
  CSheetUser m_user;
  CTempDir m_dir;
};

const std::string kInsert = " / Insert  New Variable / New Variable=";

TEST_F(Dialogs, AFreeListIsEditedAndOnlyOkReturnsIt) {
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
                moveDown, moveDown, "Variable List?c, A,a,", drag, end});
    EXPECT_EQ(Joined(dialog.m_list), *end == 'O' ? "a,c, A," : "a,b,c,");
  }
}

TEST_F(Dialogs, AListIsExportedAndImported) {
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
              "Import / Export  / ! / Variable List?b,\u00E9,\u00E9 latin,a,", Choose("list", "b\r\nB"),
              "Import / Variable List?b,B,", Choose("list", ""),
              "Import / Variable List? / Delete Variable / ! / Export  / "
              "!You can't export an empty list / OK"});
  EXPECT_EQ(Joined(dialog.m_list), "");
}

TEST_F(Dialogs, AvailableNamesAreAppendedUnlessTheyAreSelectedAlready) {
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

TEST_F(Dialogs, FixedNamesCannotBeDeleted) {
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

QPlainTextEdit* Editor(QWidget* window) { return Find<QPlainTextEdit>(window, "Equations"); }
void Focus(QWidget* window) { Editor(window)->setFocus(); }

TEST_F(Dialogs, AFaultyEquationIsMarkedAndRefusesOk) {
  CEquationsDlg dialog;
  dialog.m_varNames = Names({"a", "\xC3\xA9"});
  dialog.m_text = "/* \xC3\xA9\xE2\x82\xAC */ x = 1;\r\ny = \xC3\xA9;";
  const auto isMarked = [](const char* marked, int place) -> CStep {
    return [=](QWidget* window) {
      EXPECT_TRUE(Editor(window)->hasFocus());
      EXPECT_EQ(Editor(window)->textCursor().selectedText().toStdString(), marked);
      EXPECT_EQ(Editor(window)->textCursor().selectionStart(), place);
    };
  };
  const auto parse = [](QWidget* window) { Find<QAbstractButton>(window, "Parse")->click(); };
  EXPECT_EQ(m_user.Run(dialog,
                       {"? / OK / ?Found error in equation 2", isMarked("\xC3\xA9", 20), "Equations=x = a +",
                        parse, "?Found error in equation 1", isMarked("", 7),
                        "Equations=x = 1;\ny = x / Parse / ?0 errors", Focus, "?", parse, "?0 errors / OK"}),
            IDOK);
  EXPECT_EQ(dialog.m_text, "x = 1;\r\ny = x");
  EXPECT_EQ(Joined(dialog.m_equations), "x = 1,\r\ny = x,");
}

TEST_F(Dialogs, AnExportKeepsTheBytesOfEquationsAndAnImportEndsAtAnEmptyLine) {
  CEquationsDlg dialog;
  dialog.m_varNames = Names({"a", "\xC3\xA9"});
  dialog.m_text = "x = a;\r\ny = \xE9 + c\r\n\r\nz = 1;";
  const auto isExported = [&](const CString& text) -> CStep {
    return [&, text](QWidget*) { EXPECT_EQ(ReadBytes(m_dir / "list"), text.Std()); };
  };
  m_user.Run(dialog, {Choose("list"), "Export...", isExported(dialog.m_text),
                      "Parse / Import... / ?File containing 2 lines / Equations?x = a;\ny = \u00E9 + c\n",
                      Focus, "? / Export...", isExported("x = a;\r\ny = \xE9 + c\r\n"), Choose("none/x"),
                      "Import... / !Message|An error ocurred when trying to open the file|30 / Export... / "
                      "!Message|An error ocurred when trying to save the file|30",
                      Choose(""), "Import... / Export... / ! / ? / Equations?x = a;\ny = \u00E9 + c\n"});
}

TEST_F(Dialogs, OkWritesTheExtraVariablesAndOnlyTheirFlagSurvivesCancel) {
  CLogTrendings stage;
  auto settings =
      R"({"baseVars": ["a", "b"], "extraVars": ["old"], "equationText": "old = a", "calculateExtra": 7})"_json;
  *stage.GetOptions() = Configured<CTrendConfig>(settings);
  const auto edit = [&](const std::string& steps, const json& changes) {
    const int result = Run(stage, {steps});
    settings.update(changes);
    EXPECT_EQ(FieldsOf(*stage.GetOptions()), FieldsOf(Configured<CTrendConfig>(settings))) << steps;
    return result;
  };
  const std::string kVariables = "Variables " + kInsert + "new / OK / ",
                    kCancelled = kVariables + "Cancel / Equations / Equations=z = b; / Parse / Cancel / ",
                    kEdit = kCancelled + kVariables +
                            "OK / Equations / Equations?old = a / Equations=n = b; m = n; / OK / ";
  EXPECT_EQ(edit(kEdit + "Cancel", {{"calculateExtra", 1}}), IDCANCEL);
  EXPECT_EQ(edit(kEdit + "OK", {{"extraVars", {"old", "new"}}, {"equationText", "n = b; m = n;"}}), IDOK);
  const std::string kDelete = "Variable List#2 / Delete Variable / ";
  edit("Variables  / " + kDelete + kDelete + "OK / OK",
       {{"extraVars", json::array()}, {"calculateExtra", 0}});
}

TEST_F(Dialogs, OnlyOneDialogOfTheExtraVariablesIsOpen) {
  CLogTrendings stage;
  m_user.boxes.user = [] { EXPECT_EQ(CTrendFacadeDlg::m_suOpen, 1u) << "the refused dialog is counted"; };
  const auto openAnother = [&](QWidget*) {
    CTrendFacadeDlg second;
    second.SetInputPointers(nullptr, &stage);
    EXPECT_EQ(second.DoModal(), 0);
  };
  EXPECT_EQ(Run(stage, {openAnother,
                        "!Message|Already open|30 / Variables  / !Message|No variables available|30 / OK"}),
            IDOK);
  {
    CTrendFacadeDlg left;
    left.SetInputPointers(nullptr, &stage);
    EXPECT_EQ(left.Create(), 1);
  }
  Run(stage, {[](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); }});
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
