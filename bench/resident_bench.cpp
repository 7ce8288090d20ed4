// The memory of a logger: the largest resident size of `vastra run` with 4000 samples of 100 values in
// memory, compared with that of a program that does nothing.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kValues = 100;

// A way to run, and the goal in MB.
struct CRunning {
  const char* text;
  std::vector<std::string> options;
  double goal;
};
const CRunning kRunnings[] = {
    {"resident size of vastra run, 4000 x 100 values in hand", {}, 8},
    {"the same without a keeper of logs", {"--plain"}, 6},
};

std::string Configuration() {
  std::string names;
  for (int i = 0; i < kValues; ++i) names += (i ? ",\"v" : "\"v") + std::to_string(i) + '"';
  return R"({"version":1003,"input":{"plcNodes":[{"nodeName":"N","driver":{"plcType":9001,"text1":"counter"},)"
         R"("varNames":[)" +
         names +
         R"(]}]},"outputs":[{"name":"All","enableText":"SampleIsValid=1;WriteToLog=1;RestartLog=0;","varNames":[)" +
         names + R"(],"saveRp":1,"maxSamples":5000,"directory":"logs"}]})";
}

// The largest resident size of a command, in MB; below 0 if it failed.
double Resident(const std::vector<std::string>& command) {
  std::vector<char*> args;
  for (const std::string& word : command) args.push_back(const_cast<char*>(word.c_str()));
  args.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::execv(args[0], args.data());
    ::_exit(127);
  }
  int status = 0;
  struct rusage usage = {};
  if (::wait4(child, &status, 0, &usage) < 0 || status != 0) return -1;
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace

int main() {
  namespace fs = std::filesystem;
  const fs::path programs = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path folder = "/dev/shm/vastra-resident-" + std::to_string(::getpid());
  fs::create_directories(folder / "logs");
  std::ofstream(folder / "run.json") << Configuration();
  bool good = true;
  for (const CRunning& running : kRunnings) {
    std::vector<std::string> command = {
        programs / "vastra", "run", folder / "run.json", "--scans", "4000", "--period", "0", "--quiet"};
    command.insert(command.end(), running.options.begin(), running.options.end());
    const double ours = Resident(command);
    good &= ours > 0;
    std::printf("%-64s %7.2f MB  (goal: at most %g MB)%s\n", running.text, ours, running.goal,
                ours > running.goal ? "   MISSED" : "");
  }
  std::printf("%-64s %7.2f MB\n", "the same of a program that does nothing", Resident({"/bin/true"}));
  fs::remove_all(folder);
  if (!good) return std::fprintf(stderr, "vastra run failed: ERROR OCCURRED\n"), 1;
  return 0;
}
