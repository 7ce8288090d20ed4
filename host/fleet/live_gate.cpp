#include "host/fleet/live_gate.h"

#include <numeric>

namespace vastra {

std::string CLiveGate::Admit(const CFleetLogger& logger, const CLiveMessage& message) {
  const CNodeKey key = {logger.node.site, logger.node.name};
  const auto node = m_nodes.find(key);
  const std::size_t ofNode = node == m_nodes.end() ? 0 : node->second.size();
  const bool isNew = ofNode == 0 || !node->second.contains(logger.name);
  if (isNew && m_loggers >= m_most)
    return "there are more than " + std::to_string(m_most) + " loggers; the first ones are shown";
  if (isNew && ofNode >= kMostOfNode)
    return key.first + "/" + key.second + ": has more than " + std::to_string(kMostOfNode) +
           " loggers; the first ones are shown";
  CSizes sizes = isNew ? CSizes{} : node->second[logger.name];
  const std::size_t before = std::accumulate(sizes.begin(), sizes.end(), std::size_t{0});
  for (std::size_t i = 0; i < sizes.size(); ++i)
    if (!message.lines[i].text.empty()) sizes[i] = message.lines[i].text.size();
  const std::size_t after = std::accumulate(sizes.begin(), sizes.end(), std::size_t{0});
  if (after > before && m_bytes - before + after > kMostBytes)
    return "the loggers say more than can be kept; some of it is left out";
  m_bytes += after - before;
  m_loggers += isNew;
  m_nodes[key][logger.name] = sizes;
  return "";
}

void CLiveGate::Forget(const CFleetLogger& logger) {
  const auto node = m_nodes.find({logger.node.site, logger.node.name});
  if (node == m_nodes.end()) return;
  if (const auto found = node->second.find(logger.name); found != node->second.end()) {
    m_bytes -= std::accumulate(found->second.begin(), found->second.end(), std::size_t{0});
    node->second.erase(found);
    --m_loggers;
  }
  if (node->second.empty()) m_nodes.erase(node);
}

}  // namespace vastra
