#include "host/cli/time_text.h"

#include <cstdio>

namespace vastra {
namespace {

std::string Compose(std::int64_t seconds, const char* fraction) {
  const std::tm local = CTime(seconds).GetLocalTm();
  char clock[64], offset[16];
  std::strftime(clock, sizeof clock, "%Y-%m-%dT%H:%M:%S", &local);
  std::strftime(offset, sizeof offset, "%z", &local);  // "+0100"
  return std::string(clock) + fraction + std::string(offset).insert(3, ":");
}

}  // namespace

std::string LocalTimeText(std::int64_t seconds) { return Compose(seconds, ""); }

std::string LocalTimeText(const _timeb& time) {
  char fraction[16];
  std::snprintf(fraction, sizeof fraction, ".%03u", time.millitm);
  return Compose(time.time, fraction);
}

}  // namespace vastra
