// Names of the fleet: sites, nodes and files, and the subjects of the messages about them. docs/fleet.md
// lists the subjects. Who parses a subject must not trust it: a node can send what it likes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/fleet/sha256.h"

namespace vastra {

// A machine with a shipper.
struct CFleetNode {
  std::string site, name;

  bool operator==(const CFleetNode&) const = default;
};

// A file of a node: the name of its folder, "/", and its path below that folder; bytes of the node's file
// system.
struct CFleetFile {
  CFleetNode node;
  std::string key;

  // Its path below the archive.
  std::string Path() const { return node.site + "/" + node.name + "/" + key; }
};

// A site or a node can be a folder of the archive: not empty, at most 255 bytes, no "/", no control
// character, no "." at the beginning.
bool IsFleetName(std::string_view name);
// A key can be a path below a folder of the archive: at least two parts, each of at most 255 bytes, none
// empty,
// "." or "..", no control character; at most 1024 bytes.
bool IsFleetKey(std::string_view key);

// The path of the log with this number of those that have the name of path: NAME~2.rph, NAME~3.rph, ... also
// if path has such a number. The name is cut to 255 bytes.
std::string RepeatedPath(const std::string& path, std::uint64_t number);

// Text as one token of a subject: each byte but A-Z, a-z, 0-9, "-" and "_" is "=" and two hexadecimal digits.
std::string Token(std::string_view text);
// The text of a token; empty optional for one that Token does not make.
std::optional<std::string> TextOfToken(std::string_view token);
std::vector<std::string_view> TokensOf(std::string_view subject);

// What a message about a version of a file says in its subject.
struct CFileSubject {
  CFleetFile file;  // the key is empty: a pack of small files
  CVersion version;
  std::uint64_t chunk = 0;

  bool IsPack() const { return file.key.empty(); }
};

enum class EFileSubject { log, done, ask };  // a chunk, a receipt (without the chunk), a request for a chunk
std::string SubjectOf(EFileSubject kind, const CFileSubject& parts);
// Empty for a subject that is not of this kind, or names what cannot be in the archive.
std::optional<CFileSubject> ParseFileSubject(EFileSubject kind, std::string_view subject);

// "vastra.KIND.SITE.NODE", the beginning of the subjects of a node.
std::string NodeSubject(std::string_view kind, const CFleetNode& node);

}  // namespace vastra
