#include "host/common/equation_check.h"

#include <span>

#include "host/common/key_path.h"
#include "vastra/equations/equator.h"
#include "vastra/equations/separator.h"
#include "vastra/stages/single_enable.h"

namespace vastra {
namespace {

// An equation list of a configuration and the text that it may come from.
struct CEquationList {
  CString object;    // the path of the object that has both
  CString userName;  // the name that the user gave this object, or empty
  const char *textKey, *listKey;
  const CString& text;
  const CStringArray& equations;
};

bool ComesFromText(const CEquationList& list) {
  CStringArray statements, assigned;
  CArray<int, int> positions;
  CEquationSeparator().Separate(list.text, statements, assigned, positions);
  return !list.text.IsEmpty() && statements == list.equations;
}

class CEquationCheck {
 public:
  // Compiles list with the variables names. If names is empty, the link uses the names of its result: own.
  void Add(const CEquationList& list, const CStringArray& names, const CStringArray& own) {
    const CEquationFault fault = CEquator().Compile(names.IsEmpty() ? own : names, list.equations);
    if (fault.statement == 0) return;
    CString place;
    place.Format(": statement %d, offset %d: ", fault.statement, fault.offset);
    const CString key = list.object + "." + (ComesFromText(list) ? list.textKey : list.listKey);
    const CString name = list.userName.IsEmpty() ? CString() : " (\"" + list.userName + "\")";
    m_findings.push_back(
        {key + name + place + fault.text, list.equations[fault.statement - 1], fault.offset});
  }
  std::vector<CEquationFinding> Take() { return std::move(m_findings); }

 private:
  std::vector<CEquationFinding> m_findings;
};

CStringArray Names(std::span<const char* const> flags) {
  CStringArray names;
  for (const char* flag : flags) names.Add(flag);
  return names;
}

// The stages that see the names after the smart stage.
void AddLogStages(const CConfiguration& configuration, const CStringArray& names, CEquationCheck& check) {
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    check.Add({KeyPath("outputs", index++), output->m_name, "enableText", "enableEquations",
               output->m_enableText, output->m_enableEquations},
              names, Names(kLogFlags));
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    const CString object = KeyPath("summaries", index++);
    check.Add({object, summary->m_name, "enableText", "enableEquations", summary->m_enableText,
               summary->m_enableEquations},
              names, Names(kSummaryFlags));
    if (summary->m_saveRp || summary->m_saveCsv)
      check.Add({object, summary->m_name, "summaryText", "summaryEquations", summary->m_summaryText,
                 summary->m_summaryEquations},
                names, summary->m_varNames);
  }
}

}  // namespace

std::vector<CEquationFinding> FindEquationFaults(const CConfiguration& configuration,
                                                 const CStageNames& names) {
  const CInputConfig& input = configuration.m_input;
  const CSmartConfig& smart = configuration.m_smart;
  const CTrendConfig& trend = configuration.m_trend;
  CEquationCheck check;
  if (names.hasSource && input.m_preprocess)
    check.Add({"input", "", "preEquationText", "preEquations", input.m_preEquationText, input.m_preEquations},
              names.source, {});
  if (!names.hasInput) return check.Take();
  if (UsesSmart(smart))
    check.Add({"smart", "", "equationText", "equations", smart.m_equationText, smart.m_equations},
              names.input, smart.m_inputVars);
  AddLogStages(configuration, names.afterSmart, check);
  if (trend.m_calculateExtra)
    check.Add({"trend", "", "equationText", "equations", trend.m_equationText, trend.m_equations},
              names.input, trend.m_extraVars);
  return check.Take();
}

}  // namespace vastra
