// Large JSON texts are appended piece by piece: a tree of their values would take many times the memory.
#pragma once

#include <charconv>

#include "host/common/json_number.h"
#include "host/common/json_text.h"

namespace vastra {

inline void AppendValue(std::string& text, float number) {
  char digits[kMaxJsonNumber];
  text.append(digits, PutJsonNumber(digits, number));
}

inline void AppendWhole(std::string& text, std::int64_t number) {
  char digits[24];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

inline void AppendText(std::string& text, std::string_view words) { text += JsonText(words); }

// Between the elements of a list: a comma, unless the text ends in the beginning of the list.
inline void AppendComma(std::string& text) {
  if (!text.empty() && text.back() != '[') text += ',';
}

// A variable of which only the name is known, as an element of a list.
inline void AppendVariable(std::string& text, std::string_view name) {
  AppendComma(text);
  text += "{\"name\":";
  AppendText(text, name);
  text += R"(,"unit":"","node":""})";
}

}  // namespace vastra
