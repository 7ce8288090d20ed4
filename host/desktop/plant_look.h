// CPlantLook: one look of CPlantState at the run, which sets the rows and finds the problems.
#pragma once

#include <optional>
#include <utility>

#include "host/desktop/plant_state.h"

namespace vastra {

class CPlantLook {
 public:
  CPlantLook(CPlantState& state, const CPlantRun& run, const CLiveNewest& newest, const CPlantNow& now);

  void JudgeAll();
  std::vector<CPlantProblem> TakeProblems() { return std::move(m_problems); }

 private:
  using seconds = std::chrono::seconds;
  using EWeight = CPlantProblem::EWeight;
  using Logs = std::vector<std::shared_ptr<const CLastLog>>;
  using Judge = void (CPlantLook::*)(CPlantRow&);
  static const Judge kJudges[];

  void JudgeInput(CPlantRow& row);
  void JudgeNode(CPlantRow& row);
  void JudgeWrittenNode(CPlantRow& row);
  void JudgeLog(CPlantRow& row);
  void JudgeStage(CPlantRow& row);
  void JudgeGroup(CPlantRow& row);
  void JudgeStart();
  void JudgeSaving();

  bool IsIdle(CPlantRow& row) const;
  void Set(CPlantRow& row, ECondition condition, const CString& state) const {
    row.condition = condition;
    row.state = state;
  }
  bool Report(const CPlantRow& row, const CString& kind, EWeight weight, const CString& text);
  bool IsStale(std::chrono::steady_clock::duration age) const;
  void ShowAge(CPlantRow& row, std::optional<seconds> age, const _timeb& time, bool isStale) const;
  void ShowSampleAge(CPlantRow& row) const;
  void ShowAwayNode(CPlantRow& row, const CNodeState& node);
  void SumUp(CPlantRow& row);
  void AddFailures(CPlantRow& row);
  std::uint64_t FailuresOf(EPart part) const;
  const CNodeState* StateOf(const CPlantRow& row) const;
  const CLogLedger* LedgerOf(const CPlantRow& row) const;
  const CLastLog* Find(const Logs& logs, const CPlantRow& row) const;
  // Each reports what makes a log lose rows, and returns it for the row; empty: it does not.
  CString ReportUnsaved(const CPlantRow& row);
  CString ReportLoss(const CPlantRow& row, const CLogLedger& ledger);
  CString ReportNoneKept(const CPlantRow& row);
  CString FilesText(const CPlantRow& row, const CLogLedger* ledger) const;
  CString FullText(const CPlantRow& row, const CLogLedger& ledger) const;
  std::size_t IndexOf(const CPlantRow& row) const {
    return static_cast<std::size_t>(&row - m_state.m_rows.data());
  }

  CPlantState& m_state;
  const CPlantRun& m_run;
  const CLiveNewest& m_newest;
  const CPlantNow& m_now;
  bool m_hasSample = false, m_isOld = false;
  std::optional<seconds> m_age;  // of the newest sample
  std::vector<CPlantProblem> m_problems;
};

}  // namespace vastra
