#include "vastra/console/console_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "vastra/ui/window.h"

namespace vastra {
namespace {

// A store, painted after each line. Operations return top line, scroll position and range: "12 at 3 of 7".
struct CView {
  explicit CView(int height = 100) : area{height, 10} {}
  std::string Write(int count) {
    for (; count > 0; --count, ++written) {
      store.Add(CString(std::to_string(written)), 0, area);
      store.Paint(area);
    }
    return Stand();
  }
  std::string Scroll(UINT code, int position = 0) {
    store.Scroll(code, position);
    store.Paint(area);
    return Stand();
  }
  std::string Stand() const {
    const int line = store.GetTop();
    const std::string top = line == CConsoleStore::kNone ? "none" : store.GetLine(line).text.Std();
    return top + " at " + std::to_string(store.GetScrollPos()) + " of " +
           std::to_string(store.GetScrollMax());
  }
  CConsoleStore store;
  CConsoleArea area;
  int written = 0;
};

TEST(ConsoleView, FollowsFromTheLineThatWouldTouchTheLowerEdge) {
  CView view;
  EXPECT_EQ(view.Stand(), "none at 0 of 200");
  view.Write(8);
  for (const char* stand : {"0 at 0 of 0", "1 at 1 of 1", "2 at 2 of 2"}) EXPECT_EQ(view.Write(1), stand);
}

TEST(ConsoleView, StaysWhileTheEndIsOutOfSightUntilTheStoreIsFull) {
  CView view;
  EXPECT_EQ(view.Write(50), "41 at 41 of 41");
  for (int up = 0; up < 3; ++up) view.Scroll(SB_LINEUP);
  EXPECT_TRUE(view.store.IsAtEnd());  // the last line, below the edge, is painted
  view.Scroll(SB_LINEUP);
  EXPECT_FALSE(view.store.IsAtEnd());
  EXPECT_EQ(view.Write(150), "37 at 37 of 191");
  EXPECT_EQ(view.Write(2), "39 at 37 of 191");
  view.Scroll(SB_THUMBTRACK, 191);
  EXPECT_TRUE(view.store.IsAtEnd());
  EXPECT_EQ(view.Write(1), "194 at 191 of 191");
}

TEST(ConsoleView, ScrollsByOneLineByFiveOrToTheThumb) {
  const std::tuple<UINT, int, const char*> kCases[] = {
      {SB_PAGEUP, 0, "15 at 15 of 21"},   {SB_LINEUP, 0, "14 at 14 of 21"},
      {SB_PAGEDOWN, 0, "19 at 19 of 21"}, {SB_LINEDOWN, 0, "20 at 20 of 21"},
      {SB_TOP, 0, "20 at 20 of 21"},      {SB_PAGEDOWN, 0, "21 at 21 of 21"},
      {SB_THUMBTRACK, 3, "3 at 3 of 21"}, {SB_PAGEUP, 0, "0 at 0 of 21"},
      {SB_LINEUP, 0, "0 at 0 of 21"},     {SB_THUMBPOSITION, 16, "16 at 16 of 21"}};
  CView view;
  view.Write(30);
  view.Scroll(SB_LINEUP);
  for (const auto& [code, position, stand] : kCases) EXPECT_EQ(view.Scroll(code, position), stand);
}

TEST(ConsoleView, StartsAgainAfterClear) {
  CView view;
  view.Write(50);
  view.Scroll(SB_THUMBTRACK, 5);
  view.store.Clear();
  EXPECT_TRUE(view.store.IsAtEnd());
  EXPECT_EQ(view.Stand(), "none at 1 of 1");
  EXPECT_EQ(view.Write(9), "50 at 0 of 0");
  EXPECT_EQ(view.Write(1), "51 at 1 of 1");
}

TEST(ConsoleView, OfLessThanTwoLinesIsRestoredWhenItIsHighAgainAndKeepsItsTopWhenItGrows) {
  CView view(15);
  EXPECT_EQ(view.Write(250), "none at 200 of 200");
  EXPECT_EQ(view.Scroll(SB_LINEUP), "249 at 199 of 200");
  view.Scroll(SB_LINEDOWN);
  view.area.height = 100;
  EXPECT_EQ(view.Write(1), "242 at 191 of 191");
  view.store.Clear();
  view.Write(50);
  view.area.height = 200;
  EXPECT_EQ(view.Write(1), "293 at 32 of 32");
}

TEST(ConsolePlace, OfTheUserIsReadUpToTheFirstError) {
  const std::pair<const char*, const char*> kCases[] = {{" -7, +8,9,10 and so on", "-7,8,9,10"},
                                                        {"5,6,x,7", "5,6,3,4"},
                                                        {"5 6,7,8", "5,2,3,4"},
                                                        {"5,99999999999999999999,7", "5,2,3,4"},
                                                        {"-16777215,6,16777216,8", "-16777215,6,3,4"}};
  for (const auto& [text, read] : kCases) {
    CConsolePlace place = {1, 2, 3, 4};
    place.TakeFrom(text);
    EXPECT_EQ(place.ToText(), read);
  }
}

}  // namespace
}  // namespace vastra
