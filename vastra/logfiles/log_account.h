// CLogAccount: the ledger of a link that writes its logs by itself, and the rows of each of its files.
#pragma once

#include <string>
#include <unordered_map>

#include "vastra/logfiles/log_ledger.h"

namespace vastra {

// How many samples of this run each file has.
class CRowsOfFiles {
 public:
  void Add(const CString& file, std::uint64_t rows) { m_rows[file.Std()] += rows; }
  // Forgets the file and returns its rows.
  std::uint64_t Remove(const CString& file);

 private:
  std::unordered_map<std::string, std::uint64_t> m_rows;
};

class CLogAccount {
 public:
  const CLogLedger& Ledger() const { return m_ledger; }

  void Take(const _timeb& time);
  // All samples in memory are in file now.
  void Save(const CString& file);
  // A file was removed, or replaced by another log.
  void Remove(const CString& file) { m_ledger.rotated += m_rows.Remove(file); }
  // The samples in memory that are not on the disk are lost.
  void Discard(const CString& cause);

 private:
  CLogLedger m_ledger;
  CRowsOfFiles m_rows;
  _timeb m_first, m_last;  // of the samples in memory that are not on the disk
};

}  // namespace vastra
