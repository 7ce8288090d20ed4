// CLogMultiOutput: the stage for logging, with one CLogSingleOutput for each configured output.
#pragma once

#include "vastra/stages/log_single_output.h"

namespace vastra {

class VASTRA_API CLogMultiOutput : public CLogFacade {
 public:
  CLogMultiOutput() = default;
  ~CLogMultiOutput() override { Close(); }

  // names are those of the samples to come. On 0 there are no outputs and the stage is closed.
  int Open(CStringArray& names);
  // For each output, first to last: its equations run, then its log restarts and then receives the sample if
  // they say so. The first output that fails ends the pass: the later ones do not get the sample.
  int Write(CLogSample& sample);
  // Ends the current log of every output, whatever the results; 0 on a closed stage.
  int Restart();
  // Writes the samples collected so far as last logs.
  void Close();
  // Deletes all outputs; their destructors close them.
  void DeleteList() { DeleteAll(m_outputs); }

  // The sums over all outputs of the samples that are not on the disk yet and of the samples of a full log.
  CFill GetFill() const;

  // Reports the files of all outputs to listener from the next Open on; it must exist until the stage is
  // closed.
  void SetLogListener(CLogListener* listener) { m_pListener = listener; }

  CMultiOutputConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  CMultiOutputConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  CTypedPtrList<CObList, CLogSingleOutput*> m_outputs;
};

}  // namespace vastra
