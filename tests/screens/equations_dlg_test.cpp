// The equation editor.
#include "vastra/screens/equations_dlg.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/files.h"

namespace vastra {
namespace {

QPlainTextEdit* Editor(QWidget* window) { return Find<QPlainTextEdit>(window, "Equations"); }
void Focus(QWidget* window) { Editor(window)->setFocus(); }

class EquationsDlg : public testing::Test {
 protected:
  int Run(const char* text, const CSteps& steps) {
    m_dialog.m_varNames = Names({"a", "\xC3\xA9"});
    m_dialog.m_text = text;
    const auto activate = [](QWidget* window) { EXPECT_TRUE(QTest::qWaitForWindowActive(window)); };
    return m_user.Run(m_dialog, CSteps{activate} + steps);
  }
  CStep Choose(const char* name) {
    return [=, this](QWidget*) { m_user.chooser.path = *name ? m_dir / name : CString(); };
  }
  CEquationsDlg m_dialog;
  CSheetUser m_user;
  CTempDir m_dir;
};

TEST_F(EquationsDlg, AFaultIsMarkedAndRefusesOk) {
  const auto isMarked = [](const char* marked, int place) -> CStep {
    return [=](QWidget* window) {
      EXPECT_TRUE(Editor(window)->hasFocus());
      EXPECT_EQ(Editor(window)->textCursor().selectedText().toStdString(), marked);
      EXPECT_EQ(Editor(window)->textCursor().selectionStart(), place);
    };
  };
  const auto parse = [](QWidget* window) { Find<QAbstractButton>(window, "Parse")->click(); };
  EXPECT_EQ(Run("/* \xC3\xA9\xE2\x82\xAC */ x = 1;\r\ny = \xC3\xA9;",
                {"? / OK / ?Found error in equation 2", isMarked("\xC3\xA9", 20), "Equations=x = a +", parse,
                 "?Found error in equation 1", isMarked("", 7), "Equations=x = 1;\ny = x / Parse / ?0 errors",
                 Focus, "?", parse, "?0 errors / OK"}),
            IDOK);
  EXPECT_EQ(m_dialog.m_text, "x = 1;\r\ny = x");
  EXPECT_EQ(Joined(m_dialog.m_equations), "x = 1,\r\ny = x,");
}

TEST_F(EquationsDlg, AnExportKeepsTheBytesAndAnImportEndsAtAnEmptyLine) {
  const std::string text = "x = a;\r\ny = \xE9 + c\r\n\r\nz = 1;";
  const auto isExported = [&](const std::string& bytes) -> CStep {
    return [&, bytes](QWidget*) { EXPECT_EQ(ReadBytes(m_dir / "list"), bytes); };
  };
  Run(text.c_str(), {Choose("list"), "Export...", isExported(text),
                     "Parse / Import... / ?File containing 2 lines / Equations?x = a;\ny = \u00E9 + c\n",
                     Focus, "? / Export...", isExported("x = a;\r\ny = \xE9 + c\r\n"), Choose("none/x"),
                     "Import... / !Message|An error ocurred when trying to open the file|30 / Export... / "
                     "!Message|An error ocurred when trying to save the file|30",
                     Choose(""), "Import... / Export... / ! / ? / Equations?x = a;\ny = \u00E9 + c\n"});
}

}  // namespace
}  // namespace vastra
