#include "vastra/logfiles/log_time.h"

namespace vastra {

CString ShowTime(const _timeb& time) {
  const std::tm local = CTime(time.time).GetLocalTm();
  char text[32];
  const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return CString(text, size);
}

CString ShowCount(std::uint64_t samples) {
  return CString(std::to_string(samples) + (samples == 1 ? " sample" : " samples"));
}

_timeb TimeOf(const CSampleSpans& spans, std::uint64_t index) {
  for (const CSampleSpan& span : spans) {
    if (index < span.m_count) return span.m_times[index];
    index -= span.m_count;
  }
  return {};
}

}  // namespace vastra
