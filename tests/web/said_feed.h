// The feed of a logger that says what a test wants, also what no logger says.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

class CSaidFeed {
 public:
  // Says greeting to each connection, and then closes it if it is told to.
  CSaidFeed(const CString& path, std::string greeting, bool closes = false)
      : m_greeting(std::move(greeting)), m_closes(closes) {
    std::filesystem::create_directories(std::filesystem::path(path.Std()).parent_path());
    std::filesystem::remove(path.Std());
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.Std().copy(address.sun_path, sizeof address.sun_path - 1);
    ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::listen(m_socket, 8);
    m_thread = std::thread([this] { Serve(); });
  }
  CSaidFeed(const CSaidFeed&) = delete;
  CSaidFeed& operator=(const CSaidFeed&) = delete;
  ~CSaidFeed() {
    ::shutdown(m_socket, SHUT_RDWR);
    {
      const std::lock_guard lock(m_lock);
      for (const int one : m_open) ::shutdown(one, SHUT_RDWR);
    }
    m_thread.join();
    for (const int one : m_open) ::close(one);
    ::close(m_socket);
  }

  // To all connections.
  void Say(const std::string& text) {
    const std::lock_guard lock(m_lock);
    for (const int one : m_open) Send(one, text);
  }

 private:
  static void Send(int to, const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
      const ssize_t sent = ::send(to, text.data() + at, text.size() - at, MSG_NOSIGNAL);
      if (sent <= 0) return;
      at += static_cast<std::size_t>(sent);
    }
  }
  void Serve() {
    for (int one; (one = ::accept(m_socket, nullptr, nullptr)) >= 0;) {
      const std::lock_guard lock(m_lock);
      m_open.push_back(one);
      Send(one, m_greeting);
      if (m_closes) ::shutdown(one, SHUT_RDWR);
    }
  }

  const int m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const std::string m_greeting;
  const bool m_closes;
  std::mutex m_lock;
  std::vector<int> m_open;
  std::thread m_thread;
};

}  // namespace vastra
