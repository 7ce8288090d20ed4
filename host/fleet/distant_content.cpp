#include "host/fleet/distant_content.h"

#include "host/common/json_text.h"

namespace vastra {
namespace {

CFeedLine ShareLine(const std::string& text) { return std::make_shared<const std::string>(text + "\n"); }

// The folders of its logs are none of this machine: a reader that looked for logs there would find others.
std::string WithPlace(const std::string& hello, const std::string& place) {
  nlohmann::json json = ParseJson(hello);
  for (const char* const list : {"outputs", "summaries"}) {
    const nlohmann::json::json_pointer path = nlohmann::json::json_pointer("/stages") / std::string(list);
    if (!json.contains(path) || !json[path].is_array()) continue;
    for (nlohmann::json& stage : json[path])
      if (stage.is_object() && stage.contains("folder") && stage["folder"].is_string())
        stage["folder"] = place + stage["folder"].get<std::string>();
  }
  return JsonText(json);
}

}  // namespace

void CDistantContent::Note(const CLiveMessage& message, Time now) {
  m_contact.Note(message, now);
  for (const CLiveMessage::CLine& line : message.lines) {
    if (line.text.empty()) continue;
    if (const auto* const hello = std::get_if<CHelloLine>(&line.event)) {
      NoteHello(line, *hello);
    } else if (std::holds_alternative<CStateLine>(line.event)) {
      m_stateChange += !m_state || *m_state != line.text + "\n";
      m_state = ShareLine(line.text);
    } else if (const auto* const sample = std::get_if<CSampleLine>(&line.event)) {
      m_sample = *sample;
      m_sampleLine = ShareLine(line.text);
    } else {
      m_counts = ShareLine(line.text);
    }
  }
}

void CDistantContent::NoteHello(const CLiveMessage::CLine& line, const CHelloLine& hello) {
  if (line.text == m_helloText) return;
  m_helloText = line.text;
  m_hello = ShareLine(WithPlace(line.text, m_place));
  ++m_helloChange;
  if (hello.variables == m_names) return;
  m_names = hello.variables;
  m_sample = {};
  ++m_namesChange;
}

CFeedLine CDistantContent::Sample(const std::vector<int>& indexes) {
  const nlohmann::json sample = ParseJson(*m_sampleLine);
  CJson values = CJson::array();
  for (const int index : indexes)
    values.push_back(index < 0 ? CJson() : CJson(sample["values"].at(static_cast<std::size_t>(index))));
  const CJson line = {{"type", "sample"},
                      {"number", m_sample.number},
                      {"time", CJson(sample.value("time", nlohmann::json()))},
                      {"values", values}};
  return ShareLine(JsonText(line));
}

std::vector<int> CDistantContent::IndexesOf(const std::vector<CString>& variables) {
  CFeedPlaces places;
  for (const std::string& name : m_names) places.emplace(name, static_cast<int>(places.size()));
  return PlacesOf(variables, places);
}

}  // namespace vastra
