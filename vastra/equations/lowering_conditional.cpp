#include <algorithm>
#include <bit>

#include "vastra/equations/lowering_walk.h"

namespace vastra {
namespace {

// Whether a step is fast, has no effect except its result and does not jump.
bool IsCheap(const CDraft& step) {
  return step.target == CDraft::kNoTarget &&
         (step.kind.family != EFamily::operation || step.kind.code <= opAbs);
}

}  // namespace

// Whether a conditional that begins at this line ends inside the branch that contains it.
bool CLowering::NestsHere(int middle, int end) const {
  if (middle <= m_line || end <= middle || end >= static_cast<int>(m_lines.size())) return false;
  if (m_conditionals.empty()) return true;
  const CConditional& around = m_conditionals.back();
  return m_line < around.middle ? end < around.middle : end <= around.end;
}

// Pops the condition for a test. If the last step makes it by a comparison, that step becomes part of the
// test.
CEntry CLowering::TakeCondition() {
  CEntry condition = Pop();
  DropPlusZero(condition);
  if (condition.kind == CEntry::deferred && !IsComparison(condition.draft.kind.code))
    LoadAccumulator(condition);
  if (condition.kind != CEntry::accumulator || condition.makers != std::vector{m_steps.size() - 1})
    return condition;
  const CDraft maker = m_steps.back();
  if (maker.kind.family != EFamily::operation || !IsComparison(maker.kind.code)) return condition;
  m_steps.pop_back();
  condition.kind = CEntry::deferred;
  condition.draft = maker;
  return condition;
}

// The comparison that decides a condition, as an operation.
CDraft CLowering::ConditionDraft(const CEntry& condition) {
  if (condition.kind == CEntry::deferred) return condition.draft;
  CDraft draft = OperationDraft(opNotEqual, m_places.Literal(0.0), condition.place);
  if (condition.kind == CEntry::accumulator) draft.kind.source = ESource::leftAccumulator;
  return draft;
}

void CLowering::BeginConditional() {
  const int middle = Line().jump;
  if (Line().op1 != kStackOperand || !vastra::IsLiteral(Line().op2) || middle < 0) return Refuse();
  const CFlatLine& last = m_lines[static_cast<std::size_t>(middle)];
  if (last.code != opJump || !NestsHere(middle, last.jump)) return Refuse();
  CEntry condition = TakeCondition();
  if (!m_isKnown) return;
  SpillAccumulator();
  CDraft test = ConditionDraft(condition);
  test.kind.family = EFamily::test;
  m_conditionals.push_back({middle, last.jump, m_stack.size(), m_steps.size(), std::move(condition)});
  m_steps.push_back(test);
}

void CLowering::BeginSecondBranch() {
  if (m_conditionals.empty() || m_conditionals.back().middle != m_line || !vastra::IsLiteral(Line().op1) ||
      !vastra::IsLiteral(Line().op2))
    return Refuse();
  CEntry first = Pop();
  CConditional& conditional = m_conditionals.back();
  if (!m_isKnown || m_stack.size() != conditional.depth) return Refuse();
  conditional.first = conditional.loaded = first;
  LoadAccumulator(conditional.loaded);
  CDraft jump;
  jump.kind.family = EFamily::jump;
  m_steps.push_back(jump);
  conditional.second = m_steps.size();
  m_steps[conditional.start].target = static_cast<int>(conditional.second);
}

void CLowering::EndConditional() {
  CEntry second = Pop();
  CConditional conditional = std::move(m_conditionals.back());
  m_conditionals.pop_back();
  if (!m_isKnown || conditional.second == 0 || m_stack.size() != conditional.depth) return Refuse();
  if (Select(conditional, second)) return;
  LoadAccumulator(second);
  m_steps[conditional.second - 1].target = static_cast<int>(m_steps.size());
  const std::vector<std::size_t>& makers = conditional.loaded.makers;
  second.makers.insert(second.makers.end(), makers.begin(), makers.end());
  Push(std::move(second));
}

// If both branches have few and cheap steps, computes both values and selects one without a jump.
bool CLowering::Select(CConditional& conditional, const CEntry& second) {
  constexpr std::size_t kFew = 5;
  const auto begin = m_steps.begin();
  const auto at = [&](std::size_t step) { return begin + static_cast<std::ptrdiff_t>(step); };
  std::vector<CDraft> firstSteps(at(conditional.start + 1), at(conditional.second - 1));
  std::vector<CDraft> secondSteps(at(conditional.second), m_steps.end());
  if (conditional.first.kind != CEntry::accumulator) firstSteps.pop_back();  // it loaded the accumulator
  if (firstSteps.size() + secondSteps.size() > kFew ||
      !std::all_of(firstSteps.begin(), firstSteps.end(), IsCheap) ||
      !std::all_of(secondSteps.begin(), secondSteps.end(), IsCheap))
    return false;

  m_steps.resize(conditional.start);
  CEntry condition = std::move(conditional.condition);
  CEntry first = std::move(conditional.first), other = second;
  if (!firstSteps.empty() || !secondSteps.empty()) {
    // The branches overwrite the accumulator.
    if (condition.kind == CEntry::accumulator || condition.draft.kind.source != ESource::fromRegisters)
      KeepAt(condition, m_places.Fresh());
    KeepBranch(first, firstSteps, conditional.start + 1);
    KeepBranch(other, secondSteps, conditional.second);
  }
  EmitSelect(condition, first, other);
  return true;
}

// Appends the steps of a branch, which began at step begin, and moves its value to a temporary.
void CLowering::KeepBranch(CEntry& value, const std::vector<CDraft>& branch, std::size_t begin) {
  for (std::size_t& maker : value.makers) maker = maker - begin + m_steps.size();
  m_steps.insert(m_steps.end(), branch.begin(), branch.end());
  if (value.kind == CEntry::accumulator) KeepAt(value, m_places.Fresh());
}

void CLowering::EmitSelect(const CEntry& condition, CEntry& first, CEntry& second) {
  if (IsTruth(condition) && Is(first, 1.0) && Is(second, 0.0)) {
    const bool isMadeHere =
        condition.kind == CEntry::deferred && condition.draft.kind.source != ESource::fromRegisters;
    return isMadeHere ? PushMadeBy(condition.draft) : Push(condition);
  }
  CSum ifHolds = AsSum(first), ifFails = AsSum(second);
  CDraft draft = ConditionDraft(condition);
  draft.kind.family = EFamily::select;
  draft.c[0] = ifFails.left, draft.d[0] = ifFails.right;
  draft.c[1] = ifHolds.left, draft.d[1] = ifHolds.right;
  PushMadeBy(draft);
}

// Whether the value of a condition is always 1.0 or 0.0.
bool CLowering::IsTruth(const CEntry& condition) const {
  if (condition.kind != CEntry::accumulator) return condition.kind == CEntry::deferred;
  return std::all_of(condition.makers.begin(), condition.makers.end(), [&](std::size_t maker) {
    const CStepKind& kind = m_steps[maker].kind;
    const bool isLogic = IsBetween(kind.code, opLogicAnd, opLogicOr) || kind.code == opLogicNot;
    return kind.family == EFamily::logic || kind.family == EFamily::logicPair ||
           (kind.family == EFamily::operation && (isLogic || IsComparison(kind.code)));
  });
}

// Whether a value is this literal, bit for bit.
bool CLowering::Is(const CEntry& entry, double literal) const {
  return IsLiteral(entry) && std::bit_cast<std::uint64_t>(m_places.GetLiteral(entry.place)) ==
                                 std::bit_cast<std::uint64_t>(literal);
}

// A value as a sum of two places. Adding -0.0 does not change a value.
CLowering::CSum CLowering::AsSum(CEntry& entry) {
  const CDraft& draft = entry.draft;
  if (entry.kind == CEntry::deferred && draft.kind.code == opPlus) return {draft.a, draft.b};
  if (entry.kind == CEntry::deferred && draft.kind.code == opMinus && m_places.IsLiteral(draft.a))
    return {draft.b, m_places.Literal(-m_places.GetLiteral(draft.a))};
  KeepAt(entry, m_places.Fresh());
  return {entry.place, m_places.Literal(-0.0)};
}

}  // namespace vastra
