#include "host/cli/command_facts.h"

#include <CLI/CLI.hpp>
#include <iterator>

#include "host/cli/command.h"

namespace vastra {
namespace {

// Names of values that the shell can complete. A name with bars, such as bash|zsh|fish, is a list of choices.
constexpr struct {
  const char* name;
  EValue value;
} kValues[] = {{"FILE", EValue::file},   {"LOG", EValue::file},    {"JSON", EValue::file},
               {"OUT", EValue::file},    {"DRIVER", EValue::file}, {"PATH", EValue::file},
               {"SOCKET", EValue::file}, {"DIR", EValue::folder},  {"NAME", EValue::logger}};

CArgumentFacts FactsOf(const CLI::Option& option) {
  CArgumentFacts facts;
  for (const std::string& name : option.get_snames()) facts.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) facts.names.push_back("--" + name);
  const bool isFlag = option.get_items_expected_max() == 0;
  if (!isFlag) facts.value = facts.IsOption() ? option.get_type_name() : option.get_name();
  facts.help = option.get_description();
  facts.isRequired = option.get_required();
  facts.isRepeated = option.get_items_expected_max() > 1 ||
                     option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
  return facts;
}

std::vector<CArgumentFacts> ArgumentsOf(const CLI::App& command) {
  std::vector<CArgumentFacts> arguments;
  for (const CLI::Option* option : command.get_options())
    if (!option->get_group().empty()) arguments.push_back(FactsOf(*option));
  return arguments;
}

CCommandFacts FactsOf(const CCommand& command) {
  CLI::App app;
  CArguments arguments(app);
  command.declare(arguments);
  return {command.name, command.help, command.example, command.isHidden, ArgumentsOf(app)};
}

}  // namespace

EValue CArgumentFacts::Value() const {
  if (value.empty()) return EValue::none;
  if (value.find('|') != std::string::npos) return EValue::choice;
  for (const auto& known : kValues)
    if (value == known.name) return known.value;
  return EValue::other;
}

std::vector<std::string> CArgumentFacts::Choices() const { return CLI::detail::split(value, '|'); }

void DescribeProgram(CLI::App& line) {
  line.name("vastra");
  line.description("Vastra logs samples from controllers and earlier logs to files.");
  line.get_formatter()->label("SUBCOMMAND", "COMMAND");
  line.get_formatter()->label("Positionals", "Arguments");
  line.set_version_flag("--version", "vastra " VASTRA_VERSION, "Print the version and exit");
  line.footer("vastra COMMAND --help explains a command, with an example.");
}

CCommandFacts ProgramFacts() {
  CLI::App line;
  DescribeProgram(line);
  return {"", line.get_description(), "", false, ArgumentsOf(line)};
}

std::vector<CCommandFacts> CommandFacts() {
  std::vector<CCommandFacts> facts;
  for (const CCommand& command : Commands()) facts.push_back(FactsOf(command));
  return facts;
}

}  // namespace vastra
