// The dialog of a PLC node where there is no driver.
#include <gtest/gtest.h>

#include <QComboBox>

#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/screens/driver_type_dlg.h"

namespace vastra {
namespace {

TEST(NoDrivers, ANodeCanNeitherBeConfiguredNorAdded) {
  using CTexts = std::vector<std::string>;
  for (const bool isNew : {true, false}) {
    CTestPrompter prompter;
    CDriverTypeDlg dialog;
    if (!isNew) dialog.m_driverId = 5;
    dialog.m_name = "node";
    dialog.m_varNames = Names({"v"});
    WhileModal([&] { EXPECT_EQ(isNew ? IDCANCEL : IDOK, dialog.DoModal()); },
               [&](QWidget* window) {
                 EXPECT_EQ(isNew ? CTexts() : CTexts{"|Driver not found!|30"}, prompter.Take());
                 auto* combo = Find<QComboBox>(window, "Type of PLC :");
                 EXPECT_EQ(1, combo->count());
                 EXPECT_EQ("No Drivers Avaliable", combo->currentText().toStdString());
                 EXPECT_FALSE(Find<QAbstractButton>(window, "Configure PLC")->isEnabled());
                 Click(window, "OK");
               });
    EXPECT_EQ(isNew ? CTexts{"|The PLC hasn't been configured|30"} : CTexts(), prompter.Take());
  }
}

}  // namespace
}  // namespace vastra
