// vastra man: writes the manual pages, vastra(1) and one for each command, from the declarations of the
// commands.
#include "host/cli/command.h"
#include "host/cli/command_facts.h"
#include "host/cli/terminal/terminal.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

struct CManualEntry {
  const char* term;
  const char* meaning;
};

constexpr CManualEntry kStatus[] = {
    {"0",
     "Done. A run that was ended by SIGINT or SIGTERM and a run with failed reads or writes are done, too."},
    {"1",
     "The work failed: a stage did not open, rows of a run were lost, a log is damaged, an equation given to "
     "eval is wrong, a logger is not well."},
    {"2", "Wrong use of the command line."},
    {"3",
     "The configuration is refused: it cannot be read, or the checks before a start found a fault in it."},
};

constexpr CManualEntry kEnvironment[] = {
    {"VASTRA_DRIVERS", "Folders with more driver modules, with colons between them."},
    {"NO_COLOR",
     "If set, messages have no colours. They have none either if standard error is not a terminal."},
    {"TERM", "The kind of the terminal. On a dumb one no line is written over."},
};

constexpr const char* kMeaningOfCommand =
    "Vastra reads samples from PLCs through driver modules, or from its own earlier logs, computes new "
    "variables by "
    "equations, and writes binary and CSV logs that rotate. A command is required.";

// text for roff: a character that it interprets, or shows as another one, is escaped.
std::string Roff(const std::string& text) {
  constexpr struct {
    char character;
    const char* escape;
  } kEscapes[] = {{'\\', "\\(rs"}, {'-', "\\-"},   {'\'', "\\(aq"},
                  {'`', "\\(ga"},  {'^', "\\(ha"}, {'~', "\\(ti"}};
  std::string roff = text.starts_with('.') ? "\\&" : "";
  for (const char c : text) {
    std::string written(1, c);
    for (const auto& known : kEscapes)
      if (c == known.character) written = known.escape;
    roff += written;
  }
  return roff;
}

std::string Bold(const std::string& text) { return "\\fB" + Roff(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Roff(text) + "\\fR"; }

std::string RoffSection(const char* heading) { return std::string(".SH ") + heading + "\n"; }

// A term, in roff, and what it means.
std::string RoffEntry(const std::string& term, const std::string& meaning) {
  return ".TP\n" + term + "\n" + Roff(meaning) + "\n";
}

template <std::size_t N>
std::string RoffEntries(const char* heading, const CManualEntry (&entries)[N]) {
  std::string text = RoffSection(heading);
  for (const CManualEntry& entry : entries) text += RoffEntry(Bold(entry.term), entry.meaning);
  return text;
}

std::string TermOf(const CArgumentFacts& argument) {
  std::string term;
  for (const std::string& name : argument.names) term += (term.empty() ? "" : ", ") + Bold(name);
  if (argument.value.empty()) return term;
  return term + (term.empty() ? "" : " ") + Italic(argument.value);
}

std::string RoffArguments(const CCommandFacts& command, const char* heading, bool areOptions) {
  std::string text;
  for (const CArgumentFacts& argument : command.arguments)
    if (argument.IsOption() == areOptions) text += RoffEntry(TermOf(argument), argument.help + ".");
  return text.empty() ? "" : RoffSection(heading) + text;
}

std::string SynopsisOf(const CCommandFacts& command) {
  std::string line = Bold("vastra " + command.name) + " [" + Italic("OPTION") + "]...";
  for (const CArgumentFacts& argument : command.arguments) {
    if (argument.IsOption()) continue;
    const std::string value = Italic(argument.value);
    line += " " + (argument.isRequired ? value : "[" + value + "]") + (argument.isRepeated ? "..." : "");
  }
  return RoffSection("SYNOPSIS") + line + "\n";
}

std::string PageHead(const std::string& page, const std::string& help) {
  return ".TH \"" + Roff(page) + "\" 1 \"\" \"vastra " VASTRA_VERSION "\" \"User Commands\"\n" +
         RoffSection("NAME") + Roff(page) + " \\- " + Roff(help) + "\n";
}

std::string PageEnd() {
  return RoffEntries("EXIT STATUS", kStatus) + RoffEntries("ENVIRONMENT", kEnvironment);
}

std::string CommandPage(const CCommandFacts& command) {
  return PageHead("vastra-" + command.name, command.help) + SynopsisOf(command) + RoffSection("DESCRIPTION") +
         Roff(command.help) + ".\n" + RoffArguments(command, "ARGUMENTS", false) +
         RoffArguments(command, "OPTIONS", true) + PageEnd() + RoffSection("EXAMPLE") + ".EX\n" +
         Roff(command.example) + "\n.EE\n" + RoffSection("SEE ALSO") + "\\fBvastra\\fR(1)\n";
}

std::string ProgramPage(const std::vector<CCommandFacts>& commands) {
  const CCommandFacts program = ProgramFacts();
  std::string list, see;
  for (const CCommandFacts& command : commands) {
    list += RoffEntry(Bold("vastra " + command.name), command.help + ".");
    see += (see.empty() ? "" : ",\n") + Bold("vastra-" + command.name) + "(1)";
  }
  return PageHead("vastra", "log what industrial controllers measure") + RoffSection("SYNOPSIS") +
         Bold("vastra") + " " + Italic("COMMAND") + " [" + Italic("ARGUMENT") + "]...\n" +
         RoffSection("DESCRIPTION") + Roff(kMeaningOfCommand) + "\n" + RoffSection("COMMANDS") + list +
         RoffArguments(program, "OPTIONS", true) + PageEnd() + RoffSection("SEE ALSO") + see + "\n";
}

EExit SavePage(const CFileArgument& folder, const std::string& name, const std::string& page) {
  const CString file = CString(name) + ".1";
  try {
    SaveFile(JoinPath(folder.path, file),
             [&page](CFile& out) { out.Write(page.data(), static_cast<UINT>(page.size())); });
    return kDone;
  } catch (const CFileException& exception) {
    return Fail(kFailed, folder.typed + "/" + file, exception.Text());
  }
}

EExit WriteManual(const CFileArgument& folder) {
  std::vector<CCommandFacts> commands = CommandFacts();
  std::erase_if(commands, [](const CCommandFacts& command) { return command.isHidden; });
  EExit status = SavePage(folder, "vastra", ProgramPage(commands));
  for (const CCommandFacts& command : commands)
    if (status == kDone) status = SavePage(folder, "vastra-" + command.name, CommandPage(command));
  return status;
}

}  // namespace

CAction DeclareMan(CArguments& arguments) {
  const auto folder = arguments.File("DIR", "The folder");
  return [=] { return WriteManual(*folder); };
}

}  // namespace vastra
