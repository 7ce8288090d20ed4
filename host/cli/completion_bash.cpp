// The completion script for bash: a table of what each option and argument accepts, and one function that
// reads it.
#include <map>

#include "host/cli/completion.h"

namespace vastra {
namespace {

constexpr const char* kBashHead =
    R"END(# Completion of the command vastra in bash; made by: vastra completion bash

_vastra_loggers() {
  local folder
  for folder in FOLDER/*/; do
    [[ -d $folder ]] && basename "$folder"
  done
}

# Sets accepts to what slot $2 of command $1 accepts: file, folder, logger, other or a list of words. A slot is an
# option that has a value, the number of an argument, or - for the options of the command.
_vastra_accepts() {
  case "$1 $2" in
)END";

constexpr const char* kBashTail = R"END(    *) accepts= ;;
  esac
}

_vastra() {
  local word=${COMP_WORDS[COMP_CWORD]} current command= option= accepts= number=1 i
  for ((i = 1; i < COMP_CWORD; i++)); do
    current=${COMP_WORDS[i]}
    if [[ $current == = ]]; then
      continue  # of --option=value, which bash splits
    elif [[ -n $option ]]; then
      option=
    elif [[ $current == -* ]]; then
      _vastra_accepts "$command" "$current"
      [[ -z $accepts ]] || option=$current
    elif [[ -z $command ]]; then
      command=$current
    else
      ((number++))
    fi
  done
  [[ $word != = ]] || word=
  if [[ -n $option ]]; then
    _vastra_accepts "$command" "$option"
  elif [[ $word == -* ]]; then
    _vastra_accepts "$command" -
  else
    _vastra_accepts "$command" "$number"
  fi
  COMPREPLY=()
  case $accepts in
    file) compopt -o filenames -o default 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    folder) compopt -o filenames -o dirnames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    logger) mapfile -t COMPREPLY < <(compgen -W "$(_vastra_loggers)" -- "$word") ;;
    other) ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$accepts" -- "$word") ;;
  esac
}

complete -F _vastra vastra
)END";

std::string BashAccepts(const CArgumentFacts& argument) {
  static const std::map<EValue, const char*> kWords = {{EValue::other, "other"},
                                                       {EValue::file, "file"},
                                                       {EValue::folder, "folder"},
                                                       {EValue::logger, "logger"}};
  const auto found = kWords.find(argument.Value());
  return found == kWords.end() ? Joined(argument.Choices(), " ") : found->second;
}

std::string BashRow(const std::string& pattern, const std::string& accepts) {
  return "    " + pattern + ") accepts=" + ShellQuoted(accepts) + " ;;\n";
}

std::string BashRows(const CCommandFacts& command) {
  std::string rows, options;
  int number = 0;
  for (const CArgumentFacts& argument : command.arguments) {
    for (const std::string& name : argument.names) {
      options += (options.empty() ? "" : " ") + name;
      if (!argument.value.empty())
        rows += BashRow(ShellQuoted(command.name + " " + name), BashAccepts(argument));
    }
    if (argument.IsOption()) continue;
    const std::string slot = argument.isRepeated ? "'[1-9]*" : std::to_string(++number) + "'";
    rows += BashRow("'" + command.name + " " + slot, BashAccepts(argument));
  }
  return rows + BashRow(ShellQuoted(command.name + " -"), options);
}

}  // namespace

std::string BashCompletion(const CCommandFacts& program, const std::vector<CCommandFacts>& commands) {
  std::string script = kBashHead, names;
  script.replace(script.find("FOLDER"), 6, kLoggersFolder);
  script += BashRows(program);
  for (const CCommandFacts& command : commands) {
    script += BashRows(command);
    names += (names.empty() ? "" : " ") + command.name;
  }
  return script + BashRow("' 1'", names) + kBashTail;
}

}  // namespace vastra
