// CNodeLink: the outermost link of a node. It lets the others go on if this node does not answer, and asks
// all nodes of a stage at the same time if the host has workers.
//
//   scan -> CNodeGroup asks all nodes, each on a worker or in turn, and waits for them
//        -> the CNodeLink of each node returns what its node has answered, or values in place of it
//
// A node is present or away. Away: its Open or its transfer has failed, or has not returned in time. One line
// reports that it goes and why, one that it is back and for how long it was away. Each scan asks it again as
// soon as its last call has returned; an Open that failed is tried again after 1 to 30 seconds. The time of a
// sample is that of the first node that is present.
//
//   absent   while the node does not answer                                  if its Open fails
//   fail     the lines of its links as without this link, the scan fails     Open fails
//   nan      NaN                                                             the node is away
//   hold     the last values, NaN before the first                           the node is away
//
// If all nodes are away the read fails. A node that is written and does not answer is away, whatever its
// absent: its Write returns 0, and the other nodes are written.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "vastra/core/line_record.h"
#include "vastra/core/link.h"
#include "vastra/plc/driver_config.h"
#include "vastra/plc/node_workers.h"

namespace vastra {

class CNodeLink;

// Whether a node answers, for those who watch a run.
struct CNodeState {
  CString name;
  bool isUp = false;           // it has answered when it was asked last
  _timeb since;                // the last change of isUp
  CString reason;              // why it does not answer; empty if it does
  std::optional<_timeb> next;  // when it is opened again, if that is not in the next scan
  bool hasAnswered = false;    // it has answered since the start
};

// The nodes of one stage.
class VASTRA_API CNodeGroup {
 public:
  // workers must exist until the group is closed; null: the nodes are asked in turn on the caller's thread.
  explicit CNodeGroup(CNodeWorkers* workers) : m_pWorkers(workers) {}

  // Closes all nodes at the same time. Those that do not return within patience are left to the workers.
  void Close() { CloseAll(std::vector<CNodeLink*>(m_links)); }
  // Of nodes that are written: until the next write nothing is written, also not by a call that is late.
  void Withhold();
  // How long the nodes took in the last scan together, and the slowest of them; empty if there was none.
  struct CSlowest {
    CString name;
    std::chrono::steady_clock::duration time{};
  };
  CSlowest Slowest() const;
  // After a scan: whether a state differs from what it was at the last call, and the states.
  bool TakeChange() { return std::exchange(m_isChanged, false); }
  std::vector<CNodeState> States() const;

 private:
  friend class CNodeLink;
  void Gather(const CLogSample* toWrite);
  void FindSlowest();
  // Lets the nodes of links do what they have been given, and waits for them.
  void Work(CNodeWorkers::EWait wait);
  void CloseAll(const std::vector<CNodeLink*>& links);

  CNodeWorkers* const m_pWorkers;
  std::vector<CNodeLink*> m_links;                   // the open ones, in the order of Open
  std::vector<CNodeLink*> m_asked;                   // those that have something to do
  std::vector<std::shared_ptr<CNodeTask>> m_tasks;   // of them
  const CNodeLink* m_pSlowest = nullptr;             // of the last scan
  std::chrono::steady_clock::duration m_lastTime{};  // all of it
  bool m_areAllAway = false;
  bool m_isChanged = false;  // a state, since TakeChange
  _timeb m_time;             // of the present scan
};

class VASTRA_API CNodeConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CNodeConfig)
 public:
  std::shared_ptr<CNodeGroup> m_group;  // null: the chain only serves for its names, and opens at once
  // Adds the configurations of the links inside, outermost first. Called before each Open, on a worker.
  // notFinite is for CPlcLinkConfig and exists as long as the links.
  std::function<void(CLinkConfigList&, UINT& notFinite)> m_inner;
  CStringArray m_varNames;  // of the node
  EAbsent m_absent = EAbsent::fail;
  CString m_aliveVar;  // see CPlcNodeConfig
  CString m_line;      // see CNodeTask
};

class VASTRA_API CNodeLink : public CLink {
 public:
  // Owns component, the chain of the node. Returns null without one.
  static CNodeLink* Create(CLink* component);
  ~CNodeLink() override;

  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;
  void Close() override;
  // The values of the node and then that of aliveVar.
  int Read(CLogSample& sample) override;
  // sample is that of the stage.
  int Write(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_names, names); }

 private:
  friend class CNodeGroup;
  class CNode;
  using Time = std::chrono::steady_clock::time_point;

  // What the node did when it was asked last.
  enum class EAnswer {
    none,      // it was not asked: its last call has not returned, or it is too early to open it again
    answered,  // it has succeeded
    failed,    // the record has the lines
    overdue,   // its call has not returned
    blocked    // its call could not begin
  };

  explicit CNodeLink(CLink* component);

  int Configure(CNodeConfig& config, UINT mode);
  int OpenNow();
  bool Prepare(const CLogSample* toWrite, Time now);
  void TakeAnswer();
  void TakeState(Time now);
  void PauseOpening(Time now);
  void NoteState(Time now);
  void BeAway(Time now);
  void BeBack(Time now);
  int BeginTransfer(char function, const CLogSample* toWrite);
  int FailCall(char function);
  CString WhyAway() const;
  void SendWaiting(CNodeWorkers::Span rest) const;
  void SendRecord();
  void FillIn(CLogSample& sample);
  void LeaveTo(CNodeWorkers& workers);
  bool IsTolerant() const { return m_absent != EAbsent::fail || m_mode == modeWrite; }

  std::shared_ptr<CNode> m_pNode;  // the chain and its task; null after the node was left to the workers
  std::shared_ptr<CNodeGroup> m_group;
  CStringArray m_names;
  EAbsent m_absent = EAbsent::fail;
  bool m_hasAlive = false;
  int m_count = 0;  // values of the node

  EAnswer m_answer = EAnswer::none;
  bool m_isGathered = false;  // m_answer is of the present scan
  bool m_isProbed = false;    // asked, but not waited for
  bool m_isLate = false;      // the last call had not returned when its wait ended
  bool m_isAway = false;
  bool m_isUnclosed = false;  // its driver has not closed, which is not reported yet
  Time m_awaySince{}, m_openDue{};
  std::chrono::seconds m_openPause{0};
  std::optional<CNodeState> m_state;  // none before the first scan
  CArray<float, float> m_last;        // the last values for hold, else NaN
};

}  // namespace vastra
