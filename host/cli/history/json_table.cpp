#include "host/cli/history/json_table.h"

#include <cstring>
#include <string_view>

#include "host/common/json_number.h"
#include "host/common/json_text.h"

namespace vastra {
namespace {

char* PutPlain(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

}  // namespace

CJsonTable::CJsonTable(CFile& file, ETimeForm form)
    : CTextTable(file, form), m_timeQuote(form == ETimeForm::seconds ? "" : "\"") {}

void CJsonTable::Begin(const std::vector<CString>& names) {
  std::size_t size = 64 + kMaxMomentText;
  for (const CString& name : names) {
    std::string key = JsonLine(ToJson(name));
    key.back() = ':';  // in place of the line end
    m_keys.push_back("," + key);
    size += m_keys.back().size() + kMaxJsonNumber;
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

void CJsonTable::Add(CMoment moment, std::span<const std::optional<float>> cells) { Put(moment, cells); }

void CJsonTable::Add(CMoment moment, std::span<const std::optional<double>> cells) { Put(moment, cells); }

}  // namespace vastra
