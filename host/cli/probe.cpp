// vastra probe: opens a driver without a configuration, reads and writes, and tells what each call gave; with
// a module's file also whether it keeps the contract of drivers.
#include <algorithm>
#include <charconv>
#include <limits>

#include "host/cli/command.h"
#include "host/cli/driver_calls.h"
#include "host/cli/driver_contract.h"
#include "host/cli/driver_settings.h"
#include "host/cli/json_output.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/run/inbox.h"
#include "vastra/platform/file_system.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

constexpr std::int64_t kMostValues = 1 << 24;  // as many as a node can have
constexpr std::int64_t kLongestLimit = 3600;   // seconds
constexpr std::int64_t kUsualLimit = 10;
constexpr auto kRestAfterFailure = std::chrono::milliseconds(100);  // after a failed read

// What was asked for.
struct CProbe {
  CFileArgument driver;  // or its ID, as it was typed
  DriverConfig config;
  std::vector<float> values;  // to write
  bool isCounted = false;     // whether the number of values was given
  std::int64_t reads = 1;
  std::int64_t limit = kUsualLimit;
};

// Words after a separator; empty without words.
std::string After(const char* separator, const CString& words) {
  return words.IsEmpty() ? std::string() : separator + words.Std();
}

// The shortest number that reads back to the same float.
CJson FloatToJson(float value) {
  const std::string text = ToText(value);
  double number = 0;
  if (!std::isfinite(value)) return text;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// What the user sees: lines while it goes on, or one object at the end.
class CReport {
 public:
  CReport(const CString& file, bool asJson) : m_file(file), m_asJson(asJson) {}

  // False if nobody can see it.
  bool Facts(const CDriverFacts& facts);
  bool Finding(const CFinding& finding);
  void Call(const char* call, const CDriverReply& reply, std::span<const float> values);
  // With a line on standard error.
  void Fault(const CString& words) { Worsen(Fail(kFailed, m_file, words)); }
  bool CanBeSeen() const { return m_canBeSeen; }
  EExit End();

 private:
  void Worsen(EExit status) { m_status = status == kDone ? m_status : status; }
  bool Print(const std::string& line);

  const CString m_file;  // as the user knows it
  const bool m_asJson;
  CJson m_object = CJson::object();
  CJson m_calls = CJson::array();
  CJson m_contract;
  bool m_hasHeading = false;
  bool m_canBeSeen = true;
  EExit m_status = kDone;
};

bool CReport::Print(const std::string& line) {
  if (m_asJson || !m_canBeSeen) return m_canBeSeen;
  if (PrintLines({line}) == kDone) return true;
  Worsen(kFailed);
  return m_canBeSeen = false;
}

bool CReport::Facts(const CDriverFacts& facts) {
  if (!m_object.empty()) return true;  // known from the test
  m_object = {
      {"id", facts.id}, {"name", ToJson(facts.name)}, {"file", ToJson(m_file)}, {"version", facts.version}};
  return Print(facts.name.Std() + "  (" + m_file.Std() + "), ID " + std::to_string(facts.id) + ", version " +
               std::to_string(facts.version));
}

bool CReport::Finding(const CFinding& finding) {
  const bool isTried = finding.finding != EFinding::notTried, isBroken = finding.finding == EFinding::broken;
  if (isBroken) Worsen(kFailed);
  CJson row = {{"rule", finding.rule}, {"kept", !isBroken}};
  if (!finding.words.IsEmpty()) row["words"] = (isTried ? "" : "not tried: ") + finding.words.Std();
  m_contract.push_back(row);
  const char* heading = !isTried ? "not tried  " : isBroken ? "BROKEN     " : "kept       ";
  return Print(heading + std::string(finding.rule) + After(": ", finding.words));
}

void CReport::Call(const char* call, const CDriverReply& reply, std::span<const float> values) {
  if (reply.status != statusOk) Worsen(kFailed);
  if (!m_hasHeading) Print("call   status                        ms  values or words");
  m_hasHeading = true;
  CString line;
  line.Format("%-6s %-20s %11.3f", call, static_cast<const char*>(StatusName(reply.status)),
              reply.milliseconds);
  const CString words = reply.words.IsEmpty() ? StatusMeaning(reply.status) : reply.words;
  std::string shown = line.Std() + (words.IsEmpty() && values.empty() ? "" : " ");
  for (const float value : values) shown += " " + ToText(value);
  Print(shown + After(values.empty() ? " " : "; ", words));
  if (!m_asJson) return;
  CJson row = {{"call", call},
               {"status", reply.status},
               {"statusName", ToJson(StatusName(reply.status))},
               {"milliseconds", std::round(reply.milliseconds * 1000) / 1000}};
  if (!reply.words.IsEmpty()) row["words"] = ToJson(reply.words);
  for (const float value : values) row["values"].push_back(FloatToJson(value));
  m_calls.push_back(row);
}

EExit CReport::End() {
  if (!m_asJson) return m_status;
  if (m_object.empty()) m_object = {{"id", {}}, {"name", {}}, {"file", ToJson(m_file)}, {"version", {}}};
  m_object["calls"] = m_calls;
  if (!m_contract.is_null()) m_object["contract"] = m_contract;
  Worsen(PrintJson(m_object));
  return m_status;
}

// One driver, opened, read and written as asked.
class CProbing {
 public:
  CProbing(const CProbe& probe, const CDriverCalls& driver, CReport& report)
      : m_probe(probe),
        m_driver(driver),
        m_report(report),
        m_area(probe.config.variableCount + 2 * kGuard),
        m_values(std::span(m_area).subspan(kGuard, probe.config.variableCount)) {}

  void Run() {
    if (!m_driver.Table().Open) return m_report.Fault("the driver offers no Open");
    if (!m_probe.values.empty()) Write();
    if (m_probe.values.empty() || m_probe.reads > 0) Read();
  }

 private:
  bool Open(int mode) {
    const CDriverReply reply = m_driver.Open(m_probe.config, mode, m_handle);
    m_report.Call("Open", reply, {});
    if (reply.status != statusOk && !m_probe.isCounted)
      Warn("probe", "the driver was opened for 1 value; --count gives another number");
    return reply.status == statusOk;
  }

  void Write() {
    if (!Open(driverModeWrite)) return;
    if (m_driver.Table().Write) {
      std::ranges::copy(m_probe.values, m_values.begin());
      m_report.Call("Write", m_driver.Write(m_values, m_handle), m_probe.values);
    } else {
      m_report.Fault("the driver offers no Write");
    }
    m_driver.Close(m_handle);
  }

  void Read() {
    if (!Open(driverModeRead)) return;
    if (m_driver.Table().Read)
      ReadAll();
    else if (m_probe.reads > 0)
      m_report.Fault("the driver offers no Read");
    m_driver.Close(m_handle);
  }

  void ReadAll() {
    CInbox inbox;
    const CStopSignals stops(inbox);
    for (std::int64_t i = 0; i < m_probe.reads && m_report.CanBeSeen(); ++i) {
      std::ranges::fill(m_values, 0.0f);
      const CDriverReply reply = m_driver.Read(m_values, m_handle);
      const bool isGood = reply.status == statusOk;
      m_report.Call("Read", reply, isGood ? m_values : std::span<float>());
      const auto now = std::chrono::steady_clock::now();
      CMessage stop;
      if (inbox.Wait(stop, isGood || i + 1 == m_probe.reads ? now : now + kRestAfterFailure)) return;
    }
  }

  const CProbe& m_probe;
  const CDriverCalls& m_driver;
  CReport& m_report;
  std::vector<float> m_area;
  const std::span<float> m_values;  // within the area
  int m_handle = kNoHandle;
};

EExit RunProbe(CProbe& probe, const CString& path, CReport& report) {
  CString reason;
  const CDriverCalls driver(LoadModule(path, &reason));
  if (!driver.IsDriver())
    return Fail(kFailed, probe.driver.typed, reason.IsEmpty() ? "no GetDriverHeader" : reason);
  if (!report.Facts({driver.Id(), driver.Name(), driver.Version()})) return report.End();
  probe.config.plcType = driver.Id();
  CProbing(probe, driver, report).Run();
  return report.End();
}

EExit ProbeId(CProbe& probe, std::int64_t id, bool asJson) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const int index = factory.GetDriverIndex(static_cast<int>(id));
  if (index < 0 || factory.GetDriverID(index) != id)
    return Fail(kFailed, probe.driver.typed,
                "there is no driver with this ID; vastra drivers lists those there are");
  const CString& file = factory.GetDrivers()[index].m_fileName;
  CReport report(file, asJson);
  return RunProbe(probe, JoinPath(factory.GetPath(), file), report);
}

EExit ProbeModule(CProbe& probe, bool asJson) {
  CReport report(probe.driver.typed, asJson);
  const CContractResult result =
      TestContract({.path = probe.driver.path,
                    .config = probe.config,
                    .values = probe.values,
                    .limit = std::chrono::seconds(probe.limit),
                    .tellFacts =
                        [&](const CDriverFacts& facts) {
                          probe.config.plcType = facts.id;
                          return report.Facts(facts);
                        },
                    .tellFinding = [&](const CFinding& finding) { return report.Finding(finding); }});
  if (!result.noDriver.IsEmpty()) {
    const bool isWord = probe.driver.typed.Find('/') < 0 && probe.driver.typed.Find('.') < 0;
    const char* hint = isWord ? " (vastra drivers lists the IDs of those that are installed)" : "";
    return Fail(kFailed, probe.driver.typed, result.noDriver + hint);
  }
  if (!report.CanBeSeen()) return report.End();
  if (result.end.IsEmpty()) return RunProbe(probe, probe.driver.path, report);
  report.Fault("the driver is not opened here, since in the test " + result.end);
  return report.End();
}

struct CProbeArguments {
  CArgument<CFileArgument> driver;
  CArgument<std::vector<CString>> settings, values;
  CArgument<CNumber> count, reads, limit;
  CArgument<bool> asJson;
};

EExit Probe(const CProbeArguments& arguments) {
  CProbe probe;
  probe.driver = *arguments.driver;
  const CString fault = TakeSettings(*arguments.settings, probe.config);
  if (!fault.IsEmpty()) return Fail(kWrongUse, "probe", "--set " + fault);
  for (const CString& values : *arguments.values)
    if (!TakeNumbers(values, probe.values))
      return Fail(kWrongUse, "probe", "--write " + values + ": is no comma list of numbers");
  const auto given = static_cast<std::int64_t>(probe.values.size());
  const std::int64_t count = arguments.count->value_or(given > 0 ? given : 1);
  probe.isCounted = *arguments.count || given > 0;
  if (given > 0 && count != given)
    return Fail(kWrongUse, "probe",
                "--count is " + CString(std::to_string(count)) + ", and --write has " +
                    CString(std::to_string(given)) + " values");
  probe.config.variableCount = static_cast<UINT>(count);
  probe.reads = arguments.reads->value_or(given > 0 ? 0 : 1);
  probe.limit = arguments.limit->value_or(kUsualLimit);
  const std::string_view typed = probe.driver.typed.View();
  std::int64_t id = 0;
  const auto [rest, error] = std::from_chars(typed.data(), typed.data() + typed.size(), id);
  if (error == std::errc() && rest == typed.data() + typed.size())
    return ProbeId(probe, id, *arguments.asJson);
  return ProbeModule(probe, *arguments.asJson);
}

}  // namespace

CAction DeclareProbe(CArguments& arguments) {
  CProbeArguments probe;
  probe.driver = arguments.File("DRIVER",
                                "ID of a driver beside this program, or the file of a module, which is "
                                "tested whether it keeps the rules for drivers");
  probe.settings = arguments.Texts("--set", "FIELD=VALUE", "A setting of the driver; may come again");
  probe.count =
      arguments.Number("--count", "N", "Number of values; 1, or that of --write, without it", 1, kMostValues);
  probe.values = arguments.Texts("--write", "V,V,...", "Open to write, and write these values");
  probe.reads =
      arguments.Number("--reads", "N", "Read so many times; 0 opens only. 1 without it, 0 with --write", 0,
                       std::numeric_limits<std::int64_t>::max());
  probe.limit = arguments.Number("--limit", "SECONDS",
                                 "The longest that a call may take in the test of a module; 10 "
                                 "without it",
                                 1, kLongestLimit);
  probe.asJson = arguments.Flag("--json", "Print one object");
  return [=] { return Probe(probe); };
}

}  // namespace vastra
