#include "vastra/platform/list.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <set>

namespace vastra {
namespace {

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
    copy = copy;
    delete list.RemoveHead();
    copy = list;
    EXPECT_EQ(item.use_count(), 1 + 4);
    EXPECT_NE(copy.GetHead(), list.GetHead());
  }
  EXPECT_EQ(item.use_count(), 1);
}

}  // namespace
}  // namespace vastra
