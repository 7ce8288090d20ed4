// A run of a configuration: what its observers hear, its live state, and why it does not start.
#include "host/run/run.h"

#include <atomic>
#include <thread>

#include "tests/host/logger.h"

namespace vastra {
namespace {

constexpr const char* kCounter =
    R"("plcNodes": [{"driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["x"]}])";

class Run : public CLoggerTest, public CRunObserver {
 protected:
  void Started(const CStringArray& names) override { Say("started " + names[0].Std()); }
  void Renamed(const CStringArray& names) override { Say("renamed " + names[1].Std()); }
  void Sampled(const CLogSample& sample) override {
    Say("sample");
    m_last = sample.m_values[sample.m_values.GetSize() - 1];
  }
  void Counted(const CRunCounts& counts) override { Say("counts " + std::to_string(counts.scans.read)); }
  void Message(const CRunMessage& message) override { Say(message.text); }
  void LogClosed(const CLogSource& source, const CSavedLog& log) override {
    Say("closed " + source.key.Std() + " " + std::to_string(log.samples));
  }
  void LogNotSaved(const CLogSource& source, const CUnsavedLog& log) override {
    Say("not saved " + source.name.Std() + " " + log.reason.Std());
  }
  void Stopping() override { Say("stopping"); }
  void Stopped() override { Say("stopped"); }

  void Say(const std::string& event) { m_events += event + "\n"; }
  std::string Take() { return std::exchange(m_events, {}); }

  static void Play(CRun& run) {
    ASSERT_EQ(run.Start(), 1);
    while (run.IsRunning()) run.Step();
  }

  std::string m_events;
  float m_last = 0;
};

TEST_F(Run, ObserversHearOfEachStepInOrder) {
  CRun run(Logger("", "", R"("maxSamples": 2, "nameVariable": "x")"), m_messenger,
           {.scans = 3, .period = CScanLoop::Period(0)});
  run.AddObserver(this);
  Play(run);
  EXPECT_EQ(Take(),
            "started x\ncounts 0\nsample\ncounts 1\nclosed outputs[0] 2\nsample\ncounts 2\nsample\nstopping\n"
            "closed outputs[0] 1\ncounts 3\nstopped\n");
  EXPECT_EQ(run.Files(), (std::vector<std::string>{(m_dir / "1h.csv").Std(), (m_dir / "3h.csv").Std()}));
}

TEST_F(Run, TheEndOfAReplayIsNeitherAFailedReadNorAnErrorAndALostLogIsReported) {
  CRun record(Logger("", "", R"("saveRp": 1)"), m_messenger, {.scans = 2, .period = CScanLoop::Period(0)});
  Play(record);
  const CString log = CString(record.Files()[0]).Right(14);
  std::filesystem::create_directory((m_dir / "gone").Std());
  const std::string input = R"({"input": {"simulating": 1, "preprocess": 1, "preEquationText": "y = x;",
"preNewVars": ["y"], "inputFiles": [")" +
                            log.Std() + R"("]}, "outputs": [{"name": "Lost", "saveCsv": 1,
"enableText": "WriteToLog = 1;", "varNames": ["y"], "directory": "gone"}]})";
  CConfiguration configuration;
  ASSERT_EQ(ParseConfiguration(input, m_dir.Path(), configuration), "");
  CRun replay(configuration, m_messenger, {.period = CScanLoop::Period(0)});
  replay.AddObserver(this);
  ASSERT_EQ(replay.Start(), 1);
  std::filesystem::remove((m_dir / "gone").Std());
  while (replay.IsRunning()) replay.Step();
  EXPECT_EQ(
      Take(),
      "started y\ncounts 0\nsample\ncounts 1\nsample\ncounts 2\nReached end of file\nFile list finished.\n"
      "stopping\nnot saved Lost No such file or directory\nCouldn't save CSV file.\ncounts 2\nstopped\n");
  EXPECT_EQ(replay.Counts().scans.failedReads, 0u);
  EXPECT_EQ(replay.Counts().replay.logs, 1u);
}

TEST_F(Run, ASnapshotOfAnyThreadIsOfOneSample) {
  CRun run(Logger(R"(, "trend": {"calculateExtra": 1, "equationText": "e = 10 * x;", "extraVars": ["e"]})"),
           m_messenger, {.scans = 3000, .period = CScanLoop::Period(0)});
  std::atomic<bool> stop{false};
  std::uint64_t newest = 0;
  int torn = 0;
  ASSERT_EQ(run.Start(), 1);
  EXPECT_EQ(run.Live().values.size(), 0u) << "there is no sample yet";
  std::thread reader([&] {
    while (!stop) {
      const CLiveSnapshot live = run.Live();
      if (live.samples == 0) continue;
      torn += live.values[1] != 10 * live.values[0] || static_cast<float>(live.samples) != live.values[0] ||
              live.samples < newest || live.counts.scans.read + 1 < live.samples;
      newest = live.samples;
    }
  });
  while (run.IsRunning()) run.Step();
  stop = true;
  reader.join();
  EXPECT_EQ(torn, 0);
  const CLiveSnapshot live = run.Live();
  EXPECT_FALSE(live.isRunning);
  EXPECT_EQ(live.counts.scans.read, 3000u);
  ASSERT_EQ(live.logs.size(), 1u);
  EXPECT_EQ(live.logs[0]->samples, 3000u);
}

TEST_F(Run, NewExtraVariablesRenameTheSamplesAndMessagesAreKept) {
  int changes = 0;
  CTrendConfig trend;
  CRun run(Logger(), m_messenger,
           {.period = CScanLoop::Period(0), .trend = &trend, .trendChanged = [&] { ++changes; }});
  run.AddObserver(this);
  ASSERT_EQ(run.Start(), 1);
  run.Step();
  trend.m_extraVars.Add("e");
  trend.m_equations.Add("e = 7");
  trend.m_calculateExtra = 1;
  run.Trend().OptionsChanged();
  CStringArray names;
  run.Input().GetVarNames(names);
  run.Trend().Open(names);
  Take();
  run.Step();
  EXPECT_EQ(Take(), "renamed e\nsample\ncounts 2\n");
  EXPECT_EQ(m_last, 7);
  EXPECT_EQ(changes, 1);
  for (int i = 0; i < 105; ++i)
    m_messenger.Send("C", "n", functionRead, severityWarning, std::to_string(i).c_str());
  const auto messages = run.Live().messages;
  ASSERT_EQ(messages.size(), CLiveState::kMessages);
  EXPECT_EQ(messages.front()->text, "5");
  EXPECT_EQ(messages.back()->text, "104");
  run.Stop();
}

TEST_F(Run, SaysWhyAStageDoesNotOpen) {
  WriteBytes(m_dir / "file", "");
  const CString prefix = ": the stage does not open: ", dir = m_dir.Path();
  const struct {
    std::string input;
    const char* more;
    CString fault;
  } cases[] = {
      {R"("plcNodes": [])", "", "input" + prefix + "input.plcNodes: there is no PLC node"},
      {R"("plcNodes": [{"driver": {"plcType": 77}}])", "",
       "input" + prefix + "input.plcNodes: no PLC node has a driver that is installed"},
      {R"("simulating": 1, "inputFiles": ["file", "no.rph"])", "",
       "input" + prefix + "input.inputFiles[1]: " + dir + "/no.rph: No such file or directory"},
      {kCounter, R"("outputs": [{}, {"saveRp": 1, "directory": "file"}])",
       "outputs" + prefix + "outputs[1].directory: " + dir + "/file: Not a directory"},
      {kCounter, R"("summaries": [{"saveCsv": 1, "directory": "no"}])",
       "summaries" + prefix + "summaries[0].directory: " + dir + "/no: No such file or directory"},
      {kCounter, R"("plcWrite": {"nodes": [{"driver": {"plcType": 78}}]})",
       "plcWrite" + prefix + "plcWrite.nodes[0].driver.plcType: no driver 78 is installed"},
      {R"("preprocess": 1, "preEquations": ["y = z"], "preNewVars": ["y"], )" + std::string(kCounter), "",
       "input" + prefix + "the messages of the links say why"},
  };
  for (const auto& [input, more, fault] : cases) {
    CConfiguration configuration;
    const std::string behind = *more ? std::string(", ") + more : "";
    ASSERT_EQ(ParseConfiguration("{\"input\": {" + input + "}" + behind + "}", dir, configuration), "");
    CRun run(configuration, m_messenger);
    EXPECT_EQ(run.Start(), 0);
    EXPECT_EQ(run.OpenFault(), fault);
  }
}

}  // namespace
}  // namespace vastra
