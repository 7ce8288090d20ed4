// CReceiptHearer: the receipts of a node's files: those that the archive publishes, and those that it
// published while the node was away. What has no receipt for long and is with the servers no more is sent
// again.
#pragma once

#include <map>

#include "host/fleet/nats_link.h"
#include "host/fleet/receipt_sender.h"
#include "host/fleet/ship_state.h"
#include "host/fleet/told_once.h"

namespace vastra {

class CReceiptHearer {
 public:
  using Time = CNatsLink::Time;

  CReceiptHearer(CNatsLink& link, CShipState& state, const CFleetNode& node, CToldOnce& log)
      : m_link(link), m_state(state), m_node(node), m_log(log) {}

  // A message under vastra.done, or an answer with one. Throws CStoreFault.
  void Hear(const CReceipt& receipt);
  // Answers whose subject is AnswerSubject of a kind and a number.
  void HearNewest(const CNatsMessage& answer);
  void HearProbe(const CNatsMessage& answer);
  // Asks the servers about files that have waited for a receipt.
  void Work(Time now);
  bool IsIdle() const { return m_newest.empty() && m_probes.empty(); }

  static constexpr const char* kNewestKind = "newest";
  static constexpr const char* kProbeKind = "probe";

 private:
  // The key of a file, of a pack that of one of its files, by the numbers of questions.
  using CQuestions = std::map<std::uint64_t, std::string>;

  std::string TakeQuestion(CQuestions& questions, const CNatsMessage& answer);
  CFileSubject CarrierOf(const CShipFile& file) const;
  void Probe(const CShipFile& file);

  CNatsLink& m_link;
  CShipState& m_state;
  const CFleetNode m_node;
  CToldOnce& m_log;
  CQuestions m_newest, m_probes;
  std::uint64_t m_last = 0;
  Time m_due{}, m_asked{};
};

}  // namespace vastra
