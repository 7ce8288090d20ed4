#include "host/run/feed_folders.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "vastra/platform/file_layer.h"
#include "vastra/platform/thread.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAskPause{5}, kLongestAnswer{15};

}  // namespace

struct CFeedFolders::CShared {
  struct CAnswer {
    std::optional<std::uint64_t> bytes;
    Clock::time_point at;
  };

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<CString> m_paths;
  std::map<CString, CAnswer> m_answers;
  bool m_isOther = false;  // m_paths, since they were asked for last
  bool m_isEnding = false;
};

CFeedFolders::CFeedFolders() : m_pShared(std::make_shared<CShared>()) {
  const CSignalsBlocked blocked;
  std::thread(Main, m_pShared).detach();
}

CFeedFolders::~CFeedFolders() {
  const std::lock_guard lock(m_pShared->m_mutex);
  m_pShared->m_isEnding = true;
  m_pShared->m_changed.notify_all();
}

void CFeedFolders::Watch(std::vector<CString> paths) {
  const std::lock_guard lock(m_pShared->m_mutex);
  std::erase_if(m_pShared->m_answers, [&](const auto& answer) {
    return std::find(paths.begin(), paths.end(), answer.first) == paths.end();
  });
  m_pShared->m_paths = std::move(paths);
  m_pShared->m_isOther = true;
  m_pShared->m_changed.notify_all();
}

std::optional<std::uint64_t> CFeedFolders::FreeBytes(const CString& path) const {
  const std::lock_guard lock(m_pShared->m_mutex);
  const auto answer = m_pShared->m_answers.find(path);
  const bool isKnown =
      answer != m_pShared->m_answers.end() && Clock::now() - answer->second.at < kLongestAnswer;
  return isKnown ? answer->second.bytes : std::nullopt;
}

// The calls are those of the system: the layer that a test has installed may go while a folder does not
// answer.
void CFeedFolders::Main(const std::shared_ptr<CShared>& shared) try {
  CFileLayer system;
  std::unique_lock lock(shared->m_mutex);
  while (!shared->m_isEnding) {
    shared->m_isOther = false;
    for (const CString& path : std::vector<CString>(shared->m_paths)) {
      lock.unlock();
      std::uint64_t bytes = 0;
      const int isKnown = system.FreeBytes(path, bytes);
      lock.lock();
      if (shared->m_isEnding) return;
      if (shared->m_isOther) break;
      shared->m_answers[path] = {isKnown ? std::optional(bytes) : std::nullopt, Clock::now()};
    }
    shared->m_changed.wait_for(lock, kAskPause, [&] { return shared->m_isOther || shared->m_isEnding; });
  }
} catch (const std::bad_alloc&) {  // the answers stay unknown
}

}  // namespace vastra
