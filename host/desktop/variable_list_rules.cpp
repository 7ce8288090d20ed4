#include "host/desktop/variable_list_rules.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "host/common/name_set.h"
#include "vastra/equations/parser.h"

namespace vastra {
namespace {

// Of the enable equations: a variable of this name would take the place of what they assign.
constexpr std::string_view kFlagNames[] = {"SampleIsValid", "WriteToLog", "RestartLog", "WriteToSummary",
                                           "RestartSummary"};

CString Trim(CString text) {
  text.TrimLeft();
  text.TrimRight();
  return text;
}

char LowerLetter(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
}

CString LowerText(const CString& text) {
  std::string lower = Trim(text).Std();
  std::ranges::transform(lower, lower.begin(), LowerLetter);
  return CString(lower);
}

CString IntText(std::int64_t number) { return CString(std::to_string(number)); }

// The whole number that text is.
std::optional<int> WholeNumber(std::string_view text) {
  int number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || text[0] == '-' || fault != std::errc() || end != text.data() + text.size()) return {};
  return number;
}

std::optional<float> ScaleNumber(const CString& text) {
  std::string number = Trim(text).Std();
  std::ranges::replace(number, ',', '.');
  float scale = 0;
  const auto [end, fault] = std::from_chars(number.data(), number.data() + number.size(), scale);
  if (fault != std::errc() || end != number.data() + number.size() || !std::isfinite(scale)) return {};
  return scale;
}

// A register, or a bit.
struct CRegisterPlace {
  char kind = 0;             // c, d, h, i
  std::int64_t address = 0;  // as typed, so that what is added to it cannot overflow

  bool operator==(const CRegisterPlace&) const = default;
  bool IsBit() const { return kind == 'c' || kind == 'd'; }
};

constexpr int kLastRegister = 65535;

// "h10", or "40011" and "400011" as lists on paper have it.
std::optional<CRegisterPlace> ReadPlace(const CString& text, int added) {
  constexpr std::string_view kKinds = "cdih", kPaperDigits = "0134";
  const CString typed = LowerText(text);
  const std::string_view view = typed.View();
  if (view.empty()) return {};
  if (kKinds.find(view[0]) != kKinds.npos) {
    const auto number = WholeNumber(view.substr(1));
    return number ? std::optional(CRegisterPlace{view[0], *number}) : std::nullopt;
  }
  const std::size_t digit = kPaperDigits.find(view[0]);
  const auto number = WholeNumber(view.substr(1));
  if (digit == kPaperDigits.npos || !number || (view.size() != 5 && view.size() != 6) || *number == 0)
    return {};
  return CRegisterPlace{kKinds[digit], std::int64_t{*number} - 1 - added};
}

template <std::size_t COUNT>
bool IsIn(const char* const (&words)[COUNT], const CString& word) {
  return std::ranges::any_of(words, [&](const char* each) { return word == each; });
}

std::int64_t RegistersOf(const CString& type) {
  if (type == "f64") return 4;
  return type == "u32" || type == "i32" || type == "f32" ? 2 : 1;
}

CString RegisterFault(const CVariableRow& row, const CRegisterUse& registers) {
  const auto place = ReadPlace(row.address, registers.added);
  if (!place)
    return "register " + Quoted(row.address) +
           " is not c, d, i or h with an address from 0, such as h0, nor a number such as 40001";
  const CString type = LowerText(row.type), order = LowerText(row.order);
  if (place->IsBit() && type != "" && type != "bit") return "a bit has no type, and this is " + Quoted(type);
  if (!place->IsBit() && !IsIn(kRegisterTypes, type))
    return "there is no type " + Quoted(row.type) + ", only u16, i16, u32, i32, f32 and f64";
  if (!IsIn(kRegisterOrders, order) || (place->IsBit() && order != ""))
    return "there is no order " + Quoted(row.order) + " here, only abcd, cdab, badc and dcba of registers";
  const std::int64_t first = place->address + registers.added;
  if (first < 0 || first + RegistersOf(type) - 1 > kLastRegister)
    return "address " + IntText(first) + " is not from 0 to " + IntText(kLastRegister);
  return {};
}

CString RowFault(const CVariableRow& row, const CRegisterUse& registers) {
  const CString name = Trim(row.name);
  if (name.IsEmpty()) return "the variable has no name";
  if (!IsVariableName(name))
    return Quoted(name) +
           " cannot be used in equations: a name has letters (A to Z, a to z), digits and single "
           "underscores, a letter first, and is not a word of the language";
  if (std::ranges::find(kFlagNames, name.View()) != std::end(kFlagNames))
    return Quoted(name) + " is a name that the equations of logs assign";
  const auto scale = ScaleNumber(row.scale);
  if (!scale) return "scale " + Quoted(row.scale) + " is not a number";
  if (*scale == 0) return "a scale of 0 makes each value 0";
  return registers.isUsed ? RegisterFault(row, registers) : CString();
}

// Of the list of registers: an entry, and the entries after it with the same type.
struct CRegisters {
  CRegisterPlace place;
  CString type, order;
  int count = 1;

  CString Text() const {
    const CString what = place.IsBit() ? CString() : type + (order.IsEmpty() ? "" : " " + order);
    return CString(std::string(1, place.kind)) + IntText(place.address) +
           (count > 1 ? " x " + IntText(count) : CString()) +
           (type.IsEmpty() || place.IsBit() ? CString() : ": " + what);
  }
};

// A word of letters and digits, and what is around it, from the start of rest.
std::string_view TakeWord(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n"), rest.size()));
  const std::size_t end = std::min(rest.find_first_of(" \t\r\n:"), rest.size());
  const std::string_view word = rest.substr(0, end);
  rest.remove_prefix(end);
  return word;
}

// One entry of a list that the driver has accepted.
CRegisters ReadRegisters(std::string_view entry) {
  CRegisters run;
  const std::string_view values = entry.substr(0, entry.find(':'));
  std::string_view type = values.size() < entry.size() ? entry.substr(values.size() + 1) : std::string_view();
  std::string compact;
  for (const char letter : values)
    if (letter > ' ') compact += LowerLetter(letter);
  const std::size_t times = compact.find('x');
  if (const auto place = ReadPlace(CString(compact.substr(0, times)), 0)) run.place = *place;
  if (times != compact.npos)
    if (const auto count = WholeNumber(std::string_view(compact).substr(times + 1)))
      run.count = std::min(*count, kMostVariables + 1);
  run.type = LowerText(CString(TakeWord(type)));
  run.order = LowerText(CString(TakeWord(type)));
  return run;
}

// The cells of a line, or a fault.
CString SplitLine(std::string_view line, char separator, std::vector<CString>& cells) {
  std::string cell;
  bool isQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && isQuoted && i + 1 < line.size() && line[i + 1] == '"')
      cell += line[++i];
    else if (line[i] == '"')
      isQuoted = !isQuoted;
    else if (line[i] == separator && !isQuoted)
      cells.push_back(Trim(CString(std::exchange(cell, {}))));
    else
      cell += line[i];
  }
  cells.push_back(Trim(CString(cell)));
  return isQuoted ? "a quotation mark is not closed" : "";
}

// Of the first line, the separator that it has most often.
char SeparatorOf(std::string_view line) {
  constexpr std::string_view kSeparators = ",;\t";
  return *std::ranges::max_element(kSeparators, {},
                                   [&](char each) { return std::ranges::count(line, each); });
}

const CVariableColumn* FindColumn(const CString& title) {
  const auto* found = std::ranges::find_if(kVariableColumns, [&](const CVariableColumn& column) {
    return title.CompareNoCase(column.title) == 0 || (column.other && title.CompareNoCase(column.other) == 0);
  });
  return found == std::end(kVariableColumns) ? nullptr : found;
}

// Reads the lines of a list.
class CImport {
 public:
  explicit CImport(const CRegisterUse& registers) : m_registers(registers) {
    for (const CVariableColumn& column : kVariableColumns)
      if (registers.isUsed || !column.isRegister) m_columns.push_back(&column);
  }

  void Read(std::string_view line) {
    ++m_line;
    if (m_isFull) return;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.find_first_not_of(" \t,;") == line.npos) return;
    if (!m_separator) m_separator = SeparatorOf(line);
    std::vector<CString> cells;
    const CString fault = SplitLine(line, m_separator, cells);
    if (!fault.IsEmpty()) return Add(fault);
    if (std::exchange(m_isFirst, false) && ReadTitles(cells)) return;
    ReadRow(cells);
  }

  CImportedRows Take() {
    if (m_found.rows.empty() && m_found.faults.empty()) m_found.faults.push_back("the list has no variable");
    return std::move(m_found);
  }

 private:
  void Add(const CString& fault) { m_found.faults.push_back("line " + IntText(m_line) + ": " + fault); }

  // Whether the cells are titles: one of them is that of the names.
  bool ReadTitles(const std::vector<CString>& cells) {
    std::vector<const CVariableColumn*> columns(cells.size());
    std::ranges::transform(cells, columns.begin(), FindColumn);
    if (std::ranges::find(columns, &kVariableColumns[0]) == columns.end()) return false;
    for (std::size_t i = 0; i < cells.size(); ++i)
      if (!columns[i] && !cells[i].IsEmpty()) m_found.leftOut.push_back(cells[i]);
    m_columns = std::move(columns);
    return true;
  }

  void ReadRow(const std::vector<CString>& cells) {
    CVariableRow row;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i < m_columns.size() && m_columns[i] && !cells[i].IsEmpty()) row.*m_columns[i]->text = cells[i];
      if (i >= m_columns.size() && !cells[i].IsEmpty())
        return Add("it has more cells than there are columns: a cell with a separator has to be quoted");
    }
    if (m_found.rows.size() == static_cast<std::size_t>(kMostVariables)) {
      m_isFull = true;
      return Add(kTooMany);
    }
    if (const CString fault = RowFault(row, m_registers); !fault.IsEmpty()) return Add(fault);
    if (const auto [former, isNew] = m_lines.emplace(row.name, m_line); !isNew)
      return Add(Quoted(row.name) + " is in line " + IntText(former->second) + " already");
    m_found.rows.push_back(row);
  }

  const CRegisterUse m_registers;
  std::vector<const CVariableColumn*> m_columns;  // of the cells; null: left out
  char m_separator = 0;
  bool m_isFirst = true, m_isFull = false;
  int m_line = 0;
  std::map<CString, int> m_lines;  // of the names
  CImportedRows m_found;
};

}  // namespace

CString RowsFault(const std::vector<CVariableRow>& rows, const CRegisterUse& registers) {
  if (rows.empty()) return "There is no variable yet.";
  if (rows.size() > static_cast<std::size_t>(kMostVariables)) return kTooMany;
  std::map<CString, int> former;
  int number = 0;
  for (const CVariableRow& row : rows) {
    const CString place = "Row " + IntText(++number) + ": ";
    if (const CString fault = RowFault(row, registers); !fault.IsEmpty()) return place + fault;
    if (const auto [first, isNew] = former.emplace(Trim(row.name), number); !isNew)
      return place + Quoted(first->first) + " is in row " + IntText(first->second) + " already";
  }
  return {};
}

float ScaleOf(const CVariableRow& row) { return ScaleNumber(row.scale).value_or(1.0F); }

CString RegisterList(const std::vector<CVariableRow>& rows, const CRegisterUse& registers) {
  std::vector<CRegisters> runs;
  for (const CVariableRow& row : rows) {
    const CRegisterPlace place = ReadPlace(row.address, registers.added).value_or(CRegisterPlace{'h', 0});
    const CString type = LowerText(row.type), order = LowerText(row.order);
    if (!runs.empty()) {
      CRegisters& last = runs.back();
      const std::int64_t next = last.place.address + last.count * RegistersOf(last.type);
      if (last.place.kind == place.kind && next == place.address && last.type == type &&
          last.order == order) {
        ++last.count;
        continue;
      }
    }
    runs.push_back({place, type, order});
  }
  CString list;
  for (const CRegisters& run : runs) list += (list.IsEmpty() ? "" : ", ") + run.Text();
  return list;
}

std::vector<CVariableRow> RowsOfRegisters(const CString& list, std::vector<CVariableRow> former,
                                          const CRegisterUse& registers) {
  std::vector<CVariableRow> rows;
  for (std::string_view rest = list.View(); !rest.empty();) {
    const std::size_t comma = std::min(rest.find(','), rest.size());
    const CRegisters run = ReadRegisters(rest.substr(0, comma));
    rest.remove_prefix(std::min(comma + 1, rest.size()));
    for (int i = 0; i < run.count && rows.size() <= static_cast<std::size_t>(kMostVariables); ++i) {
      const CRegisterPlace place = {run.place.kind, run.place.address + i * RegistersOf(run.type)};
      const auto same = std::ranges::find_if(former, [&](const CVariableRow& row) {
        return ReadPlace(row.address, registers.added) == place && LowerText(row.type) == run.type;
      });
      const CString address = CString(std::string(1, place.kind)) + IntText(place.address);
      CVariableRow row = same == former.end() ? CVariableRow{.name = address} : *same;
      if (same != former.end()) former.erase(same);
      row.address = address;
      row.type = run.type;
      row.order = run.order;
      rows.push_back(row);
    }
  }
  return rows;
}

CImportedRows ImportRows(const CString& text, const CRegisterUse& registers) {
  std::string_view rest = text.View();
  constexpr std::string_view kMark = "\xEF\xBB\xBF";  // that some programs write before UTF-8
  if (rest.starts_with(kMark)) rest.remove_prefix(kMark.size());
  CImport import(registers);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    import.Read(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return import.Take();
}

std::optional<std::size_t> MergeRows(const std::vector<CVariableRow>& list, std::vector<CVariableRow>& rows) {
  std::map<CString, std::size_t> places;
  for (std::size_t i = 0; i < rows.size(); ++i) places.emplace(Trim(rows[i].name), i);
  std::vector<CVariableRow> merged = rows;
  for (const CVariableRow& row : list) {
    const auto place = places.find(row.name);
    if (place == places.end())
      merged.push_back(row);
    else
      merged[place->second] = row;
  }
  if (merged.size() > static_cast<std::size_t>(kMostVariables)) return {};
  const std::size_t replaced = rows.size() + list.size() - merged.size();
  rows = std::move(merged);
  return replaced;
}

}  // namespace vastra
