#include "vastra/stages/chain.h"

namespace vastra {
namespace {

void Copy(const CStringArray& from, CStringList& to) {
  for (const CString& text : from) to.AddTail(text);
}

}  // namespace

int CChain::OpenHere(UINT mode) {
  const int opened = m_pHead->Open(m_configs, mode);
  DeleteAll(m_configs);
  return opened;
}

CLink* CChain::Open(UINT mode) {
  if (!OpenHere(mode)) m_pHead.reset();
  return m_pHead.release();
}

std::unique_ptr<CFileConfig> BufferConfig(const CStringArray& names) {
  auto config = std::make_unique<CFileConfig>();
  config->m_bufferOnly = 1;
  config->m_varNames = names;
  return config;
}

std::unique_ptr<CNameConfig> NameConfig(const CStringArray& names) {
  auto config = std::make_unique<CNameConfig>();
  config->m_names = names;
  return config;
}

std::unique_ptr<CConcatConfig> ConcatConfig(int firstCount) {
  auto config = std::make_unique<CConcatConfig>();
  config->m_firstCount = firstCount;
  return config;
}

std::unique_ptr<CEquatorConfig> EquatorConfig(const CStringArray& inputs, const CStringArray& equations,
                                              const CStringArray& outputs) {
  auto config = std::make_unique<CEquatorConfig>();
  Copy(inputs, config->m_inputVariables);
  Copy(equations, config->m_equations);
  Copy(outputs, config->m_outputVariables);
  return config;
}

CFileLink* AddEquations(CChain& chain, const char* equator, const char* buffer, const CStringArray& inputs,
                        const CStringArray& equations, const CStringArray& outputs) {
  CFileLink* const file = chain.Add(CFileLink::Create(nullptr), buffer, BufferConfig(outputs));
  chain.Add(CEquatorLink::Create(chain.Pass()), equator, EquatorConfig(inputs, equations, outputs));
  return file;
}

}  // namespace vastra
