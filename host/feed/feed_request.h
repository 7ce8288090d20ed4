// What a reader of the feed asks for, in one line of JSON.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

struct CFeedRequest {
  // What is wanted, as bits.
  enum EWant : unsigned { sample = 1, counts = 2, message = 4, log = 8, state = 16, all = 31 };
  static constexpr std::chrono::milliseconds kShortest{50}, kDefault{1000}, kLongest{86'400'000};

  bool Wants(EWant what) const { return (wants & what) != 0; }

  unsigned wants = all;
  std::chrono::milliseconds interval = kDefault;  // from sample to sample
  std::optional<std::vector<CString>> variables;  // of a sample; none: all
};

// Throws CJsonFault for a line that is no request. What the line leaves out has its default.
CFeedRequest ParseFeedRequest(std::string_view line);

}  // namespace vastra
