#include "host/fleet/live_message.h"

#include <algorithm>

#include "host/attach/find_loggers.h"
#include "host/common/json_text.h"

namespace vastra {
namespace {

// The place after the value that begins at place. What is no JSON has an end, too.
std::size_t EndOfValue(std::string_view text, std::size_t place) {
  int depth = 0;
  for (bool isString = false; place < text.size(); ++place) {
    const char byte = text[place];
    if (isString && byte == '\\') {
      ++place;
    } else if (byte == '"') {
      isString = !isString;
    } else if (!isString) {
      if (depth == 0 && (byte == ',' || byte == '}' || byte == ']')) return place;
      depth += (byte == '{' || byte == '[') - (byte == '}' || byte == ']');
    }
  }
  return place;
}

// The text of a member of an object; empty without one. Each text is parsed once, by who needs it: the frame
// around the members is not looked at.
std::string_view TextOfMember(std::string_view object, std::string_view key) {
  for (std::size_t place = object.find('"'); place < object.size(); place = object.find('"', place)) {
    const std::size_t end = object.find('"', place + 1), colon = object.find(':', end);
    if (colon == std::string_view::npos) break;
    const std::string_view name = object.substr(place + 1, end - place - 1);
    place = EndOfValue(object, colon + 1);
    if (name == key) return object.substr(colon + 1, place - colon - 1);
  }
  return {};
}

// A line of a feed ends at its first line feed: JSON has none in its strings.
std::string OneLineOf(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](char byte) { return byte == '\n' || byte == '\r'; }, ' ');
  return line;
}

CLiveMessage::CLine ParseLine(std::string_view text, std::size_t type) {
  CLiveMessage::CLine line = {OneLineOf(text), CKeptLine{}};
  std::optional<CFeedEvent> event = ParseFeedEvent(line.text);
  if (!event || event->index() != type)
    throw CLiveFault(std::string("\"") + kLiveLines[type] + "\" is no line of this type");
  line.event = std::move(*event);
  return line;
}

}  // namespace

std::string LiveSubject(const CFleetLogger& logger) {
  return NodeSubject("live", logger.node) + "." + Token(logger.name);
}

std::optional<CFleetLogger> ParseLiveSubject(std::string_view subject) {
  constexpr std::size_t kTokens = 5;
  const std::vector<std::string_view> tokens = TokensOf(subject);
  if (tokens.size() != kTokens || tokens[0] != "vastra" || tokens[1] != "live") return {};
  const std::optional<std::string> site = TextOfToken(tokens[2]), node = TextOfToken(tokens[3]),
                                   name = TextOfToken(tokens[4]);
  if (!site || !node || !name || !IsFleetName(*site) || !IsFleetName(*node) || !IsLoggerName(CString(*name)))
    return {};
  return CFleetLogger{{*site, *node}, *name};
}

CLiveMessage ParseLive(std::string_view data) try {
  if (data.size() > kMostLive) throw CLiveFault("the message is too large");
  if (TextOfMember(data, "live") != "1") throw CLiveFault("the message is of another version");
  CLiveMessage message;
  if (const std::string_view ended = TextOfMember(data, "ended"); !ended.empty())
    message.ended = ParseJson(ended).get<std::string>();
  for (std::size_t i = 0; i < kLiveLines.size(); ++i)
    if (const std::string_view text = TextOfMember(data, kLiveLines[i]); !text.empty())
      message.lines[i] = ParseLine(text, i);
  return message;
} catch (const CJsonFault& fault) {
  throw CLiveFault(fault.Text().Std());
} catch (const nlohmann::json::exception& fault) {
  throw CLiveFault(fault.what());
}

}  // namespace vastra
