#include "host/feed/feed_content.h"

#include "host/common/json_text.h"

namespace vastra {

std::vector<int> PlacesOf(const std::vector<CString>& variables, const CFeedPlaces& places) {
  std::vector<int> found;
  for (const CString& variable : variables) {
    const auto place = places.find(variable.View());
    found.push_back(place == places.end() ? -1 : place->second);
  }
  return found;
}

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
