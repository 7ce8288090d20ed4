// CLogMultiOutput: the stage for logging, with one CLogSingleOutput for each configured output.
#pragma once

#include "vastra/logfiles/log_keeper.h"
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

  // Lets keeper keep the logs from the next Open on; it must exist until the stage is closed. Null: the file
  // links write them.
  void SetLogKeeper(CLogKeeper* keeper) { m_pKeeper = keeper; }
  // The index of the output that the stage works on at the moment, on its thread; -1: none.
  int Place() const { return m_place; }
  // Sends the messages and the listener's events of what the keeper has done since the last call.
  void Deliver();
  // The accounts of the outputs, in order; on a closed stage those of its last run.
  std::vector<CLogLedger> GetLedgers() const;

  CMultiOutputConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  CMultiOutputConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  CLogKeeper* m_pKeeper = nullptr;      // the host's
  int m_place = -1;
  std::vector<CLogLedger> m_ledgers;  // of the last run
  CTypedPtrList<CObList, CLogSingleOutput*> m_outputs;
};

}  // namespace vastra
