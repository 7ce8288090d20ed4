#include "vastra/history/row_reader.h"

#include "vastra/history/row_merger.h"

namespace vastra {

CRowReader::CRowReader(const std::vector<CHistoryLog>& logs, CRowRequest request)
    : m_pMerger(std::make_unique<CRowMerger>(logs, std::move(request))) {}

CRowReader::~CRowReader() = default;

const std::vector<CString>& CRowReader::Variables() const { return m_pMerger->Variables(); }

bool CRowReader::Next(CHistoryRow& row) { return m_pMerger->Next(row); }

const std::vector<CHistoryFault>& CRowReader::Faults() const { return m_pMerger->Faults(); }

double CRowReader::Progress() const { return m_pMerger->Progress(); }

}  // namespace vastra
