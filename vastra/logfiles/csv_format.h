// The text copy of a log (.csv), for other programs: a first line with the names and one line for each
// sample, with the text of printf("%f,") and ctime but computed with integers. docs/file-formats.md describes
// the lines. The file link and the hosts write it; only a keeper reads its own text logs back (csv_reader.h).
#pragma once

#include <memory>
#include <string_view>

#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/file.h"

namespace vastra {

// Longest text of one float: a sign, 39 digits, the point, six decimals and the comma.
constexpr std::size_t kMaxFloatText = 48;
// Longest time text of a sample.
constexpr std::size_t kMaxTimeText = 64;

// Puts the text of printf("%f,", value) at to and returns the place after it.
VASTRA_API char* PutFloat(char* to, float value);

// The time text of samples, such as "Sun Sep 09 01:46:40:250  2001,": local time with the milliseconds after
// the seconds and two blanks before the year. The text is computed once for each quarter of an hour; for the
// samples within it only minutes and seconds are replaced.
class VASTRA_API CTimeText {
 public:
  // Puts the text of time, with its comma, at to and returns the place after it.
  char* Put(char* to, const _timeb& time);

 private:
  void Compose(std::int64_t seconds);
  void SetQuarter(std::int64_t quarter);

  static constexpr std::int64_t kNoQuarter = INT64_MIN;
  static constexpr std::size_t kClockSize = 19;  // "Sun Sep 09 01:46:40"

  std::int64_t m_quarter = kNoQuarter;  // quarters of an hour since the beginning of 1970
  bool m_regular = false;  // within the quarter the local clock has no jump and stays in one hour
  unsigned m_start = 0;    // seconds from the start of the local hour to the start of the quarter
  char m_clock[32] = {};
  char m_year[16] = {};  // "  2001,"
  std::size_t m_yearSize = 0;
};

// The lines of a text copy, added one by one. Add throws std::bad_alloc and leaves the text unchanged then.
class VASTRA_API CCsvText {
 public:
  void AddNames(const CStringArray& names);
  void AddSample(const CSampleRecord& sample);

  std::string_view View() const { return {m_bytes.get(), m_size}; }
  void RemoveAll() { m_size = 0; }  // keeps the memory
  void FreeMemory();

 private:
  char* Room(std::size_t size, std::size_t bytes);

  std::unique_ptr<char[]> m_bytes;
  std::size_t m_size = 0, m_capacity = 0;
  CTimeText m_times;
};

// Writes the whole text copy of a log to file. text is the buffer and is empty afterwards. Throws
// CFileException.
VASTRA_API void WriteCsv(CFile& file, const CStringArray& names, CSampleSpans samples, CCsvText& text);
VASTRA_API void WriteCsv(CFile& file, const CStringArray& names, const CSampleStore& samples, CCsvText& text);

}  // namespace vastra
