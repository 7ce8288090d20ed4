// CMomentText: the times of exported rows as text.
#pragma once

#include "vastra/history/local_time.h"
#include "vastra/history/moment.h"

namespace vastra {

enum class ETimeForm {
  local,    // 2026-03-01 12:00:00.250
  utc,      // the same in UTC
  iso,      // RFC 3339: 2026-03-01T12:00:00.250+01:00
  seconds,  // since 1970: 1772362800.250
};

constexpr std::size_t kMaxMomentText = 48;

// The text is computed once for each minute; for the moments within it only seconds and milliseconds are
// replaced.
class VASTRA_API CMomentText {
 public:
  explicit CMomentText(ETimeForm form) : m_form(form) {}
  // Puts the text of moment at to and returns the place after it. May write up to kMaxMomentText bytes.
  char* Put(char* to, CMoment moment);

 private:
  char* PutSeconds(char* to, CMoment moment) const;
  std::int64_t OffsetAt(std::int64_t seconds);
  void SetMinute(std::int64_t minute, std::int64_t offset);

  static constexpr std::size_t kStartSize = 17;  // "2026-03-01 12:00:"

  const ETimeForm m_form;
  CLocalOffset m_local;
  std::int64_t m_minute = INT64_MIN;  // since 1970, of the clock that is shown
  std::int64_t m_shownOffset = 0;     // seconds
  char m_start[32] = {};
  char m_end[16] = {};  // the offset, with iso
};

}  // namespace vastra
