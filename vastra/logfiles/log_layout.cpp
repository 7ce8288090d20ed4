#include "vastra/logfiles/log_layout.h"

#include <climits>

#include "vastra/logfiles/whole_log.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

// More changes of the number of values than a log has whose bytes mean something.
constexpr std::size_t kMostRuns = 1'000'000;

class CLayoutParser {
 public:
  CLayoutParser(CProbedFile& file, CLogLayout& layout, CString& fault)
      : m_file(file), m_layout(layout), m_fault(fault) {}

  int ReadHead();
  bool Assume();
  int CountRecords();

 private:
  bool CountRecord(std::uint32_t index, std::uint32_t values);
  int Fail(const CString& fault) {
    m_fault = fault;
    return 0;
  }
  int FailCut(const CString& field);
  static std::uint64_t TimesSize(std::uint32_t count) { return count * std::uint64_t{sizeof(_timeb)}; }

  CProbedFile& m_file;
  CLogLayout& m_layout;
  CString& m_fault;
};

int CLayoutParser::ReadHead() {
  std::uint32_t magic = 0;
  if (m_file.Get(magic) && magic != CLogStart::kMagic)
    return Fail("is not a log: its first bytes are those of another format");
  m_file.MoveTo(0);
  if (!m_file.Get(m_layout.start)) return FailCut("the start");
  if (!m_file.SkipText()) return FailCut("the reserved text");
  if (!m_file.GetCount(m_layout.nameCount)) return FailCut("the number of names");
  m_layout.names = m_file.Place();
  for (std::uint32_t i = 0; i < m_layout.nameCount; ++i)
    if (!m_file.SkipText()) return FailCut("name " + CString(std::to_string(i + 1)));
  if (m_layout.nameCount > INT_MAX) return Fail("has too many names");
  m_layout.namesSize = m_file.Place() - m_layout.names;
  return m_file.Get(m_layout.samples) ? 1 : FailCut("the number of samples");
}

// Whether the file ends where it must if all records are as long as the first one.
bool CLayoutParser::Assume() {
  const std::uint64_t begin = m_file.Place();
  std::uint32_t values = m_layout.nameCount, times = 0;
  const bool isThere = m_layout.samples == 0 || m_file.GetCount(values);
  m_file.MoveTo(begin);
  const CRecordRun run = {0, values, begin};
  if (isThere && m_layout.samples <= m_file.Left() / run.RecordSize() &&
      m_file.Skip(m_layout.samples * std::uint64_t{run.RecordSize()}) && m_file.GetCount(times) &&
      times == m_layout.samples && m_file.Left() == TimesSize(times) + sizeof(CLogTrailer)) {
    m_layout.times = m_file.Place();
    if (m_layout.samples) m_layout.runs.push_back(run);
    return m_layout.isAssumed = true;
  }
  m_file.MoveTo(begin);
  return false;
}

// Adds the record at the place of the file to the runs.
bool CLayoutParser::CountRecord(std::uint32_t index, std::uint32_t values) {
  const bool isSame = !m_layout.runs.empty() && m_layout.runs.back().values == values;
  if (!isSame && m_layout.runs.size() == kMostRuns) return false;
  if (!isSame) m_layout.runs.push_back({index, values, m_file.Place()});
  return true;
}

int CLayoutParser::CountRecords() {
  std::uint32_t values = 0, times = 0;
  for (std::uint32_t i = 0; i < m_layout.samples; ++i) {
    const std::uint64_t begin = m_file.Place();
    const bool isWhole =
        m_file.GetCount(values) && values <= INT_MAX && m_file.Skip(values * std::uint64_t{sizeof(float)});
    const std::uint64_t end = m_file.Place();
    m_file.MoveTo(begin);
    if (!isWhole) return FailCut("the values of sample " + CString(std::to_string(i + 1)));
    if (!CountRecord(i, values)) return Fail("changes the number of values more than a million times");
    m_file.MoveTo(end);
  }
  const std::uint64_t end = m_file.Place();
  if (!m_file.GetCount(times)) return FailCut("the number of times");
  if (times < m_layout.samples) {
    CString fault;
    fault.Format("has only %u times for its %u samples (byte %zu)", times, m_layout.samples,
                 static_cast<std::size_t>(end));
    return Fail(fault);
  }
  m_layout.times = m_file.Place();
  if (!m_file.Skip(TimesSize(times))) return FailCut("the times");
  return m_file.Skip(sizeof(CLogTrailer)) ? 1 : FailCut("the trailer");
}

int CLayoutParser::FailCut(const CString& field) {
  if (m_file.Error()) return Fail(m_file.Fault());
  const auto number = [](std::uint64_t place) { return CString(std::to_string(place)); };
  return Fail("ends at byte " + number(m_file.Size()) + " inside " + field + " (from byte " +
              number(m_file.Place()) + " on)");
}

}  // namespace

int ReadLogLayout(CProbedFile& file, ERecords records, CLogLayout& layout, CString& fault) {
  layout = {};
  file.MoveTo(0);
  CLayoutParser parser(file, layout, fault);
  if (!parser.ReadHead()) return 0;
  if (records == ERecords::assumed && parser.Assume()) return 1;
  fault = FindExcess(file.Path(), file.Size());
  file.MoveTo(layout.names + layout.namesSize + sizeof layout.samples);
  return fault.IsEmpty() && parser.CountRecords();
}

}  // namespace vastra
