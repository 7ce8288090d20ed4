// CLiveGate: how much is kept of what nodes say about their loggers. A node that names more and more loggers,
// or says more and more of them, takes nothing from the others but what a few loggers may have.
#pragma once

#include <map>

#include "host/fleet/live_message.h"

namespace vastra {

class CLiveGate {
 public:
  // most: loggers, of all nodes.
  explicit CLiveGate(std::size_t most) : m_most(most) {}

  // Notes that the lines of a message are kept, in place of those before. Empty, or why they may not be.
  std::string Admit(const CFleetLogger& logger, const CLiveMessage& message);
  void Forget(const CFleetLogger& logger);

 private:
  using CSizes = std::array<std::size_t, kLiveLines.size()>;  // of the lines of a logger
  using CNodeKey = std::pair<std::string, std::string>;

  static constexpr std::size_t kMostOfNode = 100;
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20;

  const std::size_t m_most;
  std::map<CNodeKey, std::map<std::string, CSizes>> m_nodes;
  std::size_t m_loggers = 0, m_bytes = 0;
};

}  // namespace vastra
