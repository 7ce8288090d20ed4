// vastra import, export and report: the forms of a configuration.
#include "host/cli/command.h"
#include "host/cli/files.h"
#include "host/cli/load.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"

namespace vastra {
namespace {

constexpr const char* kFileWords = "The configuration, as JSON or as a configuration file";

EExit Import(const CFileArgument& from, const CFileArgument& to, const CNumber& version) {
  if (IsSameFile(from.path, to.path))
    return Fail(kWrongUse, to.typed, "not written: it is the file to import");
  CConfiguration configuration;
  if (Load(from, configuration) != kDone) return kRefused;
  if (version) configuration.m_version = static_cast<UINT>(*version);
  for (const CString& lost : LostInFile(configuration)) Warn(from.typed, lost);
  const CString fault = SaveConfiguration(to.path, configuration);
  return fault.IsEmpty() ? kDone : Fail(kFailed, to.typed, fault);
}

EExit Export(const CFileArgument& file) {
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  std::string text;
  const CString fault = ConfigurationToJson(configuration, text);
  return fault.IsEmpty() ? PrintData(text) : Fail(kFailed, file.typed, fault);
}

EExit Report(const CFileArgument& file) {
  CConfiguration configuration;
  if (Load(file, configuration) != kDone) return kRefused;
  return PrintData([&configuration](CFile& out) { configuration.Report(out); });
}

}  // namespace

CAction DeclareImport(CArguments& arguments) {
  const auto from = arguments.File("JSON", kFileWords);
  const auto to = arguments.File("FILE", "The configuration file to write");
  const auto version =
      arguments.Number("--version", "1002|1003", "Version of the file; without it, that of the configuration",
                       kVersionFirst, kVersionNewest);
  return [=] { return Import(*from, *to, *version); };
}

CAction DeclareExport(CArguments& arguments) {
  const auto file = arguments.File("FILE", kFileWords);
  return [=] { return Export(*file); };
}

CAction DeclareReport(CArguments& arguments) {
  const auto file = arguments.File("FILE", kFileWords);
  return [=] { return Report(*file); };
}

}  // namespace vastra
