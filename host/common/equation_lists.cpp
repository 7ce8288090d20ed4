#include "host/common/equation_lists.h"

#include <span>

#include "host/common/key_path.h"
#include "vastra/equations/separator.h"
#include "vastra/stages/single_enable.h"

namespace vastra {
namespace {

CStringArray FlagNames(std::span<const char* const> flags) {
  CStringArray names;
  for (const char* flag : flags) names.Add(flag);
  return names;
}

template <class CONFIG>
CEquationList EnableList(const CString& object, const CONFIG& config, const CStringArray& inputs,
                         std::span<const char* const> flags) {
  return {
      object, config.m_name,   "enableText", "enableEquations", config.m_enableText, config.m_enableEquations,
      inputs, FlagNames(flags)};
}

// The stages that see the names after the smart stage.
void AddLogStages(const CConfiguration& configuration, const CStringArray& inputs,
                  std::vector<CEquationList>& lists) {
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    lists.push_back(EnableList(KeyPath("outputs", index++), *output, inputs, kLogFlags));
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    const CString object = KeyPath("summaries", index++);
    lists.push_back(EnableList(object, *summary, inputs, kSummaryFlags));
    if (summary->m_saveRp || summary->m_saveCsv)
      lists.push_back({object, summary->m_name, "summaryText", "summaryEquations", summary->m_summaryText,
                       summary->m_summaryEquations, inputs, summary->m_varNames});
  }
}

}  // namespace

CString CEquationList::Key() const {
  CStringArray statements, assigned;
  CArray<int, int> positions;
  CEquationSeparator().Separate(text, statements, assigned, positions);
  return object + "." + (!text.IsEmpty() && statements == equations ? textKey : listKey);
}

std::vector<CEquationList> EquationLists(const CConfiguration& configuration, const CStageNames& names) {
  const CInputConfig& input = configuration.m_input;
  const CSmartConfig& smart = configuration.m_smart;
  const CTrendConfig& trend = configuration.m_trend;
  std::vector<CEquationList> lists;
  if (names.hasSource && input.m_preprocess)
    lists.push_back({"input",
                     "",
                     "preEquationText",
                     "preEquations",
                     input.m_preEquationText,
                     input.m_preEquations,
                     names.source,
                     {}});
  if (!names.hasInput) return lists;
  if (UsesSmart(smart))
    lists.push_back({"smart", "", "equationText", "equations", smart.m_equationText, smart.m_equations,
                     names.input, smart.m_inputVars});
  AddLogStages(configuration, names.afterSmart, lists);
  if (trend.m_calculateExtra)
    lists.push_back({"trend", "", "equationText", "equations", trend.m_equationText, trend.m_equations,
                     names.input, trend.m_extraVars});
  return lists;
}

}  // namespace vastra
