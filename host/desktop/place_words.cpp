#include "host/desktop/place_words.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "host/common/name_set.h"

namespace vastra {
namespace {

// The lists with entries, in the order of m_entries.
struct CListWords {
  std::string_view key;
  const char* entry;  // what an entry is called
  const char* list;
};
constexpr CListWords kListWords[] = {{"input.plcNodes", "node", "input, Net nodes"},
                                     {"outputs", "output", "outputs"},
                                     {"summaries", "summary", "summaries"},
                                     {"plcWrite.nodes", "written node", "Plc Write, Net nodes"}};

// The parts that are not entries of a list.
constexpr std::pair<std::string_view, const char*> kPartNames[] = {
    {"input", "input"},        {"smart", "smart stage"}, {"trend", "trend"},
    {"plcWrite", "Plc Write"}, {"clock", "clock"},       {"variables", "units and comments"}};

// The caption of a field in the forms. list: of kListWords, or a part.
struct CFormCaption {
  std::string_view list, field;
  const char* caption;
  const char* equation = nullptr;  // of an equation list: what one of them is called
};
constexpr CFormCaption kFormCaptions[] = {
    {"input", "scanPeriod", "Scan period"},
    {"input", "preprocess", "Preprocess input"},
    {"input", "preEquationText", "Preprocessed equations", "equation"},
    {"input", "preEquations", "Preprocessed equations", "equation"},
    {"input", "preNewVars", "Variable List"},
    {"input", "inputFiles", "Select Files"},
    {"input.plcNodes", "nodeName", "Name"},
    {"input.plcNodes", "varNames", "Variable List"},
    {"input.plcNodes", "scaler", "Scaler"},
    {"input.plcNodes", "driver", "Configure PLC"},
    {"input.plcNodes", "driver.plcType", "Type of PLC"},
    {"input.plcNodes", "driver.variableCount", "Variable List"},
    {"input.plcNodes", "absent", "When away"},
    {"input.plcNodes", "aliveVar", "Alive variable"},
    {"outputs", "name", "Name"},
    {"outputs", "enableText", "Enable Equations", "equation"},
    {"outputs", "enableEquations", "Enable Equations", "equation"},
    {"outputs", "varNames", "Variable List"},
    {"outputs", "saveRp", "Write Logs"},
    {"outputs", "saveCsv", "Write Text Files"},
    {"outputs", "maxLogs", "Maximum number of logs stored"},
    {"outputs", "maxSamples", "Maximum number of samples in a log"},
    {"outputs", "directory", "Path"},
    {"outputs", "nameVariable", "Name the logs based on"},
    {"outputs", "prefix", "Use prefix for the log names"},
    {"summaries", "name", "Name"},
    {"summaries", "enableText", "Enable Equations", "enable equation"},
    {"summaries", "enableEquations", "Enable Equations", "enable equation"},
    {"summaries", "summaryText", "Summary Equations", "summary equation"},
    {"summaries", "summaryEquations", "Summary Equations", "summary equation"},
    {"summaries", "varNames", "Variable List"},
    {"summaries", "saveRp", "Write Summary"},
    {"summaries", "saveCsv", "Write Text Files"},
    {"summaries", "maxSummaries", "Maximum number of summaries stored"},
    {"summaries", "maxSamples", "Maximum number of samples in a summary"},
    {"summaries", "directory", "Path"},
    {"plcWrite", "disableWriting", "Disable Writing"},
    {"plcWrite.nodes", "nodeName", "Name"},
    {"plcWrite.nodes", "varNames", "Variable List"},
    {"plcWrite.nodes", "scaler", "Scaler"},
    {"plcWrite.nodes", "driver", "Configure PLC"},
    {"plcWrite.nodes", "driver.plcType", "Type of PLC"},
    {"plcWrite.nodes", "driver.variableCount", "Variable List"},
    {"smart", "inputNames", "Smart Input Variables"},
    {"smart", "inputVars", "Smart Input Variables"},
    {"smart", "equationText", "Smart Equations", "equation"},
    {"smart", "equations", "Smart Equations", "equation"},
    {"smart", "outputVars", "Smart Output Variables"},
    {"trend", "baseVars", "Variable List"},
    {"trend", "extraVars", "extra variables"},
    {"trend", "equationText", "equations", "equation"},
    {"trend", "equations", "equations", "equation"},
};

// Names of settings within messages, and those of the forms.
constexpr std::pair<std::string_view, const char*> kPhrases[] = {
    {"saves nothing: saveRp and saveCsv are 0", "saves nothing: it writes no logs and no text files"},
    {"since preprocess is 0", "since \"Preprocess input\" is not marked"},
    {"nodes have \"absent\": \"fail\"", "nodes fail the scan when they are away"},
    {"with \"nan\" or \"hold\" the others go on", "with NaN or the last values the others go on"},
    {"a node with \"absent\": \"nan\" or \"hold\" was away", "its node was away"},
    {"use the aliveVar of the node", "use the alive variable of the node"},
    {"the stage does not open: ", ""},
    {"the messages of the links say why", "it does not open; the message log says why"},
    {"this output", "this part"},
};

// "variable" is better than "entry 3 of the variable list".
constexpr std::pair<std::string_view, const char*> kEntriesOf[] = {
    {"Variable List", "variable"}, {"Select Files", "file"}, {"Scaler", "row"}};

bool IsKeyByte(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
         byte == '.' || byte == '[' || byte == ']';
}

// Messages call the equations of an output or summary by the field alone.
CString EquationsCaption(const CString& field) {
  const auto* const found = std::ranges::find_if(kFormCaptions, [&](const CFormCaption& caption) {
    return caption.equation && caption.field == field.View();
  });
  return found == std::end(kFormCaptions) ? field : CString(found->caption);
}

CString Number(int number) { return CString(std::to_string(number)); }

// The length of the key at the start of text; 0: there is none.
std::size_t KeyLength(std::string_view text) {
  std::size_t end = 0;
  while (end < text.size() && IsKeyByte(text[end])) ++end;
  while (end > 0 && text[end - 1] == '.') --end;
  const std::string_view key = text.substr(0, end), word = key.substr(0, key.find_first_of(".["));
  const bool isPart = word == "outputs" || word == "summaries" ||
                      std::ranges::any_of(kPartNames, [&](const auto& part) { return part.first == word; });
  return isPart ? end : 0;
}

// The index in brackets at the start of text, which loses it; -1: there is none.
int TakeIndex(std::string_view& text) {
  int index = -1;
  if (text.empty() || text[0] != '[') return -1;
  const auto [end, fault] = std::from_chars(text.data() + 1, text.data() + text.size(), index);
  const auto length = static_cast<std::size_t>(end - text.data());
  if (fault != std::errc() || index < 0 || length >= text.size() || text[length] != ']') return -1;
  text.remove_prefix(length + 1);
  return index;
}

std::string Replaced(std::string text) {
  for (const auto& [phrase, words] : kPhrases)
    if (const std::size_t at = text.find(phrase); at != text.npos) text.replace(at, phrase.size(), words);
  return text;
}

}  // namespace

// A key: its list or part, the index of the entry, the field, and the index in the field; -1: none.
struct CPlaceWords::CParts {
  int list = -1;  // of kListWords; -1: a part
  std::string_view part;
  int entry = -1;
  std::string_view name;  // of the entry, in quotes; can be empty
  std::string_view field;
  int index = -1;

  const CFormCaption* Caption() const {
    const CFormCaption* found = std::ranges::find_if(kFormCaptions, [&](const CFormCaption& caption) {
      return caption.list == part && caption.field == field;
    });
    return found == std::end(kFormCaptions) ? nullptr : found;
  }
};

CPlaceWords::CPlaceWords(const CConfiguration& configuration, CDriverCaption driverCaption)
    : m_driverCaption(std::move(driverCaption)) {
  for (const CPlcNodeConfig* node : configuration.m_input.m_plcNodes)
    m_entries[0].push_back({node->m_nodeName, node->m_driver.plcType});
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    m_entries[1].push_back({output->m_name});
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    m_entries[2].push_back({summary->m_name});
  for (const CPlcSingleConfig* node : configuration.m_plcWrite.m_nodes)
    m_entries[3].push_back({node->m_node.m_nodeName, node->m_node.m_driver.plcType});
}

CPlaceWords::CParts CPlaceWords::Split(const CString& key) const {
  CParts parts;
  std::string_view rest = key.View();
  const auto list = std::ranges::find_if(kListWords, [&](const CListWords& words) {
    return rest.starts_with(words.key) && (rest.size() == words.key.size() || rest[words.key.size()] == '[');
  });
  if (list != std::end(kListWords)) {
    parts.list = static_cast<int>(list - std::begin(kListWords));
    parts.part = list->key;
  } else {
    parts.part = rest.substr(0, rest.find('.'));
  }
  rest.remove_prefix(parts.part.size());
  parts.entry = TakeIndex(rest);
  if (rest.starts_with(" \"")) {
    parts.name = rest.substr(1);
    return parts;
  }
  if (rest.starts_with('.')) rest.remove_prefix(1);
  parts.field = rest.substr(0, rest.find('['));
  rest.remove_prefix(parts.field.size());
  parts.index = TakeIndex(rest);
  return parts;
}

const CPlaceWords::CEntry* CPlaceWords::EntryOf(const CParts& parts) const {
  if (parts.list < 0 || parts.entry < 0) return nullptr;
  const std::vector<CEntry>& entries = m_entries[parts.list];
  const auto index = static_cast<std::size_t>(parts.entry);
  return index < entries.size() ? &entries[index] : nullptr;
}

// The part or the entry: output "Kiln", or output 2 if it has no name.
CString CPlaceWords::Called(const CParts& parts) const {
  if (parts.list < 0) {
    for (const auto& [part, name] : kPartNames)
      if (part == parts.part) return name;
    return {};
  }
  const CListWords& words = kListWords[parts.list];
  if (parts.entry < 0) return words.list;
  if (!parts.name.empty()) return CString(words.entry) + " " + CString(parts.name);
  const CEntry* entry = EntryOf(parts);
  return CString(words.entry) + " " +
         (entry && !entry->name.IsEmpty() ? Quoted(entry->name) : Number(parts.entry + 1));
}

CString CPlaceWords::Place(const CString& key) const {
  const CParts parts = Split(key);
  CString called = Called(parts);
  if (called.IsEmpty()) return EquationsCaption(key);
  if (parts.field.empty()) return called;
  const CFormCaption* caption = parts.Caption();
  if (!caption) return called + ", " + CString(parts.field);
  if (parts.index < 0) return called + ", " + caption->caption;
  for (const auto& [list, entry] : kEntriesOf)
    if (list == caption->caption) {
      const CString before = called + ", " + (list == "Scaler" ? "Scaler, " : "");
      return before + entry + " " + Number(parts.index + 1);
    }
  return called + ", " + caption->caption + ", entry " + Number(parts.index + 1);
}

CString CPlaceWords::Equation(const CString& key, int number) const {
  const CParts parts = Split(key);
  const CFormCaption* caption = parts.Caption();
  return Called(parts) + ", " + (caption && caption->equation ? caption->equation : "equation") + " " +
         Number(number);
}

// Keys within quotation marks are names of the user.
CString CPlaceWords::Text(const CString& text) const {
  const std::string all = Replaced(text.Std());
  std::string words;
  bool isQuoted = false;
  for (std::size_t at = 0; at < all.size();) {
    isQuoted ^= all[at] == '"';
    const bool isStart = at == 0 || !(IsKeyByte(all[at - 1]) || all[at - 1] == '/');
    const std::size_t length = isQuoted || !isStart ? 0 : KeyLength(std::string_view(all).substr(at));
    const std::string_view key = std::string_view(all).substr(at, length);
    if (key.find_first_of(".[") != key.npos) {
      words += Place(CString(key)).Std();
      at += length;
    } else {
      words += all[at++];
    }
  }
  return CString(words);
}

// A driver's message begins with the name of the field, and one about equations with the statement.
CPlaceWords::CFault CPlaceWords::Fault(const CString& key, const CString& text) const {
  const CParts parts = Split(key);
  constexpr std::string_view kStatement = "statement ";
  if (text.View().starts_with(kStatement)) {
    const std::string_view rest = text.View().substr(kStatement.size());
    int number = 0;
    const auto [end, fault] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    const std::string_view after = rest.substr(static_cast<std::size_t>(end - rest.data()));
    if (fault == std::errc() && after.starts_with(": "))
      return {Equation(key, number), Text(CString(after.substr(2)))};
  }
  const CEntry* entry = EntryOf(parts);
  if (parts.field != "driver" || !entry || !m_driverCaption) return {Place(key), Text(text)};
  const CString field(text.View().substr(0, text.View().find_first_of(": ")));
  const CString caption = m_driverCaption(entry->plcType, field);
  if (caption.IsEmpty()) return {Place(key), text};
  CString rest = text.Mid(field.GetLength());
  while (!rest.IsEmpty() && (rest[0] == ':' || rest[0] == ' ')) rest = rest.Mid(1);
  return {Called(parts) + ", " + caption, rest};
}

CPlaceWords::CFault CPlaceWords::Fault(const CString& line) const {
  const std::size_t length = KeyLength(line.View());
  const std::string_view rest = line.View().substr(length);
  if (length == 0 || !rest.starts_with(": ")) return {"", Text(line)};
  const CString text(rest.substr(2));
  // "input: the stage does not open: input.plcNodes: ..." has the better key in its text.
  constexpr std::string_view kDoesNotOpen = "the stage does not open: ";
  if (text.View().starts_with(kDoesNotOpen))
    if (CFault inner = Fault(text.Mid(static_cast<int>(kDoesNotOpen.size()))); !inner.place.IsEmpty())
      return inner;
  return Fault(CString(line.View().substr(0, length)), text);
}

}  // namespace vastra
