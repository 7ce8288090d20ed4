#include "vastra/screens/scaler_dlg.h"

namespace vastra {
namespace {

constexpr const char* kTable = "Scaler";
constexpr CControl kScalerControls[] = {
    {CControl::grid, kTable, {7, 7, 256, 170}, CControl::grow},
    {CControl::defaultButton, "OK", {156, 184, 50, 14}, CControl::move},
    {CControl::button, "Cancel", {213, 184, 50, 14}, CControl::move},
};
constexpr CDialogTemplate kScalerTemplate = {
    "Scaler", {270, 205}, kScalerControls, CDialogTemplate::resizable};

}  // namespace

CScalerDlg::CScalerDlg(CWnd* parent) : CDialog(kScalerTemplate, parent) {}

void CScalerDlg::OnInitDialog() {
  m_names = *m_pNames;
  const CScalerConfig scaler = ScalerRowsOf(*m_pScaler, m_names);
  for (const CScalerConfigNode& row : scaler.m_nodes) {
    m_scales.Add(row.m_scale);
    m_minimums.Add(row.m_lowLimit);
    m_maximums.Add(row.m_highLimit);
    m_clamps.Add(row.m_clamping);
  }
  m_grid.SubclassDlgItem(*this, kTable);
  m_grid.InitGridScaler(&m_names, &m_scales, &m_minimums, &m_maximums, &m_clamps);
  m_grid.SetFocus();
}

void CScalerDlg::OnOK() {
  m_grid.TransferCurrentCell();
  CScalerConfig scaler;
  for (int i = 0; i < m_names.GetSize(); ++i) {
    CScalerConfigNode row;
    row.m_scale = m_scales[i];
    row.m_varName = m_names[i];
    row.m_clamping = m_clamps[i];
    row.m_lowLimit = m_minimums[i];
    row.m_highLimit = m_maximums[i];
    scaler.m_nodes.Add(row);
  }
  m_pScaler->m_nodes = scaler.m_nodes;
  CDialog::OnOK();
}

}  // namespace vastra
