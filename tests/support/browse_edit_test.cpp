#include "vastra/support/browse_edit.h"

#include <gtest/gtest.h>

#include <QLineEdit>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr CControl kControls[] = {{CControl::edit, "Path:", {7, 7, 150, 14}},
                                  {CControl::edit, "Name:", {7, 27, 150, 14}}};
constexpr CDialogTemplate kTemplate = {"", {170, 50}, kControls};

TEST(BrowseDirEdit, KeepsTheChosenFolder) {
  CTestChooser chooser;
  CDialog dialog(kTemplate);
  dialog.Create();
  SECBrowseDirEdit path;
  path.SubclassDlgItem(dialog, "Path:");
  dialog.ShowWindow(SW_SHOW);
  path.SetWindowText("/logs");
  for (const char* chosen : {"", "/other"}) {  // the first search is cancelled
    chooser.path = chosen;
    Click(dialog.Widget(), "...");
    EXPECT_EQ(chooser.folder, "/logs") << "the search begins elsewhere";
    EXPECT_EQ(path.GetWindowText(), *chosen ? chosen : "/logs");
  }
  auto* edit = Find<QLineEdit>(dialog.Widget(), "Path:");
  const auto* button = Find<QAbstractButton>(dialog.Widget(), "...");
  EXPECT_TRUE(edit->rect().contains(button->geometry()));
  EXPECT_LE(edit->width() - edit->textMargins().right(), button->x()) << "the path runs below it";
  edit->setFocus();
  QTest::keyClick(edit, Qt::Key_Tab);
  EXPECT_EQ(dialog.Widget()->focusWidget(), button);
}

}  // namespace
}  // namespace vastra
