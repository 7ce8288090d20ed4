// CArchiveTree: the files of an archive, DIR/SITE/NODE/FOLDER/FILE, and those that are being received, in
// DIR/.incoming. A file appears under its name whole, in one step. No name from outside leads out of DIR:
// each folder of a path is opened from the one above, and links are not followed.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "host/fleet/file_mark.h"
#include "host/fleet/fleet_names.h"

namespace vastra {

// All operations throw std::system_error.
class CArchiveTree {
 public:
  // Makes dir and its .incoming if they are not there.
  explicit CArchiveTree(const std::string& dir);
  CArchiveTree(const CArchiveTree&) = delete;
  CArchiveTree& operator=(const CArchiveTree&) = delete;
  ~CArchiveTree();

  // A file that is being received, by its number.
  void Write(std::uint64_t id, std::uint64_t offset, std::string_view bytes);
  CVersion Digest(std::uint64_t id) const;
  bool Has(std::uint64_t id) const;
  void Drop(std::uint64_t id) noexcept;
  std::vector<std::uint64_t> Incoming() const;

  // Gives a received file its name, in place of a file that had it, and makes the folders above it. path:
  // below dir.
  void Place(std::uint64_t id, const std::string& path);
  // Whether a file has the name.
  bool HasFile(const std::string& path) const;
  // The version of the file with the name; empty if there is none, or it cannot be read. A record that has
  // outlived its files must not stand for them.
  // A file that was read before is read again only if it has changed since.
  std::optional<CVersion> VersionOf(const std::string& path);
  // What was written and placed is on the disk when it returns.
  void Sync() const;

  // Whether an error concerns the one path alone, such as a file where a folder should be, and not the disk.
  static bool IsOfPath(const std::error_code& fault);

 private:
  struct CRead {
    CFileMark mark;
    CVersion version;
  };
  static constexpr std::size_t kMostRead = 1000;

  int m_dir = -1, m_incoming = -1;
  std::map<std::string, CRead> m_read;  // by path
};

}  // namespace vastra
