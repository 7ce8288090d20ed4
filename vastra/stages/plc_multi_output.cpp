#include "vastra/stages/plc_multi_output.h"

#include "vastra/stages/single_stages.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CPlcWriteThread, CWinThread)

int CPlcMultiOutput::Open(CStringArray& names) {
  if (m_open) Close();
  if (!m_options.m_disableWriting) {
    m_plcEnable.Open(names);
    if (m_pWorkers) m_group = std::make_shared<CNodeGroup>(m_pWorkers);
    if (!OpenSingles(m_outputs, m_options.m_nodes, names, m_place,
                     [this](CPlcSingleOutput& output, int) { output.SetGroup(m_group); }))
      return m_group.reset(), 0;
  }
  m_isNodeChange = true;
  m_open = 1;
  return 1;
}

bool CPlcMultiOutput::TakeNodeChange() {
  const bool isGroupChange = m_group && m_group->TakeChange();
  return std::exchange(m_isNodeChange, false) || isGroupChange;
}

int CPlcMultiOutput::Write(CLogSample& sample) {
  if (!m_open) return 0;
  if (!m_options.m_disableWriting && m_plcEnable.CheckIfWrite(sample, m_options.m_nodeNumber))
    return m_threaded   ? CPlcWriteThread::Start(RUNTIME_CLASS(CPlcWriteThread), this, sample, m_notifyWnd,
                                                 m_notifyMessage)
           : m_pWorkers ? Work(sample)
                        : WriteAll(sample);
  if (m_group) m_group->Withhold();
  if (m_threaded) PostMessage(m_notifyWnd, m_notifyMessage, 1, 0);  // a host may be waiting for it
  return 1;
}

int CPlcMultiOutput::WriteAll(CLogSample& sample) {
  for (CPlcSingleOutput* output : m_outputs)
    if (!output->Write(sample)) return 0;
  return 1;
}

// A node that fails does not stop the write to the later ones.
int CPlcMultiOutput::Work(CLogSample& sample) {
  int result = 1;
  for (CPlcSingleOutput* output : m_outputs) result &= output->Write(sample);
  return result;
}

void CPlcMultiOutput::Close() {
  if (m_group) m_group->Close();
  CloseSingles(m_outputs);
  m_group.reset();
  m_open = 0;
}

}  // namespace vastra
