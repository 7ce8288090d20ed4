// CProgram: the statements of one list in the form that runs for every sample, and the variables that they
// assign. Each statement is translated once, when a link opens; one that the translation does not know stays
// as it is and runs on the plain machine. Both ways give the same floats, bit for bit; of a NaN only that it
// is one.
#pragma once

#include <vector>

#include "vastra/equations/execution.h"
#include "vastra/equations/lowering.h"

namespace vastra {

// One thread at a time. In compiled code the inputs come first among the variables, behind them those that
// are assigned.
class VASTRA_API CProgram {
 public:
  explicit CProgram(int inputs = 0, int assigned = 0) : m_inputs(inputs), m_places(inputs + assigned) {}

  // Adds a statement; its result goes to the assigned variable target. The lines must stay as they are, and
  // where they are, as long as the program runs.
  void Add(const CExecutionStruct& statement, int target);
  // Stands behind the last Add, before the first Run.
  void Finish();

  // Runs all statements once, in the order in which they were added; each sees what those before it stored.
  // inputs: count values; a missing one reads 0.0, what is too much is not looked at.
  // undefined: set to the statements, from 0, that had no defined result, in order.
  // Takes no memory once undefined has room for all statements, but for a statement on the plain machine that
  // needs a deeper stack than any before.
  void Run(const float* inputs, int count, std::vector<int>& undefined);

  // An assigned variable. They start at 0.0.
  float GetValue(int assigned) const { return static_cast<float>(m_places.GetFile()[m_inputs + assigned]); }
  void SetValue(int assigned, float value) {
    m_places.GetFile()[m_inputs + assigned] = static_cast<double>(value);
  }

  // Whether a statement runs on the plain machine.
  bool IsPlain(int statement) const { return m_statements[static_cast<std::size_t>(statement)].isPlain; }

 private:
  static constexpr int kBlock = 4;

  struct CStatement {
    const CLineCodeList* lines;
    int target;
    bool isPlain;
    std::size_t end;  // the step behind its own
  };
  // What a step of the family stop asks for, in its b; its a is the statement.
  enum : std::uint32_t { stopEnd, stopUndefined, stopPlain };

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
  std::vector<int> m_blocks;  // where stretches of kBlock inputs start that hold all that are read
  CStack<double> m_stack;     // of the plain machine
};

}  // namespace vastra
