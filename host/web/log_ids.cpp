#include "host/web/log_ids.h"

#include <algorithm>

#include "vastra/logfiles/journal_reader.h"

namespace vastra {
namespace {

void AppendPlain(std::string& id, std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte < 0x7F && c != '%')
      id += c;
    else
      id += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
}

}  // namespace

std::string LogId(const CHistorySource& source, const CString& path) {
  for (std::size_t i = 0; i < source.folders.size(); ++i) {
    const std::string& folder = source.folders[i];
    std::string_view rest = path.View();
    if (!rest.starts_with(folder)) continue;
    rest.remove_prefix(folder.size());
    if (!folder.ends_with('/') && !rest.starts_with('/')) continue;
    rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of('/')));
    if (rest.empty()) continue;
    std::string id = std::to_string(i) + "/";
    AppendPlain(id, rest);
    return id;
  }
  return {};
}

// A folder that cannot be read has neither names nor a size.
bool IsFolderFault(const CHistoryLog& log) {
  CJournalEntry entry;
  const std::string_view file = FilePart(log.path);
  return !log.fault.IsEmpty() && log.size == 0 && !EndsIn(file, ".rph") && !EndsIn(file, ".rpd") &&
         !ParseJournalFile(file, entry);
}

const CHistoryLog* FindLog(const CHistorySource& source, const std::vector<CHistoryLog>& logs,
                           std::string_view id) {
  if (id.empty()) return nullptr;
  const auto found = std::find_if(logs.begin(), logs.end(), [&](const CHistoryLog& log) {
    return LogId(source, log.path) == id && !IsFolderFault(log);
  });
  return found == logs.end() ? nullptr : &*found;
}

std::string_view FilePart(const CString& path) {
  const std::string_view view = path.View();
  return view.substr(view.rfind('/') + 1);
}

}  // namespace vastra
