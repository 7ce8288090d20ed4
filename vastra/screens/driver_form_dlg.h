// CDriverFormDlg shows the form of a driver module: a row for each field, the help of the field that has the
// focus below them. CDriverForms is the host that shows forms this way.
#pragma once

#include "vastra/plc/driver_host.h"
#include "vastra/screens/driver_form_rules.h"
#include "vastra/ui/dialog.h"

namespace vastra {

class VASTRA_API CDriverFormDlg : public CDialog {
 public:
  // form IsShowable and outlives the dialog; its fields change on an accepted OK alone.
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
  std::vector<CFormRow> m_rows;  // never moves: the controls have their captions from here
  std::vector<CControl> m_controls;
  CDialogTemplate m_template;
};

// While it lives, driver modules have a host whose forms are dialogs. For the thread of the windows.
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
