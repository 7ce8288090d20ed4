// The digest of a folder: for each block of 128 samples of its logs and each variable the count, least,
// greatest, sum, first and last of the values. docs/history.md describes each byte of the file.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "vastra/history/buckets.h"
#include "vastra/logfiles/probed_file.h"
#include "vastra/platform/file.h"

namespace vastra {

constexpr std::uint32_t kBlockSamples = 128;

// Whether a digest has a log of so many samples as one block, whose counts are as short as those of a block.
constexpr bool HasTotal(std::uint64_t samples) { return samples <= UINT16_MAX; }

constexpr std::uint32_t BlocksOf(std::uint64_t samples) {
  return static_cast<std::uint32_t>((samples + kBlockSamples - 1) / kBlockSamples);
}

// The values of one variable in a block, in memory as in the file.
struct CDigestBlock {
  double sum = 0, sumRest = 0;
  float least = 0, greatest = 0, first = 0, last = 0;
  std::uint16_t values = 0, nans = 0, infinities = 0;
  std::uint16_t reserved = 0;

  static CDigestBlock Of(const CBucket& bucket);
  CBucket Bucket() const;
};
static_assert(sizeof(CDigestBlock) == 40);

// A log in a digest.
struct CDigestLog {
  CString file;                // its name in the folder
  std::uint64_t size = 0;      // of the file when it was read
  std::int64_t lastWrite = 0;  // the same, nanoseconds since 1970
  std::uint32_t samples = 0;
  std::uint32_t stripe = 0;  // which has its blocks
  std::uint32_t total = 0,
                block = 0;  // its own entry and that of its first block in the columns of the stripe

  bool IsOf(const CHistoryLog& log) const {
    return size == log.size && lastWrite == log.status.lastWrite && samples == log.samples;
  }
};

// The blocks of several logs with the same names, in columns: column 0 has the moment of the first sample of
// each block; of variable i, column 2 i + 1 has an entry for each log, column 2 i + 2 one for each block.
struct CDigestStripe {
  std::uint64_t place = 0;
  std::uint32_t names = 0;  // its list in CDigestIndex::names
  std::uint32_t logs = 0, blocks = 0;
  std::vector<std::uint32_t> checksums;  // of the columns

  static std::size_t ColumnCount(std::size_t variables) { return 2 * variables + 1; }
  static std::size_t TotalColumn(std::size_t variable) { return 2 * variable + 1; }
  static std::size_t BlockColumn(std::size_t variable) { return 2 * variable + 2; }
  static std::size_t EntrySize(std::size_t column) { return column ? sizeof(CDigestBlock) : sizeof(CMoment); }
  std::size_t ColumnSize(std::size_t column) const {
    return (column % 2 ? logs : blocks) * EntrySize(column);
  }
  std::uint64_t ColumnPlace(std::size_t column) const {
    if (column == 0) return place;
    const std::uint64_t variable = (column - 1) / 2, before = column % 2 ? 0 : logs;
    return place + blocks * sizeof(CMoment) +
           (variable * (std::uint64_t{logs} + blocks) + before) * sizeof(CDigestBlock);
  }
};

// What is at the end of the file.
struct CDigestIndex {
  std::vector<std::vector<CString>> names;
  std::vector<CDigestStripe> stripes;
  std::vector<CDigestLog> logs;  // sorted by file
};

// Where the digest of a folder is, best first: in the folder itself, in the cache directory of the user.
// Empty strings are left out.
std::vector<CString> DigestPaths(const CString& folder);

// Reads a digest. What is damaged or does not fit is as if it were not there.
class CDigestReader {
 public:
  // The digest of folder; null if there is none.
  static std::unique_ptr<CDigestReader> Open(const CString& folder);
  explicit CDigestReader(const CString& path) : m_file(path) {}
  bool ReadIndex();

  // The log in the digest; null if the digest does not have it as it is now.
  const CDigestLog* Find(const CHistoryLog& log) const;
  // The moments of the first samples of the log's blocks; null if they cannot be read.
  const CMoment* Moments(const CDigestLog& log);
  // The blocks of one variable, and the whole log as one block, of a log that has a total. All stay valid
  // until a log of another stripe is asked for.
  const CDigestBlock* Blocks(const CDigestLog& log, std::size_t variable);
  const CDigestBlock* Total(const CDigestLog& log, std::size_t variable);

 private:
  using CColumn = std::unique_ptr<char[]>;  // null: it is damaged

  const char* Column(const CDigestLog& log, std::size_t column);

  CProbedFile m_file;
  CDigestIndex m_index;
  mutable std::size_t m_found = 0;      // after the last log that was found: mostly the next one
  std::uint32_t m_stripe = UINT32_MAX;  // whose columns are loaded
  std::map<std::size_t, CColumn> m_columns;
};

// Writes a digest, stripe by stripe, to a file that replaces the one at path at the end. Throws
// CFileException.
class CDigestWriter {
 public:
  explicit CDigestWriter(const CString& path);

  // Adds a log: the moments of its blocks, and for each variable its blocks.
  void Add(const CHistoryLog& log, const std::vector<CMoment>& moments,
           const std::vector<std::vector<CDigestBlock>>& blocks);
  void Finish();

 private:
  void EndStripe();
  std::size_t Entries(std::size_t column) const;
  void Append(std::size_t column, const void* entries, std::size_t count);
  void Put(const void* bytes, std::size_t size);

  CReplaceFile m_file;
  std::uint64_t m_place = 0;
  CDigestIndex m_index;
  CSharedNames m_names;                // of the stripe that is being made
  std::vector<std::string> m_columns;  // of this stripe
  std::uint32_t m_logs = 0;            // in it
  std::map<CSharedNames, std::uint32_t> m_lists;
};

}  // namespace vastra
