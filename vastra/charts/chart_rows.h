// CChartRows: what there is to read at a moment: the logs of a scan, and from a moment on the samples of a
// ring. It does not change, so that several threads can read it.
#pragma once

#include <algorithm>
#include <map>
#include <mutex>

#include "vastra/charts/live_samples.h"
#include "vastra/history/catalogue.h"

namespace vastra {

// Where a variable has rows. Variables of the same logs share one.
struct CTimeline {
  struct CStretch {
    CMoment first = 0, last = 0;
    std::uint64_t rows = 0;
    std::int64_t longest = 0;  // distance of rows that is not a gap
  };
  std::vector<CStretch> stretches = {};   // of logs, in the order of first
  std::vector<CMomentRange> shared = {};  // times that several logs share, in order and apart from each other
  bool isLive = false;                    // the ring has the variable
  CMoment since = kEndMoment;  // the rows before it are those of logs, the others those of the ring
};

// Variables of a query that share a timeline, by their places in it.
struct CVariableGroup {
  const CTimeline* timeline = nullptr;
  std::vector<std::size_t> places = {};
};

class CChartRows {
 public:
  CChartRows() = default;
  // logs as a catalogue lists them after head was taken of live, which can be null. isThinned: as of
  // CChartSources.
  CChartRows(std::vector<CHistoryLog> logs, std::shared_ptr<const CLiveSamples> live, const CLiveHead& head,
             bool isThinned = false);

  const std::vector<CHistoryLog>& Logs() const { return m_logs; }
  const CLiveSamples* Live() const { return m_pLive.get(); }
  std::uint64_t Generation() const { return m_generation; }
  CMoment Since() const { return m_since; }  // see CTimeline; kEndMoment without samples in the ring
  CLiveHead Head() const;                    // of the ring; empty if it has begun again
  const std::vector<CString>& LiveNames() const { return *m_liveNames; }
  const std::vector<CString>& Variables() const { return m_variables; }
  // Whether the ring still has all its samples that are read from it, with the same names.
  bool IsComplete() const;
  CMomentRange Range() const;

  // Whether rows of the variables in range are among those that have changed: in logs, and in the ring.
  bool HaveChanged(const std::vector<CString>& variables, const CMomentRange& range,
                   const std::vector<CMomentRange>& inLogs, const CMomentRange& inRing) const;

  // Valid as long as this object.
  const CTimeline& TimelineOf(const CString& variable) const;
  std::vector<CVariableGroup> GroupsOf(const std::vector<CString>& variables) const;

  // The number of rows of a timeline in range, as far as it can be told without reading.
  // head: of the ring.
  double Estimate(const CTimeline& timeline, const CMomentRange& range, const CLiveHead& head) const;
  // The same when the ring has filled the range, with samples as frequent as so far.
  double Expect(const CTimeline& timeline, const CMomentRange& range, const CLiveHead& head) const;
  // The longest distance of rows near moment that is not a gap; 0 without such rows.
  std::int64_t LongestStep(const CTimeline& timeline, CMoment moment, const CLiveHead& head) const;

 private:
  using CNames = std::vector<CString>;
  void AddNames(const CNames& names, std::size_t list);
  double EstimateLogs(const CTimeline& timeline, const CMomentRange& range) const;

  std::vector<CHistoryLog> m_logs;
  std::shared_ptr<const CLiveSamples> m_pLive;
  CSharedNames m_liveNames = std::make_shared<const CNames>();
  std::uint64_t m_generation = 0;
  bool m_isThinned = false;
  CMoment m_since = kEndMoment;
  CNames m_variables;
  std::map<CString, std::vector<std::size_t>>
      m_lists;                                    // of names that have a variable; 0 is that of the ring
  std::map<const CNames*, std::size_t> m_listOf;  // of logs
  mutable std::mutex m_mutex;
  mutable std::map<std::vector<std::size_t>, CTimeline> m_timelines;
};

// What has to be read again when the logs of before were replaced by those of now: ranges of time.
std::vector<CMomentRange> ChangedRanges(const std::vector<CHistoryLog>& before,
                                        const std::vector<CHistoryLog>& now);

}  // namespace vastra
