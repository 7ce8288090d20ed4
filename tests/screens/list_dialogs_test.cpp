// The dialogs around lists of names, worked by a user who sees captions.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/screens/conf_var_list_dlg.h"
#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/new_var_dlg.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/scaler_dlg.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/screens/var_list_dlg.h"
#include "vastra/screens/variables_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

using CTexts = std::vector<std::string>;
using CUser = std::function<void(QWidget*, QListWidget*)>;

void Nothing(QWidget*, QListWidget*) {}

// Marks row, if there is one, and presses.
CUser Press(const char* caption, int row = -1) {
  return [=](QWidget* window, QListWidget* list) {
    if (row >= 0) list->setCurrentRow(row);
    Click(window, caption);
  };
}

CUser Insert(const char* name, const char* end = "OK") {
  return [=](QWidget* window, QListWidget*) {
    WhileModal([&] { Click(window, "Insert  New Variable"); },
               [&](QWidget* box) {
                 EXPECT_EQ(Find<QLineEdit>(box, "New Variable"), box->focusWidget());
                 QTest::keyClicks(box->focusWidget(), name);
                 Click(box, end);
               });
  };
}

// Presses and chooses file, in a directory where "list" holds bytes; null: gives up.
CUser PressAndChoose(const char* caption, const char* file, const char* bytes = "") {
  return [=](QWidget* window, QListWidget*) {
    const CTempDir dir;
    CTestChooser chooser;
    if (file) chooser.path = dir / file;
    WriteBytes(dir / "list", bytes);
    Click(window, caption);
    EXPECT_EQ("Text Files (*.txt)|*.txt||", chooser.file.filter);
  };
}

void MoveDown(QWidget*, QListWidget* list) {
  list->setCurrentRow(0);
  QTest::keyClick(list, Qt::Key_Down, Qt::ControlModifier);
}

void Drag(QWidget*, QListWidget* list) { EXPECT_TRUE(list->model()->moveRow({}, 2, {}, 0)); }

void DeleteTwice(QWidget* window, QListWidget* list) {
  Press("Delete Variable", 1)(window, list);
  Press("Delete Variable")(window, list);
}

// Opens dialog, lets user work on the list of that caption, leaves by the button end, and gives what the list
// showed at last.
CTexts WorkIn(CDialog& dialog, const char* caption, const CUser& user, const char* end) {
  CTexts shown;
  WhileModal([&] { dialog.DoModal(); },
             [&](QWidget* window) {
               auto* list = Find<QListWidget>(window, caption);
               user(window, list);
               shown = Shown(list);
               Click(window, end);
             });
  return shown;
}

CStringArray ToArray(const CTexts& texts) {
  CStringArray array;
  for (const std::string& text : texts) array.Add(CString(text));
  return array;
}

const char* const kEmptyName = "Message|The name of the variable can't be a null string|30";
const char* const kUnmarked = "|You must select a variable|30";
const char* const kNotOpened = "|An error ocurred when trying to open the file|30";
const struct {
  const char* what;
  CTexts before;
  CUser user;
  CTexts after, boxes;
} kFreeListCases[] = {
    {"nothing done", {"b", "a"}, Nothing, {"b", "a"}, {}},
    {"new name", {"b"}, Insert("a"), {"b", "a"}, {}},
    {"new name in another case", {"a"}, Insert("A"), {"a", "A"}, {}},
    {"name given up", {"b"}, Insert("a", "Cancel"), {"b"}, {}},
    {"name of old", {"a"}, Insert("a"), {"a"}, {"|This variable already exists in the list|30"}},
    {"empty name", {"a"}, Insert(""), {"a"}, {kEmptyName}},
    {"delete", {"a", "b", "c"}, Press("Delete Variable", 1), {"a", "c"}, {}},
    {"delete unmarked", {"a"}, Press("Delete Variable"), {"a"}, {kUnmarked}},
    {"delete of nothing", {}, Press("Delete Variable"), {}, {}},
    {"a mark goes with its entry", {"a", "b", "c"}, DeleteTwice, {"a", "c"}, {kUnmarked}},
    {"delete all", {"a", "b"}, Press("Delete All"), {}, {}},
    {"moved by key", {"a", "b", "c"}, MoveDown, {"b", "a", "c"}, {}},
    {"moved by mouse", {"a", "b", "c"}, Drag, {"c", "a", "b"}, {}},
    {"import", {"old"}, PressAndChoose("Import", "list", "b\r\na\r\n\r\na"), {"b", "a"}, {}},
    {"import of nothing", {"old"}, PressAndChoose("Import", "list"), {}, {}},
    {"import given up", {"old"}, PressAndChoose("Import", nullptr), {"old"}, {}},
    {"import without a file", {"old"}, PressAndChoose("Import", "none"), {"old"}, {kNotOpened}},
    {"import of a repeat",
     {"old"},
     PressAndChoose("Import", "list", "a\r\nb\r\na"),
     {"old"},
     {"|Invalid list, variables must not be repeated.|30"}},
    {"export given up", {"a"}, PressAndChoose("Export ", nullptr), {"a"}, {}},
    {"export to nowhere",
     {"a"},
     PressAndChoose("Export ", "none/list"),
     {"a"},
     {"|An error ocurred when trying to save the file|30"}},
    {"export of nothing", {}, Press("Export "), {}, {"|You can't export an empty list|30"}},
};

// The two dialogs whose list is free.
class FreeList : public testing::Test {
 protected:
  CVarListDlg m_varList;
  CVariablesDlg m_variables;
  const struct {
    CDialog& dialog;
    const char* caption;
    CStringArray& list;
  } m_all[2] = {{m_varList, "Variable List", m_varList.m_list},
                {m_variables, "Selected Vars", m_variables.m_selected}};
  CTestPrompter m_prompter;
};

TEST_F(FreeList, EachButtonDoesItsWorkAndOnlyOkGivesTheListAway) {
  for (const auto& [dialog, caption, list] : m_all) {
    for (const auto& c : kFreeListCases) {
      for (const char* end : {"Cancel", "OK"}) {
        list = ToArray(c.before);
        EXPECT_EQ(c.after, WorkIn(dialog, caption, c.user, end)) << c.what;
        EXPECT_EQ(c.boxes, m_prompter.Take()) << c.what;
        EXPECT_EQ(ToArray(*end == 'O' ? c.after : c.before), list) << c.what << ", " << end;
      }
    }
  }
}

TEST_F(FreeList, AnExportComesBackByItsImport) {
  const CStringArray names = Names({"b", "\xC3\xA9", "\xE9 latin", "a"});
  const CTempDir dir;
  CTestChooser chooser;
  for (const auto& [dialog, caption, list] : m_all) {
    chooser.path = dir / caption;
    list = names;
    WorkIn(dialog, caption, Press("Export "), "Cancel");
    EXPECT_EQ("b\r\n\xC3\xA9\r\n\xE9 latin\r\na\r\n\r\n", ReadBytes(chooser.path));
    EXPECT_TRUE(chooser.file.save && chooser.file.asksToOverwrite);
    EXPECT_EQ("txt", chooser.file.defaultExtension);
    list = Names({"old"});
    WorkIn(dialog, caption, Press("Import"), "OK");
    EXPECT_EQ(names, list);
    EXPECT_FALSE(chooser.file.save);
  }
}

TEST(Variables, MarkedOnesGoToTheEndOfTheSelectedButForThoseThatAreThere) {
  const CTexts kSome = {"|The variable or some of the variables selected already exist in the list|30"};
  const struct {
    std::vector<int> marked;
    const char* button;
    CTexts selected, after, boxes;
  } kCases[] = {
      {{}, "->", {"x"}, {"x"}, {}},
      {{3, 0}, "->", {"x"}, {"x", "a", "c"}, {}},
      {{0, 1}, "->", {"b", "x"}, {"b", "x", "a"}, kSome},
      {{0, 4}, "->", {}, {"a", "a"}, {}},
      {{2}, "->>", {"c"}, {"c", "a", "b", "A", "a"}, kSome},
  };
  CTestPrompter prompter;
  for (const auto& c : kCases) {
    CVariablesDlg dialog;
    dialog.SetAvailableVars(Names({"a", "b", "A", "c", "a"}));
    dialog.m_selected = ToArray(c.selected);
    const auto user = [&](QWidget* window, QListWidget* available) {
      for (const int row : c.marked) available->item(row)->setSelected(true);
      Click(window, c.button);
    };
    EXPECT_EQ((CTexts{"a", "b", "A", "c", "a"}), WorkIn(dialog, "Available Vars", user, "OK"));
    EXPECT_EQ(ToArray(c.after), dialog.m_selected);
    EXPECT_EQ(c.boxes, prompter.Take());
  }
}

TEST(ConfVarList, OnlyAddedNamesGo) {
  const CTexts kThere = {"Message|This variable already exists in the list|30"};
  const struct {
    CUser user;
    CTexts added, boxes;
  } kCases[] = {
      // s and t stand fixed, a and b were added
      {Insert("c"), {"a", "b", "c"}, {}},
      {Insert("s"), {"a", "b"}, kThere},
      {Insert("b"), {"a", "b"}, kThere},
      {Press("Delete Variable", 2), {"b"}, {}},
      {Press("Delete Variable", 1), {"a", "b"}, {"Message|You can't delete source variables|30"}},
      {Press("Delete Variable"), {"a", "b"}, {"Message|You must select a variable|30"}},
  };
  CTestPrompter prompter;
  for (const auto& c : kCases) {
    CConfVarListDlg dialog;
    dialog.m_source = Names({"s", "t"});
    dialog.m_added = Names({"a", "b"});
    CStringArray all = dialog.m_source;
    all.Append(ToArray(c.added));
    EXPECT_EQ(all, ToArray(WorkIn(dialog, "Variable List", c.user, "OK")));
    EXPECT_EQ(ToArray(c.added), dialog.m_added);
    EXPECT_EQ(c.boxes, prompter.Take());
  }
}

TEST(NewVar, AnEmptyNameKeepsTheDialogOpen) {
  CTestPrompter prompter;
  CNewVarDlg dialog;
  WhileModal([&] { EXPECT_EQ(IDOK, dialog.DoModal()); },
             [&](QWidget* window) {
               Click(window, "OK");
               QTest::keyClicks(Find<QLineEdit>(window, "New Variable"), " x");
               QTest::keyClick(window, Qt::Key_Return);
             });
  EXPECT_EQ(" x", dialog.m_name);
  EXPECT_EQ(CTexts{kEmptyName}, prompter.Take());
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
  CDialog* const all[] = {&newVar, &varList, &variables, &conf,  &equations,
                          &facade, &node,    &scaler,    &input, &write};
  for (CDialog* dialog : all) {
    ASSERT_EQ(1, dialog->Create());
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
