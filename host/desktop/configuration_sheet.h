// CConfigurationSheet: the sheet in which the user edits a configuration, a page for each part of it. It
// works on copies: a CConfiguration goes in and comes out, and of that nothing but what the pages show is
// touched.
#pragma once

#include "host/common/configuration.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/output_page.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/smart_page.h"
#include "vastra/screens/summary_page.h"

namespace vastra {

class CConfigurationSheet : public CPropertySheet {
 public:
  // applied is called each time the user applies the sheet, also with OK.
  CConfigurationSheet(const CConfiguration& configuration, std::function<void()> applied);

  void GetConfiguration(CConfiguration& configuration) const;
  // The settings of the trending stage: the input page checks their equations, and empties them where the
  // user says so. They are given anew when other stages are made.
  void SetTrend(CTrendConfig* trend) { m_input.m_pTrendOptions = trend; }

 protected:
  void OnApplied() override { m_applied(); }

 private:
  const std::function<void()> m_applied;
  CInputPage m_input;
  COutputPage m_outputs;
  CSummaryPage m_summaries;
  CSmartPage m_smart;
  CPlcWritePage m_plcWrite;
};

}  // namespace vastra
