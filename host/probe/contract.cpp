#include "host/probe/contract.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "host/common/json_text.h"
#include "host/probe/trial.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;
using CTrialClock = std::chrono::steady_clock;

constexpr auto kSlice = 100ms;  // between two looks at whether the process has ended

CString NumberText(long long number) { return CString(std::to_string(number)); }

// The process of the trial. Follow reads its lines until it is done, has ended or hangs.
class CTrialProcess {
 public:
  explicit CTrialProcess(const CContractTest& test);
  CTrialProcess(const CTrialProcess&) = delete;
  CTrialProcess& operator=(const CTrialProcess&) = delete;
  ~CTrialProcess();

  CContractResult Follow();

 private:
  void Listen();
  bool ReadPipe();
  bool Handle(const std::string& line);
  bool Report(EFinding finding, const CString& words);
  bool GoesOn(bool wanted) {
    m_result.isStopped = !wanted;
    return wanted;
  }
  bool HasEnded();
  CString HowEnded() const;
  void ReportEnd();

  const CContractTest& m_test;
  pid_t m_process = 0;
  bool m_ended = false;
  int m_waitStatus = 0;  // how it ended
  int m_pipe = -1;
  std::string m_received;  // of the next line
  std::string m_call;      // the last call that was begun
  std::size_t m_findings = 0;
  bool m_isDone = false;  // the rest of the lines is not read
  bool m_hangs = false;
  CContractResult m_result;
};

CTrialProcess::CTrialProcess(const CContractTest& test) : m_test(test) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  m_pipe = ends[0];
  m_process = ::fork();
  if (m_process == 0) {
    ::close(ends[0]);
    RunTrial(test, ends[1]);
  }
  const int error = errno;
  ::close(ends[1]);
  if (m_process > 0) return;
  ::close(m_pipe);
  throw std::system_error(error, std::generic_category(), "fork");
}

CTrialProcess::~CTrialProcess() {
  if (!m_ended) {
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, &m_waitStatus, 0);
  }
  ::close(m_pipe);
}

bool CTrialProcess::HasEnded() {
  if (!m_ended) m_ended = ::waitpid(m_process, &m_waitStatus, WNOHANG) == m_process;
  return m_ended;
}

// Reads lines until the last one, the end of the process or a silence longer than the limit.
void CTrialProcess::Listen() {
  CTrialClock::time_point heard = CTrialClock::now();
  while (!m_isDone) {
    const bool ended = HasEnded();  // asked before the pipe, so that the last lines are read
    pollfd end = {m_pipe, POLLIN, 0};
    if (::poll(&end, 1, ended ? 0 : static_cast<int>(kSlice / 1ms)) > 0) {
      if (!ReadPipe()) return;
      heard = CTrialClock::now();
    } else if (ended) {
      return;
    } else if (CTrialClock::now() - heard > m_test.limit) {
      m_hangs = true;
      return;
    }
  }
}

bool CTrialProcess::ReadPipe() {
  char part[4096];
  const ssize_t count = ::read(m_pipe, part, sizeof part);
  if (count <= 0) return count < 0 && errno == EINTR;
  m_received.append(part, static_cast<std::size_t>(count));
  std::size_t begin = 0;
  for (std::size_t end; !m_isDone && (end = m_received.find('\n', begin)) != std::string::npos;
       begin = end + 1)
    if (!Handle(m_received.substr(begin, end - begin))) m_isDone = true;
  m_received.erase(0, begin);
  return true;
}

// Returns false if the test ends with this line.
bool CTrialProcess::Handle(const std::string& line) {
  const CJson message = CJson::parse(line);
  if (message.contains("call")) return m_call = message["call"], true;
  if (message.contains("facts")) {
    const CJson& facts = message["facts"];
    return GoesOn(m_test.onFacts({facts[0], CString(facts[1].get<std::string>()), facts[2]}));
  }
  if (message.contains("finding")) {
    const CJson& finding = message["finding"];
    return Report(static_cast<EFinding>(finding[0].get<int>()), CString(finding[1].get<std::string>()));
  }
  if (message.contains("noDriver")) m_result.noDriver = CString(message["noDriver"].get<std::string>());
  return false;
}

bool CTrialProcess::Report(EFinding finding, const CString& words) {
  if (m_findings == TrialRuleCount()) return false;
  return GoesOn(m_test.onFinding({TrialRule(m_findings++), finding, words}));
}

CString CTrialProcess::HowEnded() const {
  const CString call = " in " + CString(m_call);
  if (m_hangs)
    return "it did not return within " + NumberText(m_test.limit.count()) + " s" + call +
           " (--limit sets a longer time)";
  if (!WIFSIGNALED(m_waitStatus))
    return "its process ended with status " + NumberText(WEXITSTATUS(m_waitStatus)) + call;
  const int signal = WTERMSIG(m_waitStatus);
  const char* hint = signal == SIGABRT ? ", for example by an exception that cannot be caught" : "";
  return "its process was ended by signal " + NumberText(signal) + " (" + ::strsignal(signal) + ")" + call +
         hint;
}

// Reports the rule that was being tried as broken, and the rules after it as not tried.
void CTrialProcess::ReportEnd() {
  m_result.end = HowEnded();
  bool isHeard = Report(EFinding::broken, m_result.end);
  while (isHeard && m_findings < TrialRuleCount()) isHeard = Report(EFinding::notTried, "the test had ended");
}

CContractResult CTrialProcess::Follow() {
  Listen();
  if (m_isDone) return m_result;
  if (!m_hangs && !m_ended) m_ended = ::waitpid(m_process, &m_waitStatus, 0) == m_process;
  ReportEnd();
  return m_result;
}

}  // namespace

CContractResult TestContract(const CContractTest& test) { return CTrialProcess(test).Follow(); }

}  // namespace vastra
