// vastra demo: logs from the simulator and writes a configuration to start from.
#include "host/common/demo.h"

#include <cstring>

#include "host/cli/command.h"
#include "host/cli/progress.h"
#include "host/cli/run_arguments.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/configuration_file.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::int64_t kScans = 120;

EExit Prepare(const CFileArgument& out, const CFileArgument& file) {
  if (const CString fault = MakeDemoFolders(out.path); !fault.IsEmpty())
    return Fail(kFailed, out.typed, fault);
  bool isChanged = false;
  if (const CString fault = SaveDemo(file.path, isChanged); !fault.IsEmpty())
    return Fail(kFailed, file.typed, fault);
  if (isChanged) Warn(file.typed, "not written: the file exists, and its content is not that of the demo");
  return kDone;
}

// The path as a shell reads it: in quotes if it has blanks or characters that a shell interprets.
CString ShellWord(const CString& path) {
  constexpr const char* kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+,:@%";
  if (std::strspn(path, kPlain) == static_cast<std::size_t>(path.GetLength())) return path;
  CString word = "'";
  for (int i = 0; i < path.GetLength(); ++i) word += path[i] == '\'' ? "'\\''" : CString(path[i]);
  return word + "'";
}

void Explain(const CFileArgument& out, const CSessionResult& result) {
  CTerminal& terminal = CTerminal::Instance();
  const CString& dir = out.typed;
  for (const std::string& file : result.files)
    terminal.Line("  " + dir + CString(file).Mid(out.path.GetLength()));
  terminal.Line("The configuration is in " + dir + "/" + kDemoFile + ". Try next:");
  const CString demo = ShellWord(dir + "/" + kDemoFile);
  if (!result.files.empty()) {
    terminal.Line("  vastra inspect " + ShellWord(dir + "/all") + "/*.rph");
    terminal.Line("  vastra convert " + ShellWord(dir + "/batches/Batch1.rph"));
  }
  terminal.Line("  vastra watch " + demo + " --vars Temp,TempMean,Items,Deviation");
  terminal.Line("  vastra check " + demo);
  terminal.Line("  vastra run " + demo);
}

EExit Demo(const CFileArgument& out, const CSessionOptions& options) {
  const CFileArgument file = {out.typed + "/" + kDemoFile, JoinPath(out.path, kDemoFile)};
  if (Prepare(out, file) != kDone) return kFailed;
  CConfiguration configuration;
  const CString fault = ParseConfiguration(kDemoConfiguration, out.path, configuration);
  if (!fault.IsEmpty()) return Fail(kRefused, "demo", fault);
  CProgress progress;
  CSessionResult result;
  const EExit status = RunSession("demo", configuration, options, progress, result);
  if (status != kDone) return status;
  if (!result.HasLeftRows()) PrintEnd(result);
  Explain(out, result);
  return result.HasLeftRows() ? PrintEnd(result) : kDone;
}

}  // namespace

CAction DeclareDemo(CArguments& arguments) {
  const auto out = arguments.OptionalFile("--out", "DIR", "Folder for the logs (default: demo-logs)");
  const auto scans = arguments.Number("--scans", "N", "Stop after N scans (default: 120)", 0, kMostScans);
  const auto period =
      arguments.Number("--period", "MS", "Milliseconds from scan to scan (default: 25)", 0, kLongestPeriod);
  const auto plain = DeclarePlain(arguments);
  const CFileArgument usual = ToFile("demo-logs");
  return [=] {
    return Demo(out->value_or(usual), {.loop = {.scans = scans->value_or(kScans),
                                                .period = CScanLoop::Period(period->value_or(-1)),
                                                .policy = *plain ? std::nullopt : std::optional(CLogPolicy()),
                                                .patience = *plain ? std::nullopt : std::optional(kPatience)},
                                       .reports = false});
  };
}

}  // namespace vastra
