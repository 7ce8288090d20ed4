#include "vastra/logfiles/log_writer.h"

#include <cstddef>

#include "vastra/platform/archive.h"

namespace vastra {

void CLogWriter::SetNames(const CStringArray& names) {
  const CLogStart start;
  const std::uint32_t noSamples = 0;
  CMemFile head;
  CArchive ar(&head, CArchive::store);
  CStringArray copy = names;  // an archive stores and loads through the same function
  ar.Write(&start, sizeof start);
  ar << CString();
  ar.Serialize(copy);
  ar << noSamples;
  ar.Close();
  m_head = head.Bytes();
}

void CLogWriter::Write(CFile& file, const CSampleStore& samples) {
  m_spans.clear();
  CSampleStore::CPlace from = samples.GetHeadPlace();
  samples.AddSpans(from, m_spans);
  Write(file, m_spans);
}

void CLogWriter::Write(CFile& file, const CSampleSpans& samples) {
  std::uint32_t count = 0;
  for (const CSampleSpan& span : samples) count += static_cast<std::uint32_t>(span.m_count);
  const auto patch = [this](std::size_t offset, const auto& value) {
    std::memcpy(m_head.data() + offset, &value, sizeof value);
  };
  const CSampleSpan& last = samples.back();
  patch(offsetof(CLogStart, m_firstTime), samples.front().m_times->time);
  patch(offsetof(CLogStart, m_lastTime), last.m_times[last.m_count - 1].time);
  patch(m_head.size() - sizeof count, count);

  char timeCount[kLongCountSize];
  CLogTrailer trailer = 0;
  m_parts.clear();
  const auto add = [this](const void* bytes, std::size_t size) {
    m_parts.push_back({const_cast<void*>(bytes), size});
  };
  add(m_head.data(), m_head.size());
  for (const CSampleSpan& span : samples) add(span.m_records, span.m_bytes);
  add(timeCount, static_cast<std::size_t>(PutCount(timeCount, count) - timeCount));
  for (const CSampleSpan& span : samples) add(span.m_times, span.m_count * sizeof(_timeb));
  add(&trailer, sizeof trailer);
  file.WriteParts(m_parts.data(), m_parts.size());
}

}  // namespace vastra
