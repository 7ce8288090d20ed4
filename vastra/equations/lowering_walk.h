// CLowering: the state of the translation of one statement. Used only by LowerStatement; lowering.cpp has the
// operations, lowering_conditional.cpp the conditionals.
#pragma once

#include <utility>

#include "vastra/equations/lowering.h"
#include "vastra/equations/opcodes.h"

namespace vastra {

// The location of a value of the run-time stack.
struct CEntry {
  enum EKind {
    inPlace,      // a variable or a literal
    deferred,     // not computed yet: a cheap operation without effects on two such places
    accumulator,  // in the accumulator
    kept,         // in a temporary
  };
  EKind kind = inPlace;
  std::uint32_t place = 0;               // inPlace and kept
  CDraft draft = {};                     // deferred
  std::vector<std::size_t> makers = {};  // accumulator: the steps that make it, one for each path
  std::size_t depth = 0;
};

// A conditional whose branches are not complete.
struct CConditional {
  int middle, end;    // the lines that end the first and the second branch
  std::size_t depth;  // of the stack before the conditional
  std::size_t start;  // the step that tests the condition
  CEntry condition;
  CEntry first = {};       // the value of the first branch, where its own steps have left it
  CEntry loaded = {};      // the same value, loaded into the accumulator
  std::size_t second = 0;  // the first step of the second branch, after the jump
};

inline bool IsBetween(int code, int first, int last) { return code >= first && code <= last; }

CDraft OperationDraft(int code, std::uint32_t right, std::uint32_t left);

// Follows the lines with a stack of entries instead of values. A deferred operation can become part of the
// step that uses its value.
class CLowering {
 public:
  CLowering(const std::vector<CFlatLine>& lines, CPlaces& places, std::vector<CDraft>& steps)
      : m_lines(lines), m_places(places), m_steps(steps) {}

  bool Lower(std::uint32_t target);

 private:
  void Refuse() { m_isKnown = false; }
  const CFlatLine& Line() const { return m_lines[static_cast<std::size_t>(m_line)]; }
  void Follow();

  CEntry Operand(double operand);
  CEntry Pop();
  void Push(CEntry entry);
  void PushDeferred(const CDraft& draft);
  void PushMadeBy(const CDraft& draft);

  void Deliver(CEntry& entry, EResult result, std::uint32_t to);
  void KeepAt(CEntry& entry, std::uint32_t place);
  void Keep(CEntry& entry) { KeepAt(entry, m_places.Temporary(entry.depth)); }
  void SpillAccumulator();
  void LoadAccumulator(CEntry& entry);

  void Operation();
  bool Fold(const COpcode& opcode, const CEntry& right, const CEntry& left);
  bool Defer(int code, const CEntry& right, const CEntry& left);
  bool FuseLogic(int code, CEntry& right, CEntry& left);
  bool FusePair(int code, const CEntry& right, const CEntry& left);
  bool FuseChain(int code, CEntry& right, CEntry& left);
  void EmitOperation(int code, CEntry& right, CEntry& left);

  bool NestsHere(int middle, int end) const;
  void BeginConditional();
  void BeginSecondBranch();
  void EndConditional();
  CEntry TakeCondition();
  CDraft ConditionDraft(const CEntry& condition);
  bool Select(CConditional& conditional, const CEntry& second);
  void KeepBranch(CEntry& value, const std::vector<CDraft>& branch, std::size_t begin);
  void EmitSelect(const CEntry& condition, CEntry& first, CEntry& second);
  bool IsTruth(const CEntry& condition) const;
  bool Is(const CEntry& entry, double literal) const;
  struct CSum {
    std::uint32_t left, right;
  };
  CSum AsSum(CEntry& entry);

  bool IsLiteral(const CEntry& entry) const {
    return entry.kind == CEntry::inPlace && m_places.IsLiteral(entry.place);
  }
  bool IsLiteralNotZero(std::uint32_t place) const {
    return m_places.IsLiteral(place) && m_places.GetLiteral(place) != 0.0;
  }
  bool IsPlusZero(const CEntry& entry) const;
  void DropPlusZero(CEntry& entry) const;

  const std::vector<CFlatLine>& m_lines;
  CPlaces& m_places;
  std::vector<CDraft>& m_steps;
  int m_line = 0;
  bool m_isKnown = true;  // the lines so far can be translated
  std::vector<CEntry> m_stack;
  std::vector<CConditional> m_conditionals;  // those that contain the line, outermost first
};

}  // namespace vastra
