// CFeedContent: what a feed says, as lines that all its readers share. A logger has one about its run; a
// program that hands on the feeds of other machines has one about each.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

using CFeedLine = std::shared_ptr<const std::string>;

// The places of variables in a sample, by name, and those of some; -1: the sample has none of this name.
using CFeedPlaces = std::unordered_map<std::string_view, int>;
std::vector<int> PlacesOf(const std::vector<CString>& variables, const CFeedPlaces& places);

std::string ErrorLine(const CString& text);
// Lines that a slow reader has missed. key: "messages" or "logs".
std::string DroppedLine(const char* key, std::uint64_t count);

// Lines with numbers from 1, the last ones of which are kept.
class CFeedRecords {
 public:
  virtual ~CFeedRecords() = default;
  // The numbers of the oldest line that is kept, and of the next one to come.
  virtual std::uint64_t Oldest() const { return 1; }
  virtual std::uint64_t Next() const { return 1; }
  // The next line from cursor on, which moves after it; null: there is none yet. missed: the lines before it
  // that are not kept any more.
  virtual CFeedLine Take(std::uint64_t& cursor, std::uint64_t& missed);
};

class CFeedContent {
 public:
  using Time = std::chrono::steady_clock::time_point;
  static constexpr std::chrono::milliseconds kTick{50};

  CFeedContent() = default;
  CFeedContent(const CFeedContent&) = delete;
  CFeedContent& operator=(const CFeedContent&) = delete;
  virtual ~CFeedContent() = default;

  // Looks at what there is now. Called at most once in a tick, and not at all without readers.
  void Refresh(Time now);
  Time RefreshedAt() const { return m_refreshed; }

  // Why there is nothing to say; empty: there is. A reader is told it and goes.
  virtual CString Fault() const { return {}; }
  // Counts the changes of hello, of what a state line has except times and free bytes, and of the names of
  // the samples.
  virtual std::uint64_t HelloChange() const = 0;
  virtual std::uint64_t StateChange() const = 0;
  virtual std::uint64_t NamesChange() const = 0;
  // Null for a line that is not there.
  virtual CFeedLine Hello() = 0;
  virtual CFeedLine State() = 0;
  virtual CFeedLine Counts() = 0;
  // The number of the newest sample; 0: there is none with these names.
  virtual std::uint64_t SampleNumber() const = 0;
  virtual CFeedLine Sample() = 0;
  virtual CFeedLine Sample(const std::vector<int>& indexes) = 0;
  // The indexes of variables in a sample; -1: it has none of this name.
  virtual std::vector<int> IndexesOf(const std::vector<CString>& variables) = 0;
  // None, unless they are overridden.
  virtual CFeedRecords& Messages() { return m_none; }
  virtual CFeedRecords& Logs() { return m_none; }

 private:
  virtual void Look() = 0;

  Time m_refreshed{};
  CFeedRecords m_none;
};

}  // namespace vastra
