#include "vastra/equations/equator_link.h"

namespace vastra {
namespace {

const CString kEquatorTypeName = "CEquatorLink";
constexpr CFault kNotConfigured = {severityFatal, "Linker could not configure itself."};
constexpr CFault kNoComponentToWrite = {severityError, fault::noComponent.text};

CStringArray ToArray(const CStringList& list) {
  CStringArray array;
  for (const CString& text : list) array.Add(text);
  return array;
}

}  // namespace

IMPLEMENT_DYNCREATE(CEquatorConfig, CLinkConfig)

CEquatorLink* CEquatorLink::Create(CLink* component) {
  return component ? new CEquatorLink(component) : nullptr;
}

CEquatorLink::CEquatorLink(CLink* component)
    : CComponentLink(kEquatorTypeName, component, RUNTIME_CLASS(CEquatorConfig)) {}

const CFault* CEquatorLink::Configure(CLinkConfig& config, UINT) {
  const auto& wanted = static_cast<CEquatorConfig&>(config);
  CStringArray inputs = ToArray(wanted.m_inputVariables);
  if (inputs.IsEmpty() && !m_pComponent->GetVarNames(inputs)) return &kNotConfigured;
  if (m_equator.Compile(inputs, ToArray(wanted.m_equations)).statement) return &kNotConfigured;

  m_outputVariables = ToArray(wanted.m_outputVariables);
  m_outputMap.RemoveAll();
  for (const CString& name : m_outputVariables) m_outputMap.Add(m_equator.FindValue(name));
  m_undefinedTexts.SetSize(m_equator.GetCount());
  for (int i = 0; i < m_equator.GetCount(); ++i)
    m_undefinedTexts[i].Format("Result undefined for variable %s",
                               static_cast<const char*>(m_equator.GetTarget(i)));
  return nullptr;
}

void CEquatorLink::RunEquations(char function, const CLogSample& in, CLogSample& out) {
  m_equator.Run(in.m_values);
  for (const int statement : m_equator.GetUndefined())
    Send(function, {severityNotice, m_undefinedTexts[statement]});
  out.m_time = in.m_time;
  out.m_values.SetSize(m_outputMap.GetSize());
  for (int i = 0; i < m_outputMap.GetSize(); ++i)
    out.m_values[i] = m_equator.GetValue(in.m_values, m_outputMap[i]);
}

int CEquatorLink::Write(CLogSample& sample) {
  if (!BeginTransfer(functionWrite, kNoComponentToWrite)) return 0;
  RunEquations(functionWrite, sample, m_innerSample);
  if (!m_pComponent->Write(m_innerSample)) return Fail(functionWrite, fault::componentWrite);
  return End(functionWrite);
}

int CEquatorLink::Read(CLogSample& sample) {
  if (!BeginTransfer(functionRead)) return 0;
  if (!m_pComponent->Read(m_innerSample)) return Fail(functionRead, fault::componentRead);
  RunEquations(functionRead, m_innerSample, sample);
  return End(functionRead);
}

}  // namespace vastra
