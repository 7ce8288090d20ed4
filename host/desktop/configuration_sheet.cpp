#include "host/desktop/configuration_sheet.h"

#include <QTimer>
#include <QWidget>

#include <charconv>
#include <string_view>
#include <utility>

namespace vastra {
namespace {

constexpr std::string_view kNodesKey = "input.plcNodes[";

}  // namespace

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
  if (m_first.page != pageInput) SetActivePage(m_first.page);
  if (m_first.entry >= 0) QTimer::singleShot(0, Widget(), [this] { OpenEntry(); });  // once it can be seen
}

void CConfigurationSheet::OpenEntry() {
  switch (m_first.page) {
    case pageInput:
      return m_input.OpenNode(m_first.entry);
    case pageOutputs:
      return m_outputs.OpenItem(m_first.entry);
    case pageSummaries:
      return m_summaries.OpenItem(m_first.entry);
    case pagePlcWrite:
      return m_plcWrite.OpenNode(m_first.entry);
    case pageSmart:
      break;  // it has no entries
  }
}

CConfigurationSheet::CPlace CConfigurationSheet::PlaceOf(const CString& part) {
  constexpr std::pair<std::string_view, EPage> kPages[] = {
      {"output", pageOutputs},      {"outputs", pageOutputs}, {"summary", pageSummaries},
      {"summaries", pageSummaries}, {"smart", pageSmart},     {"plcWrite", pagePlcWrite},
      {"written", pagePlcWrite},    {"Plc", pagePlcWrite}};
  const std::string_view text = part.View().substr(0, part.View().find(' '));
  const std::string_view word = text.substr(0, text.find_first_of("[."));
  CPlace place;
  const std::size_t index = text.find('[') + 1;
  if (index != 0) std::from_chars(text.data() + index, text.data() + text.size(), place.entry);
  for (const auto& [name, page] : kPages)
    if (name == word) place.page = page;
  if (place.page == pageInput && text.find(kNodesKey) != 0) place.entry = -1;  // such as input.inputFiles[2]
  return place;
}

void CConfigurationSheet::GetConfiguration(CConfiguration& configuration) const {
  m_input.GetConfiguration(configuration.m_input);
  m_outputs.GetConfiguration(configuration.m_outputs);
  m_summaries.GetConfiguration(configuration.m_summaries);
  m_smart.GetConfiguration(configuration.m_smart);
  m_plcWrite.GetConfiguration(configuration.m_plcWrite);
}

}  // namespace vastra
