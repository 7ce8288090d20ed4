#include "vastra/equations/execution.h"

namespace vastra {

int CExecutionStruct::Execute(CArray<float, float>* values, double& result) const {
  if (!values) return 0;
  const auto size = static_cast<unsigned>(values->GetSize());
  const auto variable = [&](int index) {
    return static_cast<unsigned>(index) < size ? (*values)[index] : 0.0f;
  };
  CStack<double> stack;
  return RunLines(*m_pLines, variable, stack, result);
}

}  // namespace vastra
