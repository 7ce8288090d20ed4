#include "host/fleet/chunk.h"

#include <algorithm>
#include <set>

#include "host/common/json_text.h"
#include "host/fleet/fleet_names.h"
#include "vastra/logfiles/crc32c.h"

namespace vastra {
namespace {

constexpr std::size_t kLongestHead = std::size_t{512} << 10;

struct CParts {
  nlohmann::json head;
  std::string_view bytes;
};

CParts PartsOf(std::string_view message) {
  const std::size_t end = message.substr(0, kLongestHead).find('\n');
  if (end == std::string_view::npos) throw CChunkFault("it has no head");
  try {
    CParts parts = {ParseJson(message.substr(0, end)), message.substr(end + 1)};
    if (!parts.head.is_object()) throw CChunkFault("its head is not an object");
    return parts;
  } catch (const CJsonFault& fault) {
    throw CChunkFault(std::string("its head: ") + fault.Text().Std());
  }
}

std::uint64_t Number(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number_unsigned())
    throw CChunkFault(std::string(key) + " is not a number");
  return found->get<std::uint64_t>();
}

std::string Text(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) throw CChunkFault(std::string(key) + " is not a string");
  return found->get<std::string>();
}

// Messages without the fields are those of a log that is not known.
CLogId LogId(const nlohmann::json& object) {
  CLogId log;
  if (object.contains("log")) log.number = Number(object, "log");
  if (!object.contains("before")) return log;
  const std::optional<CVersion> before = VersionOfHex(Text(object, "before"));
  if (!before) throw CChunkFault("before is not a version");
  log.before = *before;
  return log;
}

CJson WithLog(CJson object, const CLogId& log) {
  if (log.number != 0) object["log"] = log.number;
  if (log.before != CVersion{}) object["before"] = HexOf(log.before);
  return object;
}

void CheckBytes(const CParts& parts) {
  if (parts.bytes.size() != Number(parts.head, "length"))
    throw CChunkFault("it has " + std::to_string(parts.bytes.size()) + " bytes, and says another length");
  if (Crc32c(parts.bytes.data(), parts.bytes.size()) != Number(parts.head, "crc32c"))
    throw CChunkFault("its checksum is wrong");
}

// The head gets the length and the checksum of the bytes.
std::string MessageOf(CJson head, std::string_view bytes) {
  head["length"] = bytes.size();
  head["crc32c"] = Crc32c(bytes.data(), bytes.size());
  return JsonLine(head).append(bytes);
}

CPackedFile PackedFile(const nlohmann::json& entry, std::string_view rest) {
  if (!entry.is_object()) throw CChunkFault("a file of the pack is not an object");
  const std::optional<std::string> key = TextOfToken(Text(entry, "file"));
  const std::optional<CVersion> version = VersionOfHex(Text(entry, "version"));
  const std::uint64_t size = Number(entry, "size");
  if (!key || !IsFleetKey(*key) || !version || size > rest.size())
    throw CChunkFault("a file of the pack has a wrong name, version or size");
  const std::string_view bytes = rest.substr(0, size);
  if (VersionOf(bytes) != *version) throw CChunkFault("a file of the pack is not what its version says");
  return {*key, *version, bytes, LogId(entry)};
}

}  // namespace

std::string MakeChunk(const CChunk& chunk) {
  return MessageOf(WithLog({{"chunk", chunk.number}, {"size", chunk.size}}, chunk.log), chunk.bytes);
}

std::string MakePack(const std::vector<CPackedFile>& files) {
  CJson list = CJson::array();
  std::string bytes;
  for (const CPackedFile& file : files) {
    list.push_back(
        WithLog({{"file", Token(file.key)}, {"size", file.bytes.size()}, {"version", HexOf(file.version)}},
                file.log));
    bytes += file.bytes;
  }
  return MessageOf({{"files", list}}, bytes);
}

std::size_t RoomInPack(std::size_t key, std::size_t bytes, const CLogId& log) {
  constexpr std::size_t kEntry = 160, kBefore = 80;  // names of the fields, version, size, number of the log
  return kEntry + (log.before == CVersion{} ? 0 : kBefore) + 3 * key + bytes;
}

CChunk ParseChunk(std::string_view message, std::uint64_t number) {
  const CParts parts = PartsOf(message);
  CheckBytes(parts);
  const CChunk chunk = {Number(parts.head, "chunk"), Number(parts.head, "size"), parts.bytes,
                        LogId(parts.head)};
  if (chunk.number != number) throw CChunkFault("it says another number than its subject");
  if (chunk.size > kLargestFile) throw CChunkFault("the file is larger than 64 GiB");
  if (number >= ChunksOf(chunk.size)) throw CChunkFault("its place is after the end of the file");
  if (chunk.bytes.size() != std::min<std::uint64_t>(kChunkSize, chunk.size - number * kChunkSize))
    throw CChunkFault("its length does not fit its place in the file");
  return chunk;
}

std::vector<CPackedFile> ParsePack(std::string_view message) {
  const CParts parts = PartsOf(message);
  CheckBytes(parts);
  const auto list = parts.head.find("files");
  if (list == parts.head.end() || !list->is_array()) throw CChunkFault("it has no list of files");
  std::vector<CPackedFile> files;
  std::set<std::string> keys;
  std::string_view rest = parts.bytes;
  for (const nlohmann::json& entry : *list) {
    files.push_back(PackedFile(entry, rest));
    if (!keys.insert(files.back().key).second) throw CChunkFault("duplicate name");
    rest.remove_prefix(files.back().bytes.size());
  }
  if (!rest.empty()) throw CChunkFault("it has bytes that belong to no file");
  return files;
}

}  // namespace vastra
