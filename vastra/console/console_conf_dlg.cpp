#include "vastra/console/console_conf_dlg.h"

namespace vastra {
namespace {

constexpr const char *kFatal = "Fatal Error Messages", *kError = "Error Messages",
                     *kWarning = "Warning Messages", *kNotice = "Notices Messages",
                     *kDebug = "Debug Messages", *kAll = "All Messages", *kOnTop = "Always on Top",
                     *kClear = "Clear Console";

constexpr CControl kConsoleConfControls[] = {
    {CControl::groupBox, "Type of Messages Showed ", {7, 7, 126, 98}},
    {CControl::checkBox, kFatal, {15, 20, 110, 10}},
    {CControl::checkBox, kError, {15, 34, 110, 10}},
    {CControl::checkBox, kWarning, {15, 48, 110, 10}},
    {CControl::checkBox, kNotice, {15, 62, 110, 10}},
    {CControl::checkBox, kDebug, {15, 76, 110, 10}},
    {CControl::checkBox, kAll, {15, 90, 110, 10}},
    {CControl::checkBox, kOnTop, {15, 112, 110, 10}},
    {CControl::checkBox, kClear, {15, 126, 110, 10}},
    {CControl::defaultButton, "OK", {14, 144, 50, 14}},
    {CControl::button, "Cancel", {76, 144, 50, 14}},
};
constexpr CDialogTemplate kConsoleConfTemplate = {"Console Configuration", {140, 165}, kConsoleConfControls};

}  // namespace

const CConsoleConfDlg::CBox CConsoleConfDlg::kBoxes[] = {
    {kFatal, &CConsoleConfDlg::m_fatal},     {kError, &CConsoleConfDlg::m_error},
    {kWarning, &CConsoleConfDlg::m_warning}, {kNotice, &CConsoleConfDlg::m_notice},
    {kDebug, &CConsoleConfDlg::m_debug},     {kAll, &CConsoleConfDlg::m_all},
    {kOnTop, &CConsoleConfDlg::m_onTop},     {kClear, &CConsoleConfDlg::m_clear},
};

CConsoleConfDlg::CConsoleConfDlg(CWnd* parent) : CDialog(kConsoleConfTemplate, parent) {}

void CConsoleConfDlg::OnInitDialog() {
  for (const CBox& box : kBoxes) Button(box.caption).SetCheck(this->*box.value != 0);
  Button(kOnTop).EnableWindow(m_onTopEnabled != 0);
  On(kFatal, [this] { OnFatalCheck(); });
  On(kError, [this] { OnErrorCheck(); });
  On(kWarning, [this] { OnWarningCheck(); });
  On(kNotice, [this] { OnNotesCheck(); });
  On(kDebug, [this] { OnDebugCheck(); });
  On(kAll, [this] { OnAllCheck(); });
}

void CConsoleConfDlg::OnAllCheck() {
  for (const char* kind : {kFatal, kError, kWarning, kNotice, kDebug}) Button(kind).SetCheck(0);
}

void CConsoleConfDlg::OnKindCheck() { Button(kAll).SetCheck(0); }

void CConsoleConfDlg::OnOK() {
  for (const CBox& box : kBoxes) this->*box.value = Button(box.caption).GetCheck();
  CDialog::OnOK();
}

}  // namespace vastra
