// CJournalWriter: the journal of one log, which has the samples of the log before the log is on the disk. The
// keeper of logs writes it. After a kill or a power cut the next run makes the log of it (journal_reader.h).
#pragma once

#include <atomic>
#include <mutex>

#include "vastra/logfiles/journal_reader.h"

namespace vastra {

// The file of a journal. It is locked while a process has it open; the lock ends with the process.
class CJournalFile : public CFile {
 public:
  // Creates the file, which must not exist. Throws CFileException; EWOULDBLOCK: it is locked.
  void Create(const CString& path);
  // Opens an existing file for writing, in the same way.
  void OpenExisting(const CString& path);
  // Cuts the file after length bytes. The next write follows them.
  void SetLength(std::uint64_t length);
  // Whether the path still leads to the file.
  bool IsInFolder() const;
  void SyncFolder();

 private:
  void Lock();
};

// Removes a journal whose samples are on the disk. One that cannot be removed is made empty: the next start
// would make a log of it again if the rotation has removed its log. Returns 1, or 0 with the reason in errno.
int RemoveJournal(const CString& path);

// Append, Name, Sync and Remove may be called from different threads at the same time: a Sync, which can last
// long, does not delay the others. Each operation can throw CFileException, Append and Name std::bad_alloc,
// too. One that fails leaves nothing in the journal: its bytes are removed at once, or before the next write
// if that fails, too. Later operations can succeed.
class CJournalWriter {
 public:
  // Creates the journal at path, which must not exist, locks it and writes its head. The system's error
  // EWOULDBLOCK means that another process has locked the file.
  CJournalWriter(const CString& path, const CJournalHead& head);
  // Continues an existing journal: locks and reads it, as ReadJournal does, and removes what is torn at its
  // end. If content has a fault, the file is unchanged, and only Remove may be called.
  CJournalWriter(const CString& path, CJournalContent& content, CSampleStore& samples);
  CJournalWriter(const CJournalWriter&) = delete;
  CJournalWriter& operator=(const CJournalWriter&) = delete;
  ~CJournalWriter() = default;  // the file stays

  const CString& GetPath() const { return m_file.GetPath(); }

  // Writes all samples, or none if it throws.
  void Append(const CSampleSpans& samples);
  // Writes the name that the log of these samples is about to get, the time of its first sample and the
  // number of its samples: a recovery then finds the log by its name and leaves its samples out. Sync it
  // before the log gets the name. The last name holds.
  void Name(const CString& name, const _timeb& first, std::uint64_t samples);
  // Returns when what was written before the call is on the disk. After one failure each further Sync fails
  // with the same reason: the system can report success for bytes that it has dropped. The caller writes the
  // samples to a new journal then. ENOENT: somebody has removed the file.
  void Sync();
  // Whether a sync has failed, so that the journal cannot be synced any more.
  bool HasFailed() const { return m_syncError != 0; }
  // Removes the file. The other operations have no effect then. No effect if the file was removed before.
  void Remove();

 private:
  void SyncOnce();
  // Calls put, which appends records to m_buffer, and writes them: all or none.
  template <class T>
  void WriteRecords(const T& put);
  void FlushBuffer();
  void Cut();

  std::mutex m_mutex;  // of the members up to m_isTorn
  CJournalFile m_file;
  std::string m_buffer;         // records to write
  std::uint64_t m_length = 0;   // of the whole records in the file
  std::uint64_t m_written = 0;  // of the file, with the records that are being written
  bool m_isTorn = false;        // bytes after m_length have to be removed

  std::atomic<bool> m_isRemoved{false};
  std::atomic<bool> m_isFolderSynced{false};
  std::atomic<int> m_syncError{0};  // errno of the sync that failed
};

}  // namespace vastra
