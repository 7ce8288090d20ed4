// CTrendFacadeDlg edits the settings that the live views share: the extra variables and the equations that
// compute them. The views open it. It edits the options of the trending stage, which the caller reopens after
// OK.
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

  // Call it before DoModal. The stages outlive the dialog; the input stage is not used. DoModal returns 0 if
  // another such dialog is open, after a message.
  void SetInputPointers(CLogInput* input, CLogTrendings* trendings);

  // The edited settings, except m_calculateExtra, which changes in the stage as soon as the variables change.
  void SetConfiguration(const CTrendConfig& config);
  void GetConfiguration(CTrendConfig& config) const;

  static UINT m_suOpen;  // number of open dialogs

 protected:
  void OnInitDialog() override;
  void OnOK() override;
  void PostNcDestroy() override { Leave(); }

 private:
  void OnVariablesButton();
  void OnEquationsButton();
  void Leave();  // called however the dialog ends

  CStringArray m_extraVars;
  CString m_equationText;
  CStringArray m_equations;
  CStringArray m_baseVars;
  CLogTrendings* m_pTrendings = nullptr;
  bool m_isCounted = false;  // counted in m_suOpen
};

}  // namespace vastra
