// CLogPolicy: what a host asks of logs beyond the engine's default. With a keeper of this policy
// (log_keeper.h) the logs of a run are kept: no log replaces one that is there, each is written whole or not
// at all, and no scan waits for the disk. Without a keeper the file link writes its logs by itself.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace vastra {

struct CLogPolicy {
  // Live input: samples cannot be had again, so they are journaled, a log that a stop has cut short is
  // continued, and a clock that goes back closes the running logs. Off for a replay.
  bool live = true;
  // The writer of samples waits while two complete logs are not on the disk. Off where the scans have a
  // period: then logs wait in memory, up to hold.
  bool waits = false;
  std::chrono::milliseconds sync{5000};  // from sync to sync of a journal; 0: after each write of samples
  std::uint64_t hold = std::uint64_t{64} << 20;  // bytes of complete logs that wait for the disk
  std::chrono::milliseconds closeWithin{30000};  // the longest wait of Close for the disk
  std::chrono::milliseconds retry{5000};         // until a log that could not be saved is tried again
  std::chrono::milliseconds journal{50};         // from write to write of a journal
  // Called several times a second while the thread of the scans waits for the disk, and between the logs of
  // journals that are recovered; for a host that is watched. Returns whether the host wants to stop: recovery
  // then leaves its logs to the writer thread. Null: it does not.
  std::function<bool()> waiting = {};
};

// How many logs an output keeps beside the limit of their number; 0: no limit.
struct CLogRetention {
  double keepDays = 0;          // a log whose last sample is older is removed
  std::uint64_t keepBytes = 0;  // of all logs of the output
  std::uint64_t minFree = 0;    // bytes of the file system that stay free
};

}  // namespace vastra
