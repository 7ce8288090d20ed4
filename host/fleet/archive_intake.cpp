#include "host/fleet/archive_intake.h"

#include <algorithm>
#include <chrono>

namespace vastra {
namespace {

constexpr std::size_t kMostPartials = 64;                               // of a node
constexpr std::int64_t kSilent = 5, kStale = std::int64_t{30} * 86400;  // seconds

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

CArchiveIntake::CArchiveIntake(CArchiveTree& tree, CArchiveRecord& record, CTell tell)
    : m_tree(tree), m_record(record), m_tell(std::move(tell)) {
  GiveBack();
}

void CArchiveIntake::Take(const CFileSubject& subject, std::string_view message, COrder order) {
  CStoredFile stored = {subject.file, subject.version, order};
  if (subject.IsPack()) {
    stored.pack = subject.version;
    for (const CPackedFile& file : ParsePack(message)) {
      stored.file.key = file.key;
      stored.version = file.version;
      stored.size = file.bytes.size();
      stored.log = file.log;
      TakeWhole(stored, file.bytes);
    }
    return;
  }
  const CChunk chunk = ParseChunk(message, subject.chunk);
  stored.size = chunk.size;
  stored.log = chunk.log;
  if (ChunksOf(chunk.size) > 1) {
    TakeChunk(stored, chunk);
    return;
  }
  if (VersionOf(chunk.bytes) != stored.version) throw CChunkFault("its bytes are not what its version says");
  TakeWhole(stored, chunk.bytes);
}

void CArchiveIntake::TakeWhole(CStoredFile stored, std::string_view bytes) {
  if (!IsWanted(stored)) return;
  const std::uint64_t id = m_record.NextId();
  m_tree.Drop(id);
  AddReady(stored, id);
  m_tree.Write(id, 0, bytes);
}

void CArchiveIntake::AddReady(const CStoredFile& stored, std::uint64_t id) {
  m_ready.push_back({stored, id});
  m_paths.insert({stored.file.Path(), stored.path});
}

// Sets the path of a file that is to be stored. A version that is stored needs its receipt again: who sends
// it has not got it.
bool CArchiveIntake::IsWanted(CStoredFile& stored) {
  if (m_paths.contains(stored.file.Path())) m_done = Finish();  // the record must say what is there
  std::optional<CStoredFile> have = m_record.Find(stored);
  if (!have) {
    stored.path = PathFor(stored);
    return !stored.path.empty();
  }
  stored.path = have->path;
  stored.log.number = have->log.number;
  if (have->version != stored.version) return have->order < stored.order;
  if (m_tree.VersionOf(have->path) != have->version) return true;  // somebody has removed or changed it
  have->pack = stored.pack;
  have->order = std::max(have->order, stored.order);
  if (const auto again = m_again.find(have->path); again != m_again.end())
    have->order = std::max(have->order, again->second.order);
  m_again[have->path] = *have;
  return false;
}

// A path for a log of which nothing is stored: that of its name, or with a number if another log has it. The
// number is the next one, unless some between are free.
std::string CArchiveIntake::PathFor(const CStoredFile& stored) {
  constexpr std::uint64_t kLastNumber = std::uint64_t{1} << 32;
  std::string path = stored.file.Path();
  if (IsFree(path) || IsSameLog(path, stored)) return path;
  std::uint64_t used = 1, free = 2;
  for (; !IsFree(RepeatedPath(path, free)); used = free, free *= 2)
    if (free == kLastNumber) {
      m_tell(path + ": cannot be stored: another log has this name, and no number for this one is free");
      return "";
    }
  while (free - used > 1) {
    const std::uint64_t middle = (used + free) / 2;
    (IsFree(RepeatedPath(path, middle)) ? free : used) = middle;
  }
  const std::string last = RepeatedPath(path, used);
  return used > 1 && IsSameLog(last, stored) ? last : RepeatedPath(path, free);
}

bool CArchiveIntake::IsFree(const std::string& path) {
  return !m_paths.contains(path) && !m_record.Has(path) && !m_tree.HasFile(path);
}

// Whether a file that is not in the record is an earlier version of the log, or this one: the archive was
// killed before it could note the file, or its record was lost.
bool CArchiveIntake::IsSameLog(const std::string& path, const CStoredFile& stored) {
  if (m_paths.contains(path) || m_record.Has(path)) return false;
  const std::optional<CVersion> there = m_tree.VersionOf(path);
  return there && (*there == stored.version || *there == stored.log.before);
}

void CArchiveIntake::TakeChunk(const CStoredFile& stored, const CChunk& chunk) {
  CPartialFile* const partial = PartialOf(stored);
  if (partial == nullptr) return;
  if (partial->stored.size != stored.size) {  // one of the chunks lies: the version decides in the end
    partial->stored.size = stored.size;
    partial->chunks.assign(ChunksOf(stored.size), false);
    m_tree.Drop(partial->id);
  }
  m_tree.Write(partial->id, chunk.number * kChunkSize, chunk.bytes);
  partial->chunks[chunk.number] = true;
  if (!(stored.order < partial->stored.order)) {
    partial->stored.order = stored.order;
    partial->stored.log = stored.log;
  }
  partial->touched = Now();
  m_changed.insert({stored.file.Path(), stored.version});
  CloseIfWhole(*partial);
}

CPartialFile* CArchiveIntake::PartialOf(CStoredFile stored) {
  const CKey key = {stored.file.Path(), stored.version};
  const auto found = m_partials.find(key);
  if (found != m_partials.end()) return &found->second;
  if (!IsWanted(stored)) return nullptr;
  MakeRoom(stored.file.node);
  const std::uint64_t id = m_record.NextId();
  m_tree.Drop(id);
  return &m_partials.emplace(key, CPartialFile{stored, id, std::vector<bool>(ChunksOf(stored.size)), Now()})
              .first->second;
}

// A node that begins more and more files takes nothing from the others: of its own the one that got nothing
// for the longest time goes, and is asked for again when something comes of it.
void CArchiveIntake::MakeRoom(const CFleetNode& node) {
  const std::string begin = CFleetFile{node, ""}.Path();
  std::size_t count = 0;
  auto oldest = m_partials.end();
  for (auto one = m_partials.lower_bound({begin, CVersion{}});
       one != m_partials.end() && one->first.first.starts_with(begin); ++one, ++count)
    if (oldest == m_partials.end() || one->second.touched < oldest->second.touched) oldest = one;
  if (count < kMostPartials) return;
  m_dropped.push_back(oldest->second.id);
  m_tree.Drop(oldest->second.id);
  m_changed.erase(oldest->first);
  m_partials.erase(oldest);
}

void CArchiveIntake::CloseIfWhole(CPartialFile& partial) {
  if (std::find(partial.chunks.begin(), partial.chunks.end(), false) != partial.chunks.end()) return;
  if (m_tree.Digest(partial.id) != partial.stored.version) {
    partial.chunks.assign(partial.chunks.size(), false);
    m_tell(partial.stored.file.Path() + ": its chunks are not what its version says; asked for again");
    return;
  }
  CStoredFile stored = partial.stored;
  const std::uint64_t id = partial.id;
  const CKey key = {stored.file.Path(), stored.version};
  m_partials.erase(key);
  m_changed.erase(key);
  if (IsWanted(stored))
    AddReady(stored, id);
  else
    m_tree.Drop(id);
  m_dropped.push_back(id);  // with the row of the file
}

std::vector<CStoredFile> CArchiveIntake::Finish() {
  if (!m_ready.empty() || !m_changed.empty()) m_tree.Sync();
  PlaceReady();
  if (!m_ready.empty()) m_tree.Sync();
  Record();
  for (auto& [path, one] : m_again) m_done.push_back(std::move(one));
  for (CReady& one : m_ready) m_done.push_back(std::move(one.stored));
  Clear();
  return std::exchange(m_done, {});
}

void CArchiveIntake::Clear() {
  m_ready.clear();
  m_paths.clear();
  m_again.clear();
  m_changed.clear();
  m_dropped.clear();
}

void CArchiveIntake::PlaceReady() {
  const auto isRefused = [&](const CReady& one) {
    try {
      m_tree.Place(one.id, one.stored.path);
      return false;
    } catch (const std::system_error& fault) {
      if (!CArchiveTree::IsOfPath(fault.code())) throw;
      m_tell(one.stored.path + ": cannot be stored: " + fault.code().message());
      m_tree.Drop(one.id);
      return true;
    }
  };
  std::vector<CReady> placed;
  for (CReady& one : m_ready)
    if (!isRefused(one)) placed.push_back(std::move(one));
  m_ready = std::move(placed);
}

void CArchiveIntake::Record() {
  CTransaction transaction(m_record.Store());
  for (const std::uint64_t id : m_dropped) m_record.DropPartial(id);
  for (const auto& [path, one] : m_again) m_record.Put(one);
  for (const CReady& one : m_ready) {
    m_record.Put(one.stored);
    DropOlderPartials(one.stored);
  }
  for (const CKey& key : m_changed)
    if (const auto found = m_partials.find(key); found != m_partials.end())
      m_record.PutPartial(found->second);
  transaction.Commit();
}

void CArchiveIntake::DropOlderPartials(const CStoredFile& stored) {
  for (auto one = m_partials.lower_bound({stored.file.Path(), CVersion{}});
       one != m_partials.end() && one->first.first == stored.file.Path();) {
    const auto next = std::next(one);
    if (one->second.stored.log.number == stored.log.number && one->second.stored.order < stored.order) {
      m_record.DropPartial(one->second.id);
      m_tree.Drop(one->second.id);
      m_partials.erase(one);
    }
    one = next;
  }
}

void CArchiveIntake::GiveBack() {
  Clear();
  m_partials.clear();
  std::vector<std::uint64_t> kept;
  for (CPartialFile& partial : m_record.Partials()) {
    if (!m_tree.Has(partial.id)) partial.chunks.assign(partial.chunks.size(), false);
    kept.push_back(partial.id);
    m_partials.emplace(CKey{partial.stored.file.Path(), partial.stored.version}, std::move(partial));
  }
  std::sort(kept.begin(), kept.end());
  for (const std::uint64_t id : m_tree.Incoming())
    if (!std::binary_search(kept.begin(), kept.end(), id)) m_tree.Drop(id);
}

std::vector<const CPartialFile*> CArchiveIntake::Waiting() const {
  std::vector<const CPartialFile*> waiting;
  const std::int64_t now = Now();
  for (const auto& [key, partial] : m_partials)
    if (partial.touched > now || now - partial.touched >= kSilent) waiting.push_back(&partial);
  return waiting;
}

void CArchiveIntake::DropStale() {
  const std::int64_t now = Now();
  CTransaction transaction(m_record.Store());
  std::erase_if(m_partials, [&](const auto& one) {
    const CPartialFile& partial = one.second;
    if (now - partial.touched < kStale) return false;
    m_tell(partial.stored.file.Path() + ": got nothing for 30 days, given up");
    m_record.DropPartial(partial.id);
    m_tree.Drop(partial.id);
    return true;
  });
  transaction.Commit();
}

}  // namespace vastra
