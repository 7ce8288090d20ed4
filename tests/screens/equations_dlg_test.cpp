// The equation editor.
#include "vastra/screens/equations_dlg.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/files.h"

namespace vastra {
namespace {

QPlainTextEdit* Editor(QWidget* window) { return Find<QPlainTextEdit>(window, "Equations"); }
void Focus(QWidget* window) { Editor(window)->setFocus(); }
void Activate(QWidget* window) { EXPECT_TRUE(QTest::qWaitForWindowActive(window)); }

class EquationsDlg : public testing::Test {
 protected:
  EquationsDlg() { m_dialog.m_varNames = Names({"a", "b", "\xC3\xA9"}); }
  int Run(const CString& text, const CSteps& steps) {
    m_dialog.m_text = text;
    return m_user.Run(m_dialog, CSteps{Activate} + steps);
  }
  CEquationsDlg m_dialog;
  CSheetUser m_user;
  CTempDir m_dir;
};

TEST_F(EquationsDlg, AFaultIsMarkedAndRefusesOk) {
  const struct {
    const char *text, *status, *marked;
    int place;  // of the mark in the text as shown, where a line end is one character
  } kCases[] = {
      {"", "0 errors", nullptr, 0},
      {"x = y;\r\ny = a;\r\n", "0 errors", nullptr, 0},
      {"x = 1;\r\n\r\ny = c;", "Found error in equation 2", "c", 12},
      {"/* \xC3\xA9\xE2\x82\xAC */ x = 1;\r\ny = \xC3\xA9;", "Found error in equation 2", "\xC3\xA9", 20},
      {"/* \xE9 */ x = 1;\r\ny = c;", "Found error in equation 2", "c", 19},
      {"x = a +", "Found error in equation 1", "", 7},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const std::string status = std::string("?") + c.status;
    // With the focus elsewhere and in the editor.
    CSteps steps = {"Parse / " + status, Focus,
                    [](QWidget* w) { Find<QAbstractButton>(w, "Parse")->click(); }, status + " / OK"};
    if (c.marked) {
      steps.emplace_back(status);
      steps.emplace_back([&](QWidget* window) {
        EXPECT_TRUE(Editor(window)->hasFocus());
        EXPECT_EQ(Editor(window)->textCursor().selectedText().toStdString(), c.marked);
        EXPECT_EQ(Editor(window)->textCursor().selectionStart(), c.place);
      });
    }
    EXPECT_EQ(Run(c.text, steps), c.marked ? IDCANCEL : IDOK);
    EXPECT_EQ(m_dialog.m_text.Std(), c.text);
  }
}

TEST_F(EquationsDlg, TheStatusIsShownUntilTheEditorGetsTheFocus) {
  EXPECT_EQ(
      Run("x = c", {"? / Parse / ?Found error in equation 1 / Equations=x = 1;\ny = x / Parse / ?0 errors",
                    Focus, "? / OK"}),
      IDOK);
  EXPECT_EQ(m_dialog.m_text.Std(), "x = 1;\r\ny = x");
  EXPECT_EQ(Joined(m_dialog.m_equations), "x = 1,\r\ny = x,");
}

TEST_F(EquationsDlg, AnExportKeepsTheBytesAndAnImportEndsAtAnEmptyLine) {
  const std::string text = "x = a;\r\ny = \xE9 + c\r\n\r\nz = 1;";
  m_user.chooser.path = m_dir / "equations.txt";
  const auto expectFile = [&](const std::string& bytes) {
    return [&, bytes](QWidget*) { EXPECT_EQ(ReadBytes(m_user.chooser.path), bytes); };
  };
  Run(CString(text), {"Export...", expectFile(text),
                      "Parse / Import... / ?File containing 2 lines / Equations?x = a;\ny = \u00E9 + c\n",
                      Focus, "? / Export...", expectFile("x = a;\r\ny = \xE9 + c\r\n")});
}

TEST_F(EquationsDlg, FilesThatFailLeaveTheText) {
  const auto choose = [&](const CString& path) {
    return [&, path](QWidget*) { m_user.chooser.path = path; };
  };
  Run("x = a", {choose(m_dir / "none/x"),
                "Import... / !Message|An error ocurred when trying to open the file|30 / Export... / "
                "!Message|An error ocurred when trying to save the file|30",
                choose(""), "Import... / Export... / ! / ? / Equations?x = a"});
}

}  // namespace
}  // namespace vastra
