// CToldLines: the lines that a command which tries again and again has shown. A line that came in the attempt
// before is not shown again; a line that is new is, also if it came earlier. Outside attempts all lines are
// new.
//
// Threads: all operations may be called from any thread.
#pragma once

#include <mutex>
#include <set>
#include <string>

namespace vastra {

class CToldLines {
 public:
  static constexpr std::size_t kMostLines = 1000;  // of an attempt that are remembered

  void BeginAttempt() {
    const std::lock_guard lock(m_mutex);
    m_former = std::move(m_present);
    m_present.clear();
    m_isAttempt = true;
  }
  // After the attempt that has succeeded, or the last one.
  void EndAttempts() {
    const std::lock_guard lock(m_mutex);
    m_former.clear();
    m_present.clear();
    m_isAttempt = false;
  }
  // Whether line is to be shown.
  bool IsNew(const std::string& line) {
    const std::lock_guard lock(m_mutex);
    if (!m_isAttempt) return true;
    if (m_present.size() < kMostLines) m_present.insert(line);
    return m_former.count(line) == 0;
  }

 private:
  std::mutex m_mutex;  // of all members
  std::set<std::string> m_former, m_present;
  bool m_isAttempt = false;
};

}  // namespace vastra
