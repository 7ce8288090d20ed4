// CBucketMaker: makes the buckets of a range from rows, and from the blocks of digests where these are there.
//
// A log can be read from its digest if no other log has a row at the same time: then its blocks and the rows
// of the other logs follow each other in time. A block in which two parts meet is read from its log.
#pragma once

#include <deque>

#include "vastra/history/digest_file.h"
#include "vastra/history/log_values.h"
#include "vastra/history/row_merger.h"

namespace vastra {

// The parts of a range.
class CParts {
 public:
  CParts(const CMomentRange& range, std::uint64_t count) : m_range(range), m_count(count ? count : 1) {}

  // The part of a moment in the range, and where a part begins; the end of the range for the part after the
  // last one.
  std::uint64_t IndexOf(CMoment moment) const;
  CMoment BeginOf(std::uint64_t index) const;

 private:
  CMomentRange m_range;
  std::uint64_t m_count;
};

// A stretch of time that is read in one way: one log with its digest, or several logs as rows.
struct CBucketSpan {
  const CHistoryLog* digested = nullptr;
  std::vector<CHistoryLog> logs;
};

class CBucketMaker {
 public:
  CBucketMaker(const std::vector<CHistoryLog>& logs, CBucketRequest request);

  const std::vector<CString>& Variables() const { return m_request.variables; }
  bool Next(CBucketPart& part);
  const std::vector<CHistoryFault>& Faults() const { return m_faults; }
  double Progress() const;

 private:
  // What comes next in time: a row, or a block of a digest.
  enum class EItem { none, row, block };

  void MakeSpans(const std::vector<CHistoryLog>& logs);
  void AddSpan(std::vector<const CHistoryLog*>& cluster);
  CDigestReader* DigestOf(const CHistoryLog& log);
  bool OpenSpan();
  void OpenDigested(const CHistoryLog& log);
  EItem NextItem();
  EItem NextRow();
  EItem NextBlock();
  bool IsBlockInPart(std::uint32_t block) const;
  EItem NextLoaded();
  std::uint64_t AddItem();
  std::uint64_t AddBlock();

  CBucketRequest m_request;
  CParts m_parts;
  std::map<CString, std::unique_ptr<CDigestReader>> m_digests;  // by folder; null: there is none
  std::deque<CBucketSpan> m_spans;                              // that are left
  std::size_t m_allSpans = 0;
  std::vector<CHistoryFault> m_faults;

  EItem m_item = EItem::none;  // comes next
  CMoment m_moment = 0;        // of the item; of a block, of its first row
  CHistoryRow m_row;
  std::uint32_t m_block = 0;

  // The span that is being read.
  std::unique_ptr<CRowMerger> m_rows;
  COpenLogs m_open;
  std::unique_ptr<CLogValues> m_log;  // of a log with a digest
  CDigestReader* m_pDigest = nullptr;
  const CDigestLog* m_pEntry = nullptr;
  const CMoment* m_moments = nullptr;          // of the blocks
  std::vector<std::int32_t> m_places;          // of the variables in the log, or -1
  std::vector<const CDigestBlock*> m_columns;  // their blocks; null without a place
  std::uint32_t m_nextBlock = 0;
  std::uint32_t m_nextSample = 0, m_endSample = 0;  // of a block that is read from the log
  CLoadedSamples m_loaded;
  std::uint32_t m_shown = 0;  // next one of m_loaded

  CMomentRange m_part = {0, 0};
  std::vector<CBucket> m_buckets;  // of the part
};

}  // namespace vastra
