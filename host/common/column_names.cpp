#include "host/common/column_names.h"

#include <algorithm>
#include <string>
#include <unordered_set>

#include "host/common/json_text.h"
#include "host/common/name_set.h"

namespace vastra {
namespace {

// Takes a name from the start of rest, with the comma after it. Returns whether it is well-formed.
bool TakeName(std::string_view& rest, std::string& name) {
  name.clear();
  if (!rest.starts_with('"')) {
    name = rest.substr(0, rest.find(','));
    rest.remove_prefix(name.size());
    return true;
  }
  for (std::size_t end; (end = rest.find('"', 1)) != rest.npos;) {
    name += rest.substr(1, end - 1);
    rest.remove_prefix(end + 1);
    if (!rest.starts_with('"')) return rest.empty() || rest.front() == ',';
    name += '"';
  }
  return false;
}

// What a table compares of a name.
std::string ComparedPart(std::string name, EColumnNames kind) {
  if (kind != EColumnNames::caseless) return name;
  for (char& c : name)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return name;
}

std::string ColumnName(const CString& name, EColumnNames kind) {
  if (kind == EColumnNames::bytes) return name.Std();
  std::string column = ValidUtf8(name.Std());
  if (kind == EColumnNames::caseless)
    for (std::size_t at; (at = column.find('\0')) != column.npos;) column.replace(at, 1, "\xEF\xBF\xBD");
  return column;
}

}  // namespace

int SplitNames(const std::vector<CString>& lists, std::vector<CString>& names) {
  std::unordered_set<std::string> seen;
  for (const CString& list : lists) {
    std::string_view rest = list.View();
    for (std::string name;; rest.remove_prefix(1)) {
      if (!TakeName(rest, name)) return 0;
      if (seen.insert(name).second) names.emplace_back(name);
      if (rest.empty()) break;
    }
  }
  return 1;
}

CString UnknownName(const std::vector<CString>& wanted, const std::vector<CString>& known) {
  CStringArray array;
  for (const CString& name : known) array.Add(name);
  const CNameSet set(array);
  for (const CString& name : wanted) {
    if (set.Has(name)) continue;
    const CString* nearest = CNearestName().Find(name, set);
    return "there is no variable " + Quoted(name) +
           (nearest ? "; did you mean " + Quoted(*nearest) + "?" : CString());
  }
  return {};
}

std::vector<CString> TableNames(const std::vector<CString>& names, EColumnNames kind,
                                std::vector<CString>& changed) {
  std::unordered_set<std::string> taken = {"time"};
  std::vector<CString> columns;
  for (const CString& name : names) {
    const std::string plain = ColumnName(name, kind);
    std::string column = plain;
    for (int i = 2; !taken.insert(ComparedPart(column, kind)).second; ++i)
      column = plain + "_" + std::to_string(i);
    columns.emplace_back(column);
    if (column != plain) changed.push_back("the column of " + Quoted(name) + " is " + Quoted(columns.back()));
  }
  return columns;
}

}  // namespace vastra
