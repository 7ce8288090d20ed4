#include "vastra/logfiles/sample_store.h"

#include <algorithm>
#include <new>

namespace vastra {
namespace {

constexpr std::size_t kLeastTimes = 64;  // of a block

// Makes memory at least bytes long; a new one has size bytes. Frees the old memory before it allocates.
void Need(std::unique_ptr<char[]>& memory, std::size_t& present, std::size_t bytes, std::size_t size) {
  if (present >= bytes) return;
  memory.reset();
  present = 0;
  memory = std::make_unique_for_overwrite<char[]>(size);
  present = size;
}

}  // namespace

void CSampleBlockPool::Take(CSampleBlock& block) {
  const std::lock_guard lock(m_mutex);
  if (m_blocks.empty()) return;
  block = std::move(m_blocks.back());
  m_blocks.pop_back();
}

void CSampleBlockPool::Give(CSampleBlock&& block) {
  const std::lock_guard lock(m_mutex);
  if (m_blocks.size() >= kMostBlocks) return;  // the caller frees the block
  try {
    m_blocks.push_back(std::move(block));
  } catch (const std::bad_alloc&) {  // the caller frees the block
  }
}

// Ensures that the block at index, at most one after the last, has at least bytes and that many times; a new
// block has size bytes if that is more.
void CSampleStore::NeedBlock(std::size_t index, std::size_t bytes, std::size_t size, std::size_t times) {
  if (index == m_blocks.size()) {
    m_blocks.emplace_back();
    if (m_pPool) m_pPool->Take(m_blocks.back());
  }
  CSampleBlock& block = m_blocks[index];
  Need(block.m_bytes, block.m_size, bytes, std::max(bytes, size));
  Need(block.m_timeBytes, block.m_timeSize, times * sizeof(_timeb), times * sizeof(_timeb));
}

void CSampleStore::MakeRoomFor(std::size_t bytes) {
  if (!Fits(bytes)) NeedBlock(m_used, bytes, m_blockSize, std::max(kLeastTimes, m_blockSize / bytes));
}

void CSampleStore::Append(const CLogSample& sample) {
  Append(sample.m_time, reinterpret_cast<const char*>(sample.m_values.GetData()),
         static_cast<std::uint32_t>(sample.m_values.GetSize()));
}

void CSampleStore::Append(const _timeb& time, const char* values, std::uint32_t count) {
  const std::size_t bytes = SizeOfRecord(count);
  MakeRoomFor(bytes);
  if (!Fits(bytes)) {
    CSampleBlock& fresh = m_blocks[m_used++];
    fresh.m_begin = fresh.m_end = fresh.m_count = 0;
  }
  CSampleBlock& block = m_blocks[m_used - 1];
  char* to = PutCount(block.m_bytes.get() + block.m_end, count);
  if (count) std::memcpy(to, values, count * sizeof(float));
  std::memcpy(block.m_timeBytes.get() + block.m_count * sizeof(_timeb), &time, sizeof time);
  block.m_end += bytes;
  ++block.m_count;
  ++m_count;
}

int CSampleStore::GetNext(CPlace& place, CSampleRecord& record) const {
  if (m_used == 0) return 0;
  const CSampleBlock* block = &m_blocks[place.m_block];
  if (place.m_index == block->m_count) {
    if (place.m_block + 1 == m_used) return 0;
    block = &m_blocks[++place.m_block];
    place.m_offset = block->m_begin;
    place.m_index = 0;
  }
  const char* at = block->m_bytes.get() + place.m_offset;
  record.m_time = block->Times()[place.m_index++];
  record.m_values = GetCountAt(at, record.m_count);
  place.m_offset += static_cast<std::size_t>(record.m_values - at) + record.m_count * sizeof(float);
  return 1;
}

void CSampleStore::AddSpans(CPlace& place, CSampleSpans& spans) const {
  while (place.m_block < m_used) {
    const CSampleBlock& block = m_blocks[place.m_block];
    if (place.m_index < block.m_count)
      spans.push_back({block.m_bytes.get() + place.m_offset, block.Times() + place.m_index,
                       block.m_end - place.m_offset, block.m_count - place.m_index});
    place.m_offset = block.m_end;
    place.m_index = block.m_count;
    if (place.m_block + 1 == m_used) return;
    place = {place.m_block + 1, m_blocks[place.m_block + 1].m_begin, 0};
  }
}

CSampleRecord CSampleStore::GetHead() const {
  CSampleRecord record;
  CPlace place = GetHeadPlace();
  GetNext(place, record);
  return record;
}

const _timeb& CSampleStore::GetLastTime() const {
  const CSampleBlock& block = m_blocks[m_used - 1];
  return block.Times()[block.m_count - 1];
}

std::size_t CSampleStore::GetBytes() const {
  std::size_t bytes = m_count * sizeof(_timeb);
  for (std::size_t i = 0; i < m_used; ++i) bytes += m_blocks[i].m_end - m_blocks[i].m_begin;
  return bytes;
}

std::size_t CSampleStore::GetMemory() const {
  std::size_t bytes = 0;
  for (const CSampleBlock& block : m_blocks) bytes += block.m_size + block.m_timeSize;
  return bytes;
}

void CSampleStore::RemoveAll() {
  m_used = 0;
  m_count = m_taken = 0;
}

void CSampleStore::FreeMemory() {
  RemoveAll();
  if (m_pPool)
    for (CSampleBlock& block : m_blocks) m_pPool->Give(std::move(block));
  std::vector<CSampleBlock>().swap(m_blocks);
}

char* CSampleStore::MakeImage(std::size_t size) {
  RemoveAll();
  NeedBlock(0, size, size, 0);
  return m_blocks[0].m_bytes.get();
}

void CSampleStore::TakeImage(std::size_t begin, std::size_t end, std::size_t count, const char* times) {
  CSampleBlock& block = m_blocks[0];
  Need(block.m_timeBytes, block.m_timeSize, count * sizeof(_timeb), count * sizeof(_timeb));
  if (count) std::memcpy(block.m_timeBytes.get(), times, count * sizeof(_timeb));
  block.m_begin = begin;
  block.m_end = end;
  block.m_count = m_count = count;
  m_used = 1;
  m_next = block.m_bytes.get() + begin;
}

}  // namespace vastra
