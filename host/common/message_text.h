// The messages of links in words for people, who do not know the classes of links.
#pragma once

#include <string>
#include <string_view>

#include "vastra/platform/time.h"

namespace vastra {

// A line of a link. The pointers are valid during the call.
struct CRunMessage {
  _timeb time;
  char severity;     // severityFatal to severityNotice
  char function;     // functionOpen to functionPartialFlush
  const char* link;  // the class
  const char* name;  // of this link
  const char* text;  // never null
};

// The words of a feed for a severity, "fatal" to "notice", and for a function, "open" to "partialFlush";
// empty for what is neither. Back: the code of a word; for a word that is not known, severityNotice and -1.
const char* SeverityWord(char severity);
const char* FunctionWord(char function);
char SeverityOf(std::string_view word);
char FunctionOf(std::string_view word);

// "Error: Kiln: read: Timeout error.": the kind, except of a Notice; where, as a node, a key or a path; what
// the driver was asked for; the text of the link. One line.
std::string MessageText(const CRunMessage& message);

// The same without the kind, for a table: the place, empty if the text says it, and the rest.
struct CMessageParts {
  std::string place;  // a node, a key of the configuration, an output such as outputs[1] "All", or a path
  std::string text;   // one line
};
CMessageParts PartsOf(const CRunMessage& message);

// Whether the message only repeats, as the link outside of another one, that the inner one has failed.
bool AddsNothing(const CRunMessage& message);

}  // namespace vastra
