#include "host/common/module_question.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/common/json_text.h"
#include "host/common/module_file.h"
#include "host/common/module_trial.h"
#include "vastra/plc/driver_call.h"

namespace vastra {
namespace {

constexpr std::size_t kLongestName = 1000;  // bytes
constexpr std::size_t kLongestReason = 2000;

enum EModuleStep { loading, header, name, table, version, unloading };
constexpr const char* kSteps[] = {"while it was loaded",     "in GetDriverHeader",
                                  "while its name was read", "while its table was read",
                                  "in GetDriverApiVersion",  "while it was unloaded"};

void Send(int pipe, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t part = ::write(pipe, bytes.data() + done, bytes.size() - done);
    if (part < 0 && errno != EINTR) ::_exit(EXIT_FAILURE);
    if (part > 0) done += static_cast<std::size_t>(part);
  }
}

// One module in this process.
class CQuestion {
 public:
  CQuestion(int module, int pipe) : m_path(LoadPathOf(module)), m_pipe(pipe) {}

  // Returns what the process has to report.
  std::string Ask() {
    CString reason;
    Begin(loading);
    m_module = LoadModule(m_path, &reason);
    if (!m_module) return "-" + WithoutPath(reason.Std()).substr(0, kLongestReason);
    const std::string fault = AskAll();
    Begin(unloading);
    FreeModule(m_module);
    return fault.empty() ? "+" + std::to_string(m_header.id) + " " + m_name : "-" + fault;
  }

 private:
  void Begin(EModuleStep step) const { Send(m_pipe, std::string(1, static_cast<char>('a' + step))); }

  // The loader names the file by its descriptor.
  std::string WithoutPath(const std::string& reason) const {
    const std::string begin = m_path.Std() + ": ";
    return reason.starts_with(begin) ? reason.substr(begin.size()) : reason;
  }

  std::string AskAll() {
    Begin(header);
    if (!FindExport(m_module, "GetDriverHeader")) return "no GetDriverHeader";
    DriverHeader again = {};
    if (!AskHeader(m_module, m_header) || !AskHeader(m_module, again))
      return "an exception left GetDriverHeader";
    if (again.id != m_header.id) return "its ID is another one each time";
    Begin(name);
    std::string fault = ReadName();
    Begin(table);
    if (m_header.functions) Touch(m_header.functions, sizeof *m_header.functions);
    Begin(version);
    AskVersion(m_module);
    return fault;
  }

  std::string ReadName() {
    if (!m_header.name) return {};
    const std::size_t length = ::strnlen(m_header.name, kLongestName + 1);
    if (length > kLongestName)
      return "its name does not end within " + std::to_string(kLongestName) + " bytes";
    m_name.assign(m_header.name, length);
    return IsJsonText(CJson(m_name)) ? std::string() : "its name is not UTF-8";
  }

  // Reads bytes that have to be readable.
  static void Touch(const void* begin, std::size_t size) {
    for (const volatile char* byte = static_cast<const char*>(begin); size > 0; --size)
      static_cast<void>(*byte++);
  }

  const CString m_path;
  const int m_pipe;
  HMODULE m_module = nullptr;
  DriverHeader m_header = {};
  std::string m_name;
};

// The faults of the module end this process in the usual way, without a core file, and it ends with the host.
void Confine(int module, int pipe) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit noCore = {1, 1};  // 0 would still start a program that the system has for core files
  ::setrlimit(RLIMIT_CORE, &noCore);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) ::signal(signal, SIG_DFL);
  unsigned first = STDERR_FILENO + 1;
  for (const int kept : {std::min(module, pipe), std::max(module, pipe)}) {
    if (first < static_cast<unsigned>(kept)) ::close_range(first, static_cast<unsigned>(kept) - 1, 0);
    first = static_cast<unsigned>(kept) + 1;
  }
  ::close_range(first, ~0u, 0);
}

}  // namespace

const char* FindModuleStep(char letter) {
  const auto step = static_cast<std::size_t>(letter - 'a');
  return step < std::size(kSteps) ? kSteps[step] : nullptr;
}

bool IsModuleTrial(int argc, char** argv) { return argc == 4 && std::strcmp(argv[1], kModuleTrialWord) == 0; }

int RunModuleTrial(char** argv) {
  const int module = std::atoi(argv[2]), pipe = std::atoi(argv[3]);
  Confine(module, pipe);
  try {
    Send(pipe, CQuestion(module, pipe).Ask() + '\0');
  } catch (const std::bad_alloc&) {
    ::_exit(EXIT_FAILURE);
  }
  ::_exit(EXIT_SUCCESS);  // no destructor of the host runs
}

}  // namespace vastra
