// CFileLink: the leaf link for log files. Its configuration and the mode of Open choose one of three uses:
//   writer   modeWrite: collects samples and writes them as one log when the log is full or the stage asks
//            for it; limits the number of logs in the directory
//   replay   modeRead: plays a list of binary logs, the one with the earliest first sample first
//   buffer   m_bufferOnly, in either mode: keeps one sample and its names at the end of a chain of equations;
//            touches no file
//
// This link decides when a file is written, read or removed. The other files of this module handle the bytes
// and the names of logs. Comm is that of the base class and always returns 0.
#pragma once

#include <functional>
#include <memory>

#include "vastra/core/link.h"
#include "vastra/logfiles/csv_format.h"
#include "vastra/logfiles/log_account.h"
#include "vastra/logfiles/log_list.h"
#include "vastra/logfiles/log_listener.h"
#include "vastra/logfiles/log_name.h"
#include "vastra/logfiles/log_policy.h"
#include "vastra/logfiles/log_writer.h"
#include "vastra/logfiles/sample_store.h"

namespace vastra {

class CLogKeeper;
class CLogTrack;
struct CSaveFailure;

// The settings that the link keeps while it is open.
struct CFileSettings {
  CString m_extension;  // of binary logs, with the dot: ".rph" for data logs, ".rpd" for summaries
  int m_bufferOnly = 0;
  UINT m_maxLogs = 0;      // logs of each kind that stay in the directory
  UINT m_maxSamples = 0;   // samples at which a log is complete; 0: each is a log of its own
  int m_saveCsv = 0;       // non-zero: write the text copy of each log
  int m_saveRp = 0;        // non-zero: write the binary log
  CString m_directory;     // of the logs
  CString m_nameVariable;  // source of the name of a log: "System Time" or a variable
  int m_dwordName = 0;     // non-zero: the name also contains the variable after m_nameVariable
  CString m_prefix;        // of log names
  int m_usePrefix = 0;
  CString m_logName;          // of the output or summary, as the user calls it
  CLogRetention m_retention;  // beside m_maxLogs; only where a keeper keeps the logs
};

class VASTRA_API CFileConfig : public CLinkConfig, public CFileSettings {
  DECLARE_DYNAMIC(CFileConfig)
 public:
  CStringList m_files;      // to replay; paths that can be opened as they are
  CStringArray m_varNames;  // of the samples to be written; a replay uses those of its logs
};

// A failure that a link reports in the same words with and without a keeper.
namespace kept {
constexpr CFault emptyLog = {severityWarning, "Tried to flush an empty log."};
}

// How full a log is.
struct CFill {
  std::uint64_t m_samples = 0;
  std::uint64_t m_total = 0;

  CFill& operator+=(const CFill& other) {
    m_samples += other.m_samples, m_total += other.m_total;
    return *this;
  }
};

class VASTRA_API CFileLink : public CLink, private CFileSettings {
 public:
  // Returns a new link; null if component is not null, because a file link is a leaf.
  static CFileLink* Create(CLink* component);
  ~CFileLink() override { CFileLink::Close(); }

  // Writer: appends a copy of sample to the log and writes the log if it is complete; 0 if that fails: the
  // log is lost and the next sample starts a new one. Buffer: keeps a copy of sample.
  int Write(CLogSample& sample) override;
  // Replay: reads the next sample; 0 at the end of the last log, and once for each log that cannot be read or
  // has other names than the first; such a log is skipped. Other uses: reads the last sample written.
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_varNames, names); }
  void Close() override;  // discards samples that were not flushed
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

  // Writer: ends the current log and writes it; whatever the result, the next sample starts a new log.
  // Replay: loads the next log.
  int Flush();
  // Writer: writes the samples collected so far, durably, and keeps collecting. On 0 the samples stay and the
  // next call tries again. A text copy that cannot be saved does not count as a failure.
  int PartialFlush();

  // Writer: reports each file that is saved or cannot be saved to listener, on the thread of the operation.
  // listener must exist until the link is closed; null: no reports. Each event contains log.
  void SetLogListener(CLogListener* listener, int log = 0) {
    m_pListener = listener;
    m_listenerLog = log;
  }

  // Writer: lets keeper keep the logs from the next Open on; null: this link writes them. It must exist until
  // the link is closed. Write and Flush leave a log to the keeper then and do not wait for the disk; a log
  // that could not be saved is reported by Deliver. isSummary: PartialFlush is used.
  void SetLogKeeper(CLogKeeper* keeper, bool isSummary) {
    m_pKeeper = keeper;
    m_isSummary = isSummary;
  }
  // Sends the lines and the listener's events of what the keeper has done since the last call.
  void Deliver();
  // Ends the log and waits until the keeper has saved it, as Close does, but sends no lines for the
  // operation.
  void EndKept();
  void HoldLock();

  // Writer and buffer: the sample of the last Write, without a message; without values before the first one.
  const CLogSample& LastSample() const { return m_lastSample; }

  // Progress of a replay; all 0 in any other state.
  UINT GetTotalFiles() const;   // logs to play
  UINT GetCurrentFile() const;  // logs begun after the first
  int Finished() const;         // 1 after a Read has found no further log

  // Writer: the samples that are not on the disk yet, and the samples of a full log. Replay: the samples of
  // the current log that were not read yet, and all its samples. Both 0 in any other state.
  CFill GetFill() const;

  // Writer: the account of the samples, without those that were kept from the link.
  CLogLedger GetLedger() const;
  std::uint64_t TakenCount() const;

  // Buffer: the value at index of the last sample. 0, with value unchanged and without a message, in any
  // other state or beyond the end of the sample.
  int ReadVariable(UINT index, float& value);
  int WriteVariable(UINT index, float value);

 protected:
  CFileLink();

 private:
  int IsReplay() const { return m_mode == modeRead && !m_bufferOnly; }
  int IsWriter() const { return m_mode == modeWrite && !m_bufferOnly; }

  const CFault* OpenReplay(const CStringList& files);
  const CFault* OpenWriterOrBuffer(const CStringArray& names, UINT mode);
  const CFault* OpenDirectory();

  // file_link_kept.cpp
  const CFault* OpenTrack();
  void AppendToTrack(const CLogSample& sample);
  const CFault* FlushTrack();

  const CFault* KeepSample(const CLogSample& sample);
  bool IsFull() const { return m_pTrack ? m_isTrackFull : m_samples.GetCount() >= m_maxSamples; }
  CString CreateName();
  const CFault* SaveLog();
  void BeginPartialLog();
  void EndPartialLog();
  int SaveFile(const CString& file, bool counts, const std::function<void(CFile&)>& write);
  void HaveSaved(const CString& file);
  void Rotate(CLogList& logs);
  void DropSamples();
  void ReportSaved(const CString& path);
  void ReportFailure(const CString& path, const CSaveFailure& failure);
  int SaveAsRP(const CString& name);
  int SaveAsCSV(const CString& name);
  CString FileOfRP(const CString& name) const { return name + m_extension; }
  CString FileOfCSV(const CString& name) const { return name + m_extension.Right(1) + ".csv"; }
  void WritePartialCsv(CFile& file);

  int OrderFileList(const CStringList& files);
  int OpenNextFile(POSITION& position, int loadNames);
  const CFault* LoadNextFile();

  bool IsInBuffer(UINT index) const;

  CHourNames m_hourNames;  // keeps its numbers across Open and Close
  int m_finished = 0;
  UINT m_filesRead = 0;
  int m_partial = 0;              // 1 while a log is being written by PartialFlush
  bool m_ending = false;          // PartialFlush is writing the last image of its log
  CString m_currentName;          // name of that log, without its extension
  POSITION m_nextFile = nullptr;  // in m_orderedFiles: the next log to load; null: none is left
  CLogSample m_lastSample;        // the last one written
  CStringArray m_varNames;
  CSampleStore m_samples;      // of the log that is being collected or played
  CStringList m_orderedFiles;  // the logs of a replay
  CLogList m_rpLogs, m_csvLogs;
  CLogAccount m_account;
  CString m_notSaved;               // why the last file could not be saved
  CLogKeeper* m_pKeeper = nullptr;  // the host's
  bool m_isSummary = false;
  std::shared_ptr<CLogTrack> m_pTrack;  // of the keeper, while the link is open
  bool m_isTrackFull = false;
  CLogLedger m_keptLedger;  // of the track that was closed
  CFault m_keptFault{};     // of the keeper, which has its text
  CLogWriter m_writer;
  CCsvText m_csvText;  // of a growing log, up to m_csvPlace; for other logs only a buffer
  CSampleStore::CPlace m_csvPlace;
  CLogListener* m_pListener = nullptr;  // the host's
  int m_listenerLog = 0;
};

}  // namespace vastra
