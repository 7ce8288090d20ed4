#include "vastra/core/link.h"

#include <typeinfo>

#include "vastra/core/line_record.h"

namespace vastra {

IMPLEMENT_DYNAMIC(CLinkConfig, CObject)

CMessenger* CLink::m_pMessenger = nullptr;
CMessenger* CLink::m_pPlainMessenger = nullptr;

void CLink::SetMessenger(CMessenger* messenger) {
  m_pMessenger = messenger;
  m_pPlainMessenger = messenger && typeid(*messenger) == typeid(CMessenger) ? messenger : nullptr;
}

void CLink::Send(char function, const CFault& fault) const {
  if (CLineRecord* record = CLineRecord::OfThisThread())
    record->Add(*m_pTypeName, m_name, function, fault);
  else
    m_pMessenger->Send(*m_pTypeName, m_name, function, fault.severity, fault.text);
}

int CLink::Comm(CLogSample& sample) {
  if (!m_pComponent || m_mode == modeNotOpened) return 0;
  return m_mode == modeRead ? Read(sample) : Write(sample);
}

void CLink::BeginOpen() {
  Begin(functionOpen);
  if (m_mode != modeNotOpened) Close();
}

std::unique_ptr<CLinkConfig> CLink::TakeConfig(CTypedPtrList<CObList, CLinkConfig*>& configs,
                                               const CRuntimeClass& wanted, const CFault& ifNull) const {
  if (configs.IsEmpty()) return Fail(functionOpen, fault::noConfigList), nullptr;
  std::unique_ptr<CLinkConfig> config(configs.RemoveHead());
  if (!config) return Fail(functionOpen, ifNull), nullptr;
  if (config->IsKindOf(wanted)) return config;
  config.reset();
  return Fail(functionOpen, fault::badConfig), nullptr;
}

CComponentLink::~CComponentLink() {
  CComponentLink::Close();
  delete m_pComponent;
}

void CComponentLink::Close() {
  Begin(functionClose);
  if (m_pComponent) m_pComponent->Close();
  m_mode = modeNotOpened;
  End(functionClose);
}

int CComponentLink::Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) {
  BeginOpen();
  if (!m_pComponent) return Fail(functionOpen, fault::noComponent);
  std::unique_ptr<CLinkConfig> config = TakeConfig(configs, m_configClass, fault::badConfig);
  if (!config) return 0;
  if (!m_pComponent->Open(configs, mode)) {
    config.reset();
    return Fail(functionOpen, fault::componentOpen);
  }
  const CFault* failed = Configure(*config, mode);
  config.reset();
  if (failed) return Fail(functionOpen, *failed);
  m_mode = mode;
  return End(functionOpen);
}

}  // namespace vastra
