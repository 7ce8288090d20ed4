// CSmartPage: the page of the configuration sheet for the variables that the host's own logic reads and
// writes. It edits a copy of a CSmartConfig.
#pragma once

#include "vastra/config/smart_config.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

class CInputPage;

class VASTRA_API CSmartPage : public CPropertyPage {
  DECLARE_DYNAMIC(CSmartPage)
 public:
  CSmartPage();

  // The page that provides the variables, owned by the host; null: none.
  void SetInputPointer(CInputPage* page) { m_pInputPage = page; }

  void SetConfiguration(const CSmartConfig& config);
  void GetConfiguration(CSmartConfig& config) const;  // except m_inputNames

 protected:
  void OnInitDialog() override;

 private:
  void OnInputVariables();
  void OnEquationsSmart();
  void OnSmartoutvarsButton();

  CStringArray m_outputVars;
  CStringArray m_equations;
  CStringArray m_inputVars;
  CString m_equationText;
  CInputPage* m_pInputPage = nullptr;
};

}  // namespace vastra
