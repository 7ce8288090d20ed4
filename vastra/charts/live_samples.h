// CLiveSamples: the newest samples of a running logger, in a ring of bounded memory. The scan's thread adds
// to it; a chart copies pieces of it on its own thread. A lock is held only while a row or a small piece is
// copied.
//
//     auto live = std::make_shared<CLiveSamples>();
//     live->Begin(names);              // at the start, and when the names change
//     live->Add(time, values, count);  // each sample
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "vastra/history/history_log.h"

namespace vastra {

// What the ring has.
struct CLiveHead {
  CSharedNames names;                       // null before Begin
  std::uint64_t generation = 0;             // counts the calls of Begin
  std::uint64_t first = 0, end = 0;         // numbers of the samples that are there, from 0 since Begin
  CMoment firstMoment = 0, lastMoment = 0;  // of the first sample, and the latest of all
  CMoment newestMoment = 0;                 // of the sample that was added last
  std::uint64_t backSteps = 0;              // how often the clock went back since Begin
  // All samples from this moment on are there. Earlier ones can be missing, also if the clock went back.
  CMoment since = 0;
  // The same with an eighth of the ring in reserve: it holds until that many samples more have been added.
  CMoment steadySince = 0;
};

// From the first to after the last moment of the samples that the ring has got between two heads of it since
// one Begin; {0, 0} if there are none.
CMomentRange AddedBetween(const CLiveHead& before, const CLiveHead& now);

// Samples of the ring in the order in which they were added.
struct CLivePiece {
  std::vector<CMoment> moments;
  std::vector<float> values;  // for each sample as many as there are names
};

class VASTRA_API CLiveSamples {
 public:
  static constexpr std::size_t kDefaultBytes = std::size_t{64} << 20;

  explicit CLiveSamples(std::size_t bytes = kDefaultBytes) : m_bytes(bytes) {}
  CLiveSamples(const CLiveSamples&) = delete;
  CLiveSamples& operator=(const CLiveSamples&) = delete;

  // By the thread of the scan. Begin forgets all samples, and allocates; Add does not. A sample with another
  // number of values than there are names is filled up with NaN or cut.
  void Begin(std::vector<CString> names);
  void Add(const _timeb& time, const float* values, std::size_t count);

  // From any thread.
  CLiveHead Head() const;
  // The number of the first sample whose moment is not before moment; that of the first sample at all if the
  // clock went back.
  std::uint64_t Find(CMoment moment) const;
  // Copies samples from number first on, at least one and about 64 KB, if they are there: false if the ring
  // has none there (any more), or has begun anew.
  bool Read(std::uint64_t generation, std::uint64_t first, CLivePiece& piece) const;

 private:
  static constexpr std::size_t kBlocks = 64;
  static constexpr std::size_t kReserve = kBlocks / 8;

  float* Place(std::uint64_t number) const { return &m_values[(number % m_capacity) * m_width]; }
  void DropBlock();
  CMoment LatestMoment() const;

  const std::size_t m_bytes;
  mutable std::mutex m_mutex;  // of all below
  CSharedNames m_names;
  std::uint64_t m_generation = 0, m_first = 0, m_end = 0, m_backSteps = 0;
  std::size_t m_width = 0;
  std::uint64_t m_capacity = 0, m_inBlock = 0;  // samples; the capacity is a multiple
  std::unique_ptr<float[]> m_values;
  std::unique_ptr<CMoment[]> m_moments;
  CMoment m_latest[kBlocks] = {};          // of the samples of each block
  CMoment m_latestDropped = kFirstMoment;  // of all that are gone
  bool m_hasDropped = false;
};

}  // namespace vastra
