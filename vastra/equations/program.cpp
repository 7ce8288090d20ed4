#include "vastra/equations/program.h"

namespace vastra {

void CProgram::Add(const CExecutionStruct& statement, int target) {
  const std::vector<CFlatLine> lines = FlatLines(*statement.GetHead());
  FindRead(lines);
  const bool isPlain = !LowerStatement(lines, target, m_places, m_drafts);
  if (isPlain) AddStop(stopPlain, m_statements.size(), m_drafts.size() + 1);
  m_statements.push_back({statement.GetHead(), target, isPlain, m_drafts.size()});
}

void CProgram::AddStop(std::uint32_t reason, std::size_t statement, std::size_t next) {
  CDraft stop;
  stop.kind.family = CFamily::stop;
  stop.a = static_cast<std::uint32_t>(statement);
  stop.b = reason;
  stop.target = static_cast<int>(next);
  m_drafts.push_back(stop);
}

// One for each statement that asks for it, behind all statements.
void CProgram::AddUndefinedStops() {
  std::size_t step = 0;
  for (std::size_t i = 0; i < m_statements.size(); ++i) {
    const std::size_t stop = m_drafts.size();
    const std::size_t end = m_statements[i].end;
    bool isWanted = false;
    for (; step < end; ++step) {
      if (m_drafts[step].target != CDraft::kUndefined) continue;
      m_drafts[step].target = static_cast<int>(stop);
      isWanted = true;
    }
    if (isWanted) AddStop(stopUndefined, i, end);
  }
}

void CProgram::FindRead(const std::vector<CFlatLine>& lines) {
  m_isRead.resize(static_cast<std::size_t>(m_places.GetVariables()));
  for (const CFlatLine& line : lines)
    for (const double operand : {line.op1, line.op2}) {
      if (IsLiteral(operand) || operand == kStackOperand) continue;
      const auto index = static_cast<std::size_t>(OperandIndex(operand));
      if (index < m_isRead.size()) m_isRead[index] = 1;
    }
}

void CProgram::GatherRanges() {
  const int count = static_cast<int>(m_isRead.size());
  for (int i = 0; i < count; ++i) {
    if (!m_isRead[static_cast<std::size_t>(i)]) continue;
    if (m_ranges.empty() || m_ranges.back().end != i) m_ranges.push_back({i, i});
    m_ranges.back().end = i + 1;
  }
}

void CProgram::Finish() {
  AddStop(stopEnd, 0, m_drafts.size());
  AddUndefinedStops();
  for (std::size_t i = 0; i < m_drafts.size(); ++i) {
    const CDraft& draft = m_drafts[i];
    const int jump = draft.target == CDraft::kNoTarget ? 1 : draft.target - static_cast<int>(i);
    m_steps.push_back({FindHandler(draft.kind), draft.a, draft.b, draft.c, draft.d, draft.to, jump});
  }
  GatherRanges();
  m_drafts = {};
  m_isRead = {};
}

void CProgram::Widen(const float* values) {
  double* file = m_places.GetFile().data();
  for (const CRange& range : m_ranges)
    for (int i = range.first; i < range.end; ++i) file[i] = static_cast<double>(values[i]);
}

void CProgram::Run(float* values, std::vector<int>& undefined) {
  undefined.clear();
  Widen(values);
  double* file = m_places.GetFile().data();
  const CStep* step = m_steps.data();
  while ((step = RunSteps(step, file, values))->b != stopEnd) {
    if (!Serve(*step, values)) undefined.push_back(static_cast<int>(step->a));
    step += step->jump;
  }
}

// Stores what a statement gives that stopped, and tells whether it is defined.
bool CProgram::Serve(const CStep& stop, float* values) {
  const CStatement& statement = m_statements[stop.a];
  double result = kUndefinedResult;
  int isDefined = 0;
  if (stop.b == stopPlain) {
    const auto count = static_cast<unsigned>(m_places.GetVariables());
    const auto variable = [&](int index) {
      return static_cast<unsigned>(index) < count ? values[index] : 0.0f;
    };
    m_stack.RemoveAll();
    isDefined = RunLines(*statement.lines, variable, m_stack, result);
  }
  values[statement.target] = static_cast<float>(result);
  m_places.GetFile()[static_cast<std::size_t>(statement.target)] =
      static_cast<double>(values[statement.target]);
  return isDefined;
}

}  // namespace vastra
