#include "vastra/logfiles/sample_store.h"

#include <algorithm>

namespace vastra {
namespace {

std::size_t RecordSize(std::size_t values) {
  return SizeOfCount(static_cast<std::uint32_t>(values)) + values * sizeof(float);
}

}  // namespace

// Ensures that the block at index, at most one after the last, has at least bytes; a new block has size bytes
// if that is more.
void CSampleStore::NeedBlock(std::size_t index, std::size_t bytes, std::size_t size) {
  if (index == m_blocks.size()) m_blocks.emplace_back();
  CBlock& block = m_blocks[index];
  if (block.m_size >= bytes) return;
  size = std::max(bytes, size);
  block = {};  // frees the old memory before a larger block is allocated
  block.m_bytes = std::make_unique_for_overwrite<char[]>(size);
  block.m_size = size;
}

void CSampleStore::MakeRoom(int values) {
  if (m_times.size() == m_times.capacity())
    m_times.reserve(std::max<std::size_t>(64, 2 * m_times.capacity()));
  const std::size_t bytes = RecordSize(static_cast<std::size_t>(values));
  if (!Fits(bytes)) NeedBlock(m_used, bytes, m_blockSize);
}

void CSampleStore::Append(const CLogSample& sample) {
  MakeRoom(sample.m_values.GetSize());
  const auto count = static_cast<std::uint32_t>(sample.m_values.GetSize());
  if (!Fits(RecordSize(count))) {
    CBlock& fresh = m_blocks[m_used++];
    fresh.m_begin = fresh.m_end = 0;
  }
  CBlock& block = m_blocks[m_used - 1];
  char* to = PutCount(block.m_bytes.get() + block.m_end, count);
  if (count) std::memcpy(to, sample.m_values.GetData(), count * sizeof(float));
  block.m_end += RecordSize(count);
  m_times.push_back(sample.m_time);
}

int CSampleStore::GetNext(CPlace& place, CSampleRecord& record) const {
  if (place.m_index == m_times.size()) return 0;
  const CBlock* block = &m_blocks[place.m_block];
  if (place.m_offset == block->m_end) {
    block = &m_blocks[++place.m_block];
    place.m_offset = block->m_begin;
  }
  const char* at = block->m_bytes.get() + place.m_offset;
  record.m_time = m_times[place.m_index++];
  record.m_values = GetCountAt(at, record.m_count);
  place.m_offset += static_cast<std::size_t>(record.m_values - at) + record.m_count * sizeof(float);
  return 1;
}

CSampleRecord CSampleStore::GetHead() const {
  CSampleRecord record;
  CPlace place = GetHeadPlace();
  GetNext(place, record);
  return record;
}

void CSampleStore::RemoveAll() {
  m_used = 0;
  m_times.clear();
  m_taken = 0;
}

void CSampleStore::FreeMemory() {
  RemoveAll();
  std::vector<CBlock>().swap(m_blocks);
  std::vector<_timeb>().swap(m_times);
}

void CSampleStore::AddRecordParts(std::vector<iovec>& parts) const {
  for (std::size_t i = 0; i < m_used; ++i) {
    const CBlock& block = m_blocks[i];
    parts.push_back({block.m_bytes.get() + block.m_begin, block.m_end - block.m_begin});
  }
}

iovec CSampleStore::GetTimesPart() const {
  return {const_cast<_timeb*>(m_times.data()), m_times.size() * sizeof(_timeb)};
}

char* CSampleStore::MakeImage(std::size_t size) {
  RemoveAll();
  NeedBlock(0, size, size);
  return m_blocks[0].m_bytes.get();
}

void CSampleStore::TakeImage(std::size_t begin, std::size_t end, std::size_t count, const char* times) {
  m_times.resize(count);
  if (count) std::memcpy(m_times.data(), times, count * sizeof(_timeb));
  m_blocks[0].m_begin = begin;
  m_blocks[0].m_end = end;
  m_used = 1;
  m_next = m_blocks[0].m_bytes.get() + begin;
}

}  // namespace vastra
