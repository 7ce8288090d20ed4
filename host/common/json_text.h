// JSON text in and out: what the JSON library does not say or forbid by itself. A value is named by its path,
// as in "outputs[1].maxLogs".
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

using CJson = nlohmann::ordered_json;  // what is written keeps its order

// What is wrong with a JSON text, thrown by its readers.
class CJsonFault {
 public:
  // path is empty for the text as a whole.
  CJsonFault(const CString& path, const CString& words)
      : m_text(path.IsEmpty() ? words : path + ": " + words) {}
  const CString& Text() const { return m_text; }

 private:
  CString m_text;
};

CString MemberPath(const CString& object, std::string_view key);
CString ElementPath(const CString& array, std::size_t index);

// Throws CJsonFault for what is no JSON or no UTF-8, for a key that stands twice in its object, for U+0000 in
// a text and for values that are nested deeper than any of ours.
nlohmann::json ParseJson(std::string_view text);

// Whether ParseJson would take the text value back.
bool IsJsonText(const CJson& value);

// The values of a tree that are neither object nor array, in their order.
struct CJsonLeaf {
  CString m_path;
  const CJson* m_value;
};
std::vector<CJsonLeaf> Leaves(const CJson& root);

}  // namespace vastra
