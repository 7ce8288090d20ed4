#include "vastra/screens/scaler_rules.h"

#include <unordered_map>
#include <unordered_set>

namespace vastra {

CScalerConfig ScalerRowsOf(const CScalerConfig& scaler, const CStringArray& names) {
  std::unordered_map<std::string_view, const CScalerConfigNode*> known;
  for (const CScalerConfigNode& row : scaler.m_nodes) known.emplace(row.m_varName.View(), &row);
  CScalerConfig rows;
  for (const CString& name : names) {
    CScalerConfigNode unscaled;
    unscaled.m_varName = name;
    const auto found = known.find(name.View());
    rows.m_nodes.Add(found == known.end() ? unscaled : *found->second);
  }
  return rows;
}

CScalerConfig KeptScalerRows(const CScalerConfig& scaler, const CStringArray& names) {
  std::unordered_set<std::string_view> known;
  for (const CString& name : names) known.insert(name.View());
  CScalerConfig kept;
  for (const CScalerConfigNode& row : scaler.m_nodes)
    if (known.contains(row.m_varName.View())) kept.m_nodes.Add(row);
  return kept;
}

}  // namespace vastra
