#include "host/cli/history/export_arguments.h"

#include "host/cli/history/history_paths.h"
#include "host/cli/history/moment_parser.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/column_names.h"

namespace vastra {
namespace {

template <class TValue>
struct CWord {
  const char* word;
  TValue value;
};

constexpr const char* kValueWords = "mean|min|max|first|last";
constexpr CWord<EStepValue> kStepValues[] = {{"mean", EStepValue::mean},
                                             {"min", EStepValue::least},
                                             {"max", EStepValue::greatest},
                                             {"first", EStepValue::first},
                                             {"last", EStepValue::last}};

constexpr const char* kFormatWords = "csv|jsonl|sqlite";
constexpr CWord<EExportFormat> kFormats[] = {
    {"csv", EExportFormat::csv}, {"jsonl", EExportFormat::jsonl}, {"sqlite", EExportFormat::sqlite}};
// How the names of output files end.
constexpr CWord<EExportFormat> kEndings[] = {{".jsonl", EExportFormat::jsonl},
                                             {".ndjson", EExportFormat::jsonl},
                                             {".sqlite", EExportFormat::sqlite},
                                             {".sqlite3", EExportFormat::sqlite},
                                             {".db", EExportFormat::sqlite}};

constexpr const char* kTimeWords = "local|utc|iso|unix";
constexpr CWord<ETimeForm> kTimes[] = {{"local", ETimeForm::local},
                                       {"utc", ETimeForm::utc},
                                       {"iso", ETimeForm::iso},
                                       {"unix", ETimeForm::seconds}};

// The form of the times if the user names none, by format.
constexpr ETimeForm kUsualTimes[] = {ETimeForm::local, ETimeForm::iso, ETimeForm::utc};

// Finds the value of a word that is perhaps typed. Returns an error message, or nothing.
template <class TValue, std::size_t N>
CString ReadWord(const char* option, const std::optional<CString>& typed, const CWord<TValue> (&words)[N],
                 const char* all, TValue& value) {
  if (!typed) return {};
  for (const CWord<TValue>& known : words)
    if (*typed == known.word) return value = known.value, CString();
  return CString(option) + ": " + *typed + " is not one of " + all;
}

CString ReadMoment(const char* option, const std::optional<CString>& typed, CMoment now,
                   std::optional<CTypedMoment>& moment) {
  if (!typed) return {};
  moment = ParseMoment(*typed, now);
  return moment ? CString() : CString(option) + ": " + *typed + " is not " + kMomentForms;
}

EExportFormat FormatOf(const CString& file) {
  for (const CWord<EExportFormat>& known : kEndings)
    if (file.View().ends_with(known.word)) return known.value;
  return EExportFormat::csv;
}

}  // namespace

CExportArguments::CExportArguments(CArguments& arguments)
    : m_paths(arguments.Files("PATH", "Binary logs, .rph or .rpd, journals, or folders of them")),
      m_from(
          arguments.OptionalText("--from", "T",
                                 "Rows from this time on: 2026-03-01, 2026-03-01T12:00:00, the same with Z "
                                 "or an offset, -7d (s, m, h, d, w), now")),
      m_to(arguments.OptionalText("--to", "T", "Rows before this time")),
      m_step(arguments.OptionalText("--step", "S",
                                    "One row for each step: seconds, or a number with s, m, h, d, w")),
      m_by(arguments.OptionalText("--by", kValueWords, "Which value of a step; mean unless given")),
      m_names(arguments.Texts("--vars", "A,B,...", "These variables only, in this order")),
      m_format(arguments.OptionalText("--format", kFormatWords,
                                      "Unless given, what the name of the output says, else csv")),
      m_time(arguments.OptionalText("--time", kTimeWords,
                                    "How times are written; unless given local in csv, iso in jsonl, utc in "
                                    "sqlite")),
      m_out(arguments.OptionalFile("--out", "OUT", "Write this file instead of standard output")),
      m_csv(arguments.OptionalFile("--csv", "OUT", "Write this file, as CSV")),
      m_force(arguments.Flag("--force", "Replace a database that exists")),
      m_recursive(arguments.Flag("--recursive", "Include the folders below a folder")),
      m_unique(arguments.Flag("--unique", "Leave out rows that an earlier log has as well")),
      m_digest(arguments.Flag("--digest", "Keep a digest of each folder, which makes steps quick")) {
  arguments.Exclude("--csv", "--out");
  arguments.Exclude("--csv", "--format");
  arguments.Need("--by", "--step");
  arguments.Need("--digest", "--step");
}

bool CExportArguments::IsPlain() const {
  const bool hasText = *m_from || *m_to || *m_step || *m_format || *m_time || *m_out;
  const bool hasFlag = *m_force || *m_recursive || *m_unique;
  return m_paths->size() == 1 && !hasText && !hasFlag && m_names->empty() && !IsFolder(m_paths->front().path);
}

EExit CExportArguments::Read(CExportOrder& order) const {
  order.paths = *m_paths;
  order.isRecursive = *m_recursive;
  order.request.isUnique = *m_unique;
  order.mayReplace = *m_force;
  order.makesDigests = *m_digest;
  const CString fault = ReadAll(order);
  return fault.IsEmpty() ? kDone : Fail(kWrongUse, "convert", fault + " (see vastra convert --help)");
}

CString CExportArguments::ReadAll(CExportOrder& order) const {
  CString fault = ReadRange(order.request);
  if (fault.IsEmpty()) fault = ReadNames(order.request);
  if (fault.IsEmpty()) fault = ReadOutput(order);
  return fault;
}

CString CExportArguments::ReadRange(CExportRequest& request) const {
  _timeb clock;
  _ftime(clock);
  std::optional<CTypedMoment> from, to;
  CString fault = ReadMoment("--from", *m_from, MomentOf(clock), from);
  if (fault.IsEmpty()) fault = ReadMoment("--to", *m_to, MomentOf(clock), to);
  if (!fault.IsEmpty()) return fault;
  if (from && to && from->moment >= to->moment) return "--from is not before --to";
  if (from) request.range.from = from->moment;
  if (to) request.range.to = to->moment;
  return ReadSteps(request, from && !from->isRelative);
}

CString CExportArguments::ReadSteps(CExportRequest& request, bool isFixedStart) const {
  if (!*m_step) return {};
  const std::optional<std::int64_t> step = ParseDuration(**m_step);
  if (!step) return "--step: " + **m_step + " is not " + kDurationForms;
  request.step = *step;
  request.stepOrigin = isFixedStart ? request.range.from : 0;
  return ReadWord("--by", *m_by, kStepValues, kValueWords, request.value);
}

CString CExportArguments::ReadNames(CExportRequest& request) const {
  if (SplitNames(*m_names, request.variables)) return {};
  return "--vars: a quotation mark is missing, or is not at the end of a name";
}

CString CExportArguments::ReadOutput(CExportOrder& order) const {
  order.out = *m_out ? *m_out : *m_csv;
  order.format = *m_out ? FormatOf((*m_out)->typed) : EExportFormat::csv;
  CString fault = ReadWord("--format", *m_format, kFormats, kFormatWords, order.format);
  if (!fault.IsEmpty()) return fault;
  if (order.format == EExportFormat::sqlite && !order.out) return "--format sqlite needs --out OUT";
  order.time = kUsualTimes[static_cast<int>(order.format)];
  return ReadWord("--time", *m_time, kTimes, kTimeWords, order.time);
}

}  // namespace vastra
