#include "host/fleet/settings_file.h"

#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

namespace vastra {
namespace {

std::size_t LineOf(const toml::node& node) { return node.source().begin.line; }

std::string TextOf(const std::string& key, const toml::node& node) {
  if (const auto* const text = node.as_string()) return text->get();
  if (const auto* const number = node.as_integer()) return std::to_string(number->get());
  if (const auto* const flag = node.as_boolean()) return flag->get() ? "true" : "false";
  throw CSettingsFault(LineOf(node), key + " is not a text, a whole number, true or false");
}

CSetting SettingOf(const std::string& part, const std::string& key, const toml::node& node) {
  CSetting setting = {part, key, {}, LineOf(node)};
  if (const toml::array* const list = node.as_array())
    for (const toml::node& one : *list) setting.values.push_back(TextOf(key, one));
  else
    setting.values.push_back(TextOf(key, node));
  return setting;
}

}  // namespace

std::vector<CSetting> ParseSettings(std::istream& text) {
  std::vector<CSetting> settings;
  try {
    for (const auto& [part, node] : toml::parse(text)) {
      const std::string name(part.str());
      const toml::table* const keys = node.as_table();
      if (keys == nullptr)
        throw CSettingsFault(LineOf(node), name + " is before the first part, such as [ship]");
      for (const auto& [key, value] : *keys)
        settings.push_back(SettingOf(name, std::string(key.str()), value));
    }
  } catch (const toml::parse_error& fault) {
    throw CSettingsFault(fault.source().begin.line,
                         std::string(fault.description()) + " (in TOML a text has quotes)");
  }
  return settings;
}

}  // namespace vastra
