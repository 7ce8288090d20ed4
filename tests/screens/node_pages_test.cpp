// The pages of the input and of the written nodes, and the dialog of a PLC node.
#include <gtest/gtest.h>

#include <QTableView>

#include "tests/plc/scripted_driver.h"
#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/platform/module.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/smart_page.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class InputPage : public testing::Test {
 protected:
  CRecorder m_recorder;  // of the messages of links
  CSheetUser m_user;
  CInputPage m_page;
  const json m_config = R"({"scanPeriod": 700, "inputFiles": ["/old"], "preNewVars": ["b"],
    "preEquationText": "x = b;", "plcNodes": [{"nodeName": "node", "driver": {"plcType": 777, "value5": 15},
                                               "varNames": ["v", "w"]}]})"_json;
};

TEST_F(InputPage, ControlsDependOnTheChoices) {
  m_page.SetConfiguration(Configured<CInputConfig>(
      R"({"scanPeriod": 77, "simulating": 1, "preprocess": 1, "asFastAsPossible": 1, "autoStart": 1})"_json));
  const std::string kNodes = "Net nodes? / Add net node...? / Edit net node...? / Delete Node?",
                    kNoNodes = "Net nodes?- / Add net node...?- / Edit net node...?- / Delete Node?-";
  m_user.Run(
      m_page,
      {"Simulating?x / Preprocess input?x / As fast as possible?x / Auto Start?x / Scan period :?-77",
       "Select Files...? / Variable List...? / Preprocessed equations...?", kNoNodes,
       "Connected / Select Files...?-", kNodes, "Scan period : / Scan period :?5000 / Scan period :=1234",
       "Preprocess input / Scan period :?1234 / Variable List...?- / Preprocessed equations...?-",
       "As fast as possible / Scan period :?-10 / Simulating / Select Files...?", kNoNodes});
}

TEST_F(InputPage, EditsGoToTheConfiguration) {
  const auto edit = [&](const char* steps, const json& changes) {
    const auto config = Configured<CInputConfig>(m_config);
    json wanted = m_config;
    wanted.update(changes);
    m_page.SetConfiguration(config);
    EXPECT_EQ(m_user.Run(m_page, {steps}), IDOK);
    EXPECT_EQ(Held(m_page, config), FieldsOf(Configured<CInputConfig>(wanted)));
  };
  edit("As fast as possible / Scan period : / Simulating / Select Files... / Connected / OK",
       {{"scanPeriod", 5000}});
  m_user.chooser.paths = Names({"/z.rph", "/a.rph"});
  edit(
      "Preprocess input / Variable List... / Available Vars?v,w, / Selected Vars?b, / ->> / OK / "
      "Preprocessed equations... / Equations=n = b / Parse / Cancel / Preprocessed equations... / "
      "Equations?x = b; / Equations=y = b; z = y / OK / Scan period :=65000 / "
      "Auto Start / Simulating / Select Files... / OK",
      R"({"preprocess": 1, "preNewVars": ["b", "v", "w"], "preEquationText": "y = b; z = y", "scanPeriod": 65000,
          "autoStart": 1, "simulating": 1, "inputFiles": ["/z.rph", "/a.rph"]})"_json);
  EXPECT_EQ(m_user.chooser.file.filter, "Heat Files (*.rph)|*.rph||");
  // Without a node the names are not known: no list opens.
  edit(
      "As fast as possible / Net nodes#0 / Delete Node / Preprocess input / Variable List... / Preprocess "
      "input / Simulating / OK",
      {{"scanPeriod", 10}, {"asFastAsPossible", 1}, {"simulating", 1}, {"plcNodes", json::array()}});
}

TEST_F(InputPage, RefusesSettingsThatCannotWork) {
  const std::string kPeriod = " / OK / !Please enter a whole number from 10 to 65000. / Scan period :=",
                    kWrong = " / OK / !Wrong Configuration!!\n If the ";
  m_page.SetConfiguration(Configured<CInputConfig>(R"({"plcNodes": [{"nodeName": "n"}]})"_json));
  m_user.chooser.paths = Names({"/a.rph"});
  const CSteps steps = {
      "Scan period :=9" + kPeriod + "65001" + kPeriod + kPeriod + "10",
      "Simulating" + kWrong + "logger is simulating you must select input logs files",
      "Select Files... / Preprocess input" + kWrong +
          "preprocess input option is checked you must select one variable at least from the variables list",
      "Connected / Net nodes#0 / Delete Node" + kWrong +
          "logger is going to be connected to a PLC net, you must select one net node at least"};
  EXPECT_EQ(m_user.Run(m_page, steps), IDCANCEL);
}

TEST_F(InputPage, ApplyAsksBeforeItErasesEquations) {
  const std::string kErased = " equations are not valid and will be erased.\n Continue anyway?|34",
                    kPre = "|Preprocess" + kErased, kTrend = "|Trendings/Grid" + kErased,
                    kOpen =
                        "|Changes can't be made until the Trendings/Grid configuration dialog is closed!|30";
  const struct {
    bool hasTrend, isTrendOpen;
    const char *pre, *trend;  // a may be read
    CTexts asked;
    std::string answers;  // yes or no
    bool isApplied;
    const char* left;  // of pre and of trend
  } kCases[] = {
      {true, false, "y = x; x = a", "t = t + a", {}, "yy", true, "y = x; x = a|t = t + a"},
      {true, false, "x = b", "t = a", {kPre}, "yy", true, "|t = a"},
      {true, false, "x = a", "t = x", {kTrend}, "ny", false, "x = a|t = x"},
      {true, false, "x = b", "t = b", {kPre}, "ny", false, "x = b|t = b"},
      {true, false, "x = b", "t = b", {kPre, kTrend}, "yn", false, "x = b|t = b"},
      {true, false, "x = b", "t = b", {kPre, kTrend}, "yy", true, "|"},
      {false, false, "x = b", "t = b", {kPre}, "yy", true, "|t = b"},
      {true, true, "x = b", "t = b", {kOpen}, "yy", false, "x = b|t = b"},
      {false, true, "x = a", "", {}, "yy", true, "x = a|"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.pre) + "|" + c.trend);
    json config = m_config;
    config.update({{"preprocess", 1}, {"preNewVars", {"a"}}, {"preEquationText", c.pre}});
    m_page.SetConfiguration(Configured<CInputConfig>(config));
    CLogTrendings trendings;
    CTrendConfig& trend = *trendings.GetOptions();
    trend = Configured<CTrendConfig>({{"equationText", c.trend}});
    m_page.m_pTrendOptions = c.hasTrend ? &trend : nullptr;
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &trendings);
    if (c.isTrendOpen) dialog.Create();
    m_user.boxes.user = [&] {
      m_user.boxes.answer = c.answers.at(m_user.boxes.asked.size()) == 'n' ? IDNO : IDYES;
    };
    EXPECT_EQ(m_user.Run(m_page, {"OK"}), c.isApplied ? IDOK : IDCANCEL);
    EXPECT_EQ(m_user.boxes.Take(), c.asked);
    CInputConfig left;
    m_page.GetConfiguration(left);
    EXPECT_EQ(left.m_preEquationText.Std() + "|" + trend.m_equationText.Std(), c.left);
    EXPECT_EQ(left.m_preEquations.IsEmpty(), left.m_preEquationText.IsEmpty());
    EXPECT_EQ(trend.m_equations.IsEmpty(), trend.m_equationText.IsEmpty());
  }
}

Script* g_script = nullptr;
// A form that the user accepts. Its result shows the values it was opened with.
int AcceptForm(int isNew) {
  g_script->record.value1 += isNew ? 10 : 20;
  g_script->record.plcType = SCRIPTED_ID;
  g_script->record.text1 = g_script->record.text2 = "typed";  // the texts it was given may be gone by now
  return 1;
}
int CancelForm(int isNew) { return AcceptForm(isNew), 0; }

json Node(const char* name) {
  json node =
      R"({"driver": {"plcType": 777, "value1": 1, "variableCount": 7}, "varNames": ["a", "b"],
    "scaler": [{"varName": "b", "scale": 2}, {"varName": "A", "scale": 3}, {"varName": "a", "scale": 4}]})"_json;
  node["nodeName"] = name;
  return node;
}

// The module "Scripted" has forms; the one before it, "Silent", has none.
class NodeDialogs : public InputPage {
 protected:
  NodeDialogs() {
    const CDriverFactory& factory = *CDriverFactory::Instance();
    m_module = LoadModule(factory.GetPath() + "/" + factory.GetDrivers()[1].m_fileName);
    Restart(AcceptForm);
  }
  ~NodeDialogs() override { FreeModule(m_module); }
  void Restart(int (*form)(int)) {
    g_script = reinterpret_cast<Script* (*)()>(FindExport(m_module, "FreshScript"))();
    g_script->functions.ShowConfig = form;
  }
  // The nodes of the page after steps.
  json Run(const json& nodes, const CSteps& steps) {
    m_page.SetConfiguration(Configured<CInputConfig>({{"plcNodes", nodes}}));
    m_user.Run(m_page, steps);
    return Held<CInputConfig>(m_page)["plcNodes"];
  }
  // The first node after steps in its dialog, which OK closes unless a box refuses it.
  json Edit(const CSteps& steps) {
    return Run(json::array({m_node}), CSteps{"Net nodes#0 / Edit net node..."} + steps)[0];
  }

  HMODULE m_module;
  json m_node = Node("node");
};

TEST_F(NodeDialogs, AnAcceptedFormConfiguresTheNode) {
  const struct {
    int (*form)(int);
    std::string driver;
    int value1;  // of a node that was configured before
  } kCases[] = {{AcceptForm, "Scripted", 21},
                {CancelForm, "Scripted", 1},
                {nullptr, "Scripted", 1},
                {AcceptForm, "Silent", 1}};
  for (const auto& c : kCases) {
    const std::string configure = "Type of PLC :=" + c.driver + " / Configure PLC / OK";
    Restart(c.form);
    const json driver = Edit({"Type of PLC :?Scripted / " + configure})["driver"];
    EXPECT_EQ(driver["value1"], c.value1);
    EXPECT_EQ(driver["variableCount"], 2);
    EXPECT_EQ(g_script->record.variableCount, c.driver == "Scripted" ? 2U : 0U) << "what the driver checks";
    Run(json::array(),
        {"Add net node... / " + configure,
         c.value1 == 21 ? "!You must assign a name to this node" : "!The PLC hasn't been configured"});
  }
}

TEST_F(NodeDialogs, TheFirstFaultIsTold) {
  const std::string kTaken = " / OK / !PLC name already used / ", kEdit = " / Edit net node...";
  const json nodes = json::array({Node("Oven"), Node("Ove"), Node("oVEN"), Node("\u00D6fen")});
  Run(nodes,
      {"Net nodes#0" + kEdit + kTaken + "Name :=oVEN" + kTaken + "Name :=\u00F6fen" + kTaken +
       "Variable List / Delete All / OK / Name := / OK / !You must assign a name to this node / "
       "Name :=Oven 2 / OK / !You must assign at least 1 variable to this node / Cancel / Net nodes#2" +
       kEdit + kTaken + "Name :=Oven 2 / OK / ! / Net nodes#0" + kEdit + " / OK / ! / Net nodes#0" + kEdit +
       " / Name :=oVEN" + kTaken + "Cancel"});
}

TEST_F(NodeDialogs, RowsOfTheScalerFollowTheVariables) {
  const CSteps remove = {"Variable List / Variable List#0 / Delete Variable"},
               insert = {"Insert  New Variable / New Variable=a / OK / OK"};
  const auto scale = [](QWidget* window) {
    auto* model = Find<QTableView>(window, "Scaler")->model();
    EXPECT_TRUE(model->setData(model->index(1, 1), "8"));
  };
  const auto rows = [&](const CSteps& steps) {
    const json node = Edit(steps + CSteps{"OK"});
    EXPECT_EQ(Edit(steps + CSteps{"Cancel"}), Edit({"Cancel"}));
    std::string all;
    for (const json& row : node["scaler"]) all += row["varName"].dump() + row["scale"].dump();
    return all;
  };
  EXPECT_EQ(rows(remove + CSteps{"OK / Variable List"} + insert), R"("b"2.0"a"1.0)");
  EXPECT_EQ(rows(remove + insert), R"("b"2.0"a"4.0)");
  EXPECT_EQ(rows({"Scaler", scale, "OK"}), R"("a"4.0"b"8.0)");
}

TEST_F(NodeDialogs, NodesAreAddedEditedAndDeleted) {
  json nodes = json::array();
  for (const char* name : {"x", "y", "x", "X", "", "x"}) nodes.push_back(Node(name));
  const std::string kAdd = " / Add net node...", kEdit = " / Edit net node...", kDelete = " / Delete Node",
                    kNone = " / !There isn't any node selected",
                    kInsert = " / Insert  New Variable / New Variable=";
  const auto make = [&](const char* name) {
    return kAdd + " / Type of PLC :=Scripted / Name :=" + name + " / Variable List" + kInsert + "v / OK" +
           kInsert + "w / OK / OK / Configure PLC / ";
  };
  const json held =
      Run(nodes, {"!" + kEdit + kNone + kDelete + kNone + " / Net nodes#2" + kDelete +
                  " / Net nodes?y,X,, / Net nodes#2" + kDelete + " / !Node index is wrong / Net nodes#1" +
                  kDelete + make("none") + "Cancel" + make("A") + "OK" + make("a") +
                  "OK / !PLC name already used / Name :=B / OK / Net nodes?y,,A,B, / Net nodes#2" + kEdit +
                  " / Name :=C / Cancel / Net nodes##3 / Name :?B / "
                  "Name :=C / Configure PLC / When away :?NaN / When away :=Hold the last values / "
                  "Alive variable :=w / OK / !The alive variable must have a name of its own / "
                  "Alive variable :=live / OK / Net nodes?y,,A,C, / Cancel"});
  json made = R"({"driver": {"plcType": 777, "text1": "typed", "text2": "typed"},
                              "varNames": ["v", "w"], "scaler": [{"varName": "v"}, {"varName": "w"}]})"_json;
  nodes = {Node("y"), Node(""), made, made};
  nodes[2].merge_patch({{"nodeName", "A"}, {"absent", "nan"}, {"driver", {{"value1", 20}}}});
  nodes[3].merge_patch(
      {{"nodeName", "C"}, {"absent", "hold"}, {"aliveVar", "live"}, {"driver", {{"value1", 50}}}});
  EXPECT_EQ(held, FieldsOf(Configured<CInputConfig>({{"plcNodes", nodes}}))["plcNodes"]);
}

TEST_F(NodeDialogs, WrittenNodesGetTheVariablesOfThePages) {
  const auto configured = [](const json& fields) { return Configured<CPlcMultiConfig>(fields); };
  CPlcWritePage page;
  page.SetConfiguration(configured({{"nodes", json::array({Node("a")})}}));
  page.SetConfiguration(configured({{"nodes", json::array({Node("c")})}, {"disableWriting", 1}}));
  CPlcMultiConfig target = configured({{"nodes", json::array({Node("replaced")})}});
  target.m_nodeNumber = 7;
  page.GetConfiguration(target);
  EXPECT_EQ(FieldsOf(target),
            FieldsOf(configured({{"nodes", {Node("a"), Node("c")}}, {"disableWriting", 1}})))
      << "not appended";
  EXPECT_EQ(target.m_nodeNumber, 7u);

  m_page.SetConfiguration(Configured<CInputConfig>(R"({"preprocess": 1, "preNewVars": ["p"]})"_json));
  CSmartPage smart;
  smart.SetConfiguration(Configured<CSmartConfig>(R"({"outputVars": ["s"]})"_json));
  page.SetInputPointer(&m_page);
  page.SetSmartPointer(&smart);
  m_user.Run(page, {"Disable Writing / Add  / Type of PLC :=Scripted / Name :=n / Configure PLC / Variable "
                    "List / Available Vars?p,s, / ->> / OK / OK / Net nodes?a,c,n, / Net nodes#1 / Delete  / "
                    "Net nodes##0 / Variable List / Selected Vars#0 / Delete Variable / OK / "
                    "Variable List / Insert  New Variable / New Variable=a / OK / ->> / OK / OK",
                    [&](QWidget*) { m_page.SetConfiguration({}); },  // its names are not known: no list opens
                    "Net nodes#0 / Edit  / Variable List / OK / OK"});
  const json held = Held<CPlcMultiConfig>(page);
  EXPECT_EQ(held["disableWriting"], 0);
  EXPECT_EQ(held["nodes"][0]["varNames"], json({"b", "a", "p", "s"}));
  EXPECT_EQ(held["nodes"][0]["scaler"][1]["scale"], 4) << "the scale is kept until OK";
  EXPECT_EQ(held["nodes"][1]["nodeName"], "n");
  page.DeleteList();
  EXPECT_EQ(Held<CPlcMultiConfig>(page)["nodes"], json::array());
}

}  // namespace
}  // namespace vastra
