// CLogSingleSummary: one summary, which reduces many samples to few rows. Its equations run on every valid
// sample and keep their variables from sample to sample. When its enable equations say so, the values of its
// variables become a row of the archive, which is saved at once.
#pragma once

#include "vastra/config/summary_config.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/stages/single_enable.h"
#include "vastra/stages/stage_account.h"

namespace vastra {

class VASTRA_API CLogSingleSummary : public CLogFacade {
 public:
  CLogSingleSummary() = default;
  ~CLogSingleSummary() override { Close(); }

  // names are those of the samples to come. 1, or 0 with the summary closed; the enable object may then stay
  // open until the next Open or Close. A summary that writes no files only runs its enable equations.
  int Open(CStringArray& names);
  // Ends the archive file.
  void Close();

  // All 0 on a closed summary.
  int Verify(CLogSample& sample) { return m_open ? m_enable.Verify(sample) : 0; }
  int IsSampleValid() { return m_open ? m_enable.IsSampleValid() : 0; }
  int RestartSummary() { return m_open ? m_enable.RestartSummary() : 0; }
  int WriteToSummary() { return m_open ? m_enable.WriteToSummary() : 0; }
  // Runs the summary equations on sample.
  int AddToSummary(CLogSample& sample);
  // Makes the values of the summary's variables a row, with the time of the sample that produced them. On 1
  // the row is on the disk, unless it is the last row of its file: a failure to save that one is not
  // returned. On 0 the row was refused, or it is kept and saved with the next; in files of one row it is
  // lost.
  int Flush();
  // Ends the archive file; the variables keep their values.
  int Restart();

  // Reports the summary's files to listener from the next Open on, with log as the number of the summary.
  // listener must exist until the summary is closed.
  void SetLogListener(CLogListener* listener, int log) {
    m_pListener = listener;
    m_listenerLog = log;
  }

  // Lets keeper keep the logs from the next Open on; it must exist until the summary is closed. Null: the
  // file link writes them.
  void SetLogKeeper(CLogKeeper* keeper) { m_pKeeper = keeper; }
  // See CFileLink::Deliver.
  void Deliver() {
    if (m_pArchiveLink) m_pArchiveLink->Deliver();
  }

  // The account of the samples since Open; on a closed summary that of its last run.
  CLogLedger GetLedger() const { return m_account.Ledger(m_pArchiveLink); }

  CSummaryConfig* GetOptions() { return &m_options; }

 private:
  bool WritesFiles() const { return m_options.m_saveRp || m_options.m_saveCsv; }
  bool OpenChains(const CStringArray& names);

  CSummaryConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  int m_listenerLog = 0;
  CLogKeeper* m_pKeeper = nullptr;     // the host's
  CLink* m_pEquatorLink = nullptr;     // outermost link of the equations, owned; null if no files are written
  CFileLink* m_pBufferLink = nullptr;  // its buffer: the newest values
  CFileLink* m_pArchiveLink = nullptr;  // a chain of its own, owned
  CSummarySingleEnable m_enable;
  CLogSample m_row;  // a member to reuse its memory
  CStageAccount m_account;
};

}  // namespace vastra
