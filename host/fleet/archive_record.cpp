#include "host/fleet/archive_record.h"

#include <algorithm>

#include "host/fleet/chunk.h"

namespace vastra {
namespace {

constexpr const char* kArchiveSchema = R"(
CREATE TABLE IF NOT EXISTS file (
  path BLOB PRIMARY KEY, version BLOB NOT NULL, stream INTEGER NOT NULL, sequence INTEGER NOT NULL,
  size INTEGER NOT NULL, told INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS stream (number INTEGER PRIMARY KEY, made BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS self (id BLOB NOT NULL);
INSERT INTO self SELECT lower(hex(randomblob(16))) WHERE NOT EXISTS (SELECT 1 FROM self);
CREATE INDEX IF NOT EXISTS untold ON file (told) WHERE told = 0;
CREATE TABLE IF NOT EXISTS partial (
  id INTEGER PRIMARY KEY, path BLOB NOT NULL, version BLOB NOT NULL, stream INTEGER NOT NULL,
  sequence INTEGER NOT NULL, size INTEGER NOT NULL, chunks BLOB NOT NULL, touched INTEGER NOT NULL);
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

// The columns path, version, stream, sequence and size.
CStoredFile RowOf(CStatement& row, int first) {
  return {FileOfPath(row.Bytes(first)),
          row.Version(first + 1),
          {row.Unsigned(first + 2), row.Unsigned(first + 3)},
          row.Unsigned(first + 4)};
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
      m_find(m_store, "SELECT path, version, stream, sequence, size FROM file WHERE path = ?"),
      m_put(m_store, "INSERT OR REPLACE INTO file VALUES (?, ?, ?, ?, ?, 0)"),
      m_putPartial(m_store, "INSERT OR REPLACE INTO partial VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
      m_dropPartial(m_store, "DELETE FROM partial WHERE id = ?"),
      m_untold(m_store, "SELECT path, version, stream, sequence, size FROM file WHERE told = 0 LIMIT ?"),
      m_tell(m_store,
             "UPDATE file SET told = 1 WHERE path = ? AND version = ? AND stream = ? AND sequence = ?") {
  CStatement self(m_store, "SELECT id FROM self");
  if (self.Step()) m_id = self.Bytes(0);
}

std::uint64_t CArchiveRecord::NumberOfStream(const std::string& made, std::uint64_t last) {
  CStatement newest(m_store,
                    "SELECT number, made, (SELECT max(sequence) FROM file WHERE stream = number) FROM stream "
                    "ORDER BY number DESC LIMIT 1");
  std::uint64_t number = 0;
  if (newest.Step()) {
    number = newest.Unsigned(0);
    if (newest.Bytes(1) == made && newest.Unsigned(2) <= last) return number;
  }
  newest.Reset();
  CStatement(m_store, "INSERT INTO stream VALUES (?, ?)").Bind(number + 1, made).Run();
  return number + 1;
}

std::optional<CStoredFile> CArchiveRecord::Find(const CFleetFile& file) {
  if (!m_find.Bind(file.Path()).Step()) return std::nullopt;
  const CStoredFile stored = RowOf(m_find, 0);
  m_find.Reset();
  return stored;
}

void CArchiveRecord::Put(const CStoredFile& stored) {
  m_put.Bind(stored.file.Path(), stored.version, stored.order.stream, stored.order.sequence, stored.size)
      .Run();
}

void CArchiveRecord::PutPartial(const CPartialFile& partial) {
  const CStoredFile& stored = partial.stored;
  m_putPartial
      .Bind(partial.id, stored.file.Path(), stored.version, stored.order.stream, stored.order.sequence,
            stored.size, BytesOf(partial.chunks), partial.touched)
      .Run();
}

void CArchiveRecord::DropPartial(std::uint64_t id) { m_dropPartial.Bind(id).Run(); }

std::vector<CPartialFile> CArchiveRecord::Partials() {
  std::vector<CPartialFile> partials;
  CStatement rows(m_store, "SELECT id, path, version, stream, sequence, size, chunks, touched FROM partial");
  while (rows.Step()) {
    const CStoredFile stored = RowOf(rows, 1);
    partials.push_back({stored, rows.Unsigned(0), {}, rows.Integer(7)});
    partials.back().chunks = BitsOf(rows.Bytes(6), ChunksOf(std::min(stored.size, kLargestFile)));
    m_lastId = std::max(m_lastId, partials.back().id);
  }
  return partials;
}

std::vector<CStoredFile> CArchiveRecord::Untold(std::size_t most) {
  std::vector<CStoredFile> files;
  m_untold.Bind(std::uint64_t{most});
  while (m_untold.Step()) files.push_back(RowOf(m_untold, 0));
  return files;
}

void CArchiveRecord::Tell(const CStoredFile& stored) {
  m_tell.Bind(stored.file.Path(), stored.version, stored.order.stream, stored.order.sequence).Run();
}

}  // namespace vastra
