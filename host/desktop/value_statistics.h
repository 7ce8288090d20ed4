// CValueStatistics: the least, the largest and the mean value of each variable of a run since its start or
// the last reset. Added to a run as an observer; the window of values copies the results.
//
// A scan of n variables costs a pass over n records of 24 bytes. A reader holds the mutex while it copies
// them, which takes no longer, so that a scan never waits noticeably.
#pragma once

#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include "host/run/run_observer.h"

namespace vastra {

// The finite values of a variable. NaN and infinities do not count.
struct CValueRange {
  double sum = 0;
  float min = std::numeric_limits<float>::infinity(), max = -std::numeric_limits<float>::infinity();
  std::uint64_t count = 0;  // 0: min and max are not set

  // NaN without a value.
  double Mean() const {
    return count ? sum / static_cast<double>(count) : std::numeric_limits<double>::quiet_NaN();
  }
};

class CValueStatistics : public CRunObserver {
 public:
  struct CResults {
    std::shared_ptr<const std::vector<CString>> names;  // null before the first start
    std::vector<CValueRange> ranges;                    // one for each name
    bool isRunning = false;
    _timeb since;              // the start or the last reset
    std::uint64_t resets = 0;  // how often they have begun again
  };

  // From any thread. results can be used again and again, so that no copy allocates.
  void Copy(CResults& results) const;
  // From any thread: all ranges are empty again.
  void Reset();
  // From any thread: a run that seemed to have stopped goes on, and its ranges stay.
  void GoesOn();

  void Started(const CStringArray& names) override;
  // A variable whose name stays keeps its range.
  void Renamed(const CStringArray& names) override;
  void Sampled(const CLogSample& sample) override;
  void Stopped() override;

 private:
  mutable std::mutex m_mutex;
  CResults m_results;
};

}  // namespace vastra
