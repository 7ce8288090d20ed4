#include "vastra/logfiles/journal.h"

#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"
#include "vastra/logfiles/crc32c.h"

namespace vastra {
namespace {

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
  CString Path() const { return m_dir / JournalFile("0123456789abcdef", 1).Std().c_str(); }

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

TEST(Crc32c, IsThatOfOtherPrograms) {
  EXPECT_EQ(Crc32c("123456789", 9), 0xE3069283u);
  EXPECT_EQ(Crc32c("6789", 4, Crc32c("12345", 5)), 0xE3069283u);
  EXPECT_EQ(Crc32c(std::string(32, '\0').data(), 32), 0x8A9136AAu);
}

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
  std::string text;
};

class SmallJournal : public Journal {
 protected:
  SmallJournal() {
    CJournalWriter journal(Path(), Head());
    const auto step = [this](const std::string& text) {
      m_steps.push_back({ReadBytes(Path()).size(), "Kiln of Temp,Flow, after -:" + text + ", torn "});
    };
    step("; -");
    Append(journal, {{1, 2}});
    step(" 1/2; -");
    Append(journal, {{2, 0}});
    step(" 1/2 2/0; -");
    journal.Name("log", {kStart + 1}, 2);
    step(" 1/2 2/0; log@1x2");
    Append(journal, {{3, 1}});
    step(" 1/2 2/0 3/1; log@1x2");
    m_bytes = ReadBytes(Path());
  }
  // Reads bytes, which begin as the journal does: the result is the last step before the first difference.
  void Check(const std::string& bytes) const {
    const auto same = std::mismatch(bytes.begin(), bytes.end(), m_bytes.begin(), m_bytes.end()).first;
    std::string expected = "no head";
    for (const CStep& step : m_steps)
      if (step.size <= static_cast<std::size_t>(same - bytes.begin()))
        expected = step.text + std::to_string(bytes.size() - step.size);
    const std::string text = Read(bytes);
    EXPECT_EQ(text.starts_with("Kiln") ? text : "no head", expected) << "from " << same - bytes.begin();
  }

  std::vector<CStep> m_steps;
  std::string m_bytes;
};

TEST_F(SmallJournal, HasItsWholeRecordsWhereverItIsCutOrDamaged) {
  const std::size_t size = m_bytes.size();
  for (std::size_t cut = 0; cut <= size; ++cut)
    for (const std::size_t zeros : {std::size_t{0}, size - cut, std::size_t{4096}})
      Check(m_bytes.substr(0, cut) + std::string(zeros, '\0'));
  for (std::size_t bit = 0; bit < 8 * size; ++bit) {
    std::string flipped = m_bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    Check(flipped);
  }
}

}  // namespace
}  // namespace vastra
