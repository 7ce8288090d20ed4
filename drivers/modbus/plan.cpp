#include "plan.h"

#include <algorithm>
#include <tuple>

namespace modbus {
namespace {

constexpr int kWidestGap = 8;

int EndOf(const CValue& value) { return value.address + SizeOf(value.type); }
int EndOf(const CRequest& request) { return request.first + request.count; }

int MostOf(const CKind& kind, const CLimits& limits) {
  return kind.isRegister ? limits.registers : 16 * limits.registers;
}

// Whether request can also contain value, which does not begin before it.
bool Takes(const CRequest& request, const CValue& value, int widestGap, const CLimits& limits) {
  return !limits.single && request.kind == value.kind && value.address - EndOf(request) <= widestGap &&
         EndOf(value) - request.first <= MostOf(*value.kind, limits);
}

void Extend(CRequest& request, const CPlace& place) {
  request.count = std::max(request.count, EndOf(place.value) - request.first);
  request.places.push_back(place);
}

std::vector<CPlace> PlacesOf(const std::vector<CValue>& values) {
  std::vector<CPlace> places;
  places.reserve(values.size());
  for (const CValue& value : values) places.push_back({static_cast<int>(places.size()), value});
  return places;
}

}  // namespace

std::vector<CRequest> PlanReads(const std::vector<CValue>& values, const CLimits& limits) {
  std::vector<CPlace> places = PlacesOf(values);
  std::ranges::stable_sort(places, {}, [](const CPlace& place) {
    return std::tuple(place.value.kind->letter, place.value.address);
  });
  std::vector<CRequest> requests;
  for (const CPlace& place : places) {
    if (requests.empty() || !Takes(requests.back(), place.value, kWidestGap, limits))
      requests.push_back({place.value.kind, place.value.address, 0, {}});
    Extend(requests.back(), place);
  }
  return requests;
}

std::vector<CRequest> PlanWrites(const std::vector<CValue>& values, const CLimits& limits) {
  std::vector<CRequest> requests;
  for (const CPlace& place : PlacesOf(values)) {
    const bool follows = !requests.empty() && place.value.address == EndOf(requests.back());
    if (!follows || !Takes(requests.back(), place.value, 0, limits))
      requests.push_back({place.value.kind, place.value.address, 0, {}});
    Extend(requests.back(), place);
  }
  return requests;
}

}  // namespace modbus
