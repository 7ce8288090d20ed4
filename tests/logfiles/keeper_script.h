// CScript: a run that writes rows to logs of several kinds through a keeper. ReadLogs reads what the folder
// has of them, and checks the files. Row n is the same sample in each run.
#pragma once

#include <map>
#include <sstream>
#include <thread>

#include "tests/logfiles/link_fixture.h"
#include "vastra/logfiles/journal_reader.h"
#include "vastra/logfiles/log_keeper.h"
#include "vastra/logfiles/whole_log.h"

namespace vastra {

struct CScriptLog {
  const char *prefix, *nameVariable, *extension;
  bool saveRp, saveCsv;
  UINT maxSamples = 1000, maxLogs = 1000;

  bool IsSummary() const { return CString(extension) == ".rpd"; }
  CLogNaming Naming(const CString& folder) const {
    return {folder, prefix, nameVariable, false, extension, saveRp, saveCsv};
  }
};
using CScriptLogs = std::vector<CScriptLog>;

constexpr std::size_t kRotated = 3;
inline const CScriptLogs kEachKind = {{"b", "System Time", ".rph", true, false, 4},
                                      {"v", "Batch", ".rph", true, true, 3},
                                      {"t", "System Time", ".rph", false, true, 3},
                                      {"r", "System Time", ".rph", true, false, 2, 2},
                                      {"a", "System Time", ".rpd", true, true}};

using CRows = std::vector<int>;
using CRowsOfLogs = std::vector<CRows>;  // in the order of the script's logs

inline CLogPolicy ScriptPolicy() {
  CLogPolicy policy;
  policy.sync = std::chrono::milliseconds(0);
  policy.retry = std::chrono::milliseconds(3);
  policy.journal = std::chrono::milliseconds(1);
  policy.closeWithin = std::chrono::minutes(5);  // a test that waits so long has failed
  return policy;
}

class CScript {
 public:
  explicit CScript(const CString& folder, const CLogPolicy& policy = ScriptPolicy(),
                   const CScriptLogs& logs = kEachKind)
      : m_folder(folder), m_logs(logs), m_keeper(policy), m_links(logs.size()) {
    m_isOpen = Open();
  }
  ~CScript() { Close(); }

  // Opens the logs that are not open. False if one of them cannot be opened.
  bool Open() {
    bool areOpen = true;
    for (std::size_t i = 0; i < m_logs.size(); ++i)
      if (!m_links[i] && !OpenLink(i)) m_links[i].reset(), areOpen = false;
    return areOpen;
  }
  bool IsOpen() const { return m_isOpen; }  // all, at the first time
  void Write(int row, std::int32_t time, int values = 2) {
    CLogSample sample;
    sample.m_time.time = time;
    for (int i = 0; i + 1 < values; ++i) sample.m_values.Add(static_cast<float>(row / 5));
    sample.m_values.Add(static_cast<float>(row));
    for (std::size_t i = 0; i < m_logs.size(); ++i)
      if (m_links[i]) {
        EXPECT_EQ(m_links[i]->Write(sample), 1);
        EXPECT_TRUE(!m_logs[i].IsSummary() || m_links[i]->PartialFlush());
      }
  }
  void Write(int row) { Write(row, kStart + row); }
  // Waits until no row is in memory only. False if that takes longer than patience.
  bool Settle(std::chrono::milliseconds patience) const {
    for (const auto end = std::chrono::steady_clock::now() + patience;;) {
      const std::vector<CLogLedger> all = Ledgers();
      if (std::none_of(all.begin(), all.end(), [](const CLogLedger& ledger) { return ledger.inMemory > 0; }))
        return true;
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  }
  void Close() {
    for (const auto& link : m_links)
      if (link) link->Close();
  }
  // Those of a log that is not open are empty.
  std::vector<CLogLedger> Ledgers() const {
    std::vector<CLogLedger> ledgers;
    for (const auto& link : m_links) {
      CLogLedger ledger = link ? link->GetLedger() : CLogLedger();
      ledger.offered = ledger.taken;  // a count of the stages
      EXPECT_TRUE(ledger.IsBalanced())
          << ledger.taken << " + " << ledger.recovered << " = " << ledger.onDisk << " + " << ledger.inJournal
          << " + " << ledger.inMemory << " + " << ledger.lost;
      ledgers.push_back(ledger);
    }
    return ledgers;
  }

 private:
  bool OpenLink(std::size_t i) {
    const CScriptLog& log = m_logs[i];
    auto config = std::make_unique<CFileConfig>();
    config->m_extension = log.extension;
    config->m_maxSamples = log.maxSamples;
    config->m_maxLogs = log.maxLogs;
    config->m_saveRp = log.saveRp;
    config->m_saveCsv = log.saveCsv;
    config->m_directory = m_folder;
    config->m_varNames = Names({"Batch", "Row"});
    config->m_nameVariable = log.nameVariable;
    config->m_prefix = log.prefix;
    config->m_usePrefix = 1;
    m_links[i].reset(CFileLink::Create(nullptr));
    m_links[i]->SetLogKeeper(&m_keeper, log.IsSummary());
    CLinkConfigList configs;
    configs.AddHead(config.release());
    return m_links[i]->Open(configs, CLink::modeWrite);
  }

  const CString m_folder;
  const CScriptLogs m_logs;
  CLogKeeper m_keeper;
  bool m_isOpen = false;
  std::vector<std::unique_ptr<CFileLink>> m_links;
};

inline void AddRows(const CSampleStore& samples, CRows& rows) {
  CSampleStore::CPlace place = samples.GetHeadPlace();
  double last = -1e12;
  for (CSampleRecord sample; samples.GetNext(place, sample);) {
    rows.push_back(static_cast<int>(sample.Value(sample.m_count - 1)));
    EXPECT_GE(sample.m_time.time, last - 1) << "row " << rows.back() << ": the clock goes back in a log";
    last = sample.m_time.time;
  }
}

inline CRows RowsOf(const CString& path, ELogForm form) {
  CRows rows;
  if (form == ELogForm::binary) {
    CSampleStore samples;
    CLogReader log(samples);
    EXPECT_TRUE(log.Open(path) && log.ReadSamples()) << path.Std() << " " << log.GetFault().Std();
    AddRows(samples, rows);
    return rows;
  }
  std::istringstream lines(ReadBytes(path));
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "TimeStamp,Batch,Row,") << path.Std();
  while (std::getline(lines, line))
    rows.push_back(std::stoi(line.substr(line.rfind(',', line.size() - 2) + 1)));
  return rows;
}

// The rows that the logs in folder have. Each file under a log's name must be whole, and no row may be in two
// of them. isClosed: after a run that has saved all, binary logs and their text copies are the same, and no
// journal or temporary file is left. mayLackText: text copies can be missing.
inline CRowsOfLogs ReadLogs(const CString& folder, bool isClosed, const CScriptLogs& logs = kEachKind,
                            bool mayLackText = false) {
  CRowsOfLogs all;
  const CArray<CFileEntry> files = ListFiles(folder, "");
  for (const CFileEntry& file : files) {
    const auto isOwn = [&](const CScriptLog& log) { return log.Naming("").IsOwnFile(file.m_name); };
    EXPECT_TRUE(!isClosed || file.m_name.Std().ends_with(".lock") ||
                std::any_of(logs.begin(), logs.end(), isOwn))
        << file.m_name.Std() << " is left";
  }
  for (const CScriptLog& log : logs) {
    const CLogNaming naming = log.Naming(folder);
    std::map<std::string, CRows> forms[2];
    std::vector<CRows> ofFiles;
    for (const CFileEntry& file : files)
      if (const auto own = naming.IsOwnFile(file.m_name); own && naming.Saves(own->form)) {
        const CString path = JoinPath(folder, file.m_name);
        EXPECT_TRUE(IsWholeLog(path, own->form)) << path.Std();
        const CRows found = RowsOf(path, own->form);
        forms[static_cast<int>(own->form)][own->name.Std()] = found;
        if (!log.saveRp || own->form == ELogForm::binary) ofFiles.push_back(found);
      }
    if (isClosed && log.saveRp && log.saveCsv) {
      if (mayLackText)
        std::erase_if(forms[0], [&](const auto& one) { return forms[1].count(one.first) == 0; });
      EXPECT_EQ(forms[0], forms[1]) << log.prefix << ": the text copies differ";
    }
    std::sort(ofFiles.begin(), ofFiles.end());
    CRows rows;
    for (const CRows& part : ofFiles) rows.insert(rows.end(), part.begin(), part.end());
    EXPECT_EQ(std::adjacent_find(rows.begin(), rows.end(), std::greater_equal<>()), rows.end())
        << log.prefix << ": a row is there twice, or not in order";
    all.push_back(rows);
  }
  return all;
}

// Adds the rows of the journals in folder.
inline void AddJournals(const CString& folder, CRowsOfLogs& all) {
  for (const CJournalEntry& entry : ListJournals(folder)) {
    CJournalContent content;
    CSampleStore samples;
    if (!ReadJournal(JoinPath(folder, JournalFile(entry.key, entry.number)), content, samples)) continue;
    for (std::size_t i = 0; i < kEachKind.size(); ++i)
      if (content.head.naming.prefix == kEachKind[i].prefix) AddRows(samples, all[i]);
  }
}

}  // namespace vastra
