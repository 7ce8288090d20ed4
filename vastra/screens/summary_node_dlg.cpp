#include "vastra/screens/summary_node_dlg.h"

namespace vastra {
namespace {

constexpr const char* kSummary = "Write Summary";
constexpr const char* kSummaryMaxSamples = "Maximum number\nof samples in a\n summary : ";
constexpr const char* kMaxSummaries = "Maximum number\nof summaries\nstored :";
constexpr const char* kSummaryEquations = "Summary Equations...";
constexpr CControl kSummaryNodeControls[] = {
    {CControl::text, kItemName, {7, 9, 36, 10}},
    {CControl::edit, kItemName, {46, 7, 168, 14}},
    {CControl::text, kItemPath, {7, 29, 36, 10}},
    {CControl::edit, kItemPath, {46, 27, 168, 14}},
    {CControl::checkBox, kSummary, {46, 48, 80, 12}},
    {CControl::checkBox, kItemText, {130, 48, 84, 12}},
    {CControl::text, kSummaryMaxSamples, {7, 68, 79, 30}},
    {CControl::numberEdit, kSummaryMaxSamples, {89, 76, 56, 14}},
    {CControl::text, kMaxSummaries, {7, 106, 79, 30}},
    {CControl::numberEdit, kMaxSummaries, {89, 114, 56, 14}},
    {CControl::button, kSummaryEquations, {222, 67, 91, 14}},
    {CControl::button, kItemVariables, {222, 87, 91, 14}},
    {CControl::button, kItemEnable, {222, 107, 91, 14}},
    {CControl::defaultButton, "OK", {222, 7, 91, 14}},
    {CControl::button, "Cancel", {222, 27, 91, 14}},
};
constexpr CDialogTemplate kSummaryNodeTemplate = {"Summary", {320, 143}, kSummaryNodeControls};

}  // namespace

CSummaryNodeDlg::CSummaryNodeDlg(CWnd* parent)
    : CItemDlg(kSummaryNodeTemplate, kSummary, kMaxSummaries, kSummaryMaxSamples,
               &CSummaryConfig::m_maxSummaries, parent) {}

void CSummaryNodeDlg::OnInitDialog() {
  CItemDlg::OnInitDialog();
  On(kSummaryEquations, [this] { OnEquationsSum(); });
  On(kItemVariables, [this] { OnVariablesSum(); });
  On(kItemEnable, [this] { OnEquationsenSum(); });
}

}  // namespace vastra
