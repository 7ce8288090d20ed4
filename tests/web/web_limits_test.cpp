#include <gtest/gtest.h>

#include "host/web/web_connections.h"
#include "host/web/web_head.h"
#include "host/web/web_viewer.h"

namespace vastra {
namespace {

using std::chrono::seconds;

TEST(WebViewer, IsTheLastAddressThatIsNotTrusted) {
  const CWebProxies proxies({"127.0.0.1", "::ffff:10.0.0.5", "2001:DB8:0::1"});
  const char* const kCases[][3] = {
      {"127.0.0.1", "192.0.2.1", "192.0.2.1"},
      {"10.0.0.5", "192.0.2.1", "192.0.2.1"},
      {"2001:db8::1", "2001:0db8::0007", "2001:db8::7"},
      {"10.0.0.5", "::ffff:192.0.2.1", "192.0.2.1"},
      {"127.0.0.1", "198.51.100.1, 192.0.2.1", "192.0.2.1"},
      {"127.0.0.1", "198.51.100.1 ,\t192.0.2.1 , 10.0.0.5,127.0.0.1", "192.0.2.1"},
      {"127.0.0.1", "<script>, 192.0.2.1", "192.0.2.1"},
      {"10.0.0.6", "192.0.2.1", "10.0.0.6"},
      {"", "192.0.2.1", ""},
  };
  for (const auto& [address, forwarded, viewer] : kCases)
    EXPECT_EQ(proxies.ViewerOf(address, forwarded), viewer) << address << " for " << forwarded;
  for (const char* none : {"127.0.0.1, 10.0.0.5", "", "192.0.2.1,", ",", "192.0.2.1, unknown", "192.0.2.1:80",
                           "192.0.2.1 192.0.2.2", "192.0.2.256"})
    EXPECT_EQ(proxies.ViewerOf("127.0.0.1", none), "127.0.0.1") << none;
  const std::pair<const char*, bool> kProtocols[] = {
      {"https", true}, {"http, https", true}, {"https, http", false},
      {"http", false}, {"", false},           {"httpsx", false}};
  for (const auto& [protocol, isEncrypted] : kProtocols) {
    EXPECT_EQ(proxies.IsEncrypted("127.0.0.1", protocol), isEncrypted) << protocol;
    EXPECT_FALSE(proxies.IsEncrypted("10.0.0.6", protocol)) << protocol;
  }
  for (const char* const bad : {"", "host", "10.0.0", "10.0.0.0/8", "[::1]"})
    EXPECT_THROW(CWebProxies({bad}), std::runtime_error) << bad;
  EXPECT_EQ(ViewerKey("192.0.2.1"), "192.0.2.1");
  EXPECT_EQ(ViewerKey("2001:db8:1:2:3::4"), ViewerKey("2001:db8:1:2:ffff::"));
  EXPECT_NE(ViewerKey("2001:db8:1:2:3::4"), ViewerKey("2001:db8:1:3:3::4"));
}

TEST(WebHead, IsDecodedWithoutAnEndInIt) {
  const char* const kCases[][2] = {{"a%2fb%C3%A4", "a/b\xC3\xA4"},
                                   {"%", "%"},
                                   {"%4", "%4"},
                                   {"%4x%x4", "%4x%x4"},
                                   {"%%41", "%A"},
                                   {"a%00b", "a%00b"},
                                   {"%-1", "%-1"},
                                   {"%2525", "%25"}};
  for (const auto& [given, decoded] : kCases) {
    std::string text = given;
    text.resize(Unescape(text.data()));
    EXPECT_EQ(text, decoded) << given;
  }
}

class WebConnections : public testing::Test {
 protected:
  // Whether a connection can be added; it is.
  bool Add(int socket, const std::string& viewer) {
    const bool isFree = m_connections.MakeRoom(viewer, m_now);
    if (isFree) m_connections.Add(socket, viewer);
    return isFree;
  }
  std::vector<int> Ended() {
    for (const int socket : m_ended) m_connections.Remove(socket);
    return std::exchange(m_ended, {});
  }

  std::vector<int> m_ended;
  CWebConnections m_connections{{.most = 5, .ofViewer = 3, .mostBytes = 100, .patience = seconds(10)},
                                [this](int socket) { m_ended.push_back(socket); }};
  CWebConnections::Time m_now{std::chrono::hours(1)};
};

TEST_F(WebConnections, ThatDoNothingMakeRoomForOthers) {
  for (const int socket : {1, 2, 3}) EXPECT_TRUE(Add(socket, "a"));
  m_connections.Begin(1);
  m_connections.Begin(2);
  m_connections.Finish(1);  // has done nothing for less long than 3
  EXPECT_TRUE(Add(4, "a"));
  EXPECT_EQ(Ended(), std::vector{3});
  EXPECT_TRUE(Add(5, "a"));
  EXPECT_EQ(Ended(), std::vector{1});
  for (const int socket : {4, 5}) m_connections.Begin(socket);
  EXPECT_FALSE(Add(6, "a")) << "all of the viewer work";
  EXPECT_TRUE(Add(6, "b"));
  EXPECT_TRUE(Add(7, "")) << "a trusted server";
  EXPECT_TRUE(Add(8, ""));
  EXPECT_EQ(Ended(), std::vector{6}) << "there are five in all";
  for (const int socket : {7, 8}) m_connections.Begin(socket);
  EXPECT_FALSE(Add(9, "c"));
  m_connections.Remove(5);
  EXPECT_TRUE(Add(9, "a"));
  EXPECT_TRUE(Ended().empty());
}

TEST_F(WebConnections, AnswersThatNobodyReadsMakeRoomForOthers) {
  for (const int socket : {1, 2, 3, 4, 5}) {
    ASSERT_TRUE(Add(socket, ""));  // more than a viewer may have
    m_connections.Begin(socket);
  }
  EXPECT_TRUE(m_connections.Keep(1, 60, m_now));
  EXPECT_FALSE(m_connections.Keep(2, 101, m_now + seconds(9)));
  EXPECT_FALSE(m_connections.Keep(2, 60, m_now + seconds(10)));
  EXPECT_TRUE(m_connections.Keep(2, 40, m_now + seconds(10)));
  EXPECT_TRUE(m_ended.empty());
  EXPECT_TRUE(m_connections.Keep(3, 60, m_now + seconds(11)));
  EXPECT_EQ(Ended(), std::vector{1}) << "not 2, which came later";
  EXPECT_TRUE(Add(6, ""));
  m_connections.Begin(6);
  m_now += seconds(20);
  EXPECT_FALSE(Add(7, "")) << "none has been sent for more than 10 seconds";
  m_now += seconds(1);
  EXPECT_TRUE(Add(7, ""));
  EXPECT_EQ(Ended(), std::vector{2});
  m_connections.Finish(3);
  EXPECT_TRUE(m_connections.Keep(4, 100, m_now));
}

}  // namespace
}  // namespace vastra
