// vastra run: runs a configuration until a replay ends, a number of scans is reached or a signal arrives.
#include "host/cli/command.h"
#include "host/cli/ledger_json.h"
#include "host/cli/progress.h"
#include "host/cli/run_arguments.h"
#include "host/cli/terminal/terminal.h"

namespace vastra {
namespace {

CJson ToJson(const CSessionResult& result) {
  const CScanCounts& counts = result.counts;
  const auto& failed = counts.failedWrites;
  return {{"read", counts.read},
          {"failedReads", counts.failedReads},
          {"late", counts.late},
          {"failedWrites",
           {{"smart", failed.smart},
            {"outputs", failed.outputs},
            {"summaries", failed.summaries},
            {"plcWrite", failed.plcWrite},
            {"trend", failed.trend}}},
          {"files", result.files},
          {"ledger", LedgerJson(result.ledger)}};
}

EExit Run(const CRunArguments& arguments, bool asJson, const CServiceRequest& service) {
  CProgress progress(!service.isService);
  CSessionResult result;
  const EExit status = arguments.Run(progress, result, service);
  if (status != kDone) return status;
  if (!asJson) return PrintEnd(result);
  if (const CString loss = LossText(result.ledger); !loss.IsEmpty())
    Fail(kFailed, arguments.File().typed, loss);
  const EExit printed = PrintJson(ToJson(result));
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
