// CProgram: the statements of one list in the form that runs for every sample. Each is translated once, when
// a link opens; one that the translation does not know stays as it is and runs on the plain machine. Both
// ways give the same floats, bit for bit; of a NaN only that it is one.
#pragma once

#include <vector>

#include "vastra/equations/execution.h"
#include "vastra/equations/lowering.h"

namespace vastra {

// One thread at a time.
class VASTRA_API CProgram {
 public:
  // For statements on that many variables.
  explicit CProgram(int variables = 0) : m_places(variables) {}

  // Adds a statement; its result goes to the variable target. The lines must stay as they are, and where they
  // are, as long as the program runs.
  void Add(const CExecutionStruct& statement, int target);
  // Stands behind the last Add, before the first Run.
  void Finish();

  // Runs all statements once, in the order in which they were added; each sees what those before it stored.
  // values: one float for each variable. undefined: set to the statements, from 0, that had no defined
  // result, in order. Takes no memory once undefined has room for all statements, but for a statement on the
  // plain machine that needs a deeper stack than any before.
  void Run(float* values, std::vector<int>& undefined);

  // Whether a statement runs on the plain machine.
  bool IsPlain(int statement) const { return m_statements[static_cast<std::size_t>(statement)].isPlain; }

 private:
  struct CStatement {
    const CLineCodeList* lines;
    int target;
    bool isPlain;
    std::size_t end;  // the step behind its own
  };
  // A stretch of variables that statements read.
  struct CRange {
    int first, end;
  };
  // What a step of the family stop asks for, in its b; its a is the statement.
  enum : std::uint32_t { stopEnd, stopUndefined, stopPlain };

  void AddStop(std::uint32_t reason, std::size_t statement, std::size_t next);
  void AddUndefinedStops();
  void FindRead(const std::vector<CFlatLine>& lines);
  void GatherRanges();
  void Widen(const float* values);
  bool Serve(const CStep& stop, float* values);

  CPlaces m_places;
  std::vector<CDraft> m_drafts;  // until Finish
  std::vector<char> m_isRead;    // until Finish: by variable
  std::vector<CStatement> m_statements;
  std::vector<CStep> m_steps;
  std::vector<CRange> m_ranges;
  CStack<double> m_stack;  // of the plain machine
};

}  // namespace vastra
