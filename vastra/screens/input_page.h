// CInputPage: the page of the configuration sheet for where samples come from. The other pages ask it which
// variables there will be. It works on copies: a CInputConfig goes in and comes out.
#pragma once

#include "vastra/config/input_config.h"
#include "vastra/config/trend_config.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

class VASTRA_API CInputPage : public CPropertyPage {
  DECLARE_DYNAMIC(CInputPage)
 public:
  CInputPage();

  void SetConfiguration(const CInputConfig& config);
  // Any time, also without a window.
  void GetConfiguration(CInputConfig& config) const;

  // Shows the names of the nodes anew, in list order.
  void UpdatePLCList();

  int OnKillActive() override;
  int OnApply() override;

  // The settings of the trending stage, whose equations an Apply checks; the host's. Null: no check.
  CTrendConfig* m_pTrendOptions = nullptr;
};

}  // namespace vastra
