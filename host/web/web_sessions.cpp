#include "host/web/web_sessions.h"

#include <sys/random.h>

#include <algorithm>
#include <stdexcept>

namespace vastra {
namespace {

using std::chrono::seconds;

constexpr std::size_t kBytes = 32, kMostFailures = 10'000;
constexpr int kFree = 3;  // attempts that need not wait
constexpr seconds kLongestWait{60}, kForgotten{900};

std::string RandomNumber() {
  unsigned char bytes[kBytes];
  if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
    throw std::runtime_error("there are no random numbers");
  std::string text;
  for (const unsigned char byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

}  // namespace

std::string CWebSessions::Begin(const std::string& user, const std::string& hash, Time now) {
  const std::lock_guard lock(m_mutex);
  std::erase_if(m_sessions, [&](const auto& one) {
    return now - one.second.used > kIdle || now - one.second.begun > kLongest;
  });
  if (m_sessions.size() >= kMost) {
    const auto used = [](const auto& a, const auto& b) { return a.second.used < b.second.used; };
    m_sessions.erase(std::min_element(m_sessions.begin(), m_sessions.end(), used));
  }
  std::string number = RandomNumber();
  m_sessions[number] = {{user, hash}, now, now};
  return number;
}

std::optional<CWebSessions::CUser> CWebSessions::Find(const std::string& number, Time now) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_sessions.find(number);
  if (found == m_sessions.end()) return std::nullopt;
  CSession& session = found->second;
  if (now - session.used > kIdle || now - session.begun > kLongest) {
    m_sessions.erase(found);
    return std::nullopt;
  }
  session.used = now;
  return session.user;
}

void CWebSessions::End(const std::string& number) {
  const std::lock_guard lock(m_mutex);
  m_sessions.erase(number);
}

seconds CWebSessions::Wait(const std::string& key, Time now) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_failures.find(key);
  if (found == m_failures.end() || found->second.count < kFree) return seconds{0};
  const int doubled = std::min(found->second.count - kFree, 6);
  const seconds wait = std::min(seconds{1 << doubled}, kLongestWait);
  const auto left = std::chrono::ceil<seconds>(found->second.last + wait - now);
  return std::max(left, seconds{0});
}

void CWebSessions::Fail(const std::string& key, Time now) {
  const std::lock_guard lock(m_mutex);
  if (m_failures.size() >= kMostFailures)
    std::erase_if(m_failures, [&](const auto& one) { return now - one.second.last > kForgotten; });
  if (m_failures.size() >= kMostFailures) m_failures.clear();
  CFailures& failures = m_failures[key];
  if (now - failures.last > kForgotten) failures.count = 0;
  ++failures.count;
  failures.last = now;
}

void CWebSessions::Succeed(const std::string& key) {
  const std::lock_guard lock(m_mutex);
  m_failures.erase(key);
}

std::string CookieOf(const std::string& header, const std::string& name) {
  for (std::size_t begin = 0; begin < header.size();) {
    const std::size_t end = std::min(header.find(';', begin), header.size());
    const std::size_t first = std::min(header.find_first_not_of(' ', begin), end);
    if (header.compare(first, name.size() + 1, name + "=") == 0)
      return header.substr(first + name.size() + 1, end - first - name.size() - 1);
    begin = end + 1;
  }
  return "";
}

}  // namespace vastra
