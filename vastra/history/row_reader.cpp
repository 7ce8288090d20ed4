#include "vastra/history/row_reader.h"

#include "vastra/history/row_merger.h"

namespace vastra {

CRowReader::CRowReader(const std::vector<CHistoryLog>& logs, CRowRequest request)
    : m_pMerger(std::make_unique<CRowMerger>(logs, std::move(request))) {}

CRowReader::~CRowReader() = default;

const std::vector<CString>& CRowReader::Variables() const { return m_pMerger->Variables(); }

bool CRowReader::NextStretch(CRowStretch& stretch) {
  m_next = 0;
  if (m_pMerger->Next(stretch)) return true;
  stretch.count = 0;
  return false;
}

const std::vector<CHistoryFault>& CRowReader::Faults() const { return m_pMerger->Faults(); }

double CRowReader::Progress() const { return m_pMerger->Progress(); }

}  // namespace vastra
