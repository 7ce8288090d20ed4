// The reader of binary logs on arbitrary bytes. A log that it accepts is written as a text log, and as a
// binary log that reads back the same. The catalogue of logs, which reads only parts of a file, finds the
// same samples.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "vastra/history/catalogue.h"
#include "vastra/history/row_reader.h"
#include "vastra/logfiles/csv_format.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra {
namespace {

// Whether two stores hold the same samples, bit for bit.
bool Same(const CSampleStore& a, const CSampleStore& b) {
  CSampleStore::CPlace placeA = a.GetHeadPlace(), placeB = b.GetHeadPlace();
  CSampleRecord left, right;
  while (a.GetNext(placeA, left)) {
    if (!b.GetNext(placeB, right) || !(left.m_time == right.m_time) || left.m_count != right.m_count ||
        std::memcmp(left.m_values, right.m_values, left.m_count * sizeof(float)) != 0)
      return false;
  }
  return !b.GetNext(placeB, right);
}

void Require(bool holds) {
  if (!holds) std::abort();
}

void WriteAgain(const CStringArray& names, const CSampleStore& samples) {
  CLogWriter writer;
  writer.SetNames(names);
  CMemFile file;
  writer.Write(file, samples);
  CSampleStore back;
  CLogReader log(back);
  Require(log.Open(file) && log.HasNames(names) && log.ReadSamples() && Same(samples, back));
}

// Whether the catalogue finds no fault in a log, and the rows that it then reads: none of a log without
// names.
bool ReadByCatalogue(const std::string& bytes, std::optional<std::size_t>& count) {
  const int file = ::memfd_create("log", 0);
  Require(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  CCatalogue catalogue;
  catalogue.Add(CString("/proc/self/fd/" + std::to_string(file)), false);
  catalogue.Scan();
  const CHistoryLog& log = catalogue.Logs()[0];
  CRowReader reader(catalogue.Logs(), {});
  CHistoryRow row;
  std::size_t rows = 0;
  while (reader.Next(row)) ++rows;
  ::close(file);
  if (log.names && !log.names->empty() && reader.Faults().empty()) count = rows;
  return log.fault.IsEmpty();
}

void Read(const std::string& bytes) {
  CMemFile file(bytes);
  CSampleStore samples;
  CLogReader log(samples);
  const bool isLog = log.Open(file) && log.ReadSamples();
  std::optional<std::size_t> rows;
  Require(ReadByCatalogue(bytes, rows) || !isLog);
  Require(!rows || (isLog && *rows == samples.GetCount()));
  if (!isLog) return Require(!log.GetFault().IsEmpty() && samples.IsEmpty());
  CStringArray names;
  log.GetNames(names);
  CMemFile csv;
  CCsvText text;
  WriteCsv(csv, names, samples, text);
  if (!samples.IsEmpty()) WriteAgain(names, samples);
  for (CLogSample sample; !samples.IsEmpty();) samples.RemoveHead(sample);
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  vastra::Read(std::string(reinterpret_cast<const char*>(bytes), size));
  return 0;
}
