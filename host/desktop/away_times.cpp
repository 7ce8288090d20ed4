#include "host/desktop/away_times.h"

namespace vastra {

bool CAwayTimes::Take(const std::vector<CNodeState>& nodes, CMoment now) {
  bool isChanged = false;
  for (const CNodeState& state : nodes) {
    CNode& node = m_nodes[state.name];
    const CMoment since = MomentOf(state.since);
    isChanged |= node.isAway || !state.isUp;
    if (state.isUp) {
      if (node.isAway) node.times.back().to = std::max(since, node.times.back().from);
    } else if (node.isAway && node.times.back().from == since) {
      node.times.back().to = std::max(now, since);
    } else {
      node.times.push_back({since, std::max(now, since)});
      if (node.times.size() > kMost) node.times.pop_front();
    }
    node.isAway = !state.isUp;
  }
  return isChanged;
}

void CAwayTimes::End() {
  for (auto& [name, node] : m_nodes) node.isAway = false;
}

CAwayRanges CAwayTimes::ByVariable(const std::vector<CListedNode>& nodes) const {
  CAwayRanges ranges;
  for (const CListedNode& listed : nodes) {
    const auto node = m_nodes.find(listed.name);
    if (node == m_nodes.end() || node->second.times.empty()) continue;
    const std::vector<CMomentRange> times(node->second.times.begin(), node->second.times.end());
    for (const CString& variable : listed.variables) ranges[variable] = times;
    if (nodes.size() == 1) ranges[{}] = times;
  }
  return ranges;
}

}  // namespace vastra
