// CJsonTable: an object of JSON on each line.
#pragma once

#include "vastra/history/csv_table.h"

namespace vastra {

// No value is null; NaN and infinities are the strings "nan", "inf" and "-inf".
class CJsonTable final : public CTextTable {
 public:
  CJsonTable(CFile& file, ETimeForm form);
  void Begin(const std::vector<CString>& names) override;
  void Add(CMoment moment, std::span<const std::optional<float>> cells) override;
  void Add(CMoment moment, std::span<const std::optional<double>> cells) override;

 private:
  template <class TCell>
  void Put(CMoment moment, std::span<const TCell> cells);

  const char* const m_timeQuote;
  std::vector<std::string> m_keys;  // such as ,"Temp":
};

}  // namespace vastra
