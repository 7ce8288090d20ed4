// The bytes of a binary log: what is written, what comes back, and what is refused.
#include <gtest/gtest.h>

#include <random>

#include "tests/logfiles/example.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra {
namespace {

// What the reader makes of a log: its fault, or names and samples.
std::string Read(const std::string& bytes) {
  CSampleStore samples;
  CLogReader log(samples);
  CMemFile file(bytes);
  if (!log.Open(file) || !log.ReadSamples()) {
    EXPECT_TRUE(samples.IsEmpty());
    return log.GetFault().Std();
  }
  std::string text;
  CStringArray names;
  log.GetNames(names);
  EXPECT_TRUE(log.HasNames(names));
  for (const CString& name : names) text += name.Std() + " ";
  for (CLogSample sample; !samples.IsEmpty();) {
    samples.RemoveHead(sample);
    text += "| " + std::to_string(sample.m_time.time) + ":";
    for (const float value : sample.m_values) text += " " + std::to_string(value).substr(0, 5);
    text += " ";
  }
  return text;
}

const char* const kWhole = "Temp Flow | 1000000000: 1.500 -2.00 | 1000000060: 2.250 0.000 ";

struct CBytesCase {
  const char* text;  // of Read
  std::string bytes;
};

TEST(LogReader, TellsWhatIsWrongWithALogAndWhere) {
  const std::string big = Raw<std::uint16_t>(0xFFFF) + Raw<std::uint32_t>(0xFFFFFFFF);
  const CBytesCase kCases[] = {
      {kWhole, ExampleLog()},
      {"ends at byte 0 inside the start (from byte 0 on)", ""},
      {"ends at byte 3 inside the start (from byte 0 on)", ExampleLog().substr(0, 3)},
      {"is no log: it does not begin like one", "TimeStamp,Temp,\n"},
      {"ends at byte 86 inside the trailer (from byte 83 on)", ExampleLog().substr(0, 86)},
      {"ends at byte 50 inside the values of sample 2 (from byte 47 on)", ExampleLog().substr(0, 50)},
      {"has only 1 times for its 2 samples (byte 57)", Patched(57, 2, Raw<std::uint16_t>(1))},
      {"ends at byte 91 inside name 7 (from byte 45 on)", Patched(21, 2, big)},
      {"ends at byte 93 inside name 1 (from byte 23 on)", Patched(23, 1, "\xFF" + big)},
      {"ends at byte 87 inside the values of sample 6 (from byte 71 on)",
       Patched(33, 4, Raw<std::uint32_t>(0xFFFFFFFF))},
      {"ends at byte 91 inside the values of sample 1 (from byte 37 on)", Patched(37, 2, big)},
      {"ends at byte 91 inside the times (from byte 63 on)", Patched(57, 2, big)},
      {"ends at byte 91 inside the reserved text (from byte 20 on)",
       Patched(20, 1, "\xFF" + Raw<std::uint32_t>(~0u))},
  };
  for (const CBytesCase& bytes : kCases) EXPECT_EQ(bytes.text, Read(bytes.bytes));
}

TEST(LogReader, TakesWhatItsOwnWriterNeverWrites) {
  const CBytesCase kCases[] = {
      {kWhole, ExampleLog() + "behind the trailer"},
      {kWhole, Patched(4, 4, "abcd")},
      {kWhole, Patched(12, 8, "abcdefgh")},
      {kWhole, Patched(20, 1,
                       "\x05"
                       "words")},
      {kWhole, Patched(83, 4, "abcd")},
      {kWhole, Patched(57, 2, Raw<std::uint16_t>(0xFFFF) + Raw<std::uint32_t>(2))},
      {kWhole, Patched(37, 2, Raw<std::uint16_t>(0xFFFF) + Raw<std::uint32_t>(2))},
      {kWhole, ExampleLog().insert(83, 12, 't').replace(57, 2, Raw<std::uint16_t>(3))},
      {"Temp Flow | 1000000000: | 1000000060: 2.250 0.000 ", Patched(37, 10, Raw<std::uint16_t>(0))},
      {"Temp Flow ", Patched(33, 24, Raw<std::uint32_t>(0))},
      {"Temp Flow ", Patched(33, 50, Raw<std::uint32_t>(0) + Raw<std::uint16_t>(0))},
  };
  for (const CBytesCase& bytes : kCases) EXPECT_EQ(bytes.text, Read(bytes.bytes));
}

TEST(LogReader, RefusesALogCutAtAnyByte) {
  const std::string whole = ExampleLog();
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_EQ("ends at byte " + std::to_string(size),
              Read(whole.substr(0, size))
                  .substr(0, std::string("ends at byte ").size() + std::to_string(size).size()));
}

std::string Written(const CStringArray& names, const CSampleStore& samples) {
  CLogWriter writer;
  writer.SetNames(names);
  CMemFile file;
  writer.Write(file, samples);
  return file.Bytes();
}

// Logs at the edges of the encodings; what is read back is written again to the same bytes.
struct CShape {
  int samples, values;
  std::size_t nameSize;
  std::size_t fileSize;
};
constexpr CShape kShapes[] = {
    {1, 0, 0, 21 + 2 + 1 + 4 + 2 + 2 + 12 + 4},
    {3, 2, 254, 21 + 2 + 255 + 4 + 3 * 10 + 2 + 3 * 12 + 4},
    {3, 2, 255, 21 + 2 + 258 + 4 + 3 * 10 + 2 + 3 * 12 + 4},
    {1, 1, 0xFFFD, 21 + 2 + 3 + 0xFFFD + 4 + 6 + 2 + 12 + 4},
    {1, 1, 0xFFFE, 21 + 2 + 7 + 0xFFFE + 4 + 6 + 2 + 12 + 4},
    {65534, 0, 1, 21 + 2 + 2 + 4 + 65534 * 2 + 2 + 65534 * 12 + 4},
    {65535, 0, 1, 21 + 2 + 2 + 4 + 65535 * 2 + 6 + 65535 * 12 + 4},
    {2, 65534, 1, 21 + 2 + 2 + 4 + 2 * (2 + 65534 * 4) + 2 + 24 + 4},
    {2, 70000, 1, 21 + 2 + 2 + 4 + 2 * (6 + 70000 * 4) + 2 + 24 + 4},
};

TEST(LogWriter, WritesLogsOfEveryShapeThatReadBackTheSame) {
  for (const CShape& shape : kShapes) {
    CSampleStore samples;
    for (int i = 0; i < shape.samples; ++i) {
      CLogSample sample;
      sample.m_time = {i, static_cast<std::uint16_t>(i), -60, 1, 0xABCD};
      for (int v = 0; v < shape.values; ++v) sample.m_values.Add(static_cast<float>(i + v));
      samples.Append(sample);
    }
    CStringArray names;
    names.Add(CString(std::string(shape.nameSize, '\xE9')));
    const std::string bytes = Written(names, samples);
    EXPECT_EQ(shape.fileSize, bytes.size());
    CSampleStore read;
    CLogReader log(read);
    CMemFile file(bytes);
    ASSERT_TRUE(log.Open(file) && log.ReadSamples()) << log.GetFault();
    CStringArray back;
    log.GetNames(back);
    EXPECT_EQ(bytes, Written(back, read));
  }
}

// Small blocks bring the seams between them up at every turn.
TEST(SampleStore, GivesBackWhatWasAppendedWhateverTheBlocks) {
  std::mt19937 random(3);
  CSampleStore store(23);
  for (int round = 0; round < 20; ++round) {
    std::vector<CLogSample> kept;
    CSampleStore::CPlace place = store.GetHeadPlace();
    CSampleRecord record;
    std::size_t seen = 0;
    for (int i = 0; i < 100; ++i) {
      CLogSample sample;
      sample.m_time.time = i;
      for (auto v = random() % 9; v > 0; --v) sample.m_values.Add(static_cast<float>(v * random()));
      store.Append(sample);
      kept.push_back(sample);
      if (random() % 3) continue;
      for (; store.GetNext(place, record); ++seen) {
        ASSERT_EQ(kept[seen].m_time, record.m_time);
        ASSERT_EQ(kept[seen].m_values.GetSize(), static_cast<int>(record.m_count));
        for (int v = 0; v < kept[seen].m_values.GetSize(); ++v)
          ASSERT_EQ(kept[seen].m_values[v], record.Value(static_cast<std::uint32_t>(v)));
      }
      ASSERT_EQ(seen, kept.size());
    }
    store.RemoveAll();
  }
}

}  // namespace
}  // namespace vastra
