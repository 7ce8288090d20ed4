// CConfigurationSheet: the sheet in which the user edits a configuration, with a page for each part. It
// works on copies. GetConfiguration changes only the settings that the pages show.
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

  enum EPage { pageInput, pageOutputs, pageSummaries, pageSmart, pagePlcWrite };
  // A page, and the entry of its list.
  struct CPlace {
    EPage page = pageInput;
    int entry = -1;  // below 0: none
  };
  // The place of a part as a message names it: a key such as outputs[1].maxLogs or outputs[1] "All"; the
  // input page for a node and others.
  static CPlace PlaceOf(const CString& part);
  // What is opened first, if the input page, which is the first one, is complete: the page, and the dialog of
  // the entry over it.
  void SetFirst(const CPlace& place) { m_first = place; }

  void GetConfiguration(CConfiguration& configuration) const;
  // The settings of the trending stage. The input page checks their equations and empties them if the user
  // agrees. trend must exist as long as the sheet.
  void SetTrend(CTrendConfig* trend) { m_input.m_pTrendOptions = trend; }

 protected:
  void OnInitDialog() override;
  void OnApplied() override { m_applied(); }

 private:
  void OpenEntry();

  const std::function<void()> m_applied;
  CPlace m_first;
  CInputPage m_input;
  COutputPage m_outputs;
  CSummaryPage m_summaries;
  CSmartPage m_smart;
  CPlcWritePage m_plcWrite;
};

}  // namespace vastra
