#include "host/fleet/archive_record.h"

#include <algorithm>

#include "host/fleet/chunk.h"

namespace vastra {
namespace {

// key: the path of the node's name, if the file has another one in the archive.
constexpr const char* kArchiveSchema = R"(
CREATE TABLE IF NOT EXISTS file (
  path BLOB NOT NULL UNIQUE, version BLOB NOT NULL, stream INTEGER NOT NULL, sequence INTEGER NOT NULL,
  size INTEGER NOT NULL, told INTEGER NOT NULL, log INTEGER NOT NULL, key BLOB);
CREATE INDEX IF NOT EXISTS again ON file (key, log) WHERE key IS NOT NULL;
CREATE INDEX IF NOT EXISTS same ON file (key, version) WHERE key IS NOT NULL;
CREATE TABLE IF NOT EXISTS stream (number INTEGER PRIMARY KEY, made BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS reached (stream INTEGER PRIMARY KEY, sequence INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS self (id BLOB NOT NULL);
INSERT INTO self SELECT lower(hex(randomblob(16))) WHERE NOT EXISTS (SELECT 1 FROM self);
CREATE INDEX IF NOT EXISTS untold ON file (told) WHERE told = 0;
CREATE TABLE IF NOT EXISTS partial (
  id INTEGER PRIMARY KEY, path BLOB NOT NULL, version BLOB NOT NULL, stream INTEGER NOT NULL,
  sequence INTEGER NOT NULL, size INTEGER NOT NULL, chunks BLOB NOT NULL, touched INTEGER NOT NULL,
  log INTEGER NOT NULL);
)";

// A row keeps its place: rows that came together are next to each other.
constexpr const char* kPutStored = R"(
INSERT INTO file VALUES (?1, ?2, ?3, ?4, ?5, 0, ?6, nullif(?7, ?1))
ON CONFLICT (path) DO UPDATE SET version = ?2, stream = ?3, sequence = ?4, size = ?5, told = 0, log = ?6,
  key = nullif(?7, ?1)
)";
constexpr const char* kReach = R"(
INSERT INTO reached VALUES (?1, ?2) ON CONFLICT (stream) DO UPDATE SET sequence = max(sequence, ?2)
)";
constexpr const char* kNewestStream = R"(
SELECT number, made, (SELECT sequence FROM reached WHERE stream = number)
FROM stream ORDER BY number DESC LIMIT 1
)";

CFleetFile FileOfPath(const std::string& path) {
  const std::size_t site = path.find('/'), node = path.find('/', site + 1);
  return {{path.substr(0, site), path.substr(site + 1, node - site - 1)}, path.substr(node + 1)};
}

std::string BytesOf(const std::vector<bool>& bits) {
  std::string bytes((bits.size() + 7) / 8, '\0');
  for (std::size_t i = 0; i < bits.size(); ++i)
    if (bits[i]) bytes[i / 8] = static_cast<char>(bytes[i / 8] | (1 << (i % 8)));
  return bytes;
}

std::vector<bool> BitsOf(const std::string& bytes, std::size_t count) {
  std::vector<bool> bits(count);
  for (std::size_t i = 0; i < count && i / 8 < bytes.size(); ++i)
    bits[i] = (bytes[i / 8] >> (i % 8) & 1) != 0;
  return bits;
}

constexpr const char* kRow = "SELECT path, version, stream, sequence, size, log, key FROM file WHERE ";
std::string SelectRow(const char* condition) { return std::string(kRow) + condition; }

CStoredFile RowOf(CStatement& row) {
  const std::string path = row.Bytes(0), key = row.Bytes(6);
  return {FileOfPath(key.empty() ? path : key),
          row.Version(1),
          {row.Unsigned(2), row.Unsigned(3)},
          row.Unsigned(4),
          {row.Unsigned(5), {}},
          path};
}

}  // namespace

std::vector<std::uint64_t> CPartialFile::Missing(std::size_t most) const {
  std::vector<std::uint64_t> missing;
  for (std::size_t i = 0; i < chunks.size() && missing.size() < most; ++i)
    if (!chunks[i]) missing.push_back(i);
  return missing;
}

CArchiveRecord::CArchiveRecord(const std::string& path)
    : m_store(path, kArchiveSchema),
      m_find(m_store,
             SelectRow("path = ?1 AND key IS NULL AND (log = ?2 OR version = ?3) OR key = ?1 AND log = ?2 "
                       "OR key = ?1 AND version = ?3 ORDER BY log = ?2 DESC LIMIT 1")
                 .c_str()),
      m_has(m_store, "SELECT 1 FROM file WHERE path = ?"),
      m_put(m_store, kPutStored),
      m_reach(m_store, kReach),
      m_putPartial(m_store, "INSERT OR REPLACE INTO partial VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      m_dropPartial(m_store, "DELETE FROM partial WHERE id = ?"),
      m_untold(m_store, SelectRow("told = 0 LIMIT ?").c_str()),
      m_tell(m_store,
             "UPDATE file SET told = 1 WHERE path = ? AND version = ? AND stream = ? AND sequence = ?") {
  CStatement self(m_store, "SELECT id FROM self");
  if (self.Step()) m_id = self.Bytes(0);
}

std::uint64_t CArchiveRecord::NumberOfStream(const std::string& made, std::uint64_t last) {
  CStatement newest(m_store, kNewestStream);
  std::uint64_t number = 0;
  if (newest.Step()) {
    number = newest.Unsigned(0);
    if (newest.Bytes(1) == made && newest.Unsigned(2) <= last) return number;
  }
  newest.Reset();
  CStatement(m_store, "INSERT INTO stream VALUES (?, ?)").Bind(number + 1, made).Run();
  return number + 1;
}

std::optional<CStoredFile> CArchiveRecord::Find(const CStoredFile& wanted) {
  if (!m_find.Bind(wanted.file.Path(), wanted.log.number, wanted.version).Step()) return std::nullopt;
  const CStoredFile stored = RowOf(m_find);
  m_find.Reset();
  return stored;
}

bool CArchiveRecord::Has(const std::string& path) {
  const bool has = m_has.Bind(path).Step();
  m_has.Reset();
  return has;
}

void CArchiveRecord::Put(const CStoredFile& stored) {
  m_put
      .Bind(stored.path, stored.version, stored.order.stream, stored.order.sequence, stored.size,
            stored.log.number, stored.file.Path())
      .Run();
  m_reach.Bind(stored.order.stream, stored.order.sequence).Run();
}

void CArchiveRecord::PutPartial(const CPartialFile& partial) {
  const CStoredFile& stored = partial.stored;
  m_putPartial
      .Bind(partial.id, stored.file.Path(), stored.version, stored.order.stream, stored.order.sequence,
            stored.size, BytesOf(partial.chunks), partial.touched, stored.log.number)
      .Run();
}

void CArchiveRecord::DropPartial(std::uint64_t id) { m_dropPartial.Bind(id).Run(); }

std::vector<CPartialFile> CArchiveRecord::Partials() {
  std::vector<CPartialFile> partials;
  CStatement rows(
      m_store, "SELECT path, version, stream, sequence, size, log, NULL, id, chunks, touched FROM partial");
  while (rows.Step()) {
    const CStoredFile stored = RowOf(rows);
    partials.push_back({stored, rows.Unsigned(7), {}, rows.Integer(9)});
    partials.back().chunks = BitsOf(rows.Bytes(8), ChunksOf(std::min(stored.size, kLargestFile)));
    m_lastId = std::max(m_lastId, partials.back().id);
  }
  return partials;
}

std::vector<CStoredFile> CArchiveRecord::Untold(std::size_t most) {
  std::vector<CStoredFile> files;
  m_untold.Bind(std::uint64_t{most});
  while (m_untold.Step()) files.push_back(RowOf(m_untold));
  return files;
}

void CArchiveRecord::Tell(const CStoredFile& stored) {
  m_tell.Bind(stored.path, stored.version, stored.order.stream, stored.order.sequence).Run();
}

}  // namespace vastra
