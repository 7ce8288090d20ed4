// CLogLayout: where the parts of a binary log are in its file, so that a reader takes only the bytes that it
// needs. The catalogue of logs uses it.
#pragma once

#include <vector>

#include "vastra/logfiles/log_format.h"
#include "vastra/logfiles/probed_file.h"

namespace vastra {

// Records with the same number of values that follow each other in the file.
struct CRecordRun {
  std::uint32_t first = 0;   // the index of its first sample
  std::uint32_t values = 0;  // of each record
  std::uint64_t place = 0;   // of the first record, which begins with its count

  std::size_t RecordSize() const { return SizeOfCount(values) + std::size_t{values} * sizeof(float); }
};

struct CLogLayout {
  CLogStart start;
  std::uint32_t nameCount = 0;
  std::uint64_t names = 0, namesSize = 0;  // place and bytes of the names
  std::uint32_t samples = 0;
  std::vector<CRecordRun> runs;  // empty without samples
  std::uint64_t times = 0;       // place of the first time record
  // The counts of the records were not looked at: the file has the size of a log whose records are all as
  // long as the first one. Who reads a record compares its count with the run.
  bool isAssumed = false;
};

// How the counts of the records are found.
enum class ERecords { assumed, counted };  // assumed: from the size of the file if it fits, else counted

// Reads the layout of the log in file, which is open. 1, or 0 with the reason in fault, as of CLogReader.
int ReadLogLayout(CProbedFile& file, ERecords records, CLogLayout& layout, CString& fault);

}  // namespace vastra
