#include "host/cli/run_arguments.h"

#include "host/cli/load.h"
#include "host/cli/terminal/terminal.h"

namespace vastra {
namespace {

EVerbosity Verbosity(bool debug, bool quiet) {
  if (quiet) return EVerbosity::quiet;
  return debug ? EVerbosity::debug : EVerbosity::normal;
}

}  // namespace

CRunArguments::CRunArguments(CArguments& arguments)
    : m_file(arguments.File("FILE", kConfigurationHelp)),
      m_scans(arguments.Number("--scans", "N", "Stop after N scans; failed reads count, too", 0, kMostScans)),
      m_period(arguments.Number(
          "--period", "MS",
          "Milliseconds from scan to scan, in place of the configuration's; 0: as fast as possible", 0,
          kLongestPeriod)),
      m_node(arguments.Number("--node", "N", "Number of this computer in the network of the PLCs", 0,
                              UINT32_MAX)),
      m_threaded(arguments.Flag("--threaded", "Read from and write to the PLCs on worker threads")),
      m_debug(arguments.Flag("--debug", "Show each operation of each link")),
      m_quiet(arguments.Flag("--quiet", "Show errors only, and no progress")) {
  arguments.Exclude("--debug", "--quiet");
}

EExit CRunArguments::Run(CSessionView& view, CSessionResult& result) const {
  CTerminal::Instance().StampLines();
  if (*m_quiet) CTerminal::Instance().BeQuiet();
  CConfiguration configuration;
  if (Load(*m_file, configuration) != kDone) return kRefused;
  return RunSession(m_file->typed, configuration, Options(), view, result);
}

CSessionOptions CRunArguments::Options() const {
  return {{.threaded = *m_threaded,
           .scans = m_scans->value_or(-1),
           .period = CScanLoop::Period(m_period->value_or(-1)),
           .node = static_cast<UINT>(m_node->value_or(0))},
          Verbosity(*m_debug, *m_quiet)};
}

}  // namespace vastra
