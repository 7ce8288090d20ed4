#include "host/desktop/configuration_sheet.h"

#include <string_view>
#include <utility>

namespace vastra {

CConfigurationSheet::CConfigurationSheet(const CConfiguration& configuration, std::function<void()> applied)
    : CPropertySheet("Configuration"), m_applied(std::move(applied)) {
  m_smart.SetInputPointer(&m_input);
  const auto link = [this](auto& page) {
    page.SetInputPointer(&m_input);
    page.SetSmartPointer(&m_smart);
  };
  link(m_outputs);
  link(m_summaries);
  link(m_plcWrite);
  m_input.SetConfiguration(configuration.m_input);
  m_outputs.SetConfiguration(configuration.m_outputs);
  m_summaries.SetConfiguration(configuration.m_summaries);
  m_smart.SetConfiguration(configuration.m_smart);
  m_plcWrite.SetConfiguration(configuration.m_plcWrite);
  for (CPropertyPage* page :
       std::initializer_list<CPropertyPage*>{&m_input, &m_outputs, &m_summaries, &m_smart, &m_plcWrite})
    AddPage(*page);
}

void CConfigurationSheet::OnInitDialog() {
  CPropertySheet::OnInitDialog();
  if (m_firstPage != pageInput) SetActivePage(m_firstPage);
}

CConfigurationSheet::EPage CConfigurationSheet::PageOf(const CString& part) {
  constexpr std::pair<std::string_view, EPage> kPages[] = {
      {"output", pageOutputs},      {"outputs", pageOutputs}, {"summary", pageSummaries},
      {"summaries", pageSummaries}, {"smart", pageSmart},     {"plcWrite", pagePlcWrite},
      {"written", pagePlcWrite},    {"Plc", pagePlcWrite}};
  const std::string_view word = part.View().substr(0, part.View().find_first_of("[. "));
  for (const auto& [name, page] : kPages)
    if (name == word) return page;
  return pageInput;
}

void CConfigurationSheet::GetConfiguration(CConfiguration& configuration) const {
  m_input.GetConfiguration(configuration.m_input);
  m_outputs.GetConfiguration(configuration.m_outputs);
  m_summaries.GetConfiguration(configuration.m_summaries);
  m_smart.GetConfiguration(configuration.m_smart);
  m_plcWrite.GetConfiguration(configuration.m_plcWrite);
}

}  // namespace vastra
