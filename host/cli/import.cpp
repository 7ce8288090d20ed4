// vastra import: either form of a configuration to a configuration file.
#include "host/cli/command.h"
#include "host/cli/files.h"
#include "host/cli/load.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/configuration_file.h"
#include "host/common/paths.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

EExit Import(const CFileArgument& from, const CFileArgument& to, const CNumber& version) {
  if (IsSameFile(from.path, to.path))
    return Fail(kWrongUse, to.typed, "not written: it is the file to import");
  const CString other = OtherThanFile(to.path);
  if (!other.IsEmpty() && FileExists(to.path)) return Fail(kFailed, to.typed, "not written: it is " + other);
  CConfiguration configuration;
  if (Load(from, configuration) != kDone) return kRefused;
  if (version) configuration.m_version = static_cast<UINT>(*version);
  for (const CString& lost : LostInFile(configuration)) Warn(from.typed, lost);
  const CString fault = SaveConfiguration(to.path, configuration);
  return fault.IsEmpty() ? kDone : Fail(kFailed, to.typed, fault);
}

}  // namespace

CAction DeclareImport(CArguments& arguments) {
  const auto from = arguments.File("JSON", kConfigurationHelp);
  const auto to = arguments.File("FILE", "The configuration file to write");
  const auto version =
      arguments.Number("--version", "1002|1003", "Version of the file; without it, that of the configuration",
                       kVersionFirst, kVersionNewest);
  return [=] { return Import(*from, *to, *version); };
}

}  // namespace vastra
