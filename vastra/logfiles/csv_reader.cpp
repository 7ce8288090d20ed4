#include "vastra/logfiles/csv_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace vastra {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Removes the text up to the next comma from line and returns it.
std::string_view TakeField(std::string_view& line) {
  const std::string_view field = line.substr(0, line.find(','));
  line.remove_prefix(std::min(line.size(), field.size() + 1));
  return field;
}

// The time with the text of CTimeText::Put; any time if it is another text.
_timeb TimeOfText(const std::string& text) {
  std::tm local = {};
  char month[4] = {};
  unsigned milliseconds = 0;
  std::sscanf(text.c_str(), "%*3s %3s %d %d:%d:%d:%u %d", month, &local.tm_mday, &local.tm_hour,
              &local.tm_min, &local.tm_sec, &milliseconds, &local.tm_year);
  local.tm_mon = static_cast<int>(std::find(kMonths.begin(), kMonths.end(), month) - kMonths.begin());
  local.tm_year -= 1900;
  local.tm_isdst = -1;
  _timeb time;
  time.time = static_cast<std::int32_t>(std::mktime(&local));
  time.millitm = static_cast<std::uint16_t>(milliseconds);
  return time;
}

// Takes the lines one after the other.
class CLineReader {
 public:
  CLineReader(const CStringArray& names, CSampleStore& samples) : m_samples(samples) {
    m_text.AddNames(names);
    m_longest =
        m_text.View().size() + kMaxTimeText + static_cast<std::size_t>(names.GetSize()) * kMaxFloatText;
  }

  std::size_t Longest() const { return m_longest; }  // more bytes than any own line has

  // line ends with its line feed.
  void Take(std::string_view line) {
    if (m_isHead) m_isOwn = line == m_text.View();
    if (!m_isHead) ++m_lines, m_isOwn = m_isOwn && TakeSample(line);
    m_isHead = false;
  }
  std::uint64_t Lines() const { return m_lines; }

 private:
  bool TakeSample(std::string_view line) {
    std::string_view rest = line.substr(0, line.size() - 1);
    const _timeb time = TimeOfText(std::string(TakeField(rest)));
    m_values.clear();
    while (!rest.empty()) {
      const std::string_view field = TakeField(rest);
      float& value = m_values.emplace_back();
      std::from_chars(field.data(), field.data() + field.size(), value);
    }
    const auto count = static_cast<std::uint32_t>(m_values.size());
    const char* values = reinterpret_cast<const char*>(m_values.data());
    m_text.RemoveAll();
    m_text.AddSample({time, values, count});
    if (m_text.View() != line) return false;
    m_samples.Append(time, values, count);
    return true;
  }

  CSampleStore& m_samples;
  CCsvText m_text;
  std::size_t m_longest;
  std::vector<float> m_values;
  std::uint64_t m_lines = 0;
  bool m_isHead = true, m_isOwn = false;
};

}  // namespace

std::uint64_t ReadCsv(CFile& file, const CStringArray& names, CSampleStore& samples) {
  CLineReader reader(names, samples);
  std::string line;
  char bytes[16384];
  while (const std::size_t size = file.Read(bytes, sizeof bytes)) {
    std::string_view part(bytes, size);
    for (std::size_t end; (end = part.find('\n')) != std::string_view::npos; part.remove_prefix(end + 1)) {
      reader.Take(line.append(part.substr(0, end + 1)));
      line.clear();
    }
    if (line.size() <= reader.Longest()) line += part;  // a longer one is another text already
  }
  return reader.Lines();
}

}  // namespace vastra
