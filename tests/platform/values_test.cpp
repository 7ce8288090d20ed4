// Strings, lists and times.
#include <gtest/gtest.h>

#include <cstdlib>
#include <list>
#include <random>
#include <set>

#include "vastra/platform/list.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

TEST(String, PartsEndAtTheEndOfTheString) {
  const CString text = "abc";
  const struct {
    int first, count;
    const char* mid;
  } cases[] = {{0, 3, "abc"}, {1, 1, "b"}, {1, 9, "bc"}, {3, 1, ""}, {9, 9, ""}, {-1, 2, "ab"}, {0, -1, ""}};
  for (const auto& c : cases) EXPECT_EQ(text.Mid(c.first, c.count), c.mid) << c.first;
  EXPECT_EQ(text.Left(9) + text.Right(2) + text.Right(9) + text.Right(-1), "abcbcabc");
}

TEST(String, KeepsEveryByte) {
  const CString zero("a\0b\xFF", 4);
  EXPECT_EQ((zero + "!").View(), std::string_view("a\0b\xFF!", 5));
  EXPECT_FALSE(zero == CString("a"));
  EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(String, TrimRemovesAllWhiteSpaceAndNothingElse) {
  const char* cases[][2] = {
      {" \t\n\v\f\r", ""}, {"\r\v\f\n\t a b \t\n\v\f\r", "a b"}, {"\xA0x\xA0", "\xA0x\xA0"}};
  for (const auto& [text, trimmed] : cases) {
    CString both = text;
    both.TrimRight();
    both.TrimLeft();
    EXPECT_EQ(both, trimmed);
  }
}

TEST(String, CompareNoCaseFoldsAsciiLettersOnly) {
  EXPECT_EQ(CString("AkZ").CompareNoCase("aKz"), 0);
  const char* less[][2] = {{"a", "B"}, {"A", "b"}, {"a", "ab"},  {"\xC4", "\xE4"},
                           {"@", "`"}, {"[", "{"}, {"z", "\x80"}};
  for (const auto& [left, right] : less) {
    EXPECT_LT(CString(left).CompareNoCase(right), 0) << left << " " << right;
    EXPECT_GT(CString(right).CompareNoCase(left), 0) << left << " " << right;
  }
}

TEST(String, FormatAcceptsAnyLengthAndAPartOfItself) {
  const std::string word(5000, 'x');
  CString text;
  text.Format("%s%d", word.c_str(), -1);
  text.Format("%s", text.Std().c_str());
  EXPECT_EQ(text.Std(), word + "-1");
  text.Format("%s", "");
  EXPECT_TRUE(text.IsEmpty());
}

TEST(List, PositionsStayValidAndNodesAreUsedAgainWhileOtherElementsChange) {
  std::mt19937 random(1);
  CStringList list;
  std::list<std::pair<CString, POSITION>> expected;  // with the positions in list
  std::set<POSITION> nodes;
  std::size_t most = 0;
  for (int step = 0; step < 4001; ++step) {
    if (expected.empty() || random() % 5 < (step < 2000 ? 4u : 1u)) {
      const bool atHead = random() % 2 == 0;
      const CString text(std::to_string(step) + " is longer than a short string");
      const POSITION place = atHead ? list.AddHead(text) : list.AddTail(text);
      expected.emplace(atHead ? expected.begin() : expected.end(), text, place);
      nodes.insert(place);
      most = std::max(most, expected.size());
    } else {
      const auto removed = std::next(expected.begin(), static_cast<int>(random() % expected.size()));
      list.RemoveAt(removed->second);
      expected.erase(removed);
    }
    if (step % 100 != 0) continue;
    ASSERT_EQ(list.GetCount(), static_cast<int>(expected.size()));
    POSITION back = list.GetTailPosition();
    for (auto item = expected.rbegin(); item != expected.rend(); ++item)
      EXPECT_EQ(list.GetPrev(back), item->first);
    EXPECT_EQ(back, nullptr);
    auto next = list.begin();
    for (const auto& [text, place] : expected) {
      EXPECT_EQ(list.GetAt(place), text);
      EXPECT_EQ(*next++, text);
    }
  }
  EXPECT_EQ(nodes.size(), most);
  list.RemoveAll();
  EXPECT_TRUE(list.IsEmpty());
  list.AddTail("again");
  EXPECT_EQ(list.RemoveHead(), "again");
}

TEST(List, AnOwnedListDeletesItsObjectsAndCopiesThem) {
  const auto item = std::make_shared<int>();  // its use count is that of the objects
  {
    COwnedList<std::shared_ptr<int>> list;
    list.Renew(3);
    for (auto* object : list) *object = item;
    COwnedList<std::shared_ptr<int>> copy(list);
    EXPECT_EQ(item.use_count(), 1 + 6);
    copy = *&copy;
    delete list.RemoveHead();
    copy = list;
    EXPECT_EQ(item.use_count(), 1 + 4);
    EXPECT_NE(copy.GetHead(), list.GetHead());
  }
  EXPECT_EQ(item.use_count(), 1);
}

TEST(Time, FtimeHasTheZoneAndDaylightSavingOrTheTimeOfAnInstalledClock) {
  const struct {
    const char* zone;
    int minutesWest, isDaylight;
  } cases[] = {{"AAA5", 300, 0}, {"AAA-5:45", -345, 0}, {"AAA3BBB,0/0,J365/25", 180, 1}, {"UTC0", 0, 0}};
  _timeb now;
  for (const auto& c : cases) {
    ::setenv("TZ", c.zone, 1);
    ::tzset();
    const std::time_t before = std::time(nullptr);
    now.padding = 7;
    _ftime(now);
    EXPECT_EQ(now.timezone, c.minutesWest) << c.zone;
    EXPECT_EQ(now.dstflag, c.isDaylight) << c.zone;
    EXPECT_EQ(now.padding, 0);
    EXPECT_LT(now.millitm, 1000);
    EXPECT_GE(now.time, before);
    EXPECT_LE(now.time, std::time(nullptr));
  }
  struct CFixed : CClock {
    _timeb Now() override { return {1, 2, 3, 4, 5}; }
  } fixed;
  EXPECT_EQ(SetClock(&fixed), nullptr);
  _ftime(now);
  EXPECT_EQ(now, (_timeb{1, 2, 3, 4, 5}));
  EXPECT_EQ(SetClock(nullptr), &fixed);
  _ftime(now);
  EXPECT_GT(now.time, 1);
}

}  // namespace
}  // namespace vastra
