#include "host/web/web_sessions.h"

#include <gtest/gtest.h>

#include <set>

#include "host/web/form_values.h"
#include "host/web/listen_address.h"

namespace vastra {
namespace {

using std::chrono::seconds;

class WebSessions : public testing::Test {
 protected:
  CWebSessions m_sessions;
  CWebSessions::Time m_now{std::chrono::hours(1000)};
};

TEST_F(WebSessions, EndByTimeAndByTheirNumber) {
  const std::string number = m_sessions.Begin("anna", "hash", m_now);
  for (int i = 0; i < 14; ++i) {  // used every 11.5 hours: it ends after a week
    const bool isThere = m_sessions.Find(number, m_now).has_value();
    EXPECT_TRUE(isThere) << i;
    m_now += std::chrono::minutes(690);
  }
  m_now += std::chrono::minutes(690);
  EXPECT_FALSE(m_sessions.Find(number, m_now));
  const std::string idle = m_sessions.Begin("anna", "hash", m_now);
  EXPECT_NE(number, idle);
  EXPECT_FALSE(m_sessions.Find(idle, m_now + CWebSessions::kIdle + seconds(1)));
  EXPECT_FALSE(m_sessions.Find("", m_now));
}

TEST_F(WebSessions, AreBounded) {
  const std::string first = m_sessions.Begin("anna", "hash", m_now);
  std::set<std::string> numbers;
  for (std::size_t i = 0; i < CWebSessions::kMost; ++i)
    numbers.insert(m_sessions.Begin("bob" + std::to_string(i / 50), "hash", m_now + seconds(i + 1)));
  EXPECT_EQ(numbers.size(), CWebSessions::kMost);
  EXPECT_FALSE(m_sessions.Find(first, m_now + seconds(2)));
  EXPECT_TRUE(m_sessions.Find(*numbers.begin(), m_now + seconds(2000)));
}

TEST_F(WebSessions, FailuresWaitLongerEachTime) {
  for (const bool isAddress : {true, false}) {  // what the attempts have in common
    std::vector<std::int64_t> waits;
    for (int i = 0; i < 11; ++i) {
      const std::string other = std::to_string(i);
      const std::string address = isAddress ? "a" : other, name = isAddress ? other : "bob";
      const seconds wait = m_sessions.Try(address, name, m_now);
      waits.push_back(wait.count());
      if (wait == seconds(0)) continue;
      m_now += wait;
      EXPECT_EQ(m_sessions.Try(address, name, m_now - seconds(1)), seconds(1));
      EXPECT_EQ(m_sessions.Try(address, name, m_now), seconds(0));
    }
    EXPECT_EQ(waits, (std::vector<std::int64_t>{0, 0, 0, 1, 2, 4, 8, 16, 32, 60, 60})) << isAddress;
  }
  m_sessions.Succeed("a", "anna");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(m_sessions.Try("a", "bert", m_now), seconds(0));
}

TEST_F(WebSessions, OthersDoNotKeepOutWhoHasLoggedInBefore) {
  m_sessions.Succeed("home", "anna");
  for (int i = 0; i < 20; ++i) m_sessions.Try("other" + std::to_string(i), "anna", m_now);
  EXPECT_GT(m_sessions.Try("new", "anna", m_now), seconds(0));
  for (const bool isFree : {true, true, true, false})
    EXPECT_EQ(m_sessions.Try("home", "anna", m_now) == seconds(0), isFree)
        << "the address has failures of its own";
}

TEST_F(WebSessions, OfOneUserDoNotEndThoseOfOthers) {
  const std::string anna = m_sessions.Begin("anna", "hash", m_now),
                    bob = m_sessions.Begin("bob", "hash", m_now);
  for (std::size_t i = 0; i < CWebSessions::kMostOfUser; ++i)
    m_sessions.Begin("bob", "hash", m_now + seconds(1));
  EXPECT_TRUE(m_sessions.Find(anna, m_now));
  EXPECT_FALSE(m_sessions.Find(bob, m_now));
}

TEST(WebForms, AreDecoded) {
  const CWebQuery form = FormValues("name=a+b%2Bc&&password=%%3d=%4&empty");
  EXPECT_EQ(form.Get("name"), "a b+c");
  EXPECT_EQ(form.Get("password"), "%==%4");
  EXPECT_EQ(form.Get("empty"), "");
  EXPECT_FALSE(form.Get("other"));
  EXPECT_EQ(CookieOf("a=1; ab=2;  b=", "ab"), "2");
  EXPECT_EQ(CookieOf("a=1; xab=2; ab", "ab"), "");
}

TEST(ListenAddress, IsAnAddressInNumbersWithAPort) {
  const std::pair<const char*, bool> kGood[] = {{"127.0.0.1:8095", true},
                                                {"127.9.9.9:1", true},
                                                {"[::1]:80", true},
                                                {"0.0.0.0:0", false},
                                                {"[::]:80", false}};
  for (const auto& [text, isOwn] : kGood) {
    const std::optional<CListenAddress> address = ParseListenAddress(text);
    ASSERT_TRUE(address) << text;
    EXPECT_EQ(address->Text(), text);
    EXPECT_EQ(address->IsLoopback(), isOwn) << text;
  }
  for (const char* bad : {"10.0.0.1", "10.0.0.1:", "10.0.0.1:65536", "10.0.0.1:80x", "host:80", ":80", ""})
    EXPECT_FALSE(ParseListenAddress(bad)) << bad;
}

}  // namespace
}  // namespace vastra
