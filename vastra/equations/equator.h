// CEquator: a list of statements bound to the names of a sample, with the variables that they assign. It is
// what an equator link runs on each sample, and what checks and tools use without a chain.
#pragma once

#include <memory>
#include <vector>

#include "vastra/equations/execution.h"

namespace vastra {

class CProgram;

// What is wrong with a list of statements.
struct CEquationFault {
  int statement = 0;  // from 1; 0: nothing is wrong
  int offset = 0;     // of the bad token in the statement, from 0
  const char* text = "";
};

// One thread at a time.
class VASTRA_API CEquator {
 public:
  static constexpr UINT noValue = 0xFFFFFFFF;

  CEquator();
  CEquator(CEquator&& other) noexcept;
  CEquator& operator=(CEquator&& other) noexcept;
  ~CEquator();

  // Binds equations, one statement each without its ";", to samples with a value for each of inputs, and
  // compiles them. A right side may read any input and whatever any statement of the list assigns; where a
  // name is both, it is the input. On a fault everything is as it was before, else the new list is in place,
  // and a variable that the list before assigned too keeps its value.
  CEquationFault Compile(const CStringArray& inputs, const CStringArray& equations);

  // Runs all statements on one sample: a value for each input. A missing one reads 0.0, what is too much is
  // not looked at. No allocation.
  void Run(const CArray<float, float>& sample);

  // The same on the plain machine, line by line; results gets the double of each statement before it is
  // rounded to float, kUndefinedResult where it is undefined.
  void RunByLines(const CArray<float, float>& sample, CArray<double, double>& results);

  // Which statements, from 0, had no defined result in the last run, in order.
  const std::vector<int>& GetUndefined() const { return m_undefined; }

  // The value that stands for an index behind the last run, which was on sample: of an input, or of an
  // assigned variable; the inputs come first. 0.0 for any other index.
  float GetValue(const CArray<float, float>& sample, UINT index) const;
  // The index of a name, or noValue.
  UINT FindValue(const CString& name) const;

  // What the statements assign, each name once, in order of its first statement. They start at 0.0.
  const CStringArray& GetNewVariables() const { return m_newVariables; }

  int GetCount() const { return m_code.GetSize(); }
  // Of a statement, from 0: its compiled form and the name that it assigns.
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
  CArray<UINT, UINT> m_equationTarget;  // for each statement the index in m_newVariables of what it assigns
  CArray<CExecutionStruct> m_code;
  std::unique_ptr<CProgram> m_program;  // holds the values of the new variables
  std::vector<int> m_undefined;
};

inline float CEquator::GetValue(const CArray<float, float>& sample, UINT index) const {
  const auto inputs = static_cast<UINT>(m_inputVariables.GetSize());
  if (index >= inputs) return GetNewValue(index - inputs);
  return index < static_cast<UINT>(sample.GetSize()) ? sample[static_cast<int>(index)] : 0.0f;
}

}  // namespace vastra
