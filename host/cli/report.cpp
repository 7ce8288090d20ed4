// vastra report: a configuration as the text report.
#include "host/cli/command.h"
#include "host/cli/files.h"
#include "host/cli/load.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"

namespace vastra {
namespace {

EExit Report(const CFileArgument& file) {
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  return PrintData([&configuration](CFile& out) { configuration.Report(out); });
}

}  // namespace

CAction DeclareReport(CArguments& arguments) {
  const auto file = arguments.File("FILE", kConfigurationHelp);
  return [=] { return Report(*file); };
}

}  // namespace vastra
