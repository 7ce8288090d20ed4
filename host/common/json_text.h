// Reading and writing JSON text, with errors and limits that the JSON library does not have. An error names a
// value by its path, as in "outputs[1].maxLogs".
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "vastra/platform/string.h"
#include "vastra/platform/time.h"

namespace vastra {

using CJson = nlohmann::ordered_json;  // keys are written in the order of the fields

// A number that reads back to the same double; the strings "inf", "-inf" and "nan" for what JSON cannot
// represent.
CJson ToJson(double number);
inline CJson ToJson(const CString& text) { return text.Std(); }
// A time record as [time, millitm, timezone, dstflag].
inline CJson ToJson(const _timeb& time) { return {time.time, time.millitm, time.timezone, time.dstflag}; }
// In one line; U+FFFD for bytes that are not UTF-8. JsonLine: with the line end.
std::string JsonText(const CJson& json);
inline std::string JsonLine(const CJson& json) { return JsonText(json) + "\n"; }

// The same text with U+FFFD for bytes that are not UTF-8, as JsonText writes it.
std::string ValidUtf8(std::string_view text);

// An error in a JSON text, thrown by its readers.
class CJsonFault {
 public:
  // path is empty if the error concerns the whole text.
  CJsonFault(const CString& path, const CString& words)
      : m_text(path.IsEmpty() ? words : path + ": " + words) {}
  const CString& Text() const { return m_text; }

 private:
  CString m_text;
};

CString MemberPath(const CString& object, std::string_view key);
CString ElementPath(const CString& array, std::size_t index);

// Throws CJsonFault for text that is not JSON or not UTF-8, for a duplicate key, for U+0000 in a string, for
// too many values, for objects that need more than 256 MB of memory and for values that are nested too
// deeply.
nlohmann::json ParseJson(std::string_view text);

// Whether ParseJson accepts the string value.
bool IsJsonText(const CJson& value);

// The values of a tree that are neither object nor array, in order.
struct CJsonLeaf {
  CString m_path;
  const CJson* m_value;
};
std::vector<CJsonLeaf> Leaves(const CJson& root);

}  // namespace vastra
