// vastra check: the variables of each stage, worked out without contacting a PLC, or which stage refuses.
#include "host/cli/command.h"
#include "host/cli/console.h"
#include "host/cli/load.h"
#include "host/cli/output.h"
#include "host/cli/session.h"
#include "host/cli/terminal.h"
#include "host/common/key_path.h"
#include "vastra/stages/log_single_output.h"

namespace vastra {
namespace {

// What check finds, stage by stage.
class CFindings {
 public:
  explicit CFindings(const CString& subject) : m_subject(subject) {}

  // key is that of a stage, or of one entry of its list; name is what the user calls the entry.
  void List(const CString& key, const CString& name, const CStringArray& variables) {
    Head(key, name, variables.GetSize());
    for (const CString& variable : variables) m_text += "  " + variable.Std() + "\n";
  }
  // The same for variables that are taken by name from known ones.
  void ListTaken(const CString& key, const CString& name, const CStringArray& variables,
                 const CStringArray& known) {
    Head(key, name, variables.GetSize());
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
  void Head(const CString& key, const CString& name, int count) {
    m_text += key.Std() + (name.IsEmpty() ? "" : " \"" + name.Std() + "\"") + ": " + std::to_string(count) +
              (count == 1 ? " variable\n" : " variables\n");
  }

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
  findings.ListTaken(key, config.m_name, config.m_varNames, names);
}

void CheckStages(const CConfiguration& configuration, const CStageNames& names, CHostConsole& console,
                 CFindings& findings) {
  if (!names.hasSource) return findings.Refuse("input", ExplainSilence(configuration.m_input));
  findings.List("input", "", names.input);
  if (UsesSmart(configuration.m_smart)) {
    findings.List("smart, in", "", configuration.m_smart.m_inputVars);
    findings.List("smart, out", "", configuration.m_smart.m_outputVars);
  }
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    CheckOutput(KeyPath("outputs", index++), *output, names.behindSmart, console, findings);
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    findings.List(KeyPath("summaries", index++), summary->m_name, summary->m_varNames);
  index = 0;
  for (const CPlcSingleConfig* single : configuration.m_plcWrite.m_nodes)
    findings.ListTaken(KeyPath("plcWrite.nodes", index++), single->m_node.m_nodeName,
                       single->m_node.m_varNames, names.behindSmart);
  CStringArray trend = names.input;
  if (configuration.m_trend.m_calculateExtra) trend.Append(configuration.m_trend.m_extraVars);
  findings.List("trend", "", trend);
}

EExit Check(const CFileArgument& file) {
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  CHostConsole console(EVerbosity::normal);
  TellWarnings(file.typed, configuration);
  const CStageNames names = FindStageNames(configuration);
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
