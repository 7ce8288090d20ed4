// vastra inspect: variables, sample count and times of logs and journals, lists of the logs in folders, and
// gaps.
#include <algorithm>
#include <optional>

#include "host/cli/command.h"
#include "host/cli/history/history_paths.h"
#include "host/cli/history/log_list_view.h"
#include "host/cli/history/moment_parser.h"
#include "host/cli/json_output.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/read_log.h"
#include "host/cli/terminal/terminal.h"
#include "host/cli/time_text.h"

namespace vastra {
namespace {

// The contents of one log, or why it cannot be read.
struct CLogFacts {
  CString file;  // as it was typed
  CString fault;
  CStringArray names;
  std::size_t samples = 0;
  _timeb first, last;  // if there are samples
};

CLogFacts Look(const CFileArgument& file) {
  CLogFacts facts{file.typed, {}, {}, 0, {}, {}};
  CSampleStore samples;
  facts.fault = ReadLog(file, facts.names, samples);
  facts.samples = samples.GetCount();
  if (samples.IsEmpty()) return facts;
  facts.first = samples.GetHead().m_time;
  facts.last = samples.GetLastTime();
  return facts;
}

CJson FactsJson(const CLogFacts& facts) {
  CJson log = {{"file", ToJson(facts.file)}};
  if (!facts.fault.IsEmpty()) {
    log["error"] = ToJson(facts.fault);
    return log;
  }
  log["names"] = CJson::array();
  for (const CString& name : facts.names) log["names"].push_back(ToJson(name));
  log["samples"] = facts.samples;
  log["first"] = facts.samples ? ToJson(facts.first) : CJson();
  log["last"] = facts.samples ? ToJson(facts.last) : CJson();
  return log;
}

std::vector<std::string> ToLines(const CLogFacts& facts) {
  const auto variables = static_cast<std::size_t>(facts.names.GetSize());
  std::vector<std::string> lines = {
      facts.file.Std(), "  " + Counted(facts.samples, "sample") + " of " + Counted(variables, "variable")};
  if (facts.samples) {
    lines.push_back("  from  " + LocalTimeText(facts.first));
    lines.push_back("  to    " + LocalTimeText(facts.last));
  }
  for (const CString& name : facts.names) lines.push_back("  - " + name.Std());
  return lines;
}

struct CInspectOrder {
  std::vector<CFileArgument> paths;
  bool isRecursive = false;
  std::int64_t gaps = 0;  // the shortest to list, in milliseconds; 0: none
  bool asJson = false;
};

// What is shown of all paths: JSON is collected, text is printed path by path.
class CInspection {
 public:
  explicit CInspection(const CInspectOrder& order) : m_order(order) {}

  EExit Run() {
    const auto isFolder = [](const CFileArgument& path) { return IsFolder(path.path); };
    const bool hasFolder = std::any_of(m_order.paths.begin(), m_order.paths.end(), isFolder);
    if (hasFolder || m_order.gaps) m_paths.emplace(m_order.paths, m_order.isRecursive);
    for (std::size_t i = 0; i < m_order.paths.size(); ++i)
      if (!(isFolder(m_order.paths[i]) ? ShowFolder(i) : ShowFile(m_order.paths[i]))) return kFailed;
    return ShowEnd() ? m_status : kFailed;
  }

 private:
  // These return whether the output could be written.
  bool ShowFile(const CFileArgument& file) {
    const CLogFacts facts = Look(file);
    if (!facts.fault.IsEmpty()) m_status = kFailed;
    if (m_order.asJson) return m_list.push_back(FactsJson(facts)), true;
    if (facts.fault.IsEmpty()) return PrintLines(ToLines(facts)) == kDone;
    return Fail(kFailed, facts.file, facts.fault), true;
  }

  bool ShowFolder(std::size_t argument) {
    std::vector<std::string> lines;
    std::size_t found = 0;
    for (const CHistoryLog& log : m_paths->Logs()) {
      if (m_paths->ArgumentOf(log.path) != argument) continue;
      ++found;
      if (!log.fault.IsEmpty()) m_status = kFailed;
      const CString shown = m_paths->Shown(log.path);
      if (m_order.asJson)
        m_list.push_back(LogJson(log, shown));
      else
        lines.push_back(LogLine(log, shown));
    }
    if (!found) m_status = Fail(kFailed, m_order.paths[argument].typed, "has no logs");
    return lines.empty() || PrintLines(lines) == kDone;
  }

  bool ShowEnd() {
    std::vector<CGap> gaps;
    if (m_order.gaps) gaps = FindGaps(m_paths->Logs(), RangeOf(m_paths->Logs()), m_order.gaps);
    if (!m_order.asJson) return !m_order.gaps || PrintLines(GapLines(gaps, m_order.gaps)) == kDone;
    if (!m_order.gaps) return PrintJson(m_list) == kDone;
    return PrintJson({{"logs", m_list}, {"gaps", GapsJson(gaps)}}) == kDone;
  }

  const CInspectOrder& m_order;
  std::optional<CHistoryPaths> m_paths;
  CJson m_list = CJson::array();
  EExit m_status = kDone;
};

}  // namespace

CAction DeclareInspect(CArguments& arguments) {
  const auto paths = arguments.Files("PATH", "Binary logs, .rph or .rpd, journals, or folders of them");
  const auto isRecursive = arguments.Flag("--recursive", "Include the folders below a folder");
  const auto gaps = arguments.OptionalText(
      "--gaps", "S", "List the times without rows that are longer: seconds, or a number with s, m, h, d, w");
  const auto asJson = arguments.Flag("--json", "Print one array of objects");
  return [=] {
    CInspectOrder order = {*paths, *isRecursive, 0, *asJson};
    const std::optional<std::int64_t> shortest = ParseDuration(gaps->value_or("1s"));
    if (!shortest)
      return Fail(kWrongUse, "inspect",
                  "--gaps: " + **gaps + " is not " + kDurationForms + " (see vastra inspect --help)");
    if (*gaps) order.gaps = *shortest;
    return CInspection(order).Run();
  };
}

}  // namespace vastra
