// The name of a log without its extension: from the hour of its first sample and a number, or from the value
// of a variable in its first sample.
#pragma once

#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/array.h"

namespace vastra {

// The source of names by time, in place of a variable.
inline constexpr const char* kNamedByTime = "System Time";

// The name of a log whose variable is missing.
inline constexpr const char* kNoValueName = "NoValue";

// The hour of a name by time: YYMMDDHH in local time.
CString HourName(const CTime& time);

// Names by time: YYMMDDHHnn in local time; nn is the number of the log within its hour. The number is counted
// here and does not depend on the files on the disk; 00 follows 99.
class CHourNames {
 public:
  // The name of the next log, whose first sample is at time. prefix is part of the hour's name: with another
  // prefix the numbers start at 00, too.
  CString CreateFileName(const CTime& time, const CString& prefix);

 private:
  CString m_lastBaseName;  // of the last log, with its prefix and 00 as its number
  UINT m_sequence = 0;     // the next number within that hour
};

// The name from the value of variable, the first of that name in names, in the first sample of samples:
// prefix and the value truncated to an integer. With dwordName the next value follows, if the sample has one.
// "NoValue" replaces a missing value; without samples the name has no prefix either.
CString CreateFileNameFromVar(const CString& variable, const CStringArray& names, const CSampleStore& samples,
                              int dwordName, const CString& prefix);
// The same for the first sample itself.
CString CreateFileNameFromVar(const CString& variable, const CStringArray& names, const CSampleRecord& first,
                              int dwordName, const CString& prefix);

}  // namespace vastra
