#include "host/common/message_text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "host/common/shown_text.h"
#include "vastra/core/link.h"

namespace vastra {
namespace {

// Where a link is, in the keys of a configuration, by the name that its stage gives it.
struct CTextPlace {
  const char *link, *place;
};
constexpr CTextPlace kPlaces[] = {
    {"InputFileLink", "input.inputFiles"},
    {"Getting variable names from selected files", "input.inputFiles"},
    {"InputPreprocessEquatorLink", "input.preEquationText"},
    {"EnableEquatorLink", "enableText"},
    {"EnableFileLink", "enableText"},
    {"OutputFileLink", "output"},
    {"OutputMapperLink", "output"},
    {"SummaryEquatorLink", "summaryText"},
    {"SummaryBufferFileLink", "summary"},
    {"SummaryArchiveFileLink", "summary"},
    {"SmartInputEquatorLink", "smart.equationText"},
    {"SmartInputFileLink", "smart"},
    {"SmartOutputFileLink", "smart"},
    {"SmartCopyFileLink", "smart"},
    {"SmartOutputConcatLink", "smart"},
    {"TrendingsEquatorLink", "trend.equationText"},
    {"TrendingsFileLink", "trend"},
};

// Indexed by severity and by function code.
constexpr const char* kKinds[] = {"Fatal error: ", "Error: ", "Warning: ", ""};
// The words of a feed, by the same.
constexpr const char* kSeverities[] = {"fatal", "error", "warning", "notice"};
constexpr const char* kFunctions[] = {"open",        "close", "read", "write", "getVarNames",
                                      "communicate", "start", "end",  "flush", "partialFlush"};
constexpr const char* kCalls[] = {"open",        "close", "read", "write", "names",
                                  "communicate", "start", "end",  "save",  "save"};

// The links whose text does not tell what they were asked for.
constexpr const char* kTransfers[] = {"CPlcLink", "CNamerLink", "CScalerLink", "CMapperLink", "CConcatLink"};
// The senders whose text says all.
constexpr const char* kSenders[] = {"CLogKeeper", "CScanLoop", "CRun"};

template <std::size_t N>
bool IsOneOf(const char* const (&list)[N], const char* text) {
  return std::any_of(list, list + N, [text](const char* one) { return std::strcmp(one, text) == 0; });
}

// The node of "Simulator (Kiln)"; all of it if the node has no name.
std::string_view NodeOf(std::string_view name) {
  const std::size_t begin = name.find(" (");
  if (begin == std::string_view::npos || name.back() != ')') return name;
  return name.size() > begin + 3 ? name.substr(begin + 2, name.size() - begin - 3) : name.substr(0, begin);
}

std::string_view PlaceOf(const CRunMessage& message) {
  if (std::strcmp(message.link, "CPlcLink") == 0) return NodeOf(message.name);
  for (const CTextPlace& place : kPlaces)
    if (std::strcmp(place.link, message.name) == 0) return place.place;
  return message.name;
}

// "Kiln is away: ..." is one sentence.
const char* AfterPlace(const CRunMessage& message) {
  return std::strcmp(message.link, "CNodeLink") == 0 && std::strncmp(message.text, "is ", 3) == 0 ? " "
                                                                                                  : ": ";
}

template <std::size_t N>
const char* WordOf(const char* const (&list)[N], char code) {
  const auto index = static_cast<unsigned char>(code);
  return index < N ? list[index] : "";
}

template <std::size_t N>
char CodeOf(const char* const (&list)[N], std::string_view word, char unknown) {
  const auto* const found = std::find(list, list + N, word);
  return found == list + N ? unknown : static_cast<char>(found - list);
}

}  // namespace

const char* SeverityWord(char severity) { return WordOf(kSeverities, severity); }
const char* FunctionWord(char function) { return WordOf(kFunctions, function); }
char SeverityOf(std::string_view word) { return CodeOf(kSeverities, word, severityNotice); }
char FunctionOf(std::string_view word) { return CodeOf(kFunctions, word, -1); }

CMessageParts PartsOf(const CRunMessage& message) {
  CMessageParts parts;
  if (!IsOneOf(kSenders, message.link)) parts.place = PlaceOf(message);
  if (IsOneOf(kTransfers, message.link)) parts.text.append(WordOf(kCalls, message.function)) += ": ";
  parts.text += OneLine(message.text);
  return parts;
}

std::string MessageText(const CRunMessage& message) {
  const CMessageParts parts = PartsOf(message);
  std::string text = kKinds[static_cast<unsigned char>(message.severity)];
  if (!IsOneOf(kSenders, message.link)) text.append(parts.place) += AfterPlace(message);
  return text + parts.text;
}

bool AddsNothing(const CRunMessage& message) {
  constexpr const char* kOuter[] = {fault::componentOpen.text, fault::componentRead.text,
                                    fault::componentWrite.text, fault::componentNames.text,
                                    "Could not get variable names from component."};
  return message.severity == severityError && IsOneOf(kOuter, message.text);
}

}  // namespace vastra
