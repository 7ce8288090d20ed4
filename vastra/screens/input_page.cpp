#include "vastra/screens/input_page.h"

#include "vastra/platform/chooser.h"
#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/equation_check_rules.h"
#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/input_page_rules.h"
#include "vastra/screens/node_list.h"
#include "vastra/screens/offered_variables.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/screens/variables_dlg.h"
#include "vastra/stages/log_input.h"

namespace vastra {
namespace {

constexpr const char* kConnected = "Connected";
constexpr const char* kSimulating = "Simulating";
constexpr const char* kFiles = "Select Files...";
constexpr const char* kPreprocess = "Preprocess input";
constexpr const char* kInputVariables = "Variable List...";
constexpr const char* kInputEquations = "Preprocessed equations...";
constexpr const char* kAsFast = "As fast as possible";
constexpr const char* kPeriod = "Scan period :";
constexpr const char* kAutoStart = "Auto Start";
constexpr const char* kNodes = "Net nodes";
constexpr const char* kAddNode = "Add net node...";
constexpr const char* kEditNode = "Edit net node...";
constexpr const char* kDeleteNode = "Delete Node";
constexpr CControl kInputPageControls[] = {
    {CControl::groupBox, "Source", {7, 7, 160, 61}},
    {CControl::firstRadioButton, kConnected, {14, 21, 146, 10}},
    {CControl::radioButton, kSimulating, {14, 34, 146, 10}},
    {CControl::button, kFiles, {14, 48, 110, 14}},
    {CControl::groupBox, "Preprocessing", {7, 72, 160, 64}},
    {CControl::checkBox, kPreprocess, {14, 86, 146, 10}},
    {CControl::button, kInputVariables, {14, 99, 110, 14}},
    {CControl::button, kInputEquations, {14, 116, 110, 14}},
    {CControl::groupBox, "Scan", {7, 140, 160, 44}},
    {CControl::firstRadioButton, kAsFast, {14, 154, 146, 10}},
    {CControl::radioButton, kPeriod, {14, 168, 60, 10}},
    {CControl::numberEdit, kPeriod, {76, 166, 36, 14}},
    {CControl::text, "milliseconds", {116, 168, 46, 10}},
    {CControl::checkBox, kAutoStart, {14, 188, 146, 10}},
    {CControl::groupBox, kNodes, {174, 7, 99, 191}},
    {CControl::listBox, kNodes, {181, 21, 85, 119}},
    {CControl::button, kAddNode, {181, 144, 85, 14}},
    {CControl::button, kEditNode, {181, 161, 85, 14}},
    {CControl::button, kDeleteNode, {181, 178, 85, 14}},
};
constexpr CDialogTemplate kInputPageTemplate = {"Input", {280, 205}, kInputPageControls};

constexpr UINT kUsualScanPeriod = 5000;

// Asks whether equations that are no longer valid may be erased. kind: their name in the question.
bool MayErase(const char* kind) {
  CString text;
  text.Format("%s equations are not valid and will be erased.\n Continue anyway?", kind);
  return AfxMessageBox(text, MB_YESNO | MB_ICONEXCLAMATION) == IDYES;
}

}  // namespace

IMPLEMENT_DYNCREATE(CInputPage, CPropertyPage)

CInputPage::CInputPage() : CPropertyPage(kInputPageTemplate) {}

void CInputPage::SetConfiguration(const CInputConfig& config) {
  m_initialVars = config.m_preNewVars;
  m_preEquationText = config.m_preEquationText;
  m_plcNodes = config.m_plcNodes;
  m_preNewVars = config.m_preNewVars;
  m_preEquations = config.m_preEquations;
  m_inputFiles = config.m_inputFiles;
  m_preprocess = config.m_preprocess;
  m_scanMode = !config.m_asFastAsPossible;
  m_source = config.m_simulating;
  m_autoStart = config.m_autoStart;
  m_scanPeriod = config.m_scanPeriod;
}

void CInputPage::GetConfiguration(CInputConfig& config) const {
  config.m_preEquationText = m_preEquationText;
  config.m_plcNodes = m_plcNodes;
  config.m_preNewVars = m_preNewVars;
  config.m_preEquations = m_preEquations;
  config.m_inputFiles = m_inputFiles;
  config.m_preprocess = m_preprocess;
  config.m_asFastAsPossible = !m_scanMode;
  config.m_simulating = m_source;
  config.m_autoStart = m_autoStart;
  config.m_scanPeriod = m_scanPeriod;
}

void CInputPage::UpdatePLCList() {
  if (Widget()) ShowNodes(List(kNodes), m_plcNodes);
}

void CInputPage::OnInitDialog() {
  Button(m_source ? kSimulating : kConnected).SetCheck(1);
  Button(kPreprocess).SetCheck(m_preprocess);
  Button(m_scanMode ? kPeriod : kAsFast).SetCheck(1);
  Button(kAutoStart).SetCheck(m_autoStart);
  ShowNumber(kPeriod, m_scanPeriod);
  UpdatePLCList();
  EnableControls();
  On(kConnected, [this] { OnConnectedRadio(); });
  On(kSimulating, [this] { OnSimulatingRadio(); });
  On(kFiles, [this] { OnSelectfilesButton(); });
  On(kPreprocess, [this] { OnPreprocessCheck(); });
  On(kInputVariables, [this] { OnVariablelistButton(); });
  On(kInputEquations, [this] { OnPreequationsButton(); });
  On(kAsFast, [this] { OnAsfastRadio(); });
  On(kPeriod, [this] { OnScanRadio(); });
  On(kAutoStart, [this] { OnAutostartCheck(); });
  On(kAddNode, [this] { OnAddnetnodeButton(); });
  On(kEditNode, [this] { OnEditnodeButton(); });
  On(
      kNodes, [this] { OnDblclkPlcList(); }, ENotify::doubleClicked);
  On(kDeleteNode, [this] { OnDeletenodeButton(); });
}

void CInputPage::EnableControls() {
  const CInputControls enabled = EnabledControls(m_source, m_preprocess, m_scanMode);
  List(kNodes).EnableWindow(enabled.nodes);
  for (const char* caption : {kAddNode, kEditNode, kDeleteNode}) Button(caption).EnableWindow(enabled.nodes);
  Button(kFiles).EnableWindow(enabled.files);
  for (const char* caption : {kInputVariables, kInputEquations})
    Button(caption).EnableWindow(enabled.preprocess);
  Edit(kPeriod).EnableWindow(enabled.period);
}

void CInputPage::ChooseSource(int source) {
  m_source = source;
  EnableControls();
}

void CInputPage::OnPreprocessCheck() {
  m_preprocess = Button(kPreprocess).GetCheck();
  EnableControls();
}

// The period is not used in this mode; the field shows a valid number for the check of the page.
void CInputPage::OnAsfastRadio() {
  m_scanMode = 0;
  ShowNumber(kPeriod, kMinScanPeriod);
  EnableControls();
}

void CInputPage::OnScanRadio() {
  m_scanMode = 1;
  m_scanPeriod = kUsualScanPeriod;
  ShowNumber(kPeriod, m_scanPeriod);
  EnableControls();
}

void CInputPage::OnAutostartCheck() { m_autoStart = Button(kAutoStart).GetCheck(); }

void CInputPage::OnSelectfilesButton() {
  CFileQuestion question;
  question.filter = "Heat Files (*.rph)|*.rph||";
  CStringArray paths;
  if (!ChooseFiles(question, paths)) return;
  m_inputFiles.RemoveAll();
  for (const CString& path : paths) m_inputFiles.AddTail(path);
}

void CInputPage::OnVariablelistButton() {
  CLogInput stage;
  GetConfiguration(*stage.GetOptions());
  CStringArray names;
  if (!stage.PreGetInitialVarNames(names)) return;
  m_initialVars = names;
  CVariablesDlg dialog(this);
  dialog.SetAvailableVars(m_initialVars);
  dialog.m_selected = m_preNewVars;
  if (dialog.DoModal() != IDOK) return;
  m_preNewVars = dialog.m_selected;
  m_initialVars = dialog.m_selected;
}

void CInputPage::OnPreequationsButton() {
  CEquationsDlg dialog(this);
  dialog.m_equations = m_preEquations;
  dialog.m_text = m_preEquationText;
  dialog.m_varNames = m_preNewVars;
  if (dialog.DoModal() != IDOK) return;
  m_preEquations = dialog.m_equations;
  m_preEquationText = dialog.m_text;
}

void CInputPage::OnAddnetnodeButton() {
  CDriverTypeDlg dialog(this, true);
  AddNode(dialog, List(kNodes), m_plcNodes);
}

void CInputPage::OnEditnodeButton() {
  CDriverTypeDlg dialog(this, true);
  EditNode(dialog, List(kNodes), m_plcNodes);
}

void CInputPage::OpenNode(int index) {
  List(kNodes).SetCurSel(index);
  OnEditnodeButton();
}

void CInputPage::OnDeletenodeButton() { DeleteNode(List(kNodes), m_plcNodes); }

int CInputPage::OnKillActive() {
  if (!ReadNumber(kPeriod, kMinScanPeriod, kMaxScanPeriod, m_scanPeriod)) return 0;
  CInputConfig config;
  GetConfiguration(config);
  const char* fault = FaultOf(config);
  if (fault) AfxMessageBox(fault);
  return !fault;
}

int CInputPage::OnApply() {
  if (m_pTrendOptions && CTrendFacadeDlg::m_suOpen > 0) {
    AfxMessageBox("Changes can't be made until the Trendings/Grid configuration dialog is closed!");
    return 0;
  }
  const bool isValid = CheckStatements(m_preEquations, m_preNewVars).statement == 0;
  if (!isValid && !MayErase("Preprocess")) return 0;
  CStringArray names;  // that the views receive; unknown if a log of a replay is missing
  if (m_pTrendOptions && InputVariables(this, names) &&
      CheckStatements(m_pTrendOptions->m_equations, names).statement != 0) {
    if (!MayErase("Trendings/Grid")) return 0;
    m_pTrendOptions->m_equations.RemoveAll();
    m_pTrendOptions->m_equationText.Empty();
  }
  if (!isValid) {
    m_preEquations.RemoveAll();
    m_preEquationText.Empty();
  }
  return CPropertyPage::OnApply();
}

}  // namespace vastra
