#include "host/common/configuration.h"

namespace vastra {

void CConfiguration::Fields(CFieldWalk& walk) {
  walk.Object("input", m_input);
  m_outputs.Fields(walk);
  m_summaries.Fields(walk);
  walk.Object("plcWrite", m_plcWrite);
  walk.Object("smart", m_smart);
  walk.Object("trend", m_trend);
  walk.Named("variables", m_variables);
}

void CConfiguration::Report(CFile& file) {
  CArchive ar(&file, CArchive::store);
  m_input.TextSerialize(ar);
  m_outputs.TextSerialize(ar);
  m_summaries.TextSerialize(ar);
  m_plcWrite.TextSerialize(ar);
  m_smart.TextSerialize(ar);
  m_trend.TextSerialize(ar);
  ar.Close();
}

}  // namespace vastra
