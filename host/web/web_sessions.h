// Who has logged in, and who has failed to: a session is a random number in a cookie, and each failure makes
// the next attempt of an address and of a name wait longer.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace vastra {

class CWebSessions {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::hours kIdle{12}, kLongest{24 * 7};
  static constexpr std::size_t kMost = 1000, kMostOfUser = 100;

  // Returns the number of a new session. hash: of the user's password, which ends the session if it changes.
  std::string Begin(const std::string& user, const std::string& hash, Time now);
  struct CUser {
    std::string name, hash;
  };
  std::optional<CUser> Find(const std::string& number, Time now);
  void End(const std::string& number);

  // Begins an attempt to log in from an address for a name. 0: it can be made, and counts as a failure of
  // both unless Succeed follows. Otherwise how long they have to wait. Whoever has logged in from an address
  // before does not wait for the failures of others with the same name.
  std::chrono::seconds Try(const std::string& address, const std::string& name, Time now);
  void Succeed(const std::string& address, const std::string& name);

 private:
  struct CSession {
    CUser user;
    Time begun, used;
  };
  struct CFailures {
    int count = 0;
    Time last;
  };
  using CKey = std::pair<std::string, std::string>;  // an address, a name, or both
  std::chrono::seconds Wait(const CKey& key, Time now) const;
  void Fail(const CKey& key, Time now);

  std::mutex m_mutex;
  std::map<std::string, CSession> m_sessions;
  std::map<CKey, CFailures> m_failures;
  std::deque<CKey> m_known;  // who has logged in from where, the last ones
};

// The value of a cookie in the header of a request; empty: it is not there.
std::string CookieOf(const std::string& header, const std::string& name);

}  // namespace vastra
