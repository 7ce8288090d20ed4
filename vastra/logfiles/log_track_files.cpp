// The part of CLogTrack that runs on the threads of the keeper: files of logs, and journals.
#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "vastra/core/messenger.h"
#include "vastra/logfiles/keeper_state.h"
#include "vastra/logfiles/log_time.h"
#include "vastra/logfiles/log_writer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr CKeeperTime kNever = CKeeperTime::max();
constexpr std::chrono::milliseconds kClosingRetry{200};
constexpr int kMostTries = 1000;  // tried for a log whose names other programs take

constexpr std::size_t Index(ELogForm form) { return static_cast<std::size_t>(form); }

}  // namespace

CKeeperTime CLogTrack::SaveDue(CKeeperTime now) {
  CImage image;
  CKeeperTime next = kNever;
  if (!NextImage(now, image, next)) return next;
  Save(image);
  return now;  // there can be more
}

// Finds the first log that has to be written and is due. Logs after one that could not be saved wait for it,
// unless only its text is missing. next: when one is due, if none is now.
bool CLogTrack::NextImage(CKeeperTime now, CImage& image, CKeeperTime& next) {
  const CGuard lock(m_mutex);
  for (const CLogPointer& log : m_logs) {
    if (!log->isComplete && (!log->wantsImage || log->IsSaved())) continue;
    if (log->nextTry > now) {
      next = std::min(next, log->nextTry);
      if (!log->IsSaved()) return false;
      continue;
    }
    image.log = log;
    image.count = log->count;
    image.isComplete = log->isComplete;
    image.isClosing = m_closing;
    CSampleStore::CPlace from = log->samples.GetHeadPlace();
    log->samples.AddSpans(from, image.samples);
    image.textEnd = log->textPlace;
    log->samples.AddSpans(image.textEnd, image.newText);
    log->wantsImage = false;
    ++log->users;
    return true;
  }
  return false;
}

bool CLogTrack::Save(CImage& image) {
  for (;;) {
    try {
      SaveForms(image);
      if (image.isComplete) Finish(image);
      const CGuard lock(m_mutex);
      --image.log->users;
      image.log->failure.Empty();
      m_failure.Empty();
      m_changed.notify_all();
      return true;
    } catch (const CFileException& fault) {
      if (MakeRoom(image, fault)) continue;
      HaveFailed(image, fault);
    } catch (const std::bad_alloc&) {
      HaveFailed(image, CFileException(m_settings.naming.directory, ENOMEM));
    }
    return false;
  }
}

// Somebody may have removed the folder, and made it again. Whoever has taken the lock of the new one
// meanwhile is reported once: the files stay apart, but each removes old logs of the other.
void CLogTrack::RenewLock() {
  int other = 0;
  try {
    if (m_lock.Renew(other) || std::exchange(m_isShared, true)) return;
  } catch (const CFileException&) {  // saving fails for the same reason, and reports it
    return;
  }
  const CGuard lock(m_mutex);
  AddLine(severityError, m_settings.naming.Folder() + ": process " + CString(std::to_string(other)) +
                             " writes logs with these names, too: the folder was replaced");
}

// Writes the files that do not have all samples of the image.
void CLogTrack::SaveForms(CImage& image) {
  CKeptLog& log = *image.log;
  RenewLock();
  for (const ELogForm form : kLogForms) {
    CKeptFile& file = log.files[Index(form)];
    if (!m_settings.naming.Saves(form)) continue;
    const bool isNew = file.samples < image.count;
    if (isNew) SaveForm(image, form);
    if (isNew || (image.isComplete && file.isWritten && !file.isClosed)) HaveSaved(image, form);
  }
  if (log.isListed || image.count == 0) return;
  log.isListed = true;
  m_folder.Saved(log.name);
  CRotation rotation;
  m_folder.Rotate(rotation);
  Account(rotation);
}

void CLogTrack::SaveForm(CImage& image, ELogForm form) {
  CKeptLog& log = *image.log;
  const auto write = [&](CFile& file) {
    if (form == ELogForm::text) return WriteText(image, file);
    CLogWriter writer;
    writer.SetNames(log.names);
    writer.Write(file, image.samples);
  };
  const auto nameJournal = [&] {
    if (form == Counting()) NameJournal(log, {log.name, image.First(), image.count});
  };
  for (int i = 0; i < kMostTries; ++i) {
    if (log.name.IsEmpty()) {
      CSampleSpan head = image.samples.front();
      CSampleRecord first;
      head.GetNext(first);
      log.name = m_folder.NextName(first, log.names);
    }
    CKeptFile& target = log.files[Index(form)];
    if (m_folder.Save(log.name, form, target.samples > 0, write, nameJournal)) {
      target.samples = image.count;
      target.isWritten = true;
      return;
    }
    if (log.HasFile()) break;  // the other file has the name already
    log.name.Empty();
  }
  throw CFileException(m_folder.PathOf(log.name, form), EEXIST);
}

// The text of a log that grows is kept, so that each image formats only the new lines.
void CLogTrack::WriteText(CImage& image, CFile& file) {
  CKeptLog& log = *image.log;
  if (!m_settings.isSummary) return WriteCsv(file, log.names, image.samples, m_text);
  CSampleRecord row;
  try {
    if (log.text.View().empty()) log.text.AddNames(log.names);
    for (CSampleSpan& span : image.newText)
      while (span.GetNext(row)) log.text.AddSample(row);
  } catch (const std::bad_alloc&) {  // the next image begins again
    log.text.RemoveAll();
    const CGuard lock(m_mutex);
    log.textPlace = log.samples.GetHeadPlace();
    throw;
  }
  {
    const CGuard lock(m_mutex);
    log.textPlace = image.textEnd;
  }
  file.Write(log.text.View().data(), log.text.View().size());
}

// Writes into the journal, if there is one, which file is about to have its samples. From here on the journal
// thread writes it into each journal that it makes for the log.
void CLogTrack::NameJournal(CKeptLog& log, const CJournaledLog& named) {
  std::shared_ptr<CJournalWriter> journal;
  {
    const std::lock_guard naming(log.journalMutex);
    log.named = named;
    journal = JournalOf(log);
  }
  if (!journal) return;
  try {
    journal->Name(named.name, named.first, named.samples);
    journal->Sync();
  } catch (const CFileException& fault) {
    if (journal->HasFailed()) ReplaceJournal(log, journal, fault);
    if (fault.m_error != ENOENT) throw;  // without the journal no recovery can repeat the samples
  }
}

// Moves the samples of the image to the disk in the account, and reports the file.
void CLogTrack::HaveSaved(const CImage& image, ELogForm form) {
  CKeptLog& log = *image.log;
  const CString path = AbsolutePath(m_folder.PathOf(log.name, form));
  CTrackEvent event;
  event.kind = image.isComplete ? CTrackEvent::closed : CTrackEvent::grew;
  event.saved = {0, path, image.First(), image.Last(), image.count, FileSize(path)};
  const CGuard lock(m_mutex);
  if (form == Counting() && !log.isDropped) {
    const std::uint64_t rows = image.count - log.onDisk;
    if (rows) m_rows.Add(log.name, rows);
    log.onDisk = image.count;
    m_ledger.onDisk += rows;
  }
  m_events.push_back(std::move(event));
  log.files[Index(form)].isClosed = image.isComplete;  // after all that can fail, which is done again then
}

void CLogTrack::HaveFailed(CImage& image, const CFileException& fault) {
  CKeptLog& log = *image.log;
  const std::uint64_t inFile = log.files[Index(Counting())].samples;
  const bool isTextOnly = inFile == image.count;  // the other file is on the disk
  {
    const CGuard lock(m_mutex);
    --log.users;
    const auto pause = m_closing ? std::min(m_keeper.policy.retry, kClosingRetry) : m_keeper.policy.retry;
    const bool isBeforeClose = m_closing && !image.isClosing;  // Close waits for a try of its own
    log.nextTry = isBeforeClose ? CKeeperTime{} : std::chrono::steady_clock::now() + pause;
    log.wantsImage = true;
  }
  const CString path = log.name.IsEmpty()
                           ? m_settings.naming.directory
                           : m_folder.PathOf(log.name, isTextOnly ? ELogForm::text : Counting());
  const CString file = AbsolutePath(path);
  const CGuard lock(m_mutex);
  if (!(std::exchange(log.failure, fault.Text()) == log.failure) && !log.isDropped) {
    CTrackEvent event;
    event.kind = CTrackEvent::notSaved;
    event.unsaved = {0, file, fault.Text(), image.count, false};
    m_events.push_back(std::move(event));
  }
  m_changed.notify_all();
}

// The log leaves the track, and its journal goes: all its files are on the disk.
void CLogTrack::Finish(const CImage& image) {
  CKeptLog& log = *image.log;
  try {
    RememberUnfinished(image);
  } catch (const CFileException& fault) {
    const CGuard lock(m_mutex);
    AddLine(severityWarning,
            "The next start does not continue this log: " + fault.m_path + ": " + fault.Text());
  }
  const std::lock_guard naming(log.journalMutex);  // the journal thread makes no new one
  RemoveJournals(log);
  const CGuard lock(m_mutex);
  if (std::exchange(log.isDropped, true)) return;
  m_keeper.Release(log.bytes);
  std::erase(m_logs, image.log);
}

// Removes the journals of log, and those of earlier logs that could not be removed.
void CLogTrack::RemoveJournals(const CKeptLog& log) {
  std::vector<CString> paths = LeftJournals(log);
  try {
    if (const auto journal = JournalOf(log)) journal->Remove();
  } catch (const CFileException& fault) {
    paths.push_back(fault.m_path);
  }
  std::erase_if(m_oldJournals, [](const CString& path) { return RemoveJournal(path); });
  for (const CString& path : paths) {
    if (RemoveJournal(path)) continue;
    const CString reason = CFileException(path, errno).Text();
    m_oldJournals.push_back(path);
    const CGuard lock(m_mutex);
    AddLine(severityWarning, path + ": this journal, whose log is saved, cannot be removed yet: " + reason);
  }
}

// The next run continues a log that the end of this one cuts short.
void CLogTrack::RememberUnfinished(const CImage& image) {
  std::optional<CUnfinishedLog> unfinished;
  if (image.log->isCut && image.count < m_settings.maxSamples && CanContinue())
    unfinished = {image.log->name, image.First(), image.count};
  if (!(unfinished == m_lock.GetUnfinished())) m_lock.SetUnfinished(unfinished);
}

// On a full disk: removes the oldest log of the output before samples are lost. True: it may fit now.
bool CLogTrack::MakeRoom(const CImage& image, const CFileException& fault) {
  if (fault.m_error != ENOSPC && fault.m_error != EDQUOT) return false;
  {
    const CGuard lock(m_mutex);
    const auto isAtRisk = [](const CLogPointer& log) { return log->isAtRisk; };
    const bool isLastChance =
        image.isClosing && (!m_keeper.policy.live || std::any_of(m_logs.begin(), m_logs.end(), isAtRisk));
    if (m_settings.retention.minFree == 0 && !isLastChance && !m_keeper.IsNearLimit()) return false;
  }
  CRotation rotation;
  const bool removed = m_folder.RemoveOldest(rotation);
  Account(rotation);
  const CGuard lock(m_mutex);
  for (const CString& name : rotation.removed)
    AddLine(severityWarning, "The disk is full: the oldest log, " + name + ", is removed");
  return removed;
}

void CLogTrack::Account(const CRotation& rotation) {
  const CGuard lock(m_mutex);
  for (const CString& name : rotation.removed) m_ledger.rotated += m_rows.Remove(name);
  for (const CString& name : rotation.missing) m_rows.Remove(name);
  for (const CString& fault : rotation.faults) AddLine(severityWarning, fault);
}

bool CLogTrack::WriteJournals(CKeeperTime now) {
  bool isLate = false;
  for (const CLogPointer& log : Logs()) isLate |= WriteJournal(*log, now);
  return isLate;
}

// Writes the samples of log that neither its journal nor its file has. True: that has to be tried again.
bool CLogTrack::WriteJournal(CKeptLog& log, CKeeperTime now) {
  const std::lock_guard naming(log.journalMutex);
  CSampleSpans samples;
  CSampleStore::CPlace end;
  const std::shared_ptr<CJournalWriter> before = JournalOf(log);  // its file is not closed under m_mutex
  std::shared_ptr<CJournalWriter> journal;
  const bool isGone = before && !FileExists(before->GetPath()) && errno == ENOENT;
  std::uint64_t count = 0;
  {
    const CGuard lock(m_mutex);
    count = log.count;
    if (log.isDropped || log.IsSaved()) return false;
    if (isGone && log.journal == before) {
      log.leftJournals.push_back(before->GetPath());  // its folder can come back
      RestartJournal(log);
    }
    if (log.journaled >= count) return false;
    if (log.nextJournal > now) return true;
    journal = log.journal;
    end = log.journalPlace;
    log.samples.AddSpans(end, samples);
    ++log.users;
  }
  const bool isNew = !journal;
  CString failure;
  try {
    if (isNew) journal = NewJournal(log);
    journal->Append(samples);
  } catch (const CFileException& fault) {
    failure = m_settings.naming.directory + ": " + fault.Text();
  } catch (const std::bad_alloc&) {
    failure = CFileException("", ENOMEM).Text();
  }
  const CGuard lock(m_mutex);
  --log.users;
  if (!isNew && log.journal != journal) return true;  // its sync has failed meanwhile: a new one gets all
  log.journal = log.isDropped ? nullptr : journal;
  if (failure.IsEmpty()) {
    log.journaled = count;
    log.journalPlace = end;
  } else {
    log.nextJournal = now + m_keeper.policy.retry;
    if (!(failure == m_journalFailure)) AddLine(severityWarning, "The journal is not written: " + failure);
  }
  log.isAtRisk = !failure.IsEmpty();
  m_journalFailure = failure;
  if (m_keeper.policy.sync.count() == 0) m_keeper.Wake();
  m_changed.notify_all();
  return !failure.IsEmpty();
}

std::shared_ptr<CJournalWriter> CLogTrack::NewJournal(CKeptLog& log) {
  CJournalHead head;
  head.isSummary = m_settings.isSummary;
  head.name = m_settings.logName;
  head.naming = m_settings.naming;
  head.maxLogs = m_settings.maxLogs;
  head.maxSamples = m_settings.maxSamples;
  head.retention = m_settings.retention;
  head.varNames = log.names;
  head.continues = log.continued;
  const std::uint64_t number = log.number * kJournalsOfALog + std::min(log.journals++, kJournalsOfALog - 1);
  const CString path = JoinPath(m_settings.naming.directory, JournalFile(m_key, number));
  auto journal = std::make_shared<CJournalWriter>(path, head);
  // Before the samples, so that no sync is needed: who can read a sample can read the name.
  if (log.named) journal->Name(log.named->name, log.named->first, log.named->samples);
  return journal;
}

// Forgets the journal of log, whose samples will be written to a new one. With m_mutex locked.
void CLogTrack::RestartJournal(CKeptLog& log) {
  log.journal = nullptr;
  log.journaled = log.synced = log.Base();
  log.journalPlace = log.basePlace;
}

CKeeperTime CLogTrack::SyncJournals(CKeeperTime now) {
  if (!m_keeper.policy.live) return kNever;
  bool closing = false;
  {
    const CGuard lock(m_mutex);
    closing = m_closing;
  }
  if (now < m_nextSync && !closing) return m_nextSync;
  m_nextSync = now + m_keeper.policy.sync;
  for (const CLogPointer& log : Logs()) SyncJournal(*log);
  return m_keeper.policy.sync.count() == 0 ? kNever : m_nextSync;
}

// After a sync that failed the disk may have dropped any of the bytes: the samples go to a new journal.
void CLogTrack::SyncJournal(CKeptLog& log) {
  std::shared_ptr<CJournalWriter> journal;
  std::uint64_t journaled = 0;
  {
    const CGuard lock(m_mutex);
    journal = log.journal;
    journaled = log.journaled;
    if (!journal || (log.synced == journaled && !journal->HasFailed())) return;
  }
  try {
    journal->Sync();
    const CGuard lock(m_mutex);
    if (log.journal == journal) log.synced = journaled;
    m_changed.notify_all();
  } catch (const CFileException& fault) {
    ReplaceJournal(log, journal, fault);
  }
}

// The samples of log go to a new journal. The one that has failed stays until the log is on the disk: up to
// then it may be the only place of the samples.
void CLogTrack::ReplaceJournal(CKeptLog& log, const std::shared_ptr<CJournalWriter>& journal,
                               const CFileException& fault) {
  {
    const CGuard lock(m_mutex);
    if (log.journal != journal || log.isDropped) return;
    log.leftJournals.push_back(journal->GetPath());
    RestartJournal(log);
    m_changed.notify_all();
    AddLine(severityWarning,
            "The journal is not on the disk and is written again: " + fault.m_path + ": " + fault.Text());
  }
  m_keeper.HaveSample();
}

}  // namespace vastra
