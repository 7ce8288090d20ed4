// Who has logged in, and who has failed to: a session is a random number in a cookie, and each failure makes
// the next attempt of an address and of a name wait longer.
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace vastra {

class CWebSessions {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::hours kIdle{12}, kLongest{24 * 7};
  static constexpr std::size_t kMost = 1000;

  // Returns the number of a new session. hash: of the user's password, which ends the session if it changes.
  std::string Begin(const std::string& user, const std::string& hash, Time now);
  struct CUser {
    std::string name, hash;
  };
  std::optional<CUser> Find(const std::string& number, Time now);
  void End(const std::string& number);

  // How long attempts of key, an address or a name, have to wait; 0: not at all.
  std::chrono::seconds Wait(const std::string& key, Time now);
  void Fail(const std::string& key, Time now);
  void Succeed(const std::string& key);

 private:
  struct CSession {
    CUser user;
    Time begun, used;
  };
  struct CFailures {
    int count = 0;
    Time last;
  };

  std::mutex m_mutex;
  std::map<std::string, CSession> m_sessions;
  std::map<std::string, CFailures> m_failures;
};

// The value of a cookie in the header of a request; empty: it is not there.
std::string CookieOf(const std::string& header, const std::string& name);

}  // namespace vastra
