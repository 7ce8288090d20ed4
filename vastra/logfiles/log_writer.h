// CLogWriter: writes binary logs with one list of names. The head, which does not change from log to log, is
// encoded once.
#pragma once

#include <sys/uio.h>

#include <string>
#include <vector>

#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/file.h"

namespace vastra {

class CLogWriter {
 public:
  void SetNames(const CStringArray& names);
  // Writes samples, which must not be empty, as a log with one system call. Throws CFileException.
  void Write(CFile& file, const CSampleSpans& samples);
  void Write(CFile& file, const CSampleStore& samples);

 private:
  std::string m_head;          // up to the number of samples
  std::vector<iovec> m_parts;  // of the current write; members to reuse their memory
  CSampleSpans m_spans;
};

}  // namespace vastra
