#include "vastra/core/namer_link.h"

namespace vastra {
namespace {
const CString kNamerTypeName = "CNamerLink";
constexpr CFault kBadSample = {severityError, "Sample is not valid."};
}  // namespace

CNamerLink* CNamerLink::Create(CLink* component) { return component ? new CNamerLink(component) : nullptr; }

CNamerLink::CNamerLink(CLink* component)
    : CComponentLink(kNamerTypeName, component, RUNTIME_CLASS(CNameConfig)) {}

const CFault* CNamerLink::Configure(CLinkConfig& config, UINT) {
  m_names = static_cast<CNameConfig&>(config).m_names;
  return nullptr;
}

int CNamerLink::Read(CLogSample& sample) {
  if (!BeginTransfer(functionRead)) return 0;
  if (!m_pComponent->Read(sample)) return Fail(functionRead, fault::componentRead);
  if (sample.m_values.GetSize() != m_names.GetSize()) return Fail(functionRead, kBadSample);
  return End(functionRead);
}

int CNamerLink::Write(CLogSample& sample) {
  if (!BeginTransfer(functionWrite)) return 0;
  if (sample.m_values.GetSize() != m_names.GetSize()) return Fail(functionWrite, kBadSample);
  if (!m_pComponent->Write(sample)) return Fail(functionWrite, fault::componentWrite);
  return End(functionWrite);
}

}  // namespace vastra
