// CCatalogue: which logs are below some folders, and the journals of running loggers as the newest part of
// them. Rows (row_reader.h), buckets (buckets.h) and gaps are read from the logs that it lists.
//
//     CCatalogue catalogue;
//     catalogue.Add("/var/lib/vastra/kiln", true);
//     catalogue.Scan();
//     for (const CHistoryLog& log : catalogue.Logs()) ... log.path, log.fault ...
//
// One thread at a time uses a catalogue. Copies of its logs can be read on other threads meanwhile.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "vastra/history/history_log.h"

namespace vastra {

class CCatalogueFolder;
class CNamesPool;

class VASTRA_API CCatalogue {
 public:
  CCatalogue();
  CCatalogue(const CCatalogue&) = delete;
  CCatalogue& operator=(const CCatalogue&) = delete;
  ~CCatalogue();

  // Adds a log, a journal or a folder. A folder counts with its files that end in .rph or .rpd (letter case
  // ignored) and its journals; with isRecursive also with its subfolders, except those that are links. A file
  // that is named counts whatever its name is. A file that is found twice counts once.
  void Add(const CString& path, bool isRecursive);

  // Looks at the folders and reads the heads and times of logs that are new or have changed, and the new
  // samples of journals. A row that a logger has kept is in a journal or in a log at each moment, and a scan
  // lists it once. Logs that are removed while it looks are left out. Returns whether Logs has changed.
  bool Scan();

  // The logs of the last scan, in the order of the paths; in a folder first the logs by the bytes of their
  // names, then the journals, then the subfolders. A file that cannot be read as a log, a folder that cannot
  // be listed and a named file that is missing are in it with their fault. A journal has those samples alone
  // that its log does not have; one without any is left out, unless it was named.
  const std::vector<CHistoryLog>& Logs() const { return m_logs; }

 private:
  struct CPath {
    CString path;
    bool isRecursive;
  };
  struct CNamedFile;
  struct CFound;
  void ScanFolders(const CPath& top, CFound& found);
  void ScanFolder(CCatalogueFolder& folder, bool isRecursive, CFound& found);
  void ScanFile(const CString& path, CFound& found);
  void ScanJournals(CFound& found);

  std::vector<CPath> m_paths;
  std::unique_ptr<CNamesPool> m_pPool;
  std::map<CString, std::unique_ptr<CCatalogueFolder>> m_folders;  // by path without links
  std::map<CString, std::unique_ptr<CNamedFile>> m_files;          // by path
  std::vector<const CHistoryLog*> m_found;                         // of the last scan
  std::vector<CHistoryLog> m_logs;                                 // their copies
};

// The variables of the logs in range, each once, in the order in which they appear.
VASTRA_API std::vector<CString> NamesOf(const std::vector<CHistoryLog>& logs, const CMomentRange& range = {});

// The range from the first row of the logs to after the last one; {0, 0} without rows.
VASTRA_API CMomentRange RangeOf(const std::vector<CHistoryLog>& logs);

// A stretch without rows: from the moment of the row before it to that of the row after it, or to an end of
// the range.
struct CGap {
  CMoment from = 0;
  CMoment to = 0;

  bool operator==(const CGap&) const = default;
};

// The gaps in range that are longer than longerThan (milliseconds), in order. Reads the times of the logs,
// not their values. The ends of the range count as rows. A log that cannot be read any more has no rows.
// mayGoOn, if not empty, is called at least once for 16384 rows with the number of stretches between gaps of
// logs that are kept in memory, 16 bytes each; false from it ends the search, and the result is empty.
VASTRA_API std::vector<CGap> FindGaps(const std::vector<CHistoryLog>& logs, const CMomentRange& range,
                                      std::int64_t longerThan,
                                      const std::function<bool(std::size_t)>& mayGoOn = {});

}  // namespace vastra
