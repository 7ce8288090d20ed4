#include "host/cli/run_arguments.h"

#include "host/cli/load.h"
#include "host/cli/terminal/terminal.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

EVerbosity Verbosity(bool debug, bool quiet) {
  if (quiet) return EVerbosity::quiet;
  return debug ? EVerbosity::debug : EVerbosity::normal;
}

constexpr double kLongestWait = 86400;                          // seconds
constexpr std::int64_t kMostMegabytes = std::int64_t{1} << 20;  // a terabyte

std::chrono::milliseconds ToMilliseconds(double seconds) {
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

// The configuration of a service can be named without its ending.
CFileArgument WithEnding(const CFileArgument& file) {
  if (FileExists(file.path)) return file;
  for (const char* ending : {".json", ".vst"})
    if (FileExists(file.path + ending)) return {file.typed + ending, file.path + ending};
  return file;
}

}  // namespace

CArgument<bool> DeclarePlain(CArguments& arguments) {
  return arguments.Flag("--plain",
                        "Do what the engine does by default: no journal, no retry, new logs can replace old "
                        "ones, PLCs are used in turn, modules are not tried, and nothing is refused but "
                        "warned of");
}

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
      m_quiet(arguments.Flag("--quiet", "Show errors only, and no progress")),
      m_plain(DeclarePlain(arguments)),
      m_sync(arguments.Seconds("--sync",
                               "Seconds from sync to sync of the journals (default: 5); 0: sync each sample",
                               kLongestWait)),
      m_hold(arguments.Number("--hold", "MB", "Memory for logs that wait for the disk (default: 64)", 0,
                              kMostMegabytes)),
      m_closeWithin(arguments.Seconds("--close-within",
                                      "The longest wait for the disk at the end, in seconds (default: 30)",
                                      kLongestWait)),
      m_patience(arguments.Seconds(
          "--patience", "The longest wait for one call of a driver, in seconds (default: 10)", kLongestWait)),
      m_strict(arguments.Flag("--strict", "Do not start a replay if a log of its list is bad")),
      m_writePlc(arguments.Flag("--write-plc", "Write to the PLCs in a replay, too")),
      m_createFolders(arguments.Flag("--create-folders", "Make the folders of the logs that are missing")),
      m_feed(arguments.OptionalFile(
          "--feed", "SOCKET", "Let other programs follow the run through this socket; see docs/feed.md")),
      m_drivers(arguments) {
  arguments.Exclude("--debug", "--quiet");
  for (const char* option : {"--sync", "--hold", "--close-within", "--patience", "--strict"})
    arguments.Exclude(option, "--plain");
}

EExit CRunArguments::Run(CSessionView& view, CSessionResult& result, const CServiceRequest& service) const {
  CTerminal::Instance().StampLines();
  if (service.isService) CTerminal::Instance().FollowJournal();
  if (*m_quiet) CTerminal::Instance().BeQuiet();
  if (m_drivers.Search(!*m_plain) != kDone) return kWrongUse;
  if (service.isService) *m_file = WithEnding(*m_file);
  CConfiguration configuration;
  if (Load(*m_file, configuration, service.root) != kDone) return kRefused;
  if (!*m_plain) WarnOfModules();
  CSessionOptions options = Options(service);
  std::optional<CFeed> feed;
  if (*m_feed) {
    options.feed = &feed.emplace(CFeedPlace{(*m_feed)->path, m_file->path});
    if (const CString fault = feed->Open(); !fault.IsEmpty()) return Fail(kFailed, m_file->typed, fault);
  }
  return RunSession(m_file->typed, configuration, options, view, result);
}

CSessionOptions CRunArguments::Options(const CServiceRequest& service) const {
  CSessionOptions options = {{.threaded = *m_threaded,
                              .scans = m_scans->value_or(-1),
                              .period = CScanLoop::Period(m_period->value_or(-1)),
                              .node = static_cast<UINT>(m_node->value_or(0)),
                              .replayWrites = *m_writePlc || *m_plain,
                              .policy = Policy(),
                              .patience = Patience()},
                             Verbosity(*m_debug, *m_quiet),
                             true,
                             *m_strict,
                             *m_createFolders ? EFolders::create : EFolders::attempt,
                             service.retries};
  if (service.isService)
    options.load = [file = *m_file, root = service.root](CConfiguration& fresh) {
      return Load(file, fresh, root);
    };
  return options;
}

std::optional<CScanLoop::Period> CRunArguments::Patience() const {
  if (*m_plain) return std::nullopt;
  return *m_patience ? ToMilliseconds(**m_patience) : kPatience;
}

std::optional<CLogPolicy> CRunArguments::Policy() const {
  if (*m_plain) return std::nullopt;
  CLogPolicy policy;
  if (*m_sync) policy.sync = ToMilliseconds(**m_sync);
  if (*m_hold) policy.hold = static_cast<std::uint64_t>(**m_hold) << 20;
  if (*m_closeWithin) policy.closeWithin = ToMilliseconds(**m_closeWithin);
  return policy;
}

}  // namespace vastra
