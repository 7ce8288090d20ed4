// CLogSingleSummary: one summary, which turns many samples into few rows. Its equations run on every valid
// sample and keep their variables from one to the next; when its enable equations say so, the values of its
// variables become a row of the archive, and the archive is on the disk at once.
#pragma once

#include "vastra/config/summary_config.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/stages/single_enable.h"

namespace vastra {

class VASTRA_API CLogSingleSummary : public CLogFacade {
 public:
  CLogSingleSummary() = default;
  ~CLogSingleSummary() override { Close(); }

  // names are those of the samples to come. 1, or 0 with the summary closed; the enable object may then be
  // open until the next Open or Close. A summary that writes no files runs its enable equations and nothing
  // else.
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
  // Makes the values of the summary's variables a row, with the time of the sample that made them. On 1 the
  // row is on the disk, unless it is the last of its file: ending a file hides that it could not be saved. On
  // 0 the row was not taken, or it is kept and goes out with the next; in files of one row it is lost.
  int Flush();
  // Ends the archive file; the variables keep their values.
  int Restart();

  // listener, which must exist until the summary is closed, hears of its files from the next Open on, with
  // log as the number of the summary.
  void SetLogListener(CLogListener* listener, int log) {
    m_pListener = listener;
    m_listenerLog = log;
  }

  CSummaryConfig* GetOptions() { return &m_options; }

 private:
  bool WritesFiles() const { return m_options.m_saveRp || m_options.m_saveCsv; }
  bool OpenChains(const CStringArray& names);

  CSummaryConfig m_options;
  CLogListener* m_pListener = nullptr;  // the host's
  int m_listenerLog = 0;
  CLink* m_pEquatorLink = nullptr;     // outermost link of the equations, owned; null if no files are written
  CFileLink* m_pBufferLink = nullptr;  // behind it: the newest values
  CFileLink* m_pArchiveLink = nullptr;  // a chain of its own, owned
  CSummarySingleEnable m_enable;
  CLogSample m_row;  // kept for its memory
};

}  // namespace vastra
