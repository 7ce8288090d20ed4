// CRepeats: which rows an earlier log has as well. Rows of equal moments are compared: the names of their
// logs, their time records and their values, byte for byte.
#pragma once

#include <string>
#include <unordered_map>

#include "vastra/history/row_reader.h"

namespace vastra {

class CRepeats {
 public:
  // Whether a row of that moment was compared.
  bool HasRowsAt(CMoment moment) const { return moment == m_moment; }
  // Whether the row, the only one of row, has to stay: a row stays as often as the log has it that has it
  // most often. It comes after those of earlier calls, in the order of the logs.
  bool IsNew(const CRowStretch& row);

 private:
  struct CCounts {
    std::uint64_t kept = 0, here = 0;  // in all logs, in the log
    const CHistoryLog* log = nullptr;
  };

  CMoment m_moment = kFirstMoment - 1;              // of the rows in m_rows
  std::unordered_map<std::string, CCounts> m_rows;  // by their bytes
  std::string m_bytes;
};

}  // namespace vastra
