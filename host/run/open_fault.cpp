#include "host/run/open_fault.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/common/key_path.h"
#include "host/common/log_targets.h"
#include "host/common/name_repeats.h"
#include "host/common/name_set.h"
#include "host/common/paths.h"
#include "vastra/platform/file_system.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

CString SystemReason(const CString& key, const CString& path, int error) {
  return key + ": " + path + ": " + std::strerror(error);
}

// 0, or why the file cannot be read.
int ReadError(const CString& path) {
  const int file = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return errno;
  ::close(file);
  return 0;
}

// 0, or why the folder cannot be entered.
int EnterError(const CString& folder) {
  struct stat status = {};
  if (::stat(folder, &status) != 0) return errno;
  if (!S_ISDIR(status.st_mode)) return ENOTDIR;
  return ::access(folder, X_OK) == 0 ? 0 : errno;
}

bool IsInstalled(const CPlcNodeConfig& node) {
  return CDriverFactory::Instance()->GetDriverIndex(node.m_driver.plcType) >= 0;
}

CString FindReplayFault(const CInputConfig& input) {
  if (input.m_inputFiles.IsEmpty()) return "input.inputFiles: there is no log to replay";
  int index = 0;
  for (const CString& path : input.m_inputFiles) {
    const CString key = KeyPath("input.inputFiles", index++);
    if (const int error = ReadError(path)) return SystemReason(key, path, error);
    if (const CString other = OtherThanFile(path); !other.IsEmpty())
      return key + ": " + path + " is " + other + ", not a log";
  }
  return {};
}

// Samples of two nodes are not joined if both have a variable of that name.
CString FindRepeatFault(const CInputConfig& input) {
  CString fault;
  ForEachNodeRepeat(input, [&](const CString& key, const CString& name, const CString& former) {
    const bool isOtherNode = key.Left(key.Find(']')) != former.Left(former.Find(']'));
    if (fault.IsEmpty() && isOtherNode) fault = key + ": " + Quoted(name) + " is in " + former + " already";
  });
  return fault;
}

CString FindInputFault(const CConfiguration& configuration) {
  const CInputConfig& input = configuration.m_input;
  if (input.m_simulating) return FindReplayFault(input);
  if (input.m_plcNodes.IsEmpty()) return "input.plcNodes: there is no PLC node";
  if (std::none_of(input.m_plcNodes.begin(), input.m_plcNodes.end(),
                   [](const CPlcNodeConfig* node) { return IsInstalled(*node); }))
    return "input.plcNodes: no PLC node has a driver that is installed";
  return FindRepeatFault(input);
}

CString FindWriteFault(const CConfiguration& configuration) {
  int index = 0;
  for (const CPlcSingleConfig* node : configuration.m_plcWrite.m_nodes) {
    CString why = FindOpenFault(*node, KeyPath("plcWrite.nodes", index++));
    if (!why.IsEmpty()) return why;
  }
  return {};
}

CString FindNameFaults(const CConfiguration& configuration) {
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs) {
    CString why = FindNameFault(KeyPath("outputs", index++), *output);
    if (!why.IsEmpty()) return why;
  }
  return {};
}

CString FindOutputFault(const CConfiguration& configuration) {
  const CString why = FindNameFaults(configuration);
  return why.IsEmpty() ? FindFolderFault(configuration, "outputs") : why;
}

bool HasInput(const CConfiguration& configuration) {
  const CInputConfig& input = configuration.m_input;
  return input.m_simulating ? !input.m_inputFiles.IsEmpty() : !input.m_plcNodes.IsEmpty();
}

bool HasLogNames(const CConfiguration& configuration) { return FindNameFaults(configuration).IsEmpty(); }
bool Always(const CConfiguration&) { return true; }
bool Never(const CConfiguration&) { return false; }

CString FindNothing(const CConfiguration&) { return {}; }

}  // namespace

CString FindFolderFault(const CConfiguration& configuration, const CString& key) {
  for (const CLogTarget& target : FindLogTargets(configuration)) {
    if (target.key.Find(key) != 0 || target.directory.IsEmpty()) continue;
    if (const int error = EnterError(target.directory))
      return SystemReason(target.key + ".directory", target.directory, error);
  }
  return {};
}

CString FindNameFault(const CString& key, const COutputConfig& output) {
  const CString& name = output.m_nameVariable;
  const bool saves = output.m_saveRp || output.m_saveCsv;
  if (!saves || name.IsEmpty() || name == kSystemTime || FindIn(output.m_varNames, name) >= 0) return {};
  return key + ".nameVariable: \"" + name + "\" is not a variable of the log";
}

CString FindOpenFault(const CPlcSingleConfig& node, const CString& key) {
  if (IsInstalled(node.m_node)) return {};
  return key + ".driver.plcType: no driver " + CString(std::to_string(node.m_node.m_driver.plcType)) +
         " is installed";
}

CString FindOpenFault(const CConfiguration& configuration, EStage stage) {
  static constexpr CString (*kFinders[])(const CConfiguration&) = {
      FindNothing,     FindInputFault,
      FindNothing,  // smart
      FindOutputFault, [](const CConfiguration& all) { return FindFolderFault(all, "summaries"); },
      FindWriteFault,
      FindNothing,  // trend
  };
  return kFinders[static_cast<std::size_t>(stage)](configuration);
}

bool MayOpenLater(const CConfiguration& configuration, EStage stage) {
  static constexpr bool (*kMayOpen[])(const CConfiguration&) = {
      Never,                        // no stage
      HasInput,    Never,           // smart
      HasLogNames, Always, Always,  // outputs, summaries, plcWrite
      Never,                        // trend
  };
  return kMayOpen[static_cast<std::size_t>(stage)](configuration);
}

CString WhyNotOpened(const CString& why) {
  return why.IsEmpty() ? CString("the messages of the links say why") : why;
}

}  // namespace vastra
