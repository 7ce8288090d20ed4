#include "host/common/equation_check.h"

#include <span>

#include "host/common/key_path.h"
#include "vastra/equations/equator.h"
#include "vastra/stages/single_enable.h"

namespace vastra {
namespace {

class CEquationCheck {
 public:
  // A list of equations against the names that it sees. path is that of the list. Where there are no names,
  // the link takes those of what stands behind it: own.
  void Add(const CString& path, const CStringArray& equations, const CStringArray& names,
           const CStringArray& own) {
    const CEquationFault fault = CEquator().Compile(names.IsEmpty() ? own : names, equations);
    if (fault.statement == 0) return;
    CString place;
    place.Format(": statement %d, offset %d: ", fault.statement, fault.offset);
    m_faults.push_back(path + place + fault.text);
  }
  std::vector<CString> Take() { return std::move(m_faults); }

 private:
  std::vector<CString> m_faults;
};

CStringArray Names(std::span<const char* const> flags) {
  CStringArray names;
  for (const char* flag : flags) names.Add(flag);
  return names;
}

// The stages that see the names behind the smart stage.
void AddLogStages(const CConfiguration& configuration, const CStringArray& names, CEquationCheck& check) {
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    check.Add(KeyPath("outputs", index++) + ".enableEquations", output->m_enableEquations, names,
              Names(kLogFlags));
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    check.Add(KeyPath("summaries", index) + ".enableEquations", summary->m_enableEquations, names,
              Names(kSummaryFlags));
    if (summary->m_saveRp || summary->m_saveCsv)
      check.Add(KeyPath("summaries", index) + ".summaryEquations", summary->m_summaryEquations, names,
                summary->m_varNames);
    ++index;
  }
}

}  // namespace

std::vector<CString> FindEquationFaults(const CConfiguration& configuration, const CStageNames& names) {
  CEquationCheck check;
  if (names.hasSource && configuration.m_input.m_preprocess)
    check.Add("input.preEquations", configuration.m_input.m_preEquations, names.source, {});
  if (!names.hasInput) return check.Take();
  if (UsesSmart(configuration.m_smart))
    check.Add("smart.equations", configuration.m_smart.m_equations, names.input,
              configuration.m_smart.m_inputVars);
  AddLogStages(configuration, names.behindSmart, check);
  if (configuration.m_trend.m_calculateExtra)
    check.Add("trend.equations", configuration.m_trend.m_equations, names.input,
              configuration.m_trend.m_extraVars);
  return check.Take();
}

}  // namespace vastra
