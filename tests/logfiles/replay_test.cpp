#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

class Replay : public CLinkFixture {
 protected:
  void Log(const char* name, std::initializer_list<std::int32_t> times,
           std::initializer_list<const char*> names = {"Temp"}) {
    CSampleStore samples;
    for (const std::int32_t time : times) samples.Append(Sample(time, {1}));
    WriteBytes(m_dir / name, Written(Names(names), samples));
  }

  int Play(std::initializer_list<const char*> names) {
    auto config = std::make_unique<CFileConfig>();
    for (const char* name : names) config->m_files.AddTail(m_dir / name);
    m_recorder.Take();
    return Open(std::move(config), CLink::modeRead);
  }

  // The times up to the first Read that returns 0, each with the index of its log, and whether it is the end.
  std::string Played() {
    std::string played;
    for (CLogSample sample; m_link->Read(sample);)
      played += " " + std::to_string(sample.m_time.time) + "/" + std::to_string(m_link->GetCurrentFile()) +
                (m_link->Finished() ? "!" : "");
    return played + (m_link->Finished() ? " end" : "");
  }
};

TEST_F(Replay, PlaysLogsInTheOrderOfTheirFirstTimesAndEveryReadAtTheEndReportsIt) {
  Log("a", {10, 40}), Log("b", {20}), Log("c", {30}), Log("early", {-5}), Log("also10", {10, 11});
  WriteBytes(m_dir / "text", "TimeStamp,Temp,\n");
  ASSERT_TRUE(Play({"c", "text", "a", "b", "also10", "early"}));
  EXPECT_EQ(m_link->GetTotalFiles(), 5u);
  EXPECT_EQ(Played(), " -5/0 10/1 40/1 10/2 11/2 20/3 30/4 end");
  for (int i = 0; i < 2; ++i) {
    m_recorder.Take();
    EXPECT_EQ(Played(), " end");
    EXPECT_EQ(m_recorder.Take(),
              "Read Begin F\nRead Notice F Reached end of file\nFlush Begin F\n"
              "Flush Warning F File list finished.\nRead End F\n");
  }
  CStringArray names;
  EXPECT_TRUE(m_link->GetVarNames(names));
  EXPECT_EQ(names, Names({"Temp"}));
  m_link->Close();
  EXPECT_EQ(m_link->GetTotalFiles() + m_link->GetCurrentFile(), 0u);
  EXPECT_EQ(m_link->Finished(), 0);
}

TEST_F(Replay, OpenFailsForAFileThatCannotBeReadAndSkipsOneThatIsNotALog) {
  const std::string log = ExampleLog();
  const std::pair<std::string, int> kCases[] = {
      {"", 0}, {"abc", 0}, {log.substr(0, 11), 0}, {log.substr(0, 12), 1}, {"abcd", 1}};
  Log("good", {1});
  for (const auto& [bytes, opens] : kCases) {
    WriteBytes(m_dir / "other", bytes);
    EXPECT_EQ(Play({"good", "other"}), opens) << bytes.size();
    EXPECT_EQ(m_recorder.TakeFaults(), opens ? "" : "Open Fatal F Couldn't read file.\n");
  }
  for (const auto& list :
       {std::initializer_list<const char*>{}, {"missing"}, {"good", "missing"}, {"."}, {"other"}})
    EXPECT_FALSE(Play(list));
}

TEST_F(Replay, ALogThatCannotBeReadFailsOneReadAndOneWithoutSamplesNone) {
  const std::string end = "Read Notice F Reached end of file\n";
  const std::string unreadable = end + "Flush Error F Couldn't open file.\n";
  const std::string others =
      end + "Flush Error F Archive with different variables\nFlush Error F Couldn't open file.\n";
  const std::pair<const char*, std::string> kCases[] = {
      {"cut", unreadable}, {"gone", unreadable}, {"other", others}, {"more", others}, {"othercut", others}};
  Log("first", {1}), Log("last", {4}), Log("cut", {2, 3});
  Log("other", {2}, {"temp"}), Log("more", {2}, {"Temp", "Flow"});
  WriteBytes(m_dir / "cut", Bytes("cut").substr(0, Bytes("cut").size() - 1));
  WriteBytes(m_dir / "othercut", Bytes("other").substr(0, 40));
  WriteBytes(m_dir / "empty", Bytes("last").substr(0, 28) + std::string(10, 0));
  for (const auto& [name, lines] : kCases) {
    Log("gone", {2});
    ASSERT_TRUE(Play({"first", name, "last"})) << name;
    DeleteFile(m_dir / "gone");
    EXPECT_EQ(Played(), " 1/0");
    EXPECT_EQ(m_recorder.TakeFaults(), lines) << name;
    EXPECT_EQ(Played(), " 4/2 end");
  }
  ASSERT_TRUE(Play({"first", "empty", "last"}));
  EXPECT_EQ(Played(), " 1/0 4/2 end");
  EXPECT_EQ(m_recorder.TakeFaults(), end + end + end + "Flush Warning F File list finished.\n");
}

TEST_F(Replay, FlushContinuesWithTheNextLogAndNothingCanBeWritten) {
  Log("a", {1, 2}), Log("b", {3});
  Play({"a", "b"});
  EXPECT_FALSE(Write(5) || m_link->PartialFlush());
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Write Error F Invalid operation.\nPartialFlush Error F Invalid operation.\n");
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ(Played(), " 3/1 end");
}

}  // namespace
}  // namespace vastra
