// How a run continues after the end of an earlier one, clean or not. The journal of a log that was not saved
// becomes that log. Of the last one that is not full, the file is made as well, and the log goes on.
//
//     file of the log               journal            what is done
//     none, or of another log       any samples        a new log
//     all samples of the journal    named              the text copy, if it lacks some; no journal
//     the first samples             named, continues   a new image replaces the file
#include "vastra/logfiles/log_recovery.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <new>
#include <set>
#include <string>

#include "vastra/core/messenger.h"
#include "vastra/logfiles/csv_reader.h"
#include "vastra/logfiles/keeper_state.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/logfiles/log_time.h"
#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr const char* kTooLarge = "it is too large for the memory";

CSampleSpans SpansOf(const CSampleStore& samples) {
  CSampleSpans spans;
  CSampleStore::CPlace from = samples.GetHeadPlace();
  samples.AddSpans(from, spans);
  return spans;
}

// Appends the first count samples of from to log. Throws std::bad_alloc.
void AddSamples(CKeptLog& log, const CSampleStore& from, std::uint64_t count) {
  CSampleRecord record;
  CSampleStore::CPlace place = from.GetHeadPlace();
  for (; count > 0 && from.GetNext(place, record); --count)
    log.samples.Append(record.m_time, record.m_values, record.m_count);
}

// The place after all samples of log.
CSampleStore::CPlace EndOf(const CKeptLog& log) {
  CSampleSpans ignored;
  CSampleStore::CPlace end = log.samples.GetHeadPlace();
  log.samples.AddSpans(end, ignored);
  return end;
}

// The text of time in a text log.
std::string TextOf(const _timeb& time) {
  char text[kMaxTimeText];
  return {text, CTimeText().Put(text, time)};
}

// Opens a text log: 1, or 0 if there is none. Throws CFileException.
int OpenText(const CString& path, CFile& file) {
  if (file.Open(path, CFile::modeRead)) return 1;
  if (errno == ENOENT) return 0;
  throw CFileException(path, errno);
}

// What a line about the logs of an output or summary begins with: its name, or the folder if it has none.
CString Subject(const CTrackSettings& settings) {
  return (settings.logName.IsEmpty() ? settings.naming.Folder() : settings.logName) + ": ";
}

// Passes on what has happened to the logs of a track without a link.
void Deliver(CLogTrack& track, CLogListener* listener, std::vector<CKeeperLine>& lines) {
  for (const CTrackEvent& event : track.TakeEvents()) {
    if (event.kind == CTrackEvent::line)
      lines.push_back({event.severity, Subject(track.Settings()) + event.text});
    if (event.kind == CTrackEvent::closed && listener) listener->LogClosed(event.saved);
    if (event.kind != CTrackEvent::notSaved) continue;
    lines.push_back({severityError, event.unsaved.path + ": " + event.unsaved.reason});
    if (listener) listener->LogNotSaved(event.unsaved);
  }
}

}  // namespace

bool CLogTrack::CanContinue() const { return m_keeper.policy.live && !m_settings.isSummary; }

void CLogTrack::Recover(bool continues) {
  const std::optional<CUnfinishedLog> unfinished = m_lock.GetUnfinished();  // before the writer changes it
  const bool isLocked = m_lock.IsTaken(), wasCutOff = m_lock.WasCutOff();
  if (isLocked) {
    const std::vector<CString> lines = m_folder.RemoveLeftovers();
    const CGuard lock(m_mutex);
    for (const CString& line : lines) AddLine(severityWarning, line);
  }
  if (!m_keeper.policy.live) return;
  std::map<std::uint64_t, std::vector<std::uint64_t>> logs;  // the numbers of their journals, by their own
  for (const CJournalEntry& entry : ListJournals(m_settings.naming.directory))
    if (entry.key == m_key) logs[entry.number / kJournalsOfALog].push_back(entry.number);
  if (!logs.empty()) m_nextNumber = logs.rbegin()->first + 1;
  CRecovered recovered;
  bool isOneLeft = false;
  std::size_t left = logs.size();
  for (const auto& [number, journals] : logs) {
    --left;
    m_keeper.TellWaiting();
    isOneLeft |= !RecoverLog(journals, continues && left == 0, recovered);
    if (left == 0 || !m_keeper.IsNearLimit()) continue;
    isOneLeft = true;
    const CGuard lock(m_mutex);
    AddLine(severityWarning, "The journals of " + CString(std::to_string(left)) +
                                 " more logs are left for the next start: the logs cannot be saved");
    break;
  }
  try {
    if (isLocked) CompleteText();
    if (continues && !m_collected && unfinished && !isOneLeft) Continue(*unfinished);
  } catch (const CFileException&) {  // a file that cannot be read stays as it is
  } catch (const std::bad_alloc&) {  // so does one that is too large for the memory
  }
  const bool isRowLost = m_settings.isSummary && (wasCutOff || recovered.samples > 0);
  if (recovered.samples == 0 && !isRowLost) return;
  CString line = "The last run was cut off";
  if (recovered.samples > 0)
    line = "recovered " + ShowCount(recovered.samples) + ", " + ShowTime(recovered.first) + " to " +
           ShowTime(recovered.last);
  if (recovered.tornBytes)
    line += ", and dropped " + CString(std::to_string(recovered.tornBytes)) +
            " bytes that are not a whole record";
  const CGuard lock(m_mutex);
  AddLine(severityNotice, line + (isRowLost ? "; the row that was being made is lost" : ""));
}

// A journal that can be recovered.
struct CLogTrack::CFound {
  CLogPointer log;  // with the samples of the journal
  std::shared_ptr<CJournalWriter> journal;
  CJournalContent content;
};

// Makes a log of its journals, of which one has all samples that the others have; the others were given up
// after a fault. goesOn: if the log is not full, it is the one that is collected. False: a journal is left as
// it is, and the file that it continues must not change.
bool CLogTrack::RecoverLog(const std::vector<std::uint64_t>& journals, bool goesOn, CRecovered& recovered) {
  CFound best;
  std::vector<CString> others;
  bool isOneLeft = false;
  for (const std::uint64_t number : journals) {
    CFound found;
    isOneLeft |= !ReadJournalOf(number, found);
    if (!found.log) continue;
    if (!best.log || best.log->samples.GetCount() <= found.log->samples.GetCount()) std::swap(best, found);
    if (found.journal) others.push_back(found.journal->GetPath());
  }
  if (!best.log) return !isOneLeft;
  CLogPointer& log = best.log;
  log->number = journals[0] / kJournalsOfALog;
  log->journals = journals.back() % kJournalsOfALog + 1;
  log->names = best.content.head.varNames;
  goesOn = goesOn && CanContinue() && log->names == m_settings.varNames;
  try {
    if (!Join(log, best.content, goesOn)) {
      best.journal->Remove();
      for (const CString& path : others) RemoveJournal(path);
      return !isOneLeft;
    }
  } catch (const CFileException& fault) {
    const CGuard lock(m_mutex);
    AddLine(severityWarning,
            best.journal->GetPath() + " is left as it is: " + fault.m_path + ": " + fault.Text());
    return false;
  } catch (const std::bad_alloc&) {
    const CGuard lock(m_mutex);
    AddLine(severityWarning, best.journal->GetPath() + " is left as it is: " + kTooLarge);
    return false;
  }
  log->journal = best.journal;
  log->leftJournals = others;
  if (const std::uint64_t count = log->count - log->onDisk) {
    if (recovered.samples == 0) recovered.first = TimeOf(SpansOf(log->samples), log->onDisk);
    recovered.last = log->samples.GetLastTime();
    recovered.samples += count;
  }
  recovered.tornBytes += best.content.tornBytes;
  Enqueue(log, goesOn && log->count < m_settings.maxSamples);
  return !isOneLeft;
}

// Reads and locks a journal. One that never had samples is removed: found has no log then. False, and no log:
// it is left as it is.
bool CLogTrack::ReadJournalOf(std::uint64_t number, CFound& found) {
  const CString path = JoinPath(m_settings.naming.directory, JournalFile(m_key, number));
  CString fault;
  try {
    const auto log = std::make_shared<CKeptLog>(m_keeper.pool);
    found.journal = std::make_shared<CJournalWriter>(path, found.content, log->samples);
    if (found.content.fault.IsEmpty()) return found.log = log, true;
    if (found.content.isHeadTorn) return found.journal->Remove(), true;
    fault = found.content.fault;
  } catch (const CFileException& exception) {
    if (exception.m_error == EWOULDBLOCK) return false;  // its process lives
    fault = exception.Text();
  } catch (const std::bad_alloc&) {
    fault = kTooLarge;
  }
  const CGuard lock(m_mutex);
  AddLine(severityWarning, path + " is left as it is: " + fault);
  return false;
}

// Adds what the file of the log has to log, which has the samples of its journal. False: all of them are in
// the files, and the log does not go on or has no file. Throws CFileException if the file cannot be read: it
// may have them or not.
bool CLogTrack::Join(CLogPointer& log, const CJournalContent& content, bool goesOn) const {
  const std::optional<CJournaledLog>& named = content.Log();
  const bool isSame = content.GoesOn();
  const std::uint64_t before = isSame ? content.head.continues->samples : 0;
  const std::uint64_t journaled = log->samples.GetCount();
  CSampleStore saved;
  std::uint64_t inFile = named ? CountSaved(content.head.naming, *named, log->names, saved) : 0;
  if (inFile < before || (isSame && saved.GetCount() < before)) inFile = 0;  // it is missing, or another log
  const bool isSaved = journaled == 0 || inFile >= before + journaled;  // only the text copy can be missing
  const auto isTextSaved = [&] {
    return !content.head.naming.saveCsv || CountText(named->name).value_or(0) >= inFile;
  };
  const bool canGoOn = goesOn && saved.GetCount() == inFile;
  if (isSaved && (inFile == 0 || (!canGoOn && isTextSaved()))) return false;
  if (inFile > 0 && (isSame || isSaved)) {
    const auto joined = std::make_shared<CKeptLog>(m_keeper.pool);
    joined->names = log->names;
    joined->number = log->number;
    joined->journals = log->journals;
    joined->continued = *named;
    joined->continued->samples = isSaved ? inFile : before;
    AddSamples(*joined, saved, joined->continued->samples);
    joined->basePlace = EndOf(*joined);
    if (!isSaved) AddSamples(*joined, log->samples, journaled);
    log = joined;
  }
  log->count = log->journaled = log->samples.GetCount();
  log->journalPlace = EndOf(*log);
  log->synced = log->Base();
  if (inFile > 0) HaveFile(*log, *named, inFile);
  return true;
}

// How many samples of log are in its file; 0 if there is none, or the file is another log. samples gets them;
// not those of a text that is not as it was written. Throws CFileException.
std::uint64_t CLogTrack::CountSaved(const CLogNaming& naming, const CJournaledLog& log,
                                    const CStringArray& names, CSampleStore& samples) const {
  if (CFile text; !naming.saveRp) {
    if (!OpenText(m_folder.PathOf(log.name, ELogForm::text), text)) return 0;
    const std::uint64_t count = ReadCsv(text, names, samples);
    return !samples.IsEmpty() && TextOf(samples.GetHead().m_time) == TextOf(log.first) ? count : 0;
  }
  const CString path = m_folder.PathOf(log.name, ELogForm::binary);
  CLogReader reader(samples);
  if (reader.Open(path) && reader.HasNames(names) && reader.ReadSamples() && !samples.IsEmpty())
    return samples.GetHead().m_time == log.first ? samples.GetCount() : 0;
  if (reader.GetError() && reader.GetError() != ENOENT) throw CFileException(path, reader.GetError());
  return 0;
}

// How many samples the text copy has; none if there is no file. Throws CFileException.
std::optional<std::uint64_t> CLogTrack::CountText(const CString& name) const {
  CFile file;
  if (!OpenText(m_folder.PathOf(name, ELogForm::text), file)) return std::nullopt;
  std::uint64_t lines = 0;
  char bytes[16384];
  while (const std::size_t size = file.Read(bytes, sizeof bytes))
    lines += static_cast<std::uint64_t>(std::count(bytes, bytes + size, '\n'));
  return lines ? lines - 1 : 0;
}

// Whether a recovered log that is not complete or not saved yet has this file.
bool CLogTrack::IsContinued(const CString& file) const {
  const std::vector<CLogPointer> logs = Logs();
  return std::any_of(logs.begin(), logs.end(), [&file](const CLogPointer& log) {
    return log->continued && log->continued->name == file;
  });
}

// Goes on with file, which a clean stop has ended before it was full. A run that was killed since can have
// added samples. Not if it is another file now.
void CLogTrack::Continue(const CJournaledLog& file) {
  CSampleStore saved;
  if (!CanContinue() || IsContinued(file.name)) return;
  const std::uint64_t count = CountSaved(m_settings.naming, file, m_settings.varNames, saved);
  if (count < file.samples || count >= m_settings.maxSamples || saved.GetCount() != count) return;
  Enqueue(LogOf(file.name, saved), true);
}

// A kill can come between the two files of a log. If the log had no journal, because it was saved at once,
// its text copy lacks samples or is missing. Only the newest log can be in this state. A copy that is missing
// after a clean stop was removed, and is not made again.
void CLogTrack::CompleteText() {
  std::vector<CFolderEntry> entries;
  CString name;
  std::int64_t lastWrite = INT64_MIN;
  if (!m_settings.naming.saveRp || !m_settings.naming.saveCsv) return;
  FileLayer().List(m_settings.naming.Folder(), m_settings.naming.extension, entries);
  for (const CFolderEntry& entry : entries)
    if (const auto log = m_settings.naming.IsOwnFile(entry.name); log && entry.status.lastWrite >= lastWrite)
      name = log->name, lastWrite = entry.status.lastWrite;
  const std::uint64_t inText = name.IsEmpty() ? 0 : CountText(name).value_or(0);
  CSampleStore saved;
  CLogReader reader(saved);
  if (name.IsEmpty() || IsContinued(name) || (inText == 0 && !m_lock.WasCutOff()) ||
      !reader.Open(m_folder.PathOf(name, ELogForm::binary)) || !reader.HasNames(m_settings.varNames) ||
      !reader.ReadSamples() || saved.GetCount() <= inText)
    return;
  Enqueue(LogOf(name, saved), false);
}

// A log whose samples are saved, in its file.
CLogTrack::CLogPointer CLogTrack::LogOf(const CString& name, const CSampleStore& saved) {
  auto log = std::make_shared<CKeptLog>(m_keeper.pool);
  log->names = m_settings.varNames;
  log->number = m_nextNumber++;
  log->count = saved.GetCount();
  AddSamples(*log, saved, log->count);
  log->continued = {name, saved.GetHead().m_time, log->count};
  log->basePlace = log->journalPlace = EndOf(*log);
  log->journaled = log->synced = log->count;
  HaveFile(*log, *log->continued, log->count);
  return log;
}

// The first samples of log are in file.
void CLogTrack::HaveFile(CKeptLog& log, const CJournaledLog& file, std::uint64_t samples) const {
  log.name = file.name;
  log.named = file;
  log.onDisk = samples;
  const auto samplesOf = [&log](ELogForm form) -> std::uint64_t& {
    return log.files[static_cast<std::size_t>(form)].samples;
  };
  samplesOf(Counting()) = samples;
  if (!m_settings.naming.saveRp || !m_settings.naming.saveCsv) return;
  if (const auto lines = CountText(file.name))
    samplesOf(ELogForm::text) = std::clamp<std::uint64_t>(*lines, 1, samples);
}

// Adds a log with its samples, and waits until the writer has saved it, or has failed to save it or one that
// it waits for.
void CLogTrack::Enqueue(const CLogPointer& log, bool goesOn) {
  {
    const CGuard lock(m_mutex);
    m_logs.push_back(log);
    m_ledger.recovered += log->count - log->onDisk;
    if (goesOn) {
      m_collected = log;
      m_lastTime = log->samples.GetLastTime();
      m_hasLastTime = true;
      log->wantsImage = true;
    } else {
      log->isComplete = true;
      log->sequence = m_keeper.NextSequence();
      log->bytes = log->samples.GetMemory();
      m_keeper.Hold(log->bytes);
    }
  }
  m_keeper.Wake();
  const auto hasFailed = [this] {
    return std::any_of(m_logs.begin(), m_logs.end(), [](const auto& one) { return !one->failure.IsEmpty(); });
  };
  CGuard lock(m_mutex);
  WaitUntil(lock, std::chrono::steady_clock::now() + m_keeper.policy.closeWithin, [&] {
    return log->isDropped || hasFailed() || (goesOn && log->IsSaved()) || m_keeper.IsStopAsked();
  });
}

std::vector<CKeeperLine> RecoverForeignJournals(CKeeperState& keeper, CLogListener* listener) {
  std::set<std::string> folders, keys;
  for (const auto& track : keeper.Tracks()) {
    folders.insert(track->Settings().naming.directory.Std());
    keys.insert(track->Key().Std());
  }
  std::vector<CKeeperLine> lines;
  for (const std::string& folder : folders)
    for (const CJournalEntry& entry : ListJournals(CString(folder))) {
      CJournalContent content;
      CSampleStore samples;
      const CString path = JoinPath(CString(folder), JournalFile(entry.key, entry.number));
      if (keys.count(entry.key.Std()) > 0) continue;
      keeper.TellWaiting();
      if (!ReadJournal(path, content, samples)) {
        if (!content.isHeadTorn)
          lines.push_back({severityWarning, path + " is left as it is: " + content.fault});
        continue;
      }
      keys.insert(entry.key.Std());
      CTrackSettings settings = {content.head.isSummary, content.head.name,    content.head.naming,
                                 content.head.varNames,  content.head.maxLogs, content.head.maxSamples,
                                 content.head.retention};
      settings.naming.directory = CString(folder);
      const auto track = std::make_shared<CLogTrack>(keeper, settings);
      track->Adopt(entry.key);
      if (!keeper.Add(track)) continue;  // the journals stay for the next start
      track->Recover(false);
      if (track->Ledger().recovered > 0 || track->HasLogs())
        keeper.otherTracks.push_back(track);
      else
        keeper.Remove(track);  // its process lives, or its logs are on the disk
      Deliver(*track, listener, lines);
    }
  return lines;
}

std::vector<CKeeperLine> DeliverForeign(CKeeperState& keeper, CLogListener* listener) {
  std::vector<CKeeperLine> lines;
  for (const auto& track : keeper.otherTracks) Deliver(*track, listener, lines);
  return lines;
}

}  // namespace vastra
