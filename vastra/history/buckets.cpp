#include "vastra/history/buckets.h"

#include "vastra/history/bucket_maker.h"

namespace vastra {

void CBucket::Add(const CBucket& later) {
  nans += later.nans;
  infinities += later.infinities;
  if (later.values == 0) return;
  if (values == 0) least = greatest = first = later.first;
  least = later.least < least ? later.least : least;
  greatest = later.greatest > greatest ? later.greatest : greatest;
  last = later.last;
  values += later.values;
  AddToSum(later.sum);
  AddToSum(later.sumRest);
}

CBucketReader::CBucketReader(const std::vector<CHistoryLog>& logs, CBucketRequest request)
    : m_pMaker(std::make_unique<CBucketMaker>(logs, std::move(request))) {}

CBucketReader::~CBucketReader() = default;

const std::vector<CString>& CBucketReader::Variables() const { return m_pMaker->Variables(); }

bool CBucketReader::Next(CBucketPart& part) { return m_pMaker->Next(part); }

const std::vector<CHistoryFault>& CBucketReader::Faults() const { return m_pMaker->Faults(); }

double CBucketReader::Progress() const { return m_pMaker->Progress(); }

}  // namespace vastra
