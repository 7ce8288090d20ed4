// The pages of the configuration sheet that have PLC nodes, in a sheet, and the driver that their dialogs
// find.
#pragma once

#include "tests/plc/scripted_driver.h"
#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/platform/module.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {

// The driver with a form. In front of it is one without.
constexpr int kSilent = 0, kScripted = 1;  // indexes

inline Script* g_script = nullptr;
// The form as a user works it: what it starts from shows in what comes out.
inline int AcceptForm(int isNew) {
  g_script->record.value1 += isNew ? 10 : 20;
  g_script->record.plcType = SCRIPTED_ID;
  g_script->record.text1 = g_script->record.text2 = "typed";  // those it was given are gone by now, or soon
  return 1;
}
inline int CancelForm(int isNew) { return AcceptForm(isNew), 0; }

class CScriptedDriver {
 public:
  CScriptedDriver() {
    const CDriverFactory& factory = *CDriverFactory::Instance();
    m_module = LoadModule(factory.GetPath() + "/" + factory.GetDrivers()[kScripted].m_fileName);
    Restart();
  }
  CScriptedDriver(const CScriptedDriver&) = delete;
  CScriptedDriver& operator=(const CScriptedDriver&) = delete;
  ~CScriptedDriver() { FreeModule(m_module); }
  void Restart() {
    g_script = reinterpret_cast<Script* (*)()>(FindExport(m_module, "FreshScript"))();
    g_script->functions.ShowConfig = AcceptForm;
  }

 private:
  CRecorder m_recorder;  // for the links
  HMODULE m_module;
};

inline CUser Select(int driver) {
  return [=](QWidget* window) {
    auto* combo = Find<QComboBox>(window, "Type of PLC :");
    QTest::keyClick(combo, driver == 0 ? Qt::Key_Home : Qt::Key_End);
    EXPECT_EQ(driver, combo->currentIndex());
  };
}

inline CUser AddVariable(const char* name) { return In("Insert  New Variable", Type("New Variable", name)); }

// Makes a node in its dialog: configured, called name, with the variables v and w.
inline CUser MakeNode(const char* name) {
  return All({Select(kScripted), Type("Name :", name),
              In("Variable List", All({AddVariable("v"), AddVariable("w")})), Press("Configure PLC")});
}

}  // namespace vastra
