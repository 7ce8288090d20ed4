#include "vastra/console/console_conf_dlg.h"

#include <QCheckBox>
#include <QGroupBox>

#include "tests/support/windows.h"

namespace vastra {
namespace {

// In the order of the screen. The strings below have a 1 or a 0 for each box.
const std::pair<const char*, int CConsoleConfDlg::*> kBoxes[] = {
    {"Fatal Error Messages", &CConsoleConfDlg::m_fatal}, {"Error Messages", &CConsoleConfDlg::m_error},
    {"Warning Messages", &CConsoleConfDlg::m_warning},   {"Notices Messages", &CConsoleConfDlg::m_notice},
    {"Debug Messages", &CConsoleConfDlg::m_debug},       {"All Messages", &CConsoleConfDlg::m_all},
    {"Always on Top", &CConsoleConfDlg::m_onTop},        {"Clear Console", &CConsoleConfDlg::m_clear},
};

// Runs dialog with values; clicks boxes by number, then end. Returns the marks shown, and the values after.
std::string Use(CConsoleConfDlg& dialog, const char* values, const std::string& clicks, const char* end) {
  for (int i = 0; i < 8; ++i) dialog.*kBoxes[i].second = values[i] - '0';
  std::string shown;
  const auto user = [&](QWidget* window) {
    EXPECT_EQ(window->windowTitle(), "Console Configuration");
    EXPECT_TRUE(Find<QGroupBox>(window, "Type of Messages Showed "));
    for (const char click : clicks) Click(window, kBoxes[click - '1'].first);
    for (const auto& [caption, value] : kBoxes)
      shown += Find<QCheckBox>(window, caption)->isChecked() ? '1' : '0';
    Click(window, end);
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), *end == 'O' ? IDOK : IDCANCEL); }, user);
  shown += " ";
  for (const auto& [caption, value] : kBoxes) shown += std::to_string(dialog.*value);
  return shown;
}

TEST(ConsoleConfDlg, AllAndTheKindsExcludeEachOtherAndOnlyOkSetsTheValues) {
  const char* const kCases[][3] = {
      {"01010000", "78", "01010011"}, {"10001111", "", "10001111"},  // only a click excludes
      {"11111111", "6", "00000011"},  {"00000111", "1", "10000011"}, {"00000111", "2", "01000011"},
      {"00000111", "3", "00100011"},  {"00000111", "4", "00010011"}, {"00000111", "5", "00001011"},
      {"11111011", "6", "00000111"},  {"10000100", "1", "00000000"}};
  for (const auto& [before, clicks, after] : kCases) {
    CConsoleConfDlg dialog;
    EXPECT_EQ(Use(dialog, before, clicks, "Cancel"), std::string(after) + " " + before);
    EXPECT_EQ(Use(dialog, before, clicks, "OK"), std::string(after) + " " + after);
  }
  CConsoleConfDlg dialog;
  dialog.EnableOnTop(0);
  EXPECT_EQ(Use(dialog, "00000010", "7", "OK"), "00000010 00000010") << "shown, but it cannot be clicked";
}

}  // namespace
}  // namespace vastra
