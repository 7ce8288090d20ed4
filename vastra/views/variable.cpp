#include "vastra/views/variable.h"

#include "vastra/views/scale_values_dlg.h"

namespace vastra {

int CVariable::SetScale(CWnd* parent) {
  CScaleValuesDlg dialog(parent);
  dialog.m_min = m_min;
  dialog.m_max = m_max;
  if (dialog.DoModal() != IDOK) return 0;
  if (dialog.m_min < dialog.m_max) {
    m_min = dialog.m_min;
    m_max = dialog.m_max;
    return 1;
  }
  AfxMessageBox("Maximum value must be greater than minimum value.", "Message", MB_ICONEXCLAMATION);
  return 0;
}

void CVariable::AddPoint(float value) {
  m_history.AddHead(value);
  while (m_history.GetCount() > kTrendPoints) m_history.RemoveAt(m_history.GetTailPosition());
}

}  // namespace vastra
