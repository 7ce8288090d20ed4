#include "vastra/history/buckets.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "vastra/history/bucket_maker.h"

namespace vastra {

// A sum with its rounding errors: TwoSum of D. E. Knuth, The Art of Computer Programming, volume 2, 4.2.2.
void CBucket::AddToSum(double value, double rest) {
  const double next = sum + value;
  const double part = next - sum;
  sumRest += (sum - (next - part)) + (value - part) + rest;
  sum = next;
}

namespace {

// Four values that are added at the same time, each to a sum of its own.
constexpr std::uint32_t kLanes = 4;
using CFourFloats = float __attribute__((vector_size(16)));
using CTwoDoubles = double __attribute__((vector_size(16)));

float FloatAt(const char* at) {
  float value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// As CBucket::AddToSum.
struct CTwoSums {
  CTwoDoubles sum = {}, rest = {};

  void Add(CTwoDoubles values) {
    const CTwoDoubles next = sum + values;
    const CTwoDoubles part = next - sum;
    rest += (sum - (next - part)) + (values - part);
    sum = next;
  }
};

struct CFourSums {
  CFourFloats least, greatest;
  CTwoSums low, high;

  explicit CFourSums(float value) : least{value, value, value, value}, greatest{value, value, value, value} {}
  // False, with nothing added, if a value is not finite.
  bool Add(const char* at, std::size_t step) {
    const CFourFloats values = {FloatAt(at), FloatAt(at + step), FloatAt(at + 2 * step),
                                FloatAt(at + 3 * step)};
    const CFourFloats zeros = values * 0.0F;  // NaN for a value that is not finite
    if ((zeros[0] + zeros[1]) + (zeros[2] + zeros[3]) != 0) return false;
    least = values < least ? values : least;
    greatest = values > greatest ? values : greatest;
    low.Add(CTwoDoubles{static_cast<double>(values[0]), static_cast<double>(values[1])});
    high.Add(CTwoDoubles{static_cast<double>(values[2]), static_cast<double>(values[3])});
    return true;
  }
};

}  // namespace

void CBucket::Add(float value) {
  if (!std::isfinite(value)) {
    ++(std::isnan(value) ? nans : infinities);
    return;
  }
  if (values++ == 0) least = greatest = first = value;
  least = value < least ? value : least;
  greatest = value > greatest ? value : greatest;
  last = value;
  AddToSum(static_cast<double>(value), 0);
}

void CBucket::Add(const char* at, std::size_t step, std::uint32_t count) {
  for (; count > 0 && (values == 0 || count % kLanes != 0); --count, at += step) Add(FloatAt(at));
  if (count == 0) return;
  CFourSums four(first);
  for (; count > 0; count -= kLanes, at += kLanes * step) {
    if (four.Add(at, step)) {
      values += kLanes;
      last = FloatAt(at + (kLanes - 1) * step);
    } else {
      for (std::uint32_t i = 0; i < kLanes; ++i) Add(FloatAt(at + i * step));
    }
  }
  for (std::uint32_t i = 0; i < kLanes; ++i) {
    least = std::min(least, four.least[i]);
    greatest = std::max(greatest, four.greatest[i]);
    AddToSum(i < 2 ? four.low.sum[i] : four.high.sum[i - 2],
             i < 2 ? four.low.rest[i] : four.high.rest[i - 2]);
  }
}

void CBucket::Add(const CBucket& later) {
  nans += later.nans;
  infinities += later.infinities;
  if (later.values == 0) return;
  if (values == 0) least = greatest = first = later.first;
  least = later.least < least ? later.least : least;
  greatest = later.greatest > greatest ? later.greatest : greatest;
  last = later.last;
  values += later.values;
  AddToSum(later.sum, later.sumRest);
}

CBucketReader::CBucketReader(const std::vector<CHistoryLog>& logs, CBucketRequest request)
    : m_pMaker(std::make_unique<CBucketMaker>(logs, std::move(request))) {}

CBucketReader::~CBucketReader() = default;

const std::vector<CString>& CBucketReader::Variables() const { return m_pMaker->Variables(); }

bool CBucketReader::Next(CBucketPart& part) { return m_pMaker->Next(part); }

const std::vector<CHistoryFault>& CBucketReader::Faults() const { return m_pMaker->Faults(); }

double CBucketReader::Progress() const { return m_pMaker->Progress(); }

}  // namespace vastra
