#include "host/common/checks.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <tuple>

#include "host/common/check_list.h"

namespace vastra {
namespace {

struct CCheck {
  CCheckFunction* check;
  bool mayPass;  // what it refuses can be right later: a module is installed, a disk is mounted
};
constexpr CCheck kChecks[] = {
    {CheckClock, true},      {CheckDrivers, true},        {CheckDriverSettings, false},
    {CheckCounts, false},    {CheckScalers, false},       {CheckAbsence, false},
    {CheckAliveVars, false}, {CheckReplayed, false},      {CheckNames, false},
    {CheckRepeats, false},   {CheckSpelling, false},      {CheckLogNames, false},
    {CheckFlags, false},     {CheckBaseVars, false},      {CheckUnusedEquations, false},
    {CheckSums, false},      {CheckLimits, false},        {CheckSaving, false},
    {CheckPrefixes, false},  {CheckSharedFolders, false}, {CheckFolderNames, false},
    {CheckFolders, true},    {CheckNotes, false},
};

// The blocks of a configuration file, in order.
constexpr std::string_view kBlocks[] = {"clock",    "input", "outputs", "summaries",
                                        "plcWrite", "smart", "trend"};

// The place of a key in the order of the configuration file: its block, its list, its entry.
auto PlaceOf(const CString& key) {
  const std::string_view view = key.View(), list = view.substr(0, view.find('['));
  const auto rank = std::find(std::begin(kBlocks), std::end(kBlocks), list.substr(0, list.find('.')));
  const char* entry = list.size() < view.size() ? view.data() + list.size() + 1 : "";
  return std::tuple(rank - std::begin(kBlocks), list, std::atoi(entry));
}

}  // namespace

std::vector<CFinding> CheckConfiguration(const CConfiguration& configuration, const CStageNames& names,
                                         const CCheckOptions& options) {
  const CCheckContext context = {configuration, names, options};
  CFindings findings(options.keepsLogs);
  for (const CCheck& check : kChecks) {
    const std::size_t before = findings.All().size();
    check.check(context, findings);
    for (std::size_t i = before; i < findings.All().size(); ++i) findings.All()[i].mayPass = check.mayPass;
  }
  std::stable_sort(findings.All().begin(), findings.All().end(),
                   [](const CFinding& a, const CFinding& b) { return PlaceOf(a.key) < PlaceOf(b.key); });
  return std::move(findings.All());
}

std::vector<CString> LinesOf(const std::vector<CFinding>& findings, bool areRefused) {
  std::vector<CString> lines;
  for (const CFinding& finding : findings)
    if (finding.isRefused == areRefused) lines.push_back(finding.Line());
  return lines;
}

CStageNames GivenNames(const CConfiguration& configuration, const CStageNames& names) {
  const CInputConfig& input = configuration.m_input;
  if (input.m_simulating || input.m_plcNodes.IsEmpty()) return names;
  CStageNames given;
  given.hasSource = true;
  for (const CPlcNodeConfig* node : input.m_plcNodes) {
    given.source.Append(node->m_varNames);
    if (!node->m_aliveVar.IsEmpty()) given.source.Add(node->m_aliveVar);
  }
  AddLaterNames(configuration, given);
  return given;
}

}  // namespace vastra
