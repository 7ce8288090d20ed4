#include "host/web/history_answers.h"
#include "host/web/history_bodies.h"
#include "host/web/json_append.h"
#include "host/web/log_ids.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr const char* kCsv = "text/csv; charset=utf-8";
constexpr const char* kBytes = "application/octet-stream";

// The log that the request names. One that the list does not have, although it may be there, does not exist.
const CHistoryLog& NeedLog(const CHistoryRequest& request) {
  const auto id = request.query.Get("id");
  if (!id) throw CWebRefusal{400, "id: is missing"};
  const CHistoryLog* log = FindLog(request.source, *request.logs, *id);
  if (!log) throw CWebRefusal{404, "id: there is no such log, or it was removed"};
  return *log;
}

[[noreturn]] void Refuse(const CHistoryLog& log, const std::string& fault) {
  throw CWebRefusal{404, std::string(FilePart(log.path)) + ": " + fault};
}

// A name under which any system can save a file, with ending in place of its own if there is one.
std::string SaveName(std::string_view name, std::string_view ending = {}) {
  std::string saved(ending.empty() ? name : name.substr(0, name.rfind('.')));
  for (char& c : saved)
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7F ||
        std::string_view("\"*/:<>?\\|").find(c) != std::string_view::npos)
      c = '_';
  return saved.append(ending);
}

void AppendTime(std::string& text, const CHistoryLog& log, CMoment moment) {
  if (log.samples)
    AppendWhole(text, moment);
  else
    text += "null";
}

void AppendLog(std::string& text, const CHistoryLog& log, const std::string& id, const std::string& folder) {
  text += "{\"id\":";
  AppendText(text, id);
  text.append(",\"folder\":").append(folder).append(",\"file\":");
  AppendText(text, FilePart(log.path));
  text += ",\"first\":";
  AppendTime(text, log, log.first);
  text += ",\"last\":";
  AppendTime(text, log, log.last);
  text += ",\"rows\":" + std::to_string(log.samples) + ",\"bytes\":" + std::to_string(log.size) +
          (log.isJournal ? ",\"open\":true" : ",\"open\":false") + ",\"fault\":";
  if (log.fault.IsEmpty())
    text += "null";
  else
    AppendText(text, log.fault.View());
  text += '}';
}

}  // namespace

// Without a range also logs without rows. The times of a log with a fault are not known: it is in any range.
CWebAnswer LogsAnswer(const CHistoryRequest& request) {
  const bool isAll = !request.query.Get("from") && !request.query.Get("to");
  const CMomentRange range = ReadRange(request.query, RangeOf(*request.logs));
  std::string text = "{\"logs\":[", faults = "],\"faults\":[", folder;
  CString path;  // of the folder whose JSON text is in folder
  for (const CHistoryLog& log : *request.logs) {
    if (IsFolderFault(log)) {
      AppendComma(faults);
      AppendText(faults, log.path.Std() + ": " + log.fault.Std());
      continue;
    }
    if (!isAll && log.fault.IsEmpty() && !log.Meets(range)) continue;
    if (const CString now = DirectoryOf(log.path); folder.empty() || now != path) {
      folder.clear();
      AppendText(folder, (path = now).View());
    }
    AppendComma(text);
    AppendLog(text, log, LogId(request.source, log.path), folder);
  }
  return {.text = text + faults + "]}\n"};
}

CWebAnswer LogAnswer(const CHistoryRequest& request) {
  const CHistoryLog& log = NeedLog(request);
  std::string fault;
  std::unique_ptr<CWebBody> body = FileBody(log, fault);
  if (!body) Refuse(log, fault);
  return {.type = kBytes, .body = std::move(body), .file = SaveName(FilePart(log.path))};
}

CWebAnswer LogCsvAnswer(const CHistoryRequest& request) {
  const CHistoryLog& log = NeedLog(request);
  if (!log.names) Refuse(log, log.fault.Std());
  return {.type = kCsv, .body = LogCsvBody(log), .file = SaveName(FilePart(log.path), ".csv")};
}

CWebAnswer RowsCsvAnswer(const CHistoryRequest& request) {
  const CMomentRange range = ReadRange(request.query, RangeOf(*request.logs));
  return {.type = kCsv,
          .body = RowsCsvBody(request.logs, range, AskedVariables(request)),
          .file = SaveName(request.source.name + ".", ".csv")};
}

}  // namespace vastra
