// CLogSingleOutput: one log output. For each sample its enable equations decide whether the log receives it
// and whether the log restarts; its chain selects and orders the log's variables and writes the files.
#pragma once

#include "vastra/config/output_config.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/stages/single_enable.h"
#include "vastra/stages/stage_account.h"

namespace vastra {

class VASTRA_API CLogSingleOutput : public CLogFacade {
 public:
  CLogSingleOutput() = default;
  ~CLogSingleOutput() override { Close(); }

  // names are those of the samples to come. 1, or 0 with the output closed; the enable object may then stay
  // open until the next Open or Close. An output that writes no files only runs its equations.
  int Open(CStringArray& names);
  // Writes the samples collected so far as a last, shorter log.
  void Close();

  // Runs the equations on sample, restarts the log and writes the sample if they say so. 0: the equations
  // failed, or Write did.
  int Pass(CLogSample& sample);

  // The steps of Pass. All 0 on a closed output.
  int Verify(CLogSample& sample) { return m_open ? m_enable.Verify(sample) : 0; }
  int RestartLog() { return m_open ? m_enable.RestartLog() : 0; }
  int WriteToLog() { return m_open ? m_enable.WriteToLog() : 0; }
  // Ends the current log and writes it.
  int Restart();
  // Passes sample to the log. 0: the log refused it, or the log that it completed could not be saved.
  int Write(CLogSample& sample);

  // Samples collected and not on the disk yet, of those that make a log; 0 of 0 without files.
  CFill GetFill() const { return m_pFileLink ? m_pFileLink->GetFill() : CFill(); }

  // Reports the output's files to listener from the next Open on, with log as the number of the output.
  // listener must exist until the output is closed.
  void SetLogListener(CLogListener* listener, int log) {
    m_pListener = listener;
    m_listenerLog = log;
  }

  // Lets keeper keep the logs from the next Open on; it must exist until the output is closed. Null: the file
  // link writes them.
  void SetLogKeeper(CLogKeeper* keeper) { m_pKeeper = keeper; }
  // See CFileLink::Deliver.
  void Deliver() {
    if (m_pFileLink) m_pFileLink->Deliver();
  }

  // The account of the samples since Open; on a closed output that of its last run.
  CLogLedger GetLedger() const { return m_account.Ledger(m_pFileLink); }

  COutputConfig* GetOptions() { return &m_options; }

 private:
  bool WritesFiles() const { return m_options.m_saveRp || m_options.m_saveCsv; }

  CLink* m_pHeadLink = nullptr;  // outermost link, owned; null if no files are written
  COutputConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  int m_listenerLog = 0;
  CLogKeeper* m_pKeeper = nullptr;   // the host's
  CFileLink* m_pFileLink = nullptr;  // in the chain
  CLogSingleEnable m_enable;
  CStageAccount m_account;
};

}  // namespace vastra
