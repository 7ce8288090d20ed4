#include "host/cli/driver_trial.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>

#include "host/cli/driver_calls.h"
#include "host/common/json_text.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostWords = 4096;  // bytes in which the words of a driver have to end
constexpr int kMostNoted = 500;           // bytes, about
const float kUntouched = std::bit_cast<float>(0x7FC5A5A5u);
constexpr int kException = std::numeric_limits<int>::min();  // in place of a status
constexpr auto kTrialRest = 100ms;                           // before a next try
constexpr auto kReadPatience = 1s;  // with a read: one that fails now and then is a driver's right
constexpr auto kRulePatience = 5s;  // with a rule that repeats its calls
constexpr int kRounds = 200;        // of Open and Close
constexpr int kThreadRounds = 10;

constexpr int kOpenStatuses[] = {statusNoMemory, statusExtendedError, statusOk, statusInvalidMode,
                                 statusReplyError};
constexpr int kTransferStatuses[] = {statusNoMemory,  statusExtendedError, statusOk,
                                     statusNotOpened, statusInvalidFrame,  statusTimeout,
                                     statusReplyError};

bool IsOfOpen(int status) { return std::ranges::find(kOpenStatuses, status) != std::end(kOpenStatuses); }
bool IsOfTransfer(int status) {
  return std::ranges::find(kTransferStatuses, status) != std::end(kTransferStatuses);
}

bool IsUtf8(const CString& text) { return IsJsonText(CJson(text.Std())); }

CString NameOf(int status) { return status == kException ? "an exception" : StatusName(status); }
CString Number(long long number) { return CString(std::to_string(number)); }

// What came of trying a rule.
struct CSeen {
  EFinding finding = EFinding::kept;
  CString words;
};
CSeen Broken(const CString& words) { return {EFinding::broken, words}; }
CSeen NotTried(const CString& words) { return {EFinding::notTried, words}; }

// What was seen on the way, each once; from any thread.
class CNotes {
 public:
  void Add(const CString& words) {
    const std::lock_guard lock(m_mutex);
    if (m_text.GetLength() < kMostNoted && m_text.Find(words) < 0)
      m_text += (m_text.IsEmpty() ? "" : "; ") + words;
  }
  CSeen Judge() const { return m_text.IsEmpty() ? CSeen() : Broken(m_text); }

 private:
  std::mutex m_mutex;
  CString m_text;
};

// A text that is given to a driver and can be spoilt afterwards.
class CGivenText {
 public:
  explicit CGivenText(const CString& text) : m_bytes(text.Std()) { m_bytes.append(16, '\0'); }
  const char* Get() const { return m_bytes.c_str(); }
  void Spoil() { std::fill(m_bytes.begin(), m_bytes.end(), '?'); }

 private:
  std::string m_bytes;
};

// One connection, or the attempt at one, and what the driver was given for it.
struct CConnection {
  explicit CConnection(const DriverConfig& given)
      : config(given), text1(given.text1), text2(given.text2), record(ToRecord(config)) {
    record.text1 = text1.Get();
    record.text2 = text2.Get();
  }
  CConnection(const CConnection&) = delete;

  DriverConfig config;
  CGivenText text1, text2;
  DriverRecord record;
  int status = kException;
  int handle = kNoHandle;
};

std::size_t EntriesOf(const char* directory) {
  std::error_code ignored;
  const std::filesystem::directory_iterator begin(directory, ignored);
  return static_cast<std::size_t>(std::distance(begin, {}));
}

// What a process holds that a driver could leave behind.
struct CHoldings {
  std::size_t files = EntriesOf("/proc/self/fd");
  std::size_t threads = EntriesOf("/proc/self/task");
  bool Exceed(const CHoldings& other) const { return files > other.files || threads > other.threads; }
};

// The side of the driver: tries the rules, and writes down the pipe what it sees and, before each call, which
// it is.
class CTrial {
 public:
  CTrial(const CContractTest& test, int pipe) : m_test(test), m_config(test.config), m_pipe(pipe) {}
  void Run();

  CSeen HeaderStays();
  CSeen HasName();
  CSeen HasTable();
  CSeen HasKnownVersion();
  CSeen HasTransfers();
  CSeen HasClose();
  CSeen Opens();
  CSeen FillsValues();
  CSeen Writes();
  CSeen CopiesTexts();
  CSeen KnowsModes();
  CSeen ServesTwoHandles();
  CSeen ServesTwoThreads();
  CSeen LeavesNothing();
  CSeen BearsFailedOpen();
  CSeen GivesKnownStatuses();
  CSeen GivesWords();
  CSeen DoesWithoutForms();
  CSeen GivesItsId();
  CSeen ThrowsNothing();
  CSeen CanBeUnloaded();

 private:
  void Send(const CJson& message) const;
  template <class Function>
  bool Call(const char* name, const Function& function);

  bool Load(CString& reason);
  bool AskForHeader();

  void Open(CConnection& connection, int mode);
  int Read(CConnection& connection);
  int ReadWell(CConnection& connection);
  void Close(const CConnection& connection);
  void JudgeArea(std::span<const float> area, int status);
  void AskWords(const char* call, int status, int handle);

  bool HasCloseCall() const { return m_version >= kVersionWithClose && m_table->Close; }
  int Mode() const { return m_table->Read ? driverModeRead : driverModeWrite; }
  // Why a rule cannot be tried that needs connections, or connections that can be read; empty if it can.
  CString WhyNoOpen() const { return m_whyNoOpen; }
  CString WhyNoRead() const { return m_whyNoOpen.IsEmpty() ? m_whyNoRead : m_whyNoOpen; }
  CString Describe(const char* call, int status) const;
  void Serve(CNotes& faults);

  const CContractTest& m_test;
  DriverConfig m_config;
  const int m_pipe;
  HMODULE m_module = nullptr;
  DriverHeader m_header = {};
  CString m_name;
  int m_version = 1;
  const DriverFunctions* m_table = nullptr;
  std::unique_ptr<CConnection> m_first;
  CString m_whyNoOpen = "the driver was not opened";
  CString m_whyNoRead = "the driver was not read";
  std::mutex m_lastMutex;
  CString m_lastWords;  // of the driver
  std::atomic<int> m_transfers{0};
  std::atomic<int> m_wordsAsked{0};
  CNotes m_areaFaults, m_statusFaults, m_wordFaults, m_throws;
};

constexpr struct {
  const char* rule;
  CSeen (CTrial::*tryIt)();
} kRules[] = {
    {"GetDriverHeader gives the same each time, also when the module is loaded anew", &CTrial::HeaderStays},
    {"the name is there, and UTF-8", &CTrial::HasName},
    {"there is a table", &CTrial::HasTable},
    {"the version is one that this program knows", &CTrial::HasKnownVersion},
    {"the table has Open, and Read or Write", &CTrial::HasTransfers},
    {"the table has Close, and the version says so", &CTrial::HasClose},
    {"Open gives one of its statuses, and a handle with statusOk", &CTrial::Opens},
    {"Read fills all values and nothing around them", &CTrial::FillsValues},
    {"Write gives one of its statuses", &CTrial::Writes},
    {"the texts given to Open are not used after it", &CTrial::CopiesTexts},
    {"Open serves mode 100 or gives statusInvalidMode", &CTrial::KnowsModes},
    {"two handles serve side by side", &CTrial::ServesTwoHandles},
    {"two threads can open, read and close at once", &CTrial::ServesTwoThreads},
    {"Close leaves no file and no thread behind", &CTrial::LeavesNothing},
    {"an Open that fails can be asked for its words", &CTrial::BearsFailedOpen},
    {"Read and Write give their statuses and no others", &CTrial::GivesKnownStatuses},
    {"a status that has words has some, and they are UTF-8", &CTrial::GivesWords},
    {"ShowConfig is not accepted where no form can be shown", &CTrial::DoesWithoutForms},
    {"GetConfig gives the ID of the driver", &CTrial::GivesItsId},
    {"no exception leaves the driver", &CTrial::ThrowsNothing},
    {"the module can be unloaded", &CTrial::CanBeUnloaded},
};

void CTrial::Send(const CJson& message) const {
  const std::string line = message.dump(-1, ' ', false, CJson::error_handler_t::replace) + "\n";
  for (std::size_t done = 0; done < line.size();) {
    const ssize_t part = ::write(m_pipe, line.data() + done, line.size() - done);
    if (part < 0 && errno != EINTR) ::_exit(1);
    if (part > 0) done += static_cast<std::size_t>(part);
  }
}

// Calls function, which calls the driver's name. False if it threw.
template <class Function>
bool CTrial::Call(const char* name, const Function& function) {
  Send({{"call", name}});
  if (AskDriver(false, [&] { return function(), true; })) return true;
  m_throws.Add(CString("an exception left ") + name);
  return false;
}

bool CTrial::Load(CString& reason) {
  Send({{"call", "loading"}});
  m_module = LoadModule(m_test.path, &reason);
  if (!m_module) return false;
  reason = "no GetDriverHeader";
  if (!FindExport(m_module, "GetDriverHeader")) return false;
  reason = "GetDriverHeader gives none";
  if (!AskForHeader()) return false;
  m_name = m_header.name;
  const auto version =
      reinterpret_cast<decltype(&GetDriverApiVersion)>(FindExport(m_module, "GetDriverApiVersion"));
  if (version) Call("GetDriverApiVersion", [&] { m_version = version(); });
  const auto setHost = reinterpret_cast<decltype(&SetDriverHost)>(FindExport(m_module, "SetDriverHost"));
  if (setHost) Call("SetDriverHost", [&] { setHost(nullptr); });
  m_table = m_header.functions;
  return true;
}

bool CTrial::AskForHeader() {
  bool given = false;
  return Call("GetDriverHeader", [&] { given = AskHeader(m_module, m_header); }) && given;
}

void CTrial::Run() {
  CString reason;
  if (!Load(reason)) return Send({{"noDriver", reason.Std()}});
  m_config.plcType = m_header.id;
  Send({{"facts", {m_header.id, m_name.Std(), m_version}}});
  for (const auto& rule : kRules) {
    const CSeen seen = (this->*rule.tryIt)();
    Send({{"finding", {static_cast<int>(seen.finding), seen.words.Std()}}});
  }
  Send({{"done", true}});
}

CSeen CTrial::HeaderStays() {
  const DriverHeader first = m_header;
  const CString name = m_name;
  const int version = m_version;
  if (!AskForHeader()) return Broken("the second call gave none");
  if (m_header.id != first.id)
    return Broken("the ID was " + Number(first.id) + ", then " + Number(m_header.id));
  if (const CString again = m_header.name; !(again == name))
    return Broken("the name was " + name + ", then " + again);
  if (m_header.functions != first.functions) return Broken("the second call gave another table");
  FreeModule(m_module);
  CString reason;
  if (!Load(reason)) return Broken("loaded anew: " + reason);
  if (m_header.id != first.id || !(m_name == name) || m_version != version ||
      !m_header.functions != !first.functions)
    return Broken("it was another one when the module was loaded anew");
  return {};
}

CSeen CTrial::HasName() {
  if (m_name.IsEmpty()) return Broken(m_header.name ? "it is empty" : "it is null");
  return IsUtf8(m_name) ? CSeen() : Broken("it is no UTF-8: " + m_name);
}

CSeen CTrial::HasTable() {
  static constexpr DriverFunctions kNone = {};
  if (m_table) return {};
  m_table = &kNone;
  return Broken("it is null");
}

CSeen CTrial::HasKnownVersion() {
  if (m_version >= 1 && m_version <= DRIVER_API_VERSION) return {};
  return Broken("it is " + Number(m_version) + "; from 1 to " + Number(DRIVER_API_VERSION) + " is known");
}

CSeen CTrial::HasTransfers() {
  if (!m_table->Open) return Broken("there is no Open");
  return m_table->Read || m_table->Write ? CSeen() : Broken("there is neither Read nor Write");
}

CSeen CTrial::HasClose() {
  if (m_version < kVersionWithClose)
    return Broken("the version is " + Number(m_version) + ": connections end with the module");
  return m_table->Close ? CSeen() : Broken("there is none: connections end with the module");
}

// "Read failed (statusTimeout)".
CString CTrial::Describe(const char* call, int status) const {
  const CString words = HasWords(status) && !m_lastWords.IsEmpty() ? ": " + m_lastWords : CString();
  return CString(call) + " failed (" + NameOf(status) + words + ")";
}

void CTrial::AskWords(const char* call, int status, int handle) {
  const CString name = status == statusReplyError ? "GetReplyError" : "GetExtendedError";
  ++m_wordsAsked;
  const CDriverWords words = WordsFor(*m_table, status);
  if (!words)
    return m_wordFaults.Add(CString(call) + " gave " + NameOf(status) + ", and there is no " + name);
  const char* text = nullptr;
  if (!Call(name, [&] { text = words(handle); })) return;
  if (!text) return m_wordFaults.Add(name + " gave null after " + call);
  const CString copy(text, ::strnlen(text, kMostWords));
  if (copy.IsEmpty()) m_wordFaults.Add(name + " gave an empty text after " + call);
  if (static_cast<std::size_t>(copy.GetLength()) == kMostWords)
    m_wordFaults.Add("the text of " + name + " does not end within " + Number(kMostWords) + " bytes");
  else if (!IsUtf8(copy))
    m_wordFaults.Add("the text of " + name + " is no UTF-8: " + copy.Left(kMostNoted));
  const std::lock_guard lock(m_lastMutex);
  m_lastWords = copy.Left(kMostNoted);
}

void CTrial::Open(CConnection& connection, int mode) {
  connection.status = kException;
  connection.handle = kNoHandle;
  Call("Open", [&] { connection.status = m_table->Open(connection.record, mode, &connection.handle); });
  if (HasWords(connection.status)) AskWords("Open", connection.status, connection.handle);
}

void CTrial::Close(const CConnection& connection) {
  if (connection.status == statusOk && HasCloseCall())
    Call("Close", [&] { m_table->Close(connection.handle); });
}

void CTrial::JudgeArea(std::span<const float> area, int status) {
  const auto isUntouched = [](float value) {
    return std::bit_cast<UINT>(value) == std::bit_cast<UINT>(kUntouched);
  };
  const auto before = area.first(kGuard), behind = area.last(kGuard);
  const auto values = area.subspan(kGuard, area.size() - 2 * kGuard);
  if (!std::ranges::all_of(before, isUntouched)) m_areaFaults.Add("it wrote before the first value");
  if (!std::ranges::all_of(behind, isUntouched)) m_areaFaults.Add("it wrote behind the last value");
  const auto left = std::ranges::find_if(values, isUntouched);
  if (status == statusOk && left != values.end())
    m_areaFaults.Add("value " + Number(left - values.begin() + 1) + " of " +
                     Number(static_cast<long long>(values.size())) + " was left as it was, with statusOk");
}

int CTrial::Read(CConnection& connection) {
  const std::size_t count = m_config.variableCount;
  std::vector<float> area(count + 2 * kGuard, kUntouched);
  int status = kException;
  const bool returned = Call(
      "Read", [&] { status = m_table->Read(&area[kGuard], static_cast<int>(count), connection.handle); });
  if (HasWords(status)) AskWords("Read", status, connection.handle);
  if (!returned) return status;
  ++m_transfers;
  JudgeArea(area, status);
  if (!IsOfTransfer(status)) m_statusFaults.Add("Read gave " + NameOf(status));
  return status;
}

// The status of the first read that is good, or of the last try.
int CTrial::ReadWell(CConnection& connection) {
  const Clock::time_point end = Clock::now() + kReadPatience;
  for (;;) {
    const int status = Read(connection);
    if (status == statusOk || Clock::now() >= end) return status;
    std::this_thread::sleep_for(kTrialRest);
  }
}

CSeen CTrial::Opens() {
  if (!m_table->Open) return NotTried(m_whyNoOpen = "there is no Open");
  m_first = std::make_unique<CConnection>(m_config);
  Open(*m_first, Mode());
  const int status = m_first->status;
  m_whyNoOpen = status == statusOk ? CString() : Describe("Open", status);
  if (!IsOfOpen(status)) return Broken("it gave " + NameOf(status));
  if (status != statusOk || m_first->handle != kNoHandle) return {};
  m_whyNoOpen = "Open stored no handle";
  return Broken("it stored no handle");
}

CSeen CTrial::FillsValues() {
  if (!WhyNoOpen().IsEmpty()) return NotTried(WhyNoOpen());
  m_whyNoRead = "there is no Read";
  if (m_table->Read) {
    const int status = ReadWell(*m_first);
    m_whyNoRead = status == statusOk ? CString() : Describe("Read", status);
  }
  Close(*m_first);
  const CSeen seen = m_areaFaults.Judge();
  return seen.finding == EFinding::kept && !m_whyNoRead.IsEmpty() ? NotTried(m_whyNoRead) : seen;
}

CSeen CTrial::Writes() {
  if (!WhyNoOpen().IsEmpty()) return NotTried(WhyNoOpen());
  if (!m_table->Write) return NotTried("there is no Write");
  if (m_test.values.empty()) return NotTried("there is no --write");
  CConnection connection(m_config);
  Open(connection, driverModeWrite);
  if (connection.status != statusOk) return NotTried(Describe("Open to write", connection.status));
  std::vector<float> values = m_test.values;
  int status = kException;
  const bool returned = Call("Write", [&] {
    status = m_table->Write(values.data(), static_cast<int>(values.size()), connection.handle);
  });
  if (HasWords(status)) AskWords("Write", status, connection.handle);
  Close(connection);
  m_transfers += returned;
  if (!IsOfTransfer(status)) return Broken("it gave " + NameOf(status));
  return {};
}

CSeen CTrial::CopiesTexts() {
  if (!WhyNoRead().IsEmpty()) return NotTried(WhyNoRead());
  CConnection connection(m_config);
  Open(connection, Mode());
  connection.text1.Spoil();
  connection.text2.Spoil();
  if (connection.status != statusOk) return NotTried(Describe("a second Open", connection.status));
  const int status = ReadWell(connection);
  Close(connection);
  return status == statusOk ? CSeen() : Broken("once they had been overwritten, " + Describe("Read", status));
}

CSeen CTrial::KnowsModes() {
  if (!WhyNoOpen().IsEmpty()) return NotTried(WhyNoOpen());
  CConnection connection(m_config);
  Open(connection, driverModeOther);
  Close(connection);
  if (connection.status == statusInvalidMode) return {};
  if (connection.status != statusOk) return Broken("it gave " + NameOf(connection.status));
  return connection.handle == kNoHandle ? Broken("it gave statusOk and stored no handle") : CSeen();
}

CSeen CTrial::ServesTwoHandles() {
  if (!WhyNoRead().IsEmpty()) return NotTried(WhyNoRead());
  CConnection first(m_config), second(m_config);
  Open(first, Mode());
  Open(second, Mode());
  CNotes faults;
  if (first.status != statusOk || second.status != statusOk)
    faults.Add(Describe("Open", first.status != statusOk ? first.status : second.status));
  else if (first.handle == second.handle)
    faults.Add("both have the handle " + Number(first.handle));
  else
    for (CConnection* connection : {&first, &second})
      if (const int status = ReadWell(*connection); status != statusOk) faults.Add(Describe("Read", status));
  Close(first);
  if (faults.Judge().finding == EFinding::kept)
    if (const int status = ReadWell(second); status != statusOk)
      faults.Add("with the first one closed, " + Describe("Read", status));
  Close(second);
  return faults.Judge();
}

// Opens, reads and closes as often as there is time.
void CTrial::Serve(CNotes& faults) {
  const Clock::time_point end = Clock::now() + kRulePatience;
  for (int round = 0; round < kThreadRounds && Clock::now() < end; ++round) {
    CConnection connection(m_config);
    Open(connection, Mode());
    if (connection.status != statusOk) return faults.Add("Open gave " + NameOf(connection.status));
    const int status = ReadWell(connection);
    Close(connection);
    if (status != statusOk) return faults.Add("Read gave " + NameOf(status));
  }
}

CSeen CTrial::ServesTwoThreads() {
  if (!WhyNoRead().IsEmpty()) return NotTried(WhyNoRead());
  CNotes faults;
  std::thread other([this, &faults] { Serve(faults); });
  Serve(faults);
  other.join();
  return faults.Judge();
}

CSeen CTrial::LeavesNothing() {
  if (!WhyNoOpen().IsEmpty()) return NotTried(WhyNoOpen());
  if (!HasCloseCall()) return NotTried("there is no Close");
  const Clock::time_point end = Clock::now() + kRulePatience;
  const CHoldings before;
  int rounds = 0;
  for (; rounds < kRounds && Clock::now() < end; ++rounds) {
    CConnection connection(m_config);
    Open(connection, Mode());
    if (connection.status == statusOk && m_table->Read) Read(connection);
    Close(connection);
  }
  CHoldings after;
  for (int i = 0; i < 10 && after.Exceed(before); ++i, after = {}) std::this_thread::sleep_for(kTrialRest);
  if (!after.Exceed(before)) return {};
  return Broken("with " + Number(rounds) + " times Open and Close, files went from " +
                Number(static_cast<long long>(before.files)) + " to " +
                Number(static_cast<long long>(after.files)) + ", threads from " +
                Number(static_cast<long long>(before.threads)) + " to " +
                Number(static_cast<long long>(after.threads)));
}

CSeen CTrial::BearsFailedOpen() {
  if (!m_table->Open) return NotTried("there is no Open");
  DriverConfig nonsense = m_config;
  nonsense.text1 = nonsense.text2 = "\1 no setting of any driver";
  for (int DriverConfig::*field :
       {&DriverConfig::cardNumber, &DriverConfig::timeOut, &DriverConfig::station,
        &DriverConfig::registerAddress, &DriverConfig::registerAddressExt, &DriverConfig::plcNodeAddress,
        &DriverConfig::value1, &DriverConfig::value2, &DriverConfig::value3, &DriverConfig::value4,
        &DriverConfig::value5})
    nonsense.*field = -1;
  CConnection connection(nonsense);
  Open(connection, Mode());
  Close(connection);
  if (!HasWords(connection.status))
    return NotTried("an Open with nonsense gave " + NameOf(connection.status));
  const CDriverWords words = WordsFor(*m_table, connection.status);
  if (words && !Call("the words for handle -1", [&] { words(kNoHandle); }))
    return Broken("an exception left the call for handle -1");
  return {};
}

CSeen CTrial::GivesKnownStatuses() {
  return m_transfers == 0 ? NotTried("there was no Read and no Write that gave one") : m_statusFaults.Judge();
}

CSeen CTrial::GivesWords() {
  return m_wordsAsked == 0 ? NotTried("no call gave such a status") : m_wordFaults.Judge();
}

CSeen CTrial::DoesWithoutForms() {
  if (!m_table->ShowConfig) return NotTried("there is no ShowConfig");
  int result = 0;
  Call("ShowConfig", [&] { result = m_table->ShowConfig(1); });
  return result == 1 ? Broken("it gave 1, though the host has no forms") : CSeen();
}

CSeen CTrial::GivesItsId() {
  if (!m_table->SetConfig || !m_table->GetConfig) return NotTried("there is no SetConfig or no GetConfig");
  CConnection given(m_config);
  given.record.plcType = 0;  // it is the driver that sets it
  Call("SetConfig", [&] { m_table->SetConfig(given.record); });
  DriverConfig result;
  const bool returned = Call("GetConfig", [&] { result = FromRecord(m_table->GetConfig()); });
  if (!returned || result.plcType == m_header.id) return {};
  return Broken("plcType is " + Number(result.plcType) + ", the ID " + Number(m_header.id));
}

CSeen CTrial::ThrowsNothing() { return m_throws.Judge(); }

CSeen CTrial::CanBeUnloaded() {
  Send({{"call", "unloading"}});
  FreeModule(m_module);
  std::this_thread::sleep_for(kTrialRest);  // a thread that the driver has left runs into nothing
  return {};
}

}  // namespace

std::size_t TrialRuleCount() { return std::size(kRules); }

const char* TrialRule(std::size_t index) { return kRules[index].rule; }

// What the driver does to the process is to be seen as it is.
void RunTrial(const CContractTest& test, int pipe) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) ::signal(signal, SIG_DFL);
  ::dup2(STDERR_FILENO, STDOUT_FILENO);  // what a driver prints is no data
  try {
    CTrial(test, pipe).Run();
    ::_exit(0);  // nothing of the host ends here
  } catch (const std::exception& fault) {
    static_cast<void>(::write(STDERR_FILENO, fault.what(), std::strlen(fault.what())));
    ::_exit(1);
  }
}

}  // namespace vastra
