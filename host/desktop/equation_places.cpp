#include "host/desktop/equation_places.h"

#include <span>

#include "host/common/key_path.h"
#include "vastra/equations/separator.h"
#include "vastra/stages/single_enable.h"

namespace vastra {
namespace {

// What is the same for all lists of a kind.
struct CEquationKind {
  const char *textKey, *listKey;
};
constexpr CEquationKind kPreEquations = {".preEquationText", ".preEquations"},
                        kStageEquations = {".equationText", ".equations"},
                        kEnableEquations = {".enableText", ".enableEquations"},
                        kSummaryEquations = {".summaryText", ".summaryEquations"};

CStringArray Flags(std::span<const char* const> flags) {
  CStringArray names;
  for (const char* flag : flags) names.Add(flag);
  return names;
}

CStringArray Statements(const CString& text) {
  CStringArray statements, assigned;
  CArray<int, int> positions;
  CEquationSeparator().Separate(text, statements, assigned, positions);
  return statements;
}

CString TextOf(const CString& text, const CStringArray& statements) {
  if (statements == Statements(text)) return text;
  CString joined;
  for (const CString& statement : statements) joined += statement + ";\r\n";
  return joined;
}

// Calls action(object, kind, text, statements, names, are names known, results) for each list. CONFIGURATION
// can be const.
template <class CONFIGURATION, class ACTION>
void VisitEquations(CONFIGURATION& configuration, const CStageNames& names, ACTION action) {
  auto& input = configuration.m_input;
  auto& smart = configuration.m_smart;
  auto& trend = configuration.m_trend;
  action("input", kPreEquations, input.m_preEquationText, input.m_preEquations, names.source, names.hasSource,
         input.m_preNewVars);
  action("smart", kStageEquations, smart.m_equationText, smart.m_equations, names.input, names.hasInput,
         smart.m_inputVars);
  int index = 0;
  for (auto* output : configuration.m_outputs.m_outputs)
    action(KeyPath("outputs", index++), kEnableEquations, output->m_enableText, output->m_enableEquations,
           names.afterSmart, names.hasInput, Flags(kLogFlags));
  index = 0;
  for (auto* summary : configuration.m_summaries.m_summaries) {
    const CString object = KeyPath("summaries", index++);
    action(object, kEnableEquations, summary->m_enableText, summary->m_enableEquations, names.afterSmart,
           names.hasInput, Flags(kSummaryFlags));
    action(object, kSummaryEquations, summary->m_summaryText, summary->m_summaryEquations, names.afterSmart,
           names.hasInput, summary->m_varNames);
  }
  action("trend", kStageEquations, trend.m_equationText, trend.m_equations, names.input, names.hasInput,
         trend.m_extraVars);
}

}  // namespace

std::vector<CEquationPlace> EquationPlaces(const CConfiguration& configuration, const CStageNames& names) {
  std::vector<CEquationPlace> places;
  VisitEquations(configuration, names,
                 [&](const CString& object, const CEquationKind& kind, const CString& text,
                     const CStringArray& statements, const CStringArray& readable, bool areKnown,
                     const CStringArray& results) {
                   places.push_back({object + kind.textKey, object + kind.listKey, TextOf(text, statements),
                                     readable, areKnown, results});
                 });
  return places;
}

bool SetEquations(CConfiguration& configuration, const CString& key, const CString& text) {
  bool isFound = false;
  VisitEquations(configuration, {},
                 [&](const CString& object, const CEquationKind& kind, CString& typed,
                     CStringArray& statements, const CStringArray&, bool, const CStringArray&) {
                   if (!(object + kind.textKey == key)) return;
                   typed = text;
                   statements = Statements(text);
                   isFound = true;
                 });
  return isFound;
}

}  // namespace vastra
