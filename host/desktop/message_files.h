// CMessageFiles: the two files that keep the messages of a configuration for the next start of the desktop.
// Lines are appended to the newer file. A line that does not fit makes it the older file, in place of the
// former one. Several desktops can use the files of one configuration at the same time. All operations can
// wait for the disk: only the thread of CMessageWriter calls them.
#pragma once

#include <vector>

#include "host/desktop/logged_message.h"
#include "vastra/platform/string.h"

namespace vastra {

class CMessageFiles {
 public:
  static constexpr std::size_t kMostBytes = 4 << 20;  // of each file

  // The files of the configuration at that absolute path, in the folder for the state of this user.
  explicit CMessageFiles(const CString& configuration, std::size_t mostBytes = kMostBytes);

  struct CStored {
    std::vector<CLoggedMessage> lines;  // the newest ones, oldest first, folded
    std::size_t bad = 0;                // lines of the files that are not messages
  };
  CStored Read(std::size_t mostLines) const;

  // Adds lines, up to MostAtOnce bytes, in the form of FileForm, all or none of them. Returns an empty
  // string, or why that failed, with the path.
  CString Append(std::string_view lines);
  std::size_t MostAtOnce() const { return m_mostBytes / 4; }

  const CString& Path() const { return m_path; }  // of the newer file; empty: there is no folder for it
  CString OlderPath() const { return m_path + ".1"; }

 private:
  CString m_path;
  const std::string m_title;  // the first line of each file: it names the configuration
  const std::size_t m_mostBytes;
};

}  // namespace vastra
