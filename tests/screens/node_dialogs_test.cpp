// The dialog of one PLC node, and the two pages that open it.
#include <gtest/gtest.h>

#include <QTableView>

#include "tests/screens/node_pages.h"
#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/smart_page.h"

namespace vastra {
namespace {

constexpr CControl kListControls[] = {{CControl::listBox, "Names", {7, 7, 100, 100}}};
constexpr CDialogTemplate kListTemplate = {"", {114, 114}, kListControls};

class NodeDialog : public testing::Test {
 protected:
  NodeDialog() {
    m_list.Create();
    m_node.m_driver.plcType = SCRIPTED_ID;
    m_node.m_driver.value1 = 1;
    m_node.m_nodeName = "node";
    m_node.m_varNames = Names({"a", "b"});
  }
  void AddRow(const char* name, float scale) {
    CScalerConfigNode row;
    row.m_varName = name;
    row.m_scale = scale;
    row.m_lowLimit = -scale;
    row.m_highLimit = scale + 1;
    row.m_clamping = 1;
    m_node.m_scaler.m_nodes.Add(row);
  }
  // Edits m_node, or a new one, in the mode; gives what the boxes said. OK ends it if they said nothing.
  CTexts Run(const CUser& user, const char* end = "OK", bool isNew = false, int mode = 0) {
    CDriverTypeDlg dialog;
    dialog.m_mode = mode;
    dialog.m_pInputPage = m_pInput;
    dialog.m_pSmartPage = m_pSmart;
    dialog.m_pNameList = m_pNames;
    dialog.m_pScaler = &m_node.m_scaler;
    if (!isNew) dialog.m_driverId = static_cast<UINT>(m_node.m_driver.plcType);
    dialog.m_driver = m_node.m_driver;
    dialog.m_name = m_node.m_nodeName;
    dialog.m_varNames = m_node.m_varNames;
    int result = -1;
    WhileModal([&] { result = dialog.DoModal(); },
               [&](QWidget* window) {
                 user(window);
                 Click(window, end);
               });
    m_node.m_driver = dialog.m_driver;
    m_node.m_nodeName = dialog.m_name;
    m_node.m_varNames = dialog.m_varNames;
    const CTexts asked = m_prompter.Take();
    EXPECT_EQ(asked.empty() && std::string(end) == "OK" ? IDOK : IDCANCEL, result);
    return asked;
  }
  // "a 2 -2 3 1," for each row of the node's scaler.
  std::string Rows() const {
    CString rows;
    for (const CScalerConfigNode& row : m_node.m_scaler.m_nodes) {
      CString text;
      text.Format("%s %g %g %g %d,", row.m_varName.Std().c_str(), static_cast<double>(row.m_scale),
                  static_cast<double>(row.m_lowLimit), static_cast<double>(row.m_highLimit), row.m_clamping);
      rows += text;
    }
    return rows.Std();
  }

  CTestPrompter m_prompter;
  CScriptedDriver m_driver;
  CDialog m_list{kListTemplate};
  CListBox* m_pNames = nullptr;
  CInputPage* m_pInput = nullptr;
  CSmartPage* m_pSmart = nullptr;
  CPlcNodeConfig m_node;
};

TEST_F(NodeDialog, AnAcceptedFormConfiguresTheNode) {
  const CTexts kUnconfigured = {"|The PLC hasn't been configured|30"};
  const struct {
    const char* what;
    bool isNew;
    int (*form)(int);
    int driver;
    int value1;
    CTexts asked;
  } kCases[] = {
      {"new", true, AcceptForm, kScripted, 10, {}},
      {"new, cancelled", true, CancelForm, kScripted, 1, kUnconfigured},
      {"new, without a form", true, nullptr, kScripted, 1, kUnconfigured},
      {"new, another driver", true, AcceptForm, kSilent, 1, kUnconfigured},
      {"known", false, AcceptForm, kScripted, 21, {}},
      {"known, cancelled", false, CancelForm, kScripted, 1, {}},
      {"known, without a form", false, nullptr, kScripted, 1, {}},
      {"known, another driver", false, AcceptForm, kSilent, 1, {}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    m_driver.Restart();
    g_script->functions.ShowConfig = c.form;
    m_node.m_driver.value1 = 1;
    EXPECT_EQ(c.asked, Run(All({Select(c.driver), Press("Configure PLC")}), "OK", c.isNew));
    EXPECT_EQ(c.value1, m_node.m_driver.value1);
    EXPECT_EQ(2u, m_node.m_driver.variableCount);
  }
  m_driver.Restart();
  const CUser twice = All({Select(kScripted), Press("Configure PLC"), Press("Configure PLC")});
  EXPECT_EQ(CTexts(), Run(twice, "OK", true));
  EXPECT_EQ(30, m_node.m_driver.value1) << "a form that was accepted is not new any more";
  m_driver.Restart();
  g_script->functions.ShowConfig = CancelForm;
  m_node.m_driver.variableCount = 7;
  Run(All({Select(kScripted), Press("Configure PLC")}), "Cancel");
  EXPECT_EQ(2u, g_script->record.variableCount) << "what the driver judges by";
  EXPECT_EQ(7u, m_node.m_driver.variableCount) << "a form that was not accepted changes the settings";
}

TEST_F(NodeDialog, OpensOnTheDriverOfTheNode) {
  const struct {
    int id;
    const char* shown;
    CTexts asked;
  } kCases[] = {{SCRIPTED_ID, "Scripted", {}}, {5, "Silent", {}}, {6, "Silent", {"|Driver not found!|30"}}};
  for (const auto& c : kCases) {
    m_node.m_driver.plcType = c.id;
    EXPECT_EQ(c.asked, Run(
                           [&](QWidget* window) {
                             auto* combo = Find<QComboBox>(window, "Type of PLC :");
                             EXPECT_EQ(2, combo->count());
                             EXPECT_EQ(c.shown, combo->currentText().toStdString());
                           },
                           "Cancel"));
  }
}

TEST_F(NodeDialog, TellsTheFirstThingThatIsMissing) {
  const struct {
    bool isNew;
    const char *name, *typed;
    CStringArray variables;
    CStringArray taken;
    std::string fault;  // empty: there is none
  } kCases[] = {
      {true, "", "", {}, {}, "The PLC hasn't been configured"},
      {true, "", "x", Names({"v"}), Names({"x"}), "The PLC hasn't been configured"},
      {false, "node", "", {}, Names({""}), "You must assign a name to this node"},
      {false, "node", "x", {}, Names({"x"}), "You must assign at least 1 variable to this node"},
      {false, "Oven", "Oven", Names({"v"}), Names({"Oven", "other"}), ""},
      {false, "Oven", "Oven", Names({"v"}), Names({"Oven", "oVEN"}), "PLC name already used"},
      {false, "oVEN", "oVEN", Names({"v"}), Names({"Oven", "x", "oVEN"}), "PLC name already used"},
      {false, "Oven", "oVEN", Names({"v"}), Names({"Oven"}), "PLC name already used"},
      {false, "Oven", "Other", Names({"v"}), Names({"Oven", "oTHER"}), "PLC name already used"},
      {false, "Oven", "\u00F6fen", Names({"v"}), Names({"Oven", "\u00D6fen"}), "PLC name already used"},
      {false, "Oven", "Oven 2", Names({"v"}), Names({"Oven", "Ove"}), ""},
      {false, "Oven", "Oven", Names({"v"}), Names({"other"}), ""},
      {false, "", "Oven", Names({"v"}), Names({"", "Oven"}), "PLC name already used"},
      {false, "Oven", "Oven", Names({"v"}), {}, ""},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.name) + " becomes " + c.typed);
    m_list.List("Names").SetTexts(c.taken);
    for (CListBox* list : {&m_list.List("Names"), static_cast<CListBox*>(nullptr)}) {
      m_node.m_nodeName = c.name;
      m_node.m_varNames = c.variables;
      m_pNames = list;
      const bool isTold = !c.fault.empty() && (list || c.fault != "PLC name already used");
      const CTexts asked = isTold ? CTexts{"|" + c.fault + "|30"} : CTexts();
      EXPECT_EQ(asked, Run([&](QWidget* window) { Find<QLineEdit>(window, "Name :")->setText(c.typed); },
                           "OK", c.isNew));
    }
  }
}

CUser DeleteVariable(int row) { return All({Mark("Variable List", row), Press("Delete Variable")}); }

TEST_F(NodeDialog, RowsOfTheScalerFollowTheVariables) {
  const CUser scale = In("Scaler", [](QWidget* window) {
    auto* view = Find<QTableView>(window, "Scaler");
    EXPECT_TRUE(view->model()->setData(view->model()->index(1, 1), "8"));
  });
  const struct {
    const char* what;
    CUser user;
    const char* rows;
  } kCases[] = {
      {"untouched", NoUser, "a 4 -4 5 1,b 2 -2 3 1,"},
      {"taken out and put back",
       All({In("Variable List", DeleteVariable(0)), In("Variable List", AddVariable("a"))}),
       "b 2 -2 3 1,a 1 0 0 0,"},
      {"put back at once", In("Variable List", All({DeleteVariable(0), AddVariable("a")})),
       "b 2 -2 3 1,a 4 -4 5 1,"},
      {"taken out, but not accepted", All({In("Variable List", DeleteVariable(0), "Cancel")}),
       "a 4 -4 5 1,b 2 -2 3 1,"},
      {"another case", In("Variable List", AddVariable("GONE")), "a 4 -4 5 1,b 2 -2 3 1,GONE 1 0 0 0,"},
      {"scaled", scale, "a 4 -4 5 1,b 8 -2 3 1,"},
      {"scaled, then taken out", All({scale, In("Variable List", DeleteVariable(0))}), "b 8 -2 3 1,"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    for (const char* end : {"OK", "Cancel"}) {
      m_node.m_varNames = Names({"a", "b"});
      m_node.m_scaler.m_nodes.RemoveAll();
      for (const auto& [name, factor] : {std::pair("b", 2.0f), {"gone", 3.0f}, {"a", 4.0f}, {"b", 5.0f}})
        AddRow(name, factor);
      EXPECT_EQ(CTexts(), Run(c.user, end));
      EXPECT_EQ(end == std::string("OK") ? c.rows : "b 2 -2 3 1,gone 3 -3 4 1,a 4 -4 5 1,b 5 -5 6 1,",
                Rows());
    }
  }
  CDriverTypeDlg alone;
  alone.m_varNames = Names({"a"});
  alone.UpdateScalers(0);  // there is no node to write to
}

TEST_F(NodeDialog, ANodeThatIsWrittenHasTheVariablesOfThePages) {
  CInputPage input, unknown;
  SetInput(input, {"p", "q"});
  SetInput(unknown, {});
  CSmartPage smart;
  SetSmart(smart, {"s"});
  AddRow("a", 4);
  const struct {
    CInputPage* input;
    CSmartPage* smart;
    const char* offered;  // null: no dialog
    const char *chosen, *rows;
  } kCases[] = {
      {nullptr, nullptr, "", "b,a,", "b 1 0 0 0,a 4 -4 5 1,"},
      {&input, nullptr, "p,q,", "b,a,p,q,", "b 1 0 0 0,a 4 -4 5 1,p 1 0 0 0,q 1 0 0 0,"},
      {&input, &smart, "p,q,s,", "b,a,p,q,s,", "b 1 0 0 0,a 4 -4 5 1,p 1 0 0 0,q 1 0 0 0,s 1 0 0 0,"},
      {&unknown, &smart, nullptr, "a,b,", "a 4 -4 5 1,b 1 0 0 0,"},
  };
  for (const auto& c : kCases) {
    m_pInput = c.input;
    m_pSmart = c.smart;
    m_node.m_varNames = Names({"a", "b"});
    const CUser takeOut = All({Mark("Selected Vars", 0), Press("Delete Variable")});
    const CUser choose = All({[&](QWidget* window) {
                                CStringArray offered;
                                for (const std::string& name : Offered(window)) offered.Add(CString(name));
                                EXPECT_EQ(c.offered, Joined(offered));
                              },
                              AddVariable("a"), Press("->>")});
    const CUser user = c.offered ? All({In("Variable List", takeOut), In("Variable List", choose)})
                                 : [](QWidget* window) { Quietly(window, "Variable List"); };
    EXPECT_EQ(CTexts(), Run(user, "OK", false, CDriverTypeDlg::writeNode));
    EXPECT_EQ(c.chosen, Joined(m_node.m_varNames));
    EXPECT_EQ(c.rows, Rows()) << "a scale went with its variable, which came back";
  }
}

// One of the two pages.
struct CNodePage {
  const char *add, *edit, *remove;
  void (*set)(CPropertyPage& page, const COwnedList<CPlcNodeConfig>& nodes);
  COwnedList<CPlcNodeConfig> (*get)(const CPropertyPage& page);
  const CRuntimeClass& kind;
};
const CNodePage kPages[] = {
    {"Add net node...", "Edit net node...", "Delete Node",
     [](CPropertyPage& page, const COwnedList<CPlcNodeConfig>& nodes) {
       CInputConfig config;
       config.m_plcNodes = nodes;
       static_cast<CInputPage&>(page).SetConfiguration(config);
     },
     [](const CPropertyPage& page) {
       CInputConfig config;
       static_cast<const CInputPage&>(page).GetConfiguration(config);
       return config.m_plcNodes;
     },
     CInputPage::classCInputPage},
    {"Add ", "Edit ", "Delete ",
     [](CPropertyPage& page, const COwnedList<CPlcNodeConfig>& nodes) {
       CPlcMultiConfig config;
       for (const CPlcNodeConfig* node : nodes) {
         config.m_nodes.AddTail(new CPlcSingleConfig);
         config.m_nodes.GetTail()->m_node = *node;
       }
       static_cast<CPlcWritePage&>(page).SetConfiguration(config);
     },
     [](const CPropertyPage& page) {
       CPlcMultiConfig config;
       static_cast<const CPlcWritePage&>(page).GetConfiguration(config);
       COwnedList<CPlcNodeConfig> nodes;
       for (const CPlcSingleConfig* single : config.m_nodes)
         nodes.AddTail(new CPlcNodeConfig(single->m_node));
       return nodes;
     },
     CPlcWritePage::classCPlcWritePage},
};

CTexts ShownNodes(QWidget* window) { return Shown(Find<QListWidget>(window, "Net nodes")); }

TEST(NodePages, NodesAreAddedAndEditedInTheirDialog) {
  for (const CNodePage& row : kPages) {
    CTestPrompter prompter;
    const CScriptedDriver driver;
    const std::unique_ptr<CPropertyPage> page(static_cast<CPropertyPage*>(row.kind.CreateObject()));
    const CTexts kTaken = {"|PLC name already used|30"}, kNone = {"|There isn't any node selected|30"};
    const CUser user = [&](QWidget* window) {
      auto* list = Find<QListWidget>(window, "Net nodes");
      Click(window, row.edit);
      EXPECT_EQ(kNone, prompter.Take());
      In(row.add, MakeNode("none"), "Cancel")(window);
      In(row.add, MakeNode("A"))(window);
      In(row.add, All({MakeNode("a"), Press("OK"), Type("Name :", "B")}))(window);
      EXPECT_EQ(kTaken, prompter.Take());
      EXPECT_EQ((CTexts{"A", "B"}), Shown(list));

      list->setCurrentRow(0);
      In(row.edit, Type("Name :", "A"))(window);
      list->setCurrentRow(0);
      In(row.edit, Type("Name :", "C"), "Cancel")(window);
      EXPECT_EQ((CTexts{"A", "B"}), Shown(list));
      WhileModal([&] { DoubleClick(list, 1); },
                 [](QWidget* inner) {
                   EXPECT_EQ("B", Find<QLineEdit>(inner, "Name :")->text().toStdString());
                   All({Type("Name :", "C"), Press("Configure PLC"), Press("OK")})(inner);
                 });
      EXPECT_EQ((CTexts{"A", "C"}), Shown(list));
    };
    EXPECT_EQ(IDCANCEL, RunSheet({page.get()}, user, "Cancel"));
    std::string nodes;
    for (const CPlcNodeConfig* node : row.get(*page)) {
      CString text;
      text.Format("%s: %d %d %u %s %d|", node->m_nodeName.Std().c_str(), node->m_driver.plcType,
                  node->m_driver.value1, node->m_driver.variableCount, Joined(node->m_varNames).c_str(),
                  node->m_scaler.m_nodes.GetSize());
      nodes += text.Std();
    }
    EXPECT_EQ("A: 777 20 2 v,w, 2|C: 777 50 2 v,w, 2|", nodes);
    EXPECT_EQ(CTexts(), prompter.Take());
  }
}

TEST(NodePages, AllNodesOfTheNameThatIsMarkedAreDeleted) {
  for (const CNodePage& row : kPages) {
    CTestPrompter prompter;
    const std::unique_ptr<CPropertyPage> page(static_cast<CPropertyPage*>(row.kind.CreateObject()));
    COwnedList<CPlcNodeConfig> nodes;
    for (const char* name : {"x", "y", "x", "X", "", "x"}) {
      nodes.AddTail(new CPlcNodeConfig);
      nodes.GetTail()->m_nodeName = name;
    }
    row.set(*page, nodes);
    RunSheet(
        {page.get()},
        [&](QWidget* window) {
          Click(window, row.remove);
          EXPECT_EQ(CTexts{"|There isn't any node selected|30"}, prompter.Take());
          All({Mark("Net nodes", 2), Press(row.remove)})(window);
          EXPECT_EQ((CTexts{"y", "X", ""}), ShownNodes(window));
          All({Mark("Net nodes", 2), Press(row.remove)})(window);
          EXPECT_EQ(CTexts{"|Node index is wrong|30"}, prompter.Take());
          EXPECT_EQ((CTexts{"y", "X", ""}), ShownNodes(window));
        },
        "Cancel");
    EXPECT_EQ(3, row.get(*page).GetCount());
  }
}

TEST(PlcWritePage, KeepsTheNumberOfItsTarget) {
  CPlcWritePage page;
  CPlcMultiConfig config;
  config.m_disableWriting = 1;
  for (const char* name : {"a", "b"}) {
    config.m_nodes.AddTail(new CPlcSingleConfig);
    config.m_nodes.GetTail()->m_node.m_nodeName = name;
    config.m_nodes.GetTail()->m_node.m_scaler.m_nodes.SetSize(2);
  }
  page.SetConfiguration(config);
  config.m_disableWriting = 0;
  delete config.m_nodes.RemoveHead();
  page.SetConfiguration(config);
  CPlcMultiConfig target;
  target.m_nodeNumber = 7;
  target.m_disableWriting = 1;
  target.m_nodes.AddTail(new CPlcSingleConfig);
  page.GetConfiguration(target);
  const auto names = [&] {
    std::string all;
    for (const CPlcSingleConfig* single : target.m_nodes) {
      all += single->m_node.m_nodeName.Std();
      EXPECT_EQ(2, single->m_node.m_scaler.m_nodes.GetSize());
    }
    return all;
  };
  EXPECT_EQ("abb", names());
  EXPECT_EQ(7u, target.m_nodeNumber);
  EXPECT_EQ(0, target.m_disableWriting);
  RunSheet({&page}, Press("Disable Writing"));
  page.DeleteList();
  page.GetConfiguration(target);
  EXPECT_EQ("", names());
  EXPECT_EQ(1, target.m_disableWriting);
}

TEST(PlcWritePage, OffersWhatTheOtherPagesGive) {
  const CScriptedDriver driver;
  CInputPage input;
  SetInput(input, {"p"});
  CSmartPage smart;
  SetSmart(smart, {"s"});
  CPlcWritePage page;
  page.SetInputPointer(&input);
  page.SetSmartPointer(&smart);
  const CUser look = In("Variable List", [](QWidget* window) {
    EXPECT_EQ((CTexts{"p", "s"}), Offered(window));
  });
  const CUser user = All({In("Add ", MakeNode("A")), In("Add ", look, "Cancel"), Mark("Net nodes", 0),
                          In("Edit ", look, "Cancel")});
  RunSheet({&page}, user);
}

}  // namespace
}  // namespace vastra
