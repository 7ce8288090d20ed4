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
    numbers.insert(m_sessions.Begin("bob", "hash", m_now + seconds(i + 1)));
  EXPECT_EQ(numbers.size(), CWebSessions::kMost);
  EXPECT_FALSE(m_sessions.Find(first, m_now + seconds(2)));
  EXPECT_TRUE(m_sessions.Find(*numbers.begin(), m_now + seconds(2000)));
}

TEST_F(WebSessions, FailuresWaitLongerEachTime) {
  std::vector<std::int64_t> waits;
  for (int i = 0; i < 11; ++i) {
    m_sessions.Fail("x", m_now);
    waits.push_back(m_sessions.Wait("x", m_now).count());
  }
  EXPECT_EQ(waits, (std::vector<std::int64_t>{0, 0, 1, 2, 4, 8, 16, 32, 60, 60, 60}));
  EXPECT_EQ(m_sessions.Wait("y", m_now), seconds(0));
  EXPECT_EQ(m_sessions.Wait("x", m_now + seconds(59)), seconds(1));
  EXPECT_EQ(m_sessions.Wait("x", m_now + seconds(60)), seconds(0));
  m_sessions.Succeed("x");
  EXPECT_EQ(m_sessions.Wait("x", m_now), seconds(0));
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
  const std::pair<const char*, const char*> kCases[] = {{"127.0.0.1:8095", "127.0.0.1:8095 own"},
                                                        {"127.9.9.9:1", "127.9.9.9:1 own"},
                                                        {"[::1]:80", "[::1]:80 own"},
                                                        {"0.0.0.0:0", "0.0.0.0:0"},
                                                        {"[::]:80", "[::]:80"},
                                                        {"10.0.0.1", ""},
                                                        {"10.0.0.1:", ""},
                                                        {"10.0.0.1:65536", ""},
                                                        {"10.0.0.1:80x", ""},
                                                        {"host:80", ""},
                                                        {":80", ""},
                                                        {"", ""}};
  for (const auto& [text, expected] : kCases) {
    const std::optional<CListenAddress> address = ParseListenAddress(text);
    EXPECT_EQ(address ? address->Text() + (address->IsLoopback() ? " own" : "") : "", expected) << text;
  }
}

}  // namespace
}  // namespace vastra
