#include <algorithm>
#include <bit>

#include "vastra/equations/lowering_walk.h"

namespace vastra {
namespace {

// Whether a step costs little, has no effect but its result and goes on at the next.
bool IsCheap(const CDraft& step) {
  return step.target == CDraft::kNoTarget &&
         (step.kind.family != CFamily::operation || step.kind.code <= opAbs);
}

}  // namespace

// Whether a conditional that begins at this line ends within the branch around it.
bool CLowering::NestsHere(int middle, int end) const {
  if (middle <= m_line || end <= middle || end >= static_cast<int>(m_lines.size())) return false;
  if (m_conditionals.empty()) return true;
  const CConditional& around = m_conditionals.back();
  return m_line < around.middle ? end < around.middle : end <= around.end;
}

// The condition as a test can use it. A comparison that the last step makes becomes the test's own.
CEntry CLowering::TakeCondition() {
  CEntry condition = Pop();
  DropPlusZero(condition);
  if (condition.kind == CEntry::deferred && !IsComparison(condition.draft.kind.code)) MakeRunning(condition);
  if (condition.kind != CEntry::running || condition.makers != std::vector{m_steps.size() - 1})
    return condition;
  const CDraft maker = m_steps.back();
  if (maker.kind.family != CFamily::operation || !IsComparison(maker.kind.code)) return condition;
  m_steps.pop_back();
  condition.kind = CEntry::deferred;
  condition.draft = maker;
  return condition;
}

// The comparison that a condition comes down to, as an operation.
CDraft CLowering::ConditionDraft(const CEntry& condition) {
  if (condition.kind == CEntry::deferred) return condition.draft;
  CDraft draft = OperationDraft(opNotEqual, m_places.Literal(0.0), condition.place);
  if (condition.kind == CEntry::running) draft.kind.source = CSource::leftRunning;
  return draft;
}

void CLowering::BeginConditional() {
  const int middle = Line().jump;
  if (Line().op1 != kStackOperand || !vastra::IsLiteral(Line().op2) || middle < 0) return Refuse();
  const CFlatLine& last = m_lines[static_cast<std::size_t>(middle)];
  if (last.code != opJump || !NestsHere(middle, last.jump)) return Refuse();
  CEntry condition = TakeCondition();
  if (!m_isKnown) return;
  SpillRunning();
  CDraft test = ConditionDraft(condition);
  test.kind.family = CFamily::test;
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
  conditional.first = conditional.running = first;
  MakeRunning(conditional.running);
  CDraft jump;
  jump.kind.family = CFamily::jump;
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
  MakeRunning(second);
  m_steps[conditional.second - 1].target = static_cast<int>(m_steps.size());
  const std::vector<std::size_t>& makers = conditional.running.makers;
  second.makers.insert(second.makers.end(), makers.begin(), makers.end());
  Push(std::move(second));
}

// Where both branches take few and cheap steps, both values are made, and one is chosen without a jump.
bool CLowering::Select(CConditional& conditional, const CEntry& second) {
  constexpr std::size_t kFew = 5;
  const auto begin = m_steps.begin();
  const auto at = [&](std::size_t step) { return begin + static_cast<std::ptrdiff_t>(step); };
  std::vector<CDraft> firstSteps(at(conditional.start + 1), at(conditional.second - 1));
  std::vector<CDraft> secondSteps(at(conditional.second), m_steps.end());
  if (conditional.first.kind != CEntry::running) firstSteps.pop_back();  // it made a running value of it
  if (firstSteps.size() + secondSteps.size() > kFew ||
      !std::all_of(firstSteps.begin(), firstSteps.end(), IsCheap) ||
      !std::all_of(secondSteps.begin(), secondSteps.end(), IsCheap))
    return false;

  m_steps.resize(conditional.start);
  CEntry condition = std::move(conditional.condition);
  CEntry first = std::move(conditional.first), other = second;
  if (!firstSteps.empty() || !secondSteps.empty()) {
    // The branches have running values of their own.
    if (condition.kind == CEntry::running || condition.draft.kind.source != CSource::fromFile)
      KeepAt(condition, m_places.Fresh());
    KeepBranch(first, firstSteps, conditional.start + 1);
    KeepBranch(other, secondSteps, conditional.second);
  }
  EmitSelect(condition, first, other);
  return true;
}

// Appends the steps of a branch, which stood at begin, with the value going to a temporary.
void CLowering::KeepBranch(CEntry& value, const std::vector<CDraft>& branch, std::size_t begin) {
  for (std::size_t& maker : value.makers) maker = maker - begin + m_steps.size();
  m_steps.insert(m_steps.end(), branch.begin(), branch.end());
  if (value.kind == CEntry::running) KeepAt(value, m_places.Fresh());
}

void CLowering::EmitSelect(const CEntry& condition, CEntry& first, CEntry& second) {
  if (IsTruth(condition) && Is(first, 1.0) && Is(second, 0.0)) {
    const bool isMadeHere =
        condition.kind == CEntry::deferred && condition.draft.kind.source != CSource::fromFile;
    return isMadeHere ? PushMadeBy(condition.draft) : Push(condition);
  }
  CSum ifHolds = AsSum(first), ifFails = AsSum(second);
  CDraft draft = ConditionDraft(condition);
  draft.kind.family = CFamily::select;
  draft.c[0] = ifFails.left, draft.d[0] = ifFails.right;
  draft.c[1] = ifHolds.left, draft.d[1] = ifHolds.right;
  PushMadeBy(draft);
}

// Whether a condition is 1.0 or 0.0 already.
bool CLowering::IsTruth(const CEntry& condition) const {
  if (condition.kind != CEntry::running) return condition.kind == CEntry::deferred;
  return std::all_of(condition.makers.begin(), condition.makers.end(), [&](std::size_t maker) {
    const CStepKind& kind = m_steps[maker].kind;
    const bool isLogic = IsBetween(kind.code, opLogicAnd, opLogicOr) || kind.code == opLogicNot;
    return kind.family == CFamily::logic || kind.family == CFamily::logicPair ||
           (kind.family == CFamily::operation && (isLogic || IsComparison(kind.code)));
  });
}

// Whether a value is that literal, bit for bit.
bool CLowering::Is(const CEntry& entry, double literal) const {
  return IsLiteral(entry) && std::bit_cast<std::uint64_t>(m_places.GetLiteral(entry.place)) ==
                                 std::bit_cast<std::uint64_t>(literal);
}

// A value as a sum of two places. Adding -0.0 changes nothing.
CLowering::CSum CLowering::AsSum(CEntry& entry) {
  const CDraft& draft = entry.draft;
  if (entry.kind == CEntry::deferred && draft.kind.code == opPlus) return {draft.a, draft.b};
  if (entry.kind == CEntry::deferred && draft.kind.code == opMinus && m_places.IsLiteral(draft.a))
    return {draft.b, m_places.Literal(-m_places.GetLiteral(draft.a))};
  KeepAt(entry, m_places.Fresh());
  return {entry.place, m_places.Literal(-0.0)};
}

}  // namespace vastra
