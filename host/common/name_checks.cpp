// The checks of the names of variables.
#include <algorithm>

#include "host/common/check_list.h"
#include "host/common/key_path.h"
#include "host/common/name_set.h"

namespace vastra {
namespace {

// What can give a name of a list.
struct CGivers {
  const CNameSet& stage;                 // the names of the samples that the stage receives
  CStringArray own = {};                 // those that the object computes
  const CStringArray* enable = nullptr;  // equations whose results nothing else sees
  bool isRefused = true;
};

class CNameCheck {
 public:
  explicit CNameCheck(CFindings& findings) : m_findings(findings) {}

  // key: of the list names.
  void Check(const CString& key, const CStringArray& names, const CGivers& givers) {
    const CNameSet own(givers.own);
    for (int i = 0; i < names.GetSize(); ++i)
      if (!givers.stage.Has(names[i]) && !own.Has(names[i])) Add(KeyPath(key, i), names[i], own, givers);
  }

 private:
  void Add(const CString& key, const CString& name, const CNameSet& own, const CGivers& givers) {
    if (givers.enable && FindIn(AssignedNames(*givers.enable), name) >= 0)
      return m_findings.Warn(key, "only the enable equations assign " + Quoted(name) +
                                      ", whose variables are not logged: it is always 0");
    const CString* near = m_nearest.Find(name, own);
    if (!near) near = m_nearest.Find(name, givers.stage);
    const CString text = NoVariable(name, near);
    givers.isRefused ? m_findings.Refuse(key, text) : m_findings.Warn(key, text);
  }

  CFindings& m_findings;
  CNearestName m_nearest;
};

void CheckLater(const CConfiguration& configuration, const CStageNames& names, CNameCheck& check) {
  const CNameSet input(names.input), stages(names.afterSmart);
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    check.Check(KeyPath("outputs", index++) + ".varNames", output->m_varNames,
                {.stage = stages, .enable = &output->m_enableEquations});
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    check.Check(KeyPath("summaries", index++) + ".varNames", summary->m_varNames,
                {stages, AssignedNames(summary->m_summaryEquations), &summary->m_enableEquations});
  index = 0;
  for (const CPlcSingleConfig* node : configuration.m_plcWrite.m_nodes)
    check.Check(KeyPath("plcWrite.nodes", index++) + ".varNames", node->m_node.m_varNames, {stages});
  const CSmartConfig& smart = configuration.m_smart;
  const CStringArray computed = AssignedNames(smart.m_equations);
  check.Check("smart.inputVars", smart.m_inputVars, {input, computed});
  CStringArray given = computed;
  given.Append(smart.m_outputVars);
  check.Check("smart.inputNames", smart.m_inputNames, {input, given});
  const CTrendConfig& trend = configuration.m_trend;
  if (trend.m_calculateExtra)
    check.Check("trend.extraVars", trend.m_extraVars,
                {.stage = input, .own = AssignedNames(trend.m_equations), .isRefused = false});
}

}  // namespace

// A name is a fault only if the names that the stage receives are known.
void CheckNames(const CCheckContext& context, CFindings& findings) {
  const CInputConfig& input = context.configuration.m_input;
  CNameCheck check(findings);
  const CNameSet source(context.names.source);
  if (context.names.hasSource && input.m_preprocess)
    check.Check("input.preNewVars", input.m_preNewVars, {source, AssignedNames(input.m_preEquations)});
  if (context.names.hasInput) CheckLater(context.configuration, context.names, check);
}

// A unit or a comment of a variable that nothing gives is shown nowhere.
void CheckNotes(const CCheckContext& context, CFindings& findings) {
  const CConfiguration& configuration = context.configuration;
  if (!context.names.hasInput || configuration.m_variables.empty()) return;
  CStringArray given = context.names.source;
  given.Append(context.names.afterSmart);
  given.Append(TrendNames(context.names, configuration.m_trend));
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    given.Append(AssignedNames(summary->m_summaryEquations));
  const CNameSet names(given);
  CNearestName nearest;
  for (const auto& [name, note] : configuration.m_variables)
    if (!names.Has(name)) findings.Note("variables", NoVariable(name, nearest.Find(name, names)));
}

// A flag that neither an equation nor the sample sets is always 0.
void CheckFlags(const CCheckContext& context, CFindings& findings) {
  if (!context.names.hasInput) return;
  const CNameSet names(context.names.afterSmart);
  for (const CLogTarget& target : context.targets) {
    const CStringArray assigned = AssignedNames(target.enableEquations);
    for (const char* flag : target.flags)
      if (!names.Has(flag) && FindIn(assigned, flag) < 0)
        findings.Warn(target.key + ".enableEquations",
                      CString("nothing assigns ") + flag + ": nothing is ever written");
  }
}

// The host sets the list; a stored list with other names comes from an earlier state of the configuration.
void CheckBaseVars(const CCheckContext& context, CFindings& findings) {
  const CStringArray& stored = context.configuration.m_trend.m_baseVars;
  if (context.names.hasInput && !stored.IsEmpty() && !(stored == context.names.input))
    findings.Note("trend.baseVars", "differ from the variables of the input, which are used");
}

void CheckUnusedEquations(const CCheckContext& context, CFindings& findings) {
  const CInputConfig& input = context.configuration.m_input;
  if (input.m_preprocess || (input.m_preEquationText.IsEmpty() && input.m_preEquations.IsEmpty())) return;
  findings.Note(input.m_preEquationText.IsEmpty() ? "input.preEquations" : "input.preEquationText",
                "is not used, since preprocess is 0");
}

}  // namespace vastra
