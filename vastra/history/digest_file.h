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
  std::uint32_t stripe = 0, block = 0;  // its first block, counted from the beginning of the stripe
  bool IsOf(const CHistoryLog& log) const {
    return size == log.size && lastWrite == log.status.lastWrite && samples == log.samples;
  }
};

// The blocks of several logs with the same names, one variable after the other. A column of it has a value
// for each block: column 0 the moment of the first sample, column i the variable i - 1.
struct CDigestStripe {
  std::uint64_t place = 0;
  std::uint32_t names = 0;  // its list in CDigestIndex::names
  std::uint32_t blocks = 0;
  std::vector<std::uint32_t> checksums;  // of the columns

  static std::size_t EntrySize(std::size_t column) { return column ? sizeof(CDigestBlock) : sizeof(CMoment); }
  std::size_t ColumnSize(std::size_t column) const { return blocks * EntrySize(column); }
  std::uint64_t ColumnPlace(std::size_t column) const {
    return place + (column ? blocks * sizeof(CMoment) + (column - 1) * blocks * sizeof(CDigestBlock) : 0);
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
  // The blocks of one variable. Both stay valid until a log of another stripe is asked for.
  const CDigestBlock* Blocks(const CDigestLog& log, std::size_t variable);

 private:
  using CColumn = std::optional<std::vector<char>>;  // none: it is damaged

  const char* Column(const CDigestLog& log, std::size_t column);

  CProbedFile m_file;
  CDigestIndex m_index;
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
  void Put(const void* bytes, std::size_t size);

  CReplaceFile m_file;
  std::uint64_t m_place = 0;
  CDigestIndex m_index;
  CSharedNames m_names;                // of the stripe that is being made
  std::vector<std::string> m_columns;  // of this stripe
  std::map<CSharedNames, std::uint32_t> m_lists;
};

}  // namespace vastra
