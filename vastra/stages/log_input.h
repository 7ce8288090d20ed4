// CLogInput: the source of samples. Connected, it reads the PLC nodes of its configuration as one sample;
// simulating, it replays logs. Preprocessing equations can follow either.
#pragma once

#include <span>

#include "vastra/config/input_config.h"
#include "vastra/plc/node_link.h"
#include "vastra/stages/log_facade.h"
#include "vastra/stages/stage_thread.h"

namespace vastra {

class CChain;
class CFileLink;
class CLink;
class CLogInput;

// Reads one sample while the host's thread goes on.
class VASTRA_API CInputThread : public CStageThread<CLogInput> {
  DECLARE_DYNAMIC(CInputThread)
 public:
  using CStageThread::Start;
};

class VASTRA_API CLogInput : public CLogFacade {
 public:
  CLogInput() = default;
  ~CLogInput() override { Close(); }

  // Builds and opens the chain; an open stage is closed first. 0: a link failed and has reported it, or no
  // node has a known driver, for which there is no message. A node with an unknown driver is left out, with
  // its variables.
  int Open();
  void Close();

  // Reads one sample: 1, or 0 on a closed stage, on a failure and at the end of a replay. With a worker
  // (SetCallBack) it only starts the read; the caller must not use sample until the message has arrived.
  int Read(CLogSample& sample);
  int PartialWrite(CLogSample&) { return 0; }  // part of the interface; does nothing

  // The names of the samples, in value order; 0 on a closed stage.
  int GetVarNames(CStringArray& names);
  // The names before the preprocessing, from a closed stage and without contacting a PLC; 0 on an open stage.
  int PreGetInitialVarNames(CStringArray& names);

  // Milliseconds from scan to scan; 0: as fast as possible.
  UINT GetScanPeriod() const { return m_options.m_asFastAsPossible ? 0 : m_options.m_scanPeriod; }
  int GetAutoStart() const { return m_options.m_autoStart != 0; }

  // Progress of a replay; all 0 on a closed stage and without a replay.
  int IsFinished() const;
  UINT FilesRead() const;
  UINT TotalFilesToRead() const;
  float PercentCompleted() const;  // a fraction, from 0.0 to below 1.0
  float PartOfLog() const;         // the fraction of the current log that was read, from 0.0 to 1.0

  // From the next Open on the nodes are asked at the same time, on workers, which must exist until Close.
  // Null, the default: in turn, on the thread of the caller.
  void SetWorkers(CNodeWorkers* workers) { m_pWorkers = workers; }
  // How long the nodes took in the last scan, with workers.
  CNodeGroup::CSlowest Slowest() const { return m_group ? m_group->Slowest() : CNodeGroup::CSlowest(); }

  // After a scan: whether the state of a node differs from what it was at the last call, and the states of
  // all nodes, in order. Without workers and with "fail" alone all nodes are up if the last read succeeded.
  bool TakeNodeChange();
  std::vector<CNodeState> NodeStates() const;

  CInputConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  friend class CStageThread<CLogInput>;
  int Work(CLogSample& sample);

  int BuildNodes(CChain& chain, int useDriver);
  int BuildGuarded(CChain& chain, int useDriver);
  static int BuildTree(CChain& chain, std::span<const CPlcNodeConfig* const> nodes,
                       const std::shared_ptr<CNodeGroup>& group);
  bool IsGuarded() const;
  bool MayNodesBeAway() const;
  int ReadNow(CLogSample& sample);
  const CFileLink* Replay() const { return m_open && m_options.m_simulating ? m_pFileLink : nullptr; }

  CLink* m_pHeadLink = nullptr;      // outermost link, owned
  CFileLink* m_pFileLink = nullptr;  // the link that replays, in the chain
  CNodeWorkers* m_pWorkers = nullptr;
  std::shared_ptr<CNodeGroup> m_group;  // null unless the nodes may be away or there are workers
  bool m_isNodeChange = false;          // since TakeNodeChange
  std::optional<bool> m_areUp;          // the last read without a group has succeeded; none: there was none
  bool m_haveAnswered = false;          // one of them has
  _timeb m_upSince;
  CInputConfig m_options;
};

}  // namespace vastra
