// The rows of outputs and summaries.
#include <algorithm>

#include "host/common/shown_text.h"
#include "host/desktop/plant_look.h"
#include "host/desktop/plant_words.h"

namespace vastra {
namespace {

CString FileName(const CString& path) { return path.Mid(path.ReverseFind('/') + 1); }

}  // namespace

// The accounts of the outputs come before those of the summaries.
const CLogLedger* CPlantLook::LedgerOf(const CPlantRow& row) const {
  if (!m_run.keepsLogs) return nullptr;
  const auto outputs = std::ranges::count(m_state.m_rows, EPart::output, &CPlantRow::part);
  const auto before = row.part == EPart::output ? 0 : outputs;
  const auto place = static_cast<std::size_t>(before + row.index);
  return m_newest.ledger && place < m_newest.ledger->size() ? &(*m_newest.ledger)[place].ledger : nullptr;
}

const CLastLog* CPlantLook::Find(const Logs& logs, const CPlantRow& row) const {
  const CString key = row.Key();
  const auto found = std::ranges::find_if(logs, [&](const auto& log) { return log->source.key == key; });
  return found == logs.end() ? nullptr : found->get();
}

// A file that waits for the disk, or is lost already without a keeper.
CString CPlantLook::ReportUnsaved(const CPlantRow& row) {
  const CLastLog* log = Find(m_newest.unsaved, row);
  if (!log) return {};
  CString why = "not saved" + Because(log->reason);
  Report(row, "not saved, " + log->reason + ",", EWeight::error,
         "The " + row.Called() + " is " + why + " (" + ShortText(log->path) + ")");
  return why;
}

// Empty also if the user has acknowledged the loss.
CString CPlantLook::ReportLoss(const CPlantRow& row, const CLogLedger& ledger) {
  CRisingCount& losses = m_state.m_losses[IndexOf(row)];
  losses.Note(ledger.lost, m_now.steady);
  if (ledger.lost == 0) return {};
  const CString cause = ledger.losses.empty() ? CString() : ledger.losses.back().cause;
  const CString lost = CString(Counted(ledger.lost, "row")) + " lost" + Because(cause);
  const CString kind = "lost " + NumberText(static_cast<std::uint64_t>(losses.Times()));
  return Report(row, kind, EWeight::error, "The " + row.Called() + ": " + lost) ? lost : CString();
}

CString CPlantLook::ReportNoneKept(const CPlantRow& row) {
  if (!row.savesFiles || row.mostLogs > 0) return {};
  CString removed = "keeps 0 logs: each log is removed at once";
  Report(row, "none kept", EWeight::error, "The " + row.Called() + " " + removed);
  return removed;
}

void CPlantLook::JudgeLog(CPlantRow& row) {
  const CLogLedger* ledger = LedgerOf(row);
  row.rows = ledger && ledger->taken ? NumberText(ledger->taken) : CString();
  row.files = FilesText(row, ledger);
  for (const CString& fault :
       {ReportUnsaved(row), ledger ? ReportLoss(row, *ledger) : CString(), ReportNoneKept(row)})
    if (!fault.IsEmpty()) return Set(row, ECondition::failed, fault);
  if (!row.savesFiles) return Set(row, ECondition::off, "saves no file");
  if (IsIdle(row)) return;
  // A file is reported before the account that has its rows.
  const bool hasRows = Find(m_newest.saved, row) || (ledger ? ledger->taken > 0 : m_hasSample);
  Set(row, hasRows ? ECondition::good : ECondition::waiting,
      hasRows ? WordOf(ECondition::good) : "no row yet");
}

CString CPlantLook::FilesText(const CPlantRow& row, const CLogLedger* ledger) const {
  CString text;
  const CLastLog* last = Find(m_newest.saved, row);
  if (last) text = ShortText(FileName(last->path)) + " to " + ClockText(last->last, m_now.wall);
  if (!ledger) return text;
  const std::pair<std::uint64_t, const char*> places[] = {{ledger->inMemory, " in memory"},
                                                          {ledger->inJournal, " in a journal"},
                                                          {ledger->recovered, " recovered"},
                                                          {ledger->lost, " lost"}};
  for (const auto& [rows, place] : places)
    if (rows) AppendItem(text, NumberText(rows) + place);
  if (last && m_run.isRunning) AppendItem(text, FullText(row, *ledger));
  return text;
}

// When the log that is open is full, by the part of the samples that were logged so far. Only after a log has
// been closed, since the first one can continue one of an earlier run; not of a summary, whose rows come when
// its equations want.
CString CPlantLook::FullText(const CPlantRow& row, const CLogLedger& ledger) const {
  const std::uint64_t open = ledger.inMemory + ledger.inJournal;
  if (row.part != EPart::output || m_run.period.count() == 0 || ledger.taken == 0 || open > row.mostRows ||
      m_isOld || Find(m_newest.unsaved, row))
    return {};
  constexpr double kLongest = 3e7;  // seconds, about a year
  const double samples = static_cast<double>(row.mostRows - open) * static_cast<double>(ledger.offered) /
                         static_cast<double>(ledger.taken);
  const double wait = samples * static_cast<double>(m_run.period.count()) / 1000;
  if (wait > kLongest) return {};
  _timeb full = m_now.wall;
  full.time += static_cast<std::int32_t>(wait);
  full.time -= full.time % 10;  // the rest would change with each look
  return "full about " + ClockText(full, m_now.wall);
}

}  // namespace vastra
