// vastra check: lists the variables of each stage without contacting a PLC, or reports the stage that does
// not open.
#include <optional>

#include "host/cli/command.h"
#include "host/cli/console.h"
#include "host/cli/load.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/run_arguments.h"
#include "host/cli/session.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/key_path.h"
#include "host/common/replay_list.h"
#include "host/run/open_fault.h"
#include "vastra/equations/separator.h"
#include "vastra/stages/log_single_output.h"
#include "vastra/stages/log_single_summary.h"
#include "vastra/stages/log_smart.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/stages/plc_single_output.h"

namespace vastra {
namespace {

// The results of the check, stage by stage.
class CResults {
 public:
  explicit CResults(const CString& subject) : m_subject(subject) {}

  // key: of a stage or of an entry of its list. name: of the entry, by the user. known: the names that
  // variables can use.
  void List(const CString& key, const CString& name, const CStringArray& variables,
            const CStringArray& known) {
    m_lines.push_back(key.Std() + (name.IsEmpty() ? "" : " \"" + name.Std() + "\"") + ": " +
                      Counted(static_cast<std::size_t>(variables.GetSize()), "variable"));
    for (const CString& variable : variables)
      m_lines.push_back("  " + variable.Std() + (FindIn(known, variable) < 0 ? "  (unknown: always 0)" : ""));
  }
  void Refuse(const CString& key, const CString& why) {
    m_status = Fail(kFailed, m_subject, key + ": the stage does not open: " + WhyNotOpened(why));
  }
  EExit Print() const {
    const EExit printed = PrintLines(m_lines);
    return printed == kDone ? m_status : printed;
  }

 private:
  CString m_subject;
  std::vector<std::string> m_lines;
  EExit m_status = kDone;
};

// Opens a stage with config, because only opening it checks everything. The message of Close that nothing was
// logged is not shown.
template <class Stage, class Config>
int Opens(const Config& config, CStringArray names, CHostConsole& console) {
  Stage stage;
  *stage.GetOptions() = config;
  const int opened = stage.Open(names);
  console.ShowNothing();
  stage.Close();
  console.Show(EVerbosity::normal);
  return opened;
}

// names, and the names that equations assign.
CStringArray WithAssigned(CStringArray names, const CStringArray& equations) {
  for (const CString& equation : equations) {
    CString assigned;
    if (FindAssignedName(equation, assigned)) names.Add(assigned);
  }
  return names;
}

void CheckInput(const CInputConfig& config, const CStageNames& names, CResults& results) {
  results.List("input", "", names.input,
               config.m_preprocess ? WithAssigned(names.source, config.m_preEquations) : names.source);
}

// The stages of one configuration, in the order in which they open.
class CCheck {
 public:
  CCheck(const CConfiguration& configuration, const CStageNames& names, CHostConsole& console,
         CResults& results, bool triesFolders)
      : m_configuration(configuration),
        m_names(names),
        m_console(console),
        m_results(results),
        m_triesFolders(triesFolders) {}

  void Run() {
    CheckSmart();
    int index = 0;
    for (const COutputConfig* output : m_configuration.m_outputs.m_outputs)
      CheckLog<CLogSingleOutput>(KeyPath("outputs", index++), *output, m_names.afterSmart);
    index = 0;
    for (const CSummaryConfig* summary : m_configuration.m_summaries.m_summaries)
      CheckLog<CLogSingleSummary>(KeyPath("summaries", index++), *summary,
                                  WithAssigned(m_names.afterSmart, summary->m_summaryEquations));
    index = 0;
    for (const CPlcSingleConfig* single : m_configuration.m_plcWrite.m_nodes)
      CheckNode(KeyPath("plcWrite.nodes", index++), *single);
    CheckTrend();
  }

 private:
  void CheckSmart() {
    const CSmartConfig& config = m_configuration.m_smart;
    if (!UsesSmart(config)) return;
    if (!Opens<CLogSmart>(config, m_names.input, m_console)) return m_results.Refuse("smart", "");
    m_results.List("smart.inputVars", "", config.m_inputVars,
                   WithAssigned(m_names.input, config.m_equations));
    m_results.List("smart.outputVars", "", config.m_outputVars, config.m_outputVars);
  }

  template <class Stage, class Config>
  void CheckLog(const CString& key, const Config& config, const CStringArray& known) {
    Config tried = config;
    if (!m_triesFolders) tried.m_saveRp = tried.m_saveCsv = 0;
    const CString fault = FindNameFault(key, config);
    if (!fault.IsEmpty()) return m_results.Refuse(key, fault);
    if (!Opens<Stage>(tried, m_names.afterSmart, m_console))
      return m_results.Refuse(key, FindFolderFault(m_configuration, key));
    m_results.List(key, config.m_name, config.m_varNames, known);
  }

  void CheckNode(const CString& key, const CPlcSingleConfig& config) {
    CPlcSingleOutput node;
    *node.GetOptions() = config;
    CStringArray names = m_names.afterSmart;
    if (!m_configuration.m_plcWrite.m_disableWriting && !node.PreOpen(names))
      return m_results.Refuse(key, FindOpenFault(config, key));
    m_results.List(key, config.m_node.m_nodeName, config.m_node.m_varNames, names);
  }

  void CheckTrend() {
    CTrendConfig config = m_configuration.m_trend;
    config.m_baseVars = m_names.input;
    if (!Opens<CLogTrendings>(config, m_names.input, m_console)) return m_results.Refuse("trend", "");
    m_results.List("trend", "", TrendNames(m_names, m_configuration.m_trend),
                   WithAssigned(m_names.input, config.m_equations));
  }

  const CConfiguration& m_configuration;
  const CStageNames& m_names;
  CHostConsole& m_console;
  CResults& m_results;
  const bool m_triesFolders;
};

void CheckStages(const CConfiguration& configuration, const CStageNames& names, CHostConsole& console,
                 CResults& results, bool triesFolders) {
  if (!names.hasSource) {
    if (console.Messenger().SpeaksToPeople()) FindStageNames(configuration);  // the messages were not shown
    return results.Refuse("input", FindOpenFault(configuration, EStage::input));
  }
  CheckInput(configuration.m_input, names, results);
  CCheck(configuration, names, console, results, triesFolders).Run();
}

// A fault that the checks find has one line: the messages of the links are shown by CheckStages.
CStageNames FindNames(const CConfiguration& configuration, CHostConsole& console) {
  std::optional<CRunMessenger::CQuiet> quiet;
  if (console.Messenger().SpeaksToPeople()) quiet.emplace(console.Messenger());
  return FindStageNames(configuration);
}

EExit Check(const CFileArgument& file, const CDriverFolders& drivers, bool isPlain, bool triesFolders) {
  if (drivers.Search(!isPlain) != kDone) return kWrongUse;
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  if (!isPlain) WarnOfModules();
  CHostConsole console(EVerbosity::normal, isPlain);
  const CStringList replayed = configuration.m_input.m_inputFiles;
  std::vector<CString> badLogs;
  if (!isPlain) badLogs = LeaveOutBadLogs(configuration);
  const CStageNames names = FindNames(configuration, console), given = GivenNames(configuration, names);
  const std::vector<CFinding> findings = CheckConfiguration(
      configuration, given,
      {!isPlain, triesFolders ? EFolders::attempt : EFolders::leaveOut, isPlain, &replayed});
  PrintWarnings(file.typed, findings);
  PrintBadLogs(file.typed, badLogs, false);
  const auto faults = FindEquationFaults(configuration, isPlain ? names : given);
  if (PrintRefusals(file.typed, findings, faults) != kDone) return kRefused;
  const CLoopOptions options = {.replayWrites = isPlain};
  PrintReadOnly(file.typed, configuration, options);
  if (LeavesOutWriting(configuration, options)) configuration.m_plcWrite.m_disableWriting = 1;
  CResults results(file.typed);
  CheckStages(configuration, names, console, results, triesFolders);
  return results.Print();
}

}  // namespace

CAction DeclareCheck(CArguments& arguments) {
  const auto file = arguments.File("FILE", kConfigurationHelp);
  const CDriverFolders drivers(arguments);
  const auto plain = DeclarePlain(arguments);
  const auto noFolders = arguments.Flag("--no-folders", "Leave out the folders of the logs");
  return [=] { return Check(*file, drivers, *plain, !*noFolders); };
}

}  // namespace vastra
