// CLogMultiOutput: the stage that the host writes samples to for logging, with one CLogSingleOutput for each
// configured output.
#pragma once

#include "vastra/stages/log_single_output.h"

namespace vastra {

class VASTRA_API CLogMultiOutput : public CLogFacade {
 public:
  CLogMultiOutput() = default;
  ~CLogMultiOutput() override { Close(); }

  // names are those of the samples to come. On 0 no output is left and the stage is closed.
  int Open(CStringArray& names);
  // Each output, first to last: its equations run, then its log restarts if they say so, then takes the
  // sample if they say so. The first output that fails ends the pass: those behind it do not see the sample.
  int Write(CLogSample& sample);
  // Ends the current log of every output, whatever comes of it; 0 on a closed stage.
  int Restart();
  // Writes what was gathered as last logs.
  void Close();
  // Deletes all outputs; each closes itself as it goes.
  void DeleteList() { DeleteAll(m_outputs); }

  // The sum over all outputs of the samples that are not on the disk yet, and of what makes their logs full.
  CFill GetFill() const;

  // listener, which must exist until the stage is closed, hears of the files of all outputs from the next
  // Open on.
  void SetLogListener(CLogListener* listener) { m_pListener = listener; }

  CMultiOutputConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  CMultiOutputConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  CTypedPtrList<CObList, CLogSingleOutput*> m_outputs;
};

}  // namespace vastra
