#include "vastra/stages/log_smart.h"

#include "vastra/core/concat_link.h"
#include "vastra/stages/chain.h"

namespace vastra {
namespace {

int FindIndex(const CStringArray& names, const CString& name, UINT& index) {
  const int place = FindIn(names, name);
  index = place < 0 ? 0 : static_cast<UINT>(place);
  return place >= 0;
}

}  // namespace

int CLogSmart::Open(CStringArray& names) {
  if (m_open) Close();
  if (!OpenInput(names) || !OpenOutput(names) || !ClearOutputVars()) return Close(), 0;
  m_open = 1;
  return 1;
}

bool CLogSmart::OpenInput(const CStringArray& names) {
  CChain chain;
  CFileLink* const buffer = AddEquations(chain, "SmartInputEquatorLink", "SmartInputFileLink", names,
                                         m_options.m_equations, m_options.m_inputVars);
  m_pInputEquatorLink = chain.Open(CLink::modeWrite);
  if (m_pInputEquatorLink) m_pInputFileLink = buffer;
  return m_pInputEquatorLink;
}

// The chain is only read; the stage writes directly to its two buffers.
bool CLogSmart::OpenOutput(const CStringArray& names) {
  CChain chain;
  CFileLink* const output =
      chain.Add(CFileLink::Create(nullptr), "SmartOutputFileLink", BufferConfig(m_options.m_outputVars));
  std::unique_ptr<CLink> second = chain.TakeHead();
  CFileLink* const copy = chain.Add(CFileLink::Create(nullptr), "SmartCopyFileLink", BufferConfig(names));
  chain.Add(CConcatLink::Create(chain.Pass(), second.release()), "SmartOutputConcatLink", ConcatConfig(1));
  m_pOutputConcatLink = chain.Open(CLink::modeRead);
  if (!m_pOutputConcatLink) return false;
  m_pOutputFileLink = output;
  m_pCopyFileLink = copy;
  return true;
}

bool CLogSmart::ClearOutputVars() {
  CLogSample zeros;
  zeros.m_values.SetSize(m_options.m_outputVars.GetSize());
  return m_pOutputFileLink->Write(zeros);
}

void CLogSmart::Close() {
  delete m_pOutputConcatLink;
  delete m_pInputEquatorLink;
  m_pOutputConcatLink = m_pInputEquatorLink = nullptr;
  m_pOutputFileLink = m_pCopyFileLink = m_pInputFileLink = nullptr;
  m_open = 0;
}

int CLogSmart::Write(CLogSample& sample) {
  return m_open && m_pInputEquatorLink->Write(sample) && m_pCopyFileLink->Write(sample);
}

int CLogSmart::Read(CLogSample& sample) { return m_open && m_pOutputConcatLink->Read(sample) > 0; }

int CLogSmart::GetVarNames(CStringArray& names) {
  return m_open ? m_pOutputConcatLink->GetVarNames(names) : 0;
}

int CLogSmart::PreGetVarNames(CStringArray& result, CStringArray& names) {
  if (m_open || !Open(names)) return 0;
  const int given = GetVarNames(result);
  Close();
  return given;
}

int CLogSmart::GetInputIndex(CString& name, UINT& index) const {
  return FindIndex(m_options.m_inputVars, name, index);
}

int CLogSmart::GetOutputIndex(CString& name, UINT& index) const {
  return FindIndex(m_options.m_outputVars, name, index);
}

int CLogSmart::ReadInputVar(UINT index, float& value) {
  return m_open ? m_pInputFileLink->ReadVariable(index, value) : 0;
}

int CLogSmart::ReadOutputVar(UINT index, float& value) {
  return m_open ? m_pOutputFileLink->ReadVariable(index, value) : 0;
}

int CLogSmart::WriteOutputVar(UINT index, float value) {
  return m_open ? m_pOutputFileLink->WriteVariable(index, value) : 0;
}

int CLogSmart::GetSAInputVars(CStringArray& names) {
  return m_open ? m_pInputFileLink->GetVarNames(names) : 0;
}

int CLogSmart::GetSAOutputVars(CStringArray& names) {
  return m_open ? m_pOutputFileLink->GetVarNames(names) : 0;
}

int CLogSmart::GetSAInputVarsNotConnected(CStringArray& names) const {
  names = m_options.m_inputVars;
  return 1;
}

int CLogSmart::GetSAOutputVarsNotConnected(CStringArray& names) const {
  names = m_options.m_outputVars;
  return 1;
}

}  // namespace vastra
