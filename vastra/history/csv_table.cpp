#include "vastra/history/csv_table.h"

#include <string_view>

#include "vastra/history/float_text.h"

namespace vastra {
namespace {

std::string CsvName(std::string_view name) {
  if (name.find_first_of(",\"\r\n") == name.npos) return std::string(name);
  std::string quoted = "\"";
  for (const char c : name) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + "\"";
}

}  // namespace

void CTextTable::SetRowSize(std::size_t bytes) { m_buffer.reset(new char[m_pieceSize + bytes]); }

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

void CCsvTable::Add(CMoment moment, std::span<const std::optional<float>> cells) { Put(moment, cells); }

void CCsvTable::Add(CMoment moment, std::span<const std::optional<double>> cells) { Put(moment, cells); }

}  // namespace vastra
