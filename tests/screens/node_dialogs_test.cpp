// The dialog of a PLC node, and the two pages that open it.
#include <gtest/gtest.h>

#include <QTableView>

#include "tests/screens/node_pages.h"
#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/plc_write_page.h"

namespace vastra {
namespace {

constexpr CControl kListControls[] = {{CControl::listBox, "Names", {7, 7, 100, 100}}};
constexpr CDialogTemplate kListTemplate = {"", {114, 114}, kListControls};

CPlcNodeConfig Node(const char* name) {
  CPlcNodeConfig node;
  node.m_nodeName = name;
  node.m_driver.plcType = SCRIPTED_ID;
  node.m_driver.value1 = 1;
  node.m_varNames = Names({"a", "b"});
  for (const auto& [variable, scale] : {std::pair("b", 2.0f), {"gone", 3.0f}, {"a", 4.0f}}) {
    CScalerConfigNode row;
    row.m_varName = variable;
    row.m_scale = scale;
    node.m_scaler.m_nodes.Add(row);
  }
  return node;
}

class NodeDialog : public testing::Test {
 protected:
  NodeDialog() { m_list.Create(); }
  // Edits m_node, or a new one. OK closes the dialog unless a box refuses it.
  int Run(const CSteps& steps, bool isNew = false) {
    CDriverTypeDlg dialog;
    dialog.m_pNameList = m_pNames;
    dialog.m_pScaler = &m_node.m_scaler;
    if (!isNew) dialog.m_driverId = static_cast<UINT>(m_node.m_driver.plcType);
    dialog.m_driver = m_node.m_driver;
    dialog.m_name = m_node.m_nodeName;
    dialog.m_varNames = m_node.m_varNames;
    const int result = m_user.Run(dialog, steps);
    m_node.m_driver = dialog.m_driver;
    m_node.m_varNames = dialog.m_varNames;
    return result;
  }
  std::string Scales() const {
    CString rows;
    for (const CScalerConfigNode& row : m_node.m_scaler.m_nodes) {
      CString text;
      text.Format("%s %g,", row.m_varName.Std().c_str(), static_cast<double>(row.m_scale));
      rows += text;
    }
    return rows.Std();
  }

  CSheetUser m_user;
  CScriptedDriver m_driver;
  CDialog m_list{kListTemplate};
  CListBox* m_pNames = nullptr;
  CPlcNodeConfig m_node = Node("node");
};

TEST_F(NodeDialog, AnAcceptedFormConfiguresTheNode) {
  const std::string kUnconfigured = "!The PLC hasn't been configured";
  const struct {
    const char* what;
    bool isNew;
    int (*form)(int);
    const char* driver;
    int value1;
    std::string told;
  } kCases[] = {
      {"new", true, AcceptForm, "Scripted", 10, "!"},
      {"new, cancelled", true, CancelForm, "Scripted", 1, kUnconfigured},
      {"new, without a form", true, nullptr, "Scripted", 1, kUnconfigured},
      {"new, another driver", true, AcceptForm, "Silent", 1, kUnconfigured},
      {"known", false, AcceptForm, "Scripted", 21, "!"},
      {"known, cancelled", false, CancelForm, "Scripted", 1, "!"},
      {"known, another driver", false, AcceptForm, "Silent", 1, "!"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    m_driver.Restart(c.form);
    m_node = Node("node");
    Run({std::string("Type of PLC :=") + c.driver + " / Configure PLC / OK / " + c.told}, c.isNew);
    EXPECT_EQ(m_node.m_driver.value1, c.value1);
    EXPECT_EQ(m_node.m_driver.variableCount, 2u);
  }
  m_driver.Restart();
  Run({"Type of PLC :=Scripted / Configure PLC / Configure PLC / OK"}, true);
  EXPECT_EQ(m_node.m_driver.value1, 30) << "the second time the form is not new";
  m_driver.Restart(CancelForm);
  m_node.m_driver.variableCount = 7;
  Run({"Configure PLC", "Cancel"});
  EXPECT_EQ(g_script->record.variableCount, 2u) << "the driver checks the current variables";
  EXPECT_EQ(m_node.m_driver.variableCount, 7u) << "a cancelled form changes the node";
}

TEST_F(NodeDialog, OpensOnTheDriverOfTheNode) {
  for (const auto& [id, steps] : {std::pair(SCRIPTED_ID, CSteps{"! / Type of PLC :?Scripted"}),
                                  {5, {"!", "Type of PLC :?Silent"}},
                                  {6, {"!Driver not found!", "Type of PLC :?Silent"}}}) {
    m_node.m_driver.plcType = id;
    Run(steps);
  }
}

TEST_F(NodeDialog, TheFirstFaultIsTold) {
  const std::string kTaken = "!PLC name already used";
  const struct {
    bool isNew;
    const char *name, *typed;
    CStringArray variables, taken;
    std::string told;
  } kCases[] = {
      {true, "", "", {}, {}, "!The PLC hasn't been configured"},
      {false, "node", "", {}, {}, "!You must assign a name to this node"},
      {false, "node", "x", {}, Names({"x"}), "!You must assign at least 1 variable to this node"},
      {false, "Oven", "Oven", Names({"v"}), Names({"Oven", "other"}), "!"},
      {false, "Oven", "Oven", Names({"v"}), Names({"Oven", "oVEN"}), kTaken},
      {false, "oVEN", "oVEN", Names({"v"}), Names({"Oven", "x", "oVEN"}), kTaken},
      {false, "Oven", "oVEN", Names({"v"}), Names({"Oven"}), kTaken},
      {false, "Oven", "\u00F6fen", Names({"v"}), Names({"Oven", "\u00D6fen"}), kTaken},
      {false, "Oven", "Oven 2", Names({"v"}), Names({"Oven", "Ove"}), "!"},
      {false, "Oven", "Oven", Names({"v"}), Names({"other"}), "!"},
      {false, "Oven", "Oven", Names({"v"}), {}, "!"},
  };
  for (const auto& c : kCases) {
    m_list.List("Names").SetTexts(c.taken);
    for (CListBox* list : {&m_list.List("Names"), static_cast<CListBox*>(nullptr)}) {
      m_node.m_nodeName = c.name;
      m_node.m_varNames = c.variables;
      m_pNames = list;
      const std::string told = !list && c.told == kTaken ? "!" : c.told;
      EXPECT_EQ(Run({std::string("Name :=") + c.typed, "OK", told}, c.isNew), told == "!" ? IDOK : IDCANCEL);
    }
  }
}

TEST_F(NodeDialog, RowsOfTheScalerFollowTheVariables) {
  const CSteps remove = {"Variable List / Variable List#0 / Delete Variable"},
               insert = {"Insert  New Variable / New Variable=a / OK / OK"};
  const CSteps scale = {"Scaler",
                        [](QWidget* window) {
                          auto* model = Find<QTableView>(window, "Scaler")->model();
                          EXPECT_TRUE(model->setData(model->index(1, 1), "8"));
                        },
                        "OK"};
  const struct {
    const char* what;
    CSteps steps;
    const char* rows;
  } kCases[] = {
      {"not edited", {}, "a 4,b 2,"},
      {"removed and inserted again", remove + CSteps{"OK / Variable List"} + insert, "b 2,a 1,"},
      {"removed and inserted at once", remove + insert, "b 2,a 4,"},
      {"the removal is cancelled", remove + CSteps{"Cancel"}, "a 4,b 2,"},
      {"scaled", scale, "a 4,b 8,"},
  };
  for (const auto& c : kCases) {
    for (const char* end : {"OK", "Cancel"}) {
      m_node = Node("node");
      Run(c.steps + CSteps{end});
      EXPECT_EQ(Scales(), *end == 'O' ? c.rows : "b 2,gone 3,a 4,") << c.what;
    }
  }
  CDriverTypeDlg alone;
  alone.m_varNames = Names({"a"});
  alone.UpdateScalers(0);  // there is no node to write to
}

void AddNode(CInputConfig& config, const CPlcNodeConfig& node) {
  config.m_plcNodes.AddTail(new CPlcNodeConfig(node));
}
void AddNode(CPlcMultiConfig& config, const CPlcNodeConfig& node) {
  config.m_nodes.AddTail(new CPlcSingleConfig);
  config.m_nodes.GetTail()->m_node = node;
}

template <class TPage, class TConfig>
void EditNodes(const std::string& add, const std::string& edit, const std::string& remove) {
  CSheetUser user;
  const CScriptedDriver driver;
  TPage page;
  TConfig config;
  for (const char* name : {"x", "y", "x", "X", "", "x"}) AddNode(config, Node(name));
  page.SetConfiguration(config);
  const std::string kNone = "!There isn't any node selected";
  user.Run({&page},
           CSteps{edit, kNone, remove, kNone, "Net nodes#2", remove, "Net nodes?y,X,,", "Net nodes#2", remove,
                  "!Node index is wrong", "Net nodes#1", remove, add} +
               MakeNode("none", "Cancel") + CSteps{add} + MakeNode("A") + CSteps{add} + MakeNode("a") +
               CSteps{"!PLC name already used", "Name :=B", "OK", "Net nodes?y,,A,B,", "Net nodes#2", edit,
                      "Name :=A", "OK", "Net nodes#2", edit, "Name :=C", "Cancel", "Net nodes##3", "Name :?B",
                      "Name :=C", "Configure PLC", "OK", "Net nodes?y,,A,C,", "Cancel"});
  const std::string
      kOld =
          "plcType:777|value1:1|}varNames:a,b,|scaler[{scale:2|varName:b|}{scale:3|varName:gone|}{scale:4|"
          "varName:a|}}}",
      kForm = "variableCount:2|plcType:777|text1:typed|text2:typed|value1:",
      kNew = "|}varNames:v,w,|scaler[{scale:1|varName:v|}{scale:1|varName:w|}}}";
  const std::string held = Held<TConfig>(page, config);
  EXPECT_EQ(held.substr(held.find('[')), "[{nodeName:y|" + kOld + "{" + kOld + "{nodeName:A|" + kForm + "20" +
                                             kNew + "{nodeName:C|" + kForm + "50" + kNew + "}");
}

TEST(NodePages, NodesAreAddedEditedAndDeleted) {
  EditNodes<CInputPage, CInputConfig>("Add net node...", "Edit net node...", "Delete Node");
  EditNodes<CPlcWritePage, CPlcMultiConfig>("Add ", "Edit ", "Delete ");
}

TEST(PlcWritePage, AppendsNodesAndOffersTheVariablesOfThePages) {
  CPlcWritePage page;
  CPlcMultiConfig config, second, target;
  second.m_disableWriting = 1;
  AddNode(config, Node("a"));
  AddNode(second, Node("c"));
  page.SetConfiguration(config);
  page.SetConfiguration(second);
  AddNode(config, Node("c"));
  config.m_disableWriting = 1;
  target.m_nodeNumber = 7;
  page.GetConfiguration(target);
  EXPECT_EQ(TextOf(target), TextOf(config));
  EXPECT_EQ(target.m_nodeNumber, 7u);

  const CScriptedDriver driver;
  CInputPage input;
  SetInput(input, {"p"});
  CSmartPage smart;
  SetSmart(smart, {"s"});
  page.SetInputPointer(&input);
  page.SetSmartPointer(&smart);
  const std::string look = "Variable List / Available Vars?p,s, / Cancel / Cancel / Net nodes#0 / Edit  / ",
                    remove = "Variable List / Selected Vars#0 / Delete Variable / OK / ",
                    insert = "Variable List / Insert  New Variable / New Variable=a / OK / ->> / OK / OK";
  CSheetUser user;
  user.Run({&page}, {"Disable Writing / Add  / " + look + remove + insert,
                     [&](QWidget*) { SetInput(input, {}); },  // its names are not known: no list opens
                     "Net nodes#0 / Edit  / Variable List / OK / OK"});
  page.GetConfiguration(target);
  const CPlcNodeConfig& node = target.m_nodes.GetHead()->m_node;
  EXPECT_EQ(Joined(node.m_varNames), "b,a,p,s,");
  EXPECT_EQ(node.m_scaler.m_nodes[1].m_scale, 4) << "the scale is kept until OK";
  page.DeleteList();
  EXPECT_EQ(Held<CPlcMultiConfig>(page), "nodes[}");
}

}  // namespace
}  // namespace vastra
