#include "host/fleet/sqlite_store.h"

#include <cstring>

namespace vastra {
namespace {

// The write-ahead log makes a commit one write and one sync.
constexpr const char* kSettings =
    "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
    "PRAGMA temp_store = MEMORY; PRAGMA cache_size = -4096; PRAGMA journal_size_limit = 4194304;";

sqlite3* OpenDatabase(const std::string& path) {
  sqlite3* database = nullptr;
  const int status = sqlite3_open_v2(
      path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (status == SQLITE_OK) return database;
  const std::string words = database == nullptr ? sqlite3_errstr(status) : sqlite3_errmsg(database);
  sqlite3_close(database);
  throw CStoreFault(path + ": " + words);
}

}  // namespace

CStatement::CStatement(CSqliteStore& store, const char* text)
    : m_store(store), m_statement(nullptr, sqlite3_finalize) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(store.Handle(), text, -1, &statement, nullptr) != SQLITE_OK) store.Fail();
  m_statement.reset(statement);
}

bool CStatement::Step() {
  switch (sqlite3_step(m_statement.get())) {
    case SQLITE_ROW:
      return true;
    case SQLITE_DONE:
      Reset();
      return false;
    default:
      m_store.Fail();
  }
}

void CStatement::Reset() { sqlite3_reset(m_statement.get()); }

std::string CStatement::Bytes(int column) {
  const void* const bytes = sqlite3_column_blob(m_statement.get(), column);
  const int size = sqlite3_column_bytes(m_statement.get(), column);
  return bytes == nullptr ? std::string()
                          : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

CVersion CStatement::Version(int column) {
  CVersion version = {};
  if (sqlite3_column_bytes(m_statement.get(), column) == static_cast<int>(version.size()))
    std::memcpy(version.data(), sqlite3_column_blob(m_statement.get(), column), version.size());
  return version;
}

void CStatement::BindOne(int place, std::int64_t value) {
  if (sqlite3_bind_int64(m_statement.get(), place, value) != SQLITE_OK) m_store.Fail();
}

void CStatement::BindOne(int place, std::string_view bytes) {
  if (sqlite3_bind_blob64(m_statement.get(), place, bytes.empty() ? "" : bytes.data(), bytes.size(),
                          SQLITE_TRANSIENT) != SQLITE_OK)
    m_store.Fail();
}

// Zeros, which are no version, take no room.
void CStatement::BindOne(int place, const CVersion& version) {
  if (version == CVersion{}) return BindOne(place, std::string_view());
  BindOne(place, std::string_view(reinterpret_cast<const char*>(version.data()), version.size()));
}

CSqliteStore::CSqliteStore(const std::string& path, const char* schema)
    : m_path(path), m_database(OpenDatabase(path), sqlite3_close) {
  Execute(kSettings);
  Execute(schema);
  // The lock is taken with the first write; it stays.
  Execute("BEGIN EXCLUSIVE; COMMIT");
}

void CSqliteStore::Execute(const char* text) {
  if (sqlite3_exec(m_database.get(), text, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

void CSqliteStore::Rollback() {
  if (sqlite3_get_autocommit(m_database.get()) == 0)
    sqlite3_exec(m_database.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void CSqliteStore::Fail() const {
  const int code = sqlite3_errcode(m_database.get()), reason = sqlite3_system_errno(m_database.get());
  throw CStoreFault(
      m_path + ": " +
      (code == SQLITE_BUSY ? "is in use by another process" : sqlite3_errmsg(m_database.get())) +
      (code != SQLITE_BUSY && reason != 0 ? std::string(": ") + std::strerror(reason) : ""));
}

}  // namespace vastra
