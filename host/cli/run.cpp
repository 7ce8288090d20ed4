// vastra run: runs a configuration until a replay ends, a number of scans is reached or a signal arrives.
#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/progress.h"
#include "host/cli/run_arguments.h"
#include "host/cli/terminal/terminal.h"
#include "host/run/run_json.h"

namespace vastra {
namespace {

CJson ResultJson(const CSessionResult& result) {
  CJson json = CountsJson(result.counts);
  json["files"] = result.files;
  json["ledger"] = LedgerJson(result.ledger);
  return json;
}

EExit Run(const CRunArguments& arguments, bool asJson, const CServiceRequest& service) {
  CProgress progress(!service.isService);
  CSessionResult result;
  const EExit status = arguments.Run(progress, result, service);
  if (status != kDone) return status;
  if (!asJson) return PrintEnd(result);
  if (const CString loss = LossText(result.ledger); !loss.IsEmpty())
    Fail(kFailed, arguments.File().typed, loss);
  const EExit printed = PrintJson(ResultJson(result));
  return printed == kDone ? result.Status() : printed;
}

}  // namespace

CAction DeclareRun(CArguments& arguments) {
  const CRunArguments run(arguments);
  const auto asJson = arguments.Flag(
      "--json", "Print the counts, the files written and the account of each log as one object");
  const auto service = arguments.Flag(
      "--service", "Notify the manager of services, write for its journal, and reload at SIGHUP");
  const auto root = arguments.OptionalFile("--root", "DIR",
                                           "Take relative folders and logs of the configuration from there");
  const auto retry =
      arguments.Flag("--retry", "Try again until a device, folder, driver or log that is missing has come");
  for (const char* option : {"--service", "--retry"}) arguments.Exclude(option, "--plain");
  return [=] { return Run(run, *asJson, {*service, *retry, *root ? (*root)->path : CString()}); };
}

}  // namespace vastra
