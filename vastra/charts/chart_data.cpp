#include "vastra/charts/chart_data.h"

#include "vastra/charts/chart_reader.h"

namespace vastra {

CChartData::CChartData(std::function<void()> onChange)
    : m_pReader(std::make_unique<CChartReader>(std::move(onChange))) {}

CChartData::~CChartData() = default;

void CChartData::SetSources(CChartSources sources) { m_pReader->SetSources(std::move(sources)); }

void CChartData::Rescan() { m_pReader->Rescan(); }

std::vector<CString> CChartData::Variables() const { return m_pReader->Rows()->Variables(); }

CMomentRange CChartData::Rows() const { return m_pReader->Range(); }

std::vector<CHistoryFault> CChartData::Faults() const { return m_pReader->Faults(); }

bool CChartData::IsScanned() const { return m_pReader->IsScanned(); }

void CChartData::Ask(CChartQuery query) { m_pReader->Ask(std::move(query)); }

CChartPicture CChartData::Picture() const { return m_pReader->Picture(); }

void CChartData::AskStatistics(const CMomentRange& range, std::vector<CString> variables) {
  m_pReader->AskStatistics(range, std::move(variables));
}

std::vector<CCurveStatistics> CChartData::Statistics() const { return m_pReader->Statistics(); }

void CChartData::AskValues(CMoment moment, std::vector<CString> variables) {
  m_pReader->AskValues(moment, std::move(variables));
}

std::vector<float> CChartData::Values() const { return m_pReader->Values(); }

void CChartData::Export(const CString& path, const CMomentRange& range, std::vector<CString> variables) {
  m_pReader->Export(path, range, std::move(variables));
}

CChartData::CExportState CChartData::ExportState() const { return m_pReader->ExportState(); }

void CChartData::CancelExport() { m_pReader->CancelExport(); }

}  // namespace vastra
