// The completion script for zsh: the arguments of each command for its function _arguments.
#include <map>

#include "host/cli/completion.h"

namespace vastra {
namespace {

constexpr const char* kZshHead = R"END(#compdef vastra
# Completion of the command vastra in zsh; made by: vastra completion zsh

_vastra_loggers() {
  local -a loggers=(FOLDER/*(N/:t))
  compadd -a loggers
}

_vastra() {
  local curcontext="$curcontext" state
  local -a line commands
  local -A opt_args
)END";

constexpr const char* kZshTail = R"END(      esac
      ;;
  esac
}

if [[ $funcstack[1] == _vastra ]]; then
  _vastra "$@"
else
  compdef _vastra vastra
fi
)END";

// text with a backslash before each of characters.
std::string ZshEscaped(const std::string& text, const char* characters) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || std::string(characters).find(c) != std::string::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ZshValues(const CArgumentFacts& argument) {
  static const std::map<EValue, const char*> kActions = {{EValue::other, " "},
                                                         {EValue::file, "_files"},
                                                         {EValue::folder, "_files -/"},
                                                         {EValue::logger, "_vastra_loggers"}};
  const auto found = kActions.find(argument.Value());
  const std::string action =
      found == kActions.end() ? "(" + Joined(argument.Choices(), " ") + ")" : std::string(found->second);
  return ":" + ZshEscaped(argument.value, ":") + ":" + action;
}

std::string ZshArgument(const CArgumentFacts& argument, const std::string& name) {
  const std::string repeated = argument.isRepeated ? "*" : "";
  const bool isLong = name.starts_with("--");
  if (!argument.value.empty())
    return repeated + name + (isLong ? "=" : "+") + "[" + ZshEscaped(argument.help, "[]:") + "]" +
           ZshValues(argument);
  return name + "[" + ZshEscaped(argument.help, "[]:") + "]";
}

// The words after _arguments, one on each line.
std::string ZshArguments(const CCommandFacts& command, const char* indent) {
  std::string text;
  int number = 0;
  const auto add = [&](const std::string& word) { text += " \\\n" + (indent + ShellQuoted(word)); };
  for (const CArgumentFacts& argument : command.arguments) {
    for (const std::string& name : argument.names) add(ZshArgument(argument, name));
    if (argument.IsOption()) continue;
    const std::string place = argument.isRepeated ? "*" : std::to_string(++number);
    add(place + (argument.isRequired || argument.isRepeated ? "" : ":") + ZshValues(argument));
  }
  return text;
}

}  // namespace

std::string ZshCompletion(const CCommandFacts& program, const std::vector<CCommandFacts>& commands) {
  std::string script = kZshHead, choices, cases;
  script.replace(script.find("FOLDER"), 6, kLoggersFolder);
  for (const CCommandFacts& command : commands) {
    choices +=
        "        " + ShellQuoted(ZshEscaped(command.name, ":") + ":" + ZshEscaped(command.help, "")) + "\n";
    cases += "        " + command.name + ")\n          _arguments" + ZshArguments(command, "            ") +
             "\n" + "          ;;\n";
  }
  script += "  _arguments -C" + ZshArguments(program, "    ") +
            " \\\n    '1:command:->command' \\\n    '*::argument:->argument'\n";
  script += "  case $state in\n    command)\n      commands=(\n" + choices +
            "      )\n      _describe command commands\n      ;;\n    argument)\n      case $words[1] in\n";
  return script + cases + kZshTail;
}

}  // namespace vastra
