// Who may look: a file with a name and a hash of crypt(3) in each line, with a colon between; lines that
// begin with # and empty ones do not count. It is read again when it changes; while it is gone or wrong,
// nobody may look.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace vastra {

class CWebUsers {
 public:
  // Throws std::runtime_error if the file cannot be read or has no user. tell: called with a line about a
  // file that is gone or wrong later, by any thread.
  CWebUsers(const std::string& path, std::function<void(const std::string&)> tell);

  // Returns the hash of the user; empty if there is none, or it is another password. That takes as long if
  // there is none.
  std::string Check(const std::string& name, const std::string& password);
  // The hash of a user; empty: there is none. A session ends when it changes.
  std::string HashOf(const std::string& name);

 private:
  // What changes when the file is written.
  struct CVersion {
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t seconds = 0, nanoseconds = 0;  // of the last change, also of its mode

    bool operator==(const CVersion&) const = default;
  };
  static CVersion VersionOf(const std::string& path);
  void Renew();
  std::string SettingForNobody();

  const std::string m_path;
  const std::function<void(const std::string&)> m_tell;
  std::mutex m_mutex;
  CVersion m_version;
  std::string m_fault;                          // of the file; empty: it is right
  std::map<std::string, std::string> m_hashes;  // by name
  const std::string m_setting;                  // of a hash of the usual method
};

// Sets the password of a user in the file, which is made if it is not there. Throws std::runtime_error.
void SetWebPassword(const std::string& path, const std::string& name, const std::string& password);

}  // namespace vastra
