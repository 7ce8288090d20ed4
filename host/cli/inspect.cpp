// vastra inspect: variables, sample count and times of logs and journals.
#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/number_text.h"
#include "host/cli/output.h"
#include "host/cli/read_log.h"
#include "host/cli/terminal/terminal.h"
#include "host/cli/time_text.h"

namespace vastra {
namespace {

// The contents of one log, or why it cannot be read.
struct CLogFacts {
  CString file;  // as it was typed
  CString fault;
  CStringArray names;
  std::size_t samples = 0;
  _timeb first, last;  // if there are samples
};

CLogFacts Look(const CFileArgument& file) {
  CLogFacts facts{file.typed, {}, {}, 0, {}, {}};
  CSampleStore samples;
  facts.fault = ReadLog(file, facts.names, samples);
  facts.samples = samples.GetCount();
  if (samples.IsEmpty()) return facts;
  facts.first = samples.GetHead().m_time;
  facts.last = samples.GetLastTime();
  return facts;
}

CJson FactsJson(const CLogFacts& facts) {
  CJson log = {{"file", ToJson(facts.file)}};
  if (!facts.fault.IsEmpty()) {
    log["error"] = ToJson(facts.fault);
    return log;
  }
  log["names"] = CJson::array();
  for (const CString& name : facts.names) log["names"].push_back(ToJson(name));
  log["samples"] = facts.samples;
  log["first"] = facts.samples ? ToJson(facts.first) : CJson();
  log["last"] = facts.samples ? ToJson(facts.last) : CJson();
  return log;
}

std::vector<std::string> ToLines(const CLogFacts& facts) {
  const auto variables = static_cast<std::size_t>(facts.names.GetSize());
  std::vector<std::string> lines = {
      facts.file.Std(), "  " + Counted(facts.samples, "sample") + " of " + Counted(variables, "variable")};
  if (facts.samples) {
    lines.push_back("  from  " + LocalTimeText(facts.first));
    lines.push_back("  to    " + LocalTimeText(facts.last));
  }
  for (const CString& name : facts.names) lines.push_back("  - " + name.Std());
  return lines;
}

EExit Inspect(const std::vector<CFileArgument>& files, bool asJson) {
  EExit status = kDone;
  CJson list = CJson::array();
  for (const CFileArgument& file : files) {
    const CLogFacts facts = Look(file);
    if (!facts.fault.IsEmpty()) status = kFailed;
    if (asJson)
      list.push_back(FactsJson(facts));
    else if (!facts.fault.IsEmpty())
      Fail(kFailed, facts.file, facts.fault);
    else if (PrintLines(ToLines(facts)) != kDone)
      return kFailed;
  }
  if (asJson && PrintJson(list) != kDone) return kFailed;
  return status;
}

}  // namespace

CAction DeclareInspect(CArguments& arguments) {
  const auto files = arguments.Files("LOG", "Binary logs, .rph or .rpd, or journals");
  const auto asJson = arguments.Flag("--json", "Print one array of objects");
  return [=] { return Inspect(*files, *asJson); };
}

}  // namespace vastra
