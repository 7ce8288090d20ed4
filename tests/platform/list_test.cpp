#include "vastra/platform/list.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <set>

namespace vastra {
namespace {

// A list, the same list of the standard library, and where each of its elements is in ours.
class CPair {
 public:
  void Add(bool atHead, const CString& text) {
    m_place.insert(atHead ? m_place.begin() : m_place.end(),
                   atHead ? m_ours.AddHead(text) : m_ours.AddTail(text));
    m_theirs.insert(atHead ? m_theirs.begin() : m_theirs.end(), text);
  }
  void Remove(int index) {
    m_ours.RemoveAt(*std::next(m_place.begin(), index));
    m_place.erase(std::next(m_place.begin(), index));
    m_theirs.erase(std::next(m_theirs.begin(), index));
  }
  void ExpectSame() {
    EXPECT_EQ(static_cast<int>(m_theirs.size()), m_ours.GetCount());
    EXPECT_TRUE(std::equal(m_theirs.begin(), m_theirs.end(), m_ours.begin(), m_ours.end()));
    POSITION back = m_ours.GetTailPosition();
    for (auto text = m_theirs.rbegin(); text != m_theirs.rend(); ++text)
      EXPECT_TRUE(*text == m_ours.GetPrev(back));
    EXPECT_EQ(nullptr, back);
    auto text = m_theirs.begin();
    for (POSITION pos : m_place) EXPECT_TRUE(*text++ == m_ours.GetAt(pos));
  }

  CStringList m_ours;
  std::list<CString> m_theirs;
  std::list<POSITION> m_place;
};

TEST(List, PositionsStayValidWhileOthersComeAndGo) {
  std::mt19937 random(1);
  CPair pair;
  for (int step = 0; step < 4000; ++step) {
    const int count = pair.m_ours.GetCount();
    if (count == 0 || random() % 5 < (step < 2000 ? 4u : 1u))
      pair.Add(random() % 2 == 0, CString(std::to_string(step) + " is longer than a short string"));
    else
      pair.Remove(static_cast<int>(random() % static_cast<unsigned>(count)));
    if (step % 100 == 0) pair.ExpectSame();
  }
  pair.ExpectSame();
  pair.m_ours.RemoveAll();
  EXPECT_TRUE(pair.m_ours.IsEmpty());
  pair.m_ours.AddTail("again");
  EXPECT_EQ("again", pair.m_ours.RemoveHead().Std());
}

// A queue that stays short takes no new memory, however long it runs.
TEST(List, RemovedNodesAreUsedAgain) {
  CList<int> list;
  std::set<const void*> places;
  for (int i = 0; i < 1000; ++i) {
    places.insert(list.AddTail(i));
    if (i >= 5) {
      EXPECT_EQ(i - 5, list.RemoveHead());
    }
  }
  EXPECT_EQ(6u, places.size());
}

TEST(List, NodesLieSideBySideInTheOrderOfAdding) {
  CList<int> list;
  for (int i = 0; i < 3000; ++i) list.AddTail(i);
  int jumps = 0;
  for (auto item = list.begin(), next = std::next(item); next != list.end(); item = next++)
    jumps +=
        (reinterpret_cast<const char*>(&*next) - reinterpret_cast<const char*>(&*item)) != 3 * sizeof(void*);
  EXPECT_LE(jumps, 12);
}

TEST(List, AnOwnedListDeletesWhatItHoldsAndCopiesTheObjects) {
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
    EXPECT_EQ(6, alive);
    copy = copy;
    delete list.RemoveHead();
    copy = list;
    EXPECT_EQ(4, alive);
    EXPECT_NE(list.GetHead(), copy.GetHead());
  }
  EXPECT_EQ(0, alive);
}

}  // namespace
}  // namespace vastra
