// CDriverFormDlg shows the form of a driver module: a row for each field, and below them the help of the
// field with the focus. CDriverForms is the driver host that shows forms with it; the desktop creates one.
#pragma once

#include "vastra/plc/driver_host.h"
#include "vastra/screens/driver_form_rules.h"
#include "vastra/ui/dialog.h"

namespace vastra {

class VASTRA_API CDriverFormDlg : public CDialog {
 public:
  // IsShowable(&form), and form outlives the dialog. Only an accepted OK changes its fields.
  explicit CDriverFormDlg(const DriverForm& form, CWnd* parent = nullptr);

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  void BuildTemplate();
  void Read(CFormRow& row) const;
  void Refuse(const CString& fault) const;
  CWnd& FieldOf(const CFormRow& row) const;

  const DriverForm m_form;
  const CString m_title;
  std::vector<CFormRow> m_rows;  // fixed: the captions of the controls point into it
  std::vector<CControl> m_controls;
  CDialogTemplate m_template;
};

// While the object exists, the forms of driver modules are dialogs. For the window thread.
class VASTRA_API CDriverForms {
 public:
  CDriverForms();
  ~CDriverForms();
  CDriverForms(const CDriverForms&) = delete;
  CDriverForms& operator=(const CDriverForms&) = delete;

 private:
  const DriverHost* m_former;
};

}  // namespace vastra
