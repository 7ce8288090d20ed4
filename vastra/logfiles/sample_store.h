// CSampleStore: the samples of one log, oldest first, in the layout of its file. The file link collects a log
// in it and replays from it; the hosts read a log through it.
//
// A value record is a count and that many floats, little-endian and not aligned, as in the file. Records
// follow each other in blocks, and each block has the times of its records in an array of its own. Neither
// moves while samples are appended, so that another thread can read the samples up to a place that it has
// been told (CSampleSpan). The memory is reused from log to log.
#pragma once

#include <cstring>
#include <memory>
#include <mutex>
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

// Samples that follow each other in a store. They stay as they are until the store is emptied, also while
// samples are appended.
struct CSampleSpan {
  const char* m_records;  // the first of m_count value records
  const _timeb* m_times;
  std::size_t m_bytes;  // of the records
  std::size_t m_count;

  // Gets the first sample and removes it from the span: 1, or 0 if there is none.
  int GetNext(CSampleRecord& record);
};

using CSampleSpans = std::vector<CSampleSpan>;

// The memory of samples: bytes for records and as many times as records of the first length fit in.
struct CSampleBlock {
  std::unique_ptr<char[]> m_bytes, m_timeBytes;
  std::size_t m_size = 0, m_timeSize = 0;  // of the two, in bytes
  std::size_t m_begin = 0, m_end = 0;      // of the records in m_bytes
  std::size_t m_count = 0;                 // of records

  const _timeb* Times() const { return reinterpret_cast<const _timeb*>(m_timeBytes.get()); }
  bool Fits(std::size_t bytes) const {
    return m_size - m_end >= bytes && m_timeSize >= (m_count + 1) * sizeof(_timeb);
  }
};

// Blocks that stores share, so that a log which is collected reuses the memory of those that are on the disk.
// From any thread.
class CSampleBlockPool {
 public:
  void Take(CSampleBlock& block);  // leaves block as it is if there is none
  void Give(CSampleBlock&& block);

 private:
  static constexpr std::size_t kMostBlocks = 32;  // kept after a disk was away for long

  std::mutex m_mutex;
  std::vector<CSampleBlock> m_blocks;
};

class VASTRA_API CSampleStore {
 public:
  static constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

  // A place between two samples. It stays valid while samples are appended.
  struct CPlace {
    std::size_t m_block = 0;   // from 0
    std::size_t m_offset = 0;  // of the next record in the block
    std::size_t m_index = 0;   // of the next sample in the block
  };

  // blockSize is in bytes; a longer record gets a block of its own. pool, if not null, must exist as long as
  // the store.
  explicit CSampleStore(std::size_t blockSize = kBlockSize, CSampleBlockPool* pool = nullptr)
      : m_blockSize(blockSize), m_pPool(pool) {}
  ~CSampleStore() { FreeMemory(); }
  CSampleStore(const CSampleStore&) = delete;
  CSampleStore& operator=(const CSampleStore&) = delete;

  bool IsEmpty() const { return m_taken == m_count; }
  std::size_t GetCount() const { return m_count - m_taken; }

  std::size_t GetTakenCount() const { return m_taken; }  // removed by RemoveHead since the store was filled

  // Reserves memory so that a sample with that many values can be appended. Throws std::bad_alloc and leaves
  // the store unchanged then.
  void MakeRoom(int values) { MakeRoomFor(SizeOfRecord(static_cast<std::uint32_t>(values))); }
  // Appends a copy of sample. Throws std::bad_alloc and leaves the store unchanged then.
  void Append(const CLogSample& sample);
  // The same for a sample whose values are count floats at values, not aligned.
  void Append(const _timeb& time, const char* values, std::uint32_t count);
  // Removes the oldest sample of a log that was read and is not empty. Throws std::bad_alloc, with the store
  // unchanged, if sample cannot hold the values.
  void RemoveHead(CLogSample& sample);
  void RemoveAll();   // keeps the memory
  void FreeMemory();  // gives it to the pool, if there is one

  // The next operations cover all samples, also those that RemoveHead has removed.
  CPlace GetHeadPlace() const { return {0, m_used ? m_blocks[0].m_begin : 0, 0}; }
  // Gets the sample after place and moves place on: 1, or 0 at the end.
  int GetNext(CPlace& place, CSampleRecord& record) const;
  // Appends to spans the samples after place and moves place to the end.
  void AddSpans(CPlace& place, CSampleSpans& spans) const;
  // The oldest sample and the time of the newest, of a store that is not empty.
  CSampleRecord GetHead() const;
  const _timeb& GetLastTime() const;
  // Bytes of the samples, without unused memory.
  std::size_t GetBytes() const;
  // Bytes of the blocks, with unused memory.
  std::size_t GetMemory() const;

  // For the reader: empties the store and returns memory for the image of a log of size bytes. Throws
  // std::bad_alloc.
  char* MakeImage(std::size_t size);
  // Makes the value records from begin to end of the image, and the times at times, the samples of the store.
  // There are count of each.
  void TakeImage(std::size_t begin, std::size_t end, std::size_t count, const char* times);

 private:
  static std::size_t SizeOfRecord(std::uint32_t values) {
    return SizeOfCount(values) + std::size_t{values} * sizeof(float);
  }
  void MakeRoomFor(std::size_t bytes);
  void NeedBlock(std::size_t index, std::size_t bytes, std::size_t size, std::size_t times);
  bool Fits(std::size_t bytes) const { return m_used > 0 && m_blocks[m_used - 1].Fits(bytes); }

  std::size_t m_blockSize;
  CSampleBlockPool* m_pPool;
  std::vector<CSampleBlock> m_blocks;
  std::size_t m_used = 0;        // blocks that hold records
  std::size_t m_count = 0;       // samples, with those taken
  std::size_t m_taken = 0;       // samples
  const char* m_next = nullptr;  // of an image: the record of the oldest sample that is left
};

inline int CSampleSpan::GetNext(CSampleRecord& record) {
  if (m_count == 0) return 0;
  record.m_time = *m_times++;
  record.m_values = GetCountAt(m_records, record.m_count);
  const char* next = record.m_values + record.m_count * sizeof(float);
  m_bytes -= static_cast<std::size_t>(next - m_records);
  m_records = next;
  --m_count;
  return 1;
}

inline void CSampleStore::RemoveHead(CLogSample& sample) {
  std::uint32_t count;
  const char* values = GetCountAt(m_next, count);
  const std::size_t bytes = count * sizeof(float);
  if (sample.m_values.GetSize() != static_cast<int>(count)) sample.m_values.SetSize(static_cast<int>(count));
  if (count) std::memcpy(sample.m_values.GetData(), values, bytes);
  sample.m_time = m_blocks[0].Times()[m_taken++];
  m_next = values + bytes;
}

}  // namespace vastra
