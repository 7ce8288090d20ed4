// CLogWriter: writes binary logs of one list of names. What does not change from log to log, or from row to
// row of a log that grows, is encoded once.
#pragma once

#include <string>
#include <vector>

#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/file.h"

namespace vastra {

class CLogWriter {
 public:
  void SetNames(const CStringArray& names);
  // Writes the whole log of samples, which is not empty, with one system call. Throws CFileException.
  void Write(CFile& file, const CSampleStore& samples);

 private:
  std::string m_head;          // up to the number of samples
  std::vector<iovec> m_parts;  // of the write under way; kept for its memory
};

}  // namespace vastra
