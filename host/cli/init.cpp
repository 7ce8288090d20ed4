// vastra init: writes a configuration to start a service from, and says how the service is started.
#include <algorithm>
#include <cctype>

#include "host/cli/command.h"
#include "host/cli/console.h"
#include "host/cli/output.h"
#include "host/cli/session.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/configuration_file.h"
#include "host/common/demo.h"
#include "host/common/json_text.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::size_t kLongestName = 64;  // the path of a socket with it has at most 108 bytes
constexpr const char* kFileEndings[] = {".json", ".vst"};

// Whether name can be that of an instance of the unit, and of a file.
bool IsName(const CString& name) {
  const std::string_view text = name.View();
  const auto isPlain = [](unsigned char byte) {
    return byte < 128 && (std::isalnum(byte) || byte == '-' || byte == '_' || byte == '.');
  };
  return !text.empty() && text.size() <= kLongestName && text[0] != '.' && text[0] != '-' &&
         std::ranges::all_of(text, isPlain) &&
         std::ranges::none_of(kFileEndings, [&](const char* ending) { return text.ends_with(ending); });
}

EExit Check(const CString& subject, const std::string& text, const CString& folder) {
  CConfiguration configuration;
  const CString fault = ParseConfiguration(text, folder, configuration);
  if (!fault.IsEmpty()) return Fail(kRefused, subject, fault);
  CHostConsole console(EVerbosity::normal);
  CRunOptions options;
  options.policy = CLogPolicy();
  options.folders = EFolders::leaveOut;
  const CRun run(configuration, console.Messenger(), options);
  return PrintVerdict(subject, run.Findings(), {}, run.EquationFaults(), false);
}

EExit Init(const CString& name, const CString& host, const CFileArgument& folder) {
  if (!IsName(name))
    return Fail(kWrongUse, name,
                "is not the name of a service: letters, digits, '-', '_' and '.', at most 64, not '.' or '-' "
                "first, and without an ending");
  if (!IsJsonText(CJson(host.Std()))) return Fail(kWrongUse, "--modbus", "is not UTF-8");
  const CFileArgument file = {JoinPath(folder.typed, name + ".json"), JoinPath(folder.path, name + ".json")};
  const CString other = JoinPath(folder.path, name + ".vst");
  if (FileExists(other)) return Fail(kFailed, file.typed, "not written: " + other + " exists");
  const std::string text = ExampleConfiguration(host);
  if (const EExit status = Check(file.typed, text, folder.path); status != kDone) return status;
  if (const CString fault = WriteNewFile(file.path, text); !fault.IsEmpty())
    return Fail(kFailed, file.typed, "not written: " + fault);
  CTerminal::Instance().Line(
      "vastra: " + file.typed +
      ": written and checked. Edit it if it is not what you need, then start it and look at it:");
  return PrintLines({"systemctl enable --now vastra@" + name.Std(), "systemctl status vastra@" + name.Std()});
}

}  // namespace

CAction DeclareInit(CArguments& arguments) {
  const auto name = arguments.Text("NAME", "The name of the service, which is vastra@NAME then");
  const auto host =
      arguments.Texts("--modbus", "HOST", "Read the Modbus device at HOST (default: the simulator)");
  const auto folder =
      arguments.OptionalFile("--dir", "DIR", "Folder of the configuration (default: /etc/vastra)");
  return [=] {
    const CFileArgument usual = {"/etc/vastra", "/etc/vastra"};
    return Init(*name, host->empty() ? CString() : host->back(), folder->value_or(usual));
  };
}

}  // namespace vastra
