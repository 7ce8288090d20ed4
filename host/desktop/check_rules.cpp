#include "host/desktop/check_rules.h"

#include <algorithm>

#include "host/common/shown_text.h"
#include "host/run/open_fault.h"

namespace vastra {
namespace {

CString WithoutLineEnds(const CString& text) { return CString(OneLine(text.View())); }

// The part of a key that has a stage of its own.
std::string_view StageOf(const CString& key) { return key.View().substr(0, key.View().find_first_of(".[:")); }

CCheckEntry EntryOf(const CFinding& finding, const CPlaceWords::CFault& fault) {
  return {finding.isRefused, finding.isHarmless, finding.key, fault.place, WithoutLineEnds(fault.text)};
}

// The statement without the line breaks before it, and a caret under the fault.
CString MarkedStatement(const CEquationFinding& fault) {
  const CMarkedPlace marked =
      MarkPlace(fault.statement.View(), static_cast<std::size_t>(std::max(0, fault.offset)));
  return CString(marked.line + "\n" + marked.caret);
}

CCheckEntry EntryOf(const CEquationFinding& fault, const CPlaceWords& words) {
  return {
      true, false, fault.key, words.Equation(fault.key, fault.number), fault.text, MarkedStatement(fault)};
}

// The faults of stages that no other error explains. A write stage that is off is not opened.
void AddOpenFaults(const CConfiguration& configuration, bool writes, const CPlaceWords& words,
                   std::vector<CCheckEntry>& entries) {
  for (const EStage stage : {EStage::input, EStage::outputs, EStage::summaries, EStage::plcWrite}) {
    if (stage == EStage::plcWrite && !writes) continue;
    const CString line = FindOpenFault(configuration, stage);
    const std::string_view part = StageOf(line);
    if (line.IsEmpty() || std::ranges::any_of(entries, [&](const CCheckEntry& entry) {
          return entry.isError && StageOf(entry.key) == part;
        }))
      continue;
    const CString key = line.Left(std::max(0, line.Find(':')));
    // A start would fail by it, so the warning about the same is left out.
    std::erase_if(entries, [&](const CCheckEntry& entry) { return entry.key == key; });
    entries.push_back(EntryOf({true, key, {}}, words.Fault(line)));
  }
}

}  // namespace

std::vector<CCheckEntry> CheckEntries(const CRun& run, const CRunPlan& plan, const CPlaceWords& words) {
  std::vector<CCheckEntry> entries;
  for (const CFinding& finding : run.Findings(plan))
    entries.push_back(EntryOf(finding, words.Fault(finding.key, finding.text)));
  for (const CEquationFinding& fault : run.EquationFaults(plan)) entries.push_back(EntryOf(fault, words));
  for (const CString& log : plan.badLogs) {
    CCheckEntry entry = EntryOf({false, "input.inputFiles", {}}, words.Fault(log));
    if (entry.place.IsEmpty()) entry.place = words.Place(entry.key);
    entry.text += ": the log is left out";
    entries.push_back(entry);
  }
  AddOpenFaults(plan.configuration, run.WritesToPlcs(plan), words, entries);
  std::stable_partition(entries.begin(), entries.end(),
                        [](const CCheckEntry& entry) { return entry.isError; });
  return entries;
}

bool HasError(const std::vector<CCheckEntry>& entries) {
  return std::ranges::any_of(entries, &CCheckEntry::isError);
}

CString Verdict(const std::vector<CCheckEntry>& entries) {
  const auto errors = static_cast<std::size_t>(std::ranges::count_if(entries, &CCheckEntry::isError));
  const std::size_t warnings = entries.size() - errors;
  if (entries.empty()) return "Nothing is wrong: the logger can start.";
  std::string text = errors ? Counted(errors, "error") : std::string();
  if (warnings) text += (errors ? " and " : "") + Counted(warnings, "warning");
  return CString(text) + (errors ? ": the logger cannot start." : ": the logger can start.");
}

}  // namespace vastra
