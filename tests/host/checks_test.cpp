// The checks of a configuration before its stages open.
#include "host/common/checks.h"
#include "tests/host/logger.h"

namespace vastra {
namespace {

class Checks : public CLoggerTest {
 protected:
  // The findings of the settings: "! " before one that is refused, then the line.
  std::string Found(const std::string& settings, const CCheckOptions& options = {}) const {
    const CConfiguration configuration = Logger(settings);
    std::string lines;
    for (const CFinding& finding :
         CheckConfiguration(configuration, GivenNames(configuration, FindStageNames(configuration)), options))
      lines += (finding.isRefused ? "! " : "") + finding.Line().Std() + "\n";
    for (std::size_t at; (at = lines.find(m_dir.Path().Std())) != lines.npos;)
      lines.replace(at, m_dir.Path().Std().size(), "DIR");
    return lines;
  }
};

// A node of the simulator with these variables and settings.
std::string Node(const std::string& variables, const std::string& more = "") {
  return R"({"driver": {"plcType": 9001}, "varNames": [)" + variables + "]" + more + "}";
}
std::string Input(const std::string& nodes, const std::string& more = "") {
  return R"("input": {"plcNodes": [)" + nodes + "]" + more + "}";
}
// An output or summary that is as it should be, but for these settings.
std::string Log(const std::string& more, const std::string& folder = ".") {
  return R"({"enableText": "WriteToLog = 1; SampleIsValid = 1; WriteToSummary = 1;", "saveRp": 1, "directory": ")" +
         folder + "\"" + more + "}";
}
std::string Outputs(const std::string& outputs) { return R"("outputs": [)" + outputs + "]"; }

const std::string kNan = R"(, "absent": "nan", "aliveVar": "Alive")";
const std::string kStaysNan =
    " stays NaN once a node with \"absent\": \"nan\" or \"hold\" was away; use the aliveVar of the node, as "
    "in: Sum = Alive ? Sum + x : Sum\n";
const std::string kSpelling =
    ": a name for them has letters (A to Z, a to z), digits and single underscores, a letter first, and is "
    "not a word of the language\n";
const std::string kMeets = " can have the same names in that folder; use another folder or other prefixes\n";

TEST_F(Checks, FindWhatLooksRightAndIsWrong) {
  WriteBytes(m_dir / "file", "");
  WriteBytes(m_dir / "2601010000.rph", "");
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      // names
      {Input(Node(R"("Temp", "Level")", kNan)) + "," +
           Outputs(Log(R"(, "varNames": ["Tmep", "aLIVE", "Q"])")),
       "! outputs[0].varNames[0]: there is no variable \"Tmep\"; did you mean \"Temp\"?\n"
       "! outputs[0].varNames[1]: there is no variable \"aLIVE\"; did you mean \"Alive\"?\n"
       "! outputs[0].varNames[2]: there is no variable \"Q\"\n"},
      {Input(Node(R"("Temp")"), R"(, "preprocess": 1, "preEquationText": "y = Temp;", "preNewVars": ["y"])") +
           "," + Outputs("") + R"(, "summaries": [)" +
           Log(R"(, "varNames": ["mean"], "summaryText": "mean = y;")") +
           R"(], "variables": {"Temp": {"unit": "K"}, "y": {}, "mean": {}, "Yy": {"comment": "?"}})",
       "variables: there is no variable \"Yy\"; did you mean \"y\"?\n"},
      {Outputs(
           R"({"enableText": "k = 1; WriteToLog = k;", "varNames": ["x", "k"], "saveRp": 1, "directory": "."})"),
       "outputs[0].varNames[1]: only the enable equations assign \"k\", whose variables are not logged: it "
       "is always 0\n"},
      {R"("summaries": [)" + Log(R"(, "summaryText": "n = x;", "varNames": ["n", "x", "m"])", "file/..") +
           R"(], "plcWrite": {"nodes": [)" + Node("\"Set\"") + "]}",
       "! summaries[0].varNames[2]: there is no variable \"m\"\n"
       "summaries[0].directory: is that of outputs[0] too: each counts its own logs alone\n"
       "! plcWrite.nodes[0].varNames[0]: there is no variable \"Set\"\n"},
      {R"("smart": {"equationText": "i = x;", "inputVars": ["i", "j"], "inputNames": ["i", "k"], "outputVars": ["s"]},
"trend": {"calculateExtra": 1, "equationText": "e = x;", "extraVars": ["e", "f"], "baseVars": ["y"]})",
       "! smart.inputNames[1]: there is no variable \"k\"\n! smart.inputVars[1]: there is no variable \"j\"\n"
       "trend.baseVars: differ from the variables of the input, which are used\n"
       "trend.extraVars[1]: there is no variable \"f\"\n"},
      {Input(Node("\"x\""),
             R"(, "preprocess": 1, "preEquationText": "y = x;", "preNewVars": ["x", "y", "z"])"),
       "! input.preNewVars[2]: there is no variable \"z\"\n"},
      {Input("", R"(, "simulating": 1, "inputFiles": ["none.rph"])"), ""},
      {Input(Node("\"x\""), R"(, "preEquationText": "y = x;")"),
       "input.preEquationText: is not used, since preprocess is 0\n"},
      // nodes
      {Input(R"({"driver": {"plcType": 77}, "varNames": ["x"]})") +
           R"(, "plcWrite": {"nodes": [{"driver": {"plcType": 78}, "varNames": ["x"]}]})",
       "! input.plcNodes[0].driver.plcType: no driver 77 is installed\n"
       "! plcWrite.nodes[0].driver.plcType: no driver 78 is installed\n"},
      {R"("plcWrite": {"disableWriting": 1, "nodes": [{"driver": {"plcType": 78}, "scaler": [{"varName": "y"}]}]})",
       "plcWrite.nodes[0].scaler[0].varName: the node has no variable \"y\"\n"},
      {Input(Node("\"x\"") + "," + Node("\"y\"") + "," + Node("\"z\"", kNan)),
       "input.plcNodes: 2 nodes have \"absent\": \"fail\": one of them that does not answer fails the scan "
       "of all nodes; with \"nan\" or \"hold\" the others go on\n"},
      {Input(Node("\"x\"", R"(, "absent": "hold", "aliveVar": "y")") + "," +
             Node("\"y\"", R"(, "aliveVar": "x")")),
       "! input.plcNodes[0].aliveVar: \"y\" is in input.plcNodes[1].varNames already\n"
       "! input.plcNodes[1].aliveVar: \"x\" is in input.plcNodes[0].varNames already\n"},
      {Input(R"({"driver": {"plcType": 9001, "variableCount": 2}, "varNames": ["x"],
"scaler": [{"varName": "x", "scale": 0}]})"),
       "input.plcNodes[0].driver.variableCount: 2 is not the number of variables, 1: no read and no write "
       "succeeds\ninput.plcNodes[0].scaler[0].scale: 0 makes each value of \"x\" 0\n"},
      // names that repeat, and names that equations cannot use
      {Input(Node(R"("x", "y", "x")") + "," + Node("\"y\"", kNan),
             R"(, "preprocess": 1, "preEquationText": "z = x;", "preNewVars": ["x", "z", "x"])") +
           R"(, "smart": {"outputVars": ["z", "s", "s"]}, "trend": {"calculateExtra": 1, "equationText": "x = z;",
"extraVars": ["x"]}, )" +
           Outputs(Log(R"(, "varNames": ["x", "z", "x"])")) + R"(, "summaries": [)" +
           Log(R"(, "varNames": ["x", "x"])", "file/..") + "]",
       "input.plcNodes[0].varNames[2]: \"x\" is in input.plcNodes[0].varNames[0] already\n"
       "input.plcNodes[1].varNames[0]: \"y\" is in input.plcNodes[0].varNames[1] already\n"
       "input.preNewVars[2]: \"x\" is in input.preNewVars[0] already\n"
       "outputs[0].varNames[2]: \"x\" is in outputs[0].varNames[0] already\n"
       "summaries[0].varNames[1]: \"x\" is in summaries[0].varNames[0] already\n"
       "summaries[0].directory: is that of outputs[0] too: each counts its own logs alone\n"
       "smart.outputVars[0]: \"z\" is in the variables of the input already\n"
       "smart.outputVars[2]: \"s\" is in smart.outputVars[1] already\n"
       "trend.extraVars[0]: \"x\" is in the variables of the input already\n"},
      {Input(Node(R"("x", "my x", "a-b", "sin", "Größe", "x_1")",
                  R"(, "absent": "nan", "aliveVar": "x alive")")) +
           R"(, "smart": {"outputVars": ["1st"]})",
       "input.plcNodes[0].varNames[1]: equations cannot use \"my x\" and 3 more" + kSpelling +
           "input.plcNodes[0].aliveVar: equations cannot use \"x alive\"" + kSpelling +
           "smart.outputVars[0]: equations cannot use \"1st\"" + kSpelling},
      // sums
      {Input(Node("\"x\"", kNan) + "," + Node("\"Run\", \"Reset\""),
             R"(, "preprocess": 1, "preNewVars": ["x", "y", "Alive", "Run", "Reset"], "preEquationText":
"a = a + x; b = Alive ? b + x : b; c = Run ? c + x : c; d = d + Run; e = x; f = Reset ? 0 : f + x; y = 2 * x; n = n + 1;")") +
           "," +
           Outputs(
               R"({"enableText": "WriteToLog = 1; g = y > 0 ? g + y : g; h = y < 0 ? h : h + y;", "varNames":
["x"], "saveRp": 1, "directory": "."})"),
       "input.preEquationText: statement 1: \"a\"" + kStaysNan + "input.preEquationText: statement 3: \"c\"" +
           kStaysNan + "input.preEquationText: statement 6: \"f\"" + kStaysNan +
           "outputs[0].enableText: statement 3: \"h\"" + kStaysNan},
      {Input(Node("\"x\"", kNan)) + R"(, "summaries": [)" +
           Log(R"(, "summaryText": "s = s + x;", "varNames": ["s"])", "file/..") + "," +
           R"({"summaryText": "s = s + x;", "varNames": ["s"], "saveRp": 1, "directory": "..",
"enableText": "SampleIsValid = Alive; WriteToSummary = 1;"}])",
       "summaries[0].summaryText: statement 1: \"s\"" + kStaysNan +
           "summaries[0].directory: is that of outputs[0] too: each counts its own logs alone\n"},
      // logs
      {Outputs(R"({"varNames": ["x"]})") + R"(, "summaries": [{}])",
       "outputs[0]: saves nothing: saveRp and saveCsv are 0\nsummaries[0]: saves nothing: saveRp and saveCsv "
       "are 0\n"},
      {Outputs(""), "outputs: there is no output and no summary: nothing is logged\n"},
      {Outputs(
           Log(R"(, "maxLogs": 0, "maxSamples": 0, "nameVariable": "", "enableText": "RestartLog = 1;")")) +
           R"(, "summaries": [)" + Log(R"(, "maxSummaries": 0)", "file/../..") + "]",
       "outputs[0].nameVariable: is empty: each log is named \"NoValue\"; \"System Time\" names the logs by "
       "time\n"
       "outputs[0].enableEquations: nothing assigns WriteToLog: nothing is ever written\n"
       "! outputs[0].maxLogs: 0 removes each log as soon as it is written\n"
       "outputs[0].maxSamples: 0 makes each sample a log of its own\n"
       "! summaries[0].maxSummaries: 0 removes each log as soon as it is written\n"},
      {Outputs(Log(R"(, "usePrefix": 1, "prefix": "a/b")") + "," +
               Log(R"(, "usePrefix": 1, "prefix": "..")", "..") + "," + Log(R"(, "prefix": "/")", "../..")),
       "! outputs[0].prefix: \"a/b\" is not the beginning of a file name in the folder of the logs\n"
       "! outputs[1].prefix: \"..\" is not the beginning of a file name in the folder of the logs\n"},
      {Outputs(Log("", "no/where") + "," + Log("", "file") + "," + Log("", "/proc") + "," + Log("", "")),
       "! outputs[0].directory: DIR/no/where: No such file or directory\n"
       "! outputs[1].directory: DIR/file: Not a directory\n"
       "! outputs[2].directory: /proc: No such file or directory\n"
       "! outputs[3].directory: is empty: there is no folder for the logs\n"},
      {Outputs(Log("") + "," + Log("") + "," + Log(R"(, "usePrefix": 1, "prefix": "b")") + "," +
               Log(R"(, "usePrefix": 1, "prefix": "1")")),
       "! outputs[1].directory: the logs of outputs[0]" + kMeets +
           "outputs[2].directory: is that of outputs[0] too: each counts its own logs alone\n"
           "outputs[3].directory: is that of outputs[0] too: each counts its own logs alone\n"},
      {Input("", R"(, "simulating": 1, "inputFiles": ["none.rph", "2601010000.rph"])") + "," +
           Outputs(Log("")),
       "! outputs[0].directory: input.inputFiles[1], DIR/2601010000.rph, counts as a log of this output and "
       "could be removed; use another folder or a prefix\n"},
  };
  for (const auto& [settings, lines] : cases) EXPECT_EQ(Found("{" + settings + "}"), lines);
}

TEST_F(Checks, WithoutAPolicyAllAreWarningsAndFoldersAreSharedByExtension) {
  const CCheckOptions plain = {.keepsLogs = false};
  EXPECT_EQ(Found("{" +
                      Outputs(Log("") + "," + Log(R"(, "saveRp": 0, "saveCsv": 1)") + "," +
                              Log(R"(, "saveCsv": 1, "usePrefix": 1, "prefix": "b", "maxLogs": 0)")) +
                      R"(, "summaries": [)" + Log("") + "]}",
                  plain),
            "outputs[1].directory: is that of outputs[0] too: each counts its own logs alone\n"
            "outputs[2].maxLogs: 0 removes each log as soon as it is written\n"
            "outputs[2].directory: is that of outputs[0] too: each counts, and removes, the .rph logs of the "
            "other\n"
            "summaries[0].directory: is that of outputs[0] too: each counts its own logs alone\n");
}

TEST_F(Checks, FoldersAreLeftOutOrMadeWithTheirParents) {
  const std::string settings = "{" + Outputs(Log("", "a/b")) + "}";
  EXPECT_EQ(Found(settings, {.folders = EFolders::leaveOut}), "");
  EXPECT_EQ(Found(settings, {.folders = EFolders::create}), "");
  EXPECT_TRUE(std::filesystem::is_empty((m_dir / "a/b").Std()));
  EXPECT_EQ(Found("{" + Outputs(Log("", "/proc/a")) + "}", {.folders = EFolders::create}),
            "! outputs[0].directory: /proc/a: No such file or directory\n");
}

// Ten thousand unknown names among as many others take no longer than the number of comparisons allows.
TEST_F(Checks, ManyUnknownNamesAreQuick) {
  nlohmann::json given, wrong;
  for (int i = 0; i < 10000; ++i) {
    given.push_back("Variable" + std::to_string(i));
    wrong.push_back("Variabel" + std::to_string(i));
  }
  const std::string lines = Found("{" + Input(Node(given.dump().substr(1, given.dump().size() - 2))) + "," +
                                  Outputs(Log(R"(, "varNames": )" + wrong.dump())) + "}");
  EXPECT_EQ(std::ranges::count(lines, '\n'), 10000);
  EXPECT_NE(lines.find("varNames[0]: there is no variable \"Variabel0\"; did you mean \"Variable0\"?"),
            lines.npos);
}

}  // namespace
}  // namespace vastra
