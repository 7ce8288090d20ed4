#include "host/desktop/plant_parts.h"

#include <algorithm>
#include <iterator>

#include "host/common/key_path.h"
#include "host/common/shown_text.h"
#include "host/common/stage_names.h"
#include "host/desktop/plant_words.h"

namespace vastra {
namespace {

// By EPart. The members of a list have the key of the list, and a word for what they are.
struct CPartWords {
  const char *key, *word;
  bool isMember;
};
constexpr CPartWords kPartWords[] = {{"input", "Input", false},
                                     {"input.plcNodes", "node", true},
                                     {"smart", "Smart", false},
                                     {"outputs", "Outputs", false},
                                     {"outputs", "output", true},
                                     {"summaries", "Summaries", false},
                                     {"summaries", "summary", true},
                                     {"plcWrite", "PLC write", false},
                                     {"plcWrite.nodes", "written node", true},
                                     {"trend", "Trend", false}};
static_assert(std::size(kPartWords) == static_cast<std::size_t>(EPart::count));

const CPartWords& PartWordsOf(EPart part) { return kPartWords[static_cast<std::size_t>(part)]; }

CString CountWords(std::int64_t count, const char* noun) {
  return CString(Counted(static_cast<std::uint64_t>(count), noun));
}

CString InputWords(const CInputConfig& input, int variables) {
  if (!input.m_simulating && input.m_plcNodes.IsEmpty())
    return "no PLC node yet: File > Configuration adds one";
  const std::int64_t files = input.m_inputFiles.GetCount();
  CString words = !input.m_simulating ? CountWords(input.m_plcNodes.GetCount(), "PLC node")
                                      : CountWords(files, "log") + " to replay";
  if (variables >= 0) words += ", " + CountWords(variables, "variable");
  if (input.m_asFastAsPossible) return words + ", as fast as possible";
  return words + ", every " + CString(std::to_string(input.m_scanPeriod)) + " ms";
}

// What it computes, if that is known: the feed of a logger does not say.
CString SmartWords(const CSmartConfig& smart) {
  return smart.m_outputVars.IsEmpty() ? CString()
                                      : CountWords(smart.m_outputVars.GetSize(), "output variable");
}

CString FormWords(int rp, int csv) {
  return rp && csv ? "binary and CSV" : rp ? "binary" : csv ? "CSV" : "no file";
}

CPlantRow RowOf(EPart part, const CString& what) {
  CPlantRow row;
  row.part = part;
  row.name = PartWordsOf(part).word;
  row.what = what;
  return row;
}

CPlantRow RowOf(EPart part, int index, const CPlcNodeConfig& node) {
  CPlantRow row;
  row.part = part;
  row.index = index;
  row.name = node.m_nodeName;
  row.what = CountWords(node.m_varNames.GetSize(), "variable");
  return row;
}

template <class CONFIG>
CPlantRow RowOf(EPart part, int index, const CONFIG& log, UINT mostLogs) {
  CPlantRow row;
  row.part = part;
  row.index = index;
  row.name = log.m_name;
  row.what = FormWords(log.m_saveRp, log.m_saveCsv);
  if (!log.m_directory.IsEmpty()) row.what += " to " + log.m_directory;
  row.folder = log.m_directory;
  row.savesFiles = log.m_saveRp || log.m_saveCsv;
  row.mostLogs = mostLogs;
  row.mostRows = log.m_maxSamples;
  return row;
}

}  // namespace

const char* WordOf(ECondition condition) {
  constexpr const char* kWords[] = {"off", "good", "waiting", "away", "failed"};
  return kWords[static_cast<std::size_t>(condition)];
}

bool CPlantRow::IsChild() const { return PartWordsOf(part).isMember; }

CString CPlantRow::Key() const {
  const char* key = PartWordsOf(part).key;
  return IsChild() ? KeyPath(key, index) : CString(key);
}

CString CPlantRow::Called() const {
  return CString(PartWordsOf(part).word) + " \"" + ShortText(name.IsEmpty() ? Key() : name) + "\"";
}

std::vector<CPlantRow> RowsOf(const CConfiguration& configuration, int inputVariables) {
  std::vector<CPlantRow> rows = {RowOf(EPart::input, InputWords(configuration.m_input, inputVariables))};
  int index = 0;
  if (!configuration.m_input.m_simulating)
    for (const CPlcNodeConfig* node : configuration.m_input.m_plcNodes)
      rows.push_back(RowOf(EPart::node, index++, *node));
  if (UsesSmart(configuration.m_smart))
    rows.push_back(RowOf(EPart::smart, SmartWords(configuration.m_smart)));
  rows.push_back(RowOf(EPart::outputs, ""));
  index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    rows.push_back(RowOf(EPart::output, index++, *output, output->m_maxLogs));
  rows.push_back(RowOf(EPart::summaries, ""));
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    rows.push_back(RowOf(EPart::summary, index++, *summary, summary->m_maxSummaries));
  rows.push_back(RowOf(EPart::plcWrite, ""));
  index = 0;
  for (const CPlcSingleConfig* node : configuration.m_plcWrite.m_nodes)
    rows.push_back(RowOf(EPart::writtenNode, index++, node->m_node));
  rows.push_back(RowOf(EPart::trend, TrendWords(configuration.m_trend)));
  return rows;
}

CString TrendWords(const CTrendConfig& trend) {
  return CountWords(trend.m_extraVars.GetSize(), "extra variable");
}

bool AreSameParts(const std::vector<CPlantRow>& a, const std::vector<CPlantRow>& b) {
  return std::ranges::equal(a, b, [](const CPlantRow& one, const CPlantRow& other) {
    return one.part == other.part && one.name == other.name;
  });
}

}  // namespace vastra
