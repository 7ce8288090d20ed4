// CSqliteTable: exported rows as the table "rows" of a database of SQLite, in one transaction.
#pragma once

#include "host/cli/history/sqlite_library.h"
#include "vastra/history/moment_text.h"
#include "vastra/history/row_table.h"

namespace vastra {

class CSqliteTable final : public CRowTable {
 public:
  static constexpr std::size_t kMostNames = 1999;  // a table of SQLite has at most 2000 columns

  // Why the library refused something, thrown by all operations.
  struct CFault {
    CString text;
  };

  // path: of an empty file, which the caller syncs after End and which nobody else uses. Its columns are
  // "time", a text or with ETimeForm::seconds a number, and numbers; a NaN is NULL there.
  CSqliteTable(const CSqliteLibrary& library, const CString& path, ETimeForm form);
  ~CSqliteTable() override;

  void Begin(const std::vector<CString>& names) override;
  void Add(CMoment moment, std::span<const std::optional<float>> cells) override;
  void Add(CMoment moment, std::span<const std::optional<double>> cells) override;
  void End() override;

 private:
  void Execute(const CString& statement);
  void BindTime(CMoment moment);
  template <class TCell>
  void Put(CMoment moment, std::span<const TCell> cells);
  [[noreturn]] void Fail();

  const CSqliteLibrary& m_library;
  const ETimeForm m_form;
  CMomentText m_times;
  char m_time[kMaxMomentText];
  sqlite3* m_pDatabase = nullptr;
  sqlite3_stmt* m_pInsert = nullptr;
};

}  // namespace vastra
