#include "vastra/logfiles/journal.h"

#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"
#include "tests/support/faulty_files.h"

namespace vastra {
namespace {

constexpr const char* kKey = "0123456789abcdef";

CJournalHead Head() {
  CJournalHead head;
  head.name = "Kiln";
  head.naming = {"logs", "", "System Time", false, ".rph", true, false};
  head.maxLogs = 400;
  head.maxSamples = 4000;
  head.varNames = Names({"Temp", "Flow"});
  return head;
}

std::string Text(const std::optional<CJournaledLog>& log) {
  if (!log) return "-";
  return log->name.Std() + "@" + std::to_string(log->first.time - kStart) + "x" +
         std::to_string(log->samples);
}

// What a journal contains, in one line: the head, the times of the samples, the last name, the torn bytes. Or
// the reader's fault.
std::string Text(const CJournalContent& content, const CSampleStore& samples) {
  if (!content.fault.IsEmpty()) return content.fault.Std();
  const CJournalHead& head = content.head;
  std::string text =
      head.name.Std() + " of " + Joined(head.varNames) + " after " + Text(head.continues) + ":";
  CSampleStore::CPlace place = samples.GetHeadPlace();
  for (CSampleRecord sample; samples.GetNext(place, sample);) {
    const std::int32_t time = sample.m_time.time - kStart;
    text += " " + std::to_string(time) + "/" + std::to_string(sample.m_count);
    for (std::uint32_t i = 0; i < sample.m_count; ++i)
      if (sample.Value(i) != static_cast<float>(time) + static_cast<float>(i)) text += "!";
  }
  return text + "; " + Text(content.named) + ", torn " + std::to_string(content.tornBytes);
}

std::string Read(const std::string& bytes) {
  CMemFile file(bytes);
  CJournalContent content;
  CSampleStore samples;
  ReadJournal(file, content, samples);
  return Text(content, samples);
}

CSampleSpans Spans(const CSampleStore& samples) {
  CSampleSpans spans;
  CSampleStore::CPlace place = samples.GetHeadPlace();
  samples.AddSpans(place, spans);
  return spans;
}

class Journal : public CLogFixture {
 protected:
  CString Path() const { return m_dir / JournalFile(kKey, 1); }

  // Appends a sample with that many values, at kStart + the first number.
  void Append(CJournalWriter& journal, std::initializer_list<std::pair<int, int>> samples) {
    m_samples.RemoveAll();
    for (const auto& [time, values] : samples) {
      CLogSample sample = Sample(kStart + time, {});
      for (int i = 0; i < values; ++i) sample.m_values.Add(static_cast<float>(time + i));
      m_samples.Append(sample);
    }
    journal.Append(Spans(m_samples));
  }

  CSampleStore m_samples{64};  // several blocks
};

TEST_F(Journal, ReadsBackWhatWasWritten) {
  CJournalHead head = Head();
  head.isSummary = true;
  head.naming = {"logs", "a-", "Items", true, ".rpd", true, true};
  head.retention = {1.5, std::uint64_t{1} << 40, 7};
  head.continues = {"03010214", {kStart + 5, 1, 2, 3, 4}, std::uint64_t{1} << 33};
  {
    CJournalWriter journal(Path(), head);
    Append(journal, {{1, 2}, {2, 0}, {3, 70000}, {4, 70000}});
    journal.Name("a", {kStart}, 1);
    journal.Append({});
    Append(journal, {{5, 2}});
    journal.Name("b", {kStart + 9}, 6);
  }
  CJournalContent content;
  CSampleStore samples;
  EXPECT_EQ(ReadJournal(Path(), content, samples), 1);
  EXPECT_EQ(Text(content, samples),
            "Kiln of Temp,Flow, after 03010214@5x8589934592: 1/2 2/0 3/70000 4/70000 5/2; b@9x6, torn 0");
  std::string back;
  PutJournalHead(back, content.head);
  EXPECT_EQ(back, ReadBytes(Path()).substr(sizeof(CJournalStart), back.size()));
}

// A journal after each of its writes: the bytes, and what they contain, without the torn bytes.
struct CStep {
  std::size_t size;
  std::string samples, named;

  std::string Text(const std::string& more, std::size_t torn) const {
    return "Kiln of Temp,Flow, after -:" + samples + more + "; " + named + ", torn " + std::to_string(torn);
  }
};

class SmallJournal : public Journal {
 protected:
  SmallJournal() {
    CJournalWriter journal(Path(), Head());
    const auto step = [this](const char* samples, const char* named) {
      m_steps.push_back({ReadBytes(Path()).size(), samples, named});
    };
    step("", "-");
    Append(journal, {{1, 2}});
    step(" 1/2", "-");
    Append(journal, {{2, 0}});
    step(" 1/2 2/0", "-");
    journal.Name("log", {kStart + 1}, 2);
    step(" 1/2 2/0", "log@1x2");
    Append(journal, {{3, 1}});
    step(" 1/2 2/0 3/1", "log@1x2");
    m_bytes = ReadBytes(Path());
  }
  // The last step before the first difference between bytes and the journal; null: its head is damaged.
  const CStep* StepOf(const std::string& bytes) const {
    const auto same = std::mismatch(bytes.begin(), bytes.end(), m_bytes.begin(), m_bytes.end()).first;
    const CStep* last = nullptr;
    for (const CStep& step : m_steps)
      if (step.size <= static_cast<std::size_t>(same - bytes.begin())) last = &step;
    return last;
  }
  void CheckRead(const std::string& bytes) const {
    const CStep* step = StepOf(bytes);
    const std::string text = Read(bytes);
    EXPECT_EQ(text.starts_with("Kiln") ? text : "fault",
              step ? step->Text("", bytes.size() - step->size) : "fault");
  }
  // A process continues the journal, and another one reads it.
  void CheckContinued(const std::string& bytes) {
    const CStep* step = StepOf(bytes);
    WriteBytes(Path(), bytes);
    CJournalContent content;
    CSampleStore samples;
    CJournalWriter journal(Path(), content, samples);
    EXPECT_EQ(content.fault.IsEmpty(), step != nullptr);
    if (step) Append(journal, {{9, 1}});
    EXPECT_EQ(step ? Read(ReadBytes(Path())) : ReadBytes(Path()), step ? step->Text(" 9/1", 0) : bytes);
  }

  std::vector<CStep> m_steps;
  std::string m_bytes;
};

TEST_F(SmallJournal, HasItsWholeRecordsWhereverItIsCutOrDamaged) {
  const std::size_t size = m_bytes.size();
  for (std::size_t cut = 0; cut <= size; ++cut)
    for (const std::size_t zeros : {std::size_t{0}, size - cut, std::size_t{4096}}) {
      CheckRead(m_bytes.substr(0, cut) + std::string(zeros, '\0'));
      CheckContinued(m_bytes.substr(0, cut) + std::string(zeros, '\0'));
    }
  for (std::size_t bit = 0; bit < 8 * size; ++bit) {
    std::string flipped = m_bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    CheckRead(flipped);
  }
}

// The error of a call, 0 if it succeeds.
int ErrorOf(const std::function<void()>& call) {
  try {
    call();
    return 0;
  } catch (const CFileException& fault) {
    return fault.m_error;
  }
}

TEST_F(Journal, AFailedWriteLeavesNothingAndTheNextOneSucceeds) {
  const struct {
    std::uint64_t write;  // of the append, that fails
    std::size_t part;     // its bytes that are written
    int truncate;         // the error of the cut after it
  } kCases[] = {{1, 0, 0}, {1, 10, 0}, {2, 0, 0}, {2, 10, EIO}};
  for (const auto& fault : kCases) {
    CFaultyFiles files(m_dir.Path());
    CJournalWriter journal(Path(), Head());
    Append(journal, {{1, 2}});
    files.Add({callWrite, files.Count(callWrite) + fault.write, ENOSPC, true, fault.part});
    files.Add({callTruncate, 1, fault.truncate});
    EXPECT_EQ(ErrorOf([&] { Append(journal, {{2, 70000}, {3, 70000}, {4, 1}}); }), ENOSPC);
    const std::string left = Read(ReadBytes(Path()));
    EXPECT_EQ(fault.truncate ? "torn" : left,
              fault.truncate ? "torn" : "Kiln of Temp,Flow, after -: 1/2; -, torn 0");
    files.RemoveFaults();
    Append(journal, {{5, 1}});
    EXPECT_EQ(Read(ReadBytes(Path())), "Kiln of Temp,Flow, after -: 1/2 5/1; -, torn 0");
    journal.Remove();
  }
}

TEST_F(Journal, ASyncedNameOutlivesAPowerCutAndAFailedSyncIsNeverForgotten) {
  CFaultyFiles files(m_dir.Path());
  CJournalWriter journal(Path(), Head());
  files.Add({callSync, 1, 0, false, 0, [&] { Append(journal, {{1, 1}}); }});  // while it is being synced
  journal.Name("log", {kStart}, 1), journal.Sync();
  for (int cut = cutNothing; cut < cutKinds; ++cut) {
    const CTempDir after;
    files.CutPower(static_cast<EPowerCut>(cut), after.Path());
    EXPECT_EQ(Read(ReadBytes(after / JournalFile(kKey, 1))),
              "Kiln of Temp,Flow, after -: 1/1; log@0x1, torn 0");
  }
  files.Add({callSync, files.Count(callSync) + 1, EIO});
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ErrorOf([&] { journal.Sync(); }), EIO);
}

TEST_F(Journal, IsOfOneProcessAndStaysInItsFolder) {
  CFaultyFiles files(m_dir.Path());
  files.Add({callWrite, 1, ENOSPC});
  EXPECT_EQ(ErrorOf([&] { CJournalWriter(Path(), Head()); }), ENOSPC);
  EXPECT_EQ(Files(), "");
  files.Add({callLock, 2, 0, false, 0, [&] { DeleteFile(Path()); }});  // by the recovery of another process
  CJournalWriter journal(Path(), Head());
  CJournalContent content;
  EXPECT_EQ(ErrorOf([&] { CJournalWriter(Path(), Head()); }), EEXIST);
  EXPECT_EQ(ErrorOf([&] { CJournalWriter(Path(), content, m_samples); }), EWOULDBLOCK);
  EXPECT_EQ(ErrorOf([&] { journal.Sync(); }), 0);
  DeleteFile(Path());
  EXPECT_EQ(ErrorOf([&] { journal.Sync(); }), ENOENT);
  for (int i = 0; i < 2; ++i) journal.Remove();
  EXPECT_EQ(ErrorOf([&] { Append(journal, {{1, 1}}), journal.Name("", {}, 1), journal.Sync(); }), 0);
}

TEST_F(Journal, HasTheBytesOfItsWorkedExample) {
  CJournalHead head;
  head.name = "o";
  head.naming = {"d", "", "System Time", false, ".rph", true, false};
  head.maxLogs = 400;
  head.maxSamples = 4000;
  head.varNames.Add("x");
  CLogSample sample = Sample(1000000000, {1.5f});
  sample.m_time.millitm = 250;
  sample.m_time.timezone = -60;
  CSampleStore samples;
  samples.Append(sample);
  CJournalWriter journal(Path(), head);
  journal.Append(Spans(samples));
  journal.Name("0109090200", sample.m_time, 1);
  EXPECT_EQ(ReadBytes(Path()), ExampleBytes("### A worked example of a journal", "## Selections"));
}

TEST_F(Journal, ListsTheJournalsOfAFolderInOrder) {
  for (const char* name :
       {".vastra-00000000000000ab-10.journal", ".vastra-00000000000000ab-9.journal",
        ".vastra-000000000000000a-18446744073709551615.journal",
        ".vastra-000000000000000a-18446744073709551616.journal", ".vastra-000000000000000a-01.journal",
        ".vastra-000000000000000a-.journal", ".vastra-000000000000000a-1.Journal",
        ".vastra-000000000000000g-1.journal", ".vastra-000000000000000a_1.journal",
        ".vastra-000000000000000a.journal", "vastra-000000000000000a-1.journal", ".vastra-.journal"})
    WriteBytes(m_dir / name, "");
  std::string all;
  for (const CJournalEntry& journal : ListJournals(m_dir.Path()))
    all += " " + journal.key.Std().substr(14) + "-" + std::to_string(journal.number);
  EXPECT_EQ(all, " 0a-18446744073709551615 ab-9 ab-10");
}

}  // namespace
}  // namespace vastra
