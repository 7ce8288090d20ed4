// The file link as a replay: the order of its logs, its progress, and logs that cannot be read.
#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra {
namespace {

class Replay : public CLinkFixture {
 protected:
  // Makes a log with one value for each time.
  void Log(const char* name, std::initializer_list<std::int32_t> times,
           std::initializer_list<const char*> names = {"Temp"}) {
    CSampleStore samples;
    for (const std::int32_t time : times) samples.Append(Sample(time, {static_cast<float>(time)}));
    CLogWriter writer;
    writer.SetNames(Names(names));
    CFile file(m_dir / name, CFile::modeWrite | CFile::modeCreate);
    writer.Write(file, samples);
  }

  int Play(std::initializer_list<const char*> names) {
    auto config = std::make_unique<CFileConfig>();
    for (const char* name : names) config->m_files.AddTail(m_dir / name);
    return Open(std::move(config), CLink::modeRead);
  }

  // The times up to the first Read that gives 0.
  std::string Times() {
    std::string times;
    for (CLogSample sample; m_link->Read(sample);) times += " " + std::to_string(sample.m_time.time);
    return times;
  }
};

TEST_F(Replay, LogsPlayInTheOrderOfTheirFirstTimes) {
  Log("a", {10, 40}), Log("b", {20}), Log("c", {30}), Log("early", {-5}), Log("also10", {10, 11});
  WriteBytes(m_dir / "text", "TimeStamp,Temp,\n");
  ASSERT_TRUE(Play({"c", "text", "a", "b", "also10", "early"}));
  EXPECT_EQ(5u, m_link->GetTotalFiles());
  EXPECT_EQ(" -5 10 40 10 11 20 30", Times());
}

TEST_F(Replay, ProgressCountsTheLogsBegunBehindTheFirst) {
  Log("a", {1, 2}), Log("b", {3}), Log("c", {4});
  Play({"a", "b", "c"});
  std::string progress;
  CLogSample sample;
  for (int i = 0; i < 6; ++i) {
    progress += std::to_string(m_link->GetCurrentFile()) + "/" + std::to_string(m_link->Finished()) + " ";
    m_link->Read(sample);
  }
  EXPECT_EQ("0/0 0/0 0/0 1/0 2/0 2/1 ", progress);
  CStringArray names;
  EXPECT_TRUE(m_link->GetVarNames(names) && names == Names({"Temp"}));
  m_link->Close();
  EXPECT_EQ(0u, m_link->GetTotalFiles() + m_link->GetCurrentFile());
  EXPECT_EQ(0, m_link->Finished());
}

TEST_F(Replay, EveryReadAtTheEndSaysSo) {
  Log("a", {1});
  Play({"a"});
  CLogSample sample;
  m_link->Read(sample);
  for (int i = 0; i < 2; ++i) {
    m_recorder.Take();
    EXPECT_FALSE(m_link->Read(sample));
    EXPECT_EQ(
        "Read Begin F\nRead Notice F Reached end of file\nFlush Begin F\nFlush Warning F File list "
        "finished.\nRead End F\n",
        m_recorder.Take());
  }
}

TEST_F(Replay, ASampleComesBackByteForByte) {
  WriteBytes(m_dir / "a", Patched(69, 2, "\xCD\xAB"));
  Play({"a"});
  CLogSample sample = Sample(0, {9, 9, 9});
  ASSERT_TRUE(m_link->Read(sample));
  EXPECT_EQ((_timeb{1000000000, 250, -60, 0, 0xABCD}), sample.m_time);
  EXPECT_EQ(Sample(0, {1.5f, -2.0f}).m_values, sample.m_values);
}

struct COpenCase {
  const char* text;
  std::string bytes;  // of a file beside a good one
  int opens;
};

TEST_F(Replay, AFileThatIsTooShortToTellEndsOpenAndOneThatIsNoLogDoesNot) {
  const std::string log = ExampleLog();
  const COpenCase kCases[] = {
      {"empty", "", 0},
      {"three bytes", "abc", 0},
      {"no log", "abcd", 1},
      {"cut in its first time", log.substr(0, 11), 0},
      {"cut behind it", log.substr(0, 12), 1},
  };
  Log("good", {1});
  for (const COpenCase& open : kCases) {
    WriteBytes(m_dir / "other", open.bytes);
    m_recorder.Take();
    EXPECT_EQ(open.opens, Play({"good", "other"})) << open.text;
    EXPECT_EQ(open.opens ? "" : "Open Fatal F Couldn't read file.\n", m_recorder.TakeFaults()) << open.text;
    m_link->Close();
  }
  for (const auto& list : {std::initializer_list<const char*>{}, {"missing"}, {"good", "missing"}, {"."}})
    EXPECT_FALSE(Play(list));
  WriteBytes(m_dir / "other", "abcd");
  EXPECT_FALSE(Play({"other"}));
}

TEST_F(Replay, AFirstLogCutAnywhereEndsOpen) {
  const std::string log = ExampleLog();
  for (std::size_t size = 0; size <= log.size(); ++size) {
    WriteBytes(m_dir / "a", log.substr(0, size));
    m_recorder.Take();
    EXPECT_EQ(size == log.size(), Play({"a"})) << size;
    EXPECT_EQ(size == log.size() ? "" : "Open Fatal F Couldn't read file.\n", m_recorder.TakeFaults());
    CLogSample sample;
    EXPECT_EQ(size == log.size(), m_link->Read(sample));
    m_link->Close();
  }
}

TEST_F(Replay, ALaterLogThatCannotBeReadUsesUpOneRead) {
  const std::string unreadable = "Read Notice F Reached end of file\nFlush Error F Couldn't open file.\n";
  const std::string others =
      "Read Notice F Reached end of file\nFlush Error F Archive with different variables\n"
      "Flush Error F Couldn't open file.\n";
  Log("other", {2}, {"temp"}), Log("more", {2}, {"Temp", "Flow"}), Log("cut", {2, 3}), Log("gone", {2});
  WriteBytes(m_dir / "cut", Bytes("cut").substr(0, Bytes("cut").size() - 1));
  WriteBytes(m_dir / "othercut", Bytes("other").substr(0, 40));
  const std::pair<const char*, std::string> kCases[] = {
      {"cut", unreadable}, {"gone", unreadable}, {"other", others}, {"more", others}, {"othercut", others}};
  Log("first", {1}), Log("last", {4});
  for (const auto& [name, lines] : kCases) {
    ASSERT_TRUE(Play({"first", name, "last"})) << name;
    if (std::string(name) == "gone") DeleteFile(m_dir / name);
    m_recorder.Take();
    EXPECT_EQ(" 1", Times());
    EXPECT_EQ(lines, m_recorder.TakeFaults()) << name;
    EXPECT_EQ(0, m_link->Finished());
    EXPECT_EQ(1u, m_link->GetCurrentFile());
    EXPECT_EQ(" 4", Times());
    EXPECT_EQ(1, m_link->Finished());
  }
}

TEST_F(Replay, ALogWithoutSamplesIsPassedOver) {
  Log("a", {1}), Log("b", {3}), Log("end", {4});
  const std::string empty = Raw<std::uint32_t>(0x2C0F0781) + std::string(4, 0) + Raw<std::int32_t>(2) +
                            std::string(9, 0) + Raw<std::uint16_t>(1) + "\4Temp" + std::string(10, 0);
  WriteBytes(m_dir / "empty", empty);
  ASSERT_TRUE(Play({"a", "empty", "b"}));
  EXPECT_EQ(" 1 3", Times());
  EXPECT_EQ(2u, m_link->GetCurrentFile());
  ASSERT_TRUE(Play({"empty", "b"}));
  EXPECT_EQ(" 3", Times());
}

TEST_F(Replay, FlushGoesOnToTheNextLogAndNothingCanBeWritten) {
  Log("a", {1, 2}), Log("b", {3});
  Play({"a", "b"});
  float value = 0;
  m_recorder.Take();
  EXPECT_FALSE(Write(5));
  EXPECT_FALSE(m_link->PartialFlush());
  EXPECT_EQ("Write Error F Invalid operation.\nPartialFlush Error F Invalid operation.\n",
            m_recorder.TakeFaults());
  EXPECT_FALSE(m_link->ReadVariable(0, value) || m_link->WriteVariable(0, value));
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ(" 3", Times());
}

}  // namespace
}  // namespace vastra
