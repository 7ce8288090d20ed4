// What logs are called, and which of them go.
#include <cmath>
#include <functional>

#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

class Rotation : public CLinkFixture {
 protected:
  // Opens a writer of logs of one sample each.
  int OpenSingles(
      UINT maxLogs, const std::function<void(CFileConfig&)>& change = [](CFileConfig&) {}) {
    auto config = Writer();
    config->m_maxSamples = 1;
    config->m_maxLogs = maxLogs;
    change(*config);
    return Open(std::move(config));
  }

  // A file of an earlier run, written age seconds before this test.
  void Old(const char* name, int age) {
    WriteBytes(m_dir / name, "old");
    std::filesystem::last_write_time((m_dir / name).Std(), m_begun - std::chrono::seconds(age));
  }

  const std::filesystem::file_time_type m_begun = std::filesystem::file_time_type::clock::now();
};

struct CNameCase {
  const char* variable;
  int dwordName;
  const char* prefix;
  std::initializer_list<float> values;  // of a, b, a, c
  const char* files;
};
const CNameCase kNames[] = {
    {"b", 0, "", {1, -3.7f}, " -3.rph"},
    {"a", 1, "", {12.9f, 345}, " 12345.rph"},
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

TEST_F(Rotation, TheNamingSettingsMakeTheName) {
  std::filesystem::create_directory((m_dir / "inner").Std());
  for (const CNameCase& name : kNames) {
    ASSERT_TRUE(OpenSingles(10, [&](CFileConfig& config) {
      config.m_varNames = Names({"a", "b", "a", "c"});
      config.m_nameVariable = name.variable;
      config.m_dwordName = name.dwordName;
      config.m_prefix = name.prefix;
      config.m_usePrefix = 1;
    }));
    EXPECT_TRUE(Write(kStart, name.values));
    EXPECT_EQ(name.files, Files());
    for (const CFileEntry& file : ListFiles(m_dir.Path(), "")) DeleteFile(m_dir / file.m_name);
    NewLink();
  }
  EXPECT_TRUE(FileExists(m_dir / "inner/P7.rph"));
}

TEST_F(Rotation, TheNumberGoesOnWithinAnHourAcrossOpensAndStartsAnewWithAnotherPrefix) {
  const auto open = [this](int usePrefix) {
    OpenSingles(10, [usePrefix](CFileConfig& config) {
      config.m_prefix = "P";
      config.m_usePrefix = usePrefix;
    });
  };
  open(0), Write(kStart);
  open(0), Write(kStart + 60);
  Write(kStart + 3600);
  open(1), Write(kStart + 3601);
  open(0), Write(kStart + 3602);
  EXPECT_EQ(" 0301021400.rph 0301021401.rph 0301021500.rph P0301021500.rph", Files());
  EXPECT_EQ(0, Bytes("0301021500.rph").find(std::string("\x81\x07\x0F\x2C", 4)));
  const std::int32_t last = kStart + 3602;  // the hour's name came back: 00 again
  EXPECT_EQ(0, std::memcmp(&last, Bytes("0301021500.rph").data() + 8, sizeof last));
}

TEST_F(Rotation, TheHundredAndFirstLogOfAnHourReplacesTheFirstAndOutlivesItsOldEntry) {
  OpenSingles(101);
  for (int i = 0; i < 101; ++i) Write(kStart + i);
  EXPECT_EQ(100, ListFiles(m_dir.Path(), ".rph").GetSize());
  const std::int32_t time = kStart + 100;
  EXPECT_EQ(0, std::memcmp(&time, Bytes("0301021400.rph").data() + 8, sizeof time));
  Write(kStart + 101);  // 01 once more: the entry of the old 00 goes, and the file is the new one's
  EXPECT_TRUE(FileExists(m_dir / "0301021400.rph"));
  EXPECT_EQ(100, ListFiles(m_dir.Path(), ".rph").GetSize());
}

TEST_F(Rotation, TheOldestGoAfterTheNewOneIsThere) {
  OpenSingles(2);
  const char* const kFiles[] = {" 0301021400.rph", " 0301021400.rph 0301021401.rph",
                                " 0301021401.rph 0301021402.rph"};
  for (int i = 0; i < 3; ++i) {
    Write(kStart + i);
    EXPECT_EQ(kFiles[i], Files());
  }
}

TEST_F(Rotation, LogsOfEarlierRunsGoByTheirAgeWhateverTheirNames) {
  Old("c.RPH", 40), Old("a.rph", 30), Old("d.rph", 20), Old("b.rph", 20), Old("x.rpd", 90), Old("z.csv", 90);
  OpenSingles(4);
  Write(kStart);
  EXPECT_EQ(" 0301021400.rph a.rph b.rph d.rph x.rpd z.csv", Files());
  Write(kStart + 1), Write(kStart + 2);
  EXPECT_EQ(" 0301021400.rph 0301021401.rph 0301021402.rph d.rph x.rpd z.csv", Files());
  OpenSingles(1);
  Write(kStart + 3);
  EXPECT_EQ(" 0301021403.rph x.rpd z.csv", Files());
}

TEST_F(Rotation, TextCopiesAreCountedApartAndTogetherWithThoseOfSummaries) {
  Old("1d.csv", 30), Old("0h.csv", 20);
  OpenSingles(2, [](CFileConfig& config) { config.m_saveCsv = 1; });
  Write(kStart);
  EXPECT_EQ(" 0301021400.rph 0301021400h.csv 0h.csv", Files());
}

TEST_F(Rotation, BinaryLogsRotateBeforeTheTextCopyIsTried) {
  Old("a.rph", 20);
  std::filesystem::create_directory((m_dir / "0301021400h.csv").Std());  // nothing can replace it
  OpenSingles(1, [](CFileConfig& config) { config.m_saveCsv = 1; });
  m_recorder.Take();
  EXPECT_FALSE(Write(kStart));
  EXPECT_EQ("Flush Error F Couldn't save CSV file.\n", m_recorder.TakeFaults());
  EXPECT_EQ(" 0301021400.rph", Files());
}

TEST_F(Rotation, WithALimitOfNoLogsEachGoesAtOnce) {
  OpenSingles(0);
  EXPECT_TRUE(Write(kStart));
  EXPECT_EQ("", Files());
}

TEST_F(Rotation, AnEntryThatCannotBeDeletedIsNotTriedAgain) {
  Old("a.rph", 20);
  OpenSingles(1);
  DeleteFile(m_dir / "a.rph");
  std::filesystem::create_directory((m_dir / "a.rph").Std());
  EXPECT_TRUE(Write(kStart) && Write(kStart + 1));
  EXPECT_EQ(" 0301021401.rph", Files());
  EXPECT_TRUE(FileExists(m_dir / "a.rph"));
}

}  // namespace
}  // namespace vastra
