// What a log is called, without its extension: after the hour of its first sample and a number, or after the
// value of a variable in its first sample.
#pragma once

#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/array.h"

namespace vastra {

// Names by time: YYMMDDHHnn in local time, with the number nn of the log within its hour. The number is
// counted here and not by what lies on the disk; behind 99 comes 00 again.
class CHourNames {
 public:
  // The name of the next log, whose first sample is at time. prefix is part of the hour's name: another
  // prefix starts at 00 too.
  CString CreateFileName(const CTime& time, const CString& prefix);

 private:
  CString m_lastBaseName;  // of the last log, with its prefix and with 00 in place of its number
  UINT m_sequence = 0;     // the next number within that hour
};

// The name after the value of variable, the first of that name in names, in the first sample of samples: the
// value cut to an integer, behind prefix. With dwordName the value behind it, if the sample has one, is
// joined on. "NoValue" takes the place of a value that is not there; without samples there is no prefix
// either.
CString CreateFileNameFromVar(const CString& variable, const CStringArray& names, const CSampleStore& samples,
                              int dwordName, const CString& prefix);

}  // namespace vastra
