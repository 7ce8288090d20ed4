// The memory of the desktop: the growth of its resident size from the first hundred thousand scans at full
// speed to a million. With an argument, which script/test passes, there are 25 times fewer scans.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr int kLogs = 250;          // of the whole run
constexpr int kFirst = kLogs / 10;  // logs before the first measurement
constexpr double kGoal = 1;         // MB

// Each log has a different name, so the number of logs shows the number of scans.
std::string Configuration(int samples) {
  const std::string size = std::to_string(samples);
  return R"({"input":{"asFastAsPossible":1,"plcNodes":[{"nodeName":"N","driver":{"plcType":9001,"text1":"sine"},)"
         R"("varNames":["a"]}],"preprocess":1,"preEquationText":"n = n + 1; Log = (n - 1 - (n - 1) % )" +
         size + ") / " + size +
         R"(;","preNewVars":["a","Log","n"]},"outputs":[{"enableText":"WriteToLog = 1;","varNames":["a","Log"],)"
         R"("saveRp":1,"maxLogs":1000,"maxSamples":)" +
         size + R"(,"directory":"logs","nameVariable":"Log"}]})";
}

pid_t Start(const fs::path& program, const fs::path& folder) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  for (const char* home : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) ::setenv(home, folder.c_str(), 1);
  ::execl(program.c_str(), program.c_str(), (folder / "run.json").c_str(), "--start", nullptr);
  ::_exit(127);
}

double Resident(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind("VmRSS:", 0) == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024;
  return -1;
}

// Waits for that many logs and returns the size then; below 0: the program has ended, or no logs appear.
double ResidentAfter(pid_t process, const fs::path& logs, int count) {
  std::ptrdiff_t before = -1;
  for (int idle = 0; idle < 300; ++idle) {
    const std::ptrdiff_t now = std::distance(fs::directory_iterator(logs), {});
    if (now >= count) return Resident(process);
    if (::waitpid(process, nullptr, WNOHANG) != 0) return -1;
    if (now != before) idle = 0;
    before = now;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return -1;
}

}  // namespace

int main(int argc, char**) {
  const int scans = argc > 1 ? 40000 : 1000000;
  const fs::path folder = "/dev/shm/vastra-desktop-" + std::to_string(::getpid());
  fs::create_directories(folder / "logs");
  std::ofstream(folder / "run.json") << Configuration(scans / kLogs);
  const pid_t desktop = Start(fs::read_symlink("/proc/self/exe").parent_path() / "vastra-desktop", folder);
  const double first = ResidentAfter(desktop, folder / "logs", kFirst);
  const double last = first < 0 ? first : ResidentAfter(desktop, folder / "logs", kLogs);
  ::kill(desktop, last < 0 ? SIGKILL : SIGTERM);
  ::waitpid(desktop, nullptr, 0);
  fs::remove_all(folder);
  if (last < 0) return std::fprintf(stderr, "vastra-desktop failed: ERROR OCCURRED\n"), 1;
  const double growth = last - first;
  std::printf("%-64s %7.2f MB  (goal: at most %g MB)%s\n",
              ("resident size of vastra-desktop, growth to " + std::to_string(scans) + " scans").c_str(),
              growth, kGoal, growth > kGoal ? "   MISSED" : "");
  std::printf("%-64s %7.2f MB\n", "resident size of vastra-desktop", last);
  return 0;
}
