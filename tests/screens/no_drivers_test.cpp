// The dialog of a PLC node without driver modules.
#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "vastra/screens/driver_type_dlg.h"

namespace vastra {
namespace {

TEST(NoDrivers, ANodeCanNeitherBeConfiguredNorAdded) {
  for (const bool isNew : {true, false}) {
    CSheetUser user;
    CDriverTypeDlg dialog;
    if (!isNew) dialog.m_driverId = 5;
    dialog.m_name = "node";
    dialog.m_varNames = Names({"v"});
    const std::string steps = "Type of PLC :?No Drivers Avaliable / Configure PLC?- / OK";
    const CSteps all = {isNew ? "! / " + steps + " / !The PLC hasn't been configured"
                              : "!Driver not found! / " + steps + " / !"};
    EXPECT_EQ(user.Run(dialog, all), isNew ? IDCANCEL : IDOK);
  }
}

}  // namespace
}  // namespace vastra
