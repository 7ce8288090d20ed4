// vastra check: lists the variables of each stage without contacting a PLC, or reports the stage that does
// not open.
#include "host/cli/command.h"
#include "host/cli/console.h"
#include "host/cli/load.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/run_arguments.h"
#include "host/cli/session.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/key_path.h"
#include "host/common/log_checks.h"
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
class CFindings {
 public:
  explicit CFindings(const CString& subject) : m_subject(subject) {}

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

void CheckInput(const CInputConfig& config, const CStageNames& names, CFindings& findings) {
  findings.List("input", "", names.input,
                config.m_preprocess ? WithAssigned(names.source, config.m_preEquations) : names.source);
}

// The stages of one configuration, in the order in which they open.
class CCheck {
 public:
  CCheck(const CConfiguration& configuration, const CStageNames& names, CHostConsole& console,
         CFindings& findings)
      : m_configuration(configuration), m_names(names), m_console(console), m_findings(findings) {}

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
    if (!Opens<CLogSmart>(config, m_names.input, m_console)) return m_findings.Refuse("smart", "");
    m_findings.List("smart.inputVars", "", config.m_inputVars,
                    WithAssigned(m_names.input, config.m_equations));
    m_findings.List("smart.outputVars", "", config.m_outputVars, config.m_outputVars);
  }

  template <class Stage, class Config>
  void CheckLog(const CString& key, const Config& config, const CStringArray& known) {
    if (!Opens<Stage>(config, m_names.afterSmart, m_console))
      return m_findings.Refuse(key, FindFolderFault(m_configuration, key));
    m_findings.List(key, config.m_name, config.m_varNames, known);
  }

  void CheckNode(const CString& key, const CPlcSingleConfig& config) {
    CPlcSingleOutput node;
    *node.GetOptions() = config;
    CStringArray names = m_names.afterSmart;
    if (!m_configuration.m_plcWrite.m_disableWriting && !node.PreOpen(names))
      return m_findings.Refuse(key, FindOpenFault(config, key));
    m_findings.List(key, config.m_node.m_nodeName, config.m_node.m_varNames, names);
  }

  void CheckTrend() {
    CTrendConfig config = m_configuration.m_trend;
    config.m_baseVars = m_names.input;
    if (!Opens<CLogTrendings>(config, m_names.input, m_console)) return m_findings.Refuse("trend", "");
    m_findings.List("trend", "", TrendNames(m_names, m_configuration.m_trend),
                    WithAssigned(m_names.input, config.m_equations));
  }

  const CConfiguration& m_configuration;
  const CStageNames& m_names;
  CHostConsole& m_console;
  CFindings& m_findings;
};

void CheckStages(const CConfiguration& configuration, const CStageNames& names, CHostConsole& console,
                 CFindings& findings) {
  if (!names.hasSource) return findings.Refuse("input", FindOpenFault(configuration, EStage::input));
  CheckInput(configuration.m_input, names, findings);
  CCheck(configuration, names, console, findings).Run();
}

EExit Check(const CFileArgument& file, const CDriverFolders& drivers, bool isPlain) {
  if (drivers.Search(!isPlain) != kDone) return kWrongUse;
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  if (!isPlain) WarnOfModules();
  CHostConsole console(EVerbosity::normal, isPlain);
  std::vector<CString> refusals, badLogs;
  if (!isPlain) {
    refusals = FindLogRefusals(configuration, true);  // of the whole list of a replay
    badLogs = LeaveOutBadLogs(configuration);
  }
  const CStageNames names = FindStageNames(configuration);
  PrintWarnings(file.typed, FindWarnings(configuration, names, !isPlain));
  PrintBadLogs(file.typed, badLogs, false);
  if (PrintRefusals(file.typed, refusals) != kDone) return kRefused;
  if (PrintEquationFaults(file.typed, FindEquationFaults(configuration, names)) != kDone) return kRefused;
  PrintReadOnly(file.typed, configuration, {.replayWrites = isPlain});
  CFindings findings(file.typed);
  CheckStages(configuration, names, console, findings);
  return findings.Print();
}

}  // namespace

CAction DeclareCheck(CArguments& arguments) {
  const auto file = arguments.File("FILE", kConfigurationHelp);
  const CDriverFolders drivers(arguments);
  const auto plain = DeclarePlain(arguments);
  return [=] { return Check(*file, drivers, *plain); };
}

}  // namespace vastra
