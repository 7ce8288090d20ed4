// vastra export: a configuration as JSON.
#include "host/cli/command.h"
#include "host/cli/files.h"
#include "host/cli/load.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/configuration_json.h"

namespace vastra {
namespace {

EExit Export(const CFileArgument& file) {
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  std::string text;
  const CString fault = ConfigurationToJson(configuration, text);
  return fault.IsEmpty() ? PrintData(text) : Fail(kFailed, file.typed, fault);
}

}  // namespace

CAction DeclareExport(CArguments& arguments) {
  const auto file = arguments.File("FILE", kConfigurationHelp);
  return [=] { return Export(*file); };
}

}  // namespace vastra
