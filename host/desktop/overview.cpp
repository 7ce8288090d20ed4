#include "host/desktop/overview.h"

#include "host/common/stage_names.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

enum EColumn { columnPart, columnState, columnWhat };

CString Count(std::int64_t count, const char* one, const char* many) {
  return CString(std::to_string(count)) + " " + (count == 1 ? one : many);
}

CString Failed(std::uint64_t failed) {
  return failed ? Count(static_cast<std::int64_t>(failed), "failed write", "failed writes") : CString();
}

CString InputWords(const CInputConfig& input, int variables) {
  if (!input.m_simulating && input.m_plcNodes.IsEmpty())
    return "no PLC node yet: File > Configuration adds one";
  CString words = input.m_simulating ? Count(input.m_inputFiles.GetCount(), "log to replay", "logs to replay")
                                     : Count(input.m_plcNodes.GetCount(), "PLC node", "PLC nodes");
  if (variables >= 0) words += ", " + Count(variables, "variable", "variables");
  if (input.m_asFastAsPossible) return words + ", as fast as possible";
  return words + ", every " + CString(std::to_string(input.m_scanPeriod)) + " ms";
}

CString Forms(int rp, int csv) {
  return rp && csv ? "binary and CSV" : rp ? "binary" : csv ? "CSV" : "no file";
}

}  // namespace

COverview::COverview(QWidget* parent) : QTreeWidget(parent) {
  setHeaderLabels({"Part", "Now", "What it does"});
  setAccessibleName("Overview");
  setAllColumnsShowFocus(true);
  ShowHint("Nothing is open", "File > New starts a configuration, File > Open reads one from disk");
}

QTreeWidgetItem& COverview::AddPart(const char* part, const CString& what) {
  auto* item = new QTreeWidgetItem(this, QStringList{part, "", ToScreen(what)});
  item->setExpanded(true);
  return *item;
}

void COverview::ShowHint(const char* state, const char* hint) {
  clear();
  new QTreeWidgetItem(this, QStringList{state, "", hint});
  resizeColumnToContents(columnPart);
}

void COverview::ShowConfiguration(const CConfiguration& configuration, int inputVariables) {
  clear();
  const auto add = [](QTreeWidgetItem& part, const CString& name, const CString& what) {
    auto* item = new QTreeWidgetItem(&part, QStringList{ToScreen(name), "", ToScreen(what)});
    item->setToolTip(columnWhat, ToScreen(what));  // the column may be too narrow for a path
  };
  QTreeWidgetItem& input = AddPart("Input", InputWords(configuration.m_input, inputVariables));
  for (const CPlcNodeConfig* node : configuration.m_input.m_plcNodes)
    add(input, node->m_nodeName, Count(node->m_varNames.GetSize(), "variable", "variables"));
  if (UsesSmart(configuration.m_smart))
    AddPart("Smart",
            Count(configuration.m_smart.m_outputVars.GetSize(), "output variable", "output variables"));
  QTreeWidgetItem& outputs = AddPart("Outputs", "");
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    add(outputs, output->m_name, Forms(output->m_saveRp, output->m_saveCsv) + " to " + output->m_directory);
  QTreeWidgetItem& summaries = AddPart("Summaries", "");
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    add(summaries, summary->m_name,
        Forms(summary->m_saveRp, summary->m_saveCsv) + " to " + summary->m_directory);
  QTreeWidgetItem& plcWrite = AddPart("PLC write", "");
  for (const CPlcSingleConfig* node : configuration.m_plcWrite.m_nodes)
    add(plcWrite, node->m_node.m_nodeName, Count(node->m_node.m_varNames.GetSize(), "variable", "variables"));
  AddPart("Trend", "");
  ShowTrend(configuration.m_trend);
  resizeColumnToContents(columnPart);
  setColumnWidth(columnState, fontMetrics().averageCharWidth() * 20);
}

void COverview::ShowTrend(const CTrendConfig& trend) {
  Show("Trend", columnWhat, Count(trend.m_extraVars.GetSize(), "extra variable", "extra variables"));
}

void COverview::Show(const char* part, int column, const CString& text) {
  for (QTreeWidgetItem* item : findItems(part, Qt::MatchExactly, columnPart))
    item->setText(column, ToScreen(text));
}

void COverview::ShowCounts(const CScanCounts& counts) {
  const auto& failed = counts.failedWrites;
  Show("Input", columnState, Count(static_cast<std::int64_t>(counts.read), "sample", "samples"));
  Show("Smart", columnState, Failed(failed.smart));
  Show("Outputs", columnState, Failed(failed.outputs));
  Show("Summaries", columnState, Failed(failed.summaries));
  Show("PLC write", columnState, Failed(failed.plcWrite));
  Show("Trend", columnState, Failed(failed.trend));
}

}  // namespace vastra
