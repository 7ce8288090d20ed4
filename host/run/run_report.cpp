#include "host/run/run_report.h"

#include "host/common/key_path.h"
#include "host/common/shown_text.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

constexpr std::chrono::hours kPause{1};
constexpr int kMostNodes = 8;  // that a line names

std::string EachPeriod(const CInputConfig& input, const CLoopOptions& options) {
  const auto configured = input.m_asFastAsPossible ? 0 : static_cast<std::int64_t>(input.m_scanPeriod);
  const std::int64_t period = options.period.count() < 0 ? configured : options.period.count();
  return period == 0 ? " as fast as possible" : " every " + std::to_string(period) + " ms";
}

// "Kiln (Simulator), Oven (Modbus) and 5 more".
class CNodeNames {
 public:
  void Add(const CPlcNodeConfig& node) {
    CDriverFactory& drivers = *CDriverFactory::Instance();
    const int driver = drivers.GetDriverIndex(node.m_driver.plcType);
    if (++m_count > kMostNodes) return;
    const std::string name = node.m_nodeName.Std(),
                      by = driver < 0 ? "" : drivers.GetDriverName(driver).Std();
    m_text +=
        (m_text.empty() ? "" : ", ") + (name.empty() || by.empty() ? name + by : name + " (" + by + ")");
  }
  std::string Text() const {
    return m_text + (m_count > kMostNodes ? " and " + std::to_string(m_count - kMostNodes) + " more" : "");
  }
  std::string Count() const { return Counted(static_cast<std::uint64_t>(m_count), "node"); }

 private:
  int m_count = 0;
  std::string m_text;
};

std::string InputText(const CInputConfig& input, const std::string& period) {
  if (input.m_simulating)
    return "input: replay of " + Counted(static_cast<std::uint64_t>(input.m_inputFiles.GetCount()), "log") +
           period;
  CNodeNames nodes;
  for (const CPlcNodeConfig* node : input.m_plcNodes) nodes.Add(*node);
  return "input: " + nodes.Count() + period + ": " + nodes.Text();
}

template <class CONFIG>
std::string LogText(const CString& key, const CONFIG& config, const std::string& period) {
  std::string text = key.Std() + (config.m_name.IsEmpty() ? "" : " \"" + config.m_name.Std() + "\"") + ": ";
  if (!config.m_saveRp && !config.m_saveCsv) return text + "saves nothing";
  const char* form = !config.m_saveCsv ? "binary" : config.m_saveRp ? "binary and CSV" : "CSV";
  return text + Counted(static_cast<std::uint64_t>(config.m_varNames.GetSize()), "variable") + " to " +
         config.m_directory.Std() + ", " + form + period;
}

std::string WrittenText(const CPlcMultiConfig& plcWrite, const std::string& period) {
  if (plcWrite.m_disableWriting) return "plcWrite: writing is disabled";
  CNodeNames nodes;
  for (const CPlcSingleConfig* node : plcWrite.m_nodes) nodes.Add(node->m_node);
  return "plcWrite: " + nodes.Count() + period + ": " + nodes.Text();
}

}  // namespace

CRunReport::CRunReport(const CConfiguration& configuration, const CLoopOptions& options, CSay say)
    : m_say(std::move(say)) {
  const std::string period = EachPeriod(configuration.m_input, options);
  m_start.push_back(InputText(configuration.m_input, period));
  const auto addLogs = [&](const auto& configs, const char* list, const std::string& often) {
    int index = 0;
    for (const auto* config : configs) {
      const CString key = KeyPath(list, index++);
      m_start.push_back(LogText(key, *config, often));
      if (config->m_saveRp) m_binary.insert(key);
    }
  };
  addLogs(configuration.m_outputs.m_outputs, "outputs", "," + period);
  addLogs(configuration.m_summaries.m_summaries, "summaries", "");
  if (!configuration.m_plcWrite.m_nodes.IsEmpty() && !LeavesOutWriting(configuration, options))
    m_start.push_back(WrittenText(configuration.m_plcWrite, period));
}

void CRunReport::Started(const CStringArray&) {
  for (const std::string& line : m_start) m_say(line);
  m_due = std::chrono::steady_clock::now() + kPause;
}

// A binary log and its text copy are one log.
void CRunReport::LogClosed(const CLogSource& source, const CSavedLog& log) {
  if (m_binary.count(source.key) && log.path.Right(4) == ".csv") return;
  m_say("saved " + log.path.Std() + ", " + vastra::Counted(log.samples, "sample"));
}

void CRunReport::Count(const CRunCounts& counts, std::chrono::steady_clock::time_point now) {
  if (now < m_due) return;
  m_due = now + kPause;
  m_say(vastra::Counted(counts.scans.read, "sample") + " read so far, " +
        vastra::Counted(counts.scans.failedReads, "failed read") + ", " + std::to_string(counts.scans.late) +
        " late, " + vastra::Counted(counts.scans.failedWrites.Sum(), "failed write") + "; " +
        vastra::Counted(counts.kept.onDisk, "row") + " on disk, " + std::to_string(counts.kept.inJournal) +
        " in a journal, " + std::to_string(counts.kept.lost) + " lost");
}

}  // namespace vastra
