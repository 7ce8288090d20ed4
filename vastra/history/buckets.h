// CBucketReader: a time range cut in parts, and for each part and variable the number of values, least,
// greatest, mean, first and last. One pass over the rows in time order; with digests (folder_digest.h) most
// of the values are not read.
//
//     CBucketReader reader(catalogue.Logs(), {.range = {from, to}, .parts = 2000, .variables = {"Temp"}});
//     CBucketPart part;
//     while (reader.Next(part)) ... part.from, part.buckets[0].Mean() ...
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "vastra/history/row_reader.h"

namespace vastra {

// The values of one variable in one part. Only finite values count, NaN and infinities are counted apart.
struct CBucket {
  std::uint64_t values = 0;  // that are finite
  std::uint64_t nans = 0, infinities = 0;
  double sum = 0, sumRest = 0;  // their sum is that of the values, with twice the digits of a double
  float least = 0, greatest = 0, first = 0, last = 0;  // if there are values

  double Mean() const { return values ? (sum + sumRest) / static_cast<double>(values) : 0; }

  // Adds count values, the first one at values, each step bytes after the one before.
  void Add(const char* values, std::size_t step, std::uint32_t count);
  void Add(const CBucket& later);  // the values of later come after those of this bucket

 private:
  void Add(float value);
  void AddToSum(double value, double rest);
};

struct CBucketRequest {
  CMomentRange range = {};
  std::uint64_t parts =
      1;  // equal ones; part i begins at range.from + floor(i * length of the range / parts)
  std::vector<CString> variables = {};  // as of CRowRequest
  bool isUnique = false;                // the same
  bool useDigests = true;               // those that are there; they are not made
  // If not empty: looked at for each piece of a log that is read; true ends the parts.
  std::function<bool()> isStopped = {};
};

// A part that has rows. Valid until the next call of the reader.
struct CBucketPart {
  std::uint64_t index = 0;
  CMoment from = 0, to = 0;
  std::uint64_t rows = 0;
  std::span<const CBucket> buckets;  // one for each variable
};

class CBucketMaker;

class VASTRA_API CBucketReader {
 public:
  // logs must exist as long as the reader, unchanged.
  CBucketReader(const std::vector<CHistoryLog>& logs, CBucketRequest request);
  CBucketReader(const CBucketReader&) = delete;
  CBucketReader& operator=(const CBucketReader&) = delete;
  ~CBucketReader();

  const std::vector<CString>& Variables() const;
  // Gets the next part that has rows: true, or false after the last one.
  bool Next(CBucketPart& part);
  const std::vector<CHistoryFault>& Faults() const;
  double Progress() const;  // from 0 to 1

 private:
  std::unique_ptr<CBucketMaker> m_pMaker;
};

}  // namespace vastra
