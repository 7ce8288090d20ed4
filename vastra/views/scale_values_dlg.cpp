#include "vastra/views/scale_values_dlg.h"

#include "vastra/ui/number_text.h"

namespace vastra {
namespace {

constexpr const char* kMinimum = "Minimum value:";
constexpr const char* kMaximum = "Maximum value:";
constexpr CControl kScaleValuesControls[] = {
    {CControl::text, kMinimum, {7, 9, 60, 10}},        {CControl::edit, kMinimum, {70, 7, 70, 14}},
    {CControl::text, kMaximum, {7, 29, 60, 10}},       {CControl::edit, kMaximum, {70, 27, 70, 14}},
    {CControl::defaultButton, "OK", {153, 7, 50, 14}}, {CControl::button, "Cancel", {153, 27, 50, 14}},
};
constexpr CDialogTemplate kScaleValuesTemplate = {"Scale Values", {210, 49}, kScaleValuesControls};

constexpr int kDigits = 15;  // of decimal numbers

}  // namespace

CScaleValuesDlg::CScaleValuesDlg(CWnd* parent) : CDialog(kScaleValuesTemplate, parent) {}

void CScaleValuesDlg::OnInitDialog() {
  Edit(kMinimum).SetWindowText(NumberText(m_min, kDigits));
  Edit(kMaximum).SetWindowText(NumberText(m_max, kDigits));
}

// 0: the field is not a number, and the user has seen a message.
int CScaleValuesDlg::Take(const char* caption, double& value) const {
  CEdit& field = Edit(caption);
  const CString text = field.GetWindowText();
  if (ParseNumber(text, value)) return 1;
  AfxMessageBox("Please enter a number.");
  field.SetFocus();
  field.SelectAt(0, text.GetLength());
  return 0;
}

void CScaleValuesDlg::OnOK() {
  if (Take(kMinimum, m_min) && Take(kMaximum, m_max)) CDialog::OnOK();
}

}  // namespace vastra
