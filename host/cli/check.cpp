// vastra check: the variables of each stage, worked out without contacting a PLC, or which stage refuses.
#include "host/cli/command.h"
#include "host/cli/console.h"
#include "host/cli/load.h"
#include "host/cli/output.h"
#include "host/cli/session.h"
#include "host/cli/terminal.h"
#include "host/common/key_path.h"
#include "vastra/equations/separator.h"
#include "vastra/stages/log_single_output.h"

namespace vastra {
namespace {

// What check finds, stage by stage.
class CFindings {
 public:
  explicit CFindings(const CString& subject) : m_subject(subject) {}

  // key is that of a stage, or of one entry of its list; name is what the user calls the entry. The variables
  // are taken by name from known ones.
  void List(const CString& key, const CString& name, const CStringArray& variables,
            const CStringArray& known) {
    const int count = variables.GetSize();
    m_text += key.Std() + (name.IsEmpty() ? "" : " \"" + name.Std() + "\"") + ": " + std::to_string(count) +
              (count == 1 ? " variable\n" : " variables\n");
    for (const CString& variable : variables)
      m_text += "  " + variable.Std() + (FindIn(known, variable) < 0 ? "  (unknown: always 0)\n" : "\n");
  }
  void Refuse(const CString& key, const CString& why = CString()) {
    m_status =
        Fail(kFailed, m_subject, key + ": the stage refuses" + (why.IsEmpty() ? why : ", since " + why));
  }
  EExit Print() const {
    const EExit printed = PrintData(m_text);
    return printed == kDone ? m_status : printed;
  }

 private:
  CString m_subject;
  std::string m_text;
  EExit m_status = kDone;
};

// Opens the output for real: that alone tells whether it would. Closing it then tells only that nothing was
// logged.
void CheckOutput(const CString& key, const COutputConfig& config, CStringArray names, CHostConsole& console,
                 CFindings& findings) {
  CLogSingleOutput output;
  *output.GetOptions() = config;
  const int opened = output.Open(names);
  console.ShowNothing();
  output.Close();
  console.Show(EVerbosity::normal);
  if (!opened) return findings.Refuse(key);
  findings.List(key, config.m_name, config.m_varNames, names);
}

// What equations can give out on samples of names.
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

void CheckSmart(const CSmartConfig& config, const CStringArray& names, CFindings& findings) {
  if (!UsesSmart(config)) return;
  findings.List("smart.inputVars", "", config.m_inputVars, WithAssigned(names, config.m_equations));
  findings.List("smart.outputVars", "", config.m_outputVars, config.m_outputVars);
}

void CheckTrend(const CTrendConfig& config, const CStringArray& names, CFindings& findings) {
  CStringArray variables = names;
  if (config.m_calculateExtra) variables.Append(config.m_extraVars);
  findings.List("trend", "", variables, WithAssigned(names, config.m_equations));
}

void CheckStages(const CConfiguration& configuration, const CStageNames& names, CHostConsole& console,
                 CFindings& findings) {
  if (!names.hasSource) return findings.Refuse("input", ExplainSilence(configuration.m_input));
  CheckInput(configuration.m_input, names, findings);
  CheckSmart(configuration.m_smart, names.input, findings);
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    CheckOutput(KeyPath("outputs", index++), *output, names.behindSmart, console, findings);
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    findings.List(KeyPath("summaries", index++), summary->m_name, summary->m_varNames,
                  WithAssigned(names.behindSmart, summary->m_summaryEquations));
  index = 0;
  for (const CPlcSingleConfig* single : configuration.m_plcWrite.m_nodes)
    findings.List(KeyPath("plcWrite.nodes", index++), single->m_node.m_nodeName, single->m_node.m_varNames,
                  names.behindSmart);
  CheckTrend(configuration.m_trend, names.input, findings);
}

EExit Check(const CFileArgument& file) {
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  CHostConsole console(EVerbosity::normal);
  const CStageNames names = FindStageNames(configuration);
  TellWarnings(file.typed, configuration, names);
  if (TellEquationFaults(file.typed, configuration, names) != kDone) return kRefused;
  CFindings findings(file.typed);
  CheckStages(configuration, names, console, findings);
  return findings.Print();
}

}  // namespace

CAction DeclareCheck(CArguments& arguments) {
  const auto file = arguments.File("FILE", "The configuration, as JSON or as a configuration file");
  return [=] { return Check(*file); };
}

}  // namespace vastra
