#include "host/cli/history/sqlite_table.h"

#include <system_error>

namespace vastra {
namespace {

// The file is new and is thrown away if anything fails, so it needs neither a journal nor syncs of its own.
// Rows of hundreds of values fit large pages better.
constexpr const char* kSettings =
    "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE; PRAGMA "
    "cache_size=-8000;";

std::string SqlName(const CString& name) {
  std::string quoted = "\"";
  for (const char c : name.View()) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + "\"";
}

}  // namespace

// The image of the export is locked already, and the file systems of networks have no locks.
CSqliteTable::CSqliteTable(const CSqliteLibrary& library, const CString& path, ETimeForm form)
    : m_library(library), m_form(form), m_times(form) {
  if (m_library.open(path, &m_pDatabase, SQLITE_OPEN_READWRITE, "unix-none") != SQLITE_OK) {
    const CString reason = m_pDatabase ? m_library.message(m_pDatabase) : "out of memory";
    m_library.close(m_pDatabase);
    throw CFault{reason};
  }
}

CSqliteTable::~CSqliteTable() {
  m_library.finalize(m_pInsert);
  m_library.close(m_pDatabase);
}

void CSqliteTable::Begin(const std::vector<CString>& names) {
  std::string columns, marks = "?";
  for (const CString& name : names) {
    columns += "," + SqlName(name) + " REAL";
    marks += ",?";
  }
  Execute(kSettings);
  Execute("BEGIN");
  const char* const type = m_form == ETimeForm::seconds ? "REAL" : "TEXT";
  Execute(CString("CREATE TABLE \"rows\"(\"time\" " + std::string(type) + columns + ")"));
  const std::string insert = "INSERT INTO \"rows\" VALUES(" + marks + ")";
  if (m_library.prepare(m_pDatabase, insert.c_str(), -1, &m_pInsert, nullptr) != SQLITE_OK) Fail();
}

void CSqliteTable::BindTime(CMoment moment) {
  if (m_form == ETimeForm::seconds) {
    m_library.bindDouble(m_pInsert, 1, static_cast<double>(moment) / 1000);
    return;
  }
  const auto size = static_cast<int>(m_times.Put(m_time, moment) - m_time);
  m_library.bindText(m_pInsert, 1, m_time, size, SQLITE_STATIC);
}

template <class TCell>
void CSqliteTable::Put(CMoment moment, std::span<const TCell> cells) {
  BindTime(moment);
  int index = 2;
  for (const TCell& cell : cells) {
    if (cell)
      m_library.bindDouble(m_pInsert, index, static_cast<double>(*cell));
    else
      m_library.bindNull(m_pInsert, index);
    ++index;
  }
  if (m_library.step(m_pInsert) != SQLITE_DONE) Fail();
  m_library.reset(m_pInsert);
}

void CSqliteTable::Add(CMoment moment, std::span<const std::optional<float>> cells) { Put(moment, cells); }

void CSqliteTable::Add(CMoment moment, std::span<const std::optional<double>> cells) { Put(moment, cells); }

void CSqliteTable::End() {
  Execute("COMMIT");
  m_library.finalize(m_pInsert);
  m_pInsert = nullptr;
  if (m_library.close(m_pDatabase) != SQLITE_OK) Fail();
  m_pDatabase = nullptr;
}

void CSqliteTable::Execute(const CString& statement) {
  if (m_library.execute(m_pDatabase, statement, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

// The system's reason says more than "disk I/O error".
void CSqliteTable::Fail() {
  const int error = m_library.systemError(m_pDatabase);
  CString text = m_library.message(m_pDatabase);
  if (error) text += CString(" (" + std::generic_category().message(error) + ")");
  throw CFault{text};
}

}  // namespace vastra
