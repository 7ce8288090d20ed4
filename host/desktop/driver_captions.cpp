#include "host/desktop/driver_captions.h"

#include "vastra/plc/driver_call.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/driver_host.h"
#include "vastra/screens/driver_form_rules.h"

namespace vastra {
namespace {

using CCaptions = std::map<CString, CString>;

constexpr int kMostCaptions = 40;

CCaptions* captured = nullptr;  // while a driver shows its form

int CaptureForm(const DriverForm* form) {
  if (!captured || !form || !form->fields || form->fieldCount < 0 || form->fieldCount > kMostCaptions)
    return 0;
  for (int i = 0; i < form->fieldCount; ++i) {
    const CString help = CopyDriverText(form->fields[i].help), name = CopyDriverText(form->fields[i].name);
    const CString setting = SettingOf(help);
    if (!setting.IsEmpty() && !name.IsEmpty()) captured->emplace(setting, name);
  }
  return 0;
}

constexpr DriverHost kCapturingHost = {DRIVER_HOST_VERSION, CaptureForm};

// The form of a driver is given to the host, which cancels it. A driver that has a dialog of its own instead
// is not asked.
CCaptions CaptionsOf(HMODULE module) {
  CCaptions captions;
  DriverHeader header = {};
  if (!AskHeader(module, header) || !header.functions || !header.functions->ShowConfig) return captions;
  if (!FindExport(module, "SetDriverHost")) return captions;
  captured = &captions;
  GiveHost(module, &kCapturingHost);
  AskDriver(0, [&] { return header.functions->ShowConfig(1); });
  GiveHost(module, InstalledDriverHost());
  captured = nullptr;
  return captions;
}

CCaptions CaptionsOf(int plcType) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const int index = factory.GetDriverIndex(plcType);
  if (index < 0) return {};
  const HMODULE module = LoadModule(factory.GetDrivers()[index].m_loadPath);
  if (!module) return {};
  CCaptions captions = CaptionsOf(module);
  FreeModule(module);
  return captions;
}

}  // namespace

CString CDriverCaptions::Find(int plcType, const CString& field) {
  const auto [captions, isNew] = m_captions.try_emplace(plcType);
  if (isNew) captions->second = CaptionsOf(plcType);
  const auto found = captions->second.find(field);
  return found == captions->second.end() ? CString() : found->second;
}

}  // namespace vastra
