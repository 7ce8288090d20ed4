// The events of a listener for the log files of outputs and summaries.
#include "vastra/logfiles/log_listener.h"

#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_output.h"
#include "vastra/stages/log_multi_summary.h"

namespace vastra {
namespace {

// One line for each event; times count from kStart.
class CEvents : public CLogListener {
 public:
  explicit CEvents(const CString& folder) : m_folder(folder) {}
  void LogClosed(const CSavedLog& log) override { Add("closed", log); }
  void LogGrew(const CSavedLog& log) override { Add("grew", log); }
  void LogNotSaved(const CUnsavedLog& log) override {
    m_lines += std::to_string(log.log) + " not saved " + NameOf(log.path) + " " +
               std::to_string(log.samples) + (log.leftShortFile ? " short: " : ": ") + log.reason.Std() +
               "\n";
  }
  std::string Take() { return std::exchange(m_lines, {}); }

 private:
  std::string NameOf(const CString& path) const {
    EXPECT_EQ(path.Find(m_folder), 0) << path.Std();
    return path.Mid(m_folder.GetLength() + 1).Std();
  }
  void Add(const char* event, const CSavedLog& log) {
    m_lines += std::to_string(log.log) + " " + event + " " + NameOf(log.path) + " " +
               std::to_string(log.samples) + " " + std::to_string(log.first.time - kStart) + ".." +
               std::to_string(log.last.time - kStart) + "\n";
    EXPECT_EQ(log.bytes, std::filesystem::file_size(log.path.Std()));
  }

  CString m_folder;
  std::string m_lines;
};

class LogListener : public CStageFixture {
 protected:
  template <class Config>
  Config* Make(const char* enable) const {
    auto* config = new Config;
    config->m_enableEquations = Equations(enable);
    config->m_varNames = m_names;
    config->m_saveCsv = 1;
    config->m_directory = m_dir.Path();
    return config;
  }
  static int Write(auto& stage, std::int32_t time) {
    CLogSample sample = Sample({1}, kStart + time);
    return stage.Write(sample);
  }

  CEvents m_events{m_dir.Path()};
  CStringArray m_names = Names({"x"});
};

TEST_F(LogListener, GetsAnEventForEachFileOfEachOutput) {
  CLogMultiOutput stage;
  for (const char* prefix : {"a", "b"}) {
    auto* output = Make<COutputConfig>("WriteToLog = 1");
    output->m_nameVariable = "x", output->m_usePrefix = 1, output->m_prefix = prefix;
    output->m_maxSamples = 2;
    stage.GetOptions()->m_outputs.AddTail(output);
  }
  stage.GetOptions()->m_outputs.GetTail()->m_saveRp = 1;
  stage.SetLogListener(&m_events);
  ASSERT_EQ(stage.Open(m_names), 1);
  Write(stage, 0);
  EXPECT_EQ(m_events.Take(), "");
  Write(stage, 5);
  EXPECT_EQ(m_events.Take(), "0 closed a1h.csv 2 0..5\n1 closed b1.rph 2 0..5\n1 closed b1h.csv 2 0..5\n");
  Write(stage, 7);
  {
    const CFileSizeLimit limit(10);
    stage.Close();
  }
  EXPECT_EQ(m_events.Take(), "0 not saved a1h.csv 1: File too large\n1 not saved b1.rph 1: File too large\n");
  std::filesystem::remove((m_dir / "a1h.csv").Std());
  std::filesystem::remove((m_dir / "b1.rph").Std());
  ASSERT_EQ(stage.Open(m_names), 1);
  Write(stage, 8);
  {
    const CFileSizeLimit limit(10);
    stage.Close();
  }
  EXPECT_EQ(m_events.Take(),
            "0 not saved a1h.csv 1 short: File too large\n1 not saved b1.rph 1 short: File too large\n");
}

TEST_F(LogListener, GetsAnEventForEachRowOfASummaryAndForItsEnd) {
  CLogMultiSummary stage;
  stage.GetOptions()->m_summaries.AddTail(Make<CSummaryConfig>("SampleIsValid = 1;WriteToSummary = 1"));
  stage.SetLogListener(&m_events);
  ASSERT_EQ(stage.Open(m_names), 1);
  Write(stage, 0);
  Write(stage, 5);
  stage.Restart();
  EXPECT_EQ(
      m_events.Take(),
      "0 grew 0301021400d.csv 1 0..0\n0 grew 0301021400d.csv 2 0..5\n0 closed 0301021400d.csv 2 0..5\n");
  std::filesystem::remove_all(m_dir.Path().Std());
  Write(stage, 6);
  EXPECT_EQ(m_events.Take(), "0 not saved 0301021401d.csv 1: No such file or directory\n");
}

}  // namespace
}  // namespace vastra
