#include "vastra/equations/equator.h"

#include <utility>

#include "vastra/equations/parser.h"
#include "vastra/equations/program.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

constexpr const char* kHiddenName = "the word before the first \"=\" is not the name that is assigned";

}  // namespace

CEquator::CEquator() : m_program(std::make_unique<CProgram>()) {}
CEquator::CEquator(CEquator&& other) noexcept = default;
CEquator& CEquator::operator=(CEquator&& other) noexcept = default;
CEquator::~CEquator() = default;

CEquationFault CEquator::Compile(const CStringArray& inputs, const CStringArray& equations) {
  CEquator next;
  next.m_inputVariables = inputs;
  next.BindTargets(equations);
  const CEquationFault fault = next.CompileAll(equations);
  if (fault.statement) return fault;
  next.Lower(*this);
  *this = std::move(next);
  return {};
}

// A statement without "=" gets no target; it does not compile.
void CEquator::BindTargets(const CStringArray& equations) {
  for (const CString& equation : equations) {
    CString name;
    int target = -1;
    if (FindAssignedName(equation, name)) {
      target = FindIn(m_newVariables, name);
      if (target < 0) target = m_newVariables.Add(name);
    }
    m_equationTarget.Add(static_cast<UINT>(target));
  }
}

// BindTargets finds the assigned name as the last word before "=", the parser by the grammar. If they differ,
// the statement is refused: other statements would never read what this one stores.
CEquationFault CEquator::CompileAll(const CStringArray& equations) {
  CStringArray names = m_inputVariables;
  names.Append(m_newVariables);
  CParser parser;
  m_code.SetSize(equations.GetSize());
  for (int i = 0; i < equations.GetSize(); ++i) {
    if (!parser.Parse(equations[i], m_code[i].GetHead(), &names))
      return {i + 1, parser.GetLastError(), parser.GetLastFault(), parser.IsUnknownName()};
    if (names[parser.GetTarget()] == GetTarget(i)) continue;
    return {i + 1, equations[i].Find('='), kHiddenName};
  }
  return {};
}

void CEquator::Lower(const CEquator& before) {
  *m_program = CProgram(m_inputVariables.GetSize(), m_newVariables.GetSize());
  for (int i = 0; i < m_code.GetSize(); ++i) m_program->Add(m_code[i], Target(i));
  m_program->Finish();
  m_undefined.reserve(static_cast<std::size_t>(m_code.GetSize()));
  for (int i = 0; i < m_newVariables.GetSize(); ++i) {
    const int place = FindIn(before.m_newVariables, m_newVariables[i]);
    if (place >= 0) m_program->SetValue(i, before.m_program->GetValue(place));
  }
}

void CEquator::Run(const CArray<float, float>& sample) {
  m_program->Run(sample.GetData(), sample.GetSize(), m_undefined);
}

void CEquator::RunByLines(const CArray<float, float>& sample, CArray<double, double>& results) {
  const int inputs = m_inputVariables.GetSize();
  CArray<float, float> values = sample;
  values.SetSize(inputs + m_newVariables.GetSize());  // fills a short sample with 0
  for (int i = 0; i < m_newVariables.GetSize(); ++i) values[inputs + i] = m_program->GetValue(i);

  m_undefined.clear();
  results.SetSize(m_code.GetSize());
  for (int i = 0; i < m_code.GetSize(); ++i) {
    if (!m_code[i].Execute(&values, results[i])) m_undefined.push_back(i);
    values[inputs + Target(i)] = static_cast<float>(results[i]);
    m_program->SetValue(Target(i), values[inputs + Target(i)]);
  }
}

float CEquator::GetNewValue(UINT variable) const {
  return variable < static_cast<UINT>(m_newVariables.GetSize())
             ? m_program->GetValue(static_cast<int>(variable))
             : 0.0f;
}

UINT CEquator::FindValue(const CString& name) const {
  int place = FindIn(m_inputVariables, name);
  if (place >= 0) return static_cast<UINT>(place);
  place = FindIn(m_newVariables, name);
  return place < 0 ? noValue : static_cast<UINT>(m_inputVariables.GetSize() + place);
}

}  // namespace vastra
