// CLogTrack: the logs of one output or summary that a keeper keeps (log_keeper.h): the one that is being
// collected and those that are not on the disk yet, with the account of their samples.
//
//     the thread of the scans   appends samples to the last log and ends it
//     the journal thread        writes the new samples of each log to its journal
//     the writer thread         makes the files of a log that is complete or wants an image, syncs journals,
//                               removes old logs; a log whose files are on the disk leaves the track
//
// A log is in one of these states: collected; complete, waiting for the writer; failed, to be tried again
// later; dropped: given up for want of memory, or left by Close. Logs are saved in the order in which they
// ended. What happens to a log is an event, which the thread of the scans takes and passes on.
#pragma once

#include <condition_variable>
#include <deque>
#include <string>

#include "vastra/logfiles/kept_log.h"
#include "vastra/logfiles/log_account.h"
#include "vastra/logfiles/log_folder.h"
#include "vastra/logfiles/log_listener.h"
#include "vastra/logfiles/log_lock.h"

namespace vastra {

class CKeeperState;

struct CTrackSettings {
  bool isSummary = false;
  CString logName;  // of the output or summary
  CLogNaming naming;
  CStringArray varNames;
  UINT maxLogs = 0, maxSamples = 0;
  CLogRetention retention;
};

// What has happened to the logs of a track: a line for the messenger, or a call for the listener.
struct CTrackEvent {
  enum EKind { line, closed, grew, notSaved } kind = line;
  char severity = 0;  // of the line
  CString text;
  CSavedLog saved;
  CUnsavedLog unsaved;
};

class CLogTrack {
 public:
  CLogTrack(CKeeperState& keeper, const CTrackSettings& settings);
  CLogTrack(const CLogTrack&) = delete;
  CLogTrack& operator=(const CLogTrack&) = delete;

  // On the thread of the scans.

  // Takes the lock of the naming. Empty, or why the track cannot be opened. key: of the lock and the
  // journals.
  CString Lock(const CString& key);
  // Leaves the lock of a closed track to the keeper; on the thread of the scans.
  void HoldLock();
  // The same without a lock, for journals that have no other owner.
  void Adopt(const CString& key) { m_key = key; }
  // Makes logs of the journals of ended runs, and continues the log that the last run has left unfinished if
  // continues is set. The threads of the keeper must know the track.
  void Recover(bool continues);
  // Adds a copy of sample to the log. True: the log is full. Throws std::bad_alloc and keeps nothing then.
  bool Append(const CLogSample& sample);
  // By how many seconds the time of sample is before that of the last one; 0 if it is not.
  double ClockStep(const CLogSample& sample) const;
  // Whether sample would give a log another name than the one has that an earlier run has begun; only before
  // the first Append.
  bool NamesOtherLog(const CLogSample& sample) const;
  bool IsEmpty() const { return !m_collected; }
  bool HasLogs() const { return !Logs().empty(); }  // of which a file is missing
  void EndLog();                                    // the next sample starts another log
  void WantImage();                                 // the samples so far are to be in a file
  // Ends the log and waits until all logs are on the disk, or in the journal after a failure, or until the
  // keeper's deadline.
  void Close();
  std::vector<CTrackEvent> TakeEvents();
  CLogLedger Ledger() const;
  std::uint64_t TakenCount() const { return m_taken; }
  std::uint64_t UnsavedCount() const;

  // From any thread.
  const CTrackSettings& Settings() const { return m_settings; }
  const CString& Key() const { return m_key; }
  // The order of its oldest log that can be given up, also one that was not tried yet if evenUntried is set;
  // none if there is no such log.
  std::optional<std::uint64_t> OldestToGiveUp(bool evenUntried) const;
  void GiveUp(std::uint64_t sequence);

  // On the writer thread. Each returns when it wants to be called again.
  CKeeperTime SaveDue(CKeeperTime now);
  CKeeperTime SyncJournals(CKeeperTime now);
  // On the journal thread. True: a journal that cannot be written has to be tried again.
  bool WriteJournals(CKeeperTime now);

 private:
  using CLogPointer = std::shared_ptr<CKeptLog>;
  using CGuard = std::unique_lock<std::mutex>;

  // A log, and its samples at one moment.
  struct CImage {
    CLogPointer log;
    CSampleSpans samples;
    CSampleSpans newText;  // samples of a log that grows which its text does not have yet
    CSampleStore::CPlace textEnd;
    std::uint64_t count = 0;
    bool isComplete = false;
    bool isClosing = false;  // made since Close was called

    const _timeb& First() const { return *samples.front().m_times; }
    const _timeb& Last() const { return samples.back().m_times[samples.back().m_count - 1]; }
  };

  ELogForm Counting() const { return m_settings.naming.saveRp ? ELogForm::binary : ELogForm::text; }
  // Whether a log that a stop has cut short goes on with the next start.
  bool CanContinue() const;
  std::vector<CLogPointer> Logs() const;
  std::shared_ptr<CJournalWriter> JournalOf(const CKeptLog& log) const;
  std::vector<CString> LeftJournals(const CKeptLog& log) const;
  void AddLine(char severity, const CString& text);

  // log_recovery.cpp
  // What the journals of ended runs have brought.
  struct CRecovered {
    std::uint64_t samples = 0;
    _timeb first, last;
    std::uint64_t tornBytes = 0;  // after the last whole record
  };
  struct CFound;
  bool RecoverLog(const std::vector<std::uint64_t>& journals, bool goesOn, CRecovered& recovered);
  bool ReadJournalOf(std::uint64_t number, CFound& found);
  bool Join(CLogPointer& log, const CJournalContent& content, bool goesOn) const;
  std::uint64_t CountSaved(const CLogNaming& naming, const CJournaledLog& log, const CStringArray& names,
                           CSampleStore& samples) const;
  std::optional<std::uint64_t> CountText(const CString& name) const;
  bool IsContinued(const CString& file) const;
  void Continue(const CJournaledLog& file);
  void CompleteText();
  CLogPointer LogOf(const CString& name, const CSampleStore& saved);
  void HaveFile(CKeptLog& log, const CJournaledLog& file, std::uint64_t samples) const;
  void WaitUntil(CGuard& lock, CKeeperTime until, const std::function<bool()>& done);
  void Enqueue(const CLogPointer& log, bool goesOn);

  // log_track_files.cpp
  bool NextImage(CKeeperTime now, CImage& image, CKeeperTime& next);
  bool Save(CImage& image);
  void RenewLock();
  void SaveForms(CImage& image);
  void SaveForm(CImage& image, ELogForm form);
  void WriteText(CImage& image, CFile& file);
  void NameJournal(CKeptLog& log, const CJournaledLog& named);
  void HaveSaved(const CImage& image, ELogForm form);
  void HaveFailed(CImage& image, const CFileException& fault);
  void Finish(const CImage& image);
  void RemoveJournals(const CKeptLog& log);
  void RememberUnfinished(const CImage& image);
  bool MakeRoom(const CImage& image, const CFileException& fault);
  void Account(const CRotation& rotation);
  bool WriteJournal(CKeptLog& log, CKeeperTime now);
  std::shared_ptr<CJournalWriter> NewJournal(CKeptLog& log);
  void RestartJournal(CKeptLog& log);
  void SyncJournal(CKeptLog& log);
  void ReplaceJournal(CKeptLog& log, const std::shared_ptr<CJournalWriter>& journal,
                      const CFileException& fault);

  // log_track.cpp
  void Complete();
  void Drop(std::deque<CLogPointer>::iterator place, const CString& cause);
  void ReportDropped();
  bool IsSafe() const;

  CKeeperState& m_keeper;
  const CTrackSettings m_settings;
  CString m_key;
  CLogLock m_lock;

  mutable std::mutex
      m_mutex;  // of the members up to m_closing, and of parts of the logs; no file call under it
  std::condition_variable m_changed;
  std::deque<CLogPointer> m_logs;  // oldest first
  CLogPointer m_collected;         // the last of m_logs, or null
  CLogLedger m_ledger;             // without the samples in m_logs
  CRowsOfFiles m_rows;             // samples of this account in the files
  std::vector<CTrackEvent> m_events;
  struct {
    std::uint64_t journaled = 0;  // left in journals
    CLogLedger lost;
    CKeeperTime nextReport{};
  } m_dropped;               // samples that no line was about yet
  CString m_failure;         // why logs are dropped, of the last one that could not be saved
  CString m_journalFailure;  // of the last write to a journal
  bool m_closing = false;

  // Of the thread of the scans.
  std::uint64_t m_taken = 0;
  std::uint64_t m_nextNumber = 0;  // of the next log
  _timeb m_lastTime;
  bool m_hasLastTime = false;

  // Of the writer thread.
  CLogFolder m_folder;
  CCsvText m_text;
  std::vector<CString> m_oldJournals;  // of saved logs, which could not be removed
  CKeeperTime m_nextSync{};
  bool m_isShared = false;  // another process writes these logs, too
};

}  // namespace vastra
