#include "vastra/core/mapper_link.h"

namespace vastra {
namespace {

const CString kMapperTypeName = "CMapperLink";

// For each name the index of its first match in others, or -1.
void MapNames(const CStringArray& names, const CStringArray& others, CArray<int, int>& map) {
  map.RemoveAll();
  for (const CString& name : names) map.Add(FindIn(others, name));
}

// Sets to to one value for each entry of map: an index in from. An index outside from selects 0.0.
void Select(const CArray<float, float>& from, const CArray<int, int>& map, CArray<float, float>& to) {
  to.SetSize(map.GetSize());
  const auto size = static_cast<unsigned>(from.GetSize());
  for (int i = 0; i < map.GetSize(); ++i) to[i] = static_cast<unsigned>(map[i]) < size ? from[map[i]] : 0.0f;
}

}  // namespace

CMapperLink* CMapperLink::Create(CLink* component) {
  return component ? new CMapperLink(component) : nullptr;
}

CMapperLink::CMapperLink(CLink* component)
    : CComponentLink(kMapperTypeName, component, RUNTIME_CLASS(CNameConfig)) {}

const CFault* CMapperLink::Configure(CLinkConfig& config, UINT) {
  CStringArray inner;
  if (!m_pComponent->GetVarNames(inner)) return &fault::componentNames;
  m_names = static_cast<CNameConfig&>(config).m_names;
  MapNames(m_names, inner, m_readMap);
  MapNames(inner, m_names, m_writeMap);
  m_innerSample.m_values.SetSize(inner.GetSize());
  return nullptr;
}

int CMapperLink::Read(CLogSample& sample) {
  if (!BeginTransfer(functionRead)) return 0;
  if (!m_pComponent->Read(m_innerSample)) return Fail(functionRead, fault::componentRead);
  sample.m_time = m_innerSample.m_time;
  Select(m_innerSample.m_values, m_readMap, sample.m_values);
  return End(functionRead);
}

int CMapperLink::Write(CLogSample& sample) {
  if (!BeginTransfer(functionWrite)) return 0;
  m_innerSample.m_time = sample.m_time;
  Select(sample.m_values, m_writeMap, m_innerSample.m_values);
  if (!m_pComponent->Write(m_innerSample)) return Fail(functionWrite, fault::componentWrite);
  return End(functionWrite);
}

}  // namespace vastra
