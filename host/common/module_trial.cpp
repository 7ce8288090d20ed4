#include "host/common/module_trial.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "host/common/module_file.h"
#include "host/common/module_question.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;
using CTrialTime = std::chrono::steady_clock;

constexpr auto kTrialLimit = 2s;        // for all that is asked of a module
constexpr auto kTrialStart = 10s;       // until the process asks, on a busy machine
constexpr auto kTrialSlice = 10ms;      // between two looks at whether a process has ended
constexpr std::ptrdiff_t kAtOnce = 32;  // processes
constexpr std::size_t kLongestReport = 8192;

CString NumberOf(long long number) { return CString(std::to_string(number)); }

// The settings of a process to be started.
class CSpawning {
 public:
  CSpawning() {
    ::posix_spawn_file_actions_init(&m_actions);
    ::posix_spawnattr_init(&m_attributes);
  }
  CSpawning(const CSpawning&) = delete;
  CSpawning& operator=(const CSpawning&) = delete;
  ~CSpawning() {
    ::posix_spawn_file_actions_destroy(&m_actions);
    ::posix_spawnattr_destroy(&m_attributes);
  }

  // Starts the trial of the module in a process group of its own, without a standard stream. Returns 0 or the
  // error.
  int Start(int module, int pipe, pid_t& process) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      ::posix_spawn_file_actions_addopen(&m_actions, stream, "/dev/null", O_RDWR, 0);
    for (const int kept : {module, pipe}) ::posix_spawn_file_actions_adddup2(&m_actions, kept, kept);
    sigset_t all, none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&m_attributes, &all);
    ::posix_spawnattr_setsigmask(&m_attributes, &none);
    ::posix_spawnattr_setflags(&m_attributes,
                               POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    std::string texts[] = {"vastra", kModuleTrialWord, std::to_string(module), std::to_string(pipe)};
    char* const arguments[] = {texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data(), nullptr};
    return ::posix_spawn(&process, "/proc/self/exe", &m_actions, &m_attributes, arguments, environ);
  }

 private:
  posix_spawn_file_actions_t m_actions;
  posix_spawnattr_t m_attributes;
};

// The trial of one file.
class CModuleTrial {
 public:
  explicit CModuleTrial(CModuleFile& file);
  CModuleTrial(const CModuleTrial&) = delete;
  CModuleTrial& operator=(const CModuleTrial&) = delete;
  ~CModuleTrial();

  // The end of the pipe to listen to; -1 once the trial is over.
  int Pipe() const { return m_pipe; }
  // Reads what has come. Ends the trial when the process has ended or its time is up.
  void Listen();

 private:
  void Start();
  void ReadPipe();
  bool HasEnded();
  void End();
  void KillGroup();
  void Judge();
  CString HowEnded() const;

  CModuleFile& m_file;
  int m_module = -1;
  int m_pipe = -1;
  pid_t m_process = 0;
  CTrialTime::time_point m_deadline;
  siginfo_t m_end = {};  // how the process ended
  std::string m_steps;   // what was begun, a letter each
  std::string m_report;  // what came after the steps
};

CModuleTrial::CModuleTrial(CModuleFile& file) : m_file(file) {
  m_module = OpenModuleFile(file.m_folder, file.m_fileName, file.m_reason);
  if (m_module >= 0) Start();
}

CModuleTrial::~CModuleTrial() {
  if (m_pipe >= 0) End();
  if (m_module >= 0 && !m_file.m_reason.IsEmpty()) ::close(m_module);
}

void CModuleTrial::Start() {
  int ends[2];
  int error = ::pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0 ? 0 : errno;
  if (error == 0) {
    error = CSpawning().Start(m_module, ends[1], m_process);
    ::close(ends[1]);
    m_pipe = ends[0];
    if (error != 0) ::close(std::exchange(m_pipe, -1));
  }
  if (error != 0) m_file.m_reason = "it cannot be tried: " + CString(std::strerror(error));
  m_deadline = CTrialTime::now() + kTrialStart;
}

void CModuleTrial::ReadPipe() {
  char part[4096];
  for (ssize_t count;
       m_steps.size() + m_report.size() < kLongestReport && (count = ::read(m_pipe, part, sizeof part)) > 0;)
    for (const char letter : std::string_view(part, static_cast<std::size_t>(count)))
      (m_report.empty() && FindModuleStep(letter) ? m_steps : m_report) += letter;
}

bool CModuleTrial::HasEnded() {
  m_end.si_pid = 0;
  if (::waitid(P_PID, static_cast<id_t>(m_process), &m_end, WEXITED | WNOHANG | WNOWAIT) != 0) {
    m_end.si_pid = m_process;  // the host ignores how its processes end: the report decides
    m_end.si_code = CLD_EXITED;
    m_end.si_status = 0;
  }
  return m_end.si_pid != 0;
}

void CModuleTrial::Listen() {
  const bool ended = HasEnded();  // asked before the pipe, so that the last bytes are read
  const bool isBegun = !m_steps.empty();
  ReadPipe();
  if (!isBegun && !m_steps.empty()) m_deadline = CTrialTime::now() + kTrialLimit;
  if (ended || CTrialTime::now() >= m_deadline) End();
}

// The group exists while the process is not waited for. A process that cannot be killed is left to the
// system.
void CModuleTrial::KillGroup() {
  ::kill(-m_process, SIGKILL);
  for (int i = 0; i < 50 && ::waitpid(m_process, nullptr, WNOHANG) == 0; ++i)
    std::this_thread::sleep_for(kTrialSlice);
}

void CModuleTrial::End() {
  KillGroup();
  ::close(std::exchange(m_pipe, -1));
  Judge();
}

CString CModuleTrial::HowEnded() const {
  const char* step = m_steps.empty() ? "before it was loaded" : FindModuleStep(m_steps.back());
  const CString place = " " + CString(step) + ": ";
  if (m_end.si_pid == 0) return "it hung" + place + "no return within " + NumberOf(kTrialLimit / 1s) + " s";
  if (m_end.si_code == CLD_EXITED)
    return "it ended its process" + place + "status " + NumberOf(m_end.si_status);
  return "it crashed" + place + "signal " + NumberOf(m_end.si_status) + " (" + ::strsignal(m_end.si_status) +
         ")";
}

// A report is "+ID NAME" or "-REASON", with a 0 at its end.
void CModuleTrial::Judge() {
  const std::size_t end = m_report.find('\0');
  const bool isDone = m_end.si_pid != 0 && m_end.si_code == CLD_EXITED && m_end.si_status == 0;
  if (!isDone || end == std::string::npos) return m_file.m_reason = HowEnded(), void();
  const char* const report = m_report.c_str();  // up to end
  if (*report == '-' && end > 1) return m_file.m_reason = report + 1, void();
  const auto [rest, fault] = std::from_chars(report + 1, report + std::max<std::size_t>(end, 1), m_file.m_id);
  if (*report != '+' || !m_steps.ends_with(kLastModuleStep) || fault != std::errc() || *rest != ' ')
    return m_file.m_reason = "its trial sent something else than a report", void();
  m_file.m_name = rest + 1;
  m_file.m_loadPath = LoadPathOf(m_module);
}

// Tries the files from begin to below end at the same time.
void TryTogether(CModuleFile* begin, CModuleFile* end) {
  std::vector<std::unique_ptr<CModuleTrial>> trials;
  for (CModuleFile* file = begin; file != end; ++file)
    trials.push_back(std::make_unique<CModuleTrial>(*file));
  for (;;) {
    std::vector<pollfd> pipes;
    for (const auto& trial : trials)
      if (trial->Pipe() >= 0) pipes.push_back({trial->Pipe(), POLLIN, 0});
    if (pipes.empty()) return;
    ::poll(pipes.data(), pipes.size(), static_cast<int>(kTrialSlice / 1ms));
    for (const auto& trial : trials)
      if (trial->Pipe() >= 0) trial->Listen();
  }
}

}  // namespace

void TryModules(CArray<CModuleFile>& files) {
  CModuleFile* const end = files.GetData() + files.GetSize();
  for (CModuleFile* begin = files.GetData(); begin != end;) {
    CModuleFile* const next = begin + std::min(kAtOnce, end - begin);
    TryTogether(begin, next);
    begin = next;
  }
}

}  // namespace vastra
