#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <barrier>
#include <cstring>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include "host/probe/trial.h"
#include "host/probe/trial_driver.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kRulePatience = 5s;  // with a rule that repeats its calls
constexpr int kRounds = 200;        // of Open and Close
constexpr std::size_t kThreads = 4;
constexpr int kThreadRounds = 10;

std::size_t EntriesOf(const char* directory) {
  std::error_code ignored;
  const std::filesystem::directory_iterator begin(directory, ignored);
  return static_cast<std::size_t>(std::distance(begin, {}));
}

// What a process holds that a driver could leave open.
struct CHoldings {
  std::size_t files = EntriesOf("/proc/self/fd");
  std::size_t threads = EntriesOf("/proc/self/task");
  bool Exceed(const CHoldings& other) const { return files > other.files || threads > other.threads; }
};

// What the rules share: the driver, and what the first connection came to.
struct CTrial {
  CTrialDriver driver;
  std::unique_ptr<CConnection> first;
  // Why a rule that needs connections, or connections that can be read, cannot be tried; empty if it can.
  CString whyNoOpen = "the driver was not opened";
  CString whyNoRead = "the driver was not read";

  const CString& WhyNoRead() const { return whyNoOpen.IsEmpty() ? whyNoRead : whyNoOpen; }
  const DriverFunctions& Table() const { return *driver.Table(); }
};

CSeen HeaderStays(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  const DriverHeader first = driver.Header();
  const CString name = driver.Name();
  const int version = driver.Version();
  if (!driver.AskForHeader()) return Broken("the second call returned no header");
  const DriverHeader& header = driver.Header();
  if (header.id != first.id)
    return Broken("the ID was " + Decimal(first.id) + ", then " + Decimal(header.id));
  if (const CString again = header.name; !(again == name))
    return Broken("the name was " + name + ", then " + again);
  if (header.functions != first.functions) return Broken("the second call returned another table");
  driver.Unload();
  CString reason;
  if (!driver.Load(reason)) return Broken("loaded again: " + reason);
  if (header.id != first.id || !(driver.Name() == name) || driver.Version() != version ||
      !header.functions != !first.functions)
    return Broken("it was another one when the module was loaded again");
  return {};
}

CSeen HasName(CTrial& trial) {
  const CString& name = trial.driver.Name();
  if (name.IsEmpty()) return Broken(trial.driver.Header().name ? "it is empty" : "it is null");
  return IsUtf8(name) ? CSeen() : Broken("it is not UTF-8: " + name);
}

CSeen HasTable(CTrial& trial) {
  static constexpr DriverFunctions kNone = {};
  if (trial.driver.Table()) return {};
  trial.driver.SetTable(&kNone);
  return Broken("it is null");
}

CSeen HasKnownVersion(CTrial& trial) {
  const int version = trial.driver.Version();
  if (version >= 1 && version <= DRIVER_API_VERSION) return {};
  return Broken("it is " + Decimal(version) + "; from 1 to " + Decimal(DRIVER_API_VERSION) + " is known");
}

CSeen HasTransfers(CTrial& trial) {
  if (!trial.Table().Open) return Broken("there is no Open");
  return trial.Table().Read || trial.Table().Write ? CSeen() : Broken("there is neither Read nor Write");
}

CSeen HasClose(CTrial& trial) {
  if (trial.driver.Version() < kVersionWithClose)
    return Broken("the version is " + Decimal(trial.driver.Version()) + ": connections end with the module");
  return trial.Table().Close ? CSeen() : Broken("there is none: connections end with the module");
}

CSeen Opens(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  if (!trial.Table().Open) return NotTried(trial.whyNoOpen = "there is no Open");
  trial.first = std::make_unique<CConnection>(driver.Config());
  driver.Open(*trial.first, driver.Mode());
  const int status = trial.first->status;
  trial.whyNoOpen = status == statusOk ? CString() : driver.Describe("Open", status);
  if (!IsOpenStatus(status)) return Broken("it returned " + TrialStatusName(status));
  if (status != statusOk || trial.first->handle != kNoHandle) return {};
  trial.whyNoOpen = "Open stored no handle";
  return Broken("it stored no handle");
}

CSeen FillsValues(CTrial& trial) {
  if (!trial.whyNoOpen.IsEmpty()) return NotTried(trial.whyNoOpen);
  trial.whyNoRead = "there is no Read";
  if (trial.Table().Read) {
    const int status = trial.driver.ReadWell(*trial.first);
    trial.whyNoRead = status == statusOk ? CString() : trial.driver.Describe("Read", status);
  }
  trial.driver.Close(*trial.first);
  const CSeen seen = trial.driver.JudgeRead();
  return seen.finding == EFinding::kept && !trial.whyNoRead.IsEmpty() ? NotTried(trial.whyNoRead) : seen;
}

CSeen Writes(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  if (!trial.whyNoOpen.IsEmpty()) return NotTried(trial.whyNoOpen);
  if (!trial.Table().Write) return NotTried("there is no Write");
  if (driver.Test().values.empty()) return NotTried("there is no --write");
  CConnection connection(driver.Config());
  driver.Open(connection, driverModeWrite);
  if (connection.status != statusOk) return NotTried(driver.Describe("Open to write", connection.status));
  const int status = driver.Write(connection, driver.Test().values);
  driver.Close(connection);
  return IsTransferStatus(status) ? driver.JudgeWrite() : Broken("it returned " + TrialStatusName(status));
}

CSeen CopiesTexts(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  if (!trial.WhyNoRead().IsEmpty()) return NotTried(trial.WhyNoRead());
  CConnection connection(driver.Config());
  driver.Open(connection, driver.Mode());
  connection.text1.Overwrite();
  connection.text2.Overwrite();
  if (connection.status != statusOk) return NotTried(driver.Describe("a second Open", connection.status));
  const int status = driver.ReadWell(connection);
  driver.Close(connection);
  return status == statusOk ? CSeen()
                            : Broken("once they had been overwritten, " + driver.Describe("Read", status));
}

CSeen KnowsModes(CTrial& trial) {
  if (!trial.whyNoOpen.IsEmpty()) return NotTried(trial.whyNoOpen);
  CConnection connection(trial.driver.Config());
  trial.driver.Open(connection, driverModeOther);
  trial.driver.Close(connection);
  if (connection.status == statusInvalidMode) return {};
  if (connection.status != statusOk) return Broken("it returned " + TrialStatusName(connection.status));
  return connection.handle == kNoHandle ? Broken("it returned statusOk and stored no handle") : CSeen();
}

CSeen ServesTwoHandles(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  if (!trial.WhyNoRead().IsEmpty()) return NotTried(trial.WhyNoRead());
  CConnection first(driver.Config()), second(driver.Config());
  driver.Open(first, driver.Mode());
  driver.Open(second, driver.Mode());
  CNotes faults;
  if (first.status != statusOk || second.status != statusOk)
    faults.Add(driver.Describe("Open", first.status != statusOk ? first.status : second.status));
  else if (first.handle == second.handle)
    faults.Add("both have the handle " + Decimal(first.handle));
  else
    for (CConnection* connection : {&first, &second})
      if (const int status = driver.ReadWell(*connection); status != statusOk)
        faults.Add(driver.Describe("Read", status));
  driver.Close(first);
  if (faults.Judge().finding == EFinding::kept)
    if (const int status = driver.ReadWell(second); status != statusOk)
      faults.Add("with the first one closed, " + driver.Describe("Read", status));
  driver.Close(second);
  return faults.Judge();
}

// The connections of several threads, which work in step.
struct CShared {
  explicit CShared(CTrialDriver& shared) : driver(shared) {}

  CTrialDriver& driver;
  const Clock::time_point end = Clock::now() + kRulePatience;
  std::atomic<bool> isOver{false};  // only changed in the second half of a round
  CNotes faults;
  std::barrier<> step{kThreads};
  std::unique_ptr<CConnection> connections[kThreads];
};

void ReadAndClose(CShared& shared, CConnection& connection) {
  if (connection.status != statusOk)
    return shared.faults.Add("Open returned " + TrialStatusName(connection.status));
  const int status = shared.driver.ReadWell(connection);
  shared.driver.Close(connection);
  if (status != statusOk) shared.faults.Add("Read returned " + TrialStatusName(status));
}

// Each thread opens a connection, and reads and closes that of another thread, while the others do the same.
void Serve(CShared& shared, std::size_t thread) {
  for (int round = 0; round < kThreadRounds; ++round) {
    shared.step.arrive_and_wait();
    if (shared.isOver) break;
    shared.connections[thread] = std::make_unique<CConnection>(shared.driver.Config());
    shared.driver.Open(*shared.connections[thread], shared.driver.Mode());
    shared.step.arrive_and_wait();
    ReadAndClose(shared, *shared.connections[(thread + 1) % kThreads]);
    if (Clock::now() >= shared.end || shared.faults.Judge().finding == EFinding::broken) shared.isOver = true;
  }
}

CSeen ServesSeveralThreads(CTrial& trial) {
  if (!trial.WhyNoRead().IsEmpty()) return NotTried(trial.WhyNoRead());
  CShared shared(trial.driver);
  {
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < kThreads; ++i) threads.emplace_back([&shared, i] { Serve(shared, i); });
  }
  return shared.faults.Judge();
}

CSeen LeavesNothing(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  if (!trial.whyNoOpen.IsEmpty()) return NotTried(trial.whyNoOpen);
  if (!driver.HasCloseCall()) return NotTried("there is no Close");
  const Clock::time_point end = Clock::now() + kRulePatience;
  const CHoldings before;
  int rounds = 0;
  for (; rounds < kRounds && Clock::now() < end; ++rounds) {
    CConnection connection(driver.Config());
    driver.Open(connection, driver.Mode());
    if (connection.status == statusOk && trial.Table().Read) driver.Read(connection);
    driver.Close(connection);
  }
  CHoldings after;
  for (int i = 0; i < 10 && after.Exceed(before); ++i, after = {}) std::this_thread::sleep_for(kTrialRest);
  if (!after.Exceed(before)) return {};
  const auto change = [](std::size_t from, std::size_t to) {
    return Decimal(static_cast<long long>(from)) + " to " + Decimal(static_cast<long long>(to));
  };
  return Broken("with " + Decimal(rounds) + " times Open and Close, files went from " +
                change(before.files, after.files) + ", threads from " +
                change(before.threads, after.threads));
}

// Settings with which no driver can open.
DriverConfig Nonsense(const DriverConfig& config) {
  DriverConfig nonsense = config;
  nonsense.text1 = nonsense.text2 = "\1 no setting of any driver";
  for (int DriverConfig::*field :
       {&DriverConfig::cardNumber, &DriverConfig::timeOut, &DriverConfig::station,
        &DriverConfig::registerAddress, &DriverConfig::registerAddressExt, &DriverConfig::plcNodeAddress,
        &DriverConfig::value1, &DriverConfig::value2, &DriverConfig::value3, &DriverConfig::value4,
        &DriverConfig::value5})
    nonsense.*field = -1;
  return nonsense;
}

CSeen SurvivesFailedOpen(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  if (!trial.Table().Open) return NotTried("there is no Open");
  CConnection connection(Nonsense(driver.Config()));
  driver.Open(connection, driver.Mode());
  driver.Close(connection);
  if (!HasErrorText(connection.status))
    return NotTried("an Open with nonsense returned " + TrialStatusName(connection.status));
  const CDriverErrorText words = ErrorTextFor(trial.Table(), connection.status);
  if (words && !driver.Call("the words for handle -1", [&] { words(kNoHandle); }))
    return Broken("an exception left the call for handle -1");
  return {};
}

CSeen ReturnsKnownStatuses(CTrial& trial) {
  if (!trial.driver.HasTransfers()) return NotTried("no Read or Write returned one");
  return trial.driver.JudgeStatuses();
}

CSeen ReturnsWords(CTrial& trial) {
  return trial.driver.HasAskedWords() ? trial.driver.JudgeWords()
                                      : NotTried("no call returned such a status");
}

CSeen WorksWithoutForms(CTrial& trial) {
  if (!trial.Table().ShowConfig) return NotTried("there is no ShowConfig");
  int result = 0;
  trial.driver.Call("ShowConfig", [&] { result = trial.Table().ShowConfig(1); });
  return result == 1 ? Broken("it returned 1, although the host has no forms") : CSeen();
}

CSeen ReturnsItsId(CTrial& trial) {
  const DriverFunctions& table = trial.Table();
  if (!table.SetConfig || !table.GetConfig) return NotTried("there is no SetConfig or no GetConfig");
  CConnection given(trial.driver.Config());
  given.record.plcType = 0;  // the driver sets it
  trial.driver.Call("SetConfig", [&] { table.SetConfig(given.record); });
  DriverConfig result;
  const bool returned = trial.driver.Call("GetConfig", [&] { result = FromRecord(table.GetConfig()); });
  const int id = trial.driver.Header().id;
  if (!returned || result.plcType == id) return {};
  return Broken("plcType is " + Decimal(result.plcType) + ", the ID " + Decimal(id));
}

CSeen Answers(CTrial& trial) {
  CTrialDriver& driver = trial.driver;
  const CString refusal = driver.AskQuestion("CheckDriverConfig", driver.Config());
  driver.AskQuestion("CheckDriverConfig", Nonsense(driver.Config()));
  for (const DriverConfig& config : {driver.Config(), Nonsense(driver.Config())})
    driver.AskQuestion("GetDriverLine", config);
  if (!driver.HasQuestions()) return NotTried("there is neither of them");
  if (trial.whyNoOpen.IsEmpty() && !refusal.IsEmpty())
    return Broken("Open succeeded, and it returned: " + refusal);
  return driver.JudgeQuestions();
}

CSeen ThrowsNothing(CTrial& trial) { return trial.driver.JudgeThrows(); }

CSeen CanBeUnloaded(CTrial& trial) {
  trial.driver.Send({{"call", "unloading"}});
  trial.driver.Unload();
  std::this_thread::sleep_for(kTrialRest);  // a thread that the driver has left crashes in this time
  return {};
}

constexpr struct {
  const char* rule;
  CSeen (*tryIt)(CTrial& trial);
} kRules[] = {
    {"GetDriverHeader returns the same each time, also after the module is loaded again", HeaderStays},
    {"the name is not empty, and UTF-8", HasName},
    {"there is a table", HasTable},
    {"the version is one that this program knows", HasKnownVersion},
    {"the table has Open, and Read or Write", HasTransfers},
    {"the table has Close, and the version says so", HasClose},
    {"Open returns one of its statuses, and a handle with statusOk", Opens},
    {"Read fills all values and nothing around them", FillsValues},
    {"Write returns one of its statuses and uses nothing around the values", Writes},
    {"the texts passed to Open are not used after it", CopiesTexts},
    {"Open accepts mode 100 or returns statusInvalidMode", KnowsModes},
    {"two handles work at the same time", ServesTwoHandles},
    {"several threads can open, read and close at once, each handle on any of them", ServesSeveralThreads},
    {"Close leaves no file and no thread open", LeavesNothing},
    {"GetExtendedError works after a failed Open", SurvivesFailedOpen},
    {"Read and Write return their statuses and no others", ReturnsKnownStatuses},
    {"a status with an error text has one, in UTF-8", ReturnsWords},
    {"ShowConfig returns 0 if no form can be shown", WorksWithoutForms},
    {"GetConfig returns the ID of the driver", ReturnsItsId},
    {"CheckDriverConfig accepts settings with which Open succeeds; it and GetDriverLine return UTF-8",
     Answers},
    {"no exception leaves the driver", ThrowsNothing},
    {"the module can be unloaded", CanBeUnloaded},
};

void TryRules(const CContractTest& test, int pipe) {
  CTrial trial{CTrialDriver(test, pipe), nullptr};
  CTrialDriver& driver = trial.driver;
  CString reason;
  if (!driver.Load(reason)) return driver.Send({{"noDriver", reason.Std()}});
  driver.SetType(driver.Header().id);
  driver.Send({{"facts", {driver.Header().id, driver.Name().Std(), driver.Version()}}});
  for (const auto& rule : kRules) {
    const CSeen seen = rule.tryIt(trial);
    driver.Send({{"finding", {static_cast<int>(seen.finding), seen.words.Std()}}});
  }
  driver.Send({{"done", true}});
}

}  // namespace

std::size_t TrialRuleCount() { return std::size(kRules); }

const char* TrialRule(std::size_t index) { return kRules[index].rule; }

// The faults of the driver end the process in the usual way: signals have their default action, without a
// core file.
void RunTrial(const CContractTest& test, int pipe) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) ::signal(signal, SIG_DFL);
  ::dup2(STDERR_FILENO, STDOUT_FILENO);  // what a driver prints is not data of the command
  try {
    TryRules(test, pipe);
    ::_exit(0);  // no destructor of the host's objects runs here
  } catch (const std::exception& fault) {
    static_cast<void>(!::write(STDERR_FILENO, fault.what(), std::strlen(fault.what())));
    ::_exit(1);
  }
}

}  // namespace vastra
