#include "vastra/platform/list.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <set>

namespace vastra {
namespace {

TEST(List, PositionsStayValidWhileOtherElementsChange) {
  std::mt19937 random(1);
  CStringList list;
  std::list<std::pair<CString, POSITION>> expected;  // with the positions in list
  for (int step = 0; step < 4001; ++step) {
    if (expected.empty() || random() % 5 < (step < 2000 ? 4u : 1u)) {
      const bool atHead = random() % 2 == 0;
      const CString text(std::to_string(step) + " is longer than a short string");
      const POSITION place = atHead ? list.AddHead(text) : list.AddTail(text);
      expected.emplace(atHead ? expected.begin() : expected.end(), text, place);
    } else {
      const auto removed = std::next(expected.begin(), static_cast<int>(random() % expected.size()));
      list.RemoveAt(removed->second);
      expected.erase(removed);
    }
    if (step % 100 != 0) continue;
    ASSERT_EQ(list.GetCount(), static_cast<int>(expected.size()));
    auto next = list.begin();
    for (const auto& [text, place] : expected) {
      EXPECT_EQ(list.GetAt(place), text);
      EXPECT_EQ(*next++, text);
    }
    POSITION back = list.GetTailPosition();
    for (auto item = expected.rbegin(); item != expected.rend(); ++item)
      EXPECT_EQ(list.GetPrev(back), item->first);
    EXPECT_EQ(back, nullptr);
  }
  list.RemoveAll();
  EXPECT_TRUE(list.IsEmpty());
  list.AddTail("again");
  EXPECT_EQ(list.RemoveHead(), "again");
}

TEST(List, RemovedNodesAreUsedAgain) {
  CList<int> list;
  std::set<const void*> places;
  for (int round = 0; round < 100; ++round) {
    for (int i = 0; i < 6; ++i) places.insert(list.AddTail(i));
    for (int i = 0; i < 6; ++i) EXPECT_EQ(list.RemoveHead(), i);
  }
  EXPECT_EQ(places.size(), 6u);
}

TEST(List, AnOwnedListDeletesItsObjectsAndCopiesThem) {
  static int alive = 0;
  struct CItem {
    CItem() { ++alive; }
    CItem(const CItem&) { ++alive; }
    ~CItem() { --alive; }
  };
  {
    COwnedList<CItem> list;
    list.Renew(3);
    COwnedList<CItem> copy(list);
    EXPECT_EQ(alive, 6);
    copy = copy;
    delete list.RemoveHead();
    copy = list;
    EXPECT_EQ(alive, 4);
    EXPECT_NE(copy.GetHead(), list.GetHead());
  }
  EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace vastra
