// vastra, the command line host.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "host/cli/command.h"
#include "host/cli/command_facts.h"
#include "host/cli/no_memory.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/driver_search.h"
#include "host/common/module_trial.h"
#include "vastra/plc/node_workers.h"

namespace vastra {
namespace {

// A standard stream that the caller has closed must not become the first file that the program opens.
void OccupyStandardStreams() {
  int handle = 0;
  while (handle >= 0 && handle <= STDERR_FILENO) handle = ::open("/dev/null", O_RDONLY);
  if (handle >= 0) ::close(handle);
}

// The command to run.
struct CRequest {
  const char* name = nullptr;
  CAction action;
};

void AddCommand(CLI::App& line, const CCommand& command, CRequest& request) {
  CLI::App* sub = line.add_subcommand(command.name, command.help);
  sub->group(command.isHidden ? "" : "Commands")->footer(std::string("Example:\n  ") + command.example);
  CArguments arguments(*sub);
  sub->final_callback([&request, &command, action = command.declare(arguments)] {
    request = {command.name, action};
  });
}

// The message of the parsing library, except for a command that is missing or unknown.
CString WhatIsWrong(const CLI::App& line, const CLI::ParseError& fault) {
  if (!line.get_subcommands().empty()) return fault.what();
  if (line.remaining_size() > 0) return "there is no command " + CString(line.remaining().front());
  return fault.get_name() == "RequiredError" ? CString("a COMMAND is required") : CString(fault.what());
}

EExit FailUse(const CLI::App& line, const CLI::ParseError& fault) {
  const auto given = line.get_subcommands();
  const CString command = given.empty() ? CString() : " " + CString(given.front()->get_name());
  return Fail(kWrongUse, given.empty() ? CString("command line") : command.Mid(1),
              WhatIsWrong(line, fault) + " (see vastra" + command + " --help)");
}

EExit Main(int argc, char** argv) {
  CLI::App line;
  DescribeProgram(line);
  line.require_subcommand(1);
  CRequest request;
  for (const CCommand& command : Commands()) AddCommand(line, command, request);
  try {
    line.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return PrintData(line.help());
  } catch (const CLI::CallForVersion& version) {
    return PrintData(version.what() + std::string("\n"));
  } catch (const CLI::ParseError& fault) {
    return FailUse(line, fault);
  }
  try {
    SearchDrivers({}, true);
    return request.action();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& fault) {
    return Fail(kFailed, request.name, fault.what());
  }
}

}  // namespace
}  // namespace vastra

namespace {

// The result of the process. A driver that still runs cannot be unloaded: the end is then _exit.
int End(int status) {
  if (vastra::CNodeWorkers::OverdueTasks() > 0) ::_exit(status);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (vastra::IsModuleTrial(argc, argv)) return vastra::RunModuleTrial(argv);
  vastra::OccupyStandardStreams();
  ::signal(SIGPIPE, SIG_IGN);  // a reader that has closed the pipe is a failed write
  try {
    const vastra::EExit status = vastra::Main(argc, argv);
    vastra::CTerminal::Instance().Drain();
    return End(status);
  } catch (const std::bad_alloc&) {
    return End(vastra::FailMemory());
  } catch (...) {
    return End(vastra::kFailed);
  }
}
