// CPlcMultiOutput: the stage for writing to PLCs, with one CPlcSingleOutput for each configured node. One
// switch of the configuration turns all writing off.
#pragma once

#include "vastra/plc/node_link.h"
#include "vastra/stages/plc_enable.h"
#include "vastra/stages/plc_single_output.h"
#include "vastra/stages/stage_thread.h"

namespace vastra {

class CPlcMultiOutput;

// Writes one sample while the host's thread goes on.
class VASTRA_API CPlcWriteThread : public CStageThread<CPlcMultiOutput> {
  DECLARE_DYNAMIC(CPlcWriteThread)
 public:
  using CStageThread::Start;
};

class VASTRA_API CPlcMultiOutput : public CLogFacade {
 public:
  CPlcMultiOutput() = default;
  ~CPlcMultiOutput() override { Close(); }

  // names are those of the samples to come. On 0 there are no outputs and the stage is closed. With writing
  // disabled the stage opens without outputs and stays so until the next Open.
  int Open(CStringArray& names);
  // Writes sample to all nodes, first to last: 1, or 0 as soon as one fails. While writing is disabled or
  // "ComputerNode" names another computer, nothing is written and the result is 1. With a worker
  // (SetCallBack) it only starts the write, which then reaches all nodes, also those after one that failed;
  // the caller must not use sample until the message has arrived.
  int Write(CLogSample& sample);
  void Close();
  // From the next Open on the nodes are written at the same time, on workers, which must exist until Close: a
  // node that fails keeps nothing from the others, and a node that does not open is away (see CNodeLink).
  // Null, the default: in turn, on the thread of the caller.
  void SetWorkers(CNodeWorkers* workers) { m_pWorkers = workers; }
  // How long the nodes took in the last write, with workers.
  CNodeGroup::CSlowest Slowest() const { return m_group ? m_group->Slowest() : CNodeGroup::CSlowest(); }
  // After a write with workers: whether the state of a node differs from what it was at the last call, and
  // the states of all nodes, in order.
  bool TakeNodeChange();
  std::vector<CNodeState> NodeStates() const {
    return m_group ? m_group->States() : std::vector<CNodeState>();
  }
  // Deletes all outputs; their destructors close them.
  void DeleteList() { DeleteAll(m_outputs); }

  // The number of this computer on the network. Set it again after loading or storing the configuration.
  void SetNodeNumber(UINT number) { m_options.m_nodeNumber = number; }
  CPlcMultiConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  friend class CStageThread<CPlcMultiOutput>;
  int Work(CLogSample& sample);
  int WriteAll(CLogSample& sample);

  CPlcMultiConfig m_options;
  int m_place = -1;  // see OpenSingles
  CTypedPtrList<CObList, CPlcSingleOutput*> m_outputs;
  CPlcEnable m_plcEnable;
  CNodeWorkers* m_pWorkers = nullptr;
  std::shared_ptr<CNodeGroup> m_group;  // null without workers
  bool m_isNodeChange = false;          // the stage was opened since TakeNodeChange
};

}  // namespace vastra
