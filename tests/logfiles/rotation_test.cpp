// The names of logs, and which logs are removed.
#include <cmath>

#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

class Rotation : public CLinkFixture {
 protected:
  // A file of an earlier run, written age seconds before this test.
  void Old(const char* name, int age) {
    WriteBytes(m_dir / name, "old");
    std::filesystem::last_write_time((m_dir / name).Std(), m_begun - std::chrono::seconds(age));
  }

  const std::filesystem::file_time_type m_begun = std::filesystem::file_time_type::clock::now();
};

TEST_F(Rotation, TheNamingSettingsMakeTheName) {
  const struct {
    const char* variable;
    int dwordName;
    const char* prefix;
    std::initializer_list<float> values;  // of a, b, a, c
    const char* files;
  } kNames[] = {
      {"b", 0, "", {1, -3.7f}, " -3.rph"},
      {"a", 1, "Kiln ", {-1, -2}, " Kiln -1-2.rph"},
      {"c", 1, "", {1, 2, 3, 4}, " 4.rph"},
      {"a", 0, "", {1, 2, 3, 4}, " 1.rph"},  // the first of two
      {"a", 0, "", {4294967295.0f}, " 0.rph"},
      {"a", 0, "", {NAN}, " 0.rph"},
      {"b", 0, "P", {1}, " PNoValue.rph"},  // the sample has no such value
      {"", 0, "P", {1}, " PNoValue.rph"},
      {"System Time", 1, "P", {1}, " P0301021400.rph"},
      {"a", 0, "inner/P", {7}, ""},
  };
  std::filesystem::create_directory((m_dir / "inner").Std());
  for (const auto& name : kNames) {
    NewLink();
    auto config = Writer(1);
    config->m_varNames = Names({"a", "b", "a", "c"});
    config->m_nameVariable = name.variable;
    config->m_dwordName = name.dwordName;
    config->m_prefix = name.prefix;
    config->m_usePrefix = 1;
    ASSERT_TRUE(Open(std::move(config)));
    EXPECT_TRUE(Write(0, name.values));
    EXPECT_EQ(Files(), name.files);
  }
  EXPECT_TRUE(FileExists(m_dir / "inner/P7.rph"));
}

TEST_F(Rotation, TheNumberContinuesWithinAnHourAndIsZeroForAnotherPrefix) {
  const auto write = [this](int usePrefix, std::int32_t time) {
    auto config = Writer(1);
    config->m_prefix = "P";
    config->m_usePrefix = usePrefix;
    Open(std::move(config));
    Write(time);
  };
  write(0, 0), write(0, 60), Write(3600), write(1, 3601), write(0, 3602);
  EXPECT_EQ(Files(), " 0301021400.rph 0301021401.rph 0301021500.rph P0301021500.rph");
  EXPECT_EQ(Times("0301021500.rph"), " 3602");
}

TEST_F(Rotation, TheHundredAndFirstLogOfAnHourReplacesTheFirstAndOutlivesItsOldEntry) {
  Open(Writer(1, 101));
  for (int i = 0; i < 101; ++i) Write(i);
  EXPECT_EQ(Times("0301021400.rph"), " 100");
  Write(101);  // replaces 01; the oldest entry, of the former 00, leaves the list
  EXPECT_EQ(Times("0301021400.rph"), " 100");
  EXPECT_EQ(ListFiles(m_dir.Path(), ".rph").GetSize(), 100);
}

TEST_F(Rotation, LogsOfEarlierRunsAreRemovedByAgeAfterTheNewLogIsWritten) {
  Old("c.RPH", 40), Old("a.rph", 30), Old("d.rph", 20), Old("b.rph", 20), Old("x.rpd", 90), Old("z.csv", 90);
  Open(Writer(1, 4));
  Write(0);
  EXPECT_EQ(Files(), " 0301021400.rph a.rph b.rph d.rph x.rpd z.csv");
  Write(1), Write(2);
  EXPECT_EQ(Files(), " 0301021400.rph 0301021401.rph 0301021402.rph d.rph x.rpd z.csv");
  Open(Writer(1, 0));
  Write(3);
  EXPECT_EQ(Files(), " x.rpd z.csv");
}

TEST_F(Rotation, TextCopiesHaveACountOfTheirOwnThatIncludesThoseOfSummaries) {
  Old("1d.csv", 30), Old("0h.csv", 20);
  auto config = Writer(1, 2);
  config->m_saveCsv = 1;
  Open(std::move(config));
  Write(0);
  EXPECT_EQ(Files(), " 0301021400.rph 0301021400h.csv 0h.csv");
}

TEST_F(Rotation, AnEntryThatCannotBeDeletedIsTriedOnce) {
  Old("a.rph", 20);
  Open(Writer(1, 1));
  DeleteFile(m_dir / "a.rph");
  std::filesystem::create_directory((m_dir / "a.rph").Std());
  EXPECT_TRUE(Write(0) && Write(1));
  EXPECT_EQ(Files(), " 0301021401.rph");
  EXPECT_TRUE(FileExists(m_dir / "a.rph"));
}

}  // namespace
}  // namespace vastra
