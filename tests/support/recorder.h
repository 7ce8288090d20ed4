// CRecorder: a messenger for tests. It keeps every line that a link sends, filtered ones too, as
//
//   function severity name text       "Read Error Not named Could not read component."
//
// with the words of the message lines and without text for Begin and End. It shows no lines and no boxes.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "vastra/core/link.h"

namespace vastra {

// Installs itself. Declare it before the links of a test: they use it until they are deleted.
class CRecorder : public CMessenger {
 public:
  CRecorder() { CLink::SetMessenger(this); }
  ~CRecorder() override { CLink::SetMessenger(nullptr); }

  void Send(const char*, const char* name, char function, char severity, const char* text) override {
    static constexpr const char* kFunctions[] = {
        "Open",        "Close",       "Read",       "Write", "Get Variable Names",
        "Communicate", "Constructor", "Destructor", "Flush", "PartialFlush"};
    static constexpr const char* kSeverities[] = {"Fatal", "Error", "Warning", "Notice", "Begin", "End"};
    std::string line = std::string(kFunctions[std::size_t(function)]) + " " +
                       kSeverities[std::size_t(severity)] + " " + name;
    if (text) line += std::string(" ") + text;
    const std::lock_guard lock(m_mutex);
    m_lines.emplace_back(severity, line);
  }

  // The lines since the last call, each with a line end; TakeFaults leaves out Begin and End.
  std::string Take() { return Join(severityEnd); }
  std::string TakeFaults() { return Join(severityNotice); }

 private:
  std::string Join(char last) {
    const std::lock_guard lock(m_mutex);
    std::string all;
    for (const auto& [severity, line] : m_lines)
      if (severity <= last) all += line + "\n";
    m_lines.clear();
    return all;
  }

  std::mutex m_mutex;
  std::vector<std::pair<char, std::string>> m_lines;  // with the severity
};

}  // namespace vastra
