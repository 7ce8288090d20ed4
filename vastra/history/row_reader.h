// CRowReader: the rows of a time range over all logs of a catalogue, in time order, with bounded memory.
//
//     CRowReader rows(catalogue.Logs(), {.range = {from, to}, .variables = {"Temp", "Flow"}});
//     CHistoryRow row;
//     float value;
//     while (rows.Next(row))
//       if (row.Get(1, value)) ... the value of Flow at row.moment ...
#pragma once

#include <memory>
#include <vector>

#include "vastra/history/history_log.h"

namespace vastra {

struct CRowRequest {
  CMomentRange range = {};
  // The columns of the rows. Rows of logs that have none of them are left out. Empty: all variables of the
  // logs that have rows in the range, in the order in which they appear.
  std::vector<CString> variables = {};
  // Leaves out a row that an earlier log has as well: the same names, time record and values, byte for byte.
  // Rows that one log repeats stay.
  bool isUnique = false;
};

// A row as it is in its log: valid until the next call of the reader.
struct CHistoryRow {
  CMoment moment = 0;
  _timeb time;
  const char* values = nullptr;  // count floats of the log, not aligned
  std::uint32_t count = 0;
  const std::int32_t* places = nullptr;  // for each column the place of its value, or -1
  const CHistoryLog* log = nullptr;

  // Gets the value of a column: false if the log has none there. A logged NaN is a value.
  bool Get(std::size_t column, float& value) const {
    const std::int32_t place = places[column];
    if (static_cast<std::uint32_t>(place) >= count) return false;  // -1, too
    std::memcpy(&value, values + sizeof value * static_cast<std::size_t>(place), sizeof value);
    return true;
  }
};

// Rows that follow each other, of one log.
struct CRowStretch {
  std::uint32_t count = 0;
  const _timeb* times = nullptr;
  const char* values = nullptr;  // of the first row: floats, not aligned
  std::size_t step = 0;          // bytes from the values of one row to those of the next
  std::uint32_t valueCount = 0;  // of each row
  const std::int32_t* places = nullptr;
  const CHistoryLog* log = nullptr;
};

// A log whose rows, or the rest of them, could not be read.
struct CHistoryFault {
  CString path;
  CString fault;
};

class CRowMerger;

class VASTRA_API CRowReader {
 public:
  // logs must exist as long as the reader, unchanged. Logs with a fault are passed over.
  CRowReader(const std::vector<CHistoryLog>& logs, CRowRequest request);
  CRowReader(const CRowReader&) = delete;
  CRowReader& operator=(const CRowReader&) = delete;
  ~CRowReader();

  // The columns of the rows.
  const std::vector<CString>& Variables() const;
  // Gets the next row: true, or false after the last one. Rows of equal moments are in the order of the logs.
  bool Next(CHistoryRow& row) {
    if (m_next == m_stretch.count && !NextStretch(m_stretch)) return false;
    row.time = m_stretch.times[m_next];
    row.moment = MomentOf(row.time);
    row.values = m_stretch.values + m_next++ * m_stretch.step;
    row.count = m_stretch.valueCount;
    row.places = m_stretch.places;
    row.log = m_stretch.log;
    return true;
  }
  // The same rows, many at a time. Not to be mixed with Next.
  bool NextStretch(CRowStretch& stretch);
  // The logs that could not be read since the catalogue listed them: they were removed, replaced or cut.
  const std::vector<CHistoryFault>& Faults() const;
  // How much of the samples in the range has been read, from 0 to 1, for a progress bar.
  double Progress() const;

 private:
  std::unique_ptr<CRowMerger> m_pMerger;
  CRowStretch m_stretch;
  std::uint32_t m_next = 0;  // of m_stretch
};

}  // namespace vastra
