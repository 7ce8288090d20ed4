// vastra probe: opens a driver without a configuration, writes and reads, and prints the result of each call.
// For the file of a module it also prints which rules of drivers the module keeps.
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include "host/cli/command.h"
#include "host/cli/driver_folders.h"
#include "host/cli/json_output.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/driver_search.h"
#include "host/common/module_file.h"
#include "host/probe/driver_settings.h"
#include "host/probe/probe.h"
#include "host/run/inbox.h"

namespace vastra {
namespace {

constexpr std::int64_t kMostValues = 1 << 24;  // as many as a node can have
constexpr std::int64_t kLongestLimit = 3600;   // seconds
constexpr std::int64_t kUsualLimit = 10;

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

// A signal ends the reads while this object exists.
struct CProbeStop {
  CInbox inbox;
  CStopSignals signals{inbox};
};

// Prints what a probe finds: lines during the probe, or one object at its end.
class CReport : public CProbeObserver {
 public:
  CReport(const CString& file, bool asJson, bool isCounted)
      : m_file(file), m_asJson(asJson), m_isCounted(isCounted) {}

  // False if the output cannot be written.
  bool OnFacts(const CDriverFacts& facts) override;
  bool OnFinding(const CRuleFinding& finding) override;
  void OnCall(const char* call, const CDriverReply& reply, std::span<const float> values) override;
  void OnFault(const CString& words) override { Worsen(Fail(kFailed, m_file, words)); }
  void OnCountMatters() override {
    if (!m_isCounted) Warn("probe", "the driver was opened for 1 value; --count sets another number");
  }
  bool BeginReads() override {
    m_stop.emplace();
    return m_canBeSeen;
  }
  void EndReads() override { m_stop.reset(); }
  bool Rest(std::chrono::milliseconds time) override;
  EExit End();

 private:
  void Worsen(EExit status) { m_status = status == kDone ? m_status : status; }
  bool Print(const std::string& line);

  const CString m_file;  // as the user knows it
  const bool m_asJson;
  const bool m_isCounted;            // the user gave the number of values
  std::optional<CProbeStop> m_stop;  // during the reads
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

bool CReport::OnFacts(const CDriverFacts& facts) {
  if (!m_object.empty()) return true;  // known from the test
  m_object = {
      {"id", facts.id}, {"name", ToJson(facts.name)}, {"file", ToJson(m_file)}, {"version", facts.version}};
  return Print(facts.name.Std() + "  (" + m_file.Std() + "), ID " + std::to_string(facts.id) + ", version " +
               std::to_string(facts.version));
}

bool CReport::OnFinding(const CRuleFinding& finding) {
  const bool isTried = finding.finding != EFinding::notTried, isBroken = finding.finding == EFinding::broken;
  if (isBroken) Worsen(kFailed);
  CJson row = {{"rule", finding.rule}, {"kept", !isBroken}};
  if (!finding.words.IsEmpty()) row["words"] = (isTried ? "" : "not tried: ") + finding.words.Std();
  m_contract.push_back(row);
  const char* heading = !isTried ? "not tried  " : isBroken ? "BROKEN     " : "kept       ";
  return Print(heading + std::string(finding.rule) + After(": ", finding.words));
}

void CReport::OnCall(const char* call, const CDriverReply& reply, std::span<const float> values) {
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

bool CReport::Rest(std::chrono::milliseconds time) {
  CMessage stop;
  return !m_stop->inbox.Wait(stop, std::chrono::steady_clock::now() + time) && m_canBeSeen;
}

// What was asked for.
struct CProbe {
  CProbeRequest request;
  CString typed;  // the driver's ID or file
  bool isCounted = false;
  bool asJson = false;
};

EExit ProbeId(CProbe& probe, std::int64_t id) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const int index = factory.GetDriverIndex(static_cast<int>(id));
  if (index < 0 || factory.GetDriverID(index) != id)
    return Fail(kFailed, probe.typed,
                "there is no driver with this ID; vastra drivers lists the installed ones");
  const CModuleFile& file = factory.GetDrivers()[index];
  probe.request.path = file.m_loadPath;
  CReport report(ShownName(file), probe.asJson, probe.isCounted);
  const CString noDriver = ProbeDriver(probe.request, report);
  return noDriver.IsEmpty() ? report.End() : Fail(kFailed, probe.typed, noDriver);
}

EExit ProbeFile(const CProbe& probe) {
  CReport report(probe.typed, probe.asJson, probe.isCounted);
  CString noDriver = FindModuleFault(probe.request.path);
  if (noDriver.IsEmpty()) noDriver = ProbeModule(probe.request, report);
  if (noDriver.IsEmpty()) return report.End();
  const bool isWord = probe.typed.Find('/') < 0 && probe.typed.Find('.') < 0;
  const char* hint = isWord ? " (vastra drivers lists the IDs of those that are installed)" : "";
  return Fail(kFailed, probe.typed, noDriver + hint);
}

struct CProbeArguments {
  CArgument<CFileArgument> driver;
  CDriverFolders folders;
  CArgument<std::vector<CString>> settings = {}, values = {};
  CArgument<CNumber> count = {}, reads = {}, limit = {};
  CArgument<bool> asJson = {};
};

// All of text as an ID.
std::optional<std::int64_t> ToId(std::string_view text) {
  std::int64_t id = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  return error == std::errc() && rest == text.data() + text.size() ? std::optional(id) : std::nullopt;
}

EExit Probe(const CProbeArguments& arguments) {
  if (arguments.folders.Search() != kDone) return kWrongUse;
  CProbe probe;
  CProbeRequest& request = probe.request;
  const CString fault = ReadSettings(*arguments.settings, request.config);
  if (!fault.IsEmpty()) return Fail(kWrongUse, "probe", "--set " + fault);
  for (const CString& values : *arguments.values)
    if (!ReadNumbers(values, request.values))
      return Fail(kWrongUse, "probe", "--write " + values + ": is not a comma-separated list of numbers");
  const auto given = static_cast<std::int64_t>(request.values.size());
  const std::int64_t count = arguments.count->value_or(given > 0 ? given : 1);
  if (given > 0 && count != given)
    return Fail(kWrongUse, "probe",
                "--count is " + CString(std::to_string(count)) + ", and --write has " +
                    CString(std::to_string(given)) + " values");
  request.path = arguments.driver->path;
  request.config.variableCount = static_cast<UINT>(count);
  request.reads = arguments.reads->value_or(given > 0 ? 0 : 1);
  request.limit = std::chrono::seconds(arguments.limit->value_or(kUsualLimit));
  probe.typed = arguments.driver->typed;
  probe.isCounted = *arguments.count || given > 0;
  probe.asJson = *arguments.asJson;
  const auto id = ToId(probe.typed.View());
  return id ? ProbeId(probe, *id) : ProbeFile(probe);
}

}  // namespace

CAction DeclareProbe(CArguments& arguments) {
  const auto driver =
      arguments.File("DRIVER",
                     "ID of a driver that vastra drivers lists, or the file of a driver module; a file is "
                     "also tested against the rules for drivers");
  CProbeArguments probe{driver, CDriverFolders(arguments)};
  probe.settings = arguments.Texts("--set", "FIELD=VALUE", "A setting of the driver; can be repeated");
  probe.count = arguments.Number(
      "--count", "N", "Number of values (default: 1, or the number of values of --write)", 1, kMostValues);
  probe.values = arguments.Texts("--write", "V,V,...", "Open for writing, and write these values");
  probe.reads = arguments.Number("--reads", "N", "Number of reads; 0 opens only (default: 1, with --write 0)",
                                 0, std::numeric_limits<std::int64_t>::max());
  probe.limit = arguments.Number("--limit", "SECONDS",
                                 "Longest time that a call may take in the test of a module (default: 10)", 1,
                                 kLongestLimit);
  probe.asJson = arguments.Flag("--json", "Print one object");
  return [=] { return Probe(probe); };
}

}  // namespace vastra
