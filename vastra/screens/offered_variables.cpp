#include "vastra/screens/offered_variables.h"

#include "vastra/screens/input_page.h"
#include "vastra/screens/smart_page.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_smart.h"

namespace vastra {

int InputVariables(const CInputPage* input, CStringArray& names) {
  CLogInput stage;
  if (input) input->GetConfiguration(*stage.GetOptions());
  CStringArray found;
  if (stage.GetOptions()->m_preprocess)
    found = stage.GetOptions()->m_preNewVars;
  else if (input && !stage.PreGetInitialVarNames(found))
    return 0;
  names = found;
  return 1;
}

int OfferedVariables(const CInputPage* input, const CSmartPage* smart, CStringArray& names) {
  CStringArray given;
  if (!InputVariables(input, given)) return 0;
  if (!smart) {
    names = given;
    return 1;
  }
  CLogSmart stage;
  smart->GetConfiguration(*stage.GetOptions());
  CStringArray found;
  if (!stage.PreGetVarNames(found, given)) return 0;
  names = found;
  return 1;
}

}  // namespace vastra
