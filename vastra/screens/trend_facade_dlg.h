// CTrendFacadeDlg configures what the live views share: the extra variables and the equations that compute
// them. It works on the options of the trending stage, which its caller reopens behind OK.
#pragma once

#include "vastra/config/trend_config.h"
#include "vastra/ui/dialog.h"

namespace vastra {

class CLogInput;
class CLogTrendings;

class CTrendFacadeDlg : public CDialog {
 public:
  explicit CTrendFacadeDlg(CWnd* parent = nullptr);
  ~CTrendFacadeDlg() override { Leave(); }

  // In front of DoModal, which gives 0 if another such dialog is open, as the user was told. The stages
  // outlive the dialog; the input stage is not looked at.
  void SetInputPointers(CLogInput* input, CLogTrendings* trendings);

  // What is worked on, but for m_calculateExtra: that changes in the stage as soon as the variables do.
  void SetConfiguration(const CTrendConfig& config);
  void GetConfiguration(CTrendConfig& config) const;

  static UINT m_suOpen;  // how many are open

 protected:
  void OnInitDialog() override;
  void OnOK() override;
  void PostNcDestroy() override { Leave(); }

 private:
  void OnVariablesButton();
  void OnEquationsButton();
  void Leave();  // whatever way the dialog ends

  CStringArray m_extraVars;
  CString m_equationText;
  CStringArray m_equations;
  CStringArray m_baseVars;
  CLogTrendings* m_pTrendings = nullptr;
  bool m_isCounted = false;  // in m_suOpen
};

}  // namespace vastra
