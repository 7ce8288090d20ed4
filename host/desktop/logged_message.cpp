#include "host/desktop/logged_message.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

constexpr std::size_t kFields = 7;
constexpr std::int64_t kLastTime = 253402300799999;  // of the year 9999
constexpr std::string_view kEscaped = "\t\n\\", kEscapes = "tn\\";

// The length of the place at the start of text: a key of a configuration, with the name of the output or
// summary in quotes; 0: there is none.
std::size_t PlaceLength(std::string_view text) {
  constexpr std::string_view kStages[] = {"input", "outputs", "summaries", "smart", "plcWrite", "trend"};
  const std::string_view word = text.substr(0, text.find_first_of("[.: "));
  if (std::find(std::begin(kStages), std::end(kStages), word) == std::end(kStages)) return 0;
  std::size_t end = text.find_first_of(": ");
  if (text.substr(std::min(end, text.size())).starts_with(" \"")) end = text.find("\": ", end + 2) + 1;
  return end < text.size() && text.substr(end).starts_with(": ") ? end : 0;
}

void SplitPlace(CLoggedMessage& line) {
  const std::size_t length = PlaceLength(line.text);
  if (length == 0) return;
  line.part = line.text.substr(0, length);
  line.text.erase(0, length + 2);
}

std::int64_t MillisecondsOf(const _timeb& time) { return std::int64_t{time.time} * 1000 + time.millitm; }

void AddField(std::string& bytes, std::string_view field) {
  bytes += '\t';
  for (const char byte : field) {
    const std::size_t escape = kEscaped.find(byte);
    if (escape == std::string_view::npos)
      bytes += byte;
    else
      bytes.append(1, '\\') += kEscapes[escape];
  }
}

bool ReadField(std::string_view bytes, std::string& field) {
  field.clear();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\\') {
      field += bytes[i];
      continue;
    }
    const std::size_t escape = ++i < bytes.size() ? kEscapes.find(bytes[i]) : std::string_view::npos;
    if (escape == std::string_view::npos) return false;
    field += kEscaped[escape];
  }
  field = OneLine(field);
  return true;
}

template <class NUMBER>
bool ReadCount(std::string_view bytes, NUMBER& number) {
  const char* const end = bytes.data() + bytes.size();
  const auto [stop, fault] = std::from_chars(bytes.data(), end, number);
  return fault == std::errc() && stop == end;
}

bool ReadTime(std::string_view bytes, std::int64_t& time) {
  return ReadCount(bytes, time) && time >= 0 && time <= kLastTime;
}

bool ReadSeverity(std::string_view bytes, char& severity) {
  severity = SeverityOf(bytes);
  return bytes == SeverityWord(severity);
}

}  // namespace

CLoggedMessage LineOf(const CRunMessage& message) {
  CMessageParts parts = PartsOf(message);
  const std::int64_t time = MillisecondsOf(message.time);
  CLoggedMessage line = {time, time, 1, message.severity, kSaidByRun, OneLine(parts.place), parts.text};
  if (line.part.empty()) SplitPlace(line);
  return line;
}

CLoggedMessage DesktopLine(char severity, std::string_view text, std::string_view part) {
  _timeb now;
  _ftime(now);
  const std::int64_t time = MillisecondsOf(now);
  CLoggedMessage line = {
      time, time, 1, severity, kSaidByDesktop, OneLine(part), OneLine(Shortened(std::string(text).c_str()))};
  if (part.empty()) SplitPlace(line);
  return line;
}

bool IsRepeat(const CLoggedMessage& line, const CLoggedMessage& later) {
  return line.severity == later.severity && line.text == later.text && line.part == later.part &&
         line.source == later.source;
}

void Fold(CLoggedMessage& line, const CLoggedMessage& later) {
  line.last = later.last;
  line.count += later.count;
}

CKnownMessages::CKnownMessages(const std::vector<CLoggedMessage>& lines) {
  for (const CLoggedMessage& line : lines) m_keys.insert(KeyOf(line));
}

std::string FileForm(const CLoggedMessage& line) {
  std::string bytes = std::to_string(line.first) + '\t' + std::to_string(line.last) + '\t' +
                      std::to_string(line.count) + '\t' + SeverityWord(line.severity);
  for (const std::string* field : {&line.source, &line.part, &line.text}) AddField(bytes, *field);
  return bytes += '\n';
}

bool ReadFileForm(std::string_view bytes, CLoggedMessage& line) {
  std::array<std::string_view, kFields> fields;
  for (std::size_t i = 0; i < kFields; ++i) {
    const std::size_t end = bytes.find('\t');
    if ((end == std::string_view::npos) != (i + 1 == kFields)) return false;
    fields[i] = bytes.substr(0, end);
    bytes.remove_prefix(i + 1 == kFields ? bytes.size() : end + 1);
  }
  return ReadTime(fields[0], line.first) && ReadTime(fields[1], line.last) &&
         ReadCount(fields[2], line.count) && line.count > 0 && ReadSeverity(fields[3], line.severity) &&
         ReadField(fields[4], line.source) && ReadField(fields[5], line.part) &&
         ReadField(fields[6], line.text);
}

}  // namespace vastra
