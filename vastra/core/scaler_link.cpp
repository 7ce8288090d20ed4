#include "vastra/core/scaler_link.h"

namespace vastra {
namespace {

const CString kTypeName = "CScalerLink";
constexpr CFault kNoNames = {severityError, "Could not get variable names from component."};

// The product of two floats is exact in double, so the limits see it before it is rounded. NaN is not at or
// above the low limit and becomes it.
float Scaled(float value, const CScalerConfigNode& rule) {
  const double result = static_cast<double>(value) * static_cast<double>(rule.m_scale);
  if (!rule.m_clamping) return static_cast<float>(result);
  if (result > static_cast<double>(rule.m_highLimit)) return rule.m_highLimit;
  return result >= static_cast<double>(rule.m_lowLimit) ? static_cast<float>(result) : rule.m_lowLimit;
}

}  // namespace

CScalerLink* CScalerLink::Create(CLink* component) {
  return component ? new CScalerLink(component) : nullptr;
}

CScalerLink::CScalerLink(CLink* component)
    : CComponentLink(kTypeName, component, RUNTIME_CLASS(CScalerConfig)) {}

const CFault* CScalerLink::Configure(CLinkConfig& config, UINT) {
  m_nodes = static_cast<CScalerConfig&>(config).m_nodes;
  m_indices.RemoveAll();
  CStringArray names;
  if (!m_pComponent->GetVarNames(names)) return &kNoNames;
  for (const CScalerConfigNode& rule : m_nodes) m_indices.Add(FindIn(names, rule.m_varName));
  return nullptr;
}

int CScalerLink::GetVarNames(CStringArray& names) {
  Begin(functionGetVarNames);
  if (!m_pComponent) return Fail(functionGetVarNames, fault::noComponent);
  const int result = m_pComponent->GetVarNames(names);
  End(functionGetVarNames);
  return result;
}

void CScalerLink::Scale(CArray<float, float>& values) const {
  const auto size = static_cast<unsigned>(values.GetSize());
  for (int i = 0; i < m_indices.GetSize(); ++i) {
    const int index = m_indices[i];
    if (static_cast<unsigned>(index) < size) values[index] = Scaled(values[index], m_nodes[i]);
  }
}

int CScalerLink::Read(CLogSample& sample) {
  if (!BeginTransfer(functionRead)) return 0;
  if (!m_pComponent->Read(sample)) return Fail(functionRead, fault::componentRead);
  Scale(sample.m_values);
  return End(functionRead);
}

int CScalerLink::Write(CLogSample& sample) {
  if (!BeginTransfer(functionWrite)) return 0;
  Scale(sample.m_values);
  if (!m_pComponent->Write(sample)) return Fail(functionWrite, fault::componentWrite);
  return End(functionWrite);
}

}  // namespace vastra
