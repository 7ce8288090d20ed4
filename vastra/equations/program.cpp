#include "vastra/equations/program.h"

#include <algorithm>

namespace vastra {

void CProgram::Add(const CExecutionStruct& statement, int target) {
  const std::vector<CFlatLine> lines = FlatLines(*statement.GetHead());
  FindRead(lines);
  const bool isInterpreted = !LowerStatement(lines, m_inputs + target, m_places, m_drafts);
  if (isInterpreted) AddStop(stopInterpret, m_statements.size(), m_drafts.size() + 1);
  m_statements.push_back({statement.GetHead(), target, isInterpreted, m_drafts.size()});
}

void CProgram::AddStop(std::uint32_t reason, std::size_t statement, std::size_t next) {
  CDraft stop;
  stop.kind.family = EFamily::stop;
  stop.a = static_cast<std::uint32_t>(statement);
  stop.b = reason;
  stop.target = static_cast<int>(next);
  m_drafts.push_back(stop);
}

// Adds one stop for each statement that can jump to it, after the steps of all statements.
void CProgram::AddUndefinedStops() {
  std::size_t step = 0;
  for (std::size_t i = 0; i < m_statements.size(); ++i) {
    const std::size_t stop = m_drafts.size();
    bool isWanted = false;
    for (; step < m_statements[i].end; ++step) {
      if (m_drafts[step].target != CDraft::kUndefined) continue;
      m_drafts[step].target = static_cast<int>(stop);
      isWanted = true;
    }
    if (isWanted) AddStop(stopUndefined, i, m_statements[i].end);
  }
}

void CProgram::FindRead(const std::vector<CFlatLine>& lines) {
  m_isRead.resize(static_cast<std::size_t>(m_inputs));
  for (const CFlatLine& line : lines)
    for (const double operand : {line.op1, line.op2}) {
      if (IsLiteral(operand) || operand == kStackOperand) continue;
      const auto index = static_cast<std::size_t>(OperandIndex(operand));
      if (index < m_isRead.size()) m_isRead[index] = 1;
    }
}

// Finds blocks that cover all inputs that are read. The last block may overlap the one before it.
void CProgram::GatherBlocks() {
  for (int i = 0; i < m_inputs;) {
    if (m_isRead[static_cast<std::size_t>(i)]) {
      m_blocks.push_back(std::max(0, std::min(i, m_inputs - kBlock)));
      i = m_blocks.back() + kBlock;
    } else {
      ++i;
    }
  }
}

void CProgram::Finish() {
  AddStop(stopEnd, 0, m_drafts.size());
  AddUndefinedStops();
  for (std::size_t i = 0; i < m_drafts.size(); ++i) {
    const CDraft& draft = m_drafts[i];
    const int jump = draft.target == CDraft::kNoTarget ? 1 : draft.target - static_cast<int>(i);
    m_steps.push_back({FindHandler(draft.kind),
                       draft.a,
                       draft.b,
                       {draft.c[0], draft.c[1]},
                       {draft.d[0], draft.d[1]},
                       draft.to,
                       jump});
  }
  m_isRead.resize(static_cast<std::size_t>(m_inputs));
  GatherBlocks();
  m_drafts = {};
  m_isRead = {};
}

void CProgram::Run(const float* inputs, int count, std::vector<int>& undefined) {
  double* registers = m_places.GetRegisters();
  undefined.clear();
  if (count < m_inputs || m_inputs < kBlock) return RunShort(inputs, count, undefined);
  for (const int first : m_blocks)  // the compiler turns each into two wide moves
    for (int i = first; i < first + kBlock; ++i) registers[i] = static_cast<double>(inputs[i]);
  const CStep* step = RunSteps(m_steps.data(), registers);
  if (step->b != stopEnd) [[unlikely]]
    Serve(step, undefined);
}

void CProgram::RunShort(const float* inputs, int count, std::vector<int>& undefined) {
  double* registers = m_places.GetRegisters();
  for (int i = 0; i < m_inputs; ++i) registers[i] = i < count ? static_cast<double>(inputs[i]) : 0.0;
  Serve(RunSteps(m_steps.data(), registers), undefined);
}

// Handles stops and continues after each, until the end.
void CProgram::Serve(const CStep* stop, std::vector<int>& undefined) {
  while (stop->b != stopEnd) stop = RunSteps(Store(stop, undefined), m_places.GetRegisters());
}

// Stores the result of the statement that has stopped. Returns the step to continue at.
const CStep* CProgram::Store(const CStep* stop, std::vector<int>& undefined) {
  const CStatement& statement = m_statements[stop->a];
  double result = kUndefinedResult;
  int isDefined = 0;
  if (stop->b == stopInterpret) {
    const auto variable = [&](int index) {
      return static_cast<unsigned>(index) < static_cast<unsigned>(m_places.GetVariables())
                 ? m_places.GetRegisters()[index]
                 : 0.0;
    };
    m_stack.RemoveAll();
    isDefined = RunLines(*statement.lines, variable, m_stack, result);
  }
  SetValue(statement.target, static_cast<float>(result));
  if (!isDefined) undefined.push_back(static_cast<int>(stop->a));
  return stop + stop->jump;
}

}  // namespace vastra
