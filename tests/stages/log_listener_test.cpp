#include "vastra/logfiles/log_listener.h"

#include <optional>

#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_output.h"
#include "vastra/stages/log_multi_summary.h"

namespace vastra {
namespace {

// One line for each event; times count from kStart.
class CEvents : public CLogListener {
 public:
  void LogClosed(const CSavedLog& log) override { Add("closed", log); }
  void LogGrew(const CSavedLog& log) override { Add("grew", log); }
  void LogNotSaved(const CUnsavedLog& log) override {
    Begin("not saved", log) << (log.leftShortFile ? " short: " : ": ") << log.reason.Std() << "\n";
  }
  std::string Take() { return std::exchange(m_lines, std::ostringstream()).str(); }

 private:
  std::ostream& Begin(const char* event, const auto& log) {
    const std::string name = std::filesystem::path(log.path.Std()).filename().string();
    return m_lines << log.log << " " << event << " " << name << " " << log.samples;
  }
  void Add(const char* event, const CSavedLog& log) {
    Begin(event, log) << " " << log.first.time - kStart << ".." << log.last.time - kStart << "\n";
    EXPECT_EQ(log.bytes, std::filesystem::file_size(log.path.Std()));
  }
  std::ostringstream m_lines;
};

using OutputListener = CStageFixture<CLogMultiOutput>;
using SummaryListener = CStageFixture<CLogMultiSummary>;

TEST_F(OutputListener, GetsAnEventForEachFileThatTheSettingsMake) {
  CEvents events;
  m_stage.SetLogListener(&events);
  for (const char* prefix : {"a", "b"}) {
    COutputConfig& output = Add(Options().m_outputs, "WriteToLog = 1", "0");
    output.m_varNames = Split("x y");
    output.m_nameVariable = "x";
    output.m_prefix = prefix, output.m_usePrefix = 1;
    output.m_maxSamples = 2, output.m_saveRp = *prefix == 'b';
    output.m_dwordName = output.m_maxLogs = 1;
  }
  ASSERT_EQ(Open("x y"), 1);
  Write({1, 7});
  EXPECT_EQ(events.Take(), "");
  Write({1, 7}, kStart + 5);
  EXPECT_EQ(events.Take(), "0 closed a17h.csv 2 0..5\n1 closed b17.rph 2 0..5\n1 closed b17h.csv 2 0..5\n");
  Write({2, 7}), Write({2, 7});
  EXPECT_EQ(Files("0"), " a27h.csv b27.rph b27h.csv");
  events.Take();
  for (const std::string left : {"", " short"}) {  // a failed write leaves a new file short, an old one whole
    ASSERT_EQ(Open("x y"), 1);
    Write({2, 7});
    std::optional<CFileSizeLimit> limit(10);
    m_stage.Close();
    limit.reset();
    EXPECT_EQ(events.Take(), "0 not saved a27h.csv 1" + left + ": File too large\n1 not saved b27.rph 1" +
                                 left + ": File too large\n");
    std::filesystem::remove_all((m_dir / "0").Std());
    std::filesystem::create_directory((m_dir / "0").Std());
  }
}

TEST_F(SummaryListener, GetsAnEventForEachRowAndForTheEnd) {
  CEvents events;
  m_stage.SetLogListener(&events);
  Add(Options().m_summaries, "SampleIsValid = 1;WriteToSummary = 1", "0");
  ASSERT_EQ(Open(), 1);
  Write({1});
  Write({1}, kStart + 5);
  m_stage.Restart();
  EXPECT_EQ(
      events.Take(),
      "0 grew 0301021400d.csv 1 0..0\n0 grew 0301021400d.csv 2 0..5\n0 closed 0301021400d.csv 2 0..5\n");
  std::filesystem::remove_all((m_dir / "0").Std());
  Write({1}, kStart + 6);
  EXPECT_EQ(events.Take(), "0 not saved 0301021401d.csv 1: No such file or directory\n");
  m_stage.Close();  // while the listener exists
}

}  // namespace
}  // namespace vastra
