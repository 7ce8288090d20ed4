// The messages that carry files: a chunk of one file, or a pack of small files. A message is one line of JSON
// and the bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/fleet/sha256.h"

namespace vastra {

// Chunk N of a file begins at N times this; only the last one can be shorter.
constexpr std::size_t kChunkSize = std::size_t{256} << 10;
constexpr std::int64_t kMostInMessage = 2 * kChunkSize;  // with the head
constexpr std::uint64_t kLargestFile = std::uint64_t{64} << 30;
// A file of at most this size can go into a pack, and a pack has at most kChunkSize bytes.
constexpr std::size_t kSmallFile = std::size_t{32} << 10;

// A file without bytes has one chunk, too.
constexpr std::uint64_t ChunksOf(std::uint64_t size) {
  return size == 0 ? 1 : (size + kChunkSize - 1) / kChunkSize;
}

// Which log of its name a file is. A node can remove a log and write another one with that name: an archive
// keeps both, and replaces a log by its own versions alone.
struct CLogId {
  std::uint64_t number = 0;  // the same for all versions of a log, another one for another log; 0: not known
  CVersion before = {};      // of this log, sent before the present version; zeros: none
};

struct CChunk {
  std::uint64_t number = 0;
  std::uint64_t size = 0;  // of the whole file
  std::string_view bytes;  // of the chunk
  CLogId log = {};
};

struct CPackedFile {
  std::string key;
  CVersion version = {};
  std::string_view bytes;
  CLogId log = {};
};

std::string MakeChunk(const CChunk& chunk);
std::string MakePack(const std::vector<CPackedFile>& files);
// The bytes that a file takes in a pack, at most.
std::size_t RoomInPack(std::size_t key, std::size_t bytes, const CLogId& log);

// What is wrong with a message.
class CChunkFault {
 public:
  explicit CChunkFault(std::string text) : m_text(std::move(text)) {}
  const std::string& Text() const { return m_text; }

 private:
  std::string m_text;
};

// The chunk with this number of a message. Throws CChunkFault for one that is damaged: its length, checksum
// or place in the file are not what it says. The bytes are those of message.
CChunk ParseChunk(std::string_view message, std::uint64_t number);
// The files of a pack, each with the bytes that its version names. Throws CChunkFault if one has not.
std::vector<CPackedFile> ParsePack(std::string_view message);

}  // namespace vastra
