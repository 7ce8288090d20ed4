// vastra completion: prints the completion script of a shell.
#include "host/cli/completion.h"

#include "host/cli/command.h"
#include "host/cli/output.h"

namespace vastra {
namespace {

constexpr struct {
  const char* shell;
  std::string (*script)(const CCommandFacts&, const std::vector<CCommandFacts>&);
} kShells[] = {{"bash", BashCompletion}, {"zsh", ZshCompletion}, {"fish", FishCompletion}};

EExit Complete(const CString& shell) {
  std::vector<CCommandFacts> commands = CommandFacts();
  std::erase_if(commands, [](const CCommandFacts& command) { return command.isHidden; });
  for (const auto& known : kShells)
    if (shell == known.shell) return PrintData(known.script(ProgramFacts(), commands));
  return kWrongUse;
}

}  // namespace

std::string ShellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string Joined(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

CAction DeclareCompletion(CArguments& arguments) {
  const auto shell = arguments.Choice("bash|zsh|fish", "The shell");
  return [=] { return Complete(*shell); };
}

}  // namespace vastra
