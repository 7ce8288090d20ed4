#include "host/fleet/ship_state.h"

#include <chrono>

namespace vastra {
namespace {

constexpr const char* kShipSchema = R"(
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS file (
  key BLOB NOT NULL UNIQUE, size INTEGER NOT NULL, changed INTEGER NOT NULL, inode INTEGER NOT NULL,
  state INTEGER NOT NULL, live INTEGER NOT NULL, version BLOB NOT NULL, carrier BLOB NOT NULL,
  receipt INTEGER NOT NULL, sequence INTEGER NOT NULL, others INTEGER NOT NULL, due INTEGER NOT NULL,
  pause INTEGER NOT NULL, sent INTEGER NOT NULL, log INTEGER NOT NULL, before BLOB NOT NULL,
  begins INTEGER NOT NULL);
CREATE INDEX IF NOT EXISTS turn ON file (state, live, changed) WHERE state < 3;
CREATE INDEX IF NOT EXISTS due ON file (due) WHERE state = 2;
CREATE INDEX IF NOT EXISTS pack ON file (carrier) WHERE state = 2;
CREATE TABLE IF NOT EXISTS archive (id BLOB NOT NULL);
UPDATE file SET state = 0 WHERE state = 1 AND state < 3;  -- by the index
)";

// In the order of its columns. A row keeps its place: rows that are found, sent and archived together are
// next to each other, so that a change of them writes few pages, however many rows there are.
constexpr const char* kPut = R"(
INSERT INTO file VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17)
ON CONFLICT (key) DO UPDATE SET size = ?2, changed = ?3, inode = ?4, state = ?5, live = ?6, version = ?7,
  carrier = ?8, receipt = ?9, sequence = ?10, others = ?11, due = ?12, pause = ?13, sent = ?14,
  log = ?15, before = ?16, begins = ?17
)";

std::string Select(const char* condition) {
  return std::string(
             "SELECT key, size, changed, inode, state, live, version, carrier, receipt, sequence, others, "
             "due, pause, sent, log, before, begins FROM file WHERE ") +
         condition;
}

CShipFile FileOf(CStatement& row) {
  CShipFile file;
  file.key = row.Bytes(0);
  file.mark = {row.Unsigned(1), row.Integer(2), row.Unsigned(3)};
  file.state = static_cast<EShipped>(row.Integer(4));
  file.isLive = row.Integer(5) != 0;
  file.version = row.Version(6);
  file.carrier = row.Version(7);
  file.hasReceipt = row.Integer(8) != 0;
  file.sequence = row.Unsigned(9);
  file.others = row.Unsigned(10);
  file.due = row.Integer(11);
  file.pause = row.Integer(12);
  file.sent = row.Integer(13);
  file.log = {row.Unsigned(14), row.Version(15)};
  file.begin = row.Unsigned(16);
  return file;
}

}  // namespace

CShipState::CShipState(const std::string& path)
    : m_store(path, kShipSchema),
      m_find(m_store, Select("key = ?").c_str()),
      m_put(m_store, kPut),
      m_remove(m_store, "DELETE FROM file WHERE key = ?"),
      m_waiting(
          m_store,
          Select("state = 0 AND state < 3 AND live = ? AND (due <= ? OR due > ?) ORDER BY changed LIMIT ?")
              .c_str()),
      m_overdue(m_store, Select("state = 2 AND (due <= ? OR due > ?) LIMIT ?").c_str()),
      m_inPack(m_store, Select("state = 2 AND carrier = ? LIMIT ?").c_str()),
      m_postpone(m_store, "UPDATE file SET due = ?, pause = ? WHERE state = 2 AND carrier = ?"),
      m_after(m_store, Select("key > ? ORDER BY key LIMIT ?").c_str()),
      m_oldest(
          m_store,
          "SELECT changed FROM file WHERE state = ? AND state < 3 AND live = ? ORDER BY changed LIMIT 1") {
  CStatement archive(m_store, "SELECT id FROM archive");
  if (archive.Step()) m_archive = archive.Bytes(0);
  AddUp();
}

void CShipState::AddUp() {
  m_sums = {};
  CStatement rows(m_store, "SELECT state, size FROM file");  // a GROUP BY would take memory for each row
  while (rows.Step()) {
    if (rows.Unsigned(0) >= kShippedStates) continue;
    CSum& sum = m_sums[rows.Unsigned(0)];
    ++sum.files;
    sum.bytes += rows.Unsigned(1);
  }
}

std::optional<CShipFile> CShipState::Find(std::string_view key) {
  if (!m_find.Bind(key).Step()) return std::nullopt;
  const CShipFile file = FileOf(m_find);
  m_find.Reset();
  return file;
}

bool CShipState::SetArchive(const std::string& id) {
  if (id == m_archive) return false;
  Change();
  const bool isAnother = !m_archive.empty();
  m_store.Execute("DELETE FROM archive");
  CStatement(m_store, "INSERT INTO archive VALUES (?)").Bind(id).Run();
  m_archive = id;
  if (isAnother) m_store.Execute("UPDATE file SET state = 0, receipt = 0, due = 0 WHERE state = 3");
  AddUp();
  return isAnother;
}

void CShipState::MakeDue() {
  Change();
  m_store.Execute("UPDATE file SET due = 0 WHERE state = 2");
}

void CShipState::Change() {
  if (m_changed) return;
  m_store.Begin();
  m_changed = std::chrono::steady_clock::now();
}

void CShipState::Commit(std::chrono::milliseconds age) {
  if (!m_changed || std::chrono::steady_clock::now() - *m_changed < age) return;
  m_store.Commit();
  m_changed.reset();
}

void CShipState::Put(const CShipFile& file) {
  Change();
  if (const std::optional<CShipFile> old = Find(file.key)) {
    CSum& sum = m_sums[static_cast<std::size_t>(old->state)];
    --sum.files;
    sum.bytes -= old->mark.size;
  }
  m_put
      .Bind(file.key, file.mark.size, file.mark.changed, file.mark.inode, static_cast<int>(file.state),
            file.isLive, file.version, file.carrier, file.hasReceipt, file.sequence, file.others, file.due,
            file.pause, file.sent, file.log.number, file.log.before, file.begin)
      .Run();
  CSum& sum = m_sums[static_cast<std::size_t>(file.state)];
  ++sum.files;
  sum.bytes += file.mark.size;
}

void CShipState::Remove(const std::string& key) {
  const std::optional<CShipFile> old = Find(key);
  if (!old) return;
  Change();
  CSum& sum = m_sums[static_cast<std::size_t>(old->state)];
  --sum.files;
  sum.bytes -= old->mark.size;
  m_remove.Bind(key).Run();
}

void CShipState::RemoveNow(const std::vector<CShipFile>& files) {
  Commit();
  m_store.Execute("PRAGMA synchronous = FULL");
  for (const CShipFile& file : files) Remove(file.key);
  Commit();
  m_store.Execute("PRAGMA synchronous = NORMAL");
}

std::vector<CShipFile> CShipState::All(CStatement& rows) {
  std::vector<CShipFile> files;
  while (rows.Step()) files.push_back(FileOf(rows));
  return files;
}

std::vector<CShipFile> CShipState::Waiting(bool isLive, std::int64_t now, std::size_t most) {
  return All(m_waiting.Bind(isLive, now, now + kFarAhead, std::uint64_t{most}));
}

std::vector<CShipFile> CShipState::Overdue(std::int64_t now, std::size_t most) {
  return All(m_overdue.Bind(now, now + kFarAhead, std::uint64_t{most}));
}

void CShipState::Postpone(const CShipFile& file, std::int64_t due, std::int64_t pause) {
  Change();
  if (file.IsPacked()) return m_postpone.Bind(due, pause, file.carrier).Run();
  CShipFile later = file;
  later.due = due;
  later.pause = pause;
  Put(later);
}

void CShipState::MakeWait(const CShipFile& file) {
  if (file.IsPacked()) return MakePackWait(file.carrier);
  CShipFile waiting = file;
  waiting.state = EShipped::waiting;
  waiting.due = 0;
  Put(waiting);
}

void CShipState::MakePackWait(const CVersion& pack) {
  constexpr std::uint64_t kPage = 1000;
  for (std::vector<CShipFile> files; !(files = All(m_inPack.Bind(pack, kPage))).empty();)
    for (CShipFile& file : files) {
      file.state = EShipped::waiting;
      file.due = 0;
      Put(file);
    }
}

std::vector<CShipFile> CShipState::After(const std::string& key, std::size_t most) {
  return All(m_after.Bind(key, std::uint64_t{most}));
}

std::optional<std::int64_t> CShipState::Oldest() {
  std::optional<std::int64_t> oldest;
  for (const EShipped state : {EShipped::waiting, EShipped::sending, EShipped::sent})
    for (const bool isLive : {false, true}) {
      if (!m_oldest.Bind(static_cast<int>(state), isLive).Step()) continue;
      oldest = std::min(oldest.value_or(m_oldest.Integer(0)), m_oldest.Integer(0));
      m_oldest.Reset();
    }
  return oldest;
}

std::int64_t WallClock() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace vastra
