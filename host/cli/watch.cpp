// vastra watch: like run, with the newest sample on standard output.
#include "host/cli/command.h"
#include "host/cli/logger_arguments.h"
#include "host/cli/run_arguments.h"
#include "host/cli/terminal/terminal.h"
#include "host/cli/watch_attached.h"

namespace vastra {
namespace {

// Splits lists at their commas.
CStringArray NamesIn(const std::vector<CString>& lists) {
  CStringArray names;
  for (CString list : lists) {
    for (int comma; (comma = list.Find(',')) >= 0; list = list.Mid(comma + 1)) names.Add(list.Left(comma));
    names.Add(list);
  }
  return names;
}

EExit WatchFile(const CRunArguments& arguments, const std::vector<CString>& variables) {
  if (arguments.File().typed.IsEmpty())
    return Fail(kWrongUse, "watch", "FILE or --attach NAME is required (see vastra watch --help)");
  CWatchView view(arguments.File().typed, NamesIn(variables));
  CSessionResult result;
  const EExit status = arguments.Run(view, result);
  return status == kDone ? PrintEnd(result) : status;
}

}  // namespace

CAction DeclareWatch(CArguments& arguments) {
  const CRunArguments run(arguments);
  const auto variables = arguments.Texts("--vars", "A,B,...", "Show these variables only");
  const auto attach = arguments.OptionalText("--attach", "NAME", "Show a logger that runs, in place of FILE");
  const CLoggerArguments loggers(arguments);
  arguments.MakeAlternative("FILE", "--attach", {"--vars", "--dir", "--etc"});
  arguments.Need("--dir", "--attach");
  return [=] {
    if (!*attach) return WatchFile(run, *variables);
    const EExit status = CLoggerArguments::Check(**attach);
    return status == kDone ? WatchLogger(PlaceOfLogger(loggers.Folders(), **attach), NamesIn(*variables))
                           : status;
  };
}

}  // namespace vastra
