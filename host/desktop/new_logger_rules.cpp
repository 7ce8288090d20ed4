#include "host/desktop/new_logger_rules.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "host/common/configuration_json.h"
#include "host/common/demo.h"
#include "host/common/name_set.h"
#include "host/common/paths.h"
#include "host/common/shown_text.h"
#include "vastra/equations/separator.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::int64_t kMsPerHour = 3'600'000, kMsPerDay = 24 * kMsPerHour;  // milliseconds
constexpr std::int64_t kMostLogBytes = std::int64_t{256} << 20;  // a log is in memory until it ends
constexpr std::int64_t kMostCounted = 16'000'000;  // steps; a variable of equations counts no further
constexpr UINT kMostKeptLogs = 100'000;
constexpr std::uint64_t kFreeBytes = 1'000'000'000;  // that stay on the disk

std::int64_t SamplesIn(std::int64_t milliseconds, const CLoggerPlan& plan) {
  return std::max<std::int64_t>(1, milliseconds / std::max(plan.scanPeriod, 1));
}

std::int64_t SamplesOfLog(const CLoggerPlan& plan) {
  return SamplesIn(plan.logEnd == ELogEnd::hour ? kMsPerHour : kMsPerDay, plan);
}

std::int64_t StepsOfSummary(const CLoggerPlan& plan) {
  return SamplesIn(std::int64_t{1000} * plan.summarySeconds, plan);
}

CStringArray NamesOfRows(const CLoggerPlan& plan) {
  CStringArray names;
  for (const CVariableRow& row : plan.rows) {
    CString name = row.name;
    name.TrimLeft();
    name.TrimRight();
    names.Add(name);
  }
  return names;
}

// Names for what the equations compute, none of which is a variable of the plan or used twice.
class CFreeNames {
 public:
  explicit CFreeNames(const CLoggerPlan& plan) {
    for (const CString& name : NamesOfRows(plan)) m_used.insert(name);
  }
  CString Take(const CString& wanted) {
    CString name = wanted;
    for (int i = 2; !m_used.insert(name).second; ++i) name = wanted + CString(std::to_string(i));
    return name;
  }

 private:
  std::set<CString> m_used;
};

// The letters and digits of the node's name.
CString AliveName(const CLoggerPlan& plan) {
  std::string name;
  for (const char letter : plan.nodeName.Std())
    if (static_cast<unsigned char>(letter) < 0x80 && std::isalnum(static_cast<unsigned char>(letter)))
      name += letter;
  if (name.empty() || !std::isalpha(static_cast<unsigned char>(name.front()))) name = "Device" + name;
  return CFreeNames(plan).Take(CString(name) + "Alive");
}

// text with each of the words in capitals replaced.
CString Filled(const char* text, std::initializer_list<std::pair<std::string_view, CString>> words) {
  std::string filled;
  for (std::string_view rest = text; !rest.empty();) {
    const auto* word =
        std::ranges::find_if(words, [&](const auto& each) { return rest.starts_with(each.first); });
    filled += word == words.end() ? std::string(1, rest.front()) : word->second.Std();
    rest.remove_prefix(word == words.end() ? 1 : word->first.size());
  }
  return CString(filled);
}

void SetEquations(const CString& text, CString& typed, CStringArray& equations) {
  CStringArray variables;
  CArray<int, int> positions;
  typed = text;
  equations.RemoveAll();
  CEquationSeparator().Separate(text, equations, variables, positions);
}

CString FolderOf(const CLoggerPlan& plan, const CString& folder) {
  return MakeAbsolute(DirectoryOf(plan.path), folder);
}

// A span of time in words: "1 min".
CString SpanText(std::int64_t seconds) {
  constexpr std::pair<int, const char*> kSpans[] = {{86400, " d"}, {3600, " h"}, {60, " min"}};
  for (const auto& [length, unit] : kSpans)
    if (seconds >= length && seconds % length == 0) return CString(std::to_string(seconds / length)) + unit;
  return CString(std::to_string(seconds)) + " s";
}

// The configuration, part by part.
class CPlanWriter {
 public:
  explicit CPlanWriter(const CLoggerPlan& plan)
      : m_plan(plan), m_names(NamesOfRows(plan)), m_alive(AliveName(plan)) {}

  CConfiguration Write() {
    AddNode();
    AddOutput();
    if (m_plan.summarises) AddSummary();
    return std::move(m_configuration);
  }

 private:
  void AddNode() {
    auto node = std::make_unique<CPlcNodeConfig>();
    node->m_nodeName = m_plan.nodeName;
    node->m_driver = DriverOf(m_plan);
    node->m_varNames = m_names;
    node->m_absent = EAbsent::nan;
    node->m_aliveVar = m_alive;
    for (int i = 0; i < m_names.GetSize(); ++i) {
      const CVariableRow& row = m_plan.rows[static_cast<std::size_t>(i)];
      if (!row.unit.IsEmpty() || !row.comment.IsEmpty())
        m_configuration.m_variables[m_names[i]] = {row.unit, row.comment};
      if (ScaleOf(row) == 1) continue;
      CScalerConfigNode rule;
      rule.m_varName = m_names[i];
      rule.m_scale = ScaleOf(row);
      node->m_scaler.m_nodes.Add(rule);
    }
    m_configuration.m_variables[m_alive] = {"", "1 if " + m_plan.nodeName + " has answered, else 0"};
    m_configuration.m_input.m_scanPeriod = static_cast<UINT>(m_plan.scanPeriod);
    m_configuration.m_input.m_plcNodes.AddTail(node.release());
  }

  void AddOutput() {
    auto output = std::make_unique<COutputConfig>();
    const bool isBatch = m_plan.logEnd == ELogEnd::batch;
    SetEquations(isBatch ? BatchEquations() : CString("WriteToLog = 1;"), output->m_enableText,
                 output->m_enableEquations);
    output->m_name = isBatch ? "A log for each " + m_plan.batchVariable
                             : CString(m_plan.logEnd == ELogEnd::hour ? "A log each hour" : "A log each day");
    output->m_varNames = m_names;
    output->m_varNames.Add(m_alive);
    output->m_saveRp = m_plan.saveRp;
    output->m_saveCsv = m_plan.saveCsv;
    output->m_maxLogs = kMostKeptLogs;
    output->m_maxSamples = static_cast<UINT>(SamplesOfLog(m_plan));
    output->m_retention = {static_cast<double>(m_plan.keepDays), 0, kFreeBytes};
    output->m_directory = FolderOf(m_plan, m_plan.logFolder);
    output->m_nameVariable = isBatch ? m_plan.batchVariable : kSystemTime;
    output->m_usePrefix = isBatch;
    if (isBatch) output->m_prefix = m_plan.batchVariable;
    m_configuration.m_outputs.m_outputs.AddTail(output.release());
  }

  // While the device is away there is no batch: nothing is logged, and the log does not end.
  CString BatchEquations() const {
    CFreeNames names(m_plan);
    names.Take(m_alive);
    return Filled(
        "RestartLog = ALIVE == 0 ? 0 : ((SEEN > 0) && (BATCH != LAST));\r\n"
        "SEEN = SEEN > 0 || ALIVE > 0;\r\nLAST = ALIVE == 0 ? LAST : BATCH;\r\nWriteToLog = ALIVE;",
        {{"ALIVE", m_alive},
         {"BATCH", m_plan.batchVariable},
         {"SEEN", names.Take("Seen")},
         {"LAST", names.Take("Last")}});
  }

  // A row has each function of each variable, of the samples in which the device has answered, and their
  // number.
  void AddSummary() {
    auto summary = std::make_unique<CSummaryConfig>();
    CFreeNames names(m_plan);
    names.Take(m_alive);
    const CString steps(std::to_string(StepsOfSummary(m_plan)));
    SetEquations(
        Filled("TICK = TICK == N ? 1 : TICK + 1;\r\nSampleIsValid = 1;\r\nWriteToSummary = TICK == N;",
               {{"TICK", names.Take("Tick")}, {"N", steps}}),
        summary->m_enableText, summary->m_enableEquations);
    const CString step = names.Take("Step"), count = names.Take("Samples");
    CString text = Filled("STEP = STEP == N ? 1 : STEP + 1;\r\nCOUNT = (STEP == 1 ? 0 : COUNT) + ALIVE;",
                          {{"STEP", step}, {"N", steps}, {"COUNT", count}, {"ALIVE", m_alive}});
    for (const CString& name : m_names) {
      if (m_plan.leftOut.contains(name)) continue;
      for (const int index : m_plan.functions) {
        const CSummaryFunction& function = kSummaryFunctions[index];
        const CString result = names.Take(name + "_" + function.name);
        summary->m_varNames.Add(result);
        NoteResult(result, name, function.name);
        text += "\r\n";
        text += Filled(
            function.equation,
            {{"RESULT", result}, {"VALUE", name}, {"ALIVE", m_alive}, {"STEP", step}, {"COUNT", count}});
      }
    }
    summary->m_varNames.Add(count);
    m_configuration.m_variables[count] = {"", "samples in a row of the summary"};
    SetEquations(text, summary->m_summaryText, summary->m_summaryEquations);
    SetFiles(*summary);
    m_configuration.m_summaries.m_summaries.AddTail(summary.release());
  }

  void NoteResult(const CString& result, const CString& name, const char* function) {
    const auto note = m_configuration.m_variables.find(name);
    const CString unit = note == m_configuration.m_variables.end() ? CString() : note->second.m_unit;
    m_configuration.m_variables[result] = {
        unit, CString(function) + " of " + name + " in " + SpanText(m_plan.summarySeconds)};
  }

  void SetFiles(CSummaryConfig& summary) const {
    summary.m_name = "A row each " + SpanText(m_plan.summarySeconds);
    summary.m_saveRp = m_plan.saveRp;
    summary.m_saveCsv = m_plan.saveCsv;
    summary.m_maxSummaries = kMostKeptLogs;
    summary.m_retention = {static_cast<double>(m_plan.keepDays), 0, kFreeBytes};
    summary.m_directory = FolderOf(m_plan, m_plan.summaryFolder);
  }

  const CLoggerPlan& m_plan;
  const CStringArray m_names;
  const CString m_alive;
  CConfiguration m_configuration;
};

CString MakeFolder(const CString& folder) {
  std::error_code failed;
  std::filesystem::create_directories(folder.Std(), failed);
  return failed ? folder + ": " + CString(failed.message()) : CString();
}

// The folders of the plan, that of the configuration first.
std::vector<CString> FoldersOf(const CLoggerPlan& plan) {
  std::vector<CString> folders = {DirectoryOf(plan.path), FolderOf(plan, plan.logFolder)};
  if (plan.summarises) folders.push_back(FolderOf(plan, plan.summaryFolder));
  return folders;
}

CString Indented(const CString& equations) {
  std::string lines = "    ";
  for (const char letter : equations.Std())
    if (letter != '\r') lines += letter == '\n' ? std::string("\n    ") : std::string(1, letter);
  return CString(lines);
}

}  // namespace

CString DeviceFault(const CLoggerPlan& plan) {
  if (plan.nodeName.IsEmpty()) return "The device needs a name.";
  return plan.rows.size() > static_cast<std::size_t>(kMostVariables) ? kTooMany : "";
}

CString LogsFault(const CLoggerPlan& plan) {
  const CStringArray names = NamesOfRows(plan);
  if (plan.logFolder.IsEmpty()) return "The logs need a folder.";
  if (!plan.saveRp && !plan.saveCsv) return "Choose binary logs, text files or both.";
  if (plan.logEnd == ELogEnd::batch && FindIn(names, plan.batchVariable) < 0)
    return "Choose the variable whose change begins a new log.";
  const std::int64_t samples = SamplesOfLog(plan), bytes = samples * (16 + 4 * (names.GetSize() + 1));
  if (plan.logEnd == ELogEnd::hour || bytes <= kMostLogBytes) return {};
  return "A log can have " + CString(std::to_string(samples)) +
         " samples, and is in memory until it ends: " + CString(std::to_string(bytes >> 20)) +
         " MB. Choose a log each hour, or a longer scan period.";
}

CString SummaryFault(const CLoggerPlan& plan) {
  if (!plan.summarises) return {};
  const CStringArray names = NamesOfRows(plan);
  if (plan.functions.empty()) return "Choose at least one function.";
  if (std::ranges::all_of(names, [&](const CString& name) { return plan.leftOut.contains(name); }))
    return "Choose at least one variable.";
  if (std::int64_t{1000} * plan.summarySeconds < plan.scanPeriod)
    return "A row of the summary needs at least one sample: its period is shorter than the scan period.";
  if (StepsOfSummary(plan) > kMostCounted)
    return "A row of the summary would have more than 16000000 samples: choose a shorter period.";
  if (plan.summaryFolder.IsEmpty()) return "The summary needs a folder.";
  if (MakeAbsolute("/", plan.summaryFolder) == MakeAbsolute("/", plan.logFolder))
    return "The summary needs a folder of its own.";
  return {};
}

CString PathFault(const CLoggerPlan& plan) {
  if (plan.path.IsEmpty()) return "The configuration needs a file.";
  if (plan.path.Right(5).CompareNoCase(".json") != 0) return "The file of the configuration ends with .json.";
  if (FileExists(plan.path)) return plan.path + " exists already: choose another name.";
  return {};
}

std::vector<CVariableRow> FirstRows(const CLoggerPlan& plan, int values) {
  if (plan.Registers().isUsed) return RowsOfRegisters(plan.driver.text2, plan.rows, plan.Registers());
  std::vector<CVariableRow> rows = plan.rows;
  const auto count = static_cast<std::size_t>(std::clamp(values, 1, kMostVariables));
  rows.resize(std::min(rows.size(), count));
  while (rows.size() < count) rows.push_back({.name = "Value" + CString(std::to_string(rows.size() + 1))});
  return rows;
}

DriverConfig DriverOf(const CLoggerPlan& plan) {
  DriverConfig driver = plan.driver;
  if (plan.Registers().isUsed && !plan.rows.empty()) driver.text2 = RegisterList(plan.rows, plan.Registers());
  driver.variableCount = static_cast<UINT>(plan.rows.size());
  return driver;
}

CConfiguration ConfigurationOf(const CLoggerPlan& plan) { return CPlanWriter(plan).Write(); }

CString WriteLogger(const CLoggerPlan& plan) {
  CConfiguration configuration = ConfigurationOf(plan);
  std::string text;
  CString fault = ConfigurationToJson(configuration, text);
  if (!fault.IsEmpty()) return fault;
  for (const CString& folder : FoldersOf(plan))
    if (fault = MakeFolder(folder); !fault.IsEmpty()) return fault;
  fault = WriteNewFile(plan.path, text);
  return fault.IsEmpty() ? fault : plan.path + ": " + fault;
}

CString DescribeLogger(const CLoggerPlan& plan) {
  const CConfiguration configuration = ConfigurationOf(plan);
  const COutputConfig& output = *configuration.m_outputs.m_outputs.GetHead();
  CString text = plan.path + "\n    the configuration: " + CString(Counted(plan.rows.size(), "variable")) +
                 " of " + plan.nodeName + " (" + plan.driverName + ") every " +
                 CString(std::to_string(plan.scanPeriod)) + " ms\n\n" + output.m_directory + "\n    " +
                 output.m_name + ", at most " + CString(std::to_string(output.m_maxSamples)) +
                 " samples in it\n\n" + Indented(output.m_enableText) + "\n";
  if (!plan.summarises) return text;
  const CSummaryConfig& summary = *configuration.m_summaries.m_summaries.GetHead();
  return text + "\n" + summary.m_directory + "\n    " + summary.m_name + ", of " +
         CString(std::to_string(StepsOfSummary(plan))) + " samples\n\n" + Indented(summary.m_enableText) +
         "\n\n" + Indented(summary.m_summaryText) + "\n";
}

}  // namespace vastra
