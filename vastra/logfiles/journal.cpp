#include "vastra/logfiles/journal.h"

#include <cerrno>

#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::size_t kJournalBufferSize = std::size_t{256} * 1024;
constexpr int kMostCreations = 5;

void PutJournalSample(std::string& bytes, const CSampleRecord& sample) {
  const std::size_t record = BeginJournalRecord(bytes, EJournalRecord::sample);
  char count[kLongCountSize];
  bytes.append(reinterpret_cast<const char*>(&sample.m_time), sizeof sample.m_time);
  bytes.append(count, static_cast<std::size_t>(PutCount(count, sample.m_count) - count));
  bytes.append(sample.m_values, sample.m_count * sizeof(float));
  EndJournalRecord(bytes, record);
}

}  // namespace

// The recovery of another process can lock and remove the file before it is locked here.
void CJournalFile::Create(const CString& path) {
  for (int creations = 1; creations <= kMostCreations; ++creations) {
    if (!Open(path, modeWrite | modeCreate | modeNew)) Fail();
    Lock();
    if (IsInFolder()) return;
  }
  throw CFileException(path, ENOENT);
}

void CJournalFile::OpenExisting(const CString& path) {
  if (!Open(path, modeWrite)) Fail();
  Lock();
}

void CJournalFile::Lock() {
  if (FileLayer().Lock(m_handle) == EFileLock::held) throw CFileException(m_path, EWOULDBLOCK);
}

void CJournalFile::SetLength(std::uint64_t length) {
  if (!FileLayer().Truncate(m_handle, length)) Fail();
}

bool CJournalFile::IsInFolder() const {
  CFileStatus file, found;
  return FileLayer().StatOpen(m_handle, file) && FileLayer().Stat(m_path, found) &&
         file.inode == found.inode && file.device == found.device;
}

void CJournalFile::SyncFolder() {
  if (!SyncDirectory(DirectoryOf(m_path))) Fail();
}

CJournalWriter::CJournalWriter(const CString& path, const CJournalHead& head) {
  m_file.Create(path);
  try {
    WriteRecords([&] {
      const CJournalStart start;
      m_buffer.append(reinterpret_cast<const char*>(&start), sizeof start);
      PutJournalHead(m_buffer, head);
    });
  } catch (...) {
    DeleteFile(path);
    throw;
  }
}

CJournalWriter::CJournalWriter(const CString& path, CJournalContent& content, CSampleStore& samples) {
  m_file.OpenExisting(path);
  if (!ReadJournal(path, content, samples)) return;
  m_length = content.goodBytes;
  Cut();
}

void CJournalWriter::Append(const CSampleSpans& samples) {
  WriteRecords([&] {
    CSampleRecord sample;
    for (CSampleSpan span : samples)
      while (span.GetNext(sample)) {
        PutJournalSample(m_buffer, sample);
        if (m_buffer.size() >= kJournalBufferSize) FlushBuffer();
      }
  });
}

void CJournalWriter::Name(const CString& name, const _timeb& first, std::uint64_t samples) {
  WriteRecords([&] { PutJournaledLog(m_buffer, {name, first, samples}); });
}

template <class T>
void CJournalWriter::WriteRecords(const T& put) {
  const std::lock_guard lock(m_mutex);
  if (m_isRemoved) return;
  if (m_isTorn) Cut();
  m_buffer.clear();
  m_written = m_length;
  try {
    m_isTorn = true;
    put();
    FlushBuffer();
    m_length = m_written;
    m_isTorn = false;
  } catch (...) {
    try {
      Cut();
    } catch (const CFileException&) {  // the next write tries again
    }
    throw;
  }
}

void CJournalWriter::FlushBuffer() {
  m_file.Write(m_buffer.data(), m_buffer.size());
  m_written += m_buffer.size();
  m_buffer.clear();
}

void CJournalWriter::Cut() {
  m_file.SetLength(m_length);
  m_isTorn = false;
}

void CJournalWriter::Sync() {
  if (m_isRemoved) return;
  if (const int error = m_syncError) throw CFileException(GetPath(), error);
  try {
    SyncOnce();
  } catch (const CFileException& fault) {
    const std::lock_guard lock(m_mutex);  // waits for a Remove
    if (m_isRemoved) return;
    m_syncError = fault.m_error;
    throw;
  }
}

void CJournalWriter::SyncOnce() {
  m_file.Sync();
  if (!m_isFolderSynced) m_file.SyncFolder();
  m_isFolderSynced = true;
  if (!m_file.IsInFolder()) throw CFileException(GetPath(), ENOENT);
}

void CJournalWriter::Remove() {
  const std::lock_guard lock(m_mutex);
  if (m_isRemoved) return;
  if (!RemoveJournal(GetPath())) throw CFileException(GetPath(), errno);
  m_isRemoved = true;
}

int RemoveJournal(const CString& path) {
  if (DeleteFile(path) || errno == ENOENT) return 1;
  const int reason = errno;
  if (CFile().Open(path, CFile::modeWrite | CFile::modeCreate)) return 1;
  errno = reason;
  return 0;
}

}  // namespace vastra
