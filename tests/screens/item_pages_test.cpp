// The pages of the log outputs, of the summaries and of the host's own logic, and their dialogs.
#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/item_rules.h"
#include "vastra/screens/output_page.h"
#include "vastra/screens/smart_page.h"
#include "vastra/screens/summary_page.h"

namespace vastra {
namespace {

const std::string kBasis = "Name the logs based on :", kPrefix = "Use prefix for the log names :",
                  kDword = "Use the next variable to form a DWORD based name";

json Item(const char* name) {
  json item = R"({"enableText": "W = b;", "varNames": ["b", "a"], "saveRp": 1,
                              "maxSamples": 4294967295, "directory": "/logs"})"_json;
  item["name"] = name;
  return item;
}

// Where the two kinds of items differ.
struct CKind {
  const char *list, *items, *binary, *most, *samples, *steps;
  json fields;  // of an edited item
  CString proposed;
};

class Pages : public testing::Test {
 protected:
  Pages() {
    m_input.SetConfiguration(Configured<CInputConfig>(R"({"preprocess": 1, "preNewVars": ["a", "b"]})"_json));
    m_page.SetInputPointer(&m_input);
    m_user.chooser.path = "/chosen";
  }

  template <class TConfig, class TPage>
  void EditItems(TPage&& page, const CKind& kind) {
    const auto configured = [&](const json& items) { return Configured<TConfig>({{kind.items, items}}); };
    const auto replaced = configured(json::array({Item("replaced")}));
    json y = Item("y"), z = Item("z");
    y.update({{"saveRp", 0}, {"saveCsv", 1}});
    z.update({{"enableText", ""}, {"enableEquations", {"W = b"}}});
    page.SetInputPointer(&m_input);
    page.SetConfiguration(replaced);
    page.SetConfiguration(configured({Item("x"), y, z}));
    const QString kNoWhole = "= / OK / !Please enter a whole number from 0 to 4294967295. / ",
                  kFinish =
                      " / %2=4294967295 / %3=7 / Variable List... / Delete All / ->> / OK / %4 / OK / %1";
    const QString steps =
        "Edit / Delete / %1?x,y,z, / %1#0 / Edit / Name:=cancelled / Cancel / "
        "%1#2 / Edit / Enable Equations... / Equations=n = 1; / Parse / Cancel / OK / "
        "%1#0 / Delete / Delete / %1?y,z, / %1##0 / Name:=Y" +
        kFinish +
        "?Y,z, / "
        "Add / %2?0 / %3?0 / %2" +
        kNoWhole + "%2=1 / %3" + kNoWhole +
        "%3=1 / OK / "
        "!Wrong Configuration!!\n You must give a name / Name:=new / ... / Enable Equations... / OK / "
        "%5 / Write Text Files" +
        kFinish + "?Y,z,new, / OK";
    m_user.Run(page, {steps.arg(kind.list, kind.most, kind.samples, kind.steps, kind.binary).toStdString()});
    z["enableText"] = kind.proposed.Std();
    json made = z;
    made.erase("enableEquations");
    y.update(kind.fields);
    y["name"] = "Y";
    made.update(kind.fields);
    made.update({{"name", "new"}, {"saveCsv", 1}, {"directory", "/chosen"}});
    EXPECT_EQ(Held(page, replaced), FieldsOf(configured({y, z, made})));
  }

  // Edits an output whose name is based on a stored variable, and returns it.
  json Edit(const char* basis, const CSteps& steps) {
    json output = Item("x");
    output.update({{"nameVariable", basis}, {"dwordName", 1}, {"prefix", "p"}, {"usePrefix", 1}});
    m_page.SetConfiguration(Configured<CMultiOutputConfig>({{"outputs", json::array({output})}}));
    m_user.Run(m_page, CSteps{"Outputs#0 / Edit"} + steps + CSteps{"OK"});
    return Held<CMultiOutputConfig>(m_page)["outputs"][0];
  }

  CRecorder m_links;
  CInputPage m_input;
  CSmartPage m_smart;
  COutputPage m_page;
  CSheetUser m_user;
};

TEST_F(Pages, ItemsAreAddedEditedAndDeleted) {
  EditItems<CMultiOutputConfig>(
      m_page,
      {"Outputs", "outputs", "Write Logs",
       "Maximum number of logs stored :", "Maximum number of samples in a log : ",
       "Use prefix for the log names : / Use prefix for the log names :=p",
       R"({"usePrefix": 1, "prefix": "p", "maxLogs": 4294967295, "maxSamples": 7, "varNames": ["a", "b"]})"_json,
       ProposedEnableText(COutputConfig())});
  EditItems<CMultiSummaryConfig>(
      CSummaryPage(),
      {"Summaries", "summaries", "Write Summary", "Maximum number\nof summaries\nstored :",
       "Maximum number\nof samples in a\n summary : ", "Summary Equations... / Equations=t = a; / OK",
       R"({"summaryText": "t = a;", "maxSummaries": 4294967295, "maxSamples": 7, "varNames": ["a", "b"]})"_json,
       ProposedEnableText(CSummaryConfig())});
}

TEST_F(Pages, TheNameOfALogDependsOnABasisAndAPrefix) {
  json held = Edit(
      "b", {kBasis + "?b / " + kDword + "?x / " + kPrefix + "?p / " + kPrefix + " / " + kPrefix + "?-p / " +
            kBasis + "=System Time / " + kDword + "?- / " + kBasis + "=a / " + kDword + "? / OK"});
  EXPECT_EQ(held["nameVariable"], "a");
  EXPECT_EQ(held["dwordName"], 0);
  EXPECT_EQ(held["usePrefix"], 0);
  const std::string kNotLogged =
      "OK / !WrongConfiguration!!\nThe selected variable for the log names must be included in the logged "
      "variables / ";
  held = Edit("B", {kBasis + "?System Time / " + kDword + "?-x / " + kPrefix + "= / " + kBasis + "=A / " +
                    kNotLogged + kBasis + "=system time / " + kNotLogged + kBasis + "=b / OK"});
  EXPECT_EQ(held["nameVariable"], "b");
  EXPECT_EQ(held["dwordName"], 1);
}

TEST_F(Pages, OfferTheVariablesOfThePages) {
  const auto offers = [](const std::string& names) -> CStep {
    return [=](QWidget* dialog) {
      const auto* combo = Find<QComboBox>(dialog, kBasis.c_str());
      std::string texts;
      for (int i = 0; i < combo->count(); ++i) texts += combo->itemText(i).toStdString() + ",";
      EXPECT_EQ(texts, "System Time," + names);
    };
  };
  m_smart.SetConfiguration(Configured<CSmartConfig>(R"({"outputVars": ["s"]})"_json));
  const std::tuple<CInputPage*, CSmartPage*, std::string> kCases[] = {
      {nullptr, nullptr, ""}, {&m_input, nullptr, "a,b,"}, {&m_input, &m_smart, "a,b,s,"}};
  for (const auto& [input, smart, names] : kCases) {
    m_page.SetInputPointer(input);
    m_page.SetSmartPointer(smart);
    Edit("a", {offers(names), "Variable List... / Available Vars?" + names + " / OK / Cancel"});
  }
  const json before = Edit("b", {"OK"});
  const CSteps kNothingOpens = {offers("b,"), "Variable List... / Enable Equations... / Path:?/logs / OK"};
  m_smart.SetConfiguration(Configured<CSmartConfig>(R"({"outputVars": ["a"]})"_json));  // a name of the input
  EXPECT_EQ(Edit("b", kNothingOpens), before);
  EXPECT_NE(m_links.TakeFaults(), "");
  m_input.SetConfiguration(Configured<CInputConfig>(R"({"preNewVars": ["p"]})"_json));  // it has no source
  EXPECT_EQ(Edit("b", kNothingOpens), before);
  for (const char* basis : {"System Time", ""}) Edit(basis, {offers(""), "Cancel"});
}

TEST_F(Pages, TheDialogsOfTheHostsLogicEditTheirPartsOnOkAlone) {
  const std::string kInput = "Smart Input Variables... / ", kEquations = "Smart Equations... / ",
                    kOutput = "Smart Output Variables... / ";
  m_smart.SetConfiguration(Configured<CSmartConfig>(
      R"({"outputVars": ["o"], "equationText": "e = 1;", "inputVars": ["i"]})"_json));
  // Without an input page there is nothing to choose from.
  m_user.Run(m_smart, {kInput + "Available Vars? / OK / " + kEquations + "OK / OK"});
  m_smart.SetInputPointer(&m_input);
  m_user.Run(m_smart, {kInput + "Available Vars?a,b, / ->> / OK / " + kEquations +
                           "Equations=n = a; / Parse / Cancel / " + kEquations +
                           "Equations?e = 1; / Equations=x = a; / OK / " + kOutput +
                           "Variable List?o, / Delete All / OK",
                       [&](QWidget*) { m_input.SetConfiguration({}); },  // its names are not known
                       kInput + kEquations + kOutput + "OK / OK"});
  const json held =
      R"({"equationText": "x = a;", "inputVars": ["i", "a", "b"], "inputNames": ["kept"]})"_json;
  const auto replaced = Configured<CSmartConfig>(
      R"({"outputVars": ["r"], "equationText": "r = 1;", "inputVars": ["r"], "inputNames": ["kept"]})"_json);
  EXPECT_EQ(Held(m_smart, replaced), FieldsOf(Configured<CSmartConfig>(held)));
}

}  // namespace
}  // namespace vastra
