#include "host/cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <limits>

#include "host/common/paths.h"

namespace vastra {
namespace {

// The largest number of values of a list.
constexpr int kMany = std::numeric_limits<int>::max() / 2;

std::int64_t ToNumber(const char* name, const std::string& typed, std::int64_t lowest, std::int64_t highest) {
  std::int64_t number = 0;
  const char* const end = typed.data() + typed.size();
  const auto [rest, fault] = std::from_chars(typed.data(), end, number);
  if (fault != std::errc() || rest != end || number < lowest || number > highest)
    throw CLI::ValidationError(name, typed + " is not a whole number from " + std::to_string(lowest) +
                                         " to " + std::to_string(highest));
  return number;
}

double ToSeconds(const char* name, const std::string& typed, double highest) {
  double number = 0;
  const char* const end = typed.data() + typed.size();
  const auto [rest, fault] = std::from_chars(typed.data(), end, number, std::chars_format::fixed);
  if (fault != std::errc() || rest != end || !(number >= 0 && number <= highest))
    throw CLI::ValidationError(name, typed + " is not a number of seconds from 0 to " +
                                         std::to_string(static_cast<std::int64_t>(highest)));
  return number;
}

}  // namespace

CFileArgument ToFile(const CString& typed) { return {typed, MakeAbsolute(typed)}; }

CArgument<CString> CArguments::Text(const char* name, const char* help) {
  auto value = std::make_shared<CString>();
  const auto take = [value](const std::string& typed) { *value = CString(typed); };
  m_command.add_option_function<std::string>(name, take, help)->required()->type_name("");
  return value;
}

CArgument<CString> CArguments::Choice(const char* choices, const char* help) {
  CArgument<CString> value = Text(choices, help);
  m_command.get_option(choices)->check([words = CLI::detail::split(choices, '|')](const std::string& typed) {
    const bool isKnown = std::find(words.begin(), words.end(), typed) != words.end();
    return isKnown ? std::string() : typed + " is not one of these words";
  });
  return value;
}

CArgument<CFileArgument> CArguments::File(const char* name, const char* help) {
  auto value = std::make_shared<CFileArgument>();
  const auto take = [value](const std::string& typed) { *value = ToFile(CString(typed)); };
  m_command.add_option_function<std::string>(name, take, help)->required()->type_name("");
  return value;
}

CArgument<std::vector<CFileArgument>> CArguments::Files(const char* name, const char* help) {
  auto value = std::make_shared<std::vector<CFileArgument>>();
  const auto take = [value](const std::vector<std::string>& typed) {
    for (const std::string& file : typed) value->push_back(ToFile(CString(file)));
  };
  m_command.add_option_function<std::vector<std::string>>(name, take, help)
      ->required()
      ->expected(1, kMany)
      ->type_name("");
  return value;
}

CArgument<std::vector<CString>> CArguments::OptionalTexts(const char* name, const char* help) {
  auto values = std::make_shared<std::vector<CString>>();
  const auto take = [values](const std::vector<std::string>& typed) {
    for (const std::string& text : typed) values->emplace_back(text);
  };
  m_command.add_option_function<std::vector<std::string>>(name, take, help)
      ->expected(0, kMany)
      ->type_name("");
  return values;
}

CArgument<bool> CArguments::Flag(const char* name, const char* help) {
  auto value = std::make_shared<bool>(false);
  m_command.add_flag_callback(
      name, [value] { *value = true; }, help);
  return value;
}

CArgument<CNumber> CArguments::Number(const char* name, const char* value, const char* help,
                                      std::int64_t lowest, std::int64_t highest) {
  auto number = std::make_shared<CNumber>();
  const auto take = [=](const std::string& typed) { *number = ToNumber(name, typed, lowest, highest); };
  m_command.add_option_function<std::string>(name, take, help)->type_name(value);
  return number;
}

CArgument<std::optional<double>> CArguments::Seconds(const char* name, const char* help, double highest) {
  auto number = std::make_shared<std::optional<double>>();
  const auto take = [=](const std::string& typed) { *number = ToSeconds(name, typed, highest); };
  m_command.add_option_function<std::string>(name, take, help)->type_name("S");
  return number;
}

CArgument<std::optional<CFileArgument>> CArguments::OptionalFile(const char* name, const char* value,
                                                                 const char* help) {
  auto file = std::make_shared<std::optional<CFileArgument>>();
  const auto take = [file](const std::string& typed) { *file = ToFile(CString(typed)); };
  m_command.add_option_function<std::string>(name, take, help)->type_name(value);
  return file;
}

CArgument<std::optional<CString>> CArguments::OptionalText(const char* name, const char* value,
                                                           const char* help) {
  auto text = std::make_shared<std::optional<CString>>();
  const auto take = [text](const std::string& typed) { *text = CString(typed); };
  m_command.add_option_function<std::string>(name, take, help)->type_name(value);
  return text;
}

CArgument<std::vector<CString>> CArguments::Texts(const char* name, const char* value, const char* help) {
  auto texts = std::make_shared<std::vector<CString>>();
  const auto take = [texts](const std::vector<std::string>& typed) {
    for (const std::string& text : typed) texts->emplace_back(text);
  };
  m_command.add_option_function<std::vector<std::string>>(name, take, help)
      ->type_name(value)
      ->expected(1)
      ->take_all()
      ->allow_extra_args(false);  // it would consume later arguments, too
  return texts;
}

void CArguments::Exclude(const char* first, const char* second) {
  m_command.get_option(first)->excludes(m_command.get_option(second));
}

void CArguments::Need(const char* option, const char* needed) {
  m_command.get_option(option)->needs(m_command.get_option(needed));
}

void CArguments::MakeAlternative(const char* argument, const char* option,
                                 std::initializer_list<std::string_view> companions) {
  m_command.get_option(argument)->required(false);
  CLI::Option* const alternative = m_command.get_option(option);
  for (CLI::Option* const other : m_command.get_options()) {
    const bool isCompanion =
        std::any_of(companions.begin(), companions.end(),
                    [other](std::string_view name) { return other->check_name(std::string(name)); });
    if (other != alternative && other != m_command.get_help_ptr() && !isCompanion)
      alternative->excludes(other);
  }
}

void CArguments::Hide(const char* option) { m_command.get_option(option)->group(""); }

}  // namespace vastra
