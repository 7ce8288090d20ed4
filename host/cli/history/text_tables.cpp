#include "host/cli/history/text_tables.h"

#include <cmath>
#include <cstring>
#include <string_view>

#include "host/cli/history/float_text.h"
#include "host/common/json_text.h"

namespace vastra {
namespace {

std::string CsvName(std::string_view name) {
  if (name.find_first_of(",\"\r\n") == name.npos) return std::string(name);
  std::string quoted = "\"";
  for (const char c : name) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + "\"";
}

char* PutPlain(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// Readers of JSON take -0 for a whole number, which has no sign then.
template <class TNumber>
char* PutJsonNumber(char* to, TNumber number) {
  if (number == 0 && std::signbit(number)) return PutPlain(to, "-0.0");
  if (std::isfinite(number)) return PutShortest(to, number);
  *to = '"';
  to = PutShortest(to + 1, number);
  *to = '"';
  return to + 1;
}

}  // namespace

void CTextTable::SetRowSize(std::size_t bytes) { m_buffer.reset(new char[kFlushSize + bytes]); }

void CTextTable::Write(std::string_view text) { m_file.Write(text.data(), text.size()); }

void CTextTable::Flush() {
  Write({m_buffer.get(), m_size});
  m_size = 0;
}

void CCsvTable::Begin(const std::vector<CString>& names) {
  std::string line = "time";
  for (const CString& name : names) line += "," + CsvName(name.View());
  Write(line + "\n");
  SetRowSize(kMaxMomentText + names.size() * (kMaxShortestText + 1) + 1);
}

template <class TCell>
void CCsvTable::Put(CMoment moment, std::span<const TCell> cells) {
  char* to = m_times.Put(BeginRow(), moment);
  for (const TCell& cell : cells) {
    *to++ = ',';
    if (cell) to = PutShortest(to, *cell);
  }
  *to = '\n';
  EndRow(to + 1);
}

CJsonTable::CJsonTable(CFile& file, ETimeForm form)
    : CTextTable(file, form), m_timeQuote(form == ETimeForm::unix ? "" : "\"") {}

void CJsonTable::Begin(const std::vector<CString>& names) {
  std::size_t size = 64 + kMaxMomentText;
  for (const CString& name : names) {
    std::string key = JsonLine(ToJson(name));
    key.back() = ':';  // in place of the line end
    m_keys.push_back("," + key);
    size += m_keys.back().size() + kMaxShortestText + 2;
  }
  SetRowSize(size);
}

template <class TCell>
void CJsonTable::Put(CMoment moment, std::span<const TCell> cells) {
  char* to = PutPlain(PutPlain(BeginRow(), "{\"time\":"), m_timeQuote);
  to = PutPlain(m_times.Put(to, moment), m_timeQuote);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    to = PutPlain(to, m_keys[i]);
    to = cells[i] ? PutJsonNumber(to, *cells[i]) : PutPlain(to, "null");
  }
  EndRow(PutPlain(to, "}\n"));
}

}  // namespace vastra
