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
  static constexpr std::size_t kPieceSize = std::size_t{256} * 1024;
  // file must exist as long as the table. It gets the rows in pieces of about pieceSize bytes.
  CTextTable(CFile& file, ETimeForm form, std::size_t pieceSize = kPieceSize)
      : m_times(form), m_file(file), m_pieceSize(pieceSize) {}

  // Makes room for rows of at most so many bytes.
  void SetRowSize(std::size_t bytes);
  void Write(std::string_view text);
  // The place of the next row, which EndRow ends.
  char* BeginRow() { return m_buffer.get() + m_size; }
  void EndRow(const char* end) {
    m_size = static_cast<std::size_t>(end - m_buffer.get());
    if (m_size >= m_pieceSize) Flush();
  }

  CMomentText m_times;

 private:
  void Flush();

  CFile& m_file;
  const std::size_t m_pieceSize;
  std::unique_ptr<char[]> m_buffer;
  std::size_t m_size = 0;
};

// Names with a comma, a quotation mark or a line end are in quotation marks. No value is an empty cell.
class VASTRA_API CCsvTable final : public CTextTable {
 public:
  CCsvTable(CFile& file, ETimeForm form, std::size_t pieceSize = kPieceSize)
      : CTextTable(file, form, pieceSize) {}
  void Begin(const std::vector<CString>& names) override;
  void Add(CMoment moment, std::span<const std::optional<float>> cells) override;
  void Add(CMoment moment, std::span<const std::optional<double>> cells) override;

 private:
  template <class TCell>
  void Put(CMoment moment, std::span<const TCell> cells);
};

}  // namespace vastra
