#include "vastra/equations/lowering.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "vastra/equations/opcodes.h"

namespace vastra {
namespace {

// Where a value on the run-time stack will be.
struct CEntry {
  enum CKind {
    inPlace,   // in a place that keeps it: a variable, a literal
    deferred,  // not made yet: an operation, cheap and without effect, on two such places
    running,   // the running value
    kept,      // in a temporary
  };
  CKind kind = inPlace;
  std::uint32_t place = 0;               // inPlace and kept
  CDraft draft = {};                     // deferred
  std::vector<std::size_t> makers = {};  // running: the steps that make it, one for each way that leads there
  std::size_t depth = 0;
};

// A conditional whose branches are not complete.
struct CConditional {
  int middle, end;    // the lines that end the first and the second branch
  std::size_t depth;  // of the stack outside
  std::size_t start;  // the step that tests the condition, which is made before it
  CEntry condition;
  CEntry first = {};       // the value of the first branch; if it took no step, before it was made
  CEntry running = {};     // the same as the running value
  std::size_t second = 0;  // the first step of the second branch, behind the jump
};

bool IsBetween(int code, int first, int last) { return code >= first && code <= last; }

// Whether an operation gives the same for -0.0 as for 0.0 on either side.
bool IgnoresSignOfZero(int code) {
  return code <= opLogicOr || IsBetween(code, opModulo, opNotEqual) || IsBetween(code, opBitNot, opAbs);
}

// Whether a step costs little, has no effect but its result and goes on at the next.
bool IsCheap(const CDraft& step) {
  return step.target == CDraft::kNoTarget &&
         (step.kind.family != CFamily::operation || step.kind.code <= opAbs);
}

CDraft OperationDraft(int code, std::uint32_t right, std::uint32_t left) {
  CDraft draft;
  draft.kind.family = CFamily::operation;
  draft.kind.code = code;
  draft.a = right;
  draft.b = left;
  if (*FindOpcode(code)->undefinedIf) draft.target = CDraft::kUndefined;
  return draft;
}

// Follows the lines with a stack of entries in place of values. What is deferred until it is known who wants
// it can become part of a larger step.
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

  void Deliver(CEntry& entry, CResult result, std::uint32_t to);
  void KeepAt(CEntry& entry, std::uint32_t place);
  void Keep(CEntry& entry) { KeepAt(entry, m_places.Temporary(entry.depth)); }
  void SpillRunning();
  void MakeRunning(CEntry& entry);

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
  bool m_isKnown = true;  // so far
  std::vector<CEntry> m_stack;
  std::vector<CConditional> m_conditionals;  // around the line, outermost first
};

bool CLowering::Lower(std::uint32_t target) {
  const std::size_t before = m_steps.size();
  for (; m_line < static_cast<int>(m_lines.size()) && m_isKnown; ++m_line) Follow();
  m_isKnown = m_isKnown && m_conditionals.empty() && m_stack.size() == 1;
  if (m_isKnown)
    Deliver(m_stack.back(), CResult::toVariable, target);
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

// A branch takes nothing that was there before it.
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

// Appends a step whose result is the new running value.
void CLowering::PushMadeBy(const CDraft& draft) {
  SpillRunning();
  m_steps.push_back(draft);
  CEntry entry;
  entry.kind = CEntry::running;
  entry.makers = {m_steps.size() - 1};
  Push(std::move(entry));
}

// Lets the value of an entry go to result. What makes a running value is told so afterwards.
void CLowering::Deliver(CEntry& entry, CResult result, std::uint32_t to) {
  if (entry.kind != CEntry::running) {
    if (entry.kind != CEntry::deferred) {
      entry.draft = {};
      entry.draft.kind.family = CFamily::copy;
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

// To a temporary, unless it is in some place already. The running value stays what it is.
void CLowering::KeepAt(CEntry& entry, std::uint32_t place) {
  if (entry.kind != CEntry::running && entry.kind != CEntry::deferred) return;
  Deliver(entry, CResult::toTemporary, place);
  entry.kind = CEntry::kept;
  entry.place = place;
}

// A new running value is about to be made: one that waits on the stack has to go to a temporary. There is one
// at most.
void CLowering::SpillRunning() {
  const auto waiting = std::find_if(m_stack.rbegin(), m_stack.rend(),
                                    [](const CEntry& entry) { return entry.kind == CEntry::running; });
  if (waiting != m_stack.rend()) Keep(*waiting);
}

void CLowering::MakeRunning(CEntry& entry) {
  if (entry.kind == CEntry::running) return;
  SpillRunning();
  Deliver(entry, CResult::toRunning, 0);
  entry.kind = CEntry::running;
}

// Whether a deferred value is that of a variable plus 0.0, as a name that stands alone is compiled.
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

// An operation on literals is worked out now, by the function that would do it at run time.
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

// && or || of a deferred comparison and another one, or a running value. Which side is which is all the same.
bool CLowering::FuseLogic(int code, CEntry& right, CEntry& left) {
  const auto isComparison = [](const CEntry& entry) {
    return entry.kind == CEntry::deferred && IsComparison(entry.draft.kind.code);
  };
  if (!IsBetween(code, opLogicAnd, opLogicOr)) return false;
  if (!isComparison(right)) std::swap(right, left);
  if (!isComparison(right) || (left.kind != CEntry::running && left.kind != CEntry::deferred)) return false;
  CDraft draft = right.draft;
  draft.kind.family = CFamily::logic;
  draft.kind.outer = code;
  if (isComparison(left)) {
    draft.kind.family = CFamily::logicPair;
    draft.kind.second = left.draft.kind.code;
    draft.c[0] = left.draft.a;
    draft.c[1] = left.draft.b;
  } else {
    MakeRunning(left);
  }
  PushMadeBy(draft);
  return true;
}

// Whether a value is a deferred + - *.
bool IsDeferredSum(const CEntry& entry) {
  return entry.kind == CEntry::deferred && IsChainable(entry.draft.kind.code);
}

// + - * of two such values.
bool CLowering::FusePair(int code, const CEntry& right, const CEntry& left) {
  if (!IsChainable(code) || !IsDeferredSum(right) || !IsDeferredSum(left)) return false;
  CDraft draft = left.draft;
  draft.kind.family = CFamily::pair;
  draft.kind.outer = code;
  draft.kind.second = right.draft.kind.code;
  draft.c[0] = right.draft.a;
  draft.c[1] = right.draft.b;
  PushMadeBy(draft);
  return true;
}

// + - * of a deferred + - * and anything, or such a thing divided by a literal.
bool CLowering::FuseChain(int code, CEntry& right, CEntry& left) {
  const bool isRight = IsDeferredSum(right);
  CEntry& inner = isRight ? right : left;
  CEntry& other = isRight ? left : right;
  const bool divides = code == opDivide && !isRight && IsLiteral(right) && IsLiteralNotZero(right.place);
  if (!IsDeferredSum(inner) || (!IsChainable(code) && !divides)) return false;
  if (other.kind == CEntry::deferred) MakeRunning(other);
  CDraft draft = inner.draft;
  draft.kind.family = CFamily::chain;
  draft.kind.outer = code;
  draft.kind.isInnerRight = isRight;
  draft.c[0] = other.place;
  if (other.kind == CEntry::running) draft.kind.source = CSource::rightRunning;
  PushMadeBy(draft);
  return true;
}

void CLowering::EmitOperation(int code, CEntry& right, CEntry& left) {
  // Of two sides that are not made yet, or not in a place, one goes to a temporary.
  if (right.kind != CEntry::inPlace && left.kind == CEntry::deferred) Keep(left);
  if (left.kind == CEntry::running) Keep(right);
  if (right.kind == CEntry::deferred) MakeRunning(right);
  if (left.kind == CEntry::deferred) MakeRunning(left);
  CDraft draft = OperationDraft(code, right.place, left.place);
  if (right.kind == CEntry::running) draft.kind.source = CSource::rightRunning;
  if (left.kind == CEntry::running) draft.kind.source = CSource::leftRunning;
  PushMadeBy(draft);
}

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
    const bool isMadeHere = condition.kind == CEntry::deferred && condition.draft.kind.source != CSource::fromFile;
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

}  // namespace

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
