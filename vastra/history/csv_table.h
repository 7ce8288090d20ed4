// CCsvTable: rows as CSV of RFC 4180, and the base of tables that are text.
#pragma once

#include <memory>

#include "vastra/history/moment_text.h"
#include "vastra/history/row_table.h"
#include "vastra/platform/file.h"

namespace vastra {

// What tables of text have in common: rows are formatted into a large buffer, which goes to the file in large
// pieces.
class VASTRA_API CTextTable : public CRowTable {
 public:
  void End() override { Flush(); }

 protected:
  // file must exist as long as the table.
  CTextTable(CFile& file, ETimeForm form) : m_times(form), m_file(file) {}

  // Makes room for rows of at most so many bytes.
  void SetRowSize(std::size_t bytes);
  void Write(std::string_view text);
  // The place of the next row, which EndRow ends.
  char* BeginRow() { return m_buffer.get() + m_size; }
  void EndRow(const char* end) {
    m_size = static_cast<std::size_t>(end - m_buffer.get());
    if (m_size >= kFlushSize) Flush();
  }

  CMomentText m_times;

 private:
  static constexpr std::size_t kFlushSize = std::size_t{256} * 1024;
  void Flush();

  CFile& m_file;
  std::unique_ptr<char[]> m_buffer;
  std::size_t m_size = 0;
};

// Names with a comma, a quotation mark or a line end are in quotation marks. No value is an empty cell.
class VASTRA_API CCsvTable final : public CTextTable {
 public:
  CCsvTable(CFile& file, ETimeForm form) : CTextTable(file, form) {}
  void Begin(const std::vector<CString>& names) override;
  void Add(CMoment moment, std::span<const std::optional<float>> cells) override { Put(moment, cells); }
  void Add(CMoment moment, std::span<const std::optional<double>> cells) override { Put(moment, cells); }

 private:
  template <class TCell>
  void Put(CMoment moment, std::span<const TCell> cells);
};

}  // namespace vastra
