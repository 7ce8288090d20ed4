// A run of a configuration: what its observers hear, its live state, its checks, and why it does not start.
#include "host/run/run.h"

#include <atomic>
#include <map>
#include <random>
#include <thread>

#include "tests/host/logger.h"

namespace vastra {
namespace {

class Run : public CLoggerTest, public CRunObserver {
 protected:
  void Started(const CStringArray& names) override { Say("started " + names[0].Std()); }
  void Renamed(const CStringArray& names) override { Say("renamed " + names[1].Std()); }
  void Sampled(const CLogSample& sample) override {
    Say("sample " + std::to_string(static_cast<int>(sample.m_values[sample.m_values.GetSize() - 1])));
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

  void Play(CRun& run) {
    run.AddObserver(this);
    ASSERT_EQ(run.Start(), 1);
    std::filesystem::remove((m_dir / "gone").Std());
    while (run.IsRunning()) run.Step();
  }

  std::string m_events;
};

TEST_F(Run, ObserversHearOfEachStepInOrder) {
  CRun run(
      Logger(R"({"summaries": [{"enableText": "SampleIsValid = 1; WriteToSummary = 1;", "varNames": ["x"],
"saveCsv": 1, "directory": "."}]})",
             "{}", R"({"maxSamples": 2, "nameVariable": "x"})"),
      m_messenger, {{.scans = 3}});
  Play(run);
  EXPECT_EQ(
      Take(),
      "started x\ncounts 0\nsample 1\ncounts 1\nclosed outputs[0] 2\nsample 2\ncounts 2\nsample 3\nstopping\n"
      "closed outputs[0] 1\nclosed summaries[0] 3\ncounts 3\nstopped\n");
  EXPECT_EQ(run.Files().size(), 3u);
}

TEST_F(Run, TheEndOfAReplayIsNeitherAFailedReadNorAnErrorAndALostLogIsReported) {
  CRun record(Logger("{}", "{}", R"({"saveRp": 1})"), m_messenger, {{.scans = 2}});
  Play(record);
  Take();
  std::filesystem::create_directory((m_dir / "gone").Std());
  CRun replay(Logger(R"({"input": {"simulating": 1, "preprocess": 1, "preEquationText": "y = x;",
"preNewVars": ["y"], "inputFiles": [")" +
                         record.Files()[0] + R"("]}})",
                     "{}", R"({"name": "Lost", "varNames": ["y"], "directory": "gone"})"),
              m_messenger);
  Play(replay);
  EXPECT_EQ(Take(),
            "started y\ncounts 0\nsample 1\ncounts 1\nsample 2\ncounts 2\nReached end of file\n"
            "File list finished.\nstopping\nnot saved Lost No such file or directory\nCouldn't save CSV "
            "file.\ncounts 2\nstopped\n");
  EXPECT_EQ(replay.Counts().scans.failedReads, 0u);
  EXPECT_EQ(replay.Counts().replay.logs, 1u);
}

TEST_F(Run, ALineThatIsNotShownEndsItsOperation) {
  struct CMute : CRunMessenger, CRunMessenger::CReader {
    bool TakeMessage(const char*, const char*, char, char, const char*) override { return false; }
    int Depth() const { return m_depth; }
  } messenger;
  messenger.Attach(&messenger);
  messenger.SetFilters(1, 1, 1, 1, 1);
  for (const char severity : {severityBegin, severityBegin, severityNotice, severityError})
    messenger.Send("C", "n", functionRead, severity, "");
  EXPECT_EQ(messenger.Depth(), 1);
}

TEST_F(Run, OfTheFilesWrittenThoseThatExistCountOnce) {
  WriteBytes(m_dir / "a", "");
  WriteBytes(m_dir / "c", "");
  std::filesystem::create_hard_link((m_dir / "c").Std(), (m_dir / "d").Std());
  CWrittenFiles files;
  CSavedLog log;
  for (const char* name : {"d", "Gone", "c", "./a"}) log.path = m_dir / name, files.LogClosed({}, log);
  EXPECT_EQ(files.Existing(), (std::vector<std::string>{(m_dir / "a").Std(), (m_dir / "c").Std()}));
}

TEST_F(Run, ASnapshotOfAnyThreadIsOfOneSample) {
  CRun run(Logger(R"({"trend": {"calculateExtra": 1, "equationText": "e = 10 * x;", "extraVars": ["e"]}})",
                  "{}", R"({"maxSamples": 2000})"),
           m_messenger, {{.scans = 3000}});
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
  ASSERT_EQ(live.logs.size(), 1u) << "of the last log alone";
  EXPECT_EQ(live.logs[0]->samples, 1000u);
}

TEST_F(Run, NewExtraVariablesRenameTheSamplesAndMessagesAreKept) {
  int changes = 0;
  CTrendConfig trend;
  CRun run(Logger(), m_messenger, {{.trend = &trend}, [&] { ++changes; }});
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
  run.Step();
  EXPECT_EQ(Take(), "renamed e\nsample 7\ncounts 2\nsample 7\ncounts 3\n");
  EXPECT_EQ(changes, 1);
  for (int i = 0; i < 105; ++i)
    m_messenger.Send("C", "n", functionRead, severityWarning, std::to_string(i).c_str());
  const auto messages = run.Live().messages;
  ASSERT_EQ(messages.size(), CLiveState::kMessages);
  EXPECT_EQ(messages.front()->text, "5");
  EXPECT_EQ(messages.back()->text, "104");
}

TEST_F(Run, FindsTheEquationsInUseThatDoNotCompile) {
  const CConfiguration configuration = Logger(R"({
"input": {"preprocess": 1, "preEquationText": "y = x; z = 2 * * x;", "preNewVars": ["y"]},
"smart": {"inputVars": ["y"], "outputVars": ["Out"], "equationText": "s = Out;"},
"outputs": [{"enableText": "WriteToLog = Out;"}, {"name": "All", "enableText": "WriteToLog = y > Limit;"}],
"summaries": [{"enableText": "SampleIsValid = nobody;"}, {"summaryText": "s = nobody;", "saveRp": 1},
  {"summaryText": "s = nobody;"}],
"trend": {"calculateExtra": 1, "equationText": "t = nobody;"}})");
  std::string faults;
  for (const CEquationFinding& fault : CRun(configuration, m_messenger).EquationFaults())
    faults += fault.Line().Std().substr(0, fault.Line().Std().rfind(": ")) + "\n";
  EXPECT_EQ(faults,
            "input.preEquationText: statement 2, offset 9\nsmart.equationText: statement 1, offset 4\n"
            "outputs[1].enableText (\"All\"): statement 1, offset 17\n"
            "summaries[0].enableText: statement 1, offset 16\n"
            "summaries[1].summaryText: statement 1, offset 4\ntrend.equationText: statement 1, offset 4\n");
  const CConfiguration unused =
      Logger(R"({"input": {"preEquationText": "y = * x;"}, "trend": {"equationText": "t = * x;"}})");
  EXPECT_TRUE(CRun(unused, m_messenger).EquationFaults().empty());
}

TEST_F(Run, SaysWhyAStageDoesNotOpen) {
  WriteBytes(m_dir / "file", "");
  const CString prefix = ": the stage does not open: ", dir = m_dir.Path();
  const std::pair<const char*, CString> cases[] = {
      {R"({"input": {"simulating": 1}})", "input" + prefix + "input.inputFiles: there is no log to replay"},
      {R"({"input": {"plcNodes": []}})", "input" + prefix + "input.plcNodes: there is no PLC node"},
      {R"({"input": {"plcNodes": [{"driver": {"plcType": 77}}]}})",
       "input" + prefix + "input.plcNodes: no PLC node has a driver that is installed"},
      {R"({"input": {"simulating": 1, "inputFiles": ["file", "no.rph"]}})",
       "input" + prefix + "input.inputFiles[1]: " + dir + "/no.rph: No such file or directory"},
      {R"({"outputs": [{"nameVariable": "y"}, {"saveRp": 1, "nameVariable": "z"}]})",
       "outputs" + prefix + "outputs[1].nameVariable: \"z\" is not a variable of the log"},
      {R"({"outputs": [{}, {"saveRp": 1, "directory": "file"}]})",
       "outputs" + prefix + "outputs[1].directory: " + dir + "/file: Not a directory"},
      {R"({"summaries": [{"saveCsv": 1, "directory": "no"}]})",
       "summaries" + prefix + "summaries[0].directory: " + dir + "/no: No such file or directory"},
      {R"({"plcWrite": {"nodes": [{"driver": {"plcType": 9001}}, {"driver": {"plcType": 78}}]}})",
       "plcWrite" + prefix + "plcWrite.nodes[1].driver.plcType: no driver 78 is installed"},
      {R"({"input": {"preprocess": 1, "preEquations": ["y = z"], "preNewVars": ["y"]}})",
       "input" + prefix + "the messages of the links say why"},
      {R"({"smart": {"outputVars": ["x"]}})", "smart" + prefix + "the messages of the links say why"},
      {R"({"trend": {"calculateExtra": 1, "equationText": "e = y;"}})",
       "trend" + prefix + "the messages of the links say why"}};
  for (const auto& [settings, fault] : cases) {
    CRun run(Logger(settings), m_messenger);
    EXPECT_EQ(run.Start(), 0);
    EXPECT_EQ(run.OpenFault(), fault);
    EXPECT_FALSE(run.IsRunning());
  }
}

// Counts the samples, and those that each folder has to have.
struct CExpected : CRunObserver {
  void Sampled(const CLogSample&) override { ++samples, rows["a"] += 1, rows["b"] += hasB; }
  std::uint64_t samples = 0;
  bool hasB = false;
  std::map<std::string, std::uint64_t> rows;
};

TEST_F(Run, ReloadsLoseNoRowThatTheOldOrTheNewConfigurationTakes) {
  std::mt19937 random(1);
  for (const char* folder : {"a", "b"}) std::filesystem::create_directory((m_dir / folder).Std());
  WriteBytes(m_dir / "file", "");
  const auto configuration = [&](unsigned kind, const char* bad) {
    auto tree = nlohmann::json::parse(
        R"({"outputs": [{"directory": "a"}, {"name": "More", "directory": "b", "maxSamples": 3}],
"input": {"plcNodes": [{"driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["x"]}]}})");
    if (kind & 1) tree["input"]["plcNodes"][0]["varNames"].push_back("y");
    tree["outputs"][0].update({{"name", kind & 2 ? "Renamed" : "All"}, {"maxSamples", kind & 4 ? 7 : 5}});
    if (!(kind & 8)) tree["outputs"].erase(1);
    for (nlohmann::json& output : tree["outputs"])
      output.update(
          {{"enableText", "WriteToLog = 1;"}, {"varNames", {"x"}}, {"saveCsv", 1}, {"maxLogs", 10000}});
    if (kind & 16) tree["summaries"][0] = {{"varNames", {"x"}}, {"saveCsv", 1}, {"directory", "b"}};
    if (*bad) tree.merge_patch(nlohmann::json::parse(bad));
    return Logger(tree.dump());
  };
  constexpr const char* kBad[] = {"", R"({"outputs": [{"saveRp": 1, "directory": "file"}]})",
                                  R"({"plcWrite": {"nodes": [{"driver": {"plcType": 78}}]}})",
                                  R"({"trend": {"calculateExtra": 1, "equationText": "e = nobody;"}})",
                                  R"({"input": {"plcNodes": [{"driver": {"plcType": 77}}]}})"};
  CExpected expected;
  CRun run(configuration(0, ""), m_messenger, {{.policy = CLogPolicy()}});
  run.AddObserver(&expected);
  ASSERT_EQ(run.Start(), 1);
  for (int reload = 0; reload < 60; ++reload) {
    const unsigned kind = random() % 32;
    const char* const bad = kBad[random() % std::size(kBad)];
    for (unsigned scans = random() % 4; scans > 0; --scans) run.Step();
    ASSERT_EQ(run.Reload(run.PlanOf(configuration(kind, bad))), !*bad) << run.ReloadFault().Std();
    EXPECT_EQ(run.ReloadFault().IsEmpty(), !*bad);
    if (!*bad) expected.hasB = kind & 8;
  }
  run.Step();
  run.Stop();
  const CLedgerSums sums = Sum(run.Ledger());
  EXPECT_EQ(sums.onDisk, expected.rows["a"] + expected.rows["b"]);
  EXPECT_EQ(sums.lost + sums.inJournal, 0u);
  EXPECT_EQ(Rows(m_dir / "a"), expected.rows["a"]);
  EXPECT_EQ(run.Counts().scans.read, expected.samples);
}

}  // namespace
}  // namespace vastra
