#include "vastra/core/concat_link.h"

namespace vastra {
namespace {
const CString kConcatTypeName = "CConcatLink";
constexpr CFault kReadsOnly = {severityFatal, "Cannot open CConcatLink on write mode."};
constexpr CFault kNoWrite = {severityError, "CConcatLink cannot be used in write mode."};
constexpr CFault kNoComponents = {severityFatal, "Linker does not have its components."};
constexpr CFault kDuplicated = {severityFatal, "Variable names were duplicated."};
}  // namespace

IMPLEMENT_DYNCREATE(CConcatConfig, CLinkConfig)

CConcatLink* CConcatLink::Create(CLink* first, CLink* second) {
  return first && second ? new CConcatLink(first, second) : nullptr;
}

CConcatLink::CConcatLink(CLink* first, CLink* second)
    : CLink(kConcatTypeName, first), m_pSecondComponent(second) {}

CConcatLink::~CConcatLink() {
  CConcatLink::Close();
  delete m_pComponent;
  delete m_pSecondComponent;
}

void CConcatLink::Close() {
  Begin(functionClose);
  if (m_pComponent) m_pComponent->Close();
  if (m_pSecondComponent) m_pSecondComponent->Close();
  m_mode = modeNotOpened;
  End(functionClose);
}

int CConcatLink::Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) {
  BeginOpen();
  if (!m_pComponent || !m_pSecondComponent) return Fail(functionOpen, fault::noComponent);
  if (mode == modeWrite) return Fail(functionOpen, kReadsOnly);
  std::unique_ptr<CLinkConfig> config = TakeConfig(configs, RUNTIME_CLASS(CConcatConfig), fault::badConfig);
  if (!config) return 0;
  const int firstCount = static_cast<CConcatConfig&>(*config).m_firstCount;
  const CFault* failed = OpenComponents(configs, mode, firstCount);
  config.reset();
  if (!failed) failed = JoinNames();
  if (failed) return Fail(functionOpen, *failed);
  m_mode = mode;
  return End(functionOpen);
}

const CFault* CConcatLink::OpenComponents(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode,
                                          int firstCount) {
  if (configs.GetCount() < firstCount) return &fault::noConfigList;
  CLinkConfigList firstConfigs;
  for (int i = 0; i < firstCount; ++i) firstConfigs.AddTail(configs.RemoveHead());
  if (!m_pComponent->Open(firstConfigs, mode) || !m_pSecondComponent->Open(configs, mode))
    return &fault::componentOpen;
  return nullptr;
}

const CFault* CConcatLink::JoinNames() {
  CStringArray first, second;
  if (!m_pComponent->GetVarNames(first) || !m_pSecondComponent->GetVarNames(second))
    return &fault::componentNames;
  for (const CString& name : first)
    if (FindIn(second, name) >= 0) return &kDuplicated;
  m_names = first;
  m_names.Append(second);
  return nullptr;
}

int CConcatLink::Read(CLogSample& sample) {
  Begin(functionRead);
  if (!m_pComponent || !m_pSecondComponent) return Fail(functionRead, kNoComponents);
  if (m_mode == modeNotOpened) return Fail(functionRead, fault::notOpened);
  if (!m_pComponent->Read(sample)) return Fail(functionRead, fault::componentRead);
  if (!m_pSecondComponent->Read(m_secondSample)) return Fail(functionRead, fault::componentRead);
  sample.m_values.Append(m_secondSample.m_values);
  return End(functionRead);
}

int CConcatLink::Write(CLogSample&) { return Fail(functionWrite, kNoWrite); }

}  // namespace vastra
