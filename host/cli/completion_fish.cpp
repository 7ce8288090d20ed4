// The completion script for fish: a line for each command, option and argument.
#include <map>

#include "host/cli/completion.h"

namespace vastra {
namespace {

constexpr const char* kFishHead =
    R"END(# Completion of the command vastra in fish; made by: vastra completion fish

function __vastra_loggers
  for folder in FOLDER/*/
    basename $folder
  end
end

# Whether the command line has the command $argv[1], or none without $argv.
function __vastra_command
  set -l words (commandline -opc)
  test "$words[2]" = "$argv[1]"
end

complete -c vastra -f
)END";

// text as one word of fish, in which a backslash in single quotes is special.
std::string FishQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  return quoted + "'";
}

// isOption: -x says that the value is required and is no file, -r that it is required.
std::string FishValues(const CArgumentFacts& argument, bool isOption) {
  static const std::map<EValue, const char*> kActions = {
      {EValue::none, ""},
      {EValue::other, ""},
      {EValue::file, " -F"},
      {EValue::folder, " -a '(__fish_complete_directories)'"},
      {EValue::logger, " -a '(__vastra_loggers)'"}};
  const auto found = kActions.find(argument.Value());
  std::string action = found == kActions.end() ? " -a " + FishQuoted(Joined(argument.Choices(), " "))
                                               : std::string(found->second);
  if (!isOption || argument.value.empty()) return action;
  return (argument.Value() == EValue::file ? " -r" : " -x") + action;
}

std::string FishLine(const CCommandFacts& command, const CArgumentFacts& argument) {
  std::string line =
      "complete -c vastra -n " +
      FishQuoted(command.name.empty() ? "__vastra_command" : "__vastra_command " + command.name);
  for (const std::string& name : argument.names)
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  return line + FishValues(argument, argument.IsOption()) + " -d " + FishQuoted(argument.help) + "\n";
}

}  // namespace

std::string FishCompletion(const CCommandFacts& program, const std::vector<CCommandFacts>& commands) {
  std::string script = kFishHead;
  script.replace(script.find("FOLDER"), 6, kLoggersFolder);
  for (const CArgumentFacts& argument : program.arguments) script += FishLine(program, argument);
  for (const CCommandFacts& command : commands) {
    script += "\ncomplete -c vastra -n __vastra_command -a " + command.name + " -d " +
              FishQuoted(command.help) + "\n";
    for (const CArgumentFacts& argument : command.arguments) script += FishLine(command, argument);
  }
  return script;
}

}  // namespace vastra
