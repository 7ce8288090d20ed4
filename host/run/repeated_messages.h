// CRepeatedMessages: which messages of the links are shown. A message that comes again and again, such as the
// failure of a device that is read at each scan, is shown once, then counted once a minute and when it ends.
// The run asks it for each message.
//
// Threads: Take can be called from any thread, all else only on the thread that drives the run.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>

#include "host/run/run_observer.h"

namespace vastra {

class CRepeatedMessages {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Span = std::chrono::steady_clock::duration;
  using CSay = std::function<void(const CRunMessage&)>;

  // Bounds. More new texts of one operation of a link in a minute, and of all links, are counted together.
  static constexpr int kMostTexts = 20;
  static constexpr std::size_t kMostMessages = 2048;

  // Whether the message is shown.
  bool Take(const CRunMessage& message, Time now);
  // Called after each scan and while the run waits for one: says how often messages came again in the last
  // minute, and which have ended.
  void Report(Time now, bool isScanDone, const CSay& say);
  // At the end of the run: says how often messages came since the last report, and forgets them.
  void End(const CSay& say);

 private:
  struct CEntry {
    std::string link, name, text;
    char severity, function;
    bool isEvent;  // of a node that goes or comes
    Time first, last, told;
    Span longestPause{};
    std::uint64_t count = 0, untold = 0, shown = 0;
    std::uint64_t scan = 0;  // the last one that it came in
  };
  CEntry& Find(const CRunMessage& message, Time now);
  CEntry* Known(std::size_t key);
  CEntry& Add(std::size_t key, const CRunMessage& message, Time now, const char* text);
  static void SayOf(const CEntry& entry, char severity, const std::string& count, const CSay& say);
  bool HasEnded(const CEntry& entry, Time now) const;
  bool Tell(CEntry& entry, Time now, const CSay& say) const;

  std::mutex m_mutex;  // of all members
  std::unordered_map<std::size_t, CEntry> m_entries;
  std::unordered_map<std::size_t, int> m_texts;  // new ones of each operation in this minute
  Time m_minute{};                               // its end
  std::uint64_t m_scan = 0;
  Time m_due{};
};

}  // namespace vastra
