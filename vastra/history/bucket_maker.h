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
  CDigestReader* digest = nullptr;
  const CDigestLog* entry = nullptr;  // of the log in the digest
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
  // What comes next in time: rows, or blocks of a digest.
  enum class EItem { none, rows, blocks };
  using CPlaceList = std::vector<std::int32_t>;  // of the variables in a log, or -1

  void MakeSpans(const std::vector<CHistoryLog>& logs);
  void AddSpan(std::vector<const CHistoryLog*>& cluster);
  const CPlaceList& PlacesOf(const CHistoryLog& log);
  CDigestReader* DigestOf(const CHistoryLog& log);
  bool OpenSpan();
  void OpenDigested(const CBucketSpan& span);
  EItem NextItem();
  EItem NextRows();
  EItem NextBlock();
  EItem NextLoaded();
  bool FindColumns(const CBucketSpan& span,
                   const CDigestBlock* (CDigestReader::*find)(const CDigestLog&, std::size_t));
  bool IsInPart(CMoment first, CMoment last) const;
  bool IsBlockInPart(std::uint32_t block) const;
  std::uint64_t AddItem();
  std::uint64_t AddRows();
  std::uint64_t AddBlocks();

  CBucketRequest m_request;
  CParts m_parts;
  std::map<const std::vector<CString>*, CPlaceList> m_lists;    // by the names of a log
  std::map<CString, std::unique_ptr<CDigestReader>> m_digests;  // by folder; null: there is none
  std::deque<CBucketSpan> m_spans;                              // the first one is being read
  std::size_t m_allSpans = 0;
  std::vector<CHistoryFault> m_faults;

  EItem m_item = EItem::none;  // comes next
  CMoment m_moment = 0;        // of its first row
  CRowStretch m_stretch;       // rows
  std::uint32_t m_block = 0;   // of a digest

  // The span that is being read.
  std::unique_ptr<CRowMerger> m_rows;
  COpenLogs m_open;
  std::unique_ptr<CLogValues> m_log;           // of a log with a digest
  const CMoment* m_moments = nullptr;          // of its blocks
  const CPlaceList* m_places = nullptr;        // in it
  bool m_isWhole = false;                      // the log is one entry of the digest
  std::vector<const CDigestBlock*> m_columns;  // the entries of the variables; null without a place
  std::uint32_t m_nextBlock = 0;
  std::uint32_t m_nextSample = 0, m_endSample = 0;  // of a block that is read from the log

  CMomentRange m_part = {0, 0};
  std::vector<CBucket> m_buckets;  // of the part
};

}  // namespace vastra
