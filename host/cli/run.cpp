// vastra run: runs a configuration until a replay ends, a number of scans was made or a signal comes.
#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/load.h"
#include "host/cli/session.h"
#include "host/cli/terminal.h"

namespace vastra {
namespace {

CJson ToJson(const CSessionResult& result) {
  const CScanCounts& counts = result.counts;
  return {
      {"read", counts.read},
      {"failedReads", counts.failedReads},
      {"late", counts.late},
      {"failedWrites",
       {{"smart", 0}, {"outputs", counts.failedOutputs}, {"summaries", 0}, {"plcWrite", 0}, {"trend", 0}}},
      {"files", result.files}};
}

EExit Run(const CFileArgument& file, const CSessionOptions& options, UINT node, bool asJson) {
  CTerminal::Instance().StampLines();
  if (options.verbosity == EVerbosity::quiet) CTerminal::Instance().BeQuiet();
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  configuration.m_plcWrite.m_nodeNumber = node;
  CSessionResult result;
  const EExit status = RunSession(file.typed, configuration, options, result);
  if (status != kDone) return status;
  if (asJson) return PrintJson(ToJson(result));
  CTerminal::Instance().Remark("vastra: " + ToText(result));
  return kDone;
}

EVerbosity Verbosity(bool debug, bool quiet) {
  if (quiet) return EVerbosity::quiet;
  return debug ? EVerbosity::debug : EVerbosity::normal;
}

}  // namespace

CAction DeclareRun(CArguments& arguments) {
  const auto file = arguments.File("FILE", "The configuration, as JSON or as a configuration file");
  const auto scans =
      arguments.Number("--scans", "N", "Stop after so many scans; failed reads count", 0, kMostScans);
  const auto period = arguments.Number(
      "--period", "MS",
      "Milliseconds from scan to scan, in place of the configuration's; 0: as fast as possible", 0,
      kLongestPeriod);
  const auto threaded = arguments.Flag("--threaded", "Read on a worker thread");
  const auto node =
      arguments.Number("--node", "N", "Number of this computer on the net of PLCs", 0, UINT32_MAX);
  const auto debug = arguments.Flag("--debug", "Show each operation of each link");
  const auto quiet = arguments.Flag("--quiet", "Show errors only, and no progress");
  const auto asJson = arguments.Flag("--json", "Print the counts and the files written as one object");
  arguments.Exclude("--debug", "--quiet");
  return [=] {
    const CSessionOptions options{*threaded, scans->value_or(-1), CScanLoop::Period(period->value_or(-1)),
                                  Verbosity(*debug, *quiet)};
    return Run(*file, options, static_cast<UINT>(node->value_or(0)), *asJson);
  };
}

}  // namespace vastra
