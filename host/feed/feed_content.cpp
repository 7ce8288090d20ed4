#include "host/feed/feed_content.h"

#include "host/common/json_text.h"

namespace vastra {

std::string ErrorLine(const CString& text) { return JsonLine({{"type", "error"}, {"text", ToJson(text)}}); }

std::string DroppedLine(const char* key, std::uint64_t count) {
  return JsonLine({{"type", "dropped"}, {key, count}});
}

CFeedLine CFeedRecords::Take(std::uint64_t&, std::uint64_t&) { return nullptr; }

void CFeedContent::Refresh(Time now) {
  m_refreshed = now;
  Look();
}

}  // namespace vastra
