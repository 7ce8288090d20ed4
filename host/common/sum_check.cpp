// Finds the equations that a node which is away once spoils for good: a sum to which NaN was added stays NaN.
// Each list runs on a few made samples: the nodes answer, are away once, and answer again. A variable that is
// NaN at the end is reported.
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "host/common/check_list.h"
#include "host/common/equation_lists.h"
#include "host/common/name_set.h"
#include "vastra/equations/equator.h"

namespace vastra {
namespace {

// Values of the variables that no node which can be away gives: conditions can depend on them.
constexpr float kOthers[] = {0.0f, 1.0f, 1000.0f};
constexpr int kMostStatements = 200'000;  // that run for one list and one of these values
constexpr int kFewestSamples = 5, kMostSamples = 200;

constexpr std::string_view kSampleIsValid = "SampleIsValid";

using CSample = CArray<float, float>;

// A variable that changes while nodes are away.
struct CChange {
  float answers, away;
};
using CChanges = std::map<std::string_view, CChange>;

// The names among all that the statements contain, also in comments: of ten thousand variables a list uses
// few, and is quick to run with these alone.
CStringArray UsedNames(const CStringArray& equations, const CNameSet& all) {
  constexpr const char* kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  std::set<CString> used;
  for (const CString& equation : equations) {
    const std::string_view text = equation.View();
    std::size_t end = 0;
    for (std::size_t begin = 0; (begin = text.find_first_of(kLetters, end)) != text.npos;) {
      end = std::min(text.find_first_not_of(kLetters, begin), text.size());
      if (const CString word(text.substr(begin, end - begin)); all.Has(word)) used.insert(word);
    }
  }
  CStringArray names;
  for (const CString& name : used) names.Add(name);
  return names;
}

// One list, with one value for all variables that do not change.
class CTrialRun {
 public:
  CTrialRun(const CStringArray& used, const CChanges& changes, float others) {
    for (const CString& name : used) {
      const auto found = changes.find(name.View());
      m_answers.Add(found == changes.end() ? others : found->second.answers);
      m_away.Add(found == changes.end() ? others : found->second.away);
    }
  }

  // False if the list does not compile. later: what changes for the stages after this list, of names.
  bool Run(const CStringArray& used, const CStringArray& equations, const CStringArray& names,
           CChanges& later) {
    if (m_tested.Compile(used, equations).statement || m_undisturbed.Compile(used, equations).statement)
      return false;
    m_tested.Run(m_answers);
    m_undisturbed.Run(m_answers);
    m_tested.Run(m_away);
    m_undisturbed.Run(m_answers);
    for (const CString& name : names)
      if (const UINT place = m_tested.FindValue(name); place != CEquator::noValue)
        later[name.View()] = {m_undisturbed.GetValue(m_answers, place), m_tested.GetValue(m_away, place)};
    const int count = std::max(equations.GetSize(), 1);
    for (int i = std::clamp(kMostStatements / count, kFewestSamples, kMostSamples); i > 0; --i) {
      m_tested.Run(m_answers);
      m_undisturbed.Run(m_answers);
    }
    return true;
  }

  // The statements, from 0, whose variable is NaN since the nodes were away. Each variable once.
  std::map<CString, int> Spoilt() const {
    std::map<CString, int> spoilt;
    for (int i = 0; i < m_tested.GetCount(); ++i) {
      const CString& name = m_tested.GetTarget(i);
      const UINT place = m_tested.FindValue(name);
      if (std::isnan(m_tested.GetValue(m_answers, place)) &&
          !std::isnan(m_undisturbed.GetValue(m_answers, place)))
        spoilt.emplace(name, i);
    }
    return spoilt;
  }

 private:
  CSample m_answers, m_away;
  CEquator m_tested, m_undisturbed;
};

class CSumCheck {
 public:
  CSumCheck(const CCheckContext& context, CFindings& findings) : m_context(context), m_findings(findings) {}

  void Check() {
    const std::vector<CEquationList> lists = EquationLists(m_context.configuration, m_context.names);
    for (const float others : kOthers) {
      CChanges changes = OfSource(others);
      if (changes.empty()) return;
      m_skipping.clear();
      for (std::size_t i = 0; i < lists.size(); ++i) CheckList(lists[i], i, others, changes);
    }
    std::map<std::size_t, CString> keys;  // by list: a key takes long to find
    for (const auto& [place, name] : m_spoilt) {
      CString& key = keys[place.first];
      if (key.IsEmpty()) key = lists[place.first].Key();
      Report(key, name, place.second);
    }
  }

 private:
  CChanges OfSource(float others) const {
    CChanges changes;
    for (const CPlcNodeConfig* node : m_context.configuration.m_input.m_plcNodes) {
      if (node->m_absent == EAbsent::fail) continue;
      for (const CString& name : node->m_varNames)
        changes[name.View()] = {others, std::numeric_limits<float>::quiet_NaN()};
      if (!node->m_aliveVar.IsEmpty()) changes[node->m_aliveVar.View()] = {1.0f, 0.0f};
    }
    return changes;
  }

  // The first list is that of the input if there is one: the others receive its results.
  void CheckList(const CEquationList& list, std::size_t index, float others, CChanges& changes) {
    const bool isInput = &list.equations == &m_context.configuration.m_input.m_preEquations;
    const CStringArray &flags = list.own, &results = isInput ? m_context.names.input : flags;
    const CStringArray used = UsedNames(list.equations, NamesOf(list));
    const bool hasChange = std::any_of(used.begin(), used.end(),
                                       [&](const CString& name) { return changes.count(name.View()) != 0; });
    if ((!isInput && !hasChange) || m_skipping.count(list.object)) return;
    CTrialRun trial(used, changes, others);
    CChanges later;
    for (const CString& name : results)
      if (const auto found = changes.find(name.View()); found != changes.end())
        later[name.View()] = found->second;
    if (!trial.Run(used, list.equations, results, later)) return;
    for (const auto& [name, statement] : trial.Spoilt()) m_spoilt.emplace(std::pair(index, statement), name);
    if (isInput)
      changes = std::move(later);
    else if (const auto valid = later.find(kSampleIsValid); valid != later.end() && valid->second.away == 0)
      m_skipping.insert(list.object);
  }

  // Lists of the same stage have the same names.
  const CNameSet& NamesOf(const CEquationList& list) {
    const auto [names, isNew] = m_names.try_emplace(&list.Names());
    if (isNew) names->second.Add(list.Names());
    return names->second;
  }

  void Report(const CString& key, const CString& name, int statement) {
    m_findings.Warn(key, "statement " + CString(std::to_string(statement + 1)) + ": " + Quoted(name) +
                             " stays NaN once a node with \"absent\": \"nan\" or \"hold\" was away; use the "
                             "aliveVar of the node, as in: Sum = Alive ? Sum + x : Sum");
  }

  const CCheckContext& m_context;
  CFindings& m_findings;
  std::map<const CStringArray*, CNameSet> m_names;
  std::set<CString> m_skipping;  // summaries that do not use the sample of a scan in which the node is away
  std::map<std::pair<std::size_t, int>, CString> m_spoilt;  // by list and statement
};

}  // namespace

void CheckSums(const CCheckContext& context, CFindings& findings) {
  if (context.isLive) CSumCheck(context, findings).Check();
}

}  // namespace vastra
