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
  CStoredFile stored = {subject.file, subject.version, order, 0};
  if (subject.IsPack()) {
    for (const CPackedFile& file : ParsePack(message)) {
      stored.file.key = file.key;
      stored.version = file.version;
      stored.size = file.bytes.size();
      TakeWhole(stored, file.bytes);
    }
    return;
  }
  const CChunk chunk = ParseChunk(message, subject.chunk);
  stored.size = chunk.size;
  if (ChunksOf(chunk.size) > 1) {
    TakeChunk(stored, chunk);
    return;
  }
  if (VersionOf(chunk.bytes) != stored.version) throw CChunkFault("its bytes are not what its version says");
  TakeWhole(stored, chunk.bytes);
}

void CArchiveIntake::TakeWhole(const CStoredFile& stored, std::string_view bytes) {
  if (!IsWanted(stored)) return;
  const std::uint64_t id = m_record.NextId();
  m_tree.Drop(id);
  m_ready.push_back({stored, id});
  m_paths.insert(stored.file.Path());
  m_tree.Write(id, 0, bytes);
}

// A version that is stored needs its receipt again: who sends it has not got it.
bool CArchiveIntake::IsWanted(const CStoredFile& stored) {
  if (m_paths.contains(stored.file.Path())) m_done = Finish();  // the record must say what is there
  std::optional<CStoredFile> have = m_record.Find(stored.file);
  if (!have) return true;
  if (have->version != stored.version) return have->order < stored.order;
  if (m_tree.VersionOf(have->file) != have->version) return true;  // somebody has removed or changed it
  have->order = std::max(have->order, stored.order);
  if (const auto again = m_again.find(stored.file.Path()); again != m_again.end())
    have->order = std::max(have->order, again->second.order);
  m_again[stored.file.Path()] = *have;
  return false;
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
  partial->stored.order = std::max(partial->stored.order, stored.order);
  partial->touched = Now();
  m_changed.insert({stored.file.Path(), stored.version});
  CloseIfWhole(*partial);
}

CPartialFile* CArchiveIntake::PartialOf(const CStoredFile& stored) {
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
  const CStoredFile stored = partial.stored;
  const std::uint64_t id = partial.id;
  const CKey key = {stored.file.Path(), stored.version};
  m_partials.erase(key);
  m_changed.erase(key);
  m_dropped.push_back(id);
  if (IsWanted(stored)) {
    m_ready.push_back({stored, id});
    m_paths.insert(stored.file.Path());
  } else {
    m_tree.Drop(id);
  }
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
      m_tree.Place(one.id, one.stored.file);
      return false;
    } catch (const std::system_error& fault) {
      if (!CArchiveTree::IsOfPath(fault.code())) throw;
      m_tell(one.stored.file.Path() + ": cannot be stored: " + fault.code().message());
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
    if (one->second.stored.order < stored.order) {
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
