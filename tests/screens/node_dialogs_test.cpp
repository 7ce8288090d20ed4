// The dialog of a PLC node, and the two pages that open it.
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

namespace vastra {
namespace {

using nlohmann::json;

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
  return {{"nodeName", name},
          {"driver", {{"plcType", SCRIPTED_ID}, {"value1", 1}, {"variableCount", 7}}},
          {"varNames", {"a", "b"}},
          {"scaler", json::parse(R"([{"varName": "b", "scale": 2}, {"varName": "gone", "scale": 3},
                                     {"varName": "a", "scale": 4}])")}};
}

// The module "Scripted" has forms; the one before it, "Silent", has none.
class NodeDialogs : public testing::Test {
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
  // The nodes after steps on a page that has nodes.
  json Run(const json& nodes, const CSteps& steps) {
    m_page.SetConfiguration(Configured<CInputConfig>({{"plcNodes", nodes}}));
    m_user.Run({&m_page}, steps);
    return Held<CInputConfig>(m_page)["plcNodes"];
  }
  // The first node after steps in its dialog, which OK closes unless a box refuses it.
  json Edit(const CSteps& steps) {
    return Run(json::array({m_node}), CSteps{"Net nodes#0 / Edit net node..."} + steps)[0];
  }

  CRecorder m_recorder;  // of the messages of links
  HMODULE m_module;
  CSheetUser m_user;
  CInputPage m_page;
  json m_node = Node("node");
};

TEST_F(NodeDialogs, AnAcceptedFormConfiguresTheNode) {
  const struct {
    const char* what;
    int (*form)(int);
    std::string driver;
    int value1;           // of a node that was configured before
    const char* newNode;  // what OK says of another
  } kCases[] = {
      {"accepted", AcceptForm, "Scripted", 21, "!You must assign a name to this node"},
      {"cancelled", CancelForm, "Scripted", 1, "!The PLC hasn't been configured"},
      {"no form", nullptr, "Scripted", 1, "!The PLC hasn't been configured"},
      {"another driver", AcceptForm, "Silent", 1, "!The PLC hasn't been configured"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string configure = "Type of PLC :=" + c.driver + " / Configure PLC / OK";
    Restart(c.form);
    const json driver = Edit({configure})["driver"];
    EXPECT_EQ(driver["value1"], c.value1);
    EXPECT_EQ(driver["variableCount"], 2);
    EXPECT_EQ(g_script->record.variableCount, c.driver == "Scripted" ? 2U : 0U) << "what the driver checks";
    Run(json::array(), {"Add net node... / " + configure, c.newNode});
  }
}

TEST_F(NodeDialogs, OpensOnTheDriverOfTheNode) {
  for (const auto& [id, steps] : {std::pair(SCRIPTED_ID, "! / Type of PLC :?Scripted"),
                                  {5, "! / Type of PLC :?Silent"},
                                  {6, "!Driver not found! / Type of PLC :?Silent"}}) {
    m_node["driver"]["plcType"] = id;
    Edit({steps});
  }
}

TEST_F(NodeDialogs, TheFirstFaultIsTold) {
  const std::string kTaken = " / OK / !PLC name already used / ";
  const json nodes = json::array({Node("Oven"), Node("Ove"), Node("oVEN"), Node("\u00D6fen")});
  Run(nodes,
      {"Net nodes#0 / Edit net node..." + kTaken + "Name :=oVEN" + kTaken + "Name :=\u00F6fen" + kTaken +
       "Variable List / Delete All / OK / Name := / OK / !You must assign a name to this node / "
       "Name :=Oven 2 / OK / !You must assign at least 1 variable to this node / Cancel / "
       "Net nodes#2 / Edit net node..." +
       kTaken +
       "Name :=Oven 2 / OK / ! / "
       "Net nodes#0 / Edit net node... / OK / ! / Net nodes#0 / Edit net node... / Name :=oVEN" +
       kTaken + "Cancel"});
}

TEST_F(NodeDialogs, RowsOfTheScalerFollowTheVariables) {
  const CSteps remove = {"Variable List / Variable List#0 / Delete Variable"},
               insert = {"Insert  New Variable / New Variable=a / OK / OK"};
  const auto scale = [](QWidget* window) {
    auto* model = Find<QTableView>(window, "Scaler")->model();
    EXPECT_TRUE(model->setData(model->index(1, 1), "8"));
  };
  const struct {
    const char* what;
    CSteps steps;
    const char* rows;
  } kCases[] = {
      {"not edited", {}, "a 4,b 2,"},
      {"removed and inserted again", remove + CSteps{"OK / Variable List"} + insert, "b 2,a 1,"},
      {"removed and inserted at once", remove + insert, "b 2,a 4,"},
      {"the removal is cancelled", remove + CSteps{"Cancel"}, "a 4,b 2,"},
      {"scaled", {"Scaler", scale, "OK"}, "a 4,b 8,"},
  };
  for (const auto& c : kCases) {
    std::string rows;
    const json node = Edit(c.steps + CSteps{"OK"});
    for (const json& row : node["scaler"])
      rows += row["varName"].get<std::string>() + " " + std::to_string(row["scale"].get<int>()) + ",";
    EXPECT_EQ(rows, c.rows) << c.what;
    EXPECT_EQ(Edit(c.steps + CSteps{"Cancel"}), Edit({"Cancel"})) << c.what;
  }
}

// Page: also TConfig, with the nodes in the list key.
template <class TConfig, class TPage>
void EditNodes(TPage& page, const char* key, const std::string& add, const std::string& edit,
               const std::string& remove) {
  const auto configured = [&](const json& nodes) { return Configured<TConfig>({{key, nodes}}); };
  json nodes = json::array();
  for (const char* name : {"x", "y", "x", "X", "", "x"}) nodes.push_back(Node(name));
  page.SetConfiguration(configured(nodes));
  const std::string kNone = " / !There isn't any node selected / ",
                    insert = "Insert  New Variable / New Variable=";
  const auto make = [&](const char* name) {
    return add + " / Type of PLC :=Scripted / Name :=" + name + " / Variable List / " + insert + "v / OK / " +
           insert + "w / OK / OK / Configure PLC / ";
  };
  CSheetUser().Run(
      {&page}, {edit + kNone + remove + kNone + "Net nodes#2 / " + remove +
                " / Net nodes?y,X,, / Net nodes#2 / " + remove + " / !Node index is wrong / Net nodes#1 / " +
                remove + " / " + make("none") + "Cancel / " + make("A") + "OK / " + make("a") +
                "OK / !PLC name already used / Name :=B / OK / Net nodes?y,,A,B, / Net nodes#2 / " + edit +
                " / Name :=C / Cancel / Net nodes##3 / Name :?B / "
                "Name :=C / Configure PLC / OK / Net nodes?y,,A,C, / Cancel"});
  json made = {{"driver", {{"plcType", SCRIPTED_ID}, {"text1", "typed"}, {"text2", "typed"}}},
               {"varNames", {"v", "w"}},
               {"scaler", json::parse(R"([{"varName": "v"}, {"varName": "w"}])")}};
  nodes = {Node("y"), Node(""), made, made};
  nodes[2].merge_patch({{"nodeName", "A"}, {"driver", {{"value1", 20}}}});
  nodes[3].merge_patch({{"nodeName", "C"}, {"driver", {{"value1", 50}}}});
  EXPECT_EQ(Held<TConfig>(page), FieldsOf(configured(nodes)));
}

TEST_F(NodeDialogs, NodesAreAddedEditedAndDeleted) {
  EditNodes<CInputConfig>(m_page, "plcNodes", "Add net node...", "Edit net node...", "Delete Node");
  Restart(AcceptForm);
  CPlcWritePage page;
  EditNodes<CPlcMultiConfig>(page, "nodes", "Add ", "Edit ", "Delete ");
}

TEST_F(NodeDialogs, ThePageOfWrittenNodesAppendsNodesAndOffersTheVariablesOfThePages) {
  CPlcWritePage page;
  page.SetConfiguration(Configured<CPlcMultiConfig>({{"nodes", json::array({Node("a")})}}));
  page.SetConfiguration(
      Configured<CPlcMultiConfig>({{"nodes", json::array({Node("c")})}, {"disableWriting", 1}}));
  CPlcMultiConfig target = Configured<CPlcMultiConfig>({{"nodes", json::array({Node("replaced")})}});
  target.m_nodeNumber = 7;
  page.GetConfiguration(target);
  EXPECT_EQ(
      FieldsOf(target),
      FieldsOf(Configured<CPlcMultiConfig>({{"nodes", {Node("a"), Node("c")}}, {"disableWriting", 1}})));
  EXPECT_EQ(target.m_nodeNumber, 7u);

  const auto source = Configured<CInputConfig>(R"({"preprocess": 1, "preNewVars": ["p"]})");
  m_page.SetConfiguration(source);
  CSmartPage smart;
  smart.SetConfiguration(Configured<CSmartConfig>(R"({"outputVars": ["s"]})"));
  page.SetInputPointer(&m_page);
  page.SetSmartPointer(&smart);
  m_user.Run({&page},
             {"Disable Writing / Add  / Variable List / Available Vars?p,s, / Cancel / Cancel / "
              "Net nodes#0 / Edit  / Variable List / Selected Vars#0 / Delete Variable / OK / "
              "Variable List / Insert  New Variable / New Variable=a / OK / ->> / OK / OK",
              [&](QWidget*) { m_page.SetConfiguration({}); },  // its names are not known: no list opens
              "Net nodes#0 / Edit  / Variable List / OK / OK"});
  const json held = Held<CPlcMultiConfig>(page);
  EXPECT_EQ(held["disableWriting"], 0);
  EXPECT_EQ(held["nodes"][0]["varNames"], json({"b", "a", "p", "s"}));
  EXPECT_EQ(held["nodes"][0]["scaler"][1]["scale"], 4) << "the scale is kept until OK";
  page.DeleteList();
  EXPECT_EQ(Held<CPlcMultiConfig>(page)["nodes"], json::array());
}

}  // namespace
}  // namespace vastra
