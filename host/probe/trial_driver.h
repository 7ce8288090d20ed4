// CTrialDriver: the driver under the contract test. Calls the driver's functions, reports each call before it
// is made, and collects what the rules judge: values, statuses, words and exceptions. The rules use it.
#pragma once

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>
#include <string>

#include "host/common/json_text.h"
#include "host/probe/contract.h"
#include "host/probe/driver_calls.h"
#include "host/probe/value_area.h"

namespace vastra {

constexpr int kException = std::numeric_limits<int>::min();  // in place of a status
constexpr auto kTrialRest = std::chrono::milliseconds(100);  // between two attempts

// The outcome of one rule.
struct CSeen {
  EFinding finding = EFinding::kept;
  CString words;
};
inline CSeen Broken(const CString& words) { return {EFinding::broken, words}; }
inline CSeen NotTried(const CString& words) { return {EFinding::notTried, words}; }

CString TrialStatusName(int status);
bool IsUtf8(const CString& text);
inline CString Decimal(long long number) { return CString(std::to_string(number)); }

// What was found during the calls, without repetitions. Any thread.
class CNotes {
 public:
  void Add(const CString& words);
  CSeen Judge() const { return m_text.IsEmpty() ? CSeen() : Broken(m_text); }

 private:
  std::mutex m_mutex;
  CString m_text;
};

// A text that a driver is given and that can be overwritten afterwards.
class CGivenText {
 public:
  explicit CGivenText(const CString& text) : m_bytes(text.Std()) { m_bytes.append(16, '\0'); }
  const char* Get() const { return m_bytes.c_str(); }
  void Overwrite() { std::fill(m_bytes.begin(), m_bytes.end(), '?'); }

 private:
  std::string m_bytes;
};

// A connection, or the attempt at one, with what the driver was given for it.
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

class CTrialDriver {
 public:
  CTrialDriver(const CContractTest& test, int pipe) : m_test(test), m_config(test.config), m_pipe(pipe) {}

  // Loads the module and asks for its header, version and table. False with the reason if it is not a driver.
  bool Load(CString& reason);
  void Unload();
  bool AskForHeader();
  // Writes one line to the pipe.
  void Send(const CJson& message) const;

  const CContractTest& Test() const { return m_test; }
  const DriverConfig& Config() const { return m_config; }
  void SetType(int type) { m_config.plcType = type; }
  const DriverHeader& Header() const { return m_header; }
  const CString& Name() const { return m_name; }
  int Version() const { return m_version; }
  // Null before SetTable if the driver has none.
  const DriverFunctions* Table() const { return m_table; }
  void SetTable(const DriverFunctions* table) { m_table = table; }
  bool HasCloseCall() const { return m_version >= kVersionWithClose && m_table->Close; }
  int Mode() const { return m_table->Read ? driverModeRead : driverModeWrite; }

  // Calls function, which calls the driver's function name. False if it threw.
  template <class Function>
  bool Call(const char* name, const Function& function) {
    Send({{"call", name}});
    if (AskDriver(false, [&] { return function(), true; })) return true;
    m_throws.Add(CString("an exception left ") + name);
    return false;
  }

  // The calls for connections return a status or kException. Any thread.
  void Open(CConnection& connection, int mode);
  int Read(CConnection& connection);
  // Reads until a read is good, for a second at most: a driver may fail now and then. The last status.
  int ReadWell(CConnection& connection);
  int Write(CConnection& connection, const std::vector<float>& values);
  void Close(const CConnection& connection);

  // The answer of an optional export to config; empty without the export.
  CString AskQuestion(const char* name, const DriverConfig& config);

  // "Read failed (statusTimeout)".
  CString Describe(const char* call, int status) const;

  bool HasQuestions() const { return m_hasQuestions; }
  bool HasTransfers() const { return m_transfers > 0; }
  bool HasAskedWords() const { return m_wordsAsked > 0; }
  CSeen JudgeRead() const { return m_readFaults.Judge(); }
  CSeen JudgeWrite() const { return m_writeFaults.Judge(); }
  CSeen JudgeStatuses() const { return m_statusFaults.Judge(); }
  CSeen JudgeQuestions() const { return m_questionFaults.Judge(); }
  CSeen JudgeWords() const { return m_wordFaults.Judge(); }
  CSeen JudgeThrows() const { return m_throws.Judge(); }

 private:
  void CheckValues(std::span<const float> values);
  static CString FindTextFault(const CString& name, const CString& copy);
  void AskWords(const char* call, int status, int handle);

  const CContractTest& m_test;
  DriverConfig m_config;
  const int m_pipe;
  HMODULE m_module = nullptr;
  DriverHeader m_header = {};
  CString m_name;
  int m_version = 1;
  const DriverFunctions* m_table = nullptr;
  std::mutex m_lastMutex;
  CString m_lastWords;  // of the driver
  bool m_hasQuestions = false;
  std::atomic<int> m_transfers{0};
  std::atomic<int> m_wordsAsked{0};
  CNotes m_readFaults, m_writeFaults, m_questionFaults, m_statusFaults, m_wordFaults, m_throws;
};

}  // namespace vastra
