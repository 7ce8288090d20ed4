#include "vastra/logfiles/file_link.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "vastra/logfiles/log_file.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/logfiles/log_track.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

const CString kFileTypeName = "CFileLink";

constexpr const char* kCsvExtension = ".csv";

constexpr CFault kNoNameVariable = {
    severityFatal, "The variable used for naming the logs is not included in the logged variables\n"};
constexpr CFault kBadDirectory = {severityFatal, "There is a problem with the destination directory"};
constexpr CFault kNotRead = {severityFatal, "Couldn't read file."};
constexpr CFault kInvalidOperation = {severityError, "Invalid operation."};
constexpr CFault kNoMemory = {severityError, "Not enough memory."};
constexpr CFault kRpNotSaved = {severityError, "Couldn't save file."};
constexpr CFault kCsvNotSaved = {severityError, "Couldn't save CSV file."};
constexpr CFault kNotWriting = {severityError, "Invalid configuration."};
constexpr CFault kNoSamples = {severityNotice, "No samples to write (Probably new file)."};
constexpr CFault kEndOfFile = {severityNotice, "Reached end of file"};
constexpr CFault kEndOfList = {severityWarning, "File list finished."};
constexpr CFault kFileNotOpened = {severityError, "Couldn't open file."};
constexpr CFault kOtherVariables = {severityError, "Archive with different variables"};

}  // namespace

IMPLEMENT_DYNAMIC(CFileConfig, CLinkConfig)

CFileLink* CFileLink::Create(CLink* component) { return component ? nullptr : new CFileLink; }

CFileLink::CFileLink() : CLink(kFileTypeName) {}

int CFileLink::Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) {
  BeginOpen();
  std::unique_ptr<CLinkConfig> taken = TakeConfig(configs, RUNTIME_CLASS(CFileConfig), fault::noConfig);
  if (!taken) return 0;
  const auto& config = static_cast<const CFileConfig&>(*taken);
  static_cast<CFileSettings&>(*this) = config;
  const CFault* failed = mode == modeRead && !m_bufferOnly ? OpenReplay(config.m_files)
                                                           : OpenWriterOrBuffer(config.m_varNames, mode);
  taken.reset();
  if (failed) return Fail(functionOpen, *failed);
  m_filesRead = 0;
  m_finished = m_partial = 0;
  m_currentName.Empty();
  m_mode = mode;
  if (m_pTrack) return End(functionOpen);
  if (m_saveRp) m_rpLogs.CreateFileList(m_directory, m_extension);
  if (m_saveCsv) m_csvLogs.CreateFileList(m_directory, kCsvExtension);
  return End(functionOpen);
}

const CFault* CFileLink::OpenReplay(const CStringList& files) {
  if (!OrderFileList(files)) return &kNotRead;
  m_nextFile = m_orderedFiles.GetHeadPosition();
  return OpenNextFile(m_nextFile, 1) ? nullptr : &kNotRead;
}

const CFault* CFileLink::OpenWriterOrBuffer(const CStringArray& names, UINT mode) {
  m_varNames = names;
  const bool namedByTime = m_nameVariable.IsEmpty() || m_nameVariable == kNamedByTime;
  if (!namedByTime && FindIn(m_varNames, m_nameVariable) < 0) return &kNoNameVariable;
  return mode == modeWrite && !m_bufferOnly ? OpenDirectory() : nullptr;
}

const CFault* CFileLink::OpenDirectory() {
  if (!CanEnter(m_directory)) return &kBadDirectory;
  if (m_pKeeper) return OpenTrack();
  RemoveLeftImages(m_directory, FileOfRP(""));
  RemoveLeftImages(m_directory, FileOfCSV(""));
  m_writer.SetNames(m_varNames);
  return nullptr;
}

void CFileLink::Close() {
  Begin(functionClose);
  EndKept();
  m_account.Discard("closed before they were saved");
  m_samples.FreeMemory();
  m_csvText.FreeMemory();
  m_nextFile = nullptr;
  m_mode = modeNotOpened;
  End(functionClose);
}

int CFileLink::Write(CLogSample& sample) {
  Begin(functionWrite);
  if (m_mode == modeNotOpened) return Fail(functionWrite, fault::notOpened);
  if (const CFault* failed = KeepSample(sample)) return Fail(functionWrite, *failed);
  if (IsWriter() && IsFull() && !Flush()) return 0;
  return End(functionWrite);
}

const CFault* CFileLink::KeepSample(const CLogSample& sample) {
  if (!IsWriter() && !m_bufferOnly) return &kInvalidOperation;
  try {  // everything that can fail comes before the first change
    if (IsWriter() && !m_pTrack) m_samples.MakeRoom(sample.m_values.GetSize());
    m_lastSample = sample;
    if (m_pTrack) return AppendToTrack(sample), nullptr;
  } catch (const std::bad_alloc&) {
    return &kNoMemory;
  }
  if (IsWriter()) m_samples.Append(sample), m_account.Take(sample.m_time);
  return nullptr;
}

int CFileLink::Flush() {
  Begin(functionFlush);
  if (m_mode == modeNotOpened) return Fail(functionFlush, fault::notOpened);
  const CFault* failed = nullptr;
  if (m_pTrack)
    failed = FlushTrack();
  else if (m_partial)
    EndPartialLog();
  else if (IsWriter() && !m_samples.IsEmpty())
    failed = SaveLog();
  else if (IsReplay() && !m_orderedFiles.IsEmpty())
    failed = LoadNextFile();
  else
    failed = m_samples.IsEmpty() ? &kept::emptyLog : &kNotWriting;
  return failed ? Fail(functionFlush, *failed) : End(functionFlush);
}

const CFault* CFileLink::SaveLog() {
  const CString name = CreateName();
  const CFault* failed = nullptr;
  if (m_saveRp) {
    if (SaveAsRP(name))
      m_rpLogs.Add(FileOfRP(name)), Rotate(m_rpLogs);
    else
      failed = &kRpNotSaved;
  }
  if (m_saveCsv && !failed) {
    if (SaveAsCSV(name))
      m_csvLogs.Add(FileOfCSV(name)), Rotate(m_csvLogs);
    else
      failed = &kCsvNotSaved;
  }
  DropSamples();
  return failed;
}

int CFileLink::PartialFlush() {
  Begin(functionPartialFlush);
  if (m_pTrack && !m_pTrack->IsEmpty()) return m_pTrack->WantImage(), End(functionPartialFlush);
  if (m_samples.IsEmpty()) return Send(functionPartialFlush, kNoSamples), 1;
  if (!IsWriter()) return Fail(functionPartialFlush, kInvalidOperation);
  if (!m_partial) BeginPartialLog();
  if (m_saveRp) {
    if (!SaveAsRP(m_currentName)) return Fail(functionPartialFlush, kRpNotSaved);
    Rotate(m_rpLogs);
  }
  if (m_saveCsv) {
    if (!SaveAsCSV(m_currentName)) Send(functionPartialFlush, kCsvNotSaved);
    Rotate(m_csvLogs);
  }
  return End(functionPartialFlush);
}

// Adds the log to the lists before its first image is written, because an image that fails is written again
// later.
void CFileLink::BeginPartialLog() {
  m_partial = 1;
  m_currentName = CreateName();
  if (m_saveRp) m_rpLogs.Add(FileOfRP(m_currentName));
  if (m_saveCsv) m_csvLogs.Add(FileOfCSV(m_currentName));
  m_csvText.RemoveAll();
}

// Writes the samples since the last PartialFlush by another one, which reports its own failure.
void CFileLink::EndPartialLog() {
  m_ending = true;
  PartialFlush();
  m_ending = false;
  DropSamples();
  m_currentName.Empty();
  m_partial = 0;
}

CString CFileLink::CreateName() {
  const CString prefix = m_usePrefix ? m_prefix : CString();
  if (m_nameVariable == kNamedByTime)
    return m_hourNames.CreateFileName(CTime(m_samples.GetHead().m_time.time), prefix);
  return CreateFileNameFromVar(m_nameVariable, m_varNames, m_samples, m_dwordName, prefix);
}

int CFileLink::SaveFile(const CString& file, bool counts, const std::function<void(CFile&)>& write) {
  const CString path = JoinPath(m_directory, file);
  CSaveFailure failure;
  const int saved = SaveLogFile(path, m_partial, write, &failure);
  if (!saved)
    m_notSaved = failure.reason;
  else if (counts)
    HaveSaved(file);
  if (m_pListener) saved ? ReportSaved(path) : ReportFailure(path, failure);
  return saved;
}

void CFileLink::HaveSaved(const CString& file) {
  if (!m_partial) m_account.Remove(file);  // an older log of this name was replaced
  m_account.Save(file);
}

void CFileLink::Rotate(CLogList& logs) {
  for (const CString& file : logs.Rotate(m_directory, m_maxLogs)) m_account.Remove(file);
}

// Those that no file has are lost.
void CFileLink::DropSamples() {
  m_account.Discard(m_notSaved);
  m_samples.RemoveAll();
}

void CFileLink::ReportSaved(const CString& path) {
  const CSavedLog log = {m_listenerLog,           AbsolutePath(path),   m_samples.GetHead().m_time,
                         m_samples.GetLastTime(), m_samples.GetCount(), FileSize(path)};
  if (m_partial && !m_ending)
    m_pListener->LogGrew(log);
  else
    m_pListener->LogClosed(log);
}

void CFileLink::ReportFailure(const CString& path, const CSaveFailure& failure) {
  m_pListener->LogNotSaved(
      {m_listenerLog, AbsolutePath(path), failure.reason, m_samples.GetCount(), failure.leftShortFile});
}

int CFileLink::SaveAsRP(const CString& name) {
  return SaveFile(FileOfRP(name), true, [this](CFile& file) { m_writer.Write(file, m_samples); });
}

int CFileLink::SaveAsCSV(const CString& name) {
  return SaveFile(FileOfCSV(name), !m_saveRp, [this](CFile& file) {
    m_partial ? WritePartialCsv(file) : WriteCsv(file, m_varNames, m_samples, m_csvText);
  });
}

// Makes only the lines of the samples since the last image.
void CFileLink::WritePartialCsv(CFile& file) {
  if (m_csvText.View().empty()) {
    m_csvPlace = m_samples.GetHeadPlace();
    m_csvText.AddNames(m_varNames);
  }
  CSampleRecord sample;
  for (CSampleStore::CPlace next = m_csvPlace; m_samples.GetNext(next, sample); m_csvPlace = next)
    m_csvText.AddSample(sample);
  file.Write(m_csvText.View().data(), m_csvText.View().size());
}

int CFileLink::Read(CLogSample& sample) {
  Begin(functionRead);
  if (m_mode == modeNotOpened) return Fail(functionRead, fault::notOpened);
  try {
    if (!IsReplay()) {
      sample = m_lastSample;
      return End(functionRead);
    }
    while (m_samples.IsEmpty()) {  // repeats only for a log without samples
      Send(functionRead, kEndOfFile);
      if (!Flush()) return End(functionRead), 0;
    }
    m_samples.RemoveHead(sample);
  } catch (const std::bad_alloc&) {
    return Fail(functionRead, kNoMemory);
  }
  return End(functionRead);
}

const CFault* CFileLink::LoadNextFile() {
  m_samples.RemoveAll();
  if (!m_nextFile) return m_finished = 1, &kEndOfList;
  return OpenNextFile(m_nextFile, 0) ? nullptr : &kFileNotOpened;
}

// Loads the log at position and moves position to the next one, also if that fails: a log that fails is not
// tried again and leaves no samples.
int CFileLink::OpenNextFile(POSITION& position, int loadNames) {
  if (!position) return 0;
  const CString& path = m_orderedFiles.GetNext(position);
  ++m_filesRead;
  CLogReader log(m_samples);
  try {
    if (!log.Open(path)) return 0;
    if (loadNames)
      log.GetNames(m_varNames);
    else if (!log.HasNames(m_varNames))
      return Fail(functionFlush, kOtherVariables);
    return log.ReadSamples();
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

// Sorts the logs among files by the times of their first samples; logs with equal times keep their order.
// Skips files that are not logs; returns 0 if a file cannot be read.
int CFileLink::OrderFileList(const CStringList& files) {
  m_orderedFiles.RemoveAll();
  std::vector<std::pair<std::int32_t, const CString*>> logs;
  for (const CString& path : files) {
    std::int32_t time = 0;
    const ELogKind kind = ReadFirstTime(path, time);
    if (kind == ELogKind::unreadable) return 0;
    if (kind == ELogKind::log) logs.emplace_back(time, &path);
  }
  std::stable_sort(logs.begin(), logs.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [time, path] : logs) m_orderedFiles.AddTail(*path);
  return 1;
}

UINT CFileLink::GetTotalFiles() const {
  return IsReplay() ? static_cast<UINT>(m_orderedFiles.GetCount()) : 0;
}

UINT CFileLink::GetCurrentFile() const { return IsReplay() ? m_filesRead : 0; }

int CFileLink::Finished() const { return IsReplay() ? m_finished : 0; }

CFill CFileLink::GetFill() const {
  if (IsReplay()) return {m_samples.GetCount(), m_samples.GetCount() + m_samples.GetTakenCount()};
  if (m_pTrack) return {m_pTrack->UnsavedCount(), m_maxSamples};
  if (IsWriter()) return {m_partial ? 0 : m_samples.GetCount(), m_maxSamples};
  return {};
}

int CFileLink::ReadVariable(UINT index, float& value) {
  if (!IsInBuffer(index)) return 0;
  value = m_lastSample.m_values[static_cast<int>(index)];
  return 1;
}

int CFileLink::WriteVariable(UINT index, float value) {
  if (!IsInBuffer(index)) return 0;
  m_lastSample.m_values[static_cast<int>(index)] = value;
  return 1;
}

bool CFileLink::IsInBuffer(UINT index) const {
  return m_mode != modeNotOpened && m_bufferOnly &&
         index < static_cast<UINT>(m_lastSample.m_values.GetSize());
}

}  // namespace vastra
