// The reader of binary logs on arbitrary bytes. A log that it accepts is written as a text log, and as a
// binary log that reads back the same.
#include <cstdlib>

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

void Read(CFile& file) {
  CSampleStore samples;
  CLogReader log(samples);
  if (!log.Open(file) || !log.ReadSamples()) return Require(!log.GetFault().IsEmpty() && samples.IsEmpty());
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
  vastra::CMemFile file(std::string(reinterpret_cast<const char*>(bytes), size));
  vastra::Read(file);
  return 0;
}
