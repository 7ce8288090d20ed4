// CLogValues: the samples of one log of a catalogue by their numbers, of which it reads only what is asked
// for.
#pragma once

#include <deque>

#include "vastra/history/history_log.h"

namespace vastra {

class CLogValues;

// The files that some readers have open: those above the limit are closed and opened again later. Keeps
// memory of logs that were read for the next ones.
class COpenLogs {
 public:
  void Add(CLogValues* log);
  void Remove(CLogValues* log);
  std::vector<char> TakeMemory();  // of any size
  void GiveMemory(std::vector<char>&& memory);

 private:
  static constexpr std::size_t kMostKept = 4;
  static constexpr std::size_t kMostOpen = 64;

  std::deque<CLogValues*> m_logs;  // the oldest first
  std::vector<std::vector<char>> m_memory;
};

// Samples that follow each other, in the form of a log.
struct CLoadedSamples {
  std::uint32_t count = 0;
  const _timeb* times = nullptr;
  const char* records = nullptr;  // the first one; a record begins with the count of its values
  std::size_t recordSize = 0;     // bytes from one record to the next
  std::uint32_t values = 0;       // of each record
};

class CLogValues {
 public:
  // log and open must exist as long as the object. The file is opened when it is needed. One that has grown
  // or was written again is still read if it begins with the samples of log.
  CLogValues(const CHistoryLog& log, COpenLogs& open);
  CLogValues(const CLogValues&) = delete;
  CLogValues& operator=(const CLogValues&) = delete;
  ~CLogValues() { Close(); }

  const CHistoryLog& Log() const { return m_log; }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(m_log.samples); }

  // Each returns false with the reason in Fault if the file cannot be read or is another log now.
  // Gets the times of count samples from first on.
  bool ReadTimes(std::uint32_t first, std::uint32_t count, _timeb* times);
  // Gets the number of the first sample whose moment is not before moment, of a log that is ordered.
  bool Find(CMoment moment, std::uint32_t& index);
  // Loads samples from first on: at least one and at most count, about mostBytes. They are valid until the
  // next call.
  bool Load(std::uint32_t first, std::uint32_t count, std::size_t mostBytes, CLoadedSamples& samples);
  const CString& Fault() const { return m_fault; }

  void Close();  // frees the memory, too

 private:
  friend class COpenLogs;

  bool NeedFile();
  bool Renew();
  bool CountRecords();
  bool LoadFromFile(std::uint32_t first, std::uint32_t count, std::size_t mostBytes, CLoadedSamples& samples);
  const CRecordRun& RunOf(std::uint32_t index, std::uint32_t& end) const;
  void IndexJournal();
  bool Fail(const CString& fault);
  bool FailRead();

  const CHistoryLog& m_log;
  COpenLogs& m_open;
  CString m_fault;
  std::unique_ptr<CProbedFile> m_pFile;
  CFileStatus m_status;
  std::shared_ptr<const CLogLayout> m_layout;
  std::vector<char> m_records;
  std::vector<_timeb> m_times;
  std::vector<CSampleRecord> m_journal;  // all samples of a journal
};

}  // namespace vastra
