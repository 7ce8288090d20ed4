// A host with a user who fills forms in as the test says.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "vastra/plc/driver_host.h"

namespace vastra {

class CScriptedHost {
 public:
  CScriptedHost() { s_host = this; }
  ~CScriptedHost() { InstallDriverHost(m_former); }
  CScriptedHost(const CScriptedHost&) = delete;
  CScriptedHost& operator=(const CScriptedHost&) = delete;

  std::map<std::string, std::string> enters;  // by the name of the field; a choice by its words
  bool accepts = true;                        // false: enters, and cancels
  std::string shown;                          // the last form: "Name=value|" of each field
  std::string refusal;                        // what its check said

 private:
  static std::string Shown(const DriverField& field) {
    if (field.kind == driverFieldText) return field.text;
    return field.kind == driverFieldChoice ? field.choices[field.number] : std::to_string(field.number);
  }
  static void Enter(DriverField& field, const std::string& value) {
    if (field.kind == driverFieldNumber) field.number = std::clamp(std::stoi(value), field.low, field.high);
    for (int i = 0; field.kind == driverFieldChoice && i < field.choiceCount; ++i)
      if (field.choices[i] == value) field.number = i;
    if (field.kind == driverFieldText && value.size() < field.textSize)
      std::strcpy(field.text, value.c_str());
  }
  int Show(const DriverForm& form) {
    const auto count = static_cast<std::size_t>(form.fieldCount);
    std::vector<DriverField> fields(form.fields, form.fields + count);
    std::vector<std::vector<char>> texts(count);
    shown = refusal = "";
    for (std::size_t i = 0; i < count; ++i) {
      shown += fields[i].name + ("=" + Shown(fields[i])) + "|";
      if (fields[i].kind == driverFieldText)
        texts[i].assign(fields[i].text, fields[i].text + fields[i].textSize);
      fields[i].text = texts[i].data();
      if (enters.contains(fields[i].name)) Enter(fields[i], enters[fields[i].name]);
    }
    const char* words = form.check ? form.check(fields.data(), form.fieldCount, form.user) : nullptr;
    if (words) refusal = words;
    if (words || !accepts) return 0;
    for (std::size_t i = 0; i < count; ++i) {
      form.fields[i].number = fields[i].number;
      if (fields[i].text) std::strcpy(form.fields[i].text, fields[i].text);
    }
    return 1;
  }

  static inline CScriptedHost* s_host = nullptr;
  const DriverHost m_table = {DRIVER_HOST_VERSION,
                              [](const DriverForm* form) { return s_host->Show(*form); }};
  const DriverHost* m_former = InstallDriverHost(&m_table);
};

}  // namespace vastra
