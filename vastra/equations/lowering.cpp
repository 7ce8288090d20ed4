#include "vastra/equations/lowering.h"

#include <algorithm>

#include "vastra/equations/lowering_walk.h"

namespace vastra {
namespace {

// Whether an operation has the same result for -0.0 as for 0.0 on either side.
bool IgnoresSignOfZero(int code) {
  return code <= opLogicOr || IsBetween(code, opModulo, opNotEqual) || IsBetween(code, opBitNot, opAbs);
}

}  // namespace

CDraft OperationDraft(int code, std::uint32_t right, std::uint32_t left) {
  CDraft draft;
  draft.kind.family = EFamily::operation;
  draft.kind.code = code;
  draft.a = right;
  draft.b = left;
  if (*FindOpcode(code)->undefinedIf) draft.target = CDraft::kUndefined;
  return draft;
}

bool CLowering::Lower(std::uint32_t target) {
  const std::size_t before = m_steps.size();
  for (; m_line < static_cast<int>(m_lines.size()) && m_isKnown; ++m_line) Follow();
  m_isKnown = m_isKnown && m_conditionals.empty() && m_stack.size() == 1;
  if (m_isKnown)
    Deliver(m_stack.back(), EResult::toVariable, target);
  else
    m_steps.resize(before);
  return m_isKnown;
}

void CLowering::Follow() {
  if (Line().code == opJumpIfZero)
    BeginConditional();
  else if (Line().code == opJump)
    BeginSecondBranch();
  else
    Operation();
  while (m_isKnown && !m_conditionals.empty() && m_conditionals.back().end == m_line) EndConditional();
}

CEntry CLowering::Operand(double operand) {
  CEntry entry;
  if (operand == kStackOperand) return Pop();
  if (vastra::IsLiteral(operand)) {
    entry.place = m_places.Literal(operand);
    return entry;
  }
  const int index = OperandIndex(operand);
  if (index < 0 || index >= m_places.GetVariables())
    Refuse();
  else
    entry.place = static_cast<std::uint32_t>(index);
  return entry;
}

// A branch must not remove values that were on the stack before it.
CEntry CLowering::Pop() {
  if (m_stack.size() <= (m_conditionals.empty() ? 0 : m_conditionals.back().depth)) {
    Refuse();
    return {};
  }
  CEntry entry = std::move(m_stack.back());
  m_stack.pop_back();
  return entry;
}

void CLowering::Push(CEntry entry) {
  entry.depth = m_stack.size();
  m_stack.push_back(std::move(entry));
}

void CLowering::PushDeferred(const CDraft& draft) {
  CEntry entry;
  entry.kind = CEntry::deferred;
  entry.draft = draft;
  Push(std::move(entry));
}

// Appends a step whose result is the new value of the accumulator.
void CLowering::PushMadeBy(const CDraft& draft) {
  SpillAccumulator();
  m_steps.push_back(draft);
  CEntry entry;
  entry.kind = CEntry::accumulator;
  entry.makers = {m_steps.size() - 1};
  Push(std::move(entry));
}

// Sends the value of an entry to result. The steps that make a value in the accumulator exist already: they
// are changed.
void CLowering::Deliver(CEntry& entry, EResult result, std::uint32_t to) {
  if (entry.kind != CEntry::accumulator) {
    if (entry.kind != CEntry::deferred) {
      entry.draft = {};
      entry.draft.kind.family = EFamily::copy;
      entry.draft.a = entry.place;
    }
    entry.makers = {m_steps.size()};
    m_steps.push_back(entry.draft);
  }
  for (const std::size_t maker : entry.makers) {
    m_steps[maker].kind.result = result;
    m_steps[maker].to = to;
  }
}

// Moves a value that is not in a place yet to a temporary. Does not change the accumulator.
void CLowering::KeepAt(CEntry& entry, std::uint32_t place) {
  if (entry.kind != CEntry::accumulator && entry.kind != CEntry::deferred) return;
  Deliver(entry, EResult::toTemporary, place);
  entry.kind = CEntry::kept;
  entry.place = place;
}

// Called before a step that overwrites the accumulator: a value of the stack that is in the accumulator moves
// to a temporary. There is at most one.
void CLowering::SpillAccumulator() {
  const auto waiting = std::find_if(m_stack.rbegin(), m_stack.rend(),
                                    [](const CEntry& entry) { return entry.kind == CEntry::accumulator; });
  if (waiting != m_stack.rend()) Keep(*waiting);
}

void CLowering::LoadAccumulator(CEntry& entry) {
  if (entry.kind == CEntry::accumulator) return;
  SpillAccumulator();
  Deliver(entry, EResult::toAccumulator, 0);
  entry.kind = CEntry::accumulator;
}

// Whether a deferred value is a variable plus 0.0: the compiled form of a name alone.
bool CLowering::IsPlusZero(const CEntry& entry) const {
  return entry.kind == CEntry::deferred && entry.draft.kind.code == opPlus &&
         m_places.IsLiteral(entry.draft.b) &&
         std::bit_cast<std::uint64_t>(m_places.GetLiteral(entry.draft.b)) == 0;
}

void CLowering::DropPlusZero(CEntry& entry) const {
  if (!IsPlusZero(entry)) return;
  entry.kind = CEntry::inPlace;
  entry.place = entry.draft.a;
}

void CLowering::Operation() {
  const COpcode* opcode = FindOpcode(Line().code);
  if (!opcode || (opcode->operands < 2 && !vastra::IsLiteral(Line().op2)) ||
      (opcode->operands < 1 && !vastra::IsLiteral(Line().op1)))
    return Refuse();
  CEntry right = Operand(Line().op1);
  CEntry left = Operand(Line().op2);
  if (!m_isKnown || Fold(*opcode, right, left)) return;
  int code = opcode->code;
  if (IgnoresSignOfZero(code)) {
    DropPlusZero(right);
    DropPlusZero(left);
  }
  if (code == opGreater || code == opGreaterEqual) {
    std::swap(right, left);
    code = code == opGreater ? opLess : opLessEqual;
  }
  if (Defer(code, right, left) || FuseLogic(code, right, left) || FusePair(code, right, left) ||
      FuseChain(code, right, left))
    return;
  EmitOperation(code, right, left);
}

// An operation on literals is computed now, by the same function as at run time.
bool CLowering::Fold(const COpcode& opcode, const CEntry& right, const CEntry& left) {
  double result = 0;
  if (opcode.code == opRand || !IsLiteral(right) || !IsLiteral(left) ||
      !opcode.compute(m_places.GetLiteral(right.place), m_places.GetLiteral(left.place), result))
    return false;
  CEntry entry;
  entry.place = m_places.Literal(result);
  Push(std::move(entry));
  return true;
}

bool CLowering::Defer(int code, const CEntry& right, const CEntry& left) {
  if (right.kind != CEntry::inPlace || left.kind != CEntry::inPlace) return false;
  if (!IsChainable(code) && !IsComparison(code)) return false;
  PushDeferred(OperationDraft(code, right.place, left.place));
  return true;
}

// && or || of a deferred comparison and another deferred comparison or the accumulator. The order of the
// sides does not matter.
bool CLowering::FuseLogic(int code, CEntry& right, CEntry& left) {
  const auto isComparison = [](const CEntry& entry) {
    return entry.kind == CEntry::deferred && IsComparison(entry.draft.kind.code);
  };
  if (!IsBetween(code, opLogicAnd, opLogicOr)) return false;
  if (!isComparison(right)) std::swap(right, left);
  if (!isComparison(right) || (left.kind != CEntry::accumulator && left.kind != CEntry::deferred))
    return false;
  CDraft draft = right.draft;
  draft.kind.family = EFamily::logic;
  draft.kind.outer = code;
  if (isComparison(left)) {
    draft.kind.family = EFamily::logicPair;
    draft.kind.second = left.draft.kind.code;
    draft.c[0] = left.draft.a;
    draft.c[1] = left.draft.b;
  } else {
    LoadAccumulator(left);
  }
  PushMadeBy(draft);
  return true;
}

// Whether a value is a deferred +, - or *.
bool IsDeferredSum(const CEntry& entry) {
  return entry.kind == CEntry::deferred && IsChainable(entry.draft.kind.code);
}

// +, - or * of two such values.
bool CLowering::FusePair(int code, const CEntry& right, const CEntry& left) {
  if (!IsChainable(code) || !IsDeferredSum(right) || !IsDeferredSum(left)) return false;
  CDraft draft = left.draft;
  draft.kind.family = EFamily::pair;
  draft.kind.outer = code;
  draft.kind.second = right.draft.kind.code;
  draft.c[0] = right.draft.a;
  draft.c[1] = right.draft.b;
  PushMadeBy(draft);
  return true;
}

// +, - or * of such a value and any other, or such a value divided by a literal.
bool CLowering::FuseChain(int code, CEntry& right, CEntry& left) {
  const bool isRight = IsDeferredSum(right);
  CEntry& inner = isRight ? right : left;
  CEntry& other = isRight ? left : right;
  const bool divides = code == opDivide && !isRight && IsLiteral(right) && IsLiteralNotZero(right.place);
  if (!IsDeferredSum(inner) || (!IsChainable(code) && !divides)) return false;
  if (other.kind == CEntry::deferred) LoadAccumulator(other);
  CDraft draft = inner.draft;
  draft.kind.family = EFamily::chain;
  draft.kind.outer = code;
  draft.kind.isInnerRight = isRight;
  draft.c[0] = other.place;
  if (other.kind == CEntry::accumulator) draft.kind.source = ESource::rightAccumulator;
  PushMadeBy(draft);
  return true;
}

void CLowering::EmitOperation(int code, CEntry& right, CEntry& left) {
  // The accumulator can contain one side only: if neither side is in a place, one moves to a temporary.
  if (right.kind != CEntry::inPlace && left.kind == CEntry::deferred) Keep(left);
  if (left.kind == CEntry::accumulator) Keep(right);
  if (right.kind == CEntry::deferred) LoadAccumulator(right);
  if (left.kind == CEntry::deferred) LoadAccumulator(left);
  CDraft draft = OperationDraft(code, right.place, left.place);
  if (right.kind == CEntry::accumulator) draft.kind.source = ESource::rightAccumulator;
  if (left.kind == CEntry::accumulator) draft.kind.source = ESource::leftAccumulator;
  PushMadeBy(draft);
}

bool LowerStatement(const std::vector<CFlatLine>& lines, int target, CPlaces& places,
                    std::vector<CDraft>& steps) {
  bool draws = false, canFail = false;
  for (const CFlatLine& line : lines) {
    const COpcode* opcode = FindOpcode(line.code);
    draws = draws || line.code == opRand;
    canFail = canFail || (opcode && *opcode->undefinedIf);
  }
  return !(draws && canFail) && CLowering(lines, places, steps).Lower(static_cast<std::uint32_t>(target));
}

}  // namespace vastra
