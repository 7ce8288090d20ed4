#include "host/probe/driver_settings.h"

#include <charconv>

#include "host/common/json_walk.h"
#include "vastra/config/plc_node_config.h"

namespace vastra {
namespace {

using nlohmann::json;

// Fields that the user cannot set here, and what sets them.
constexpr struct {
  const char* field;
  const char* words;
} kNotSettable[] = {{"variableCount", "is what --count sets"},
                    {"plcType", "is the driver's ID, and set with the driver"},
                    {"openState", "is 0 whenever a driver opens"}};

const char* WhyNotSettable(const CString& field) {
  for (const auto& row : kNotSettable)
    if (field == row.field) return row.words;
  return nullptr;
}

template <class T>
bool ReadNumber(std::string_view text, T& number) {
  const char* const end = text.data() + text.size();
  const auto [rest, fault] = std::from_chars(text.data(), end, number);
  return fault == std::errc() && rest == end;
}

// The settings of a driver by their names in a configuration.
CJson FieldsOf(CPlcNodeConfig& node) {
  CJsonWriter writer;
  writer.Write(node);
  return writer.Take()["driver"];
}

CString ListOf(const CJson& fields) {
  CString list;
  for (const auto& [field, value] : fields.items())
    if (!WhyNotSettable(CString(field))) list += (list.IsEmpty() ? "" : ", ") + CString(field);
  return list;
}

// Adds one setting to driver; fields has all fields of a driver.
CString ReadSetting(const CString& setting, const CJson& fields, json& driver) {
  const int sign = setting.Find('=');
  if (sign < 1) return "is not FIELD=VALUE";
  const CString field = setting.Left(sign), value = setting.Mid(sign + 1);
  const auto known = fields.find(field.Std());
  if (known == fields.end()) return "there is no such field; the fields are " + ListOf(fields);
  if (const char* why = WhyNotSettable(field)) return field + " " + why;
  if (known->is_string()) return driver[field.Std()] = value.Std(), "";
  int number = 0;
  if (!ReadNumber(value.View(), number)) return "must be a whole number from -2147483648 to 2147483647";
  return driver[field.Std()] = number, "";
}

}  // namespace

CString ReadSettings(const std::vector<CString>& settings, DriverConfig& config) {
  CPlcNodeConfig node;
  node.m_driver = config;
  const CJson fields = FieldsOf(node);
  json tree = {{"driver", json::object()}};
  for (const CString& setting : settings) {
    const CString fault = ReadSetting(setting, fields, tree["driver"]);
    if (!fault.IsEmpty()) return setting + ": " + fault;
  }
  CJsonReader(tree, "").Read(node);
  config = node.m_driver;
  return "";
}

bool ReadNumbers(const CString& list, std::vector<float>& numbers) {
  for (std::string_view rest = list.View();;) {
    const std::size_t comma = std::min(rest.find(','), rest.size());
    if (!ReadNumber(rest.substr(0, comma), numbers.emplace_back())) return false;
    if (comma == rest.size()) return true;
    rest.remove_prefix(comma + 1);
  }
}

}  // namespace vastra
