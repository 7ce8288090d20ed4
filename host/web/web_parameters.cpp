#include "host/web/web_parameters.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace vastra {
namespace {

constexpr std::int64_t kMostTime = 8'640'000'000'000'000;  // as of a date in a browser

// Empty if text is not a whole number, or one of more than 64 bits.
std::optional<std::int64_t> WholeNumber(std::string_view text) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

std::optional<CMoment> ReadTime(const CWebQuery& query, const char* name) {
  const auto text = query.Get(name);
  if (!text) return std::nullopt;
  const auto time = WholeNumber(*text);
  if (time && *time >= -kMostTime && *time <= kMostTime) return time;
  throw CWebRefusal{400, std::string(name) + ": must be a time, whole milliseconds since 1970"};
}

}  // namespace

std::int64_t ReadNumber(const CWebQuery& query, const CNumberRule& rule) {
  const auto text = query.Get(rule.name);
  if (!text) return rule.otherwise;
  const auto number = WholeNumber(*text);
  if (number && *number >= rule.least && *number <= rule.most) return *number;
  throw CWebRefusal{400, std::string(rule.name) + ": must be a whole number from " +
                             std::to_string(rule.least) + " to " + std::to_string(rule.most)};
}

CMomentRange ReadRange(const CWebQuery& query, const CMomentRange& rows) {
  const auto from = ReadTime(query, "from"), to = ReadTime(query, "to");
  if (from && to && *from >= *to) throw CWebRefusal{400, "to: must be after from"};
  const CMomentRange range = {from.value_or(rows.from), to.value_or(rows.to)};
  return {range.from, std::max(range.from, range.to)};
}

std::vector<CString> ReadVariables(const CWebQuery& query) {
  std::vector<CString> names;
  std::set<std::string> known;
  for (const std::string& name : query.All("vars")) {
    if (name.find('\0') != name.npos) throw CWebRefusal{400, "vars: must not contain U+0000"};
    if (known.insert(name).second) names.emplace_back(name);
  }
  if (names.size() <= kMostWebVariables) return names;
  throw CWebRefusal{400, "vars: there are more than " + std::to_string(kMostWebVariables) + " variables"};
}

}  // namespace vastra
