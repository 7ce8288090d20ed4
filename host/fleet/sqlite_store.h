// A database of this program's own: the state of a shipper, the record of an archive. It survives kills and
// losses of power. One thread uses it.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/fleet/sha256.h"

namespace vastra {

class CStoreFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class CSqliteStore;

// A prepared statement: Bind in the order of its question marks, then Step for each row. All throw
// CStoreFault.
class CStatement {
 public:
  CStatement(CSqliteStore& store, const char* text);

  template <typename... Values>
  CStatement& Bind(const Values&... values) {
    Reset();
    int place = 0;
    (BindOne(++place, values), ...);
    return *this;
  }
  // Whether there is a row. Without one the statement is done.
  bool Step();
  // For a statement without rows.
  void Run() {
    while (Step()) {
    }
  }
  void Reset();

  std::int64_t Integer(int column) { return sqlite3_column_int64(m_statement.get(), column); }
  std::uint64_t Unsigned(int column) { return static_cast<std::uint64_t>(Integer(column)); }
  std::string Bytes(int column);
  CVersion Version(int column);  // zeros for another value

 private:
  void BindOne(int place, std::int64_t value);
  void BindOne(int place, std::uint64_t value) { BindOne(place, static_cast<std::int64_t>(value)); }
  void BindOne(int place, int value) { BindOne(place, std::int64_t{value}); }
  void BindOne(int place, bool value) { BindOne(place, std::int64_t{value}); }
  void BindOne(int place, std::string_view bytes);  // a blob: names need not be UTF-8
  void BindOne(int place, const std::string& bytes) { BindOne(place, std::string_view(bytes)); }
  void BindOne(int place, const CVersion& version);

  CSqliteStore& m_store;
  std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> m_statement;
};

class CSqliteStore {
 public:
  // Opens or makes the file, and calls the statements of schema, which have "IF NOT EXISTS". Only one process
  // can have it. Throws CStoreFault.
  CSqliteStore(const std::string& path, const char* schema);
  CSqliteStore(const CSqliteStore&) = delete;
  CSqliteStore& operator=(const CSqliteStore&) = delete;

  void Execute(const char* text);
  // What is between them is stored whole or not at all, and is on the disk when Commit returns.
  void Begin() { Execute("BEGIN IMMEDIATE"); }
  void Commit() { Execute("COMMIT"); }
  // Ends what a Begin has begun, if there is one.
  void Rollback();
  [[noreturn]] void Fail() const;

  sqlite3* Handle() const { return m_database.get(); }

 private:
  const std::string m_path;
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> m_database;
};

// From Begin to Commit; what is not committed is taken back.
class CTransaction {
 public:
  explicit CTransaction(CSqliteStore& store) : m_store(store) { m_store.Begin(); }
  CTransaction(const CTransaction&) = delete;
  CTransaction& operator=(const CTransaction&) = delete;
  ~CTransaction() { m_store.Rollback(); }
  void Commit() { m_store.Commit(); }

 private:
  CSqliteStore& m_store;
};

}  // namespace vastra
