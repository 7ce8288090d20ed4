// The driver that the dialogs of PLC nodes find, and the steps that make a node with it.
#pragma once

#include "tests/plc/scripted_driver.h"
#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/platform/module.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {

inline Script* g_script = nullptr;
// A form that the user accepts. Its result shows the values it was opened with.
inline int AcceptForm(int isNew) {
  g_script->record.value1 += isNew ? 10 : 20;
  g_script->record.plcType = SCRIPTED_ID;
  g_script->record.text1 = g_script->record.text2 = "typed";  // the texts it was given may be gone by now
  return 1;
}
inline int CancelForm(int isNew) { return AcceptForm(isNew), 0; }

// The module "Scripted"; the one before it, "Silent", has no form.
class CScriptedDriver {
 public:
  CScriptedDriver() {
    const CDriverFactory& factory = *CDriverFactory::Instance();
    m_module = LoadModule(factory.GetPath() + "/" + factory.GetDrivers()[1].m_fileName);
    Restart();
  }
  CScriptedDriver(const CScriptedDriver&) = delete;
  CScriptedDriver& operator=(const CScriptedDriver&) = delete;
  ~CScriptedDriver() { FreeModule(m_module); }
  void Restart(int (*form)(int) = AcceptForm) {
    g_script = reinterpret_cast<Script* (*)()>(FindExport(m_module, "FreshScript"))();
    g_script->functions.ShowConfig = form;
  }

 private:
  CRecorder m_recorder;  // of the messages of links
  HMODULE m_module;
};

// In the dialog of a node: gives it a driver, a name and the variables v and w, and ends with end.
inline CSteps MakeNode(const std::string& name, const char* end = "OK") {
  const std::string insert = "Insert  New Variable / New Variable=";
  return {"Type of PLC :=Scripted / Name :=" + name + " / Variable List / " + insert + "v / OK / " + insert +
          "w / OK / OK / Configure PLC / " + end};
}

}  // namespace vastra
