// Shared by the tests of readers of a running logger.
#pragma once

#include "tests/history/history_fixture.h"
#include "vastra/logfiles/journal.h"

namespace vastra {

// A logger, step by step: samples go to the journal, the log gets them, the journal is removed. A catalogue
// that looks at any moment sees each sample that was kept, once. Sample i of x has the value i, at second i.
class CHandOver {
 public:
  explicit CHandOver(const CString& folder) : m_folder(folder) {}

  void Keep(int samples) {
    if (!m_pJournal) NewJournal();
    CSampleStore& store = StoreOf({});
    for (int i = 0; i < samples; ++i, ++m_kept) {
      _timeb time;
      time.time = m_kept;
      const auto value = static_cast<float>(m_kept);
      store.Append(time, reinterpret_cast<const char*>(&value), 1);
      m_log.Append(time, reinterpret_cast<const char*>(&value), 1);
    }
    CSampleSpans spans;
    CSampleStore::CPlace place = store.GetHeadPlace();
    store.AddSpans(place, spans);
    m_pJournal->Append(spans);
  }
  void Save() {
    const CString name = "log" + CString(std::to_string(m_number));
    m_pJournal->Name(name, m_log.GetHead().m_time, m_log.GetCount());
    const CString path = m_folder + "/" + name + ".rph";
    WriteBytes(path + ".part", Written(Names({"x"}), m_log));
    FileLayer().Rename(path + ".part", path, true);
  }
  void End() {
    m_pJournal->Remove();
    m_pJournal.reset();
    m_log.RemoveAll();
  }
  int Kept() const { return m_kept; }

 private:
  void NewJournal() {
    CJournalHead head;
    head.naming = {m_folder, "", "System Time", false, ".rph", true, false};
    head.varNames = Names({"x"});
    m_pJournal = std::make_unique<CJournalWriter>(
        m_folder + "/" +
            JournalFile("0123456789abcdef", kJournalsOfALog * static_cast<std::uint64_t>(++m_number)),
        head);
  }

  CString m_folder;
  std::unique_ptr<CJournalWriter> m_pJournal;
  CSampleStore m_log;
  int m_kept = 0, m_number = 0;
};

}  // namespace vastra
