#include "vastra/screens/driver_form_dlg.h"

#include <algorithm>

namespace vastra {
namespace {

constexpr const char* kHelp = "Help";

// Dialog units. A second column starts when one column would not fit on a small screen.
constexpr int kMostRows = 14, kPitch = 17, kEdge = 7, kGap = 4;
constexpr int kCharacter = 4, kLine = 9;  // averages
constexpr int kLeastNameWidth = 84, kMostNameWidth = 140;
constexpr int kWideField = 170, kNarrowField = 110;  // with one column, with several
constexpr int kLeastHelpHeight = 46, kMostHelpHeight = 100;
constexpr int kButtonWidth = 50, kButtonHeight = 14;

int ColumnsFor(int rows) { return std::max(1, (rows + kMostRows - 1) / kMostRows); }

int NameWidthFor(const std::vector<CFormRow>& rows) {
  int longest = 0;
  for (const CFormRow& row : rows) longest = std::max(longest, row.name.GetLength());
  return std::clamp(kCharacter * longest + kGap, kLeastNameWidth, kMostNameWidth);
}

int HelpHeightFor(const std::vector<CFormRow>& rows, int width) {
  int longest = 0;
  for (const CFormRow& row : rows) longest = std::max(longest, HelpOf(row).GetLength());
  return std::clamp(kLine * (kCharacter * longest / width + 1), kLeastHelpHeight, kMostHelpHeight);
}

CControl::EKind KindOf(const CFormRow& row) {
  return row.kind == driverFieldChoice ? CControl::comboBox : CControl::edit;
}

}  // namespace

CDriverFormDlg::CDriverFormDlg(const DriverForm& form, CWnd* parent)
    : CDialog(m_template, parent), m_form(form), m_title(FormTitle(form)), m_rows(RowsOf(form)) {
  BuildTemplate();
}

void CDriverFormDlg::BuildTemplate() {
  const int count = static_cast<int>(m_rows.size());
  const int columns = ColumnsFor(count);
  const int rows = (count + columns - 1) / columns;
  const int nameWidth = NameWidthFor(m_rows);
  const int fieldWidth = columns > 1 ? kNarrowField : kWideField;
  const int column = nameWidth + fieldWidth + 2 * kEdge;
  const int width = columns * column;
  const int helpTop = kEdge + rows * kPitch + kGap;
  const int helpHeight = HelpHeightFor(m_rows, width - 2 * kEdge);
  const int buttonTop = helpTop + helpHeight + kGap;
  const int cancelLeft = width - kEdge - kButtonWidth;
  // The help comes first: it is found by its caption even if a field has the same name.
  m_controls.push_back({CControl::text, kHelp, {kEdge, helpTop, width - 2 * kEdge, helpHeight}});
  for (int i = 0; i < count; ++i) {
    const CFormRow& row = m_rows[static_cast<std::size_t>(i)];
    const int x = kEdge + i / rows * column;
    const int y = kEdge + i % rows * kPitch;
    m_controls.push_back({CControl::text, row.name, {x, y + 2, nameWidth - kGap, 10}});
    m_controls.push_back({KindOf(row), row.name, {x + nameWidth, y, fieldWidth, kButtonHeight}});
  }
  m_controls.push_back({CControl::defaultButton,
                        "OK",
                        {cancelLeft - kGap - kButtonWidth, buttonTop, kButtonWidth, kButtonHeight}});
  m_controls.push_back({CControl::button, "Cancel", {cancelLeft, buttonTop, kButtonWidth, kButtonHeight}});
  m_template = {m_title, {width, buttonTop + kButtonHeight + kEdge}, m_controls};
}

CWnd& CDriverFormDlg::FieldOf(const CFormRow& row) const {
  if (row.kind == driverFieldChoice) return Combo(row.name);
  return Edit(row.name);
}

void CDriverFormDlg::OnInitDialog() {
  for (const CFormRow& row : m_rows) {
    if (row.kind == driverFieldChoice) {
      for (const CString& choice : row.choices) Combo(row.name).AddString(choice);
      Combo(row.name).SetCurSel(row.choice);
    } else {
      Edit(row.name).SetWindowText(row.text);
    }
    On(
        row.name, [this, &row] { Text(kHelp).SetWindowText(HelpOf(row)); }, ENotify::focused);
  }
  Text(kHelp).SetWindowText(m_rows.empty() ? CString() : HelpOf(m_rows.front()));
  if (!m_rows.empty()) FieldOf(m_rows.front()).SetFocus();
}

void CDriverFormDlg::Read(CFormRow& row) const {
  if (row.kind == driverFieldChoice)
    row.choice = Combo(row.name).GetCurSel();
  else
    row.text = Edit(row.name).GetWindowText();
}

void CDriverFormDlg::Refuse(const CString& fault) const { AfxMessageBox(fault, m_title, MB_ICONEXCLAMATION); }

void CDriverFormDlg::OnOK() {
  for (CFormRow& row : m_rows) {
    Read(row);
    const CString fault = RowFault(row);
    if (fault.IsEmpty()) continue;
    Refuse(fault);
    FieldOf(row).SetFocus();
    if (row.kind != driverFieldChoice) Edit(row.name).SelectAll();
    return;
  }
  if (const CString fault = CheckFault(m_form, m_rows); !fault.IsEmpty()) {
    Refuse(fault);
    return;
  }
  StoreRows(m_form, m_rows);
  CDialog::OnOK();
}

namespace {

int ShowForm(const DriverForm* form) {
  try {
    if (IsShowable(form)) return CDriverFormDlg(*form).DoModal() == IDOK;
    AfxMessageBox("The driver's settings cannot be shown: the form is not valid.", "Driver",
                  MB_ICONEXCLAMATION);
  } catch (...) {
    // No exception may reach the driver module. A form that cannot be shown counts as cancelled.
  }
  return 0;
}

constexpr DriverHost kHost = {DRIVER_HOST_VERSION, ShowForm};

}  // namespace

CDriverForms::CDriverForms() : m_former(InstallDriverHost(&kHost)) {}

CDriverForms::~CDriverForms() { InstallDriverHost(m_former); }

}  // namespace vastra
