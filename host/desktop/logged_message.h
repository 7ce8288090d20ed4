// CLoggedMessage: a line of the message log of the desktop, and its form in a file. Lines that follow each
// other and say the same become one line with a count.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "host/common/message_text.h"
#include "vastra/core/messenger.h"

namespace vastra {

struct CLoggedMessage {
  std::int64_t first = 0,
               last = 0;           // when it came first and last: milliseconds since 1970-01-01 00:00:00 UTC
  std::uint64_t count = 1;         // how often it came
  char severity = severityNotice;  // severityFatal to severityNotice
  std::string source;              // who said it, such as kSaidByRun
  std::string part;                // of the configuration: a node, a key, outputs[1] "All"; can be empty
  std::string text;                // without line ends

  bool operator==(const CLoggedMessage&) const = default;
};

constexpr const char* kSaidByRun = "run";
constexpr const char* kSaidByDesktop = "desktop";

// The line of a message of a run, in words for people.
CLoggedMessage LineOf(const CRunMessage& message);
// A line of the desktop, of now. Without a part, the key at the start of text, as in "outputs[1].maxLogs:
// ...", is the part.
CLoggedMessage DesktopLine(char severity, std::string_view text, std::string_view part = {});

// Whether both say the same. Fold then adds the later one to line.
bool IsRepeat(const CLoggedMessage& line, const CLoggedMessage& later);
void Fold(CLoggedMessage& line, const CLoggedMessage& later);

// Finds the messages of a list again, whatever their counts are.
class CKnownMessages {
 public:
  // lines must exist as long as the object, unchanged.
  explicit CKnownMessages(const std::vector<CLoggedMessage>& lines);
  bool Has(const CLoggedMessage& line) const { return m_keys.contains(KeyOf(line)); }

 private:
  using CKey = std::tuple<std::int64_t, std::string_view, std::string_view>;
  static CKey KeyOf(const CLoggedMessage& line) { return {line.first, line.part, line.text}; }

  std::set<CKey> m_keys;
};

// The line in a file, with its line end: first, last, count, severity, source, part and text, separated by
// tabs. A tab, a line feed and a backslash in a string are "\t", "\n" and "\\"; other bytes do not change.
std::string FileForm(const CLoggedMessage& line);
// Back, from bytes without the line end. False, and line is undefined, if they are not such a line.
bool ReadFileForm(std::string_view bytes, CLoggedMessage& line);

}  // namespace vastra
