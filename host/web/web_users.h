// Who may look: a file with a name and a hash of crypt(3) in each line, with a colon between; lines that
// begin with # and empty ones do not count. It is read again when it changes.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace vastra {

class CWebUsers {
 public:
  // Throws std::runtime_error if the file cannot be read or has no user.
  explicit CWebUsers(const std::string& path);

  // Takes as long for a name that is not there.
  bool Check(const std::string& name, const std::string& password);
  // The hash of a user; empty: there is none. A session ends when it changes.
  std::string HashOf(const std::string& name);

 private:
  // What changes when the file is written.
  struct CVersion {
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t seconds = 0, nanoseconds = 0;  // of the last change

    bool operator==(const CVersion&) const = default;
  };
  static CVersion VersionOf(const std::string& path);
  void Renew();

  const std::string m_path;
  std::mutex m_mutex;
  CVersion m_version;
  std::map<std::string, std::string> m_hashes;  // by name
};

// Sets the password of a user in the file, which is made if it is not there. Throws std::runtime_error.
void SetWebPassword(const std::string& path, const std::string& name, const std::string& password);

}  // namespace vastra
