// The dialog of a driver module's form, and the dialog of a node without driver modules.
#include "vastra/screens/driver_form_dlg.h"

#include <gtest/gtest.h>

#include "tests/screens/driver_form.h"
#include "tests/screens/sheet_user.h"
#include "vastra/screens/driver_type_dlg.h"

namespace vastra {
namespace {

class DriverFormDlg : public testing::Test {
 protected:
  int Show(const CSteps& steps) {
    return m_user.Run([&] { return InstalledDriverHost()->ShowForm(&m_module.form); }, steps);
  }
  CModule m_module;
  CDriverForms m_forms;
  CSheetUser m_user;
};

TEST_F(DriverFormDlg, OnlyOkWritesTheValues) {
  for (const std::string end : {"Cancel", "OK"}) {
    EXPECT_EQ(
        Show({"Period?5 / Name?abc / Mode?fast / Period= -5  / Name=\u20AC\u20AC1 / Mode=slow / " + end}),
        end == "OK");
    EXPECT_EQ(m_module.State(), end == "OK" ? "-5|\u20AC\u20AC1|0" : "5|abc|1");
  }
}

TEST_F(DriverFormDlg, ARefusedValueKeepsTheDialogOpen) {
  const auto hasFocus = [](const char* field) {
    return [=](QWidget* window) { EXPECT_EQ(window->focusWidget()->accessibleName(), field); };
  };
  m_module.form.check = [](const DriverField* fields, int, void*) {
    return fields[0].number == 6 ? "" : "Period has to be 6.";
  };
  EXPECT_EQ(
      Show({"Help?How long. From -5 to 100. / Period=101 / Name=12345\u20AC / OK / "
            "!Pump|Period: enter a whole number from -5 to 100.|30 / Period?101",
            hasFocus("Period"), "Period=7 / OK / !Pump|Name: enter at most 7 bytes; the text has 8.|30",
            hasFocus("Name"), "Help?What for. / Name=new / OK / !Pump|Period has to be 6.|30",
            [&](QWidget*) { EXPECT_EQ(m_module.State(), "5|abc|1"); },
            [](QWidget* window) { Find<QComboBox>(window, "Mode")->setFocus(); }, "Help? / Period=6 / OK"}),
      1);
  EXPECT_EQ(m_module.State(), "6|new|1");
}

TEST_F(DriverFormDlg, FitsAllItsFieldsOnASmallScreen) {
  std::vector<DriverField> fields(40, m_module.fields[0]);
  m_module.form.fields = fields.data();
  m_module.form.fieldCount = 40;
  const auto look = [](QWidget* window) {
    EXPECT_LE(window->height(), 730) << "without its frame";
    EXPECT_LE(window->width(), 1280);
    QRegion taken;
    for (const QLineEdit* line : window->findChildren<QLineEdit*>()) {
      EXPECT_TRUE(window->rect().contains(line->geometry()));
      EXPECT_FALSE(taken.intersects(line->geometry()));
      taken += line->geometry();
    }
  };
  EXPECT_EQ(Show({look, "OK"}), 1);
}

TEST_F(DriverFormDlg, RefusesAnInvalidFormAndRestoresTheFormerHost) {
  EXPECT_EQ(InstalledDriverHost()->ShowForm(nullptr), 0);
  EXPECT_EQ(m_user.boxes.Take(),
            CTexts{"Driver|The driver's settings cannot be shown: the form is not valid.|30"});
  m_module.form.fieldCount = 0;
  EXPECT_EQ(Show({"OK"}), 1) << "a form without fields";
  const DriverHost own = {DRIVER_HOST_VERSION, nullptr};
  const DriverHost* forms = InstallDriverHost(&own);
  { const CDriverForms inner; }
  EXPECT_EQ(InstallDriverHost(forms), &own);
}

TEST(NoDrivers, ANodeCannotBeConfigured) {
  CSheetUser user;
  CDriverTypeDlg dialog;
  dialog.m_driverId = 5;
  dialog.m_name = "node";
  dialog.m_varNames = Names({"v"});
  const char* const kSteps =
      "!Driver not found! / Type of PLC :?No Drivers Avaliable / Configure PLC?- / OK / !";
  EXPECT_EQ(user.Run(dialog, {kSteps}), IDOK);
}

}  // namespace
}  // namespace vastra
