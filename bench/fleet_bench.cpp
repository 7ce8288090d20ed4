// A fleet on one machine: nodes with 10 logs of 100 KiB each, three servers and an archive. The shippers, one
// process for each node, 16 at a time, are compared with a bare client that publishes the same bytes to the
// same servers.
#include <nats/nats.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using CClock = std::chrono::steady_clock;

constexpr int kLogs = 10, kServers = 3, kAtOnce = 16, kPort = 24222, kRoute = 26222;
constexpr std::size_t kLogBytes = 100 << 10;
constexpr double kMega = 1e6, kGoal = 0.7;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "ERROR OCCURRED: %s\n", what.c_str());
  std::exit(1);
}

double Since(CClock::time_point begin) {
  return std::chrono::duration<double>(CClock::now() - begin).count();
}

// A process that ends with its object.
class CProcess {
 public:
  CProcess(const std::vector<std::string>& command, const std::string& log) {
    std::vector<char*> args;
    for (const std::string& word : command) args.push_back(const_cast<char*>(word.c_str()));
    args.push_back(nullptr);
    m_child = ::fork();
    if (m_child != 0) return;
    if (std::freopen(log.c_str(), "a", stdout) == nullptr ||
        std::freopen(log.c_str(), "a", stderr) == nullptr)
      ::_exit(126);
    ::execvp(args[0], args.data());
    ::_exit(127);
  }
  CProcess(CProcess&& other) noexcept : m_child(std::exchange(other.m_child, 0)) {}
  CProcess(const CProcess&) = delete;
  CProcess& operator=(const CProcess&) = delete;
  ~CProcess() {
    if (m_child <= 0) return;
    ::kill(m_child, SIGTERM);
    ::waitpid(m_child, nullptr, 0);
  }
  pid_t Id() const { return m_child; }
  int Wait() {
    int status = 0;
    ::waitpid(std::exchange(m_child, 0), &status, 0);
    return status;
  }
  double ResidentMb() const {
    std::ifstream file("/proc/" + std::to_string(m_child) + "/statm");
    double total = 0, resident = 0;
    file >> total >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / kMega;
  }

 private:
  pid_t m_child;
};

struct CFleet {
  fs::path programs = fs::read_symlink("/proc/self/exe").parent_path();
  fs::path folder = "/dev/shm/vastra-fleet-" + std::to_string(::getpid());
  std::string url;
  std::vector<CProcess> servers;

  ~CFleet() {
    servers.clear();
    fs::remove_all(folder);
  }
  std::string Program() const { return programs / "vastra-fleet"; }
};

void StartServers(CFleet& fleet) {
  std::string routes;
  for (int i = 0; i < kServers; ++i) {
    routes += (i ? ", nats://127.0.0.1:" : "nats://127.0.0.1:") + std::to_string(kRoute + i);
    fleet.url += (i ? ",nats://127.0.0.1:" : "nats://127.0.0.1:") + std::to_string(kPort + i);
  }
  for (int i = 0; i < kServers; ++i) {
    const std::string config = fleet.folder / ("s" + std::to_string(i) + ".conf");
    std::ofstream(config) << "server_name: s" << i << "\nlisten: \"127.0.0.1:" << kPort + i
                          << "\"\njetstream { store_dir: \"" << fleet.folder.string() << "/s" << i
                          << "\", max_file_store: 20GB }\ncluster { name: C, listen: \"127.0.0.1:"
                          << kRoute + i << "\", routes: [" << routes << "] }\n";
    fleet.servers.emplace_back(std::vector<std::string>{"nats-server", "-c", config}, config + ".log");
  }
  for (int i = 0; i < 60; ++i)
    if (CProcess({fleet.Program(), "init", "--server", fleet.url, "--replicas", "3"}, "/dev/null").Wait() ==
        0)
      return;
  Fail("the servers do not start");
}

void MakeNodes(const CFleet& fleet, int nodes) {
  const fs::path first = fleet.folder / "log.csv";
  std::ofstream(first) << std::string(kLogBytes - 1, 'x') << '\n';
  for (int node = 0; node < nodes; ++node) {
    const fs::path logs = fleet.folder / "nodes" / std::to_string(node) / "logs";
    fs::create_directories(logs);
    for (int i = 0; i < kLogs; ++i) fs::copy_file(first, logs / (std::to_string(i) + ".csv"));
  }
}

// Seconds until the servers have the logs of all nodes.
double Ship(const CFleet& fleet, int nodes) {
  const CClock::time_point begin = CClock::now();
  std::map<pid_t, CProcess> running;
  for (int node = 0; node < nodes || !running.empty();) {
    while (node < nodes && running.size() < kAtOnce) {
      const std::string name = std::to_string(node++), place = fleet.folder / "nodes" / name;
      CProcess shipper({fleet.Program(), "ship", "--server", fleet.url, "--site", "plant", "--node", name,
                        "--csv", "--once", "--state", place + "/state", place + "/logs"},
                       fleet.folder / "ship.log");
      running.emplace(shipper.Id(), std::move(shipper));
    }
    int status = 0;
    const pid_t ended = ::waitpid(-1, &status, 0);
    if (running.count(ended) != 0 && status != 0) Fail("a shipper failed");
    if (const auto found = running.find(ended); found != running.end()) {
      found->second.Wait();
      running.erase(found);
    }
  }
  return Since(begin);
}

// Seconds of a bare client for the same bytes under other subjects of the same stream.
double PublishBare(const CFleet& fleet, int logs) {
  natsConnection* connection = nullptr;
  natsSubscription* answers = nullptr;
  static std::atomic<int> answered{0};
  answered = 0;
  if (natsConnection_ConnectTo(&connection, fleet.url.c_str()) != NATS_OK)
    Fail("the client does not connect");
  natsConnection_Subscribe(
      &answers, connection, "_INBOX.bare.>",
      [](natsConnection*, natsSubscription*, natsMsg* message, void*) {
        if (std::strstr(natsMsg_GetData(message), "\"seq\"") == nullptr) Fail("a message was refused");
        natsMsg_Destroy(message);
        ++answered;
      },
      nullptr);
  const std::string bytes(kLogBytes, 'x');
  const CClock::time_point begin = CClock::now();
  constexpr int kWindow = 40;  // 4 MB
  for (int i = 0; i < logs; ++i) {
    while (i - answered >= kWindow) std::this_thread::sleep_for(std::chrono::microseconds(50));
    const std::string number = std::to_string(i);
    natsConnection_PublishRequest(connection, ("vastra.log.bare." + number).c_str(),
                                  ("_INBOX.bare." + number).c_str(), bytes.data(),
                                  static_cast<int>(bytes.size()));
  }
  while (answered < logs && Since(begin) < 600) std::this_thread::sleep_for(std::chrono::microseconds(50));
  const double seconds = Since(begin);
  natsMsg* purged = nullptr;
  natsConnection_RequestString(&purged, connection, "$JS.API.STREAM.PURGE.VASTRA_LOGS",
                               "{\"filter\":\"vastra.log.bare.>\"}", 60000);
  natsMsg_Destroy(purged);
  natsSubscription_Destroy(answers);
  natsConnection_Destroy(connection);
  return seconds;
}

std::size_t Archived(const fs::path& folder) {
  std::size_t files = 0;
  std::error_code fault;
  for (fs::recursive_directory_iterator it(folder / "plant", fault), end; !fault && it != end;
       it.increment(fault))
    files += it->is_regular_file(fault) ? 1U : 0U;
  return files;
}

// Seconds until an archive has all logs.
double Archive(const CFleet& fleet, int nodes) {
  const fs::path into = fleet.folder / "archive";
  const CClock::time_point begin = CClock::now();
  const CProcess archive({fleet.Program(), "archive", "--server", fleet.url, "--into", into},
                         fleet.folder / "archive.log");
  while (Archived(into) < static_cast<std::size_t>(nodes * kLogs)) {
    if (Since(begin) > 600) Fail("the archive is not complete");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return Since(begin);
}

double Measure(int nodes) {
  CFleet fleet;
  fs::create_directories(fleet.folder);
  StartServers(fleet);
  MakeNodes(fleet, nodes);
  const double mega = static_cast<double>(nodes * kLogs) * kLogBytes / kMega;
  const auto print = [&](const char* what, double seconds) {
    std::printf("%5d nodes, %-24s %8.0f files/s %8.1f MB/s\n", nodes, what, nodes * kLogs / seconds,
                mega / seconds);
  };
  double bare = PublishBare(fleet, nodes * kLogs);
  print("bare client", bare);
  const double ship = Ship(fleet, nodes);
  print("shippers", ship);
  double resident = 0;
  for (const CProcess& server : fleet.servers) resident = std::max(resident, server.ResidentMb());
  bare = (bare + PublishBare(fleet, nodes * kLogs)) / 2;
  print("archive", Archive(fleet, nodes));
  std::printf("%5d nodes, memory of a server: %.0f MB\n", nodes, resident);
  std::printf("%5d nodes, shippers beside a bare client: %.2f of its rate  (goal: at least %g)%s\n", nodes,
              bare / ship, kGoal, bare / ship < kGoal ? "   MISSED" : "");
  return ship / nodes;
}

}  // namespace

// Any argument makes it short.
int main(int argc, char**) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const double few = Measure(argc > 1 ? 2 : 100);
  const double many = Measure(argc > 1 ? 4 : 1000);
  std::printf(
      "a node of the larger fleet costs %.2f times what one of the smaller costs  (goal: at most 1.2)%s\n",
      many / few, many / few > 1.2 ? "   MISSED" : "");
  nats_Close();
  return 0;
}
