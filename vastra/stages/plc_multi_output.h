// CPlcMultiOutput: the stage that the host writes samples to for the PLCs, with one CPlcSingleOutput for each
// configured node. One switch of the configuration turns all writing off.
#pragma once

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

  // names are those of the samples to come. On 0 no output is left and the stage is closed. With writing
  // disabled the stage opens without outputs, and stays so until it is opened anew.
  int Open(CStringArray& names);
  // sample to all nodes, first to last: 1, or 0 as soon as one fails. Nothing is written, with result 1,
  // while writing is disabled or "ComputerNode" names another computer. With a worker (SetCallBack) it only
  // starts the writing, which then reaches all nodes, also those behind one that failed; sample is left alone
  // until the message has come.
  int Write(CLogSample& sample);
  void Close();
  // Deletes all outputs; each closes itself as it goes.
  void DeleteList() { DeleteAll(m_outputs); }

  // The number of this computer on the net. Whoever loads or stores the configuration sets it again.
  void SetNodeNumber(UINT number) { m_options.m_nodeNumber = number; }
  CPlcMultiConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  friend class CStageThread<CPlcMultiOutput>;
  int Work(CLogSample& sample);
  int WriteAll(CLogSample& sample);

  CPlcMultiConfig m_options;
  CTypedPtrList<CObList, CPlcSingleOutput*> m_outputs;
  CPlcEnable m_plcEnable;
};

}  // namespace vastra
