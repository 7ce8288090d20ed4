// What CLoggerWatch answers.
#include <algorithm>
#include <set>

#include "host/attach/status_metrics.h"
#include "host/common/shown_text.h"
#include "host/web/configured_folders.h"
#include "host/web/json_append.h"
#include "host/web/logger_watch.h"
#include "host/web/web_parameters.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

std::string MessagesText(const std::vector<CTextPtr>& texts, std::uint64_t last, std::uint64_t dropped) {
  std::string text = "{\"messages\":[";
  for (const CTextPtr& one : texts) text.append(&one == &texts.front() ? "" : ",").append(one->Text());
  return text + "],\"last\":" + std::to_string(last) + ",\"dropped\":" + std::to_string(dropped) + "}\n";
}

}  // namespace

std::shared_ptr<CLoggerRecord> CLoggerWatch::Find(std::string_view name) const {
  const std::lock_guard lock(m_board->lock);
  return m_board->Find(name);
}

bool CLoggerWatch::IsFolder(std::string_view name) const { return !Find(name) && m_folders.contains(name); }
bool CLoggerWatch::Has(std::string_view name) const { return m_folders.contains(name) || Find(name); }

std::vector<std::string> CLoggerWatch::FoldersOf(std::string_view name) const {
  std::vector<std::string> folders;
  const std::shared_ptr<CLoggerRecord> record = Find(name);
  if (record && !HasAnswered(name)) {
    folders = ConfiguredFolders(m_places, CString(record->Name()));
  } else if (record) {
    const std::lock_guard lock(m_board->lock);
    folders = record->Folders();
  }
  const auto own = m_folders.find(name);
  if (own != m_folders.end() && std::find(folders.begin(), folders.end(), own->second) == folders.end())
    folders.push_back(own->second);
  return folders;
}

bool CLoggerWatch::HasAnswered(std::string_view name) const {
  const std::lock_guard lock(m_board->lock);
  const auto record = m_board->Find(name);
  return record && record->HasAnswered();
}

std::string CLoggerWatch::NameOf(const std::string& shown) const {
  if (shown.find("\xEF\xBF\xBD") == shown.npos || Has(shown)) return shown;
  for (const auto& [name, path] : m_folders)
    if (ValidUtf8(name) == shown) return name;
  const std::lock_guard lock(m_board->lock);
  for (const auto& [name, record] : m_board->loggers)
    if (ValidUtf8(name) == shown) return name;
  return shown;
}

CWebAnswer CLoggerWatch::None(std::string_view name, const char* what) const {
  const std::string shown = OneLine(Shortened(std::string(name).c_str(), 200));
  if (IsFolder(name)) return ErrorAnswer(404, shown + ": is a folder of logs and has no " + what);
  return ErrorAnswer(404, shown + ": there is no such logger");
}

std::vector<CLoggerStatus> CLoggerWatch::Statuses() const {
  std::vector<std::shared_ptr<CLoggerRecord>> records;
  {
    const std::lock_guard lock(m_board->lock);
    for (const auto& [name, record] : m_board->loggers) records.push_back(record);
  }
  std::vector<CLoggerStatus> all;
  for (const auto& record : records) {
    const std::lock_guard lock(m_board->lock);
    all.push_back(record->Status(Clock::now()));
  }
  for (CLoggerStatus& status : all) status.problems = ProblemsOf(status);
  return all;
}

CJson CLoggerWatch::ListJson() const {
  std::map<std::string, CJson> all;  // by name
  for (const auto& [name, path] : m_folders) all[name] = FolderJson(name);
  for (const CLoggerStatus& status : Statuses()) all[status.place.name.Std()] = LoggerJson(status);
  CJson json = {{"loggers", CJson::array()}};
  for (auto& [name, one] : all) json["loggers"].push_back(std::move(one));
  const std::lock_guard lock(m_board->lock);
  if (!m_board->searchFault.empty()) json["fault"] = m_board->searchFault;
  return json;
}

CWebAnswer CLoggerWatch::Loggers() const { return JsonAnswer(ListJson()); }

CWebAnswer CLoggerWatch::Logger(std::string_view name) const {
  const auto record = Find(name);
  if (!record) return IsFolder(name) ? JsonAnswer(FolderJson(std::string(name))) : None(name, "");
  CLoggerStatus status;
  {
    const std::lock_guard lock(m_board->lock);
    status = record->Status(Clock::now());
  }
  status.problems = ProblemsOf(status);
  return JsonAnswer(LoggerJson(status));
}

CWebAnswer CLoggerWatch::Variables(std::string_view name, const std::vector<CString>& logged) const {
  CTextPtr shared;
  std::set<std::string> known;
  {
    const std::lock_guard lock(m_board->lock);
    if (const auto record = m_board->Find(name)) {
      shared = record->Variables();
      known = {record->VariableNames().begin(), record->VariableNames().end()};
    }
  }
  if (!shared) return None(name, "variables of samples");
  std::string text = shared->Text();
  text.resize(text.size() - 2);  // without the end of the list and of the object
  for (const CString& one : logged)
    if (known.insert(ValidUtf8(one.View())).second) AppendVariable(text, one.View());
  return {.text = text + "]}\n"};
}

CWebAnswer CLoggerWatch::Sample(std::string_view name) const {
  CTextPtr text;
  {
    const std::lock_guard lock(m_board->lock);
    const auto record = m_board->Find(name);
    if (record && !record->Sample()) return ErrorAnswer(404, record->Name() + ": there is no sample yet");
    if (record) text = record->Sample();
  }
  return text ? CWebAnswer{.text = text->Text() + "\n"} : None(name, "samples");
}

CWebAnswer CLoggerWatch::Messages(std::string_view name, const CWebQuery& query) const {
  const auto record = Find(name);
  if (!record) return None(name, "messages");
  std::uint64_t after;
  try {
    after = static_cast<std::uint64_t>(ReadNumber(query, {"after", 0, INT64_MAX, 0}));
  } catch (const CWebRefusal& refusal) {
    return ErrorAnswer(refusal.status, refusal.words);
  }
  std::vector<CTextPtr> texts;
  std::uint64_t last;
  {
    const std::lock_guard lock(m_board->lock);
    const CTextRing& messages = record->Messages();
    last = messages.Last();
    if (after > last) after = 0;  // the number comes from before the server's start: nothing is known
    for (const CTextRing::CEntry& entry : messages.Entries())
      if (entry.number > after) texts.push_back(entry.text);
  }
  return {.text = MessagesText(texts, last, last - after - texts.size())};
}

CWebAnswer CLoggerWatch::Metrics() const {
  return {.type = "text/plain; version=0.0.4; charset=utf-8", .text = StatusMetrics(Statuses())};
}

}  // namespace vastra
