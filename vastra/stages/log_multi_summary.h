// CLogMultiSummary: the stage for summaries, with one CLogSingleSummary for each configured summary.
#pragma once

#include "vastra/logfiles/log_keeper.h"
#include "vastra/stages/log_single_summary.h"

namespace vastra {

class VASTRA_API CLogMultiSummary : public CLogFacade {
 public:
  CLogMultiSummary() = default;
  ~CLogMultiSummary() override { Close(); }

  // names are those of the samples to come. On 0 there are no summaries and the stage is closed. All
  // variables of the summaries start at zero.
  int Open(CStringArray& names);
  // For each summary, first to last: its enable equations run. If SampleIsValid is set, RestartSummary ends
  // the file, the summary equations run, and WriteToSummary writes a row. The first summary for which the
  // sample is not valid, or that fails, ends the pass with 0: the later ones do not get the sample.
  int Write(CLogSample& sample);
  // Ends the archive file of every summary, whatever the results; 0 on a closed stage.
  int Restart();
  // Ends all archive files.
  void Close();
  // Deletes all summaries; their destructors close them.
  void DeleteList() { DeleteAll(m_summaries); }

  // Reports the files of all summaries to listener from the next Open on; it must exist until the stage is
  // closed.
  void SetLogListener(CLogListener* listener) { m_pListener = listener; }

  // Lets keeper keep the logs from the next Open on; it must exist until the stage is closed. Null: the file
  // links write them.
  void SetLogKeeper(CLogKeeper* keeper) { m_pKeeper = keeper; }
  // The index of the summary that the stage works on at the moment, on its thread; -1: none.
  int Place() const { return m_place; }
  // Sends the messages and the listener's events of what the keeper has done since the last call.
  void Deliver();
  // The accounts of the summaries, in order; on a closed stage those of its last run.
  std::vector<CLogLedger> GetLedgers() const;

  CMultiSummaryConfig* GetOptions() { return &m_options; }
  void ClearConfiguration() { m_options.Clear(); }

 private:
  CMultiSummaryConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  CLogKeeper* m_pKeeper = nullptr;      // the host's
  int m_place = -1;
  std::vector<CLogLedger> m_ledgers;  // of the last run
  CTypedPtrList<CObList, CLogSingleSummary*> m_summaries;
};

}  // namespace vastra
