#include "host/feed/feed_request.h"

#include <algorithm>

#include "host/common/json_text.h"

namespace vastra {
namespace {

using nlohmann::json;

struct CWant {
  const char* name;
  CFeedRequest::EWant bit;
};
constexpr CWant kWants[] = {{"sample", CFeedRequest::sample},
                            {"counts", CFeedRequest::counts},
                            {"message", CFeedRequest::message},
                            {"log", CFeedRequest::log},
                            {"state", CFeedRequest::state}};

std::vector<CString> TextsOf(const json& value, const char* key) {
  if (!value.is_array()) throw CJsonFault(key, "must be a list of strings");
  std::vector<CString> texts;
  for (const json& element : value) {
    if (!element.is_string()) throw CJsonFault(ElementPath(key, texts.size()), "must be a string");
    texts.emplace_back(element.get_ref<const std::string&>());
  }
  return texts;
}

void TakeWant(const json& value, CFeedRequest& request) {
  request.wants = 0;
  for (const CString& text : TextsOf(value, "want")) {
    const auto* want = std::find_if(std::begin(kWants), std::end(kWants),
                                    [&](const CWant& one) { return text == one.name; });
    if (want == std::end(kWants))
      throw CJsonFault("want", "is a list of \"sample\", \"counts\", \"message\", \"log\" and \"state\"");
    request.wants |= want->bit;
  }
}

void TakeInterval(const json& value, CFeedRequest& request) {
  const double number = value.is_number() ? value.get<double>() : -1;
  if (!(number >= 0)) throw CJsonFault("interval", "must be a number of milliseconds");
  const auto longest = static_cast<double>(CFeedRequest::kLongest.count());
  const auto count = static_cast<std::int64_t>(std::min(number, longest));
  request.interval = std::max(std::chrono::milliseconds(count), CFeedRequest::kShortest);
}

void TakeVariables(const json& value, CFeedRequest& request) { request.variables = TextsOf(value, "vars"); }

struct CKey {
  const char* name;
  void (*take)(const json& value, CFeedRequest& request);
};
constexpr CKey kKeys[] = {{"want", TakeWant}, {"interval", TakeInterval}, {"vars", TakeVariables}};

}  // namespace

CFeedRequest ParseFeedRequest(std::string_view line) {
  const json root = ParseJson(line);
  if (!root.is_object())
    throw CJsonFault("", "a request is an object with \"want\", \"interval\" or \"vars\"");
  CFeedRequest request;
  for (const auto& member : root.items()) {
    const auto* key = std::find_if(std::begin(kKeys), std::end(kKeys),
                                   [&](const CKey& one) { return member.key() == one.name; });
    if (key == std::end(kKeys)) throw CJsonFault(MemberPath({}, member.key()), "is no key of a request");
    key->take(member.value(), request);
  }
  return request;
}

}  // namespace vastra
