#include "host/web/web_sessions.h"

#include <sys/random.h>

#include <algorithm>
#include <stdexcept>

namespace vastra {
namespace {

using std::chrono::seconds;

constexpr std::size_t kBytes = 32, kMostFailures = 10'000, kMostKnown = 1000, kLongestName = 64;
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
  const auto ofUser = [&user](const auto& one) { return one.second.user.name == user; };
  const bool isFull = m_sessions.size() >= kMost;
  if (isFull || static_cast<std::size_t>(std::ranges::count_if(m_sessions, ofUser)) >= kMostOfUser) {
    auto oldest = m_sessions.end();
    for (auto one = m_sessions.begin(); one != m_sessions.end(); ++one)
      if ((isFull || ofUser(*one)) && (oldest == m_sessions.end() || one->second.used < oldest->second.used))
        oldest = one;
    m_sessions.erase(oldest);
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

seconds CWebSessions::Try(const std::string& address, const std::string& name, Time now) {
  const std::lock_guard lock(m_mutex);
  const CKey from = {address, ""}, to = {"", name.substr(0, kLongestName)};
  const bool isKnown = std::ranges::find(m_known, CKey{address, name}) != m_known.end();
  const seconds wait = std::max(Wait(from, now), isKnown ? seconds{0} : Wait(to, now));
  if (wait > seconds{0}) return wait;
  Fail(from, now);
  if (!isKnown) Fail(to, now);
  return seconds{0};
}

void CWebSessions::Succeed(const std::string& address, const std::string& name) {
  const std::lock_guard lock(m_mutex);
  m_failures.erase({address, ""});
  m_failures.erase({"", name.substr(0, kLongestName)});
  std::erase(m_known, CKey{address, name});
  m_known.emplace_back(address, name);
  if (m_known.size() > kMostKnown) m_known.pop_front();
}

seconds CWebSessions::Wait(const CKey& key, Time now) const {
  const auto found = m_failures.find(key);
  if (found == m_failures.end() || found->second.count < kFree) return seconds{0};
  const int doubled = std::min(found->second.count - kFree, 6);
  const seconds wait = std::min(seconds{1 << doubled}, kLongestWait);
  const auto left = std::chrono::ceil<seconds>(found->second.last + wait - now);
  return std::max(left, seconds{0});
}

void CWebSessions::Fail(const CKey& key, Time now) {
  if (m_failures.size() >= kMostFailures)
    std::erase_if(m_failures, [&](const auto& one) { return now - one.second.last > kForgotten; });
  if (m_failures.size() >= kMostFailures) {
    const auto last = [](const auto& a, const auto& b) { return a.second.last < b.second.last; };
    m_failures.erase(std::ranges::min_element(m_failures, last));
  }
  CFailures& failures = m_failures[key];
  if (now - failures.last > kForgotten) failures.count = 0;
  ++failures.count;
  failures.last = now;
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
