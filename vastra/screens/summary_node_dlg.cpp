#include "vastra/screens/summary_node_dlg.h"

namespace vastra {
namespace {

constexpr const char* kSummary = "Write Summary";
constexpr const char* kMaxSamples = "Maximum number\nof samples in a\n summary : ";
constexpr const char* kMaxSummaries = "Maximum number\nof summaries\nstored :";
constexpr const char* kEquations = "Summary Equations...";
constexpr CControl kControls[] = {
    {CControl::text, kItemName, {7, 10, 36, 10}},
    {CControl::edit, kItemName, {46, 7, 168, 14}},
    {CControl::text, kItemPath, {7, 30, 36, 10}},
    {CControl::edit, kItemPath, {46, 27, 168, 14}},
    {CControl::checkBox, kSummary, {46, 48, 80, 12}},
    {CControl::checkBox, kItemText, {130, 48, 84, 12}},
    {CControl::text, kMaxSamples, {7, 68, 79, 30}},
    {CControl::numberEdit, kMaxSamples, {89, 76, 56, 14}},
    {CControl::text, kMaxSummaries, {7, 106, 79, 30}},
    {CControl::numberEdit, kMaxSummaries, {89, 114, 56, 14}},
    {CControl::button, kEquations, {222, 67, 91, 14}},
    {CControl::button, kItemVariables, {222, 87, 91, 14}},
    {CControl::button, kItemEnable, {222, 107, 91, 14}},
    {CControl::defaultButton, "OK", {222, 7, 91, 14}},
    {CControl::button, "Cancel", {222, 27, 91, 14}},
};
constexpr CDialogTemplate kTemplate = {"Summary", {320, 143}, kControls};

}  // namespace

CSummaryNodeDlg::CSummaryNodeDlg(CWnd* parent)
    : CItemDlg(kTemplate, kSummary, kMaxSummaries, kMaxSamples, &CSummaryConfig::m_maxSummaries, parent) {}

void CSummaryNodeDlg::OnInitDialog() {
  CItemDlg::OnInitDialog();
  On(kEquations, [this] { OnEquationsSum(); });
  On(kItemVariables, [this] { OnVariablesSum(); });
  On(kItemEnable, [this] { OnEquationsenSum(); });
}

}  // namespace vastra
