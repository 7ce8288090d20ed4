#include "host/common/equation_check.h"

#include "host/common/key_path.h"
#include "vastra/equations/equator.h"

namespace vastra {
namespace {

class CEquationCheck {
 public:
  // A list of equations against the names that it sees. path is that of the list.
  void Add(const CString& path, const CStringArray& equations, const CStringArray& names) {
    const CEquationFault fault = CEquator().Compile(names, equations);
    if (fault.statement == 0) return;
    CString place;
    place.Format(": statement %d, offset %d: ", fault.statement, fault.offset);
    m_faults.push_back(path + place + fault.text);
  }
  std::vector<CString> Take() { return std::move(m_faults); }

 private:
  std::vector<CString> m_faults;
};

// The stages that see the names behind the smart stage.
void AddLogStages(const CConfiguration& configuration, const CStringArray& names, CEquationCheck& check) {
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    check.Add(KeyPath("outputs", index++) + ".enableEquations", output->m_enableEquations, names);
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    check.Add(KeyPath("summaries", index) + ".enableEquations", summary->m_enableEquations, names);
    if (summary->m_saveRp || summary->m_saveCsv)
      check.Add(KeyPath("summaries", index) + ".summaryEquations", summary->m_summaryEquations, names);
    ++index;
  }
}

}  // namespace

std::vector<CString> FindEquationFaults(const CConfiguration& configuration, const CStageNames& names) {
  CEquationCheck check;
  if (names.hasSource && configuration.m_input.m_preprocess)
    check.Add("input.preEquations", configuration.m_input.m_preEquations, names.source);
  if (!names.hasInput) return check.Take();
  if (UsesSmart(configuration.m_smart))
    check.Add("smart.equations", configuration.m_smart.m_equations, names.input);
  AddLogStages(configuration, names.behindSmart, check);
  if (configuration.m_trend.m_calculateExtra)
    check.Add("trend.equations", configuration.m_trend.m_equations, names.input);
  return check.Take();
}

}  // namespace vastra
