#include "host/attach/find_loggers.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>

namespace vastra {
namespace {

using Names = std::set<std::string>;
using Entry = std::filesystem::directory_entry;

constexpr std::size_t kLongestName = 200;  // bytes
constexpr std::size_t kMostLoggers = 1000;
constexpr int kMostEntries = 100'000;  // of a folder

// Calls visit for each entry of folder. A folder that does not exist is empty.
void ForEachEntry(const std::string& folder, CString& fault, const std::function<void(const Entry&)>& visit) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  for (int i = 0; !error && i < kMostEntries && entries != std::filesystem::directory_iterator(); ++i) {
    visit(*entries);
    entries.increment(error);
  }
  if (error && error != std::errc::no_such_file_or_directory)
    fault = CString(folder + ": cannot be searched for loggers: " + error.message());
}

// Adds the middle of file between begin and end, if it has both.
void AddName(const std::string& file, std::string_view begin, std::string_view end, Names& names) {
  if (file.size() <= begin.size() + end.size() || !file.starts_with(begin) || !file.ends_with(end)) return;
  const std::string name = file.substr(begin.size(), file.size() - begin.size() - end.size());
  if (IsLoggerName(CString(name))) names.insert(name);
}

void AddFeeds(const std::string& folder, Names& names, CString& fault) {
  ForEachEntry(folder, fault, [&names](const Entry& entry) {
    std::error_code error;
    const bool hasFeed =
        std::filesystem::exists(std::filesystem::symlink_status(entry.path() / "feed", error));
    // A folder that this user cannot look into may have one.
    if (hasFeed || error == std::errc::permission_denied)
      AddName(entry.path().filename().string(), "", "", names);
  });
}

void AddConfigurations(const std::string& folder, Names& names, CString& fault) {
  ForEachEntry(folder, fault, [&names](const Entry& entry) {
    for (const char* const ending : {".json", ".vst"})
      AddName(entry.path().filename().string(), "", ending, names);
  });
}

// Units are enabled by links in the folder of the target that wants them.
void AddUnits(const std::string& folder, Names& names, CString& fault) {
  ForEachEntry(folder, fault, [&names, &fault](const Entry& target) {
    std::error_code error;
    if (!target.path().native().ends_with(".wants") || !target.is_directory(error)) return;
    ForEachEntry(target.path().string(), fault, [&names](const Entry& unit) {
      AddName(unit.path().filename().string(), "vastra@", ".service", names);
    });
  });
}

}  // namespace

bool IsLoggerName(const CString& name) {
  const std::string& text = name.Std();
  const auto isBad = [](char c) { return c == '/' || static_cast<unsigned char>(c) < ' ' || c == 0x7F; };
  return !text.empty() && text.size() <= kLongestName && text.front() != '.' &&
         std::none_of(text.begin(), text.end(), isBad);
}

CLoggerPlace PlaceOfLogger(const CLoggerFolders& folders, const CString& name) {
  return {name, folders.run + "/" + name + "/feed"};
}

std::vector<CLoggerPlace> FindLoggers(const CLoggerFolders& folders, CString& fault) {
  Names names;
  AddFeeds(folders.run.Std(), names, fault);
  AddConfigurations(folders.etc.Std() + "/vastra", names, fault);
  AddUnits(folders.etc.Std() + "/systemd/system", names, fault);
  if (names.size() > kMostLoggers)
    fault =
        CString("there are more than " + std::to_string(kMostLoggers) + " loggers; the first ones are shown");
  std::vector<CLoggerPlace> places;
  for (const std::string& name : names)
    if (places.size() < kMostLoggers) places.push_back(PlaceOfLogger(folders, CString(name)));
  return places;
}

}  // namespace vastra
