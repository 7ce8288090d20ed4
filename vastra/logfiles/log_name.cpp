#include "vastra/logfiles/log_name.h"

#include "vastra/core/truncate.h"

namespace vastra {
namespace {

constexpr UINT kLogsInAnHour = 100;

}  // namespace

CString HourName(const CTime& time) {
  const std::tm local = time.GetLocalTm();
  CString name;
  name.Format("%02d%02d%02d%02d", local.tm_year % 100, local.tm_mon + 1, local.tm_mday, local.tm_hour);
  return name;
}

CString CHourNames::CreateFileName(const CTime& time, const CString& prefix) {
  CString name = prefix + HourName(time) + "00";
  if (!(name == m_lastBaseName)) {
    m_lastBaseName = name;
    m_sequence = 0;
  }
  const UINT number = m_sequence;
  m_sequence = (m_sequence + 1) % kLogsInAnHour;
  name.SetAt(name.GetLength() - 2, static_cast<char>('0' + number / 10));
  name.SetAt(name.GetLength() - 1, static_cast<char>('0' + number % 10));
  return name;
}

CString CreateFileNameFromVar(const CString& variable, const CStringArray& names, const CSampleStore& samples,
                              int dwordName, const CString& prefix) {
  if (samples.IsEmpty()) return kNoValueName;
  return CreateFileNameFromVar(variable, names, samples.GetHead(), dwordName, prefix);
}

CString CreateFileNameFromVar(const CString& variable, const CStringArray& names, const CSampleRecord& first,
                              int dwordName, const CString& prefix) {
  CString name = kNoValueName;
  const auto place =
      static_cast<UINT>(FindIn(names, variable));  // beyond every sample if names does not contain it
  if (place < first.m_count) {
    const auto value = [&first](UINT index) { return TruncateToInt(first.Value(index)); };
    if (dwordName && place + 1 < first.m_count)
      name.Format("%d%d", value(place), value(place + 1));
    else
      name.Format("%d", value(place));
  }
  return prefix + name;
}

}  // namespace vastra
