#include "vastra/equations/lowering.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "vastra/equations/opcodes.h"

namespace vastra {

std::uint32_t CPlaces::Add(double value) {
  m_file.push_back(value);
  return static_cast<std::uint32_t>(m_file.size() - 1);
}

std::uint32_t CPlaces::Literal(double value) {
  const auto [found, isNew] = m_literals.try_emplace(std::bit_cast<std::uint64_t>(value), 0);
  if (isNew) found->second = Add(value);
  return found->second;
}

std::uint32_t CPlaces::Temporary(std::size_t depth) {
  while (m_temporaries.size() <= depth) m_temporaries.push_back(Add(0.0));
  return m_temporaries[depth];
}

namespace {

// Follows the lines with a stack that holds, in place of values, where the values will be. What is cheap and
// has no effect is deferred until it is known who wants it: it can then become part of a larger step.
class CLowering {
 public:
  CLowering(const std::vector<CFlatLine>& lines, CPlaces& places, std::vector<CDraft>& steps)
      : m_lines(lines), m_places(places), m_steps(steps) {}

  bool Lower(int target);

 private:
  enum class CKind {
    inPlace,   // in a place that keeps it: a variable, a literal
    deferred,  // not computed yet: an operation on two such places
    running,   // the running value
    kept,      // in a temporary
  };
  struct CEntry {
    CKind kind = CKind::inPlace;
    std::uint32_t place = 0;               // inPlace and kept
    CDraft draft = {};                     // deferred
    std::vector<std::size_t> makers = {};  // running: the steps, one for each way, that made it
    std::size_t depth = 0;
  };
  struct CConditional {
    int middle, end;    // the lines that end the first and the second branch
    std::size_t depth;  // of the stack outside of the branches
    std::size_t start;  // first step; the condition is made before it
    CEntry condition;
    std::size_t test = 0;      // the step that jumps to the second branch
    CEntry first = {};         // the value of the first branch, before it was made the running one
    bool isFirstFree = false;  // it took no step
    std::vector<std::size_t> makers = {};
    std::size_t second = 0;  // the first step of the second branch, behind the jump
  };

  void Refuse() { m_isKnown = false; }
  const CFlatLine& Line() const { return m_lines[static_cast<std::size_t>(m_line)]; }

  CEntry InPlace(std::uint32_t place) { return {CKind::inPlace, place}; }
  CEntry Operand(double operand);
  CEntry Pop();
  void Push(CEntry entry);
  void PushRunning(std::vector<std::size_t> makers);

  void Emit(const CDraft& draft) { m_steps.push_back(draft); }
  void SpillRunning();
  void Redirect(const std::vector<std::size_t>& makers, CResult result, std::uint32_t to);
  void MakeRunning(CEntry& entry);
  void Keep(CEntry& entry);
  void Deliver(CEntry& entry, CResult result, std::uint32_t to);

  void Operation();
  bool Fold(const COpcode& opcode, const CEntry& right, const CEntry& left);
  bool Defer(int code, const CEntry& right, const CEntry& left);
  bool FuseLogic(int code, CEntry& right, CEntry& left);
  bool FuseChain(int code, CEntry& right, CEntry& left);
  void EmitOperation(const COpcode& opcode, CEntry& right, CEntry& left);

  void BeginConditional();
  bool NestsHere(int middle, int end) const;
  CEntry TakeCondition();
  void EmitTest(const CEntry& condition);
  void BeginSecondBranch();
  void EndConditional();
  void EmitSelect(CConditional& conditional, CEntry& second);

  bool IsDeferred(const CEntry& entry, bool (*isWanted)(int)) const {
    return entry.kind == CKind::deferred && isWanted(entry.draft.kind.code);
  }
  bool IsPlusZero(const CEntry& entry) const;
  void DropPlusZero(CEntry& entry) const;
  bool IsSameWithZero(const CEntry& entry) const;

  const std::vector<CFlatLine>& m_lines;
  CPlaces& m_places;
  std::vector<CDraft>& m_steps;
  int m_line = 0;
  bool m_isKnown = true;  // so far
  std::vector<CEntry> m_stack;
  std::vector<CConditional> m_conditionals;  // around the line
};

CDraft OperationDraft(int code, std::uint32_t right, std::uint32_t left) {
  CDraft draft;
  draft.kind.family = CFamily::operation;
  draft.kind.code = code;
  draft.a = right;
  draft.b = left;
  const COpcode* opcode = FindOpcode(code);
  if (*opcode->undefinedIf) draft.target = CDraft::kUndefined;
  return draft;
}

// Whether an operation gives the same for -0.0 as for 0.0 on either side.
bool IgnoresSignOfZero(int code) {
  return code <= opLogicOr || (code >= opModulo && code <= opNotEqual) || (code >= opBitNot && code <= opAbs);
}

bool CLowering::Lower(int target) {
  const std::size_t before = m_steps.size();
  for (; m_line < static_cast<int>(m_lines.size()) && m_isKnown; ++m_line) {
    if (Line().code == opJumpIfZero)
      BeginConditional();
    else if (Line().code == opJump)
      BeginSecondBranch();
    else
      Operation();
    while (m_isKnown && !m_conditionals.empty() && m_conditionals.back().end == m_line) EndConditional();
  }
  m_isKnown = m_isKnown && m_conditionals.empty() && m_stack.size() == 1;
  if (m_isKnown)
    Deliver(m_stack.back(), CResult::toVariable, static_cast<std::uint32_t>(target));
  else
    m_steps.resize(before);
  return m_isKnown;
}

CLowering::CEntry CLowering::Operand(double operand) {
  if (IsLiteral(operand)) return InPlace(m_places.Literal(operand));
  if (operand == kStackOperand) return Pop();
  const int index = OperandIndex(operand);
  if (index >= 0 && index < m_places.GetVariables()) return InPlace(static_cast<std::uint32_t>(index));
  Refuse();
  return {};
}

// A branch takes nothing that was there before it.
CLowering::CEntry CLowering::Pop() {
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

void CLowering::PushRunning(std::vector<std::size_t> makers) {
  CEntry entry;
  entry.kind = CKind::running;
  entry.makers = std::move(makers);
  Push(std::move(entry));
}

// What makes a running value lets it run, or puts it where it is wanted and lets the last one run on.
void CLowering::Redirect(const std::vector<std::size_t>& makers, CResult result, std::uint32_t to) {
  for (const std::size_t maker : makers) {
    m_steps[maker].kind.result = result;
    m_steps[maker].to = to;
  }
}

// A new running value is about to be made: one that waits on the stack goes to a temporary. It is near the
// top, as all values above it are deferred or literal.
void CLowering::SpillRunning() {
  const auto running = std::find_if(m_stack.rbegin(), m_stack.rend(),
                                    [](const CEntry& entry) { return entry.kind == CKind::running; });
  if (running != m_stack.rend()) Keep(*running);
}

void CLowering::Keep(CEntry& entry) {
  if (entry.kind != CKind::running && entry.kind != CKind::deferred) return;
  const std::uint32_t place = m_places.Temporary(entry.depth);
  Deliver(entry, CResult::toTemporary, place);
  entry.kind = CKind::kept;
  entry.place = place;
}

void CLowering::Deliver(CEntry& entry, CResult result, std::uint32_t to) {
  if (entry.kind == CKind::running) return Redirect(entry.makers, result, to);
  CDraft draft = entry.draft;
  if (entry.kind != CKind::deferred) {
    draft = {};
    draft.kind.family = CFamily::copy;
    draft.a = entry.place;
  }
  draft.kind.result = result;
  draft.to = to;
  Emit(draft);
}

void CLowering::MakeRunning(CEntry& entry) {
  if (entry.kind == CKind::running) return;
  SpillRunning();
  Deliver(entry, CResult::toRunning, 0);
  entry.kind = CKind::running;
  entry.makers = {m_steps.size() - 1};
}

// Whether a deferred value is that of a variable plus 0.0, as a name that stands alone is compiled.
bool CLowering::IsPlusZero(const CEntry& entry) const {
  if (entry.kind != CKind::deferred || entry.draft.kind.code != opPlus) return false;
  return m_places.IsLiteral(entry.draft.b) &&
         std::bit_cast<std::uint64_t>(m_places.GetLiteral(entry.draft.b)) == 0;
}

void CLowering::DropPlusZero(CEntry& entry) const {
  if (IsPlusZero(entry)) entry = {CKind::inPlace, entry.draft.a, {}, {}, entry.depth};
}

// Whether 0.0 may be added to a value: it is a literal that stays itself, or waits for just that.
bool CLowering::IsSameWithZero(const CEntry& entry) const {
  if (entry.kind != CKind::inPlace) return IsPlusZero(entry);
  const double literal = m_places.GetLiteral(entry.place);
  return m_places.IsLiteral(entry.place) && !(literal == 0.0 && std::signbit(literal));
}

void CLowering::Operation() {
  const COpcode* opcode = FindOpcode(Line().code);
  if (!opcode || (opcode->operands < 2 && !IsLiteral(Line().op2)) ||
      (opcode->operands < 1 && !IsLiteral(Line().op1)))
    return Refuse();
  CEntry right = Operand(Line().op1);
  CEntry left = Operand(Line().op2);
  if (!m_isKnown || Fold(*opcode, right, left)) return;
  if (IgnoresSignOfZero(opcode->code)) {
    DropPlusZero(right);
    DropPlusZero(left);
  }
  if (Defer(opcode->code, right, left) || FuseLogic(opcode->code, right, left) ||
      FuseChain(opcode->code, right, left))
    return;
  EmitOperation(*opcode, right, left);
}

// An operation on literals is worked out now, by the function that would do it at run time.
bool CLowering::Fold(const COpcode& opcode, const CEntry& right, const CEntry& left) {
  const auto isLiteral = [&](const CEntry& entry) {
    return entry.kind == CKind::inPlace && m_places.IsLiteral(entry.place);
  };
  double result = 0;
  if (opcode.code == opRand || !isLiteral(right) || !isLiteral(left) ||
      !opcode.compute(m_places.GetLiteral(right.place), m_places.GetLiteral(left.place), result))
    return false;
  Push(InPlace(m_places.Literal(result)));
  return true;
}

bool CLowering::Defer(int code, const CEntry& right, const CEntry& left) {
  if (right.kind != CKind::inPlace || left.kind != CKind::inPlace) return false;
  if (!IsChainable(code) && !IsComparison(code)) return false;
  CEntry entry;
  entry.kind = CKind::deferred;
  entry.draft = OperationDraft(code, right.place, left.place);
  Push(std::move(entry));
  return true;
}

// && or || of the running value and a comparison.
bool CLowering::FuseLogic(int code, CEntry& right, CEntry& left) {
  if (code != opLogicAnd && code != opLogicOr) return false;
  const bool isRight = IsDeferred(right, IsComparison);
  CEntry& comparison = isRight ? right : left;
  CEntry& other = isRight ? left : right;
  if (!IsDeferred(comparison, IsComparison)) return false;
  if (other.kind != CKind::running && other.kind != CKind::deferred) return false;
  MakeRunning(other);
  CDraft draft = comparison.draft;
  draft.kind.family = CFamily::logic;
  draft.kind.outer = code;
  Emit(draft);
  PushRunning({m_steps.size() - 1});
  return true;
}

// + - * of anything and a deferred + - *.
bool CLowering::FuseChain(int code, CEntry& right, CEntry& left) {
  const bool isRight = IsDeferred(right, IsChainable);
  CEntry& inner = isRight ? right : left;
  CEntry& other = isRight ? left : right;
  if (!IsChainable(code) || !IsDeferred(inner, IsChainable)) return false;
  if (other.kind == CKind::deferred) MakeRunning(other);
  CDraft draft = inner.draft;
  draft.kind.family = CFamily::chain;
  draft.kind.outer = code;
  draft.kind.isInnerRight = isRight;
  if (other.kind == CKind::running)
    draft.kind.source = CSource::rightRunning;
  else
    draft.c = other.place;
  SpillRunning();
  Emit(draft);
  PushRunning({m_steps.size() - 1});
  return true;
}

void CLowering::EmitOperation(const COpcode& opcode, CEntry& right, CEntry& left) {
  const bool areBothMade = right.kind != CKind::inPlace && left.kind != CKind::inPlace;
  if (areBothMade && left.kind == CKind::deferred) Keep(left);
  if (areBothMade && left.kind == CKind::running) Keep(right);
  if (right.kind == CKind::deferred) MakeRunning(right);
  if (left.kind == CKind::deferred) MakeRunning(left);
  SpillRunning();
  CDraft draft = OperationDraft(opcode.code, right.place, left.place);
  if (right.kind == CKind::running) draft.kind.source = CSource::rightRunning;
  if (left.kind == CKind::running) draft.kind.source = CSource::leftRunning;
  Emit(draft);
  PushRunning({m_steps.size() - 1});
}

// Whether a conditional that begins at this line ends within the branch around it.
bool CLowering::NestsHere(int middle, int end) const {
  if (middle <= m_line || end <= middle) return false;
  if (m_conditionals.empty()) return true;
  const CConditional& around = m_conditionals.back();
  return m_line < around.middle ? end < around.middle : end <= around.end;
}

// The condition as a test or a selection can use it: a comparison that was made last is made there instead.
CLowering::CEntry CLowering::TakeCondition() {
  CEntry condition = Pop();
  DropPlusZero(condition);
  if (condition.kind == CKind::deferred && !IsDeferred(condition, IsComparison)) MakeRunning(condition);
  if (condition.kind != CKind::running || condition.makers != std::vector{m_steps.size() - 1})
    return condition;
  const CDraft maker = m_steps.back();
  if (maker.kind.family != CFamily::operation || !IsComparison(maker.kind.code)) return condition;
  condition.kind = CKind::deferred;
  condition.draft = maker;
  m_steps.pop_back();
  return condition;
}

void CLowering::EmitTest(const CEntry& condition) {
  CDraft draft;
  if (condition.kind == CKind::deferred) draft = condition.draft;
  draft.kind.family = condition.kind == CKind::deferred ? CFamily::test : CFamily::testZero;
  if (condition.kind == CKind::running) draft.kind.source = CSource::rightRunning;
  if (condition.kind == CKind::inPlace || condition.kind == CKind::kept) draft.a = condition.place;
  Emit(draft);
}

void CLowering::BeginConditional() {
  const int middle = Line().jump;
  if (Line().op1 != kStackOperand || !IsLiteral(Line().op2) || middle < 0) return Refuse();
  const CFlatLine& last = m_lines[static_cast<std::size_t>(middle)];
  if (last.code != opJump || !NestsHere(middle, last.jump)) return Refuse();
  CConditional conditional = {middle, last.jump, 0, 0, TakeCondition()};
  if (!m_isKnown) return;
  SpillRunning();
  conditional.depth = m_stack.size();
  conditional.start = conditional.test = m_steps.size();
  EmitTest(conditional.condition);
  m_conditionals.push_back(std::move(conditional));
}

void CLowering::BeginSecondBranch() {
  if (m_conditionals.empty() || m_conditionals.back().middle != m_line || !IsLiteral(Line().op1) ||
      !IsLiteral(Line().op2))
    return Refuse();
  CEntry first = Pop();
  CConditional& conditional = m_conditionals.back();
  if (!m_isKnown || m_stack.size() != conditional.depth) return Refuse();
  conditional.first = first;
  conditional.isFirstFree = m_steps.size() == conditional.test + 1 && first.kind != CKind::running;
  MakeRunning(first);
  conditional.makers = first.makers;
  CDraft jump;
  jump.kind.family = CFamily::jump;
  Emit(jump);
  conditional.second = m_steps.size();
  m_steps[conditional.test].target = static_cast<int>(conditional.second);
}

void CLowering::EndConditional() {
  CEntry second = Pop();
  CConditional conditional = std::move(m_conditionals.back());
  m_conditionals.pop_back();
  if (!m_isKnown || m_stack.size() != conditional.depth) return Refuse();
  if (conditional.isFirstFree && m_steps.size() == conditional.second && second.kind != CKind::running)
    return EmitSelect(conditional, second);
  MakeRunning(second);
  m_steps[conditional.second - 1].target = static_cast<int>(m_steps.size());
  std::vector<std::size_t> makers = std::move(conditional.makers);
  makers.insert(makers.end(), second.makers.begin(), second.makers.end());
  PushRunning(std::move(makers));
}

// Neither branch took a step: both values are made, and one of them is chosen without a jump.
void CLowering::EmitSelect(CConditional& conditional, CEntry& second) {
  CEntry& condition = conditional.condition;
  CEntry& first = conditional.first;
  m_steps.resize(conditional.start);
  condition.depth = conditional.depth;
  first.depth = conditional.depth + 1;
  second.depth = conditional.depth + 2;
  CDraft draft;
  if (condition.kind == CKind::deferred && condition.draft.kind.source == CSource::fromFile) {
    draft = condition.draft;
  } else {
    Keep(condition);
    draft = OperationDraft(opNotEqual, condition.place, m_places.Literal(0.0));
  }
  const bool isSum = IsSameWithZero(first) && IsSameWithZero(second);
  draft.kind.family = isSum ? CFamily::selectSum : CFamily::select;
  for (CEntry* value : {&first, &second}) {
    if (isSum) DropPlusZero(*value);
    Keep(*value);
  }
  draft.c = first.place;
  draft.d = second.place;
  Emit(draft);
  PushRunning({m_steps.size() - 1});
}

}  // namespace

bool LowerStatement(const std::vector<CFlatLine>& lines, int target, CPlaces& places,
                    std::vector<CDraft>& steps) {
  const auto hasAny = [&](auto isWanted) { return std::any_of(lines.begin(), lines.end(), isWanted); };
  const bool draws = hasAny([](const CFlatLine& line) { return line.code == opRand; });
  const bool canFail = hasAny([](const CFlatLine& line) {
    const COpcode* opcode = FindOpcode(line.code);
    return opcode && *opcode->undefinedIf;
  });
  if (draws && canFail) return false;
  return CLowering(lines, places, steps).Lower(target);
}

}  // namespace vastra
