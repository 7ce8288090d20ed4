// Shared by the tests of the history of logs: a folder of logs, and what a catalogue reads of it as text.
#pragma once

#include <cmath>
#include <cstdio>

#include "tests/logfiles/link_fixture.h"
#include "vastra/history/buckets.h"
#include "vastra/history/catalogue.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra {

// A row in a test: its moment and its values.
struct CTestRow {
  CMoment moment;
  std::vector<float> values;
};

inline CSampleStore& StoreOf(const std::vector<CTestRow>& rows) {
  thread_local CSampleStore store;
  store.RemoveAll();
  for (const CTestRow& row : rows) {
    _timeb time;
    time.time = static_cast<std::int32_t>(row.moment / 1000);
    time.millitm = static_cast<std::uint16_t>(row.moment % 1000);
    store.Append(time, reinterpret_cast<const char*>(row.values.data()),
                 static_cast<std::uint32_t>(row.values.size()));
  }
  return store;
}

inline std::string FileName(const CString& path) { return path.Mid(path.ReverseFind('/') + 1).Std(); }

// "moment:value,value moment:-,value ": "-" is no value.
inline std::string Text(CRowReader&& rows) {
  std::string text;
  CHistoryRow row;
  while (rows.Next(row)) {
    text += std::to_string(row.moment) + ":";
    for (std::size_t i = 0; i < rows.Variables().size(); ++i) {
      float value;
      char digits[32] = "-";
      if (row.Get(i, value)) std::snprintf(digits, sizeof digits, "%g", static_cast<double>(value));
      text += (i ? "," : "") + std::string(digits);
    }
    text += " ";
  }
  for (const CHistoryFault& fault : rows.Faults())
    text += FileName(fault.path) + " " + fault.fault.Std() + " ";
  return text;
}

class CHistoryFixture : public CLogFixture {
 protected:
  CHistoryFixture() { m_catalogue.Add(Folder(), true); }

  const CString& Folder() const { return m_dir.Path(); }
  void Log(const char* file, const CStringArray& names, const std::vector<CTestRow>& rows) {
    std::filesystem::create_directories(std::filesystem::path((m_dir / file).Std()).parent_path());
    WriteBytes(m_dir / file, Written(names, StoreOf(rows)));
  }
  // Rows of the variable x with the values first, first + 1, ..., a second apart.
  static std::vector<CTestRow> Count(int first, int count) {
    std::vector<CTestRow> rows;
    for (int i = first; i < first + count; ++i) rows.push_back({i * 1000, {static_cast<float>(i)}});
    return rows;
  }
  const std::vector<CHistoryLog>& Scanned() {
    m_catalogue.Scan();
    return m_catalogue.Logs();
  }
  // "file:samples@first-last " of each log, or "file!fault ".
  std::string Listed() {
    std::string text;
    for (const CHistoryLog& log : Scanned()) {
      text += FileName(log.path);
      text += log.fault.IsEmpty() ? ":" + std::to_string(log.samples) + "@" + std::to_string(log.first) +
                                        "-" + std::to_string(log.last)
                                  : "!" + log.fault.Std();
      text += " ";
    }
    return text;
  }
  std::string Rows(CRowRequest request = {}) { return Text(CRowReader(Scanned(), std::move(request))); }

  CCatalogue m_catalogue;
};

}  // namespace vastra
