// CEquator: a list of statements, bound to the names of a sample, and the variables that they assign. An
// equator link runs it on each sample; checks and tools use it without a chain.
#pragma once

#include <memory>
#include <vector>

#include "vastra/equations/execution.h"

namespace vastra {

class CProgram;

// The fault of a list of statements.
struct CEquationFault {
  int statement = 0;  // from 1; 0: no fault
  int offset = 0;     // of the bad token in the statement, from 0
  const char* text = "";
  bool isUnknownName = false;  // the token is a name that is neither known nor assigned
};

// One thread at a time.
class VASTRA_API CEquator {
 public:
  static constexpr UINT noValue = 0xFFFFFFFF;

  CEquator();
  CEquator(CEquator&& other) noexcept;
  CEquator& operator=(CEquator&& other) noexcept;
  ~CEquator();

  // Compiles equations, one statement each without its ";", for samples with a value for each of inputs. A
  // right side can read all inputs and all assigned variables; a name that is both is the input. On a fault
  // nothing changes. Otherwise the new list replaces the old one, and a variable that both assign keeps its
  // value.
  CEquationFault Compile(const CStringArray& inputs, const CStringArray& equations);

  // Runs all statements on one sample, which has a value for each input. Missing values are 0.0, extra values
  // are ignored. Does not allocate memory.
  void Run(const CArray<float, float>& sample);

  // The same with the reference interpreter, line by line. Sets results to the double of each statement
  // before it is rounded to float, or to kUndefinedResult.
  void RunByLines(const CArray<float, float>& sample, CArray<double, double>& results);

  // The statements, from 0 and in order, whose result was undefined in the last run.
  const std::vector<int>& GetUndefined() const { return m_undefined; }

  // The value of an input or, after the inputs, of an assigned variable after the last run, which was on
  // sample. 0.0 for any other index.
  float GetValue(const CArray<float, float>& sample, UINT index) const;
  // The index of a name for GetValue, or noValue.
  UINT FindValue(const CString& name) const;

  // The assigned variables, each name once, in the order of their first statements. They start at 0.0.
  const CStringArray& GetNewVariables() const { return m_newVariables; }

  int GetCount() const { return m_code.GetSize(); }
  // The compiled form of a statement, from 0, and the name that it assigns.
  const CExecutionStruct& GetCode(int statement) const { return m_code[statement]; }
  const CString& GetTarget(int statement) const { return m_newVariables[Target(statement)]; }

 private:
  float GetNewValue(UINT variable) const;  // 0.0 for an index that no variable has
  int Target(int statement) const { return static_cast<int>(m_equationTarget[statement]); }
  void BindTargets(const CStringArray& equations);
  CEquationFault CompileAll(const CStringArray& equations);
  void Lower(const CEquator& before);

  CStringArray m_inputVariables;
  CStringArray m_newVariables;
  CArray<UINT, UINT> m_equationTarget;  // for each statement the index in m_newVariables of its name
  CArray<CExecutionStruct> m_code;
  std::unique_ptr<CProgram> m_program;  // has the values of the new variables
  std::vector<int> m_undefined;
};

inline float CEquator::GetValue(const CArray<float, float>& sample, UINT index) const {
  const auto inputs = static_cast<UINT>(m_inputVariables.GetSize());
  if (index >= inputs) return GetNewValue(index - inputs);
  return index < static_cast<UINT>(sample.GetSize()) ? sample[static_cast<int>(index)] : 0.0f;
}

}  // namespace vastra
