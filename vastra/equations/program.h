// CProgram: a list of statements in the form that runs for every sample, and the variables that they assign.
// Each statement is translated once, when a link opens. One that cannot be translated runs in the reference
// interpreter. Both forms have bit-identical results, except for the bits of a NaN.
#pragma once

#include <vector>

#include "vastra/equations/execution.h"
#include "vastra/equations/lowering.h"

namespace vastra {

// One thread at a time. In compiled code the variables are the inputs, then the assigned variables.
class VASTRA_API CProgram {
 public:
  explicit CProgram(int inputs = 0, int assigned = 0) : m_inputs(inputs), m_places(inputs + assigned) {}

  // Adds a statement; its result is stored in the assigned variable target. The lines must not change or move
  // while the program exists.
  void Add(const CExecutionStruct& statement, int target);
  // Must be called after the last Add, before the first Run.
  void Finish();

  // Runs all statements once, in the order of adding; each reads what those before it have stored.
  // inputs: count values; missing ones are 0.0, extra ones are ignored.
  // undefined: set to the statements, from 0 and in order, whose result was undefined.
  // Allocates no memory once undefined has the capacity for all statements, unless a statement in the
  // reference interpreter needs a deeper stack than any before.
  void Run(const float* inputs, int count, std::vector<int>& undefined);

  // Of an assigned variable, which starts at 0.0.
  float GetValue(int assigned) const {
    return static_cast<float>(m_places.GetRegisters()[m_inputs + assigned]);
  }
  void SetValue(int assigned, float value) {
    m_places.GetRegisters()[m_inputs + assigned] = static_cast<double>(value);
  }

  // Whether a statement runs in the reference interpreter.
  bool IsInterpreted(int statement) const {
    return m_statements[static_cast<std::size_t>(statement)].isInterpreted;
  }

 private:
  static constexpr int kBlock = 4;

  struct CStatement {
    const CLineCodeList* lines;
    int target;
    bool isInterpreted;
    std::size_t end;  // the step after its own
  };
  // Operand b of a stop step is the reason; operand a is the index of the statement.
  enum : std::uint32_t { stopEnd, stopUndefined, stopInterpret };

  void AddStop(std::uint32_t reason, std::size_t statement, std::size_t next);
  void AddUndefinedStops();
  void FindRead(const std::vector<CFlatLine>& lines);
  void GatherBlocks();
  void RunShort(const float* inputs, int count, std::vector<int>& undefined);
  void Serve(const CStep* stop, std::vector<int>& undefined);
  const CStep* Store(const CStep* stop, std::vector<int>& undefined);

  int m_inputs;
  CPlaces m_places;
  std::vector<CDraft> m_drafts;  // until Finish
  std::vector<char> m_isRead;    // until Finish: by input
  std::vector<CStatement> m_statements;
  std::vector<CStep> m_steps;
  std::vector<int> m_blocks;  // the first inputs of blocks of kBlock that cover all inputs that are read
  CStack<double> m_stack;     // of the reference interpreter
};

}  // namespace vastra
