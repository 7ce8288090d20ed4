// The names of variables as columns: those that a user chooses, and those that a table can have.
#pragma once

#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

// The names in lists, such as A,B, each once, in order. As in CSV a name in quotation marks can have commas,
// and "" is a quotation mark in it. 1, or 0 if a quotation mark is missing or is followed by more text.
int SplitNames(const std::vector<CString>& lists, std::vector<CString>& names);

// The first of wanted that is not in known, as an error message with the name that was probably meant; empty
// if all are known.
CString UnknownName(const std::vector<CString>& wanted, const std::vector<CString>& known);

enum class EColumnNames {
  bytes,     // as they are
  utf8,      // U+FFFD for bytes that are not UTF-8
  caseless,  // the same, and U+0000 and names that differ in the case of letters A to Z alone cannot be told
             // apart
};

// The names of a table whose first column is "time". A name that a column before has gets "_2", "_3" and so
// on; changed has a line about each of these.
std::vector<CString> TableNames(const std::vector<CString>& names, EColumnNames kind,
                                std::vector<CString>& changed);

}  // namespace vastra
