// CSampleStore: the samples of one log, oldest first, in the layout of its file. The file link collects a log
// in it and replays from it; the hosts read a log through it.
//
// A value record is a count and that many floats, little-endian and not aligned, as in the file. Records
// follow each other in blocks; the times are in an array of their own. The memory is reused from log to log.
#pragma once

#include <sys/uio.h>

#include <cstring>
#include <memory>
#include <vector>

#include "vastra/core/sample.h"
#include "vastra/logfiles/log_format.h"

namespace vastra {

// One sample, as a pointer into the store: valid until the store changes.
struct CSampleRecord {
  _timeb m_time;
  const char* m_values;  // m_count floats, not aligned
  std::uint32_t m_count;

  float Value(std::uint32_t index) const {
    float value;
    std::memcpy(&value, m_values + sizeof value * index, sizeof value);
    return value;
  }
};

class VASTRA_API CSampleStore {
 public:
  static constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

  // A place between two samples. It stays valid while samples are appended.
  struct CPlace {
    std::size_t m_block = 0;   // from 0
    std::size_t m_offset = 0;  // of the next record in the block
    std::size_t m_index = 0;   // of the next sample
  };

  // blockSize is in bytes; a longer record gets a block of its own.
  explicit CSampleStore(std::size_t blockSize = kBlockSize) : m_blockSize(blockSize) {}

  bool IsEmpty() const { return m_taken == m_times.size(); }
  std::size_t GetCount() const { return m_times.size() - m_taken; }

  std::size_t GetTakenCount() const { return m_taken; }  // removed by RemoveHead since the store was filled

  // Reserves memory so that a sample with that many values can be appended. Throws std::bad_alloc and leaves
  // the store unchanged then.
  void MakeRoom(int values);
  // Appends a copy of sample. Throws std::bad_alloc and leaves the store unchanged then.
  void Append(const CLogSample& sample);
  // Removes the oldest sample of a log that was read and is not empty. Throws std::bad_alloc, with the store
  // unchanged, if sample cannot hold the values.
  void RemoveHead(CLogSample& sample);
  void RemoveAll();  // keeps the memory
  void FreeMemory();

  // The next operations cover all samples, also those that RemoveHead has removed.
  CPlace GetHeadPlace() const { return {0, m_used ? m_blocks[0].m_begin : 0, 0}; }
  // Gets the sample after place and moves place on: 1, or 0 at the end.
  int GetNext(CPlace& place, CSampleRecord& record) const;
  // The oldest sample and the time of the newest, of a store that is not empty.
  CSampleRecord GetHead() const;
  const _timeb& GetLastTime() const { return m_times.back(); }

  // Appends to parts the locations of all value records, in order.
  void AddRecordParts(std::vector<iovec>& parts) const;
  // The times, as one block.
  iovec GetTimesPart() const;

  // For the reader: empties the store and returns memory for the image of a log of size bytes. Throws
  // std::bad_alloc.
  char* MakeImage(std::size_t size);
  // Makes the value records from begin to end of the image, and the times at times, the samples of the store.
  // There are count of each.
  void TakeImage(std::size_t begin, std::size_t end, std::size_t count, const char* times);

 private:
  struct CBlock {
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_begin = 0, m_end = 0;  // of the records in it
  };

  void NeedBlock(std::size_t index, std::size_t bytes, std::size_t size);
  bool Fits(std::size_t bytes) const {
    return m_used > 0 && m_blocks[m_used - 1].m_size - m_blocks[m_used - 1].m_end >= bytes;
  }

  std::size_t m_blockSize;
  std::vector<CBlock> m_blocks;
  std::size_t m_used = 0;  // blocks that hold records
  std::vector<_timeb> m_times;
  std::size_t m_taken = 0;       // samples
  const char* m_next = nullptr;  // of an image: the record of the oldest sample that is left
};

inline void CSampleStore::RemoveHead(CLogSample& sample) {
  std::uint32_t count;
  const char* values = GetCountAt(m_next, count);
  const std::size_t bytes = count * sizeof(float);
  if (sample.m_values.GetSize() != static_cast<int>(count)) sample.m_values.SetSize(static_cast<int>(count));
  if (count) std::memcpy(sample.m_values.GetData(), values, bytes);
  sample.m_time = m_times[m_taken++];
  m_next = values + bytes;
}

}  // namespace vastra
