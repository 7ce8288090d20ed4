// CToldOnce: lines for the log of a service. A line that goes on being told appears after one minute again,
// then after two, four, ..., at last each hour, with the number of those that were left out. What is more
// than 100 lines in a minute is left out, too: others can cause lines.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace vastra {

class CToldOnce {
 public:
  using Time = std::chrono::steady_clock::time_point;

  explicit CToldOnce(std::function<void(const std::string&)> print) : m_print(std::move(print)) {}

  void Tell(const std::string& line) { Tell(line, std::chrono::steady_clock::now()); }
  void Tell(const std::string& line, Time now);

 private:
  struct CTold {
    Time printed, last;
    std::chrono::seconds silence = kSilence;
    std::uint64_t repeats = 0;
  };
  static constexpr std::chrono::seconds kSilence{60}, kLongestSilence{3600};
  // A line that was not told for so long is news.
  static constexpr std::chrono::seconds kEnd{300};
  static constexpr std::size_t kMost = 1000;
  static constexpr unsigned kMostInMinute = 100;

  std::function<void(const std::string&)> m_print;
  bool MayPrint(Time now);

  std::map<std::string, CTold> m_told;
  Time m_minute{};  // when the present one has begun
  unsigned m_printed = 0;
  std::uint64_t m_leftOut = 0;
};

}  // namespace vastra
