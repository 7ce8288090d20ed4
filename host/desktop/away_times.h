// CAwayTimes: when the nodes of a logger did not answer, as far as the desktop has seen it. If no node
// answers there are no rows, so that the logs do not say it.
#pragma once

#include <deque>
#include <map>
#include <vector>

#include "vastra/charts/chart_state_rules.h"
#include "vastra/charts/variable_list.h"
#include "vastra/plc/node_link.h"

namespace vastra {

class CAwayTimes {
 public:
  static constexpr std::size_t kMost = 1000;  // of a node; the oldest ones are forgotten

  // The states of the nodes now. True: something has changed, as it does at each call while a node is away.
  bool Take(const std::vector<CNodeState>& nodes, CMoment now);
  // The run has ended.
  void End();
  void Clear() { m_nodes.clear(); }

  // The times by variable. nodes: with their variables. Without a name: of the variables of no node, if there
  // is one node alone.
  CAwayRanges ByVariable(const std::vector<CListedNode>& nodes) const;

 private:
  struct CNode {
    std::deque<CMomentRange> times;  // in order
    bool isAway = false;             // the last one goes on
  };
  std::map<CString, CNode> m_nodes;
};

}  // namespace vastra
