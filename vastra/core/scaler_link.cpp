#include "vastra/core/scaler_link.h"

namespace vastra {
namespace {

const CString kScalerTypeName = "CScalerLink";
constexpr CFault kNoNames = {severityError, "Could not get variable names from component."};
}  // namespace

CScalerLink* CScalerLink::Create(CLink* component) {
  return component ? new CScalerLink(component) : nullptr;
}

CScalerLink::CScalerLink(CLink* component)
    : CComponentLink(kScalerTypeName, component, RUNTIME_CLASS(CScalerConfig)) {}

const CFault* CScalerLink::Configure(CLinkConfig& config, UINT) {
  m_nodes.RemoveAll();
  CStringArray names;
  if (!m_pComponent->GetVarNames(names)) return &kNoNames;
  for (const CScalerConfigNode& rule : static_cast<CScalerConfig&>(config).m_nodes)
    if (const int index = FindIn(names, rule.m_varName); index >= 0)
      m_nodes.Add(
          {static_cast<unsigned>(index), rule.m_clamping, rule.m_scale, rule.m_lowLimit, rule.m_highLimit});
  return nullptr;
}

int CScalerLink::GetVarNames(CStringArray& names) {
  Begin(functionGetVarNames);
  if (!m_pComponent) return Fail(functionGetVarNames, fault::noComponent);
  const int result = m_pComponent->GetVarNames(names);
  End(functionGetVarNames);
  return result;
}

// The product of two floats is exact in double, so the limits see it before it is rounded. NaN is not at or
// above the low limit, so it becomes the low limit.
inline float CScalerLink::Scaled(float value, const CRule& rule) {
  if (!rule.clamping) return value * rule.scale;
  const double result = static_cast<double>(value) * static_cast<double>(rule.scale);
  if (result > static_cast<double>(rule.highLimit)) return rule.highLimit;
  return result >= static_cast<double>(rule.lowLimit) ? static_cast<float>(result) : rule.lowLimit;
}

void CScalerLink::Scale(CArray<float, float>& values) const {
  float* const data = values.GetData();
  const auto size = static_cast<unsigned>(values.GetSize());
  for (const CRule& rule : m_nodes)
    if (rule.index < size) data[rule.index] = Scaled(data[rule.index], rule);
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
