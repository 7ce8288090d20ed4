// What the command line accepts, as data: completion scripts and manual pages are made of it. It is read from
// the same declarations as the help.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vastra {

// What a value names, for completion. The name that the help shows for the value decides: see
// command_facts.cpp.
enum class EValue { none, other, file, folder, logger, choice };

struct CArgumentFacts {
  std::vector<std::string> names;  // of an option, such as -h and --help; empty for an argument by position
  std::string value;               // as the help shows it, such as FILE or bash|zsh|fish; empty: a flag
  std::string help;
  bool isRequired = false;
  bool isRepeated = false;

  bool IsOption() const { return !names.empty(); }
  EValue Value() const;
  std::vector<std::string> Choices() const;  // of EValue::choice
};

struct CCommandFacts {
  std::string name;  // empty for the program itself
  std::string help;
  std::string example;
  bool isHidden = false;
  std::vector<CArgumentFacts> arguments;
};

// The texts of the program's own help, and its option --version.
void DescribeProgram(CLI::App& line);

CCommandFacts ProgramFacts();
// Of all commands, in the order of the help.
std::vector<CCommandFacts> CommandFacts();

}  // namespace vastra
