#include "vastra/history/digest_file.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "vastra/logfiles/crc32c.h"
#include "vastra/logfiles/stable_hash.h"
#include "vastra/platform/archive_fields.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::uint32_t kDigestMagic = 0x44545356;  // VSTD
constexpr std::uint32_t kDigestVersion = 1;
constexpr std::size_t kStripeSize = std::size_t{8} << 20;
constexpr const char* kDigestFile = ".vastra-history.digest";

struct CDigestStart {
  std::uint32_t magic = kDigestMagic;
  std::uint32_t version = kDigestVersion;
  std::uint32_t blockSamples = kBlockSamples;
  std::uint32_t reserved = 0;

  bool operator==(const CDigestStart&) const = default;
};

struct CDigestEnd {
  std::uint32_t indexPlace[2] = {};  // low, high
  std::uint32_t indexSize = 0;
  std::uint32_t checksum = 0;  // of the index
  std::uint32_t magic = kDigestMagic;

  std::uint64_t Place() const { return std::uint64_t{indexPlace[1]} << 32 | indexPlace[0]; }
};
static_assert(sizeof(CDigestStart) == 16 && sizeof(CDigestEnd) == 20);

// The fields of the index.
class CDigestFields : public CArchiveFields<CDigestFields> {
 public:
  using CArchiveFields::CArchiveFields;
  using CArchiveFields::Visit;

  void Visit(std::int64_t& value) {
    auto bits = static_cast<std::uint64_t>(value);
    Visit(bits);
    value = static_cast<std::int64_t>(bits);
  }
  void Visit(CDigestLog& log) {
    VisitAll(log.file, log.size, log.lastWrite, log.samples, log.stripe, log.total, log.block);
  }
  void Visit(CDigestStripe& stripe) {
    VisitAll(stripe.place, stripe.names, stripe.logs, stripe.blocks, stripe.checksums);
  }
  void Visit(CDigestIndex& index) { VisitAll(index.names, index.stripes, index.logs); }
  template <class T>
  void Visit(std::vector<T>& items) {
    auto count = static_cast<std::uint32_t>(items.size());
    Visit(count);
    if (!m_ar.IsStoring()) m_ar.CheckCount(count, 1);
    items.resize(count);
    for (T& item : items) Visit(item);
  }
};

// Whether the places in the index are in a file whose index begins at end.
bool IsSound(const CDigestIndex& index, std::uint64_t end) {
  for (const CDigestStripe& stripe : index.stripes) {
    const std::size_t columns = stripe.checksums.size();
    if (stripe.names >= index.names.size() ||
        columns != CDigestStripe::ColumnCount(index.names[stripe.names].size()))
      return false;
    if (stripe.place > end || stripe.ColumnPlace(columns) > end) return false;
  }
  return std::all_of(index.logs.begin(), index.logs.end(), [&](const CDigestLog& log) {
    if (log.stripe >= index.stripes.size()) return false;
    const CDigestStripe& stripe = index.stripes[log.stripe];
    return log.total < stripe.logs && log.block <= stripe.blocks &&
           BlocksOf(log.samples) <= stripe.blocks - log.block;
  });
}

bool IsFileBefore(const CDigestLog& a, const CDigestLog& b) { return a.file < b.file; }

CString FileNameOf(const CString& path) { return path.Mid(path.ReverseFind('/') + 1); }

CString CacheFolder() {
  const CString cache = std::getenv("XDG_CACHE_HOME");
  if (!cache.IsEmpty() && cache[0] == '/') return cache + "/vastra/history";
  const CString home = std::getenv("HOME");
  return home.IsEmpty() ? CString() : home + "/.cache/vastra/history";
}

}  // namespace

CDigestBlock CDigestBlock::Of(const CBucket& bucket) {
  const auto count = [](std::uint64_t number) { return static_cast<std::uint16_t>(number); };
  return {bucket.sum,  bucket.sumRest,       bucket.least,       bucket.greatest,         bucket.first,
          bucket.last, count(bucket.values), count(bucket.nans), count(bucket.infinities)};
}

CBucket CDigestBlock::Bucket() const {
  CBucket bucket;
  bucket.values = values;
  bucket.nans = nans;
  bucket.infinities = infinities;
  bucket.sum = sum;
  bucket.sumRest = sumRest;
  bucket.least = least;
  bucket.greatest = greatest;
  bucket.first = first;
  bucket.last = last;
  return bucket;
}

std::vector<CString> DigestPaths(const CString& folder) {
  std::vector<CString> paths = {JoinPath(folder, kDigestFile)};
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(folder, nullptr), std::free);
  const CString cache = CacheFolder();
  if (!real || cache.IsEmpty()) return paths;
  CStableHash hash;
  hash.Add(real.get());
  paths.push_back(cache + "/" + hash.Text() + ".digest");
  return paths;
}

std::unique_ptr<CDigestReader> CDigestReader::Open(const CString& folder) {
  for (const CString& path : DigestPaths(folder)) {
    auto reader = std::make_unique<CDigestReader>(path);
    if (reader->ReadIndex()) return reader;
  }
  return nullptr;
}

bool CDigestReader::ReadIndex() {
  CDigestStart start;
  CDigestEnd end;
  if (!m_file.IsOpen() || m_file.Size() < sizeof start + sizeof end) return false;
  const std::uint64_t last = m_file.Size() - sizeof end;
  if (!m_file.Read(&start, sizeof start, 0) || start != CDigestStart()) return false;
  if (!m_file.Read(&end, sizeof end, last) || end.magic != kDigestMagic) return false;
  if (end.Place() > last || end.indexSize != last - end.Place()) return false;
  std::string bytes(end.indexSize, '\0');
  if (!m_file.Read(bytes.data(), bytes.size(), end.Place())) return false;
  if (Crc32c(bytes.data(), bytes.size()) != end.checksum) return false;
  try {
    CMemFile file(std::move(bytes));
    CArchive ar(&file, CArchive::load);
    CDigestFields(ar).Visit(m_index);
    return ar.Remaining() == 0 && IsSound(m_index, end.Place());
  } catch (const CArchiveException&) {
    return false;
  }
}

const CDigestLog* CDigestReader::Find(const CHistoryLog& log) const {
  const std::vector<CDigestLog>& logs = m_index.logs;
  CDigestLog wanted;
  wanted.file = FileNameOf(log.path);
  if (m_found >= logs.size() || logs[m_found].file != wanted.file)
    m_found = static_cast<std::size_t>(std::lower_bound(logs.begin(), logs.end(), wanted, IsFileBefore) -
                                       logs.begin());
  if (m_found == logs.size() || logs[m_found].file != wanted.file) return nullptr;
  const CDigestLog& found = logs[m_found++];
  const std::vector<CString>& names = m_index.names[m_index.stripes[found.stripe].names];
  return found.IsOf(log) && names == *log.names ? &found : nullptr;
}

const CMoment* CDigestReader::Moments(const CDigestLog& log) {
  const char* column = Column(log, 0);
  return column ? reinterpret_cast<const CMoment*>(column) + log.block : nullptr;
}

const CDigestBlock* CDigestReader::Blocks(const CDigestLog& log, std::size_t variable) {
  const char* column = Column(log, CDigestStripe::BlockColumn(variable));
  return column ? reinterpret_cast<const CDigestBlock*>(column) + log.block : nullptr;
}

const CDigestBlock* CDigestReader::Total(const CDigestLog& log, std::size_t variable) {
  const char* column = Column(log, CDigestStripe::TotalColumn(variable));
  return column ? reinterpret_cast<const CDigestBlock*>(column) + log.total : nullptr;
}

// The column of the stripe of the log, which is loaded when it is asked for; null if it is damaged.
const char* CDigestReader::Column(const CDigestLog& log, std::size_t column) {
  if (m_stripe != log.stripe) m_columns.clear();
  m_stripe = log.stripe;
  const CDigestStripe& stripe = m_index.stripes[log.stripe];
  const auto [at, isNew] = m_columns.try_emplace(column);
  if (!isNew) return at->second.get();
  const std::size_t size = stripe.ColumnSize(column);
  CColumn bytes = std::make_unique_for_overwrite<char[]>(size);
  if (m_file.Read(bytes.get(), size, stripe.ColumnPlace(column)) &&
      Crc32c(bytes.get(), size) == stripe.checksums[column])
    at->second = std::move(bytes);
  return at->second.get();
}

CDigestWriter::CDigestWriter(const CString& path) : m_file(path) {
  const CDigestStart start;
  Put(&start, sizeof start);
}

void CDigestWriter::Put(const void* bytes, std::size_t size) {
  m_file.Write(bytes, size);
  m_place += size;
}

// The number of entries that the column of the stripe has so far.
std::size_t CDigestWriter::Entries(std::size_t column) const {
  return m_columns.empty() ? 0 : m_columns[column].size() / CDigestStripe::EntrySize(column);
}

void CDigestWriter::Append(std::size_t column, const void* entries, std::size_t count) {
  m_columns[column].append(static_cast<const char*>(entries), count * CDigestStripe::EntrySize(column));
}

void CDigestWriter::Add(const CHistoryLog& log, const std::vector<CMoment>& moments,
                        const std::vector<std::vector<CDigestBlock>>& blocks) {
  const std::size_t blockSize = sizeof(CMoment) + blocks.size() * sizeof(CDigestBlock);  // of all variables
  if (m_names != log.names || (Entries(0) + moments.size()) * blockSize > kStripeSize) EndStripe();
  m_names = log.names;
  m_columns.resize(CDigestStripe::ColumnCount(blocks.size()));
  m_index.logs.push_back(
      {FileNameOf(log.path), log.size, log.status.lastWrite, static_cast<std::uint32_t>(log.samples),
       static_cast<std::uint32_t>(m_index.stripes.size()), m_logs++, static_cast<std::uint32_t>(Entries(0))});
  Append(0, moments.data(), moments.size());
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    CBucket total;
    for (const CDigestBlock& block : blocks[i]) total.Add(block.Bucket());
    const CDigestBlock entry = HasTotal(log.samples) ? CDigestBlock::Of(total) : CDigestBlock();
    Append(CDigestStripe::TotalColumn(i), &entry, 1);
    Append(CDigestStripe::BlockColumn(i), blocks[i].data(), blocks[i].size());
  }
}

void CDigestWriter::EndStripe() {
  if (m_columns.empty()) return;
  const auto [list, isNew] = m_lists.try_emplace(m_names, static_cast<std::uint32_t>(m_index.names.size()));
  if (isNew) m_index.names.push_back(*m_names);
  CDigestStripe stripe;
  stripe.place = m_place;
  stripe.names = list->second;
  stripe.logs = std::exchange(m_logs, 0);
  stripe.blocks = static_cast<std::uint32_t>(Entries(0));
  for (const std::string& column : m_columns) {
    stripe.checksums.push_back(Crc32c(column.data(), column.size()));
    Put(column.data(), column.size());
  }
  m_index.stripes.push_back(std::move(stripe));
  m_columns.clear();
}

void CDigestWriter::Finish() {
  EndStripe();
  std::sort(m_index.logs.begin(), m_index.logs.end(), IsFileBefore);
  CMemFile index;
  CArchive ar(&index, CArchive::store);
  CDigestFields(ar).Visit(m_index);
  ar.Close();
  const std::string& bytes = index.Bytes();
  const CDigestEnd end = {{static_cast<std::uint32_t>(m_place), static_cast<std::uint32_t>(m_place >> 32)},
                          static_cast<std::uint32_t>(bytes.size()),
                          Crc32c(bytes.data(), bytes.size())};
  Put(bytes.data(), bytes.size());
  Put(&end, sizeof end);
  m_file.Replace();
}

}  // namespace vastra
