#include "vastra/console/console_conf_dlg.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr const char* kKinds[] = {"Fatal Error Messages", "Error Messages", "Warning Messages",
                                  "Notices Messages", "Debug Messages"};

// The marks in the order of the screen: "x" or "." for each box.
std::string Marks(QWidget* window) {
  std::string marks;
  for (const char* kind : kKinds) marks += Find<QCheckBox>(window, kind)->isChecked() ? 'x' : '.';
  for (const char* box : {"All Messages", "Always on Top", "Clear Console"})
    marks += Find<QCheckBox>(window, box)->isChecked() ? 'x' : '.';
  return marks;
}

std::string Values(const CConsoleConfDlg& dialog) {
  std::string values;
  for (const int value : {dialog.m_fatal, dialog.m_error, dialog.m_warning, dialog.m_notice, dialog.m_debug,
                          dialog.m_all, dialog.m_onTop, dialog.m_clear})
    values += value == 1 ? 'x' : value == 0 ? '.' : '?';
  return values;
}

TEST(ConsoleConfDialog, GivesEachBoxItsValueOnOkAndNoneOnCancel) {
  int CConsoleConfDlg::*const kValues[] = {&CConsoleConfDlg::m_fatal,   &CConsoleConfDlg::m_error,
                                           &CConsoleConfDlg::m_warning, &CConsoleConfDlg::m_notice,
                                           &CConsoleConfDlg::m_debug,   &CConsoleConfDlg::m_all,
                                           &CConsoleConfDlg::m_onTop,   &CConsoleConfDlg::m_clear};
  for (std::size_t i = 0; i < std::size(kValues); ++i) {
    std::string one(8, '.');
    one[i] = 'x';
    for (const bool ok : {true, false}) {
      CConsoleConfDlg dialog;
      dialog.*kValues[i] = 1;
      int result = 0;
      WhileModal([&] { result = dialog.DoModal(); },
                 [&](QWidget* window) {
                   EXPECT_EQ(one, Marks(window));
                   EXPECT_EQ("Console Configuration", window->windowTitle());
                   EXPECT_TRUE(Find<QGroupBox>(window, "Type of Messages Showed "));
                   Click(window, "Clear Console");
                   Click(window, ok ? "OK" : "Cancel");
                 });
      if (ok) one[7] = i == 7 ? '.' : 'x';
      EXPECT_EQ(ok ? IDOK : IDCANCEL, result);
      EXPECT_EQ(one, Values(dialog));
      if (ok) one[7] = i == 7 ? 'x' : '.';
    }
  }
}

TEST(ConsoleConfDialog, AllAndTheKindsExcludeEachOther) {
  CConsoleConfDlg dialog;
  dialog.m_fatal = dialog.m_debug = dialog.m_all = dialog.m_onTop = dialog.m_clear = 1;
  WhileModal([&] { dialog.DoModal(); },
             [](QWidget* window) {
               EXPECT_EQ("x...xxxx", Marks(window));  // only a click makes it so
               Click(window, "All Messages");
               EXPECT_EQ("......xx", Marks(window));
               for (const char* kind : kKinds) {
                 for (int direction = 0; direction < 2; ++direction) {
                   Click(window, "All Messages");
                   EXPECT_EQ(".....xxx", Marks(window)) << kind;
                   Click(window, kind);
                   EXPECT_FALSE(Find<QCheckBox>(window, "All Messages")->isChecked());
                   EXPECT_TRUE(Find<QCheckBox>(window, kind)->isChecked());
                   Find<QCheckBox>(window, "All Messages")->setChecked(true);
                   Click(window, kind);
                   EXPECT_EQ("......xx", Marks(window)) << kind;
                 }
               }
             });
}

TEST(ConsoleConfDialog, OnTopThatTheHostForbidsIsShownAndCannotBeClicked) {
  CConsoleConfDlg dialog;
  dialog.m_onTop = 1;
  dialog.EnableOnTop(0);
  WhileModal([&] { dialog.DoModal(); },
             [](QWidget* window) {
               Click(window, "Always on Top");
               EXPECT_EQ("......x.", Marks(window));
               Click(window, "OK");
             });
  EXPECT_EQ(1, dialog.m_onTop);
}

}  // namespace
}  // namespace vastra
