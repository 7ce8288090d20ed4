// Summaries: which samples the equations see, which of them become rows, and in which file.
#include <gtest/gtest.h>

#include "tests/stages/samples.h"
#include "tests/support/recorder.h"
#include "vastra/stages/log_multi_summary.h"

namespace vastra {
namespace {

constexpr const char* kAlways = "SampleIsValid = 1;WriteToSummary = 1";

class Summary : public testing::Test {
 protected:
  Summary() {
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
  }

  // A summary of x that counts the samples and adds them up, in a directory of its own.
  static CSummaryConfig Config(const char* enable, const CString& directory) {
    CSummaryConfig config;
    config.m_enableEquations = Equations(enable);
    config.m_summaryEquations = Equations("n = n + 1;sum = sum + x");
    config.m_varNames = Names({"n", "sum"});
    config.m_saveCsv = 1;
    config.m_directory = directory;
    std::filesystem::create_directory(directory.Std());
    return config;
  }
  CSummaryConfig& Add(const char* enable, const char* directory = "0") {
    m_stage.GetOptions()->m_summaries.AddTail(new CSummaryConfig(Config(enable, m_dir / directory)));
    return *m_stage.GetOptions()->m_summaries.GetTail();
  }
  int Open() { return m_stage.Open(m_names); }
  int Write(float x, std::int32_t time = kStart) {
    CLogSample sample = Sample({x}, time);
    return m_stage.Write(sample);
  }
  // The results of the samples 1, 2, 3.
  std::string WriteThree() {
    std::string results;
    for (const float x : {1.0f, 2.0f, 3.0f}) results += std::to_string(Write(x));
    return results;
  }

  CRecorder m_recorder;
  CTempDir m_dir;
  CStringArray m_names = Names({"x"});
  CLogMultiSummary m_stage;
};

TEST_F(Summary, TheFlagsDecideWhatTheEquationsSeeAndWhatBecomesARow) {
  constexpr struct {
    const char *enable, *results, *logs;
    UINT maxSamples = 4000, maxSummaries = 400;
  } kCases[] = {
      {kAlways, "111", "00: 1/1 2/3 3/6|"},
      {"WriteToSummary = 1", "000", ""},
      {"SampleIsValid = 0.9;WriteToSummary = 1", "000", ""},
      {"SampleIsValid = -1;WriteToSummary = -1", "111", "00: 1/1 2/3 3/6|"},
      {"SampleIsValid = 1;WriteToSummary = 0.9", "111", ""},
      {"SampleIsValid = 1;WriteToSummary = x == 3", "111", "00: 3/6|"},
      {"SampleIsValid = x != 2;WriteToSummary = 1", "101", "00: 1/1 2/4|"},
      {"SampleIsValid = 1;WriteToSummary = 1;RestartSummary = x == 2", "111", "00: 1/1|01: 2/3 3/6|"},
      {"SampleIsValid = x != 2;WriteToSummary = 1;RestartSummary = x == 2", "101", "00: 1/1 2/4|"},
      {"SampleIsValid = 1;WriteToSummary = x != 2;RestartSummary = x == 2", "111", "00: 1/1|01: 3/6|"},
      {"SampleIsValid = 1;WriteToSummary = 1;RestartSummary = 0.5", "111", "00: 1/1 2/3 3/6|"},
      {kAlways, "111", "00: 1/1 2/3|01: 3/6|", 2},
      {kAlways, "111", "00: 1/1|01: 2/3|02: 3/6|", 0},
      {kAlways, "111", "01: 2/3|02: 3/6|", 1, 2},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.enable);
    CTempDir dir;
    CSummaryConfig& config = Add(row.enable);
    config.m_directory = dir.Path();
    config.m_maxSamples = row.maxSamples;
    config.m_maxSummaries = row.maxSummaries;
    ASSERT_EQ(1, Open());
    EXPECT_EQ(row.results, WriteThree());
    EXPECT_EQ(row.logs, Logs(dir.Path())) << "rows are on the disk at once";
    m_stage.Close();
    EXPECT_EQ(row.logs, Logs(dir.Path()));
    m_stage.ClearConfiguration();
  }
}

TEST_F(Summary, ASampleThatOneFindsInvalidIsWithheldFromThoseBehindAlsoWithoutFiles) {
  for (const std::string root : {"with", "without"}) {
    const bool files = root == "with";
    Add(kAlways, (root + "0").c_str());
    Add("SampleIsValid = x != 2;WriteToSummary = 1", (root + "1").c_str()).m_saveCsv = files;
    Add(kAlways, (root + "2").c_str());
    ASSERT_EQ(1, Open());
    EXPECT_EQ("101", WriteThree());
    m_stage.Close();
    m_stage.ClearConfiguration();
    EXPECT_EQ("00: 1/1 2/3 3/6|", Logs(m_dir / (root + "0").c_str()));
    EXPECT_EQ(files ? "00: 1/1 2/4|" : "", Logs(m_dir / (root + "1").c_str()));
    EXPECT_EQ("00: 1/1 2/4|", Logs(m_dir / (root + "2").c_str()));
  }
}

TEST_F(Summary, TheTraceShowsRestartEquationsAndRowInThisOrder) {
  Add("SampleIsValid = 1;WriteToSummary = 1;RestartSummary = x == 2");
  ASSERT_EQ(1, Open());
  Write(1);
  m_recorder.Take();
  Write(2);
  const std::string question = "Read Begin EnableFileLink\nRead End EnableFileLink\n";
  EXPECT_EQ(
      "Write Begin EnableEquatorLink\nWrite Begin EnableFileLink\nWrite End EnableFileLink\n"
      "Write End EnableEquatorLink\n" +
          question + question +
          "Flush Begin SummaryArchiveFileLink\nPartialFlush Begin SummaryArchiveFileLink\n"
          "PartialFlush End SummaryArchiveFileLink\nFlush End SummaryArchiveFileLink\n"
          "Write Begin SummaryEquatorLink\nWrite Begin SummaryBufferFileLink\n"
          "Write End SummaryBufferFileLink\nWrite End SummaryEquatorLink\n" +
          question +
          "Read Begin SummaryBufferFileLink\nRead End SummaryBufferFileLink\n"
          "Write Begin SummaryArchiveFileLink\nWrite End SummaryArchiveFileLink\n"
          "PartialFlush Begin SummaryArchiveFileLink\nPartialFlush End SummaryArchiveFileLink\n",
      m_recorder.Take());
}

TEST_F(Summary, AnEmptyArchiveTellsAtTheEndOfAFileOnARestartAndAtClose) {
  const std::string empty = "Flush Warning SummaryArchiveFileLink Tried to flush an empty log.\n";
  Add("SampleIsValid = 1;WriteToSummary = x;RestartSummary = x == 3").m_maxSamples = 2;
  ASSERT_EQ(1, Open());
  EXPECT_EQ(1, Write(1));
  EXPECT_EQ("", m_recorder.TakeFaults());
  EXPECT_EQ(1, Write(2));
  EXPECT_EQ("PartialFlush Notice SummaryArchiveFileLink No samples to write (Probably new file).\n",
            m_recorder.TakeFaults());
  EXPECT_EQ(1, Write(3));
  EXPECT_EQ(empty, m_recorder.TakeFaults());
  m_stage.Close();
  EXPECT_EQ("", m_recorder.TakeFaults());
  ASSERT_EQ(1, Open());
  EXPECT_EQ(1, Write(0));
  m_stage.Close();
  EXPECT_EQ(empty, m_recorder.TakeFaults());
}

TEST_F(Summary, ARestartOfTheStageKeepsTheCountsAndAnOpenStartsThemAnew) {
  Add(kAlways);
  EXPECT_EQ(0, m_stage.Restart());
  ASSERT_EQ(1, Open());
  Write(5);
  EXPECT_EQ(1, m_stage.Restart());
  Write(5);
  ASSERT_EQ(1, Open());
  Write(7, kStart + 3600);
  EXPECT_EQ("00: 1/5|01: 2/10|00: 1/7|", Logs(m_dir / "0"));
}

TEST_F(Summary, ANameOfTheSampleBeatsTheEquationAndAnUnknownOneIsZero) {
  CSummaryConfig& config = Add("SampleIsValid = 1;WriteToSummary = x != 2");
  config.m_summaryEquations = Equations("x = 9;n = x + 1");
  config.m_varNames = Names({"x", "n", "nothing"});
  ASSERT_EQ(1, Open());
  EXPECT_EQ("111", WriteThree());
  EXPECT_EQ("00: 1/2/0 3/4/0|", Logs(m_dir / "0"));
}

TEST_F(Summary, RowsOfAVanishedDirectoryGoOutWhenItIsBackUnderTheNameOfTheFirst) {
  constexpr struct {
    int saveRp;
    UINT maxSamples;
    const char *results, *fault, *files, *rows, *behind;  // results: with the directory away, and back
  } kCases[] = {
      {1, 9, "001", "Couldn't save file.", "0301021400.rpd 0301021400d.csv", "00: 1/1 2/3 3/6|", "00: 1/3|"},
      {0, 9, "111", "Couldn't save CSV file.", "0301021400d.csv", "00: 1/1 2/3 3/6|", "00: 1/1 2/3 3/6|"},
      // The second row completes the file, whose end hides the failure.
      {1, 2, "011", "Couldn't save file.", "0301021500.rpd 0301021500d.csv", "00: 3/6|", "00: 1/2 2/5|"},
  };
  for (const auto& row : kCases) {
    CTempDir dir;
    const CString logs = dir / "logs";
    CSummaryConfig& config = Add(kAlways);
    config.m_directory = logs;
    config.m_saveRp = row.saveRp;
    config.m_maxSamples = row.maxSamples;
    Add(kAlways).m_directory = dir.Path();
    std::filesystem::create_directory(logs.Std());
    ASSERT_EQ(1, Open());
    std::filesystem::remove(logs.Std());
    m_recorder.Take();
    std::string results = std::to_string(Write(1));
    EXPECT_EQ(std::string("PartialFlush Error SummaryArchiveFileLink ") + row.fault + "\n",
              m_recorder.TakeFaults());
    results += std::to_string(Write(2, kStart + 3600));
    std::filesystem::create_directory(logs.Std());
    results += std::to_string(Write(3, kStart + 3601));
    EXPECT_EQ(row.results, results);
    CStringArray files;
    for (const CFileEntry& file : ListFiles(logs, "")) files.Add(file.m_name);
    EXPECT_EQ(row.files, Join(files));
    EXPECT_EQ(row.rows, Logs(logs));
    EXPECT_EQ(row.behind, Logs(dir.Path()));
    m_stage.Close();
    m_stage.ClearConfiguration();
  }
}

TEST_F(Summary, WithoutFilesOnlyTheEnableEquationsExist) {
  CSummaryConfig& config = Add(kAlways);
  config.m_saveCsv = 0;
  config.m_directory = "/nowhere";
  config.m_summaryEquations = Equations("no equation");
  CLogSingleSummary summary;
  *summary.GetOptions() = config;
  CLogSample sample = Sample({1});
  for (const int open : {0, 1, 0}) {
    EXPECT_EQ(1, !open || summary.Open(m_names));
    EXPECT_EQ(open, summary.Verify(sample));
    EXPECT_EQ(open, summary.IsSampleValid());
    EXPECT_EQ(open, summary.WriteToSummary());
    EXPECT_EQ(0, summary.RestartSummary());
    EXPECT_EQ(open, summary.AddToSummary(sample));
    EXPECT_EQ(open, summary.Flush());
    EXPECT_EQ(open, summary.Restart());
    summary.Close();
  }
  EXPECT_EQ("", m_recorder.TakeFaults());
}

TEST_F(Summary, AFailedOpenNamesTheLinkAndLeavesNoSummary) {
  const struct {
    const char *enable, *equations, *directory, *fault;
  } kCases[] = {
      {"SampleIsValid = y", "n = 1", ".", "EnableEquatorLink Linker could not configure itself."},
      {kAlways, "n = y", ".", "SummaryEquatorLink Linker could not configure itself."},
      {kAlways, "n = 1", "/nowhere",
       "SummaryArchiveFileLink There is a problem with the destination directory"},
  };
  const std::string first = "\nFlush Warning SummaryArchiveFileLink Tried to flush an empty log.\n";
  for (const auto& row : kCases) {
    Add(kAlways, "0");
    CSummaryConfig& config = Add(row.enable, "1");
    config.m_summaryEquations = Equations(row.equations);
    config.m_directory = row.directory;
    EXPECT_EQ(0, Open());
    EXPECT_EQ(std::string("Open Fatal ") + row.fault + first, m_recorder.TakeFaults());
    EXPECT_EQ(0, Write(1));
    EXPECT_EQ(0, m_stage.Restart());

    CLogSingleSummary summary;
    *summary.GetOptions() = config;
    EXPECT_EQ(0, summary.Open(m_names));
    EXPECT_EQ(0, summary.Flush());
    m_recorder.Take();
    summary.Close();  // the enable object is what a failed Open can leave open
    EXPECT_EQ(row.enable == kAlways ? "Close Begin EnableEquatorLink\n" : "",
              m_recorder.Take().substr(0, 30));
    m_stage.ClearConfiguration();
  }
}

}  // namespace
}  // namespace vastra
