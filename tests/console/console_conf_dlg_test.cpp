#include "vastra/console/console_conf_dlg.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>

#include "tests/support/windows.h"

namespace vastra {
namespace {

// In the order of the screen. The strings below have an "x" or a "." for each box.
const struct {
  const char* caption;
  int CConsoleConfDlg::*value;
} kBoxes[] = {
    {"Fatal Error Messages", &CConsoleConfDlg::m_fatal}, {"Error Messages", &CConsoleConfDlg::m_error},
    {"Warning Messages", &CConsoleConfDlg::m_warning},   {"Notices Messages", &CConsoleConfDlg::m_notice},
    {"Debug Messages", &CConsoleConfDlg::m_debug},       {"All Messages", &CConsoleConfDlg::m_all},
    {"Always on Top", &CConsoleConfDlg::m_onTop},        {"Clear Console", &CConsoleConfDlg::m_clear},
};

// Runs dialog with the values of before, clicks boxes by number, then the button end. Returns the marks
// shown.
std::string Work(CConsoleConfDlg& dialog, const char* before, const char* clicks, const char* end) {
  for (int i = 0; i < 8; ++i) dialog.*kBoxes[i].value = before[i] == 'x';
  std::string shown;
  const auto user = [&](QWidget* window) {
    EXPECT_EQ(window->windowTitle(), "Console Configuration");
    EXPECT_TRUE(Find<QGroupBox>(window, "Type of Messages Showed "));
    for (; *clicks; ++clicks) Click(window, kBoxes[*clicks - '1'].caption);
    for (const auto& box : kBoxes) shown += Find<QCheckBox>(window, box.caption)->isChecked() ? 'x' : '.';
    Click(window, end);
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), *end == 'O' ? IDOK : IDCANCEL); }, user);
  return shown;
}

std::string Values(const CConsoleConfDlg& dialog) {
  std::string values;
  for (const auto& box : kBoxes) values += dialog.*box.value == 1 ? 'x' : dialog.*box.value == 0 ? '.' : '?';
  return values;
}

TEST(ConsoleConfDlg, AllAndTheKindsExcludeEachOtherAndOnlyOkSetsTheValues) {
  const struct {
    const char *before, *clicks, *after;
  } kCases[] = {
      {"x.x.x...", "", "x.x.x..."},  {".x.x....", "78", ".x.x..xx"},
      {"x...xxxx", "", "x...xxxx"},  // only a click excludes
      {"xxxxx.xx", "6", ".....xxx"}, {"xxxxxxxx", "6", "......xx"},
      {".....xxx", "1", "x.....xx"}, {".....xxx", "2", ".x....xx"},
      {".....xxx", "3", "..x...xx"}, {".....xxx", "4", "...x..xx"},
      {".....xxx", "5", "....x.xx"}, {"x....x..", "1", "........"},
      {"....xx..", "5", "........"},
  };
  for (const auto& c : kCases) {
    CConsoleConfDlg dialog;
    EXPECT_EQ(Values(dialog), "........");
    EXPECT_EQ(Work(dialog, c.before, c.clicks, "Cancel"), c.after);
    EXPECT_EQ(Values(dialog), c.before);
    EXPECT_EQ(Work(dialog, c.before, c.clicks, "OK"), c.after);
    EXPECT_EQ(Values(dialog), c.after);
  }
}

TEST(ConsoleConfDlg, ForbiddenOnTopIsShownAndCannotBeClicked) {
  CConsoleConfDlg dialog;
  dialog.EnableOnTop(0);
  EXPECT_EQ(Work(dialog, "......x.", "7", "OK"), "......x.");
  EXPECT_EQ(Values(dialog), "......x.");
}

}  // namespace
}  // namespace vastra
