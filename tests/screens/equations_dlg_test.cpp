// The equation editor as its user sees it.
#include "vastra/screens/equations_dlg.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QPlainTextEdit>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "tests/support/windows.h"

namespace vastra {
namespace {

class EquationsDlg : public testing::Test {
 protected:
  EquationsDlg() { m_dialog.m_varNames = Names({"a", "b", "\xC3\xA9"}); }
  // Runs the dialog on text and gives its result.
  int Run(const CString& text, const std::function<void()>& user) {
    m_dialog.m_text = text;
    int result = 0;
    WhileModal([&] { result = m_dialog.DoModal(); },
               [&](QWidget* window) {
                 m_window = window;
                 m_edit = Find<QPlainTextEdit>(window, "Equations");
                 EXPECT_TRUE(QTest::qWaitForWindowActive(window));
                 user();
               });
    return result;
  }
  std::string Status() const { return Find<QLabel>(m_window, "")->text().toStdString(); }
  std::string Marked() const { return m_edit->textCursor().selectedText().toStdString(); }

  CEquationsDlg m_dialog;
  QWidget* m_window = nullptr;
  QPlainTextEdit* m_edit = nullptr;
  CTestPrompter m_prompter;
  CTestChooser m_chooser;
  CTempDir m_dir;
};

TEST_F(EquationsDlg, OkTakesOnlyATextThatCompilesAndMarksTheFaultOfAnother) {
  const struct {
    const char *text, *status, *marked;
    int place;  // of the mark in the text as shown, where a line end is one character
  } kCases[] = {
      {"", "0 errors", "", 0},
      {"x = y;\r\ny = a;\r\n", "0 errors", "", 0},
      {"x = c + a;", "Found error in equation 1", "c", 4},
      {"x = 1;\r\n\r\ny = c;", "Found error in equation 2", "c", 12},
      {"/* \xC3\xA9\xE2\x82\xAC */ x = 1;\r\ny = \xC3\xA9;", "Found error in equation 2", "\xC3\xA9", 20},
      {"x = \xF0\x9F\x98\x80;", "Found error in equation 1", "\xF0\x9F\x98\x80", 4},
      {"/* \xE9 */ x = 1;\r\ny = c;", "Found error in equation 2", "c", 19},
      {"x = (a;\r\ny = c;", "Found error in equation 1", ";", 6},
      {"x = a +", "Found error in equation 1", "", 7},
  };
  for (const auto& c : kCases) {
    const bool isValid = !std::strcmp(c.status, "0 errors");
    const int result = Run(c.text, [&] {
      for (const bool hasFocus : {false, true}) {
        if (hasFocus) m_edit->setFocus();
        Find<QAbstractButton>(m_window, "Parse")->click();
        EXPECT_EQ(c.status, Status()) << c.text;
      }
      Click(m_window, "OK");
      if (isValid) return;
      EXPECT_TRUE(m_window->isVisible()) << c.text;
      EXPECT_TRUE(m_edit->hasFocus()) << c.text;
      EXPECT_EQ(c.status, Status()) << c.text;
      EXPECT_EQ(c.marked, Marked()) << c.text;
      EXPECT_EQ(c.place, m_edit->textCursor().selectionStart()) << c.text;
    });
    EXPECT_EQ(isValid ? IDOK : IDCANCEL, result) << c.text;
    EXPECT_EQ(c.text, m_dialog.m_text.Std());
  }
  EXPECT_EQ(std::vector<std::string>(), m_prompter.Take()) << "faults are no boxes";
  CString text;
  for (int i = 0; i < 300; ++i) text += "x = a;\r\n";
  Run(text + "y = c;", [&] {
    Click(m_window, "Parse");
    EXPECT_TRUE(m_edit->viewport()->rect().contains(m_edit->cursorRect())) << "the fault is out of view";
  });
}

TEST_F(EquationsDlg, NoErrorsAreShownUntilTheEditGetsTheFocus) {
  Run("x = c", [&] {
    EXPECT_EQ("", Status());
    Click(m_window, "Parse");
    EXPECT_EQ("Found error in equation 1", Status());
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QTest::keyClicks(m_edit, "1");
    Click(m_window, "Parse");
    EXPECT_EQ("0 errors", Status()) << m_edit->toPlainText().toStdString();
    m_edit->setFocus();
    EXPECT_EQ("", Status());
    QTest::keyClick(m_edit, Qt::Key_End);
    QTest::keyClicks(m_edit, ";");
    QTest::keyClick(m_edit, Qt::Key_Return);
    QTest::keyClicks(m_edit, "y = x");
    Click(m_window, "OK");
  });
  EXPECT_EQ("x = 1;\r\ny = x", m_dialog.m_text.Std());
  EXPECT_EQ(Names({"x = 1", "\r\ny = x"}), m_dialog.m_equations);
}

TEST_F(EquationsDlg, ExportIsOneBlockAndImportEndsAtAnEmptyLine) {
  const CString text = "x = a;\r\ny = \xE9 + c\r\n\r\nz = 1;";
  m_chooser.path = m_dir / "equations.txt";
  Run(text, [&] {
    Click(m_window, "Export...");
    EXPECT_EQ(text.Std(), ReadBytes(m_chooser.path));
    EXPECT_TRUE(m_chooser.file.save && m_chooser.file.asksToOverwrite);
    EXPECT_EQ("txt", m_chooser.file.defaultExtension);
    Click(m_window, "Parse");
    Click(m_window, "Import...");
    EXPECT_EQ("File containing 2 lines", Status());
    EXPECT_EQ("Text Files (*.txt)|*.txt||", m_chooser.file.filter);
    EXPECT_EQ("x = a;\ny = \u00E9 + c\n", m_edit->toPlainText().toStdString());
    m_edit->setFocus();
    EXPECT_EQ("", Status());
    Click(m_window, "Export...");
    EXPECT_EQ("x = a;\r\ny = \xE9 + c\r\n", ReadBytes(m_chooser.path)) << "bytes were not kept";
  });
}

TEST_F(EquationsDlg, FilesThatFailLeaveTheText) {
  const struct {
    const char *button, *file, *box;
  } kCases[] = {
      {"Import...", "none", "Message|An error ocurred when trying to open the file|30"},
      {"Export...", "none/x", "Message|An error ocurred when trying to save the file|30"},
      {"Import...", "", nullptr},  // given up
      {"Export...", "", nullptr},
  };
  for (const auto& c : kCases) {
    m_chooser.path = *c.file ? m_dir / c.file : CString();
    EXPECT_EQ(IDOK, Run("x = a", [&] {
                Click(m_window, c.button);
                EXPECT_EQ("", Status());
                Click(m_window, "OK");
              }));
    EXPECT_EQ("x = a", m_dialog.m_text);
    EXPECT_EQ(c.box ? std::vector<std::string>{c.box} : std::vector<std::string>(), m_prompter.Take());
  }
}

}  // namespace
}  // namespace vastra
