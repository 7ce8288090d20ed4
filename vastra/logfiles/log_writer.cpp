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
  const auto count = static_cast<std::uint32_t>(samples.GetCount());
  const auto patch = [this](std::size_t offset, const auto& value) {
    std::memcpy(m_head.data() + offset, &value, sizeof value);
  };
  patch(offsetof(CLogStart, m_firstTime), samples.GetHead().m_time.time);
  patch(offsetof(CLogStart, m_lastTime), samples.GetLastTime().time);
  patch(m_head.size() - sizeof count, count);

  char timeCount[kLongCountSize];
  CLogTrailer trailer = 0;
  m_parts.clear();
  m_parts.push_back({m_head.data(), m_head.size()});
  samples.AddRecordParts(m_parts);
  m_parts.push_back({timeCount, static_cast<std::size_t>(PutCount(timeCount, count) - timeCount)});
  m_parts.push_back(samples.GetTimesPart());
  m_parts.push_back({&trailer, sizeof trailer});
  file.WriteParts(m_parts.data(), m_parts.size());
}

}  // namespace vastra
