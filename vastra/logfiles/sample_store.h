// CSampleStore: the samples of one log, oldest first, in the layout of its file. The file link gathers a log
// in it, keeps a growing log in it, and replays from it; the hosts look through a log in it.
//
// A value record is a count and then that many floats, little-endian and not aligned, as in the file. Records
// lie behind each other in blocks, the times in an array of their own. The memory stays from log to log.
#pragma once

#include <sys/uio.h>

#include <cstring>
#include <memory>
#include <vector>

#include "vastra/core/sample.h"
#include "vastra/logfiles/log_format.h"

namespace vastra {

// One sample where it lies: valid until the store changes.
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

  // A place between two samples. It stays good while samples are appended.
  struct CPlace {
    std::size_t m_block = 0;   // from 0
    std::size_t m_offset = 0;  // of the next record in the block
    std::size_t m_index = 0;   // of the next sample
  };

  // blockSize in bytes; a record that is longer gets a block of its own.
  explicit CSampleStore(std::size_t blockSize = kBlockSize) : m_blockSize(blockSize) {}

  bool IsEmpty() const { return m_taken == m_times.size(); }
  std::size_t GetCount() const { return m_times.size() - m_taken; }

  std::size_t GetTakenCount() const { return m_taken; }  // by RemoveHead, since the store was filled

  // Sees to it that a sample of that many values can be appended without more memory. Throws std::bad_alloc,
  // with the store as it was.
  void MakeRoom(int values);
  // Appends a copy of sample. Throws std::bad_alloc, with the store as it was.
  void Append(const CLogSample& sample);
  // Takes the oldest sample of a log that was read, of which there is one left. Throws std::bad_alloc, with
  // the store as it was, if sample cannot hold the values.
  void RemoveHead(CLogSample& sample);
  void RemoveAll();  // keeps the memory
  void FreeMemory();

  // What follows is about all samples, also those that were taken.
  CPlace GetHeadPlace() const { return {0, m_used ? m_blocks[0].m_begin : 0, 0}; }
  // Gives the sample behind place and moves place on: 1, or 0 at the end.
  int GetNext(CPlace& place, CSampleRecord& record) const;
  // The oldest sample and the time of the newest one, of a store that is not empty.
  CSampleRecord GetHead() const;
  const _timeb& GetLastTime() const { return m_times.back(); }

  // Appends to parts where all value records lie, in order.
  void AddRecordParts(std::vector<iovec>& parts) const;
  // The times, as one block.
  iovec GetTimesPart() const;

  // For the reader: empties the store and gives room for the image of a log of size bytes. Throws
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
  const char* m_next = nullptr;  // of an image: the record of the oldest sample that was not taken
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
