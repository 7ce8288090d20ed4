// The dialogs around lists of names, worked by a user who sees captions.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/screens/conf_var_list_dlg.h"
#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/new_var_dlg.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/screens/var_list_dlg.h"
#include "vastra/screens/variables_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

using CTexts = std::vector<std::string>;
using CUser = std::function<void(QWidget*, QListWidget*)>;

CUser Press(const char* caption) {
  return [caption](QWidget* window, QListWidget*) { Click(window, caption); };
}
// Marks row, then presses.
CUser Press(const char* caption, int row) {
  return [=](QWidget* window, QListWidget* list) {
    list->setCurrentRow(row);
    Click(window, caption);
  };
}
CUser Insert(const char* name, const char* end = "OK") {
  return [=](QWidget* window, QListWidget*) {
    WhileModal([&] { Click(window, "Insert  New Variable"); },
               [&](QWidget* box) {
                 auto* edit = Find<QLineEdit>(box, "New Variable");
                 EXPECT_EQ(edit, box->focusWidget());
                 edit->setText(name);
                 Click(box, end);
               });
  };
}
CUser Twice(const CUser& user) {
  return [user](QWidget* window, QListWidget* list) {
    user(window, list);
    user(window, list);
  };
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

const CUser kMoveDown = [](QWidget*, QListWidget* list) {
  list->setCurrentRow(0);
  QTest::keyClick(list, Qt::Key_Down, Qt::ControlModifier);
};
const CUser kDrag = [](QWidget*, QListWidget* list) { ASSERT_TRUE(list->model()->moveRow({}, 2, {}, 0)); };

struct CListCase {
  const char* what;
  CTexts before;
  CUser user;
  CTexts after;
  CTexts boxes = {};
};

const CListCase kFreeListCases[] = {
    {"nothing done", {"b", "a"}, [](QWidget*, QListWidget*) {}, {"b", "a"}},
    {"new name", {"b"}, Insert("a"), {"b", "a"}},
    {"new name in another case", {"a"}, Insert("A"), {"a", "A"}},
    {"name given up", {"b"}, Insert("a", "Cancel"), {"b"}},
    {"name of old", {"a", "b"}, Insert("a"), {"a", "b"}, {"|This variable already exists in the list|30"}},
    {"empty name", {"a"}, Insert(""), {"a"}, {"Message|The name of the variable can't be a null string|30"}},
    {"delete", {"a", "b", "c"}, Press("Delete Variable", 1), {"a", "c"}},
    {"delete unmarked", {"a"}, Press("Delete Variable"), {"a"}, {"|You must select a variable|30"}},
    {"delete of nothing", {}, Press("Delete Variable"), {}},
    {"a mark goes with its entry",
     {"a", "b", "c"},
     [](QWidget* window, QListWidget* list) {
       list->setCurrentRow(1);
       Twice(Press("Delete Variable"))(window, list);
     },
     {"a", "c"},
     {"|You must select a variable|30"}},
    {"delete all", {"a", "b"}, Press("Delete All"), {}},
    {"moved by key", {"a", "b", "c"}, kMoveDown, {"b", "a", "c"}},
    {"moved by mouse", {"a", "b", "c"}, kDrag, {"c", "a", "b"}},
    {"empty export", {}, Press("Export "), {}, {"|You can't export an empty list|30"}},
};

CStringArray ToArray(const CTexts& texts) {
  CStringArray array;
  for (const std::string& text : texts) array.Add(CString(text));
  return array;
}

// The two dialogs whose list is free.
template <class Dialog>
class FreeList : public testing::Test {
 protected:
  static constexpr bool kIsVarList = std::is_same_v<Dialog, CVarListDlg>;
  CTexts WorkIn(const CUser& user, const char* end) {
    return vastra::WorkIn(m_dialog, kIsVarList ? "Variable List" : "Selected Vars", user, end);
  }
  CStringArray& List() {
    if constexpr (kIsVarList)
      return m_dialog.m_list;
    else
      return m_dialog.m_selected;
  }

  Dialog m_dialog;
  CTestPrompter m_prompter;
  CTestChooser m_chooser;
  CTempDir m_dir;
};
using CFreeLists = testing::Types<CVarListDlg, CVariablesDlg>;
TYPED_TEST_SUITE(FreeList, CFreeLists);

TYPED_TEST(FreeList, EachButtonDoesItsWorkAndOnlyOkGivesTheListAway) {
  for (const CListCase& c : kFreeListCases) {
    for (const char* end : {"Cancel", "OK"}) {
      this->List() = ToArray(c.before);
      EXPECT_EQ(c.after, this->WorkIn(c.user, end)) << c.what;
      EXPECT_EQ(c.boxes, this->m_prompter.Take()) << c.what;
      EXPECT_EQ(ToArray(*end == 'O' ? c.after : c.before), this->List()) << c.what << ", " << end;
    }
  }
}

TYPED_TEST(FreeList, AnExportComesBackByItsImport) {
  const CStringArray names = Names({"b", "\xC3\xA9", "\xE9 latin", "a"});
  const CString path = this->m_dir / "list.txt";
  this->m_chooser.path = path;
  this->List() = names;
  this->WorkIn(Press("Export "), "Cancel");
  EXPECT_EQ("b\r\n\xC3\xA9\r\n\xE9 latin\r\na\r\n\r\n", ReadBytes(path));
  const CFileQuestion& asked = this->m_chooser.file;
  EXPECT_TRUE(asked.save && asked.asksToOverwrite);
  EXPECT_EQ("txt", asked.defaultExtension);
  EXPECT_EQ("Text Files (*.txt)|*.txt||", asked.filter);

  this->List() = Names({"old"});
  this->WorkIn(Press("Import"), "OK");
  EXPECT_EQ(names, this->List());
  EXPECT_FALSE(asked.save);
  EXPECT_EQ("Text Files (*.txt)|*.txt||", asked.filter);
  EXPECT_EQ(CTexts(), this->m_prompter.Take());
}

TYPED_TEST(FreeList, AFileThatIsNoListLeavesTheListAlone) {
  const char* kRepeat = "|Invalid list, variables must not be repeated.|30";
  const char* kNotOpened = "|An error ocurred when trying to open the file|30";
  const char* kNotSaved = "|An error ocurred when trying to save the file|30";
  WriteBytes(this->m_dir / "repeat", "a\r\nb\r\na\r\n");
  WriteBytes(this->m_dir / "behind the end", "a\r\n\r\na\r\n");
  WriteBytes(this->m_dir / "empty", "");
  const struct {
    const char *button, *file;
    CTexts after, boxes;
  } kCases[] = {
      {"Import", "repeat", {"old"}, {kRepeat}},       {"Import", "none", {"old"}, {kNotOpened}},
      {"Import", ".", {"old"}, {kNotOpened}},         {"Import", nullptr, {"old"}, {}},
      {"Import", "behind the end", {"a"}, {}},        {"Import", "empty", {}, {}},
      {"Export ", "none/list", {"old"}, {kNotSaved}}, {"Export ", nullptr, {"old"}, {}},
  };
  for (const auto& c : kCases) {
    this->m_chooser.path = c.file ? this->m_dir / c.file : CString();
    this->List() = Names({"old"});
    EXPECT_EQ(c.after, this->WorkIn(Press(c.button), "OK")) << c.button << c.file;
    EXPECT_EQ(c.boxes, this->m_prompter.Take()) << c.button << c.file;
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
      {{1}, "->", {"b"}, {"b"}, kSome},
      {{0, 4}, "->", {}, {"a", "a"}, {}},
      {{2}, "->>", {"c"}, {"c", "a", "b", "A", "a"}, kSome},
      {{}, "->>", {}, {"a", "b", "A", "c", "a"}, {}},
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
    EXPECT_EQ((CTexts{"a", "b", "A", "c", "a"}), WorkIn(dialog, "Available Vars", user, "OK")) << c.button;
    EXPECT_EQ(ToArray(c.after), dialog.m_selected) << c.button;
    EXPECT_EQ(c.boxes, prompter.Take()) << c.button;
  }
}

TEST(ConfVarList, OnlyAddedNamesGo) {
  const CTexts kThere = {"Message|This variable already exists in the list|30"};
  const struct {
    const char* what;
    CUser user;
    const char* added;
    CTexts boxes;
  } kCases[] = {
      // s and t stand fixed, a and b were added
      {"new name", Insert("c"), "a|b|c|", {}},
      {"name of a fixed one", Insert("s"), "a|b|", kThere},
      {"name of an added one", Insert("b"), "a|b|", kThere},
      {"delete added", Press("Delete Variable", 2), "b|", {}},
      {"delete fixed", Press("Delete Variable", 1), "a|b|", {"Message|You can't delete source variables|30"}},
      {"delete unmarked", Press("Delete Variable"), "a|b|", {"Message|You must select a variable|30"}},
  };
  CTestPrompter prompter;
  for (const auto& c : kCases) {
    CConfVarListDlg dialog;
    dialog.m_source = Names({"s", "t"});
    dialog.m_added = Names({"a", "b"});
    const CTexts shown = WorkIn(dialog, "Variable List", c.user, "OK");
    std::string added, all = "s|t|", seen;
    for (const CString& name : dialog.m_added) added += name.Std() + "|";
    for (const std::string& name : shown) seen += name + "|";
    EXPECT_EQ(c.added, added) << c.what;
    EXPECT_EQ(all + c.added, seen) << c.what;
    EXPECT_EQ(c.boxes, prompter.Take()) << c.what;
  }
  CConfVarListDlg empty;
  WorkIn(empty, "Variable List", Press("Delete Variable"), "OK");
  EXPECT_EQ(CTexts(), prompter.Take());
}

TEST(NewVar, AnEmptyNameKeepsTheDialogOpen) {
  CTestPrompter prompter;
  CNewVarDlg dialog;
  WhileModal([&] { EXPECT_EQ(IDOK, dialog.DoModal()); },
             [&](QWidget* window) {
               Click(window, "OK");
               EXPECT_TRUE(window->isVisible());
               QTest::keyClicks(Find<QLineEdit>(window, "New Variable"), " x");
               QTest::keyClick(window, Qt::Key_Return);
             });
  EXPECT_EQ(" x", dialog.m_name);
  EXPECT_EQ(1u, prompter.Take().size());
}

TEST(Screens, NoCaptionIsCut) {
  CLogTrendings stage;
  CTrendFacadeDlg facade;
  facade.SetInputPointers(nullptr, &stage);
  CNewVarDlg newVar;
  CVarListDlg list;
  CVariablesDlg variables;
  CConfVarListDlg conf;
  CEquationsDlg equations;
  for (CDialog* dialog :
       std::initializer_list<CDialog*>{&newVar, &list, &variables, &conf, &equations, &facade}) {
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
