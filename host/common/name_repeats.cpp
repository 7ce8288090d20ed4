// The checks for names that several variables have, and for names that equations cannot use.
#include "host/common/name_repeats.h"

#include <string_view>
#include <unordered_map>

#include "host/common/check_list.h"
#include "host/common/key_path.h"
#include "host/common/name_set.h"
#include "vastra/equations/parser.h"

namespace vastra {
namespace {

using CRepeatAction = std::function<void(const CString&, const CString&, const CString&)>;

// Finds repeats among lists that are added one after the other, which must exist as long as this object.
class CRepeats {
 public:
  explicit CRepeats(CRepeatAction action) : m_action(std::move(action)) {}

  // key: of the list, without an index.
  void Add(const CString& key, const CStringArray& names) {
    for (int i = 0; i < names.GetSize(); ++i) {
      const auto [former, isNew] = m_places.emplace(names[i].View(), CPlace{key, i});
      if (!isNew) m_action(KeyPath(key, i), names[i], KeyPath(former->second.key, former->second.index));
    }
  }
  // Names of another part, which key names.
  void AddGiven(const CString& key, const CStringArray& names) {
    for (const CString& name : names) m_places.emplace(name.View(), CPlace{key, -1});
  }

 private:
  struct CPlace {
    CString key;
    int index;
  };
  static CString KeyPath(const CString& key, int index) {
    return index < 0 ? key : vastra::KeyPath(key, index);
  }

  const CRepeatAction m_action;
  std::unordered_map<std::string_view, CPlace> m_places;
};

CString CannotUse(const CString& name, int others) {
  const CString more = others == 0 ? CString() : " and " + CString(std::to_string(others)) + " more";
  return "equations cannot use " + Quoted(name) + more +
         ": a name for them has letters (A to Z, a to z), digits and single underscores, a letter first, and "
         "is not a word of the language";
}

// One line for a list, which can be long.
void CheckSpellingOf(const CString& key, const CStringArray& names, CFindings& findings) {
  int first = -1, others = 0;
  for (int i = 0; i < names.GetSize(); ++i) {
    if (IsVariableName(names[i])) continue;
    others += first >= 0;
    if (first < 0) first = i;
  }
  if (first >= 0) findings.Warn(KeyPath(key, first), CannotUse(names[first], others));
}

}  // namespace

void ForEachNodeRepeat(const CInputConfig& input, const CRepeatAction& action) {
  CRepeats repeats(action);
  int index = 0;
  for (const CPlcNodeConfig* node : input.m_plcNodes)
    repeats.Add(KeyPath("input.plcNodes", index++) + ".varNames", node->m_varNames);
}

void CheckRepeats(const CCheckContext& context, CFindings& findings) {
  const CConfiguration& configuration = context.configuration;
  const CStringArray& given = context.names.input;
  const auto warn = [&](const CString& key, const CString& name, const CString& former) {
    findings.Warn(key, Quoted(name) + " is in " + former + " already");
  };
  const auto check = [&](const CString& key, const CStringArray& names, const CStringArray& before = {}) {
    CRepeats repeats(warn);
    repeats.AddGiven("the variables of the input", before);
    repeats.Add(key, names);
  };
  if (context.isLive) ForEachNodeRepeat(configuration.m_input, warn);
  if (configuration.m_input.m_preprocess) check("input.preNewVars", configuration.m_input.m_preNewVars);
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    check(KeyPath("outputs", index++) + ".varNames", output->m_varNames);
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    check(KeyPath("summaries", index++) + ".varNames", summary->m_varNames);
  if (!context.names.hasInput) return;
  check("smart.outputVars", configuration.m_smart.m_outputVars, given);
  if (configuration.m_trend.m_calculateExtra)
    check("trend.extraVars", configuration.m_trend.m_extraVars, given);
}

// What equations compute has a name that they can use, so only the others are looked at.
void CheckSpelling(const CCheckContext& context, CFindings& findings) {
  const CConfiguration& configuration = context.configuration;
  int index = 0;
  if (context.isLive)
    for (const CPlcNodeConfig* node : configuration.m_input.m_plcNodes) {
      const CString key = KeyPath("input.plcNodes", index++);
      CheckSpellingOf(key + ".varNames", node->m_varNames, findings);
      if (!node->m_aliveVar.IsEmpty() && !IsVariableName(node->m_aliveVar))
        findings.Warn(key + ".aliveVar", CannotUse(node->m_aliveVar, 0));
    }
  CheckSpellingOf("smart.outputVars", configuration.m_smart.m_outputVars, findings);
}

}  // namespace vastra
